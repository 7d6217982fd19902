// Writes the constants and tables of the logarithms to standard output:
//   tool_log_tables > vector/kernels/explog/log_tables.h
#include <mpfr.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <initializer_list>

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

struct Words {
  double hi, lo;
};

// Sums k*log(2) + log(c) of leading words are exact in their format: a double leaves 10 bits, a
// float 7, for what stands before the binary point. 28 bits of the rest are plenty.
constexpr int kQuantum64 = 42, kQuantum32 = 17, kTailBits = 28;

// log(x) as a multiple of 2^-quantum_bits and the rest.
Words split_log(Log log, double x, int quantum_bits) {
  Real v(x), hi(0);
  log(v.get(), v.get(), MPFR_RNDN);
  mpfr_mul_2si(hi.get(), v.get(), quantum_bits, MPFR_RNDN);
  mpfr_rint(hi.get(), hi.get(), MPFR_RNDN);
  mpfr_div_2si(hi.get(), hi.get(), quantum_bits, MPFR_RNDN);
  mpfr_sub(v.get(), v.get(), hi.get(), MPFR_RNDN);
  mpfr_prec_round(v.get(), quantum_bits == kQuantum64 ? kTailBits : 24, MPFR_RNDN);
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

void write_reciprocals(const char* name, int rows, const char* type, const char* suffix) {
  double least = 0, most = 0;
  for (int j = 0; j < rows; ++j) {
    const Reciprocal r = reciprocal(rows, j);
    least = std::fmin(least, r.least);
    most = std::fmax(most, r.most);
  }
  std::printf("\n// %d rows: e in [%.5f, %.5f).\n", rows, least, most);
  if (name == nullptr) return;
  std::printf("constexpr Table<%s, %d> %s = {{", type, rows, name);
  for (int j = 0; j < rows; ++j)
    std::printf("%s%a%s%s", j % 8 == 0 ? "\n    " : " ", reciprocal(rows, j).c, suffix,
                j + 1 < rows ? "," : "}};\n");
}

void write_logs(const char* name, Log log, int rows, const char* type, const char* suffix,
                int quantum) {
  std::printf("constexpr PairTable<%s, %d> %s{{\n", type, rows, name);
  for (int j = 0; j < rows; ++j) {
    const Words w = split_log(log, reciprocal(rows, j).c, quantum);
    std::printf("    {%a%s, %a%s},\n", 0 - w.hi, suffix, 0 - w.lo, suffix);
  }
  std::printf("}};\n");
}

void write_sixteenths(const char* name, Log log, const char* type, const char* suffix,
                      int quantum) {
  std::printf("constexpr PairTable<%s, 16> %s{{\n", type, name);
  for (int j = 0; j < 16; ++j) {
    const Words w = split_log(log, 1 + j / 16.0, quantum);
    std::printf("    {%a%s, %a%s},\n", 0 - w.hi, suffix, 0 - w.lo, suffix);
  }
  std::printf("}};\n");
}

// Logarithms rounded once, the one of 2 included.
void write_rounded_logs(const char* name, Log log, int rows, double (*c)(int rows, int j)) {
  std::printf("constexpr Table<float, %d> %s = {{", rows, name);
  for (int j = 0; j < rows; ++j) {
    Real v(c(rows, j));
    log(v.get(), v.get(), MPFR_RNDN);
    std::printf("%s%af%s", j % 4 == 0 ? "\n    " : " ", 0 - mpfr_get_flt(v.get(), MPFR_RNDN),
                j + 1 < rows ? "," : "}};\n");
  }
}

double c_of_row(int rows, int j) { return reciprocal(rows, j).c; }
double one_and_fraction(int rows, int j) { return 1 + double(j) / rows; }

void write_cells(const char* name, Log log) {
  std::printf("constexpr PairTable<double, 256> %s{{\n", name);
  for (int j = 0; j < 256; ++j) {
    const double c = reciprocal(256, j).c;
    const Words w = split_log(log, c, kQuantum64);
    const uint64_t packed = bits(c) | bits(0 - w.lo) >> 24;
    double both;
    std::memcpy(&both, &packed, sizeof both);
    std::printf("    {%a, %a},\n", 0 - w.hi, both);
  }
  std::printf("}};\n");
}

}  // namespace

int main() {
  std::printf(
      "// Written by tools/tables/log_tables.cpp; do not edit.\n// clang-format off\n#pragma "
      "once\n\n"
      "#include \"vector/kernels/simd/lookup.h\"\n\n"
      "namespace orba::ORBA_CLASS_NAMESPACE {\nnamespace {\n\n"
      "// Logarithms of 2 in two words: hi a multiple of 2^-%d (float: 2^-%d), lo the rest to %d "
      "bits;\n"
      "// and rounded to float once.\n",
      kQuantum64, kQuantum32, kTailBits);
  write_exponent("Ln", mpfr_log);
  write_exponent("Log10", mpfr_log10);
  std::printf("\n// log10(e) in two words: rounded, and the rest.\n");
  write_lead("Log10OfE");
  std::printf("\n// -log(1 + j/16) in two words as above.\n");
  write_sixteenths("kLnSixteenths", mpfr_log, "double", "", kQuantum64);
  write_sixteenths("kLog10Sixteenths", mpfr_log10, "double", "", kQuantum64);
  write_sixteenths("kLnSixteenthsF", mpfr_log, "float", "f", kQuantum32);
  write_rounded_logs("kLnRoundedSixteenthsF", mpfr_log, 16, one_and_fraction);

  std::printf(
      "\n// Tables of rows of [1, 2): c near 1/m for m in a row, and -log(c) in two words as "
      "above;\n"
      "// e = c*m - 1.\n");

  write_reciprocals("kReciprocals16F", 16, "float", "f");
  write_logs("kLnRows16F", mpfr_log, 16, "float", "f", kQuantum32);
  write_logs("kLog10Rows16F", mpfr_log10, 16, "float", "f", kQuantum32);
  write_rounded_logs("kLnRounded16F", mpfr_log, 16, c_of_row);
  write_rounded_logs("kLog10Rounded16F", mpfr_log10, 16, c_of_row);

  write_reciprocals("kReciprocals8F", 8, "float", "f");
  write_logs("kLnRows8F", mpfr_log, 8, "float", "f", kQuantum32);
  write_logs("kLog10Rows8F", mpfr_log10, 8, "float", "f", kQuantum32);
  write_rounded_logs("kLnRounded8F", mpfr_log, 8, c_of_row);
  write_rounded_logs("kLog10Rounded8F", mpfr_log10, 8, c_of_row);

  write_reciprocals(nullptr, 256, "double", "");
  std::printf(
      "// The first number of a row is the hi word, the second one holds c in its upper 24 bits "
      "and\n"
      "// the upper 40 bits of the lo word below.\n");
  write_cells("kLnRows256", mpfr_log);
  write_cells("kLog10Rows256", mpfr_log10);
  std::printf("\n}  // namespace\n}  // namespace orba::ORBA_CLASS_NAMESPACE\n");
}
