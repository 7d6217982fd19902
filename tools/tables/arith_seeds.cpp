// Writes the seed tables of the square-root callouts to standard output:
//   tool_arith_seeds > vector/kernels/arith/seed_tables.h
#include <mpfr.h>

#include <cstdio>

namespace {

// 1/sqrt(x), rounded to `bits` significant bits.
double rsqrt_rounded(double x, int bits) {
  mpfr_t v;
  mpfr_init2(v, bits);
  mpfr_set_d(v, x, MPFR_RNDN);
  mpfr_t exact;
  mpfr_init2(exact, 100);
  mpfr_set_d(exact, x, MPFR_RNDN);
  mpfr_rec_sqrt(exact, exact, MPFR_RNDN);
  mpfr_set(v, exact, MPFR_RNDN);
  const double result = mpfr_get_d(v, MPFR_RNDN);
  mpfr_clear(v);
  mpfr_clear(exact);
  return result;
}

void write_rows(const char* comment, const char* name, int count, double (*row)(int)) {
  std::printf("%s\nconstexpr double %s[%d] = {", comment, name, count);
  for (int i = 0; i < count; ++i)
    std::printf("%s%.17g%s", i % 8 == 0 ? "\n    " : " ", row(i), i + 1 < count ? "," : "};\n");
}

}  // namespace

int main() {
  std::printf(
      "// Written by tools/tables/arith_seeds.cpp; do not edit.\n// clang-format off\n#pragma "
      "once\n\n"
      "namespace orba::ORBA_CLASS_NAMESPACE {\nnamespace {\n\n");
  write_rows(
      "// 1/sqrt(1 + j/256), then 1/sqrt(2(1 + j/256)), j = 0 ... 255, to 9 significant bits.",
      "kSqrtSeed", 512, [](int i) {
        const double m = 1.0 + (i % 256) / 256.0;
        return rsqrt_rounded(i < 256 ? m : 2 * m, 9);
      });
  std::printf("\n");
  write_rows(
      "// 1/sqrt(m) at the centre of cell j of [1, 2), m = 1 + (j + 1/2)/32, then of [2, 4), to "
      "13\n"
      "// significant bits: the square is exact and times half a double's significand still is.",
      "kInvSqrtSeed", 64, [](int i) {
        const double m = 1.0 + ((i % 32) + 0.5) / 32.0;
        return rsqrt_rounded(i < 32 ? m : 2 * m, 13);
      });
  std::printf("\n}  // namespace\n}  // namespace orba::ORBA_CLASS_NAMESPACE\n");
}
