// Reciprocal by the geometric series, and the ranges in which it holds.
#pragma once

#include "vector/kernels/arith/seeds.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Zero and denormal lanes.
ORBA_INLINE M64 zero_or_denormal(F64 x) { return outside(as_bits(abs(x)), 0x00100000, 0x7fffffff); }
ORBA_INLINE M32 zero_or_denormal(F32 x) { return outside(as_bits(abs(x)), 0x00800000, 0x7fffffff); }

// Lanes outside [2^-1021, 2^1021) (single: [2^-126, 2^125)). Inside, the seed is a good one on any
// processor and under any control state: above, its exact value is still normal up to 2^1022
// (2^126), but a seed a little below that may be denormal, which is flushed on demand, and by the
// single-precision instruction always.
ORBA_INLINE M64 not_invertible(F64 x) { return outside(as_bits(abs(x)), 0x00200000, 0x7fbfffff); }
ORBA_INLINE M32 not_invertible(F32 x) { return outside(as_bits(abs(x)), 0x00800000, 0x7dffffff); }

// y*(1 + e + ... + e^degree) for e = 1 - x*y.
template <int degree, class V>
ORBA_INLINE V recip_series(V x, V y) {
  const V e = neg_mul_add(x, y, V(1));
  V sum = e;
  ORBA_UNROLL
  for (int i = 1; i < degree; ++i) sum = mul_add(sum, e, e);
  return mul_add(y, sum, y);
}

// 1/x to 2^-28.5, for processors whose seed of a double takes more operations than the polynomial:
// y0 from subtracting the bits of x from those of 1.0 twice puts p = x*y0 into [1, 9/8]; q(p) is
// the quadratic of least relative error 1/19601 against 1/p there (1 - p*q is the cubic Chebyshev
// polynomial of 16p - 17 over T3(-17)); a Newton step squares that.
ORBA_INLINE F64 recip_fast(F64 x) {
  const F64 y0 = as_float(I64(0x7fe0000000000000) - as_bits(x));
  const F64 p = x * y0;
  const F64 q =
      mul_add(mul_add(F64(16384.0 / 19601), p, F64(-52224.0 / 19601)), p, F64(55440.0 / 19601));
  return recip_series<1>(x, y0 * q);
}

// 1/x at EP: 2^-28 on class 5, 2^-28.5 in double and 2^-22.8 in single before.
ORBA_INLINE F64 recip_ep(F64 x) {
#if ORBA_CLASS == 5
  return recip_series<1>(x, recip_seed(x));
#else
  return recip_fast(x);
#endif
}
ORBA_INLINE F32 recip_ep(F32 x) { return recip_series<1>(x, recip_seed(x)); }

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
