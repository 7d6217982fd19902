// SinCos: sine and cosine of an angle in radians by one reduction. KAM_STATUS_ERRDOM at infinities,
// where both are NaN.
//
// class       0, 1      2         3, 5
// double HA   table     table     quadrant, exact
// double LA   as HA     as HA     quadrant
// double EP   as HA     short     short
// single HA   short*    short*    quadrant, exact
// single LA   as HA     as HA     quadrant
// single EP   as HA     as HA     short
// * in double precision
#include "vector/kernels/trig/half_turns.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Of signed arguments, whose sine has the sign of the reduced one already.
template <class V>
ORBA_INLINE Results<V> in_quadrant(V sine, V cosine, typename V::Bits quadrant) {
  using E = typename V::Element;
  constexpr int shift = 8 * sizeof(E) - 2;
  const auto odd = is_odd(quadrant);
  const auto sign_bit = as_bits(V(E(-0.0)));
  const auto next = quadrant + typename V::Bits(1);
  return {as_float(as_bits(select(odd, cosine, sine)) ^ (shl<shift>(quadrant) & sign_bit)),
          as_float(as_bits(select(odd, sine, cosine)) ^ (shl<shift>(next) & sign_bit))};
}
// Of magnitudes: the sine has yet to get the argument's sign.
template <class V>
ORBA_INLINE Results<V> in_quadrant(V x, V sine, V cosine, typename V::Bits quadrant) {
  const Results<V> y = in_quadrant(sine, cosine, quadrant);
  return {as_float(as_bits(y.first) ^ (as_bits(x) & as_bits(V(typename V::Element(-0.0))))),
          y.second};
}

template <bool exact, class V>
ORBA_INLINE Results<V> precise(V x, const Reduced<V>& r) {
  const SineCosine<V> y = sine_cosine<exact>(r);
  return in_quadrant(x, rounded(y.sine), rounded(y.cosine), r.quadrant);
}
ORBA_INLINE Results<F64> brief(F64 x, const Reduced<F64>& r) {
  const F64 z = r.hi * r.hi;
  return in_quadrant(x, short_sine(r.hi, z), short_cosine(z), r.quadrant);
}

template <class V, bool exact>
struct SinCosBase {
  using In = typename V::Element;
  using Out = In;
  using Flag = typename V::Mask;
  static constexpr int inputs = 1;
  static constexpr int outputs = 2;
  static constexpr int unroll = 2;
  ORBA_INLINE static Results<V> eval_rare(V x, Flag& flag) {
    flag = flag | not_finite(x);
    return precise<exact>(x, reduce_huge(abs(x)));
  }
  static int32_t callout(const In* a, In* y, In* z) {
    classify(*a, z);
    return classify(*a, y);
  }
};

template <class V, bool exact>
struct SinCosBoth : SinCosBase<V, exact> {
  static constexpr auto bound =
      static_cast<typename V::Element>(sizeof(typename V::Element) == 4 ? 10000
                                       : exact || !kFused               ? 0x1.00000e4db24cp16
                                                                        : 0x1p23);
  ORBA_INLINE static Results<V> eval(V x, typename V::Mask& flag) {
    const V a = abs(x);
    flag = flag | not_le(a, V(bound));
    return precise<exact>(x, reduce(a));
  }
};

struct SinCosBothShort : SinCosBase<F64, false> {
  ORBA_INLINE static Results<F64> eval(F64 x, M64& flag) {
    const F64 a = abs(x);
    flag = flag | not_le(a, F64(0x1p23));
    return brief(x, reduce_short(a));
  }
};

#if ORBA_CLASS >= 3
using SinCosBothSingle = SinCosBoth<F32, true>;
#else
struct SinCosBothSingle : SinCosBase<F32, true> {
  static constexpr int unroll = 1;
  ORBA_INLINE static Results<F32> joined(const Fraction& lo, const Fraction& hi) {
    const Circle a = of_fraction(lo.f), b = of_fraction(hi.f);
    const Results<F64> u = in_quadrant(a.sine, a.cosine, lo.turns);
    const Results<F64> v = in_quadrant(b.sine, b.cosine, hi.turns);
    return {narrow(u.first, v.first), narrow(u.second, v.second)};
  }
  ORBA_INLINE static Results<F32> eval(F32 x, M32& flag) {
    flag = flag | not_le(abs(x), F32(10000.0f));
    return joined(quarter_turns(widen_low(x)), quarter_turns(widen_high(x)));
  }
  ORBA_INLINE static Results<F32> eval_rare(F32 x, M32& flag) {
    flag = flag | not_finite(x);
    return joined(quarter_turns_of_huge(widen_low(x)), quarter_turns_of_huge(widen_high(x)));
  }
};
#endif

struct SinCosBothSingleShort : SinCosBase<F32, false> {
  static constexpr int unroll = 2;
  ORBA_INLINE static Results<F32> eval(F32 x, M32& flag) {
    const F32 a = abs(x);
    flag = flag | not_le(a, F32(10000.0f));
    const Reduced<F32> r = reduce_short(a);
    const F32 z = r.hi * r.hi;
    const F32 sine = odd_polynomial(r.hi, kSineShortSeriesF);
    const F32 cosine =
        mul_add(mul_add(F32(kCosineShortSeriesF[1]), z, F32(kCosineShortSeriesF[0])), z, F32(1.0f));
    return in_quadrant(x, sine, cosine, r.quadrant);
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_KERNEL(1i_2o, d, SinCos, HA, SinCosBoth<F64, true>)
ORBA_KERNEL(1i_2o, s, SinCos, HA, SinCosBothSingle)
#if ORBA_CLASS >= 3
ORBA_KERNEL(1i_2o, d, SinCos, LA, SinCosBoth<F64, false>)
ORBA_KERNEL(1i_2o, s, SinCos, LA, SinCosBoth<F32, false>)
ORBA_KERNEL(1i_2o, s, SinCos, EP, SinCosBothSingleShort)
#else
ORBA_SAME_KERNEL(1i_2o, d, SinCos, LA, HA)
ORBA_SAME_KERNEL(1i_2o, s, SinCos, LA, HA)
ORBA_SAME_KERNEL(1i_2o, s, SinCos, EP, HA)
#endif
#if ORBA_CLASS >= 2
ORBA_KERNEL(1i_2o, d, SinCos, EP, SinCosBothShort)
#else
ORBA_SAME_KERNEL(1i_2o, d, SinCos, EP, HA)
#endif
