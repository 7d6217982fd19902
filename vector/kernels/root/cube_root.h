// Cbrt, InvCbrt and Pow2o3: a^(n/3) for n = 1, -1, 2.
//
// The bits of a floating-point number are nearly linear in its logarithm, so that a constant less a third
// of the bits of |a| is a seed y of |a|^(-1/3), off by 3.4 %, for all normal numbers alike. With
//
//   e = 1 - |a|*y^3,   a^(1/3) = a*y^2*(1 - e)^(-2/3),   a^(-1/3) = y*(1 - e)^(-1/3),
//                      a^(2/3) = a*y*(1 - e)^(-1/3),
//
//   EP      the series on the seed, |e| < 0.103
//   HA, LA  the seed refined by such a series and shortened, so that the leading product is known in
//           two exact words and e, |e| < 2^-11 (single: 2^-9), to half a unit of itself; what follows is
//           small: half a unit for the last addition and 2^-8 for the rest
//
// class      0, 1            2                         3, 5
// double LA  as HA           as HA                     as HA
//        EP  as HA           by the seed               by the seed
// single HA  in double       in double                 as double
//        LA  as HA           as HA                     as HA
//        EP  as HA           by the seed               by the seed
#pragma once

#include "vector/kernels/contract/accuracy.h"
#include "vector/kernels/contract/kernel.h"
#include "vector/kernels/contract/scalar.h"
#include "vector/kernels/root/root_coefficients.h"
#include "vector/kernels/simd/exponent.h"
#include "vector/kernels/simd/pair_arithmetic.h"
#include "vector/kernels/simd/polynomial.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// In units of an exponent: what a third of the bits is taken from. It makes the range of e symmetric.
constexpr double cube_root_offset(int bias) { return 4 * bias / 3.0 - 0.0681; }

// a - b/3 to the nearest integer, or nearly so.
#if ORBA_CLASS == 5
ORBA_INLINE I64 less_a_third(double a, I64 b) {
  const F64 number = _mm512_maskz_cvtepi64_pd(0xff, b.v);
  return _mm512_maskz_cvtpd_epi64(0xff, neg_mul_add(number, F64(1.0 / 3), F64(a)).v);
}
ORBA_INLINE I32 less_a_third(float a, I32 b) {
  const F32 number = _mm512_maskz_cvtepi32_ps(0xffff, b.v);
  return _mm512_maskz_cvtps_epi32(0xffff, neg_mul_add(number, F32(1.0f / 3), F32(a)).v);
}
#else
ORBA_INLINE I32 less_a_third(float a, I32 b) {
  const F32 difference = neg_mul_add(to_float(b), F32(1.0f / 3), F32(a));
#  if ORBA_CLASS == 3
  return _mm256_cvtps_epi32(difference.v);
#  else
  return _mm_cvtps_epi32(difference.v);
#  endif
}
#endif

// |x|^(-1/3) with the sign of x, for normal x.
ORBA_INLINE F32 cube_root_seed(F32 x) {
  constexpr auto offset = static_cast<float>(cube_root_offset(127) * pow2(23));
  return with_sign_of(x, as_float(less_a_third(offset, as_bits(abs(x)))));
}
#if ORBA_CLASS == 5
ORBA_INLINE F64 cube_root_seed(F64 x) {
  constexpr double offset = cube_root_offset(1023) * pow2(52);
  return with_sign_of(x, as_float(less_a_third(offset, as_bits(abs(x)))));
}
#else
// Of the high words of |x|, and those words less their signs.
ORBA_INLINE Wide<F64> cube_root_seed(I32 magnitude, I32 sign) {
  constexpr auto offset = static_cast<float>(cube_root_offset(1023) * pow2(20));
  return from_high_words(less_a_third(offset, magnitude) | sign);
}
#endif

