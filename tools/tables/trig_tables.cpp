// Writes the tables of the trigonometric functions to standard output:
//   tool_trig_tables > vector/kernels/trig/trig_tables.h
#include <mpfr.h>

#include <cstdint>
#include <cstdio>

#include "writer.h"

namespace {

constexpr int kWords = 20;  // of the circle's reciprocal
constexpr int kFractionBits = 1160;
constexpr int kLastRow = 8;

// floor(2^kFractionBits / (2 pi)), the least significant word first.
void write_reciprocal_turn() {
  mpfr_t x;
  mpfr_init2(x, 64 * kWords + 64);
  mpfr_const_pi(x, MPFR_RNDN);
  mpfr_ui_div(x, 1, x, MPFR_RNDN);
  mpfr_mul_2si(x, x, kFractionBits - 1, MPFR_RNDN);
  mpz_t n;
  mpz_init(n);
  mpfr_get_z(n, x, MPFR_RNDD);
  uint64_t words[kWords] = {};
  mpz_export(words, nullptr, -1, sizeof(uint64_t), 0, 0, n);
  std::printf(
      "// floor(2^%d/(2 pi)), the least significant word first. Read at a byte, its words are a "
      "window\n"
      "// of the expansion of 1/(2 pi): zeros stand before the point.\n"
      "alignas(64) constexpr uint64_t kReciprocalTurn[%d] = {\n",
      kFractionBits, kWords);
  for (const uint64_t word : words)
    std::printf("    0x%016llx,\n", static_cast<unsigned long long>(word));
  std::printf("};\n\n");
  mpz_clear(n);
  mpfr_clear(x);
}

// The nearest double of x, and x less that.
double take_head(mpfr_t x) {
  const double head = mpfr_get_d(x, MPFR_RNDN);
  mpfr_sub_d(x, x, head, MPFR_RNDN);
  return head;
}

void write_rows() {
  std::printf(
      "// Sine and cosine, head and tail each, of the multiples of pi/32 from -%d on.\n"
      "alignas(64) constexpr double kSineCosineRows[%d][4] = {\n",
      kLastRow, 2 * kLastRow + 1);
  mpfr_t angle, sine, cosine;
  mpfr_inits2(300, angle, sine, cosine, nullptr);
  for (int row = -kLastRow; row <= kLastRow; ++row) {
    mpfr_const_pi(angle, MPFR_RNDN);
    mpfr_mul_si(angle, angle, row, MPFR_RNDN);
    mpfr_div_ui(angle, angle, 32, MPFR_RNDN);
    mpfr_sin_cos(sine, cosine, angle, MPFR_RNDN);
    double words[4];
    words[0] = take_head(sine);
    words[1] = take_head(sine);
    words[2] = take_head(cosine);
    words[3] = take_head(cosine);
    std::printf("    {%a, %a, %a, %a},\n", words[0], words[1], words[2], words[3]);
  }
  mpfr_clears(angle, sine, cosine, nullptr);
  std::printf("};\n\n");
}

}  // namespace

int main() {
  begin_class_header("trig_tables", "vector/kernels/simd/simd.h");
  write_reciprocal_turn();
  write_rows();
  end_class_header();
}
