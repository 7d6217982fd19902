// Hypot: sqrt(a^2 + b^2), of any arguments, without early overflow or underflow. Infinity wins over NaN.
// No reports.
//
// Where the sum of squares stays in the middle of the range nothing has to be scaled; other lanes are
// scaled by callouts.
//
//   HA   the sum in two words, its root with the rest that the residual tells: half a unit for the last
//        addition
//   LA   of the sum what the smaller rounding loses; the other one is let go: up to 0.36 ULP more
//   EP   the sum in one word
//
// class      0, 1            2                         3                         5
// double LA  as HA           as HA                     as told                   as told
//        EP  as HA           the root by hardware      the root by hardware      from the estimated root
// single HA  in double       in double                 in two words              in two words
//        LA  as HA           as HA                     as told                   as told
//        EP  as HA           from the estimated root   from the estimated root   from the estimated root
#include "vector/kernels/contract/accuracy.h"
#include "vector/kernels/contract/kernel.h"
#include "vector/kernels/contract/scalar.h"
#include "vector/kernels/simd/residual.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

ORBA_COLD void hypot_callout(const double* a, const double* b, double* r) {
  const double x = __builtin_fabs(*a), y = __builtin_fabs(*b);
  if (is_nan_or_inf(x) || is_nan_or_inf(y)) {
    *r = is_inf(x) ? x : is_inf(y) ? y : x + y;
    return;
  }
  const double larger = x > y ? x : y;
  if (larger == 0) {
    *r = 0;  // of denormal numbers that count as zero too
    return;
  }
  // To [1, 2). A smaller number that vanishes on the way does not show.
  const int k = exponent_of(larger);
  const double sx = scaled(x, -k), sy = scaled(y, -k);
  *r = rounded(sqrt(sum_of_products(sx, sx, sy, sy)), k);
}

// Squares of all floats are normal doubles or zero.
ORBA_COLD void hypot_callout(const float* a, const float* b, float* r) {
  const double wide_a = *a, wide_b = *b;
  double result;
  hypot_callout(&wide_a, &wide_b, &result);
  *r = static_cast<float>(result);
}

// Sums of squares whose words and whose root's residual are normal; NaN and infinities are not.
ORBA_INLINE M64 out_of_range(F64 sum) {
  return outside(as_bits(sum), 0x07b00000, 0x7fcfffff);  // [2^-900, 2^1022)
}
ORBA_INLINE M32 out_of_range(F32 sum) {
  return outside(as_bits(sum), 0x1f800000, 0x7effffff);  // [2^-64, 2^127)
}

// Where sums are doubles any finite floats will do.
ORBA_INLINE M32 not_finite(F32 x) { return as_bits(abs(x)) > I32(0x7f7fffff); }

template <Accuracy accuracy, class V>
ORBA_INLINE Pair<V> sum_of_squares(V a, V b) {
  if constexpr (accuracy == kHa || !kFused) return sum_of_products(a, a, b, b);
  const Pair<V> square = two_product(b, b);
  return {mul_add(a, a, square.hi), square.lo};
}

template <class V>
ORBA_INLINE V root_of(Pair<V> sum) {
  const V s = sqrt(sum.hi);
  const V rest = residual(sum.hi, s, s) + sum.lo;
  return mul_add(rest, V(0.5f) * rough_recip<kHa>(s), s);
}

ORBA_INLINE F32 short_root(F32 sum) { return sum * approx_rsqrt(sum); }
ORBA_INLINE F64 short_root(F64 sum) {
#if ORBA_CLASS == 5
  // Off by 2^-14, and after a Newton step by 2^-27.
  const F64 y = approx_rsqrt(sum), s = sum * y;
  return mul_add(0.5 * s, neg_mul_add(s, y, F64(1)), s);
#else
  return sqrt(sum);
#endif
}

template <class V, Accuracy accuracy>
struct Hypot {
  using In = typename V::Element;
  using Out = In;
  using Flag = typename V::Mask;
  static constexpr int inputs = 2;
  static constexpr int outputs = 1;
  static constexpr int unroll = 4;

  ORBA_INLINE static V eval(V a, V b, Flag& flag) {
    if constexpr (accuracy == kEp) {
      const V sum = mul_add(a, a, b * b);
      flag = flag | out_of_range(sum);
      return short_root(sum);
    } else if constexpr (kFused || sizeof(In) == 8) {
      const Pair<V> sum = sum_of_squares<accuracy>(a, b);
      flag = flag | out_of_range(sum.hi);
      return root_of(sum);
    } else {
      flag = flag | not_finite(a) | not_finite(b);
      return narrow(in_double(widen_low(a), widen_low(b)), in_double(widen_high(a), widen_high(b)));
    }
  }
  static void callout(const In* a, const In* b, In* r) { hypot_callout(a, b, r); }

 private:
  ORBA_INLINE static F64 in_double(F64 a, F64 b) { return sqrt(mul_add(a, a, b * b)); }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_KERNEL(2i_1o, d, Hypot, HA, Hypot<F64, kHa>)
ORBA_KERNEL(2i_1o, s, Hypot, HA, Hypot<F32, kHa>)
#if ORBA_CLASS >= 3
ORBA_KERNEL(2i_1o, d, Hypot, LA, Hypot<F64, kLa>)
ORBA_KERNEL(2i_1o, s, Hypot, LA, Hypot<F32, kLa>)
#else
ORBA_SAME_KERNEL(2i_1o, d, Hypot, LA, HA)
ORBA_SAME_KERNEL(2i_1o, s, Hypot, LA, HA)
#endif
#if ORBA_CLASS >= 2
ORBA_KERNEL(2i_1o, d, Hypot, EP, Hypot<F64, kEp>)
ORBA_KERNEL(2i_1o, s, Hypot, EP, Hypot<F32, kEp>)
#else
ORBA_SAME_KERNEL(2i_1o, d, Hypot, EP, HA)
ORBA_SAME_KERNEL(2i_1o, s, Hypot, EP, HA)
#endif
