// Tan: the tangent of an angle in radians. KAM_STATUS_ERRDOM at infinities, which give NaN.
//
// sin/cos in even quadrants, -cos/sin in odd ones:
//
// class       0, 1      2         3, 5
// double HA   pairs     pairs     pairs
// double LA   as HA     as HA     as HA
// double EP   as HA     ratio     ratio
// single HA   ratio, in double precision, on all classes
// single LA   as HA     as HA     as HA
// single EP   as HA     as HA     ratio, in single precision
//
// pairs: the quotient of sine and cosine as pairs; ratio: r*N(r^2)/D(r^2), a rational function.
#include "vector/kernels/trig/half_turns.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// 1/a, relative error below 2^-41; exactly 1 for 1, so that small results don't pass through
// smaller corrections.
ORBA_INLINE F64 reciprocal(F64 a) {
#if ORBA_CLASS == 5
  const F64 y = approx_recip(a);
  const F64 e = neg_mul_add(a, y, F64(1.0));
  return mul_add(y, mul_add(e, e, e), y);
#else
  return F64(1.0) / a;
#endif
}

ORBA_INLINE F64 with_tangent_sign(F64 y, F64 x, I64 quadrant) {
  return with_sign(y, shl<63>(quadrant) ^ sign_of(x));
}

template <bool exact>
ORBA_INLINE F64 tangent(F64 x, const Reduced<F64>& r) {
  const SineCosine<F64> y = sine_cosine<exact>(r);
  const M64 odd = is_odd(r.quadrant);
  const Pair<F64> above = {select(odd, y.cosine.hi, y.sine.hi),
                           select(odd, y.cosine.lo, y.sine.lo)};
  const Pair<F64> below = {select(odd, y.sine.hi, y.cosine.hi),
                           select(odd, y.sine.lo, y.cosine.lo)};
  // Heads and tails of sine and cosine overlap.
  const Pair<F64> n = fast_two_sum(above.hi, above.lo), d = fast_two_sum(below.hi, below.lo);
  return with_tangent_sign(rounded(quotient(n, d, reciprocal(d.hi))), x, r.quadrant);
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

template <bool exact>
struct TanBase {
  using In = double;
  using Out = double;
  using Flag = M64;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = kClass == 5 ? 1 : 2;
  ORBA_INLINE static F64 eval_rare(F64 x, M64& flag) {
    flag = flag | not_finite(x);
    return tangent<exact>(x, reduce_huge(abs(x)));
  }
  static int32_t callout(const double* a, double* y) { return classify(*a, y); }
};

struct TanPairs : TanBase<true> {
  ORBA_INLINE static F64 eval(F64 x, M64& flag) {
    const F64 a = abs(x);
    flag = flag | not_le(a, F64(0x1.00000e4db24cp16));
    return tangent<true>(x, reduce(a));
  }
};

struct TanRatio : TanBase<false> {
  ORBA_INLINE static F64 eval(F64 x, M64& flag) {
    flag = flag | not_le(abs(x), F64(128000.0));
    const Reduced<F64> r = reduce_short(x);
    return tangent_by_ratio<false>(r.hi, r.quadrant, kTangentNumerator, kTangentDenominator);
  }
};

struct TanSingle {
  using In = float;
  using Out = float;
  using Flag = M32;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = 1;
  ORBA_INLINE static F32 eval(F32 x, M32& flag) {
    flag = flag | not_le(abs(x), F32(10000.0f));
    return joined(quarter_turns(widen_low(x)), quarter_turns(widen_high(x)));
  }
  ORBA_INLINE static F32 eval_rare(F32 x, M32& flag) {
    flag = flag | not_finite(x);
    return joined(quarter_turns_of_huge(widen_low(x)), quarter_turns_of_huge(widen_high(x)));
  }
  static int32_t callout(const float* a, float* y) { return classify(*a, y); }

 private:
  ORBA_INLINE static F64 tangent(const Fraction& q) {
    return tangent_by_ratio<true>(q.f, q.turns, kTangentOfQuarterTurnsNumerator,
                                  kTangentOfQuarterTurnsDenominator);
  }
  ORBA_INLINE static F32 joined(const Fraction& lo, const Fraction& hi) {
    return narrow(tangent(lo), tangent(hi));
  }
};

struct TanSingleShort : TanSingle {
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

ORBA_KERNEL(1i_1o, d, Tan, HA, TanPairs)
ORBA_KERNEL(1i_1o, s, Tan, HA, TanSingle)
ORBA_SAME_KERNEL(1i_1o, s, Tan, LA, HA)
ORBA_SAME_KERNEL(1i_1o, d, Tan, LA, HA)
#if ORBA_CLASS >= 3
ORBA_KERNEL(1i_1o, s, Tan, EP, TanSingleShort)
#else
ORBA_SAME_KERNEL(1i_1o, s, Tan, EP, HA)
#endif
#if ORBA_CLASS >= 2
ORBA_KERNEL(1i_1o, d, Tan, EP, TanRatio)
#else
ORBA_SAME_KERNEL(1i_1o, d, Tan, EP, HA)
#endif
