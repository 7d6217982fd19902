// Sine and cosine by half turns and one odd polynomial: half precision of doubles, floats.
//
//   |x| = n*pi + r for the sine, (n - 1/2)*pi + r for the cosine, |r| <= pi/2: (-1)^n * sin r
//
// At LA and HA a float is computed as a double, whose rounding is the result's whole error.
#pragma once

#include "vector/kernels/trig/sine_cosine.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class V>
struct HalfTurnConstants;
template <>
struct HalfTurnConstants<F64> {
  static constexpr double shifter = kShifter64, per_half_turn = kPerHalfTurn;
  static constexpr int sign_shift = 63;
  static constexpr double words[] = {kHalfTurn1, kHalfTurn2};
  static constexpr double short_words[] = {kHalfTurnShort1, kHalfTurnShort2, kHalfTurnShort3,
                                           kHalfTurnShort4};
};
template <>
struct HalfTurnConstants<F32> {
  static constexpr float shifter = kShifter32, per_half_turn = kPerHalfTurnF;
  static constexpr int sign_shift = 31;
  static constexpr float words[] = {kHalfTurnF1, kHalfTurnF2, kHalfTurnF3};
  static constexpr float short_words[] = {kHalfTurnShortF1, kHalfTurnShortF2, kHalfTurnShortF3,
                                          kHalfTurnShortF4};
};

// r with the sign of the half turn in place of its own factor: series(r) * (-1)^n.
template <class V>
struct HalfTurns {
  V r;
  typename V::Bits sign;
};
template <bool cosine, class V>
ORBA_INLINE HalfTurns<V> reduce_half(V a) {
  using C = HalfTurnConstants<V>;
  using E = typename V::Element;
  V t, n;
  if constexpr (cosine) {
    t = mul_add(a, V(C::per_half_turn), V(E(0.5))) + V(C::shifter);
    n = (t - V(C::shifter)) - V(E(0.5));
  } else {
    t = mul_add(a, V(C::per_half_turn), V(C::shifter));
    n = t - V(C::shifter);
  }
  V r = a;
  if constexpr (kFused) {
    ORBA_UNROLL
    for (const E word : C::words) r = neg_mul_add(n, V(word), r);
  } else {
    ORBA_UNROLL
    for (const E word : C::short_words) r = r - n * V(word);
  }
  return {r, shl<C::sign_shift>(as_bits(t))};
}

// r + r^3*(c[0] + c[1]*r^2 + ...)
template <int count, class V>
ORBA_INLINE V odd_polynomial(V r, const typename V::Element (&c)[count]) {
  const V z = r * r;
  V series = c[count - 1];
  ORBA_UNROLL
  for (int i = count - 2; i >= 0; --i) series = mul_add(series, z, V(c[i]));
  return mul_add(r * z, series, r);
}

template <bool cosine, int count, class V>
ORBA_INLINE V by_half_turns(V x, const typename V::Element (&series)[count]) {
  const HalfTurns<V> h = reduce_half<cosine>(abs(x));
  auto sign = h.sign;
  if constexpr (!cosine) {
    constexpr typename V::Element minus_zero = -0.0f;
    sign = sign ^ (as_bits(x) & as_bits(V(minus_zero)));
  }
  return as_float(as_bits(odd_polynomial(h.r, series)) ^ sign);
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
