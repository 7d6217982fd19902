// Tanh: no argument is special. With |a| = k*ln2/2 + r, |r| <= ln2/4, s = 2^-k and t = tanh r,
//
//   tanh |a| = ((1 - s) + (1 + s)*t) / ((1 + s) + (1 - s)*t)
//
//   pairs   numerator and denominator as head and tail; the sum of (1 - s) and (1 + s)*r is exact
//   short   both in one word
//
// class       0, 1                2          3, 5
// double HA   pairs               pairs      pairs
// double LA   as HA               as HA      as HA
// double EP   as HA               short      short
// single HA   short, in double    as 0, 1    pairs
// single LA   as HA               as HA      as HA
// single EP   as HA               short      short
#include "vector/kernels/contract/accuracy.h"
#include "vector/kernels/explog/exp_kernel.h"
#include "vector/kernels/hyperbolic/hyperbolic_coefficients.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Polynomials of tanh r, and an argument from which on the result is 1.
template <class V>
struct TanhData;
template <>
struct TanhData<F64> {
  static constexpr auto& series = kTanhSeries;
  static constexpr auto& series_short = kTanhShortSeries;
  static constexpr double saturated = 20;
};
template <>
struct TanhData<F32> {  // not on the classes that compute floats in doubles
  [[maybe_unused]] static constexpr auto& series = kTanhSeriesF;
  [[maybe_unused]] static constexpr auto& series_short = kTanhShortSeriesF;
  static constexpr float saturated = 10;
};

// 1/d for d in [1, 2], to the last place or so. Of 2, to which small arguments lead, it is exact: the
// residual of their quotient may be flushed.
ORBA_INLINE F64 reciprocal(F64 d) {
#if ORBA_CLASS == 5
  const F64 y = approx_recip(d);
  const F64 e = neg_mul_add(d, y, F64(1.0));
  return mul_add(y, mul_add(mul_add(e, e, e), e, e), y);
#else
  return F64(1.0) / d;
#endif
}
ORBA_INLINE F32 reciprocal(F32 d) {
  const F32 y = approx_recip(d);
  const F32 e = neg_mul_add(d, y, F32(1.0f));
  return mul_add(y, mul_add(e, e, e), y);
}
// The same to half precision.
ORBA_INLINE F64 short_reciprocal(F64 d) {
#if ORBA_CLASS == 5
  const F64 y = approx_recip(d);
  return mul_add(y, neg_mul_add(d, y, F64(1.0)), y);
#else
  return F64(1.0) / d;
#endif
}
ORBA_INLINE F32 short_reciprocal(F32 d) {
  if constexpr (kFused) return approx_recip(d);
  return F32(1.0f) / d;
}

// 2^-k times 1 or 2.
template <class V>
ORBA_INLINE V falling_power(const ExpQuotient<V, 2>& k, V one_or_two) {
  return as_float(as_bits(one_or_two) - shl<ExpConstants<V>::fraction_bits>(k.bits()));
}

// slope*r as an exact pair for slope = 1 + s or, with -s for s, 1 - s.
template <class V>
ORBA_INLINE Pair<V> product_with_slope(V slope, V s, V r) {
  if constexpr (kFused) return two_product(slope, r);
  return fast_two_sum(r, s * r);
}

template <Accuracy accuracy, class V>
ORBA_INLINE V tanh_by_pairs(V a) {
  const ExpQuotient<V, 2> k(a);
  const Pair<V> r = k.remainder(a);
  const V sum = r.hi + r.lo;
  const V z = sum * sum;
  const V odd = mul_add(sum * z, horner(z, TanhData<V>::series), r.lo);

  // For s below the last place of 1 the loss of the sum is made up for in the difference.
  const V s = falling_power(k, V(1.0f)), s2 = falling_power(k, V(2.0f));
  const V total = V(1.0f) + s, difference = total - s2;

  const Pair<V> product = product_with_slope(total, s, r.hi);
  const Pair<V> leading = fast_two_sum(difference, product.hi);
  V n_tail = leading.lo + product.lo;
  if constexpr (accuracy == kHa) n_tail = n_tail + ((total - difference) - s2);
  const Pair<V> n = {leading.hi, mul_add(total, odd, n_tail)};

  const Pair<V> t = fast_two_sum(r.hi, odd);
  const Pair<V> linear = product_with_slope(difference, negate(s), t.hi);
  Pair<V> d = fast_two_sum(total, linear.hi);
  d.lo = d.lo + linear.lo;
  if constexpr (accuracy == kHa) d.lo = mul_add(difference, t.lo, d.lo);
  const Pair<V> q = quotient(n, d, reciprocal(d.hi));
  return q.hi + q.lo;
}

template <class V>
ORBA_INLINE V short_tanh(V a) {
  const ExpQuotient<V, 2> k(a);
  const V r = k.short_remainder(a);
  const V z = r * r;
  const V t = mul_add(r * z, horner(z, TanhData<V>::series_short), r);
  const V s = falling_power(k, V(1.0f));
  const V total = V(1.0f) + s, difference = V(1.0f) - s;
  return mul_add(total, t, difference) * short_reciprocal(mul_add(difference, t, total));
}

template <class V, Accuracy accuracy>
struct Tanh {
  using In = typename V::Element;
  using Out = In;
  using Flag = NoFlag;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = 2;

  ORBA_INLINE static V eval(V x, NoFlag&) {
    // A NaN passes: the second operand of min wins.
    return with_sign_of(x, of_size(min(V(TanhData<V>::saturated), abs(x))));
  }

 private:
  ORBA_INLINE static V of_size(V a) {
    if constexpr (accuracy == kEp)
      return select(a >= V(TanhData<V>::saturated), V(1.0f), short_tanh(a));
    else if constexpr (sizeof(In) == 4 && !kFused)
      return narrow(short_tanh(widen_low(a)), short_tanh(widen_high(a)));
    else
      return tanh_by_pairs<accuracy>(a);
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_KERNEL(1i_1o, d, Tanh, HA, Tanh<F64, kHa>)
ORBA_KERNEL(1i_1o, s, Tanh, HA, Tanh<F32, kHa>)
#if ORBA_CLASS >= 3
ORBA_KERNEL(1i_1o, d, Tanh, LA, Tanh<F64, kLa>)
ORBA_KERNEL(1i_1o, s, Tanh, LA, Tanh<F32, kLa>)
#else
ORBA_SAME_KERNEL(1i_1o, d, Tanh, LA, HA)
ORBA_SAME_KERNEL(1i_1o, s, Tanh, LA, HA)
#endif
#if ORBA_CLASS >= 2
ORBA_KERNEL(1i_1o, d, Tanh, EP, Tanh<F64, kEp>)
ORBA_KERNEL(1i_1o, s, Tanh, EP, Tanh<F32, kEp>)
#else
ORBA_SAME_KERNEL(1i_1o, d, Tanh, EP, HA)
ORBA_SAME_KERNEL(1i_1o, s, Tanh, EP, HA)
#endif
