// Sine and cosine by half turns and one odd polynomial: half precision of doubles, floats.
//
//   |x| = n*pi + r for the sine, (n - 1/2)*pi + r for the cosine, |r| <= pi/2: (-1)^n * sin r
//
// At LA and HA without FMA a float is computed as a double, by the fraction f of a turn that is left, sin(pi*f):
// a float times the first word of 1/pi is exact, so that little is to be done for f.
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

// A float's fraction of half or quarter turns, |f| <= 1/2, good to 2^-52 of itself; `turns` has their
// number in its lowest bits. Shifted by half a unit for the cosine by half turns.
template <bool shifted>
ORBA_INLINE Fraction fraction_of_turns(F64 x, double first, double second) {
  const F64 product = x * F64(first);
  const F64 t = (shifted ? product + F64(0.5) : product) + F64(kShifter64);
  const F64 n = t - F64(kShifter64);
  return {mul_add(x, F64(second), product - (shifted ? n - F64(0.5) : n)), as_bits(t)};
}

// Sine or cosine of a float, relative error below 2^-27.4. The sign of zero stays.
template <bool cosine>
ORBA_INLINE F64 of_single(F64 x) {
  const Fraction h = fraction_of_turns<cosine>(x, kHalfTurns1, kHalfTurns2);
  const F64 y = h.f * horner(h.f * h.f, kSineOfHalfTurns);
  return as_float(as_bits(y) ^ shl<63>(h.turns));
}

// The same about quarter turns, relative error below 2^-28.
struct Circle {
  F64 sine, cosine;
};
ORBA_INLINE Circle of_fraction(F64 f) {
  const F64 z = f * f;
  return {f * horner(z, kSineOfQuarterTurns), horner(z, kCosineOfQuarterTurns)};
}
ORBA_INLINE Fraction quarter_turns(F64 x) {
  return fraction_of_turns<false>(x, kQuarterTurns1, kQuarterTurns2);
}
ORBA_INLINE Fraction quarter_turns_of_huge(F64 x) {
  const Fraction r = reduce_huge_single(abs(x));
  const I64 sign = sign_of(x);
  // A negative argument counts its turns backwards.
  const I64 all =
      as_bits(select(F64::Mask(is_odd(shr<63>(sign))), F64(as_float(I64(-1))), F64(0.0)));
  return {with_sign(r.f, sign), (r.turns ^ all) - all};
}

// r + r^3*(c[0] + c[1]*r^2 + ...)
template <int count, class V>
ORBA_INLINE V odd_polynomial(V r, const typename V::Element (&c)[count]) {
  const V z = r * r;
  return mul_add(r * z, horner(z, c), r);
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
