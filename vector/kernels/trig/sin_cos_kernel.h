// The kernels of Sin and of Cos. KAM_STATUS_ERRDOM at infinities, which give NaN.
//
// class       0, 1           2                3, 5
// double HA   table          table            quadrant, exact
// double LA   as HA          as HA            quadrant
// double EP   as HA          half turns, 4    half turns, 4
// single HA   half turns, 5  half turns, 5    half turns, 5
// single LA   as HA          as HA            as HA
// single EP   as HA          half turns, 2    half turns, 2
//
// with the number of coefficients of the one polynomial. Beyond a bound the second vector road reduces
// by the digits of 1/(2 pi), at EP too, and takes the quadrant form; its lanes cost no callout, so
// callouts only tell infinities from NaN.
#pragma once

#include "vector/kernels/trig/half_turns.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <bool cosine, bool exact>
struct SinCosDouble {
  using In = double;
  using Out = double;
  using Flag = M64;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = kClass == 5 ? 1 : kClass == 3 ? 2 : 4;

  ORBA_INLINE static F64 in_quadrant(F64 x, const Reduced& r) {
    if constexpr (cosine) {
      const F64 y = cosine_or_sine<exact>(is_odd(r.quadrant + I64(int64_t{1})), r);
      return with_sign(y, cosine_sign(r.quadrant));
    } else {
      const F64 y = cosine_or_sine<exact>(is_odd(r.quadrant), r);
      return with_sign(y, sine_sign(r.quadrant) ^ sign_of(x));
    }
  }
  ORBA_INLINE static F64 eval_rare(F64 x, M64& flag) {
    flag = flag | not_finite(x);
    return in_quadrant(x, reduce_huge(abs(x)));
  }
  static int32_t callout(const double* a, double* y) { return classify(*a, y); }
};

template <bool cosine, bool exact>
struct SinCosPrecise : SinCosDouble<cosine, exact> {
  static constexpr double bound = exact || !kFused ? 0x1.00000e4db24cp16 : cosine ? 0x1p23 : 0x1p24;
  ORBA_INLINE static F64 eval(F64 x, M64& flag) {
    const F64 a = abs(x);
    flag = flag | not_le(a, F64(bound));
    return SinCosPrecise::in_quadrant(x, reduce(a));
  }
};

template <bool cosine>
struct SinCosShort : SinCosDouble<cosine, false> {
  ORBA_INLINE static F64 eval(F64 x, M64& flag) {
    flag = flag | not_le(abs(x), F64(0x1p24));
    return by_half_turns<cosine>(x, cosine ? kHalfTurnSeriesToOne4 : kHalfTurnSeries4);
  }
};

template <bool cosine>
struct SinCosSingle {
  using In = float;
  using Out = float;
  using Flag = M32;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = kClass == 5 ? 1 : 2;

  ORBA_INLINE static F32 eval(F32 x, M32& flag) {
    flag = flag | not_le(abs(x), F32(10000.0f));
    return narrow(of_single<cosine>(widen_low(x)), of_single<cosine>(widen_high(x)));
  }
  ORBA_INLINE static F32 eval_rare(F32 x, M32& flag) {
    flag = flag | not_finite(x);
    return narrow(huge(widen_low(x)), huge(widen_high(x)));
  }
  static int32_t callout(const float* a, float* y) { return classify(*a, y); }

 private:
  ORBA_INLINE static F64 huge(F64 x) {
    const Fraction q = quarter_turns_of_huge(x);
    const Circle y = of_fraction(q.f);
    if constexpr (cosine)
      return with_sign(select(is_odd(q.turns), y.sine, y.cosine), cosine_sign(q.turns));
    else
      return with_sign(select(is_odd(q.turns), y.cosine, y.sine), sine_sign(q.turns));
  }
};

template <bool cosine>
struct SinCosSingleShort : SinCosSingle<cosine> {
  static constexpr int unroll = 4;
  ORBA_INLINE static F32 eval(F32 x, M32& flag) {
    flag = flag | not_le(abs(x), F32(10000.0f));
    return by_half_turns<cosine>(x, cosine ? kHalfTurnSeriesToOne2F : kHalfTurnSeries2F);
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

#if ORBA_CLASS >= 3
#  define ORBA_SIN_COS_LA(Name, cosine) \
    ORBA_KERNEL(1i_1o, d, Name, LA, SinCosPrecise<cosine, false>)
#else
#  define ORBA_SIN_COS_LA(Name, cosine) ORBA_SAME_KERNEL(1i_1o, d, Name, LA, HA)
#endif
#if ORBA_CLASS >= 2
#  define ORBA_SIN_COS_EP(Name, cosine)                  \
    ORBA_KERNEL(1i_1o, d, Name, EP, SinCosShort<cosine>) \
    ORBA_KERNEL(1i_1o, s, Name, EP, SinCosSingleShort<cosine>)
#else
#  define ORBA_SIN_COS_EP(Name, cosine)      \
    ORBA_SAME_KERNEL(1i_1o, d, Name, EP, HA) \
    ORBA_SAME_KERNEL(1i_1o, s, Name, EP, HA)
#endif
#define ORBA_SIN_COS_KERNELS(Name, cosine)                     \
  ORBA_KERNEL(1i_1o, d, Name, HA, SinCosPrecise<cosine, true>) \
  ORBA_SIN_COS_LA(Name, cosine)                                \
  ORBA_KERNEL(1i_1o, s, Name, HA, SinCosSingle<cosine>)        \
  ORBA_SAME_KERNEL(1i_1o, s, Name, LA, HA)                     \
  ORBA_SIN_COS_EP(Name, cosine)
