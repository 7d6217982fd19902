// Writes the tables of the exponential functions to standard output:
//   tool_exp_tables > vector/kernels/explog/exp_tables.h
//   tool_exp_tables shared > vector/tables/exp_tables.cpp
#include <mpfr.h>

#include <cstdint>
#include <cstring>

#include "writer.h"

namespace {

// 2^(j/rows) as a head of the format and a tail relative to it: head*(1 + tail). The head has j/rows
// taken off the integer of its bits, counted in binades: adding the k of 2^(k/rows), shifted so that
// its bits above the row number meet the exponent field, then gives 2^(k/rows).
Words row(int rows, int j, bool single) {
  const int bits = single ? 24 : 53;
  mpfr_t exact, head, tail;
  mpfr_inits2(300, exact, tail, static_cast<mpfr_ptr>(nullptr));
  mpfr_init2(head, bits);
  mpfr_set_si(exact, j, MPFR_RNDN);
  mpfr_div_si(exact, exact, rows, MPFR_RNDN);
  mpfr_exp2(exact, exact, MPFR_RNDN);
  mpfr_set(head, exact, MPFR_RNDN);
  mpfr_div(tail, exact, head, MPFR_RNDN);
  mpfr_sub_ui(tail, tail, 1, MPFR_RNDN);
  mpfr_prec_round(tail, bits, MPFR_RNDN);
  Words result = {mpfr_get_d(head, MPFR_RNDN), mpfr_get_d(tail, MPFR_RNDN)};
  mpfr_clears(exact, head, tail, static_cast<mpfr_ptr>(nullptr));
  if (single) {
    auto x = static_cast<float>(result.hi);
    int32_t image;
    std::memcpy(&image, &x, sizeof image);
    image -= (j << 23) / rows;
    std::memcpy(&x, &image, sizeof x);
    result.hi = x;
  } else {
    int64_t image;
    std::memcpy(&image, &result.hi, sizeof image);
    image -= (int64_t{j} << 52) / rows;
    std::memcpy(&result.hi, &image, sizeof image);
  }
  return result;
}

void write_class_tables(int rows, bool single) {
  const char *type = single ? "float" : "double", *suffix = single ? "F" : "";
  std::printf("constexpr PairTable<%s, %d> kExp2Pairs%d%s{{\n", type, rows, rows, suffix);
  write_pairs(rows, single, [&](int j) { return row(rows, j, single); });
  std::printf("}};\nconstexpr Table<%s, %d> kExp2Heads%d%s = {{", type, rows, rows, suffix);
  write_numbers(rows, 4, single, [&](int j) { return row(rows, j, single).hi; });
  std::printf("}};\n");
}

void write_shared_tables(int rows, bool single) {
  const char *type = single ? "float" : "double", *suffix = single ? "F" : "";
  std::printf("alignas(64) const %s kExp2Pairs%d%s[%d][2] = {\n", type, rows, suffix, rows);
  write_pairs(rows, single, [&](int j) { return row(rows, j, single); });
  std::printf("};\nalignas(64) const %s kExp2Heads%d%s[%d] = {", type, rows, suffix, rows);
  write_numbers(rows, 4, single, [&](int j) { return row(rows, j, single).hi; });
  std::printf("};\n");
}

}  // namespace

int main(int count, char **arguments) {
  constexpr char kRule[] =
      "// 2^(j/rows) = head*(1 + tail), the head rounded to nearest and, as an integer, less "
      "j/rows\n"
      "// binades.\n";
  if (count > 1 && std::strcmp(arguments[1], "shared") == 0) {
    begin_shared_source("exp_tables");
    std::printf(kRule);
    write_shared_tables(64, false);
    write_shared_tables(64, true);
    end_shared_source();
  } else {
    begin_class_header("exp_tables", "vector/kernels/simd/lookup.h");
    std::printf(kRule);
    write_class_tables(16, false);
    write_class_tables(8, true);
    write_class_tables(16, true);
    end_class_header();
  }
}
