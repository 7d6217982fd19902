// The vocabulary on single numbers, so that what is written over it (polynomials, pairs) runs in
// scalar code too.
#pragma once

#include "vector/kernels/simd/simd.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Fused where the class has it: for steps whose own rounding a later step absorbs.
ORBA_INLINE double mul_add(double a, double b, double c) {
  if constexpr (kFused) return __builtin_fma(a, b, c);
  return a * b + c;
}
ORBA_INLINE double mul_sub(double a, double b, double c) {
  if constexpr (kFused) return __builtin_fma(a, b, -c);
  return a * b - c;
}
ORBA_INLINE double neg_mul_add(double a, double b, double c) {
  if constexpr (kFused) return __builtin_fma(-a, b, c);
  return c - a * b;
}
ORBA_INLINE double sqrt(double a) { return _mm_cvtsd_f64(_mm_sqrt_pd(_mm_set1_pd(a))); }

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