// Keeps so many leading bits that the square is exact; without FMA so few that the cube leaves room for
// a head of x.
ORBA_INLINE F32 short_cube_root(F32 y) {
  constexpr int32_t upper_12_bits = static_cast<int32_t>(0xfffff000);
  return as_float(as_bits(y) & I32(upper_12_bits));
}
ORBA_INLINE F64 short_cube_root(F64 y) {
  constexpr uint64_t upper_14_bits = 0xffffff8000000000, upper_26_bits = 0xfffffffff8000000;
  return as_float(as_bits(y) & I64(static_cast<int64_t>(kFused ? upper_26_bits : upper_14_bits)));
}

// x*y in two words. Without FMA the first is short enough for another product with a short y.
ORBA_INLINE Pair<F32> leading_product(F32 x, F32 y) { return two_product(x, y); }
ORBA_INLINE Pair<F64> leading_product(F64 x, F64 y) {
  if constexpr (kFused) return two_product(x, y);
  constexpr auto upper_11_bits = static_cast<int64_t>(0xfffffc0000000000);
  const F64 head = as_float(as_bits(x) & I64(upper_11_bits));
  return {head * y, (x - head) * y};
}

template <class V>
struct CubeRootSeries;
template <>
struct CubeRootSeries<F64> {
  static constexpr auto& refinement = kCubeRootRefinement;
  static constexpr auto& inverse = kInverseRootSeries;
  static constexpr auto& inverse_ep = kInverseRootSeriesEp;
  static constexpr auto& inverse_square = kInverseSquareSeries;
  static constexpr auto& inverse_square_ep = kInverseSquareSeriesEp;
};
template <>
struct CubeRootSeries<F32> {
  static constexpr auto& refinement = kInverseRootSeriesEpF;
  static constexpr auto& inverse = kInverseRootSeriesF;
  static constexpr auto& inverse_ep = kInverseRootSeriesEpF;
  static constexpr auto& inverse_square = kInverseSquareSeriesF;
  static constexpr auto& inverse_square_ep = kInverseSquareSeriesEpF;
};

// |x|^(thirds/3), with the sign of x where that is odd, from the seed y.
template <int thirds, Accuracy accuracy, class V>
ORBA_INLINE V third_power(V x, V y) {
  using Series = CubeRootSeries<V>;
  if constexpr (accuracy == kEp) {
    const V square = y * y;
    const V lead = thirds == 2 ? x * y : x * square;
    const V e = neg_mul_add(lead, thirds == 2 ? square : y, V(1));
    if constexpr (thirds == 1) return lead * horner(e, Series::inverse_square_ep);
    return (thirds == 2 ? lead : y) * horner(e, Series::inverse_ep);
  } else {
    y = short_cube_root(y * horner(neg_mul_add(x * (y * y), y, V(1)), Series::refinement));
    const V square = y * y;
    const Pair<V> lead = leading_product(x, thirds == 2 ? y : square);
    const V factor = thirds == 2 ? square : y;
    const V e = neg_mul_add(lead.lo, factor, neg_mul_add(lead.hi, factor, V(1)));
    if constexpr (thirds == -1) return mul_add(y, e * horner(e, Series::inverse), y);
    const V w = thirds == 2 ? horner(e, Series::inverse) : horner(e, Series::inverse_square);
    return lead.hi + mul_add(kFused ? lead.hi : lead.hi + lead.lo, e * w, lead.lo);
  }
}

// Smaller arguments are scaled by callouts. Without FMA what their heads leave has to be normal too.
constexpr int kLowestExponent = kFused ? -1022 : -959;

#if ORBA_CLASS == 5
template <int thirds, Accuracy accuracy>
ORBA_INLINE F64 third_power(F64 x, M64& flag) {
  flag = flag | not_positive_normal(abs(x));
  return third_power<thirds, accuracy>(x, cube_root_seed(x));
}
template <int thirds>
ORBA_INLINE double scalar_third_power(double x) {
  M64 flag;
  return first_lane(third_power<thirds, kHa>(F64(x), flag));
}
#else
template <int thirds, Accuracy accuracy>
ORBA_INLINE Wide<F64> third_power(Wide<F64> x, WordMask& flag) {
  const I32 high = high_words(x), magnitude = high & I32(INT32_MAX);
  flag = flag | WordMask{outside(magnitude, (kLowestExponent + 1023) << 20, 0x7fefffff)};
  const Wide<F64> y = cube_root_seed(magnitude, high ^ magnitude);
  return {third_power<thirds, accuracy>(x.lo, y.lo), third_power<thirds, accuracy>(x.hi, y.hi)};
}
template <int thirds>
ORBA_INLINE double scalar_third_power(double x) {
  WordMask flag;
  return first_lane(third_power<thirds, kHa>(Wide<F64>{x, x}, flag).lo);
}
#endif

