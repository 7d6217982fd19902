// Tan: the tangent of an angle in radians. KAM_STATUS_ERRDOM at infinities, which give NaN.
//
// n/d in even quadrants, -d/n in odd ones, where n/d is the tangent of the reduced argument:
//
// class       0, 1    2       3, 5
// double HA   table   table   pairs, exact
// double LA   as HA   as HA   pairs
// double EP   as HA   ratio   ratio
// single HA   ratio*  ratio*  pairs, exact
// single LA   as HA   as HA   pairs
// single EP   as HA   as HA   ratio
// * in double precision
//
// table: sine and cosine as pairs; ratio: r*N(r^2)/D(r^2), a rational function; pairs: that with n and d
// as pairs.
#include "vector/kernels/trig/half_turns.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

#if ORBA_CLASS >= 3
template <class V>
struct Ratio;
template <>
struct Ratio<F64> {
  static constexpr double second_above = kTangentPairNumeratorSecond;
  static constexpr double second_below = kTangentPairDenominatorSecond;
  static constexpr auto& above = kTangentPairNumeratorSeries;
  static constexpr auto& below = kTangentPairDenominatorSeries;
};
template <>
struct Ratio<F32> {
  static constexpr float second_above = kTangentPairFNumeratorSecond;
  static constexpr float second_below = kTangentPairFDenominatorSecond;
  static constexpr auto& above = kTangentPairFNumeratorSeries;
  static constexpr auto& below = kTangentPairFDenominatorSeries;
};
#endif

// A multiple of sine and cosine, heads and tails overlapping.
template <bool exact, class V>
ORBA_INLINE SineCosine<V> tangent_terms(const Reduced<V>& r) {
#if ORBA_CLASS < 3
  return sine_cosine<exact>(r);
#else
  using C = Ratio<V>;
  const Pair<V> z = square<exact>(r.hi);
  const Terms<V> above = {r.hi,
                          {r.hi * z.hi, r.hi * z.lo},
                          C::second_above,
                          mul_add(z.hi, V(3 * C::second_above), V(1.0f))};
  const Terms<V> below = {V(1.0f), z, C::second_below, r.hi * V(2 * C::second_below)};
  return {sum_terms<exact>(above, z.hi, r.lo, C::above),
          sum_terms<exact>(below, z.hi, r.lo, C::below)};
#endif
}

// 1/a, relative error below 2^-41 (single: 2^-22); exactly 1 for 1, so that small results don't pass
// through smaller corrections.
#if ORBA_CLASS == 5
ORBA_INLINE F64 reciprocal(F64 a) {
  const F64 y = approx_recip(a);
  const F64 e = neg_mul_add(a, y, F64(1.0));
  return mul_add(y, mul_add(e, e, e), y);
}
ORBA_INLINE F32 reciprocal(F32 a) {
  const F32 y = approx_recip(a);
  return mul_add(y, neg_mul_add(a, y, F32(1.0f)), y);
}
#else
template <class V>
ORBA_INLINE V reciprocal(V a) {
  return V(1.0f) / a;
}
#endif

template <bool exact, class V>
ORBA_INLINE V tangent(V x, const Reduced<V>& r) {
  const SineCosine<V> y = tangent_terms<exact>(r);
  const auto odd = is_odd(r.quadrant);
  const Pair<V> above = {select(odd, y.cosine.hi, y.sine.hi), select(odd, y.cosine.lo, y.sine.lo)};
  const Pair<V> below = {select(odd, y.sine.hi, y.cosine.hi), select(odd, y.sine.lo, y.cosine.lo)};
  const Pair<V> n = fast_two_sum(above.hi, above.lo), d = fast_two_sum(below.hi, below.lo);
  constexpr int shift = 8 * sizeof(typename V::Element) - 1;
  return with_sign(rounded(quotient(n, d, reciprocal(d.hi))), shl<shift>(r.quadrant) ^ sign_of(x));
}

// Of r with its sign, the polynomials' errors being below 2^-29; the quotient's below 2^-28 for
// doubles, 2^-41 for floats.
template <bool for_single, int n, int d>
ORBA_INLINE F64 tangent_by_ratio(F64 r, I64 quadrant, const double (&numerator)[n],
                                 const double (&denominator)[d]) {
  const F64 z = r * r;
  const F64 sine = r * horner(z, numerator), cosine = horner(z, denominator);
  const M64 odd = is_odd(quadrant);
  const F64 above = select(odd, cosine, sine), below = select(odd, sine, cosine);
#if ORBA_CLASS == 5
  const F64 recip = approx_recip(below);
  const F64 error = neg_mul_add(below, recip, F64(1.0));
  const F64 q = above * recip;
  const F64 y = mul_add(q, for_single ? mul_add(error, error, error) : error, q);
#else
  const F64 y = above / below;
#endif
  return with_sign(y, shl<63>(quadrant));
}

