// Sine and cosine of a reduced argument, and the functions made of them.
//
// With FMA: on |r| <= pi/4, z = r*r,
//
//   sin r = r - r*z/6 + r*z^2*S(z),    cos r = 1 - z/2 + z^2*C(z),
//
// the first two terms as a head and its error, so that the polynomials only add little. At HA the
// error of z counts too. At LA the sine is a plain sum, and where only one of both is wanted the cosine
// is 1 - 2 sin^2(r/2), so that all lanes have one polynomial.
// Without FMA such errors are dear: r = j*pi/32 + s, and the addition theorem with a table of 17
// rows, whose terms beyond the first one are small enough to be rounded.
#pragma once

#include "vector/kernels/contract/kernel.h"
#include "vector/kernels/contract/scalar.h"
#include "vector/kernels/simd/lookup.h"
#include "vector/kernels/simd/polynomial.h"
#include "vector/kernels/trig/reduction.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class V>
struct SineCosine {
  Pair<V> sine, cosine;  // heads and tails, not yet added
};

template <class V>
ORBA_INLINE V rounded(Pair<V> a) {
  return a.hi + a.lo;
}

template <class V>
struct Series;
template <>
struct Series<F64> {
  static constexpr auto &sine = kSineSeries, &cosine = kCosineSeries, &whole = kSineWholeSeries;
  static constexpr double minus_sixth = kMinusSixth;
};
template <>
struct Series<F32> {
  static constexpr auto &sine = kSineSeriesF, &cosine = kCosineSeriesF, &whole = kSineWholeSeriesF;
  static constexpr float minus_sixth = kMinusSixthF;
};

// z = hi^2 and, for the exact forms, its error.
template <bool exact, class V>
ORBA_INLINE Pair<V> square(V hi) {
  const V z = hi * hi;
  return {z, exact ? mul_sub(hi, hi, z) : V(0.0f)};
}

// start + factor*(second + z*series(z)) + slope*lo, where factor is start*z. The polynomial comes last:
// all else is there long before it.
template <class V>
struct Terms {
  V start;
  Pair<V> factor;
  V second, slope;
};
template <bool exact, class V, class C, int count>
ORBA_INLINE Pair<V> sum_terms(const Terms<V>& t, V z, V lo, const C (&series)[count]) {
  const V head = mul_add(t.factor.hi, t.second, t.start);
  V tail = mul_add(t.factor.hi, t.second, t.start - head);
  if constexpr (exact) tail = mul_add(t.factor.lo, t.second, tail);
  tail = mul_add(lo, t.slope, tail);
  return {head, mul_add(t.factor.hi * z, in_pairs(z, z * z, series), tail)};
}
template <class V>
ORBA_INLINE Terms<V> sine_terms(V hi, Pair<V> z) {
  return {hi, {hi * z.hi, hi * z.lo}, Series<V>::minus_sixth, neg_mul_add(z.hi, V(0.5f), V(1.0f))};
}
template <class V>
ORBA_INLINE Terms<V> cosine_terms(V hi, Pair<V> z) {
  return {V(1.0f), z, V(-0.5f), negate(hi)};
}

// The cosine where the quadrant is odd, else the sine; lanes choose the terms.
template <class V>
ORBA_INLINE V exact_by_quadrant(const Reduced<V>& r) {
  using E = typename V::Element;
  using S = Series<V>;
  const Pair<V> z = square<true>(r.hi);
  const auto odd = is_odd(r.quadrant);
  const V start = select(odd, V(1.0f), r.hi);
  Terms<V> terms = sine_terms(start, z);
  terms.second = lookup(Table<E, 2>{S::minus_sixth, E(-0.5)}, r.quadrant);
  terms.slope = select(odd, negate(r.hi), terms.slope);
  constexpr int count = sizeof(S::sine) / sizeof(E);
  V series[count];
  ORBA_UNROLL
  for (int i = 0; i < count; ++i)
    series[i] = lookup(Table<E, 2>{S::sine[i], S::cosine[i]}, r.quadrant);
  return rounded(sum_terms<true>(terms, z.hi, r.lo, series));
}

// The sine within 0.75 units of the last place.
template <class V>
ORBA_INLINE Pair<V> plain_sine(V hi, V z, V lo) {
  return {hi, mul_add(hi * z, in_pairs(z, z * z, Series<V>::whole), lo)};
}

// exact_by_quadrant, but within 0.95 units.
template <class V>
ORBA_INLINE V plain_by_quadrant(const Reduced<V>& r) {
  const V half = 0.5f;
  const auto odd = is_odd(r.quadrant);
  const V h = select(odd, r.hi * half, r.hi), lo = select(odd, r.lo * half, r.lo);
  const V sine = rounded(plain_sine(h, h * h, lo));
  return select(odd, neg_mul_add(sine + sine, sine, V(1.0f)), sine);
}

// Row j of the table, j from -8 to 8.
struct TableRow {
  F64 sine, sine_tail, cosine, cosine_tail;
};
#if ORBA_CLASS < 3
ORBA_INLINE TableRow read_row(I64 j) {
  alignas(16) int64_t at[2];
  _mm_store_si128(reinterpret_cast<__m128i*>(at), j.v);
  const double *first = kSineCosineRows[at[0]], *second = kSineCosineRows[at[1]];
  const F64 sine0 = _mm_load_pd(first), sine1 = _mm_load_pd(second);
  const F64 cosine0 = _mm_load_pd(first + 2), cosine1 = _mm_load_pd(second + 2);
  TableRow row;
  deinterleave(sine0, sine1, row.sine, row.sine_tail);
  deinterleave(cosine0, cosine1, row.cosine, row.cosine_tail);
  return row;
}

