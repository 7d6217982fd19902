// What the inverse trigonometric functions share.
#pragma once

#include "vector/kernels/contract/kernel.h"
#include "vector/kernels/contract/scalar.h"
#include "vector/kernels/invtrig/invtrig_coefficients.h"
#include "vector/kernels/simd/polynomial.h"
#include "vector/kernels/simd/residual.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// With the lowest term last, whose addition rounds once where even_odd does twice.
template <class V, class C, int n>
ORBA_INLINE V lowest_last(V x, const C (&c)[n]) {
  return mul_add(even_odd<1>(x, x * x, c), x, V(c[0]));
}

// Polynomials and constants by type.
template <class V>
struct Data;
template <>
struct Data<F64> {
  static constexpr auto& atan = kAtanSeries;
  static constexpr auto& atan_ep = kAtanSeriesEp;
  static constexpr auto& asin = kAsinSeries;
  static constexpr auto& asin_ep = kAsinSeriesEp;
  static constexpr Pair<double> atan_half = {kAtanHalf, kAtanHalfTail};
  static constexpr Pair<double> half_pi = {kHalfPi, kHalfPiTail};
  static constexpr Pair<double> pi = {kPi, kPiTail};
  static constexpr double half_pi_rounded = kHalfPiRounded, pi_rounded = kPiRounded;
  static constexpr double tiny_square = 0x1p-200;
};
template <>
struct Data<F32> {
  static constexpr auto& atan = kAtanSeriesF;
  static constexpr auto& atan_ep = kAtanSeriesEpF;
  static constexpr auto& asin = kAsinSeriesF;
  static constexpr auto& asin_ep = kAsinSeriesEpF;
  static constexpr Pair<float> atan_half = {kAtanHalfF, kAtanHalfFTail};
  static constexpr Pair<float> half_pi = {kHalfPiF, kHalfPiFTail};
  static constexpr Pair<float> pi = {kPiF, kPiFTail};
  static constexpr float half_pi_rounded = kHalfPiRoundedF, pi_rounded = kPiRoundedF;
  static constexpr float tiny_square = 0x1p-76f;
};

// x where m holds, else 0.
#if ORBA_CLASS == 5
ORBA_INLINE F64 where(M64 m, F64 x) { return _mm512_maskz_mov_pd(m.v, x.v); }
ORBA_INLINE F32 where(M32 m, F32 x) { return _mm512_maskz_mov_ps(m.v, x.v); }
#elif ORBA_CLASS == 3
ORBA_INLINE F64 where(M64 m, F64 x) { return _mm256_and_pd(m.v, x.v); }
ORBA_INLINE F32 where(M32 m, F32 x) { return _mm256_and_ps(m.v, x.v); }
#else
ORBA_INLINE F64 where(M64 m, F64 x) { return _mm_and_pd(m.v, x.v); }
ORBA_INLINE F32 where(M32 m, F32 x) { return _mm_and_ps(m.v, x.v); }
#endif

template <class V>
ORBA_INLINE V sign_of(V x) {
  return as_float(as_bits(x) & as_bits(V(-0.0f)));
}
template <class V>
ORBA_INLINE V operator^(V x, V sign) {
  return as_float(as_bits(x) ^ as_bits(sign));
}
// The sign of x, changed where m holds; lanes whose sign is set.
#if ORBA_CLASS == 5
ORBA_INLINE F64 flipped_sign(F64 x, M64 m) { return sign_of(x) ^ where(m, F64(-0.0)); }
ORBA_INLINE F32 flipped_sign(F32 x, M32 m) { return sign_of(x) ^ where(m, F32(-0.0f)); }
ORBA_INLINE M64 negative(F64 x) { return {_mm512_movepi64_mask(as_bits(x).v)}; }
ORBA_INLINE M32 negative(F32 x) { return {_mm512_movepi32_mask(as_bits(x).v)}; }
#else
template <class V>
ORBA_INLINE V flipped_sign(V x, typename V::Mask m) {
  return sign_of(x ^ V(m.v));
}
template <class V>
ORBA_INLINE typename V::Mask negative(V x) {
  if constexpr (kClass >= 2) return {x.v};  // the top bit of a lane is all that a blend looks at
  return x < V(0);
}
#endif

// base + lead + (p*q + small) for |base| >= |lead| or 0. HA keeps what the sum of the leading terms
// loses, a quarter of a unit.
template <Accuracy accuracy, class V>
ORBA_INLINE V add_up(V base, V lead, V p, V q, V small) {
  if constexpr (accuracy == kLa) return base + (lead + mul_add(p, q, small));
  const Pair<V> sum = fast_two_sum(base, lead);
  return sum.hi + mul_add(p, q, sum.lo + small);
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