template <int thirds>
ORBA_COLD int32_t third_power_callout(const double* a, double* r) {
  const double x = *a;
  if (x == 0 || is_nan_or_inf(x)) {  // a denormal number that counts as zero too
    *r = thirds == 1 ? x + x : thirds == 2 ? x * x : 1.0 / x;
    return thirds == -1 && x == 0 ? kSing : kOk;
  }
  constexpr int third = 100;
  if (__builtin_fabs(x) < pow2(kLowestExponent))
    *r = scalar_third_power<thirds>(x * pow2(3 * third)) * pow2(-thirds * third);
  else
    *r = scalar_third_power<thirds>(x);
  return kOk;
}

template <int thirds, Accuracy accuracy>
struct ThirdPower64 {
  using In = double;
  using Out = double;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
#if ORBA_CLASS == 5
  using Flag = M64;
  static constexpr int unroll = 4;
  ORBA_INLINE static F64 eval(F64 x, M64& flag) { return third_power<thirds, accuracy>(x, flag); }
#else
  using Flag = WordMask;
  static constexpr bool wide = true;
  static constexpr int unroll = 1;
  ORBA_INLINE static Wide<F64> eval(Wide<F64> x, WordMask& flag) {
    return third_power<thirds, accuracy>(x, flag);
  }
#endif
  static int32_t callout(const double* a, double* r) { return third_power_callout<thirds>(a, r); }
};

template <int thirds, Accuracy accuracy>
struct ThirdPower32 {
  using In = float;
  using Out = float;
  using Flag = M32;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = 4;
  ORBA_INLINE static F32 eval(F32 x, M32& flag) {
    flag = flag | not_positive_normal(abs(x));
#if ORBA_CLASS < 3
    if constexpr (accuracy == kHa) {
      WordMask unused;
      const Wide<F64> wide = {widen_low(x), widen_high(x)};
      const Wide<F64> y = third_power<thirds, kEp>(wide, unused);
      return narrow(y.lo, y.hi);
    } else
#endif
      return third_power<thirds, accuracy>(x, cube_root_seed(x));
  }
  static int32_t callout(const float* a, float* r) {
    return narrowed(third_power_callout<thirds>, a, r);
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

#define ORBA_THIRD_POWER_HA(Name, thirds)                    \
  ORBA_KERNEL(1i_1o, d, Name, HA, ThirdPower64<thirds, kHa>) \
  ORBA_SAME_KERNEL(1i_1o, d, Name, LA, HA)                   \
  ORBA_KERNEL(1i_1o, s, Name, HA, ThirdPower32<thirds, kHa>) \
  ORBA_SAME_KERNEL(1i_1o, s, Name, LA, HA)
#if ORBA_CLASS >= 2
#  define ORBA_THIRD_POWER_KERNELS(Name, thirds)               \
    ORBA_THIRD_POWER_HA(Name, thirds)                          \
    ORBA_KERNEL(1i_1o, d, Name, EP, ThirdPower64<thirds, kEp>) \
    ORBA_KERNEL(1i_1o, s, Name, EP, ThirdPower32<thirds, kEp>)
#else
#  define ORBA_THIRD_POWER_KERNELS(Name, thirds) \
    ORBA_THIRD_POWER_HA(Name, thirds)            \
    ORBA_SAME_KERNEL(1i_1o, d, Name, EP, HA)     \
    ORBA_SAME_KERNEL(1i_1o, s, Name, EP, HA)
#endif
