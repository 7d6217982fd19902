// Scalar arithmetic of callouts.
#pragma once

#include "vector/kernels/simd/simd.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Status values of callouts.
enum : int32_t { kOk = 0, kErrDom = 1, kSing = 2, kOverflow = 3, kUnderflow = 4 };

// a*b + c, fused where the class has it: for steps whose own rounding a later step absorbs.
ORBA_INLINE double mul_add(double a, double b, double c) {
  if constexpr (kFused) return __builtin_fma(a, b, c);
  return a * b + c;
}

// a*b - c likewise.
ORBA_INLINE double mul_sub(double a, double b, double c) {
  if constexpr (kFused) return __builtin_fma(a, b, -c);
  return a * b - c;
}

ORBA_INLINE bool is_nan_or_inf(double x) {
  return (bit_cast<uint64_t>(x) & 0x7ff0000000000000) == 0x7ff0000000000000;
}
ORBA_INLINE bool is_inf(double x) {
  return (bit_cast<uint64_t>(x) & 0x7fffffffffffffff) == 0x7ff0000000000000;
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