ORBA_INLINE SineCosine<F64> sine_cosine_by_table(const Reduced<F64>& r) {
  // Small integers sit in the lowest bits of the shifted sum, 8 more of them make a row's index.
  const F64 shifter = 0x1.8p52 + 8;
  const F64 t = r.hi * F64(kPerTableStep) + shifter;
  const F64 j = t - shifter;
  const TableRow row = read_row(as_bits(t) & I64(int64_t{31}));
  const F64 s = r.hi - j * F64(kTableStep1);
  const F64 lo = r.lo - j * F64(kTableStep2);
  const F64 z = s * s;
  const F64 sine_rest =
      s * z *
      (F64(kSineTableSeries[0]) +
       z * (F64(kSineTableSeries[1]) + z * F64(kSineTableSeries[2])));  // sin s - s
  const F64 cosine_rest =
      z * (F64(-0.5) +
           z * (F64(kCosineTableSeries[0]) +
                z * (F64(kCosineTableSeries[1]) + z * F64(kCosineTableSeries[2]))));  // cos s - 1

  // sine + s exactly, then (cosine - 1)*s, whose rounding is small enough.
  const Pair<F64> sum = fast_two_sum(row.sine, s);
  const Pair<F64> sine = fast_two_sum(sum.hi, (row.cosine - F64(1.0)) * s);
  const Pair<F64> cosine = fast_two_sum(row.cosine, negate(row.sine * s));
  const F64 sine_tail = ((sum.lo + sine.lo) + (row.sine_tail + row.cosine_tail * s)) +
                        (cosine.hi * lo + (row.cosine * sine_rest + row.sine * cosine_rest));
  const F64 cosine_tail = (cosine.lo + (row.cosine_tail - row.sine_tail * s)) +
                          ((row.cosine * cosine_rest - row.sine * sine_rest) - sine.hi * lo);
  return {{sine.hi, sine_tail}, {cosine.hi, cosine_tail}};
}
#endif

// Both, within 2^-59 (single: 2^-29) when `exact`, else 2^-54 (2^-25).
template <bool exact, class V>
ORBA_INLINE SineCosine<V> sine_cosine(const Reduced<V>& r) {
#if ORBA_CLASS < 3
  return sine_cosine_by_table(r);
#else
  using S = Series<V>;
  const Pair<V> z = square<exact>(r.hi);
  const Pair<V> cosine = sum_terms<exact>(cosine_terms(r.hi, z), z.hi, r.lo, S::cosine);
  if constexpr (exact) return {sum_terms<true>(sine_terms(r.hi, z), z.hi, r.lo, S::sine), cosine};
  return {plain_sine(r.hi, z.hi, r.lo), cosine};
#endif
}

// The cosine where the quadrant is odd, else the sine.
template <bool exact, class V>
ORBA_INLINE V cosine_or_sine(const Reduced<V>& r) {
#if ORBA_CLASS < 3
  const SineCosine<F64> y = sine_cosine<exact>(r);
  return select(is_odd(r.quadrant), rounded(y.cosine), rounded(y.sine));
#else
  return exact ? exact_by_quadrant(r) : plain_by_quadrant(r);
#endif
}

// Short forms of half precision: errors below 2^-27.
ORBA_INLINE F64 short_sine(F64 r, F64 z) { return mul_add(r * z, horner(z, kSineShortSeries), r); }
ORBA_INLINE F64 short_cosine(F64 z) { return mul_add(horner(z, kCosineShortSeries), z, F64(1.0)); }

// Signs. The sine turns in the second half turn, the cosine in the middle one; `bit1` and its
// neighbour as the sign bit.
ORBA_INLINE I64 sign_bit_of(I64 a) { return a & I64(INT64_MIN); }
ORBA_INLINE I32 sign_bit_of(I32 a) { return a & I32(INT32_MIN); }
ORBA_INLINE I64 sine_sign(I64 quadrant) { return sign_bit_of(shl<62>(quadrant)); }
ORBA_INLINE I32 sine_sign(I32 quadrant) { return sign_bit_of(shl<30>(quadrant)); }
template <class I>
ORBA_INLINE I cosine_sign(I quadrant) {
  return sine_sign(quadrant + I(1));
}
template <class V>
ORBA_INLINE V with_sign(V a, typename V::Bits sign) {
  return as_float(as_bits(a) ^ sign);
}
template <class V>
ORBA_INLINE typename V::Bits sign_of(V a) {
  return sign_bit_of(as_bits(a));
}

// What callouts do with lanes that no road takes: NaN and infinities; all others stand as they are.
template <class E>
ORBA_INLINE int32_t classify(E a, E* y) {
  if (a - a == 0) return kOk;
  *y = __builtin_isnan(a) ? a * a : a * E{0};
  return __builtin_isnan(a) ? kOk : kErrDom;
}
ORBA_INLINE M64 not_finite(F64 a) { return not_le(abs(a), F64(0x1.fffffffffffffp1023)); }
ORBA_INLINE M32 not_finite(F32 a) { return not_le(abs(a), F32(0x1.fffffep127f)); }

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
