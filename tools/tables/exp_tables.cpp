// Writes the tables of the exponential functions to standard output:
//   tool_exp_tables > vector/kernels/explog/exp_tables.h
#include <mpfr.h>

#include <cstdio>

namespace {

constexpr int kRows = 64;

// 2^(j/64) as a head of `bits` significant bits and a tail relative to it: head*(1 + tail).
struct Row {
  double head, tail;
};

Row row(int j, int bits) {
  mpfr_t exact, head, tail;
  mpfr_inits2(300, exact, tail, static_cast<mpfr_ptr>(nullptr));
  mpfr_init2(head, bits);
  mpfr_set_si(exact, j, MPFR_RNDN);
  mpfr_div_ui(exact, exact, kRows, MPFR_RNDN);
  mpfr_exp2(exact, exact, MPFR_RNDN);
  mpfr_set(head, exact, MPFR_RNDN);
  mpfr_div(tail, exact, head, MPFR_RNDN);
  mpfr_sub_ui(tail, tail, 1, MPFR_RNDN);
  mpfr_prec_round(tail, bits, MPFR_RNDN);
  const Row result = {mpfr_get_d(head, MPFR_RNDN), mpfr_get_d(tail, MPFR_RNDN)};
  mpfr_clears(exact, head, tail, static_cast<mpfr_ptr>(nullptr));
  return result;
}

void write_table(const char* comment, const char* type, const char* suffix, const char* name,
                 int bits) {
  std::printf("%s\nconstexpr %s %s[%d][2] = {\n", comment, type, name, kRows);
  for (int j = 0; j < kRows; ++j) {
    const Row r = row(j, bits);
    std::printf("    {%a%s, %a%s},\n", r.head, suffix, r.tail, suffix);
  }
  std::printf("};\n\n");
}

}  // namespace

int main() {
  std::printf(
      "// Written by tools/tables/exp_tables.cpp; do not edit.\n#pragma once\n\n"
      "namespace orba::ORBA_CLASS_NAMESPACE {\nnamespace {\n\n");
  write_table("// 2^(j/64) = head*(1 + tail), the head rounded to the nearest double.", "double",
              "", "kExp2Rows", 53);
  write_table("// The same with the head rounded to the nearest float.", "float", "f",
              "kExp2RowsSingle", 24);
  std::printf("}  // namespace\n}  // namespace orba::ORBA_CLASS_NAMESPACE\n");
}