template <class V, bool exact>
struct TanBase {
  using In = typename V::Element;
  using Out = In;
  using Flag = typename V::Mask;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = kClass >= 3 ? 3 : 2;
  ORBA_INLINE static V eval_rare(V x, Flag& flag) {
    flag = flag | not_finite(x);
    return tangent<exact>(x, reduce_huge(abs(x)));
  }
  static int32_t callout(const In* a, In* y) { return classify(*a, y); }
};

template <class V, bool exact>
struct TanPairs : TanBase<V, exact> {
  static constexpr auto bound = static_cast<typename V::Element>(
      sizeof(typename V::Element) == 4 ? 10000 : 0x1.00000e4db24cp16);
  ORBA_INLINE static V eval(V x, typename V::Mask& flag) {
    const V a = abs(x);
    flag = flag | not_le(a, V(bound));
    return tangent<exact>(x, reduce(a));
  }
};

struct TanRatio : TanBase<F64, false> {
  ORBA_INLINE static F64 eval(F64 x, M64& flag) {
    flag = flag | not_le(abs(x), F64(128000.0));
    const Reduced<F64> r = reduce_short(x);
    return tangent_by_ratio<false>(r.hi, r.quadrant, kTangentNumerator, kTangentDenominator);
  }
};

#if ORBA_CLASS >= 3
using TanSingle = TanPairs<F32, true>;
#else
struct TanSingle : TanBase<F32, true> {
  static constexpr int unroll = 1;
  ORBA_INLINE static F32 eval(F32 x, M32& flag) {
    flag = flag | not_le(abs(x), F32(10000.0f));
    return joined(quarter_turns(widen_low(x)), quarter_turns(widen_high(x)));
  }
  ORBA_INLINE static F32 eval_rare(F32 x, M32& flag) {
    flag = flag | not_finite(x);
    return joined(quarter_turns_of_huge(widen_low(x)), quarter_turns_of_huge(widen_high(x)));
  }

 private:
  ORBA_INLINE static F64 tangent(const Fraction& q) {
    return tangent_by_ratio<true>(q.f, q.turns, kTangentOfQuarterTurnsNumerator,
                                  kTangentOfQuarterTurnsDenominator);
  }
  ORBA_INLINE static F32 joined(const Fraction& lo, const Fraction& hi) {
    return narrow(tangent(lo), tangent(hi));
  }
};
#endif

struct TanSingleShort : TanBase<F32, false> {
  static constexpr int unroll = 2;
  ORBA_INLINE static F32 eval(F32 x, M32& flag) {
    const F32 a = abs(x);
    flag = flag | not_le(a, F32(10000.0f));
    const Reduced<F32> r = reduce_short(a);
    const F32 z = r.hi * r.hi;
    const F32 n = r.hi * horner(z, kTangentFNumerator);
    const F32 d = horner(z, kTangentFDenominator);
    const M32 odd = is_odd(r.quadrant);
    const F32 y = select(odd, d, n) * approx_recip(select(odd, n, d));
    return as_float(as_bits(y) ^ (shl<31>(r.quadrant) ^ (as_bits(x) & I32(INT32_MIN))));
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_KERNEL(1i_1o, d, Tan, HA, TanPairs<F64, true>)
ORBA_KERNEL(1i_1o, s, Tan, HA, TanSingle)
#if ORBA_CLASS >= 3
ORBA_KERNEL(1i_1o, d, Tan, LA, TanPairs<F64, false>)
ORBA_KERNEL(1i_1o, s, Tan, LA, TanPairs<F32, false>)
ORBA_KERNEL(1i_1o, s, Tan, EP, TanSingleShort)
#else
ORBA_SAME_KERNEL(1i_1o, d, Tan, LA, HA)
ORBA_SAME_KERNEL(1i_1o, s, Tan, LA, HA)
ORBA_SAME_KERNEL(1i_1o, s, Tan, EP, HA)
#endif
#if ORBA_CLASS >= 2
ORBA_KERNEL(1i_1o, d, Tan, EP, TanRatio)
#else
ORBA_SAME_KERNEL(1i_1o, d, Tan, EP, HA)
#endif
