// Reciprocal by the geometric series, and the ranges in which it holds.
#pragma once

#include "vm/kernels/arith/seeds.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Zero and denormal lanes.
ORBA_INLINE M64 zero_or_denormal(F64 x) { return outside(as_bits(abs(x)), 0x00100000, 0x7fffffff); }
ORBA_INLINE M32 zero_or_denormal(F32 x) { return outside(as_bits(abs(x)), 0x00800000, 0x7fffffff); }

// Lanes outside [2^-1021, 2^1022) (single: [2^-126, 2^126)): seed, series and result are normal
// inside.
ORBA_INLINE M64 not_invertible(F64 x) { return outside(as_bits(abs(x)), 0x00200000, 0x7fcfffff); }
ORBA_INLINE M32 not_invertible(F32 x) { return outside(as_bits(abs(x)), 0x00800000, 0x7e7fffff); }

// y*(1 + e + ... + e^degree) for e = 1 - x*y.
template <int degree, class V>
ORBA_INLINE V recip_series(V x, V y) {
  const V e = neg_mul_add(x, y, V(1));
  V sum = e;
  ORBA_UNROLL
  for (int i = 1; i < degree; ++i) sum = mul_add(sum, e, e);
  return mul_add(y, sum, y);
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
