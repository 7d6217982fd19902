// Atan2(y, x): the angle of the point (x, y), in [-pi, pi]. No report for any arguments.
//
// The smaller magnitude over the larger one, as in Atan; the half-plane x < 0 is reflected at pi.
// Kernels want the larger magnitude in a range around 1 and leave the rest, which needs scaling, to
// the callout; most have no demands on the smaller one.
//
// Accuracies by class are those of Atan.
#include "vector/kernels/invtrig/atan_kernel.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class V>
struct Folded {
  V n, d, sign;
  typename V::Mask swapped, left;
  template <class C>
  ORBA_INLINE V base(C half_pi, C pi) const {
    return select(swapped, V(half_pi), select(left, V(pi), V(0)));
  }
};
// With x NaN n and d are NaN, with y NaN n is.
template <class V>
ORBA_INLINE Folded<V> folded(V y, V x) {
  const V ay = abs(y), ax = abs(x);
  const auto swapped = ay > ax;
  return {min(ax, ay), max(ay, ax), flipped_sign(x, swapped), swapped, negative(x)};
}

// Lanes for the callout: d outside [2^-700, 2^978) (single: [2^-62, 2^124)). Inside it is normal, its
// reciprocal and halves too, and so large that no residual underflows but for ratios so tiny that the
// quotient is the result.
ORBA_INLINE M64 special(const Folded<F64>& f) {
  return outside(as_bits(f.d), 0x14300000, 0x7d0fffff);
}
ORBA_INLINE M32 special(const Folded<F32>& f) {
  return outside(as_bits(f.d), 0x20800000, 0x7d7fffff);
}
// Quotients by the divider take any n over a normal d.
ORBA_INLINE M64 indivisible(F64 d) { return outside(as_bits(d), 0x00100000, 0x7fefffff); }
ORBA_INLINE M32 indivisible(F32 d) { return outside(as_bits(d), 0x00800000, 0x7f7fffff); }
// Quotients by an estimated reciprocal: denormal ones, not zero itself, which is next to the largest
// number modulo 2^32.
ORBA_INLINE M32 denormal(F32 q) { return outside(as_bits(q), 0x00800000, 0); }

template <class C, int n>
ORBA_INLINE F64 quotient_arctangent(F64 y, const Folded<F64>& f, const C (&series)[n]) {
  return with_sign_of(
      y, short_arctangent((f.n ^ f.sign) / f.d, f.base(kHalfPiRounded, kPiRounded), series));
}
template <Accuracy accuracy, class V>
ORBA_INLINE V full_arctangent(V y, const Folded<V>& f) {
  using D = Data<V>;
  const Quadrant<V> quadrant = {{f.base(D::half_pi.hi, D::pi.hi), f.base(D::half_pi.lo, D::pi.lo)},
                                f.sign};
  return with_sign_of(y, arctangent<accuracy, true>(f.n, f.d, quadrant));
}

ORBA_COLD void atan2_callout(const double* py, const double* px, double* r) {
  constexpr double infinity = __builtin_inf();
  const double y = *py, x = *px;
  if (y != y || x != x) {
    *r = y + x;
    return;
  }
  // Infinities and the origin as points of the same angle.
  double ay = __builtin_fabs(y), ax = __builtin_fabs(x);
  if (ay == infinity) {
    ay = 1;
    ax = ax == infinity ? 1 : 0;
  } else if (ax == infinity || (ax == 0 && ay == 0)) {
    ay = 0;
    ax = 1;
  }
  // The ratio itself, rounded once, where the arctangent is no different.
  if (const double ratio = ay / ax; ratio < pow2(-60) && !__builtin_signbit(x)) {
    *r = __builtin_copysign(ratio, y);
    return;
  }
  const double larger = ay > ax ? ay : ax;
  const double scale = larger > pow2(500) ? pow2(-500) : larger < pow2(-500) ? pow2(500) : 1;
  const F64 scaled_y = __builtin_copysign(ay * scale, y);
  const F64 scaled_x = __builtin_copysign(ax * scale, x);
  *r = first_lane(full_arctangent<kHa>(scaled_y, folded(scaled_y, scaled_x)));
}

// Every quotient of floats, and its arctangent, is a normal double or zero.
ORBA_COLD void atan2_callout(const float* y, const float* x, float* r) {
  const double wide_y = *y, wide_x = *x;
  double result;
  atan2_callout(&wide_y, &wide_x, &result);
  *r = static_cast<float>(result);
}

template <class V, Accuracy accuracy>
struct Atan2 {
  using In = typename V::Element;
  using Out = In;
  using Flag = typename V::Mask;
  static constexpr int inputs = 2;
  static constexpr int outputs = 1;
  static constexpr int unroll = 2;

  ORBA_INLINE static V eval(V y, V x, Flag& flag) {
    if constexpr (kClass < 3 && sizeof(In) == 4) {
      flag = flag | indivisible(max(abs(y), abs(x)));
      return narrow(in_double(widen_low(y), widen_low(x)), in_double(widen_high(y), widen_high(x)));
    } else {
      const Folded<V> f = folded(y, x);
      if constexpr (accuracy != kEp) {
        flag = flag | special(f);
        return full_arctangent<accuracy>(y, f);
      } else if constexpr (sizeof(In) == 8) {
        flag = flag | indivisible(f.d);
        return quotient_arctangent(y, f, kAtanSeriesEp);
      } else {
        const F32 q = f.n * approx_recip(f.d);
        flag = flag | special(f) | denormal(q);
        return with_sign_of(y, short_arctangent(q ^ f.sign, f.base(kHalfPiRoundedF, kPiRoundedF)));
      }
    }
  }

  static void callout(const In* y, const In* x, In* r) { atan2_callout(y, x, r); }

 private:
  ORBA_INLINE static F64 in_double(F64 y, F64 x) {
    return quotient_arctangent(y, folded(y, x), kAtanSeriesSingle);
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_KERNEL(2i_1o, d, Atan2, HA, Atan2<F64, kHa>)
ORBA_KERNEL(2i_1o, s, Atan2, HA, Atan2<F32, kHa>)
#if ORBA_CLASS >= 3
ORBA_KERNEL(2i_1o, d, Atan2, LA, Atan2<F64, kLa>)
ORBA_KERNEL(2i_1o, s, Atan2, LA, Atan2<F32, kLa>)
ORBA_KERNEL(2i_1o, s, Atan2, EP, Atan2<F32, kEp>)
#else
ORBA_SAME_KERNEL(2i_1o, d, Atan2, LA, HA)
ORBA_SAME_KERNEL(2i_1o, s, Atan2, LA, HA)
ORBA_SAME_KERNEL(2i_1o, s, Atan2, EP, HA)
#endif
#if ORBA_CLASS >= 2
ORBA_KERNEL(2i_1o, d, Atan2, EP, Atan2<F64, kEp>)
#else
ORBA_SAME_KERNEL(2i_1o, d, Atan2, EP, HA)
#endif
