// Writes the constants and tables of the logarithms to standard output:
//   tool_log_tables > vm/kernels/explog/log_tables.h
#include <mpfr.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>

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

// log(x) as a multiple of 2^-quantum_bits and the rest of it, rounded to `lo_bits`.
Words split_log(Log log, double x, int quantum_bits, int lo_bits) {
  Real v(x), hi(0);
  log(v.get(), v.get(), MPFR_RNDN);
  mpfr_mul_2si(hi.get(), v.get(), quantum_bits, MPFR_RNDN);
  mpfr_rint(hi.get(), hi.get(), MPFR_RNDN);
  mpfr_div_2si(hi.get(), hi.get(), quantum_bits, MPFR_RNDN);
  mpfr_sub(v.get(), v.get(), hi.get(), MPFR_RNDN);
  mpfr_prec_round(v.get(), lo_bits, MPFR_RNDN);
  return {mpfr_get_d(hi.get(), MPFR_RNDN), mpfr_get_d(v.get(), MPFR_RNDN)};
}

// Sums k*log(2) + log(c) of leading words are exact in their format: a double leaves 10 bits, a
// float 7, for what stands before the binary point.
constexpr int kQuantum64 = 42, kQuantum32 = 17;

uint64_t bits(double x) {
  uint64_t result;
  std::memcpy(&result, &x, sizeof result);
  return result;
}

void write_exponent(const char* name, Log log) {
  const Words wide = split_log(log, 2, kQuantum64, 53), narrow = split_log(log, 2, kQuantum32, 24);
  std::printf("constexpr double k%sOf2[2] = {%a, %a};\n", name, wide.hi, wide.lo);
  std::printf("constexpr float k%sOf2F[2] = {%af, %af};\n", name, narrow.hi, narrow.lo);
}

void write_lead(const char* name) {
  Real v(10), rest(1);
  mpfr_log(v.get(), v.get(), MPFR_RNDN);
  mpfr_div(v.get(), rest.get(), v.get(), MPFR_RNDN);
  const double wide = mpfr_get_d(v.get(), MPFR_RNDN);
  const float narrow = mpfr_get_flt(v.get(), MPFR_RNDN);
  mpfr_sub_d(rest.get(), v.get(), wide, MPFR_RNDN);
  std::printf("constexpr double k%s[2] = {%a, %a};\n", name, wide, mpfr_get_d(rest.get(), MPFR_RNDN));
  mpfr_sub_d(rest.get(), v.get(), narrow, MPFR_RNDN);
  std::printf("constexpr float k%sF[2] = {%af, %af};\n", name, narrow,
              mpfr_get_flt(rest.get(), MPFR_RNDN));
}

// Row 0 is -0: with it the sum k*log(2) + row is -0 for k = 0, which keeps the sign of a zero that
// is added to it.
void write_reciprocals(const char* name, Log log, const char* type, const char* suffix, int quantum,
                       int lo_bits) {
  std::printf("constexpr PairTable<%s, 16> k%s{{\n", type, name);
  for (int j = 0; j < 16; ++j) {
    const Words w = split_log(log, 1 + j / 16.0, quantum, lo_bits);
    std::printf("    {%a%s, %a%s},\n", -w.hi, suffix, -w.lo, suffix);
  }
  std::printf("}};\n");
}

void write_cells(const char* name, Log log) {
  std::printf("constexpr PairTable<double, 256> k%s{{\n", name);
  for (int j = 0; j < 256; ++j) {
    const double c = std::nearbyint(512 / (1 + j / 256.0)) / 512;
    const Words w = split_log(log, c, kQuantum64, 28);
    const uint64_t packed = bits(c) | bits(-w.lo) >> 24;
    double both;
    std::memcpy(&both, &packed, sizeof both);
    std::printf("    {%a, %a},\n", 0 - w.hi, both);
  }
  std::printf("}};\n");
}

}  // namespace

int main() {
  std::printf(
      "// Written by tools/tables/log_tables.cpp; do not edit.\n#pragma once\n\n"
      "#include \"vm/kernels/simd/lookup.h\"\n\n"
      "namespace orba::ORBA_CLASS_NAMESPACE {\nnamespace {\n\n"
      "// Logarithms of 2 in two words: hi a multiple of 2^-%d (float: 2^-%d), lo the rest.\n",
      kQuantum64, kQuantum32);
  write_exponent("Ln", mpfr_log);
  write_exponent("Log10", mpfr_log10);
  std::printf("\n// log10(e) in two words: rounded, and the rest.\n");
  write_lead("Log10OfE");
  std::printf("\n// -log(1 + j/16) in two words of the same kind.\n");
  write_reciprocals("LnOfReciprocal", mpfr_log, "double", "", kQuantum64, 53);
  write_reciprocals("Log10OfReciprocal", mpfr_log10, "double", "", kQuantum64, 53);
  write_reciprocals("LnOfReciprocalF", mpfr_log, "float", "f", kQuantum32, 24);
  write_reciprocals("Log10OfReciprocalF", mpfr_log10, "float", "f", kQuantum32, 24);
  std::printf(
      "\n// Row j, for m near 1 + j/256: hi word of -log(c) as above, then in one number c, 1/m to a\n"
      "// multiple of 1/512, in the upper 24 bits and the upper 40 bits of the rest of -log(c) below.\n");
  write_cells("LnCells", mpfr_log);
  write_cells("Log10Cells", mpfr_log10);
  std::printf("\n}  // namespace\n}  // namespace orba::ORBA_CLASS_NAMESPACE\n");
}
