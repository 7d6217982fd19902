// Arcsine and arccosine of |x| <= 1. Above 1/2 by s = sqrt((1 - |x|)/2), its argument exact. With
// w = -2s there and |x| below, asin stretched to asin(-2s) := -2asin(s):
//
//            |x| <= 1/2            |x| > 1/2
//   asin     +-asin(w)             +-(pi/2 + asin(w))
//   acos     pi/2 -+ asin(w)       0 - asin(w) for x > 0, pi + asin(w) for x < 0
//
// The series is w + w*q*P(q), q = s^2 or x^2.
//
//   HA, LA   P of 13 (single: 6) terms. The rest of the root comes from its residual; what the sum of
//            the leading terms loses is kept.
//   EP       one word, a short P. On class 5 the root is an estimate, in double with a Newton step.
#pragma once

#include "vector/kernels/invtrig/invtrig.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

enum class Arc { kSine, kCosine };

#if ORBA_CLASS == 5
// -2*sqrt((1 - a)/2) to 2^-27 (single: 2^-14).
ORBA_INLINE F64 minus_two_roots(F64 a, F64 u) {
  const F64 y = approx_rsqrt(max(u, F64(0x1p-500)));
  const F64 w = (a - F64(1)) * y;
  return mul_add(w, mul_add(w, F64(0.25) * y, F64(0.5)), w);
}
ORBA_INLINE F32 minus_two_roots(F32 a, F32 u) {
  return (a - F32(1)) * approx_rsqrt(max(u, F32(0x1p-100f)));
}
#else
template <class V>
ORBA_INLINE V minus_two_roots(V, V u) {
  return V(-2.0f) * sqrt(u);
}
#endif

// asin(w)/w in one word. A series of floats has the 1 in it.
template <int n>
ORBA_INLINE F64 short_arcsine(F64 x, const double (&series)[n]) {
  return mul_add(x, horner(x, series), F64(1));
}
template <int n>
ORBA_INLINE F32 short_arcsine(F32 x, const float (&series)[n]) {
  return horner(x, series);
}

// What asin(w) is added to, or subtracted from with the sign of x.
template <Arc arc, class V, class M, class C>
ORBA_INLINE V arc_base(V x, M upper, C half_pi, C pi) {
  if constexpr (arc == Arc::kSine) return where(upper, V(half_pi));
  return select(upper, select(negative(x), V(pi), V(0)), V(half_pi));
}

template <class V>
struct Folded {
  V a, u, square;
  typename V::Mask upper;
  ORBA_INLINE explicit Folded(V x) : a(abs(x)) {
    const V half = V(0.5f);
    upper = a > half;
    u = neg_mul_add(half, a, half);
    square = select(upper, u, a * a);
  }
};

template <Arc arc, class V, class C, int n>
ORBA_INLINE V short_arc(V x, const C (&series)[n]) {
  const Folded<V> f(x);
  const V base = arc_base<arc>(x, f.upper, Data<V>::half_pi_rounded, Data<V>::pi_rounded);
  const V w = select(f.upper, minus_two_roots(f.a, f.u), f.a);
  if constexpr (arc == Arc::kSine)
    return with_sign_of(x, mul_add(w, short_arcsine(f.square, series), base));
  return neg_mul_add(w ^ sign_of(x), short_arcsine(f.square, series), base);
}

template <Arc arc, class V>
ORBA_INLINE V full_arc(V x) {
  using E = typename V::Element;
  using D = Data<V>;
  const Folded<V> f(x);
  const V s = sqrt(f.u);
  const V rest = where(f.upper, residual(f.u, s, s)) * rough_recip<kHa>(max(s, V(0x1p-60f)));
  const V w = select(f.upper, V(-2.0f) * s, f.a);
  const V base = arc_base<arc>(x, f.upper, D::half_pi.hi, D::pi.hi);
  const V base_tail = arc_base<arc>(x, f.upper, D::half_pi.lo, D::pi.lo);
  const V lead = arc == Arc::kSine ? w : w ^ sign_of(negate(x));
  const Pair<V> sum = fast_two_sum(base, lead);
  V small = sum.lo + (arc == Arc::kSine ? base_tail - rest : base_tail + (rest ^ sign_of(x)));
  // The lowest term comes apart and last, so that no rounding error of the others counts. Without FMA
  // the most of it, by a power of two, is exact and joins the leading terms.
  const V cube = lead * f.square;
  small = mul_add(cube * f.square, even_odd<1>(f.square, f.square * f.square, D::asin), small);
  V r;
  if constexpr (kFused) {
    r = sum.hi + mul_add(cube, V(D::asin[0]), small);
  } else {
    const Pair<V> all = fast_two_sum(sum.hi, cube * V(0.125f));
    r = all.hi + (all.lo + mul_add(cube, V(D::asin[0] - E(0.125)), small));
  }
  return arc == Arc::kSine ? with_sign_of(x, r) : r;
}

template <Arc arc>
ORBA_COLD int32_t arc_callout(const double* a, double* r) {
  const double x = *a;
  if (__builtin_fabs(x) <= 1) {
    *r = first_lane(full_arc<arc>(F64(x)));
    return kOk;
  }
  *r = (x - x) / (x - x);  // NaN, of x where it is one
  return x != x ? kOk : kErrDom;
}

template <Arc arc, class V, Accuracy accuracy>
struct ArcKernel {
  using In = typename V::Element;
  using Out = In;
  using Flag = typename V::Mask;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = 2;

  ORBA_INLINE static V eval(V x, Flag& flag) {
    flag = flag | not_le(abs(x), V(1));
    if constexpr (kClass < 3 && sizeof(In) == 4)
      return narrow(short_arc<arc>(widen_low(x), kAsinSeriesSingle),
                    short_arc<arc>(widen_high(x), kAsinSeriesSingle));
    else if constexpr (accuracy == kEp)
      return short_arc<arc>(x, Data<V>::asin_ep);
    else
      return full_arc<arc>(x);
  }
  static int32_t callout(const double* a, double* r) { return arc_callout<arc>(a, r); }
  static int32_t callout(const float* a, float* r) { return narrowed(arc_callout<arc>, a, r); }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

#define ORBA_ARC_HA_LA(Name, arc)                           \
  ORBA_KERNEL(1i_1o, d, Name, HA, ArcKernel<arc, F64, kHa>) \
  ORBA_SAME_KERNEL(1i_1o, d, Name, LA, HA)                  \
  ORBA_KERNEL(1i_1o, s, Name, HA, ArcKernel<arc, F32, kHa>) \
  ORBA_SAME_KERNEL(1i_1o, s, Name, LA, HA)
#if ORBA_CLASS >= 2
#  define ORBA_ARC_EP_DOUBLE(Name, arc) ORBA_KERNEL(1i_1o, d, Name, EP, ArcKernel<arc, F64, kEp>)
#else
#  define ORBA_ARC_EP_DOUBLE(Name, arc) ORBA_SAME_KERNEL(1i_1o, d, Name, EP, HA)
#endif
#if ORBA_CLASS >= 3
#  define ORBA_ARC_EP_SINGLE(Name, arc) ORBA_KERNEL(1i_1o, s, Name, EP, ArcKernel<arc, F32, kEp>)
#else
#  define ORBA_ARC_EP_SINGLE(Name, arc) ORBA_SAME_KERNEL(1i_1o, s, Name, EP, HA)
#endif
#define ORBA_ARC_KERNELS(Name, arc) \
  ORBA_ARC_HA_LA(Name, arc)         \
  ORBA_ARC_EP_DOUBLE(Name, arc)     \
  ORBA_ARC_EP_SINGLE(Name, arc)
