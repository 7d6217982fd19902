// Tan: the tangent of an angle in radians. KAM_STATUS_ERRDOM at infinities, which give NaN.
//
// sin/cos in even quadrants, -cos/sin in odd ones:
//
// class       0, 1      2         3, 5
// double HA   pairs     pairs     pairs
// double LA   as HA     as HA     pairs of less care
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

// a/b, normalised first: heads and tails of sine and cosine overlap.
ORBA_INLINE F64 quotient(Pair<F64> a, Pair<F64> b) {
  a = fast_two_sum(a.hi, a.lo);
  b = fast_two_sum(b.hi, b.lo);
  const F64 y = reciprocal(b.hi);
  const F64 q = a.hi * y;
  F64 rest;
  if constexpr (kFused) {
    rest = neg_mul_add(q, b.hi, a.hi);
  } else {
    const Pair<F64> p = two_product(q, b.hi);
    rest = (a.hi - p.hi) - p.lo;
  }
  return mul_add(neg_mul_add(q, b.lo, rest + a.lo), y, q);
}

ORBA_INLINE F64 with_tangent_sign(F64 y, F64 x, I64 quadrant) {
  return with_sign(y, shl<63>(quadrant) ^ sign_of(x));
}

template <bool exact>
ORBA_INLINE F64 tangent(F64 x, const Reduced& r) {
  const SineCosine y = sine_cosine<exact>(r);
  const M64 odd = is_odd(r.quadrant);
  const Pair<F64> above = {select(odd, y.cosine.hi, y.sine.hi),
                           select(odd, y.cosine.lo, y.sine.lo)};
  const Pair<F64> below = {select(odd, y.sine.hi, y.cosine.hi),
                           select(odd, y.sine.lo, y.cosine.lo)};
  return with_tangent_sign(quotient(above, below), x, r.quadrant);
}

// Relative error 2^-28 on class 5 for doubles, 2^-27 in all.
template <bool for_single>
ORBA_INLINE F64 tangent_by_ratio(F64 x, const Reduced& r) {
  const F64 z = r.hi * r.hi;
  const F64 n = mul_add(mul_add(F64(kTangentNumerator[2]), z, F64(kTangentNumerator[1])), z,
                        F64(kTangentNumerator[0])) *
                r.hi;
  const F64 d =
      mul_add(mul_add(F64(kTangentDenominator[1]), z, F64(kTangentDenominator[0])), z, F64(1.0));
  const M64 odd = is_odd(r.quadrant);
  const F64 above = select(odd, d, n), below = select(odd, n, d);
  F64 y;
#if ORBA_CLASS == 5
  const F64 approximate = approx_recip(below);
  const F64 error = neg_mul_add(below, approximate, F64(1.0));
  const F64 q = above * approximate;
  y = mul_add(q, for_single ? mul_add(error, error, error) : error, q);
#else
  y = above / below;
#endif
  return with_tangent_sign(y, x, r.quadrant);
}

struct TanBase {
  using In = double;
  using Out = double;
  using Flag = M64;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = kClass == 5 ? 1 : 2;
  ORBA_INLINE static F64 eval_rare(F64 x, M64& flag) {
    flag = flag | not_finite(x);
    return tangent<true>(x, reduce_huge(abs(x)));
  }
  static int32_t callout(const double* a, double* y) { return classify(*a, y); }
};

template <bool exact>
struct TanPairs : TanBase {
  static constexpr double bound = exact || !kFused ? 0x1.00000e4db24cp16 : 128000.0;
  ORBA_INLINE static F64 eval(F64 x, M64& flag) {
    const F64 a = abs(x);
    flag = flag | not_le(a, F64(bound));
    return tangent<exact>(x, reduce(a));
  }
};

struct TanRatio : TanBase {
  ORBA_INLINE static F64 eval(F64 x, M64& flag) {
    const F64 a = abs(x);
    flag = flag | not_le(a, F64(128000.0));
    return tangent_by_ratio<false>(x, reduce_short(a));
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
    const F64 lo = widen_low(x), hi = widen_high(x);
    return narrow(tangent_by_ratio<true>(lo, reduce_short(abs(lo))),
                  tangent_by_ratio<true>(hi, reduce_short(abs(hi))));
  }
  ORBA_INLINE static F32 eval_rare(F32 x, M32& flag) {
    flag = flag | not_finite(x);
    const F64 lo = widen_low(x), hi = widen_high(x);
    return narrow(tangent_by_ratio<true>(lo, reduce_huge(abs(lo))),
                  tangent_by_ratio<true>(hi, reduce_huge(abs(hi))));
  }
  static int32_t callout(const float* a, float* y) { return classify(*a, y); }
};

struct TanSingleShort : TanSingle {
  static constexpr int unroll = 2;
  ORBA_INLINE static F32 eval(F32 x, M32& flag) {
    const F32 a = abs(x);
    flag = flag | not_le(a, F32(10000.0f));
    const ReducedSingle r = reduce_single(a);
    const F32 z = r.r * r.r;
    const F32 n = mul_add(F32(kTangentFNumerator[1]), z, F32(kTangentFNumerator[0])) * r.r;
    const F32 d = mul_add(F32(kTangentFDenominator[0]), z, F32(1.0f));
    const M32 odd = is_odd(r.quadrant);
    const F32 y = select(odd, d, n) * approx_recip(select(odd, n, d));
    return as_float(as_bits(y) ^ (shl<31>(r.quadrant) ^ (as_bits(x) & I32(INT32_MIN))));
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_KERNEL(1i_1o, d, Tan, HA, TanPairs<true>)
ORBA_KERNEL(1i_1o, s, Tan, HA, TanSingle)
ORBA_SAME_KERNEL(1i_1o, s, Tan, LA, HA)
#if ORBA_CLASS >= 3
ORBA_KERNEL(1i_1o, d, Tan, LA, TanPairs<false>)
ORBA_KERNEL(1i_1o, s, Tan, EP, TanSingleShort)
#else
ORBA_SAME_KERNEL(1i_1o, d, Tan, LA, HA)
ORBA_SAME_KERNEL(1i_1o, s, Tan, EP, HA)
#endif
#if ORBA_CLASS >= 2
ORBA_KERNEL(1i_1o, d, Tan, EP, TanRatio)
#else
ORBA_SAME_KERNEL(1i_1o, d, Tan, EP, HA)
#endif
