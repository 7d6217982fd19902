// What callouts are made of: statuses, classification, scaling with one rounding, narrowing.
#pragma once

#include "vector/kernels/simd/pair_arithmetic.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Status values of callouts.
enum : int32_t { kOk = 0, kErrDom = 1, kSing = 2, kOverflow = 3, kUnderflow = 4 };

ORBA_INLINE bool is_nan_or_inf(double x) {
  return (bit_cast<uint64_t>(x) & 0x7ff0000000000000) == 0x7ff0000000000000;
}
ORBA_INLINE bool is_inf(double x) {
  return (bit_cast<uint64_t>(x) & 0x7fffffffffffffff) == 0x7ff0000000000000;
}

// The compiler can't fold operations on the result, so that they raise their exceptions.
ORBA_INLINE double opaque(double x) {
  asm("" : "+x"(x));
  return x;
}

// k with 2^k <= |x| < 2^(k+1); x finite and not 0.
ORBA_INLINE int exponent_of(double x) {
  const int biased = static_cast<int>(bit_cast<uint64_t>(x) >> 52 & 0x7ff);
  if (biased != 0) return biased - 1023;
  const uint64_t scaled = bit_cast<uint64_t>(x * pow2(64));
  return static_cast<int>(scaled >> 52 & 0x7ff) - 1023 - 64;
}

// x * 2^k, rounded once if at all: of the factors only the last can bring it below the normal
// numbers.
ORBA_INLINE double scaled(double x, int k) {
  const int third = k / 3;
  return x * pow2(third) * pow2(third) * pow2(k - 2 * third);
}

// The value of a pair; a zero keeps the sign that the head has as a sum of products.
ORBA_INLINE double total(Pair<double> x) { return x.lo == 0 ? x.hi : x.hi + x.lo; }

// (x.hi + x.lo) * 2^k for x.hi of moderate size, rounded once: a result in the denormal range is
// rounded to its last place before it is scaled, by adding and taking off a number whose unit is that
// place, so that nothing but the result is denormal. The head has up to 52 places, the rest at most
// one, of either sign.
ORBA_INLINE double rounded(Pair<double> x, int k) {
  const double sum = total(x);
  if (sum == 0) return sum;
  const int exponent = exponent_of(sum) + k;
  if (k > 0 || exponent >= -1022 || exponent < -1076) return scaled(sum, k);
  const double shifter = pow2(52 - 1074 - k);
  const double head_shifter = __builtin_copysign(shifter, x.hi);
  const double head = (x.hi + head_shifter) - head_shifter;
  const double rest = (x.hi - head) + x.lo;
  return scaled(head + ((rest + 1.5 * shifter) - 1.5 * shifter), k);
}

// A single-precision callout through the double one: the double result is so much closer than half
// a unit of single that rounding it once more does no harm.
template <class Callout>
ORBA_INLINE int32_t narrowed(Callout callout, const float* a, float* r) {
  const double wide = *a;
  double result;
  const int32_t status = callout(&wide, &result);
  *r = static_cast<float>(result);
  return status;
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
