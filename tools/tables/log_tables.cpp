// Writes the constants and tables of the logarithms to standard output:
//   tool_log_tables > vector/kernels/explog/log_tables.h
//   tool_log_tables shared > vector/tables/log_tables.cpp
#include <mpfr.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <initializer_list>

#include "writer.h"

namespace {

// A real number of 200 bits.
class Real {
 public:
  explicit Real(double x) { mpfr_init2(v_, 200), mpfr_set_d(v_, x, MPFR_RNDN); }
  ~Real() { mpfr_clear(v_); }
  Real(const Real&) = delete;
  Real& operator=(const Real&) = delete;
  mpfr_t& get() { return v_; }

 private:
  mpfr_t v_;
};

using Log = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);

// Sums k*log(2) + log(c) of leading words are exact in their format: a double leaves 10 bits, a
// float 7, for what stands before the binary point. 28 bits of the rest are plenty for a logarithm;
// one that gets multiplied has all of them.
constexpr int kQuantum64 = 42, kQuantum32 = 17, kTailBits = 28, kFullTailBits = 53;

// log(x) as a multiple of 2^-quantum_bits and the rest.
Words split_log(Log log, double x, int quantum_bits, int tail_bits = kTailBits) {
  Real v(x), hi(0);
  log(v.get(), v.get(), MPFR_RNDN);
  mpfr_mul_2si(hi.get(), v.get(), quantum_bits, MPFR_RNDN);
  mpfr_rint(hi.get(), hi.get(), MPFR_RNDN);
  mpfr_div_2si(hi.get(), hi.get(), quantum_bits, MPFR_RNDN);
  mpfr_sub(v.get(), v.get(), hi.get(), MPFR_RNDN);
  mpfr_prec_round(v.get(), quantum_bits == kQuantum64 ? tail_bits : 24, MPFR_RNDN);
  return {mpfr_get_d(hi.get(), MPFR_RNDN), mpfr_get_d(v.get(), MPFR_RNDN)};
}

uint64_t bits(double x) {
  uint64_t result;
  std::memcpy(&result, &x, sizeof result);
  return result;
}

void write_exponent(const char* name, Log log) {
  const Words wide = split_log(log, 2, kQuantum64), narrow = split_log(log, 2, kQuantum32);
  std::printf("constexpr double k%sOf2[2] = {%a, %a};\n", name, wide.hi, wide.lo);
  std::printf("constexpr float k%sOf2F[2] = {%af, %af};\n", name, narrow.hi, narrow.lo);
  Real v(2);
  log(v.get(), v.get(), MPFR_RNDN);
  std::printf("constexpr float k%sOf2RoundedF = %af;\n", name, mpfr_get_flt(v.get(), MPFR_RNDN));
}

void write_lead(const char* name) {
  Real v(10), rest(1);
  mpfr_log(v.get(), v.get(), MPFR_RNDN);
  mpfr_div(v.get(), rest.get(), v.get(), MPFR_RNDN);
  const double wide = mpfr_get_d(v.get(), MPFR_RNDN);
  const float narrow = mpfr_get_flt(v.get(), MPFR_RNDN);
  mpfr_sub_d(rest.get(), v.get(), wide, MPFR_RNDN);
  std::printf("constexpr double k%s[2] = {%a, %a};\n", name, wide,
              mpfr_get_d(rest.get(), MPFR_RNDN));
  mpfr_sub_d(rest.get(), v.get(), narrow, MPFR_RNDN);
  std::printf("constexpr float k%sF[2] = {%af, %af};\n", name, narrow,
              mpfr_get_flt(rest.get(), MPFR_RNDN));
}

struct Reciprocal {
  double c, least, most;  // range of e = c*m - 1 over the row
};

