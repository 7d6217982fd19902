// Arctangent of a ratio: Atan and Atan2 fold their arguments into 0 <= n <= d.
//
//   HA, LA   above n/d = 1/3 by the breakpoint 1/2: atan(n/d) = atan(1/2) + atan(t) for
//
//              t = (n - d/2) / (d + n/2),  -1/7 <= t <= 1/3,
//
//            else t = n/d. The numerator is exact (Sterbenz), the denominator a head and a tail, and
//            the rest of the division comes from its residual, so that t = head + rest is off by 2^-57
//            (single: 2^-28) at most. atan(t) = t + t^3*P(t^2), P of 10 (5) terms. HA also keeps what
//            the sum of leading terms loses; LA lets that quarter of a unit go.
//   EP       q = n/d in one word, P over all of [0, 1].
#pragma once

#include "vector/kernels/invtrig/invtrig.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// A multiple of pi/2 to which the arctangent is added, and the sign that it gets before.
template <class V>
struct Quadrant {
  Pair<V> base;
  V sign;
};

// d and 1/d have to be normal. n may be anything up to d, unless `any_ratio` denies ratios that are tiny
// and not exact: the residual of their quotient could underflow.
template <Accuracy accuracy, bool any_ratio, class V>
ORBA_INLINE V arctangent(V n, V d, const Quadrant<V>& quadrant) {
  using E = typename V::Element;
  using D = Data<V>;
  const auto upper = n > d * V(E(1) / 3);
  const V half = where(upper, V(E(0.5)));
  const V numerator = neg_mul_add(half, d, n) ^ quadrant.sign;
  const V denominator = mul_add(half, n, d);
  const V tail = mul_add(half, n, d - denominator);

  const V t = numerator / denominator;
  const V x = t * t;
  V rest = neg_mul_add(t, tail, residual(numerator, t, denominator));
  if constexpr (any_ratio) rest = where(x > V(D::tiny_square), rest);
  const V base = quadrant.base.hi + where(upper, V(D::atan_half.hi) ^ quadrant.sign);
  const V base_tail = quadrant.base.lo + where(upper, V(D::atan_half.lo) ^ quadrant.sign);
  const V small = mul_add(rest, rough_recip<accuracy>(denominator), base_tail);
  return add_up<accuracy>(base, t, t * x, lowest_last(x, D::atan), small);
}

// In one word, to the precision of a series over [0, 1]: base + sign*atan(q).
template <class C, int n>
ORBA_INLINE F64 short_arctangent(F64 q, F64 base, const C (&series)[n]) {
  const F64 x = q * q;
  return base + mul_add(q * x, lowest_last(x, series), q);
}
ORBA_INLINE F32 short_arctangent(F32 q, F32 base) {
  return mul_add(q, lowest_last(q * q, kAtanSeriesEpF), base);
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
