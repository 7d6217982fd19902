// The rest of a quotient or root, from its residual.
#pragma once

#include "vector/kernels/contract/accuracy.h"
#include "vector/kernels/simd/pair_arithmetic.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// 1/x for normal positive x, good enough to turn the residual of a quotient or root, which is about a
// unit of the last place, into its rest. Without a hardware estimate of 1/x by the logarithm's being
// nearly linear in the bits, off by 6 %, at HA with a Newton step, by 0.4 %.
template <Accuracy accuracy>
ORBA_INLINE F32 rough_recip(F32 x) {
  return approx_recip(x);
}
template <Accuracy accuracy>
ORBA_INLINE F64 rough_recip(F64 x) {
#if ORBA_CLASS == 5
  return approx_recip(x);
#else
  const F64 y = as_float(I64(0x7fde623822fc16e6) - as_bits(x));
  if constexpr (accuracy == kLa) return y;
  return y * neg_mul_add(x, y, F64(2));
#endif
}

// a - b*c, exact where b is the quotient a/c, or c = b the root of a, but for its rounding.
template <class V>
ORBA_INLINE V residual(V a, V b, V c) {
  if constexpr (kFused) return neg_mul_add(b, c, a);
  const Pair<V> p = two_product(b, c);
  return (a - p.hi) - p.lo;
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