// c near 1/m for m in row j of `rows` of [1, 2), of so few bits that e is exact in the format of m:
// a multiple of 2^-b leaves e below 2^(1-b) as many bits as m has. The first and the last row make
// the logarithm of c vanish, together with the exponent's, on both sides of x = 1.
Reciprocal reciprocal(int rows, int j) {
  const double low = 1 + double(j) / rows, high = 1 + double(j + 1) / rows;
  const auto with = [&](double c) { return Reciprocal{c, c * low - 1, c * high - 1}; };
  if (j == 0) return with(1);
  if (j == rows - 1) return with(0.5);
  Reciprocal best{};
  double best_size = 1;
  const int least_bits = std::ilogb(rows) + 1;
  for (int b = least_bits; b <= least_bits + 1; ++b) {
    const double unit = std::ldexp(1.0, -b), below = std::floor(2 / (low + high) / unit) * unit;
    for (double c : {below, below + unit}) {
      const Reciprocal r = with(c);
      const double size = std::fmax(-r.least, r.most);
      if (size < 2 * unit && size < best_size) best = r, best_size = size;
    }
  }
  return best;
}

bool single(const char* type) { return std::strcmp(type, "float") == 0; }
Words negated(Words w) { return {0 - w.hi, 0 - w.lo}; }

// The range of e as a comment, and c where it has a table of its own.
void write_reciprocals(const char* name, int rows) {
  double least = 0, most = 0;
  for (int j = 0; j < rows; ++j) {
    const Reciprocal r = reciprocal(rows, j);
    least = std::fmin(least, r.least);
    most = std::fmax(most, r.most);
  }
  std::printf("\n// %d rows: e in [%.5f, %.5f).\n", rows, least, most);
  if (name == nullptr) return;
  std::printf("constexpr Table<float, %d> %s = {{", rows, name);
  write_numbers(rows, 8, true, [&](int j) { return reciprocal(rows, j).c; });
  std::printf("}};\n");
}

double c_of_row(int rows, int j) { return reciprocal(rows, j).c; }
double one_and_fraction(int rows, int j) { return 1 + double(j) / rows; }

// -log(c) of the rows in two words.
void write_logs(const char* name, Log log, int rows, const char* type, double (*c)(int, int),
                int tail_bits = kTailBits) {
  std::printf("constexpr PairTable<%s, %d> %s{{\n", type, rows, name);
  write_pairs(rows, single(type), [&](int j) {
    return negated(split_log(log, c(rows, j), single(type) ? kQuantum32 : kQuantum64, tail_bits));
  });
  std::printf("}};\n");
}

// The same rounded once.
void write_rounded_logs(const char* name, Log log, int rows, double (*c)(int, int)) {
  std::printf("constexpr Table<float, %d> %s = {{", rows, name);
  write_numbers(rows, 4, true, [&](int j) {
    Real v(c(rows, j));
    log(v.get(), v.get(), MPFR_RNDN);
    return 0 - double{mpfr_get_flt(v.get(), MPFR_RNDN)};
  });
  std::printf("}};\n");
}

void write_packed_rows(const char* name, Log log) {
  std::printf("alignas(64) const double %s[256][2] = {\n", name);
  write_pairs(256, false, [&](int j) {
    const double c = reciprocal(256, j).c;
    const Words w = split_log(log, c, kQuantum64);
    const uint64_t packed = bits(c) | bits(0 - w.lo) >> 24;
    Words row{0 - w.hi, 0};
    std::memcpy(&row.lo, &packed, sizeof packed);
    return row;
  });
  std::printf("};\n");
}

double rounded_log(double x) {
  Real v(x);
  mpfr_log(v.get(), v.get(), MPFR_RNDN);
  return mpfr_get_d(v.get(), MPFR_RNDN);
}

// Rows of -log(c) in two words, c, -log(c) rounded once.
void write_rows_of_four(const char* name, int rows) {
  std::printf("alignas(64) const double %s[%d][4] = {\n", name, rows);
  for (int j = 0; j < rows; ++j) {
    const double c = reciprocal(rows, j).c;
    const Words w = negated(split_log(mpfr_log, c, kQuantum64, kFullTailBits));
    std::printf("    {%a, %a, %a, %a},\n", w.hi, w.lo, c, 0 - rounded_log(c));
  }
  std::printf("};\n");
}

}  // namespace

