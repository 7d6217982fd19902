// Sine and cosine of a reduced argument, and the functions made of them.
//
// With FMA: on |r| <= pi/4, z = r*r,
//
//   sin r = r - r*z/6 + r*z^2*S(z),    cos r = 1 - z/2 + z^2*C(z),
//
// the first two terms as a head and its error, so that the polynomials only add little. At HA the
// errors of z and r*z count too.
// Without FMA such errors are dear: r = j*pi/32 + s, and the addition theorem with a table of 17
// rows, whose terms beyond the first one are small enough to be rounded.
#pragma once

#include "vector/kernels/contract/kernel.h"
#include "vector/kernels/contract/scalar.h"
#include "vector/kernels/simd/polynomial.h"
#include "vector/kernels/trig/reduction.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

struct SineCosine {
  Pair<F64> sine, cosine;  // heads and tails, not yet added
};

// start + factor*(second + z*series(z)) and slope*lo, second*factor_error: one form for both functions,
// so that lanes can choose before the polynomial is evaluated.
struct Terms {
  F64 start, factor, factor_error, second, slope;
  F64 series[6];
};

template <bool exact, bool sloping = true>
ORBA_INLINE Pair<F64> sum_terms(const Terms& t, F64 z, F64 lo) {
  Pair<F64> y;
  if constexpr (exact) {
    y.hi = mul_add(t.factor, t.second, t.start);
    y.lo = mul_add(t.factor, t.second, t.start - y.hi);
  } else {
    y = fast_two_sum(t.start, t.factor * t.second);
  }
  y.lo = mul_add(t.factor, z * horner(z, t.series), y.lo);
  y.lo = sloping ? mul_add(lo, t.slope, y.lo) : y.lo + lo;
  if constexpr (exact) y.lo = mul_add(t.factor_error, t.second, y.lo);
  return y;
}

template <bool exact>
ORBA_INLINE Terms sine_terms(const Reduced& r, F64 z, F64 z_error) {
  const F64 cube = r.hi * z;
  Terms t = {r.hi, cube, cube, kMinusSixth, 1.0, {}};
  if constexpr (exact) {
    t.factor_error = mul_add(r.hi, z_error, mul_sub(r.hi, z, cube));
    t.slope = neg_mul_add(z, F64(0.5), F64(1.0));
  }
  for (int i = 0; i < 6; ++i) t.series[i] = kSineSeries[i];
  return t;
}
ORBA_INLINE Terms cosine_terms(const Reduced& r, F64 z, F64 z_error) {
  Terms t = {1.0, z, z_error, -0.5, negate(r.hi), {}};
  for (int i = 0; i < 6; ++i) t.series[i] = kCosineSeries[i];
  return t;
}

ORBA_INLINE Terms select(M64 m, const Terms& a, const Terms& b) {
  Terms t = {select(m, a.start, b.start),
             select(m, a.factor, b.factor),
             select(m, a.factor_error, b.factor_error),
             select(m, a.second, b.second),
             select(m, a.slope, b.slope),
             {}};
  ORBA_UNROLL
  for (int i = 0; i < 6; ++i) t.series[i] = select(m, a.series[i], b.series[i]);
  return t;
}

// Row j of the table, j from -8 to 8.
struct Row {
  F64 sine, sine_tail, cosine, cosine_tail;
};
#if ORBA_CLASS < 3
ORBA_INLINE Row read_row(I64 j) {
  alignas(16) int64_t at[2];
  _mm_store_si128(reinterpret_cast<__m128i*>(at), j.v);
  const double *first = kSineCosineRows[at[0]], *second = kSineCosineRows[at[1]];
  const F64 sine0 = _mm_load_pd(first), sine1 = _mm_load_pd(second);
  const F64 cosine0 = _mm_load_pd(first + 2), cosine1 = _mm_load_pd(second + 2);
  Row row;
  deinterleave(sine0, sine1, row.sine, row.sine_tail);
  deinterleave(cosine0, cosine1, row.cosine, row.cosine_tail);
  return row;
}

ORBA_INLINE SineCosine sine_cosine_by_table(const Reduced& r) {
  // Small integers sit in the lowest bits of the shifted sum, 8 more of them make a row's index.
  const F64 shifter = 0x1.8p52 + 8;
  const F64 t = r.hi * F64(kPerTableStep) + shifter;
  const F64 j = t - shifter;
  const Row row = read_row(as_bits(t) & I64(int64_t{31}));
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

// Both, within 2^-59 when `exact`, else 2^-54.
template <bool exact>
ORBA_INLINE SineCosine sine_cosine(const Reduced& r) {
#if ORBA_CLASS < 3
  return sine_cosine_by_table(r);
#else
  const F64 z = r.hi * r.hi;
  const F64 z_error = mul_sub(r.hi, r.hi, z);
  return {sum_terms<exact, exact>(sine_terms<exact>(r, z, z_error), z, r.lo),
          sum_terms<exact>(cosine_terms(r, z, z_error), z, r.lo)};
#endif
}

ORBA_INLINE F64 rounded(Pair<F64> a) { return a.hi + a.lo; }

// The cosine where the mask is set, else the sine. On class 5 lanes choose the terms, which is cheaper
// than two polynomials.
template <bool exact>
ORBA_INLINE F64 cosine_or_sine(M64 cosine, const Reduced& r) {
  if constexpr (kClass == 5) {
    const F64 z = r.hi * r.hi;
    const F64 z_error = mul_sub(r.hi, r.hi, z);
    return rounded(sum_terms<exact>(
        select(cosine, cosine_terms(r, z, z_error), sine_terms<exact>(r, z, z_error)), z, r.lo));
  } else {
    const SineCosine y = sine_cosine<exact>(r);
    return select(cosine, rounded(y.cosine), rounded(y.sine));
  }
}

// Short forms of half precision: errors below 2^-27.
ORBA_INLINE F64 short_sine(F64 r, F64 z) { return mul_add(r * z, horner(z, kSineShortSeries), r); }
ORBA_INLINE F64 short_cosine(F64 z) { return mul_add(horner(z, kCosineShortSeries), z, F64(1.0)); }

// Signs. The sine turns in the second half turn, the cosine in the middle one; `bit1` and its
// neighbour as the sign bit.
ORBA_INLINE I64 sine_sign(I64 quadrant) { return shl<62>(quadrant) & I64(INT64_MIN); }
ORBA_INLINE I64 cosine_sign(I64 quadrant) { return sine_sign(quadrant + I64(int64_t{1})); }
ORBA_INLINE F64 with_sign(F64 a, I64 sign) { return as_float(as_bits(a) ^ sign); }
ORBA_INLINE I64 sign_of(F64 a) { return as_bits(a) & I64(INT64_MIN); }

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
