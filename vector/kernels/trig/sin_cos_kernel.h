// The kernels of Sin and of Cos. KAM_STATUS_ERRDOM at infinities, which give NaN.
//
// class       0, 1           2                3, 5
// double HA   table          table            quadrant, exact
// double LA   as HA          as HA            quadrant
// double EP   as HA          half turns, 4    half turns, 4
// single HA   half turns, 5  half turns, 5    quadrant, exact
// single LA   as HA          as HA            quadrant
// single EP   as HA          half turns, 2    half turns, 2
//
// with the number of coefficients of the one polynomial. Beyond a bound the second vector road reduces
// by the digits of 1/(2 pi), at EP too, and takes the quadrant form; its lanes cost no callout, so
// callouts only tell infinities from NaN.
#pragma once

#include "vector/kernels/trig/half_turns.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class V, bool cosine, bool exact>
struct SinCosBase {
  using In = typename V::Element;
  using Out = In;
  using Flag = typename V::Mask;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = kClass == 5 ? 3 : kClass == 3 ? 2 : 4;

  ORBA_INLINE static V in_quadrant(V x, Reduced<V> r) {
    if constexpr (cosine) {
      r.quadrant = r.quadrant + typename V::Bits(1);
      return with_sign(cosine_or_sine<exact>(r), sine_sign(r.quadrant));
    } else {
      return with_sign(cosine_or_sine<exact>(r), sine_sign(r.quadrant) ^ sign_of(x));
    }
  }
  ORBA_INLINE static V eval_rare(V x, Flag& flag) {
    flag = flag | not_finite(x);
    return in_quadrant(x, reduce_huge(abs(x)));
  }
  static int32_t callout(const In* a, In* y) { return classify(*a, y); }
};

template <class V, bool cosine, bool exact>
struct SinCosPrecise : SinCosBase<V, cosine, exact> {
  static constexpr auto bound =
      static_cast<typename V::Element>(sizeof(typename V::Element) == 4 ? 10000
                                       : exact || !kFused               ? 0x1.00000e4db24cp16
                                       : cosine                         ? 0x1p23
                                                                        : 0x1p24);
  ORBA_INLINE static V eval(V x, typename V::Mask& flag) {
    const V a = abs(x);
    flag = flag | not_le(a, V(bound));
    return SinCosPrecise::in_quadrant(x, reduce(a));
  }
};

template <bool cosine>
struct SinCosShort : SinCosBase<F64, cosine, false> {
  ORBA_INLINE static F64 eval(F64 x, M64& flag) {
    flag = flag | not_le(abs(x), F64(0x1p24));
    return by_half_turns<cosine>(x, cosine ? kHalfTurnSeriesToOne4 : kHalfTurnSeries4);
  }
};

#if ORBA_CLASS >= 3
template <bool cosine>
using SinCosSingle = SinCosPrecise<F32, cosine, true>;
#else
template <bool cosine>
struct SinCosSingle : SinCosBase<F32, cosine, true> {
  static constexpr int unroll = 2;
  ORBA_INLINE static F32 eval(F32 x, M32& flag) {
    flag = flag | not_le(abs(x), F32(10000.0f));
    return narrow(of_single<cosine>(widen_low(x)), of_single<cosine>(widen_high(x)));
  }
  ORBA_INLINE static F32 eval_rare(F32 x, M32& flag) {
    flag = flag | not_finite(x);
    return narrow(huge(widen_low(x)), huge(widen_high(x)));
  }

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
#endif

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
#  define ORBA_SIN_COS_LA(Name, cosine)                                \
    ORBA_KERNEL(1i_1o, d, Name, LA, SinCosPrecise<F64, cosine, false>) \
    ORBA_KERNEL(1i_1o, s, Name, LA, SinCosPrecise<F32, cosine, false>)
#else
#  define ORBA_SIN_COS_LA(Name, cosine)      \
    ORBA_SAME_KERNEL(1i_1o, d, Name, LA, HA) \
    ORBA_SAME_KERNEL(1i_1o, s, Name, LA, HA)
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
#define ORBA_SIN_COS_KERNELS(Name, cosine)                          \
  ORBA_KERNEL(1i_1o, d, Name, HA, SinCosPrecise<F64, cosine, true>) \
  ORBA_SIN_COS_LA(Name, cosine)                                     \
  ORBA_KERNEL(1i_1o, s, Name, HA, SinCosSingle<cosine>)             \
  ORBA_SIN_COS_EP(Name, cosine)