int main(int count, char** arguments) {
  if (count > 1 && std::strcmp(arguments[1], "shared") == 0) {
    begin_shared_source("log_tables");
    std::printf(
        "// Tables of rows of [1, 2): -log(c) for c near 1/m for m in a row; e = c*m - 1. The "
        "first\n"
        "// number of a row is the hi word, a multiple of 2^-%d, the second one holds c in its "
        "upper "
        "24\n"
        "// bits and the upper 40 bits of the lo word below.\n",
        kQuantum64);
    write_reciprocals(nullptr, 256);
    write_packed_rows("kLnRows256", mpfr_log);
    write_packed_rows("kLog10Rows256", mpfr_log10);
    std::printf("\n// The same unpacked, lo words in full: hi, lo, c, the logarithm rounded once.");
    write_reciprocals(nullptr, 128);
    write_rows_of_four("kLnRows128", 128);
    end_shared_source();
    return 0;
  }

  begin_class_header("log_tables", "vector/kernels/simd/lookup.h");
  std::printf(
      "// Logarithms of 2 in two words: hi a multiple of 2^-%d (float: 2^-%d), lo the rest to %d "
      "bits;\n"
      "// and rounded to float once.\n",
      kQuantum64, kQuantum32, kTailBits);
  write_exponent("Ln", mpfr_log);
  write_exponent("Log10", mpfr_log10);
  std::printf("\n// log10(e) in two words: rounded, and the rest.\n");
  write_lead("Log10OfE");
  std::printf("\n// -log(1 + j/16) in two words as above.\n");
  write_logs("kLnSixteenths", mpfr_log, 16, "double", one_and_fraction);
  write_logs("kLog10Sixteenths", mpfr_log10, 16, "double", one_and_fraction);
  write_logs("kLnSixteenthsF", mpfr_log, 16, "float", one_and_fraction);
  write_rounded_logs("kLnRoundedSixteenthsF", mpfr_log, 16, one_and_fraction);

  std::printf("\n// For factors: lo words in full, logarithms rounded once to double.\n");
  const Words log_2 = split_log(mpfr_log, 2, kQuantum64, kFullTailBits);
  std::printf("constexpr double kLnOf2Full[2] = {%a, %a};\n", log_2.hi, log_2.lo);
  std::printf("constexpr double kLnOf2Rounded = %a;\n", rounded_log(2));
  std::printf("constexpr Table<double, 16> kLnRoundedSixteenths = {{");
  write_numbers(16, 4, false, [](int j) { return 0 - rounded_log(one_and_fraction(16, j)); });
  std::printf("}};\n");
  write_logs("kLnThirtySeconds", mpfr_log, 32, "double", one_and_fraction, kFullTailBits);

  std::printf(
      "\n// Tables of rows of [1, 2): c near 1/m for m in a row, and -log(c) in two words as "
      "above;\n"
      "// e = c*m - 1.\n");
  write_reciprocals("kReciprocals16F", 16);
  write_logs("kLnRows16F", mpfr_log, 16, "float", c_of_row);
  write_logs("kLog10Rows16F", mpfr_log10, 16, "float", c_of_row);
  write_rounded_logs("kLnRounded16F", mpfr_log, 16, c_of_row);
  write_rounded_logs("kLog10Rounded16F", mpfr_log10, 16, c_of_row);

  write_reciprocals("kReciprocals8F", 8);
  write_logs("kLnRows8F", mpfr_log, 8, "float", c_of_row);
  write_logs("kLog10Rows8F", mpfr_log10, 8, "float", c_of_row);
  write_rounded_logs("kLnRounded8F", mpfr_log, 8, c_of_row);
  write_rounded_logs("kLog10Rounded8F", mpfr_log10, 8, c_of_row);
  end_class_header();
}
