// Complex Mul and MulByConj. KAM_STATUS_OVERFLOW when finite parts give an infinite part;
// infinities are recovered from NaN parts as C99, Annex G.
//
// With a = x + iy, b = u + iv: re = x*u - y*v, im = x*v + y*u.
//   single, LA and HA   in double, where the products are exact: each part is off by half a unit
//   double, HA          sums of products in pair arithmetic: half a unit of each part
//   double, LA          with w = y*v: fma(x, u, -w) plus the rounding error of w (W. Kahan): at most
//                       1.5 units of a part (C.-P. Jeannerod et al., Math. Comp. 82, 2013)
//   EP                  fma(x, u, -(y*v)): relative to |a*b|, 2^-52 (2^-23)
// Classes without FMA run HA at LA; classes 0 and 1 at EP too.
#include "vector/kernels/complex/arith.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class V>
ORBA_INLINE typename V::Mask finite(Complex<V> z) {
  return abs(z.re) + abs(z.im) < V(typename V::Element(__builtin_inf()));
}

template <class E, bool conjugate>
struct MulBase {
  using In = E;
  using Out = E;
  using V = decltype(PackOf<E>::Pack::lo);
  using Flag = typename V::Mask;
  static constexpr int inputs = 2;
  static constexpr int outputs = 1;
  static constexpr int unroll = 1;

  static int32_t callout(const E* a, const E* b, E* r) {
    const Z wide_a{a->real, a->imag};
    const Z wide_b{b->real, conjugate ? -b->imag : b->imag};
    using Part = decltype(r->real);
    const Z product = multiply<Part>(wide_a, wide_b);
    r->real = static_cast<Part>(product.real);
    r->imag = static_cast<Part>(product.imag);
    return overflow_status(finite(wide_a) && finite(wide_b), is_inf(r->real) || is_inf(r->imag));
  }

 protected:
  ORBA_INLINE static Complex<V> second_factor(Pairs<V> pairs) {
    Complex<V> b = split(pairs);
    if constexpr (conjugate) b.im = negate(b.im);
    return b;
  }
};

template <class V>
ORBA_INLINE Complex<V> product_fused(Complex<V> a, Complex<V> b) {
  return {mul_sub(a.re, b.re, a.im * b.im), mul_add(a.im, b.re, a.re * b.im)};
}

template <bool conjugate>
struct MulInDouble : MulBase<KamComplex8, conjugate> {
  using Base = MulBase<KamComplex8, conjugate>;
  ORBA_INLINE static Pairs<F32> eval(Pairs<F32> a, Pairs<F32> b, M32& flag) {
    const Complex<F32> x = split(a), y = Base::second_factor(b);
    const Complex<F64> low = product_fused(Complex<F64>{widen_low(x.re), widen_low(x.im)},
                                           Complex<F64>{widen_low(y.re), widen_low(y.im)});
    const Complex<F64> high = product_fused(Complex<F64>{widen_high(x.re), widen_high(x.im)},
                                            Complex<F64>{widen_high(y.re), widen_high(y.im)});
    const Complex<F32> r{narrow(low.re, high.re), narrow(low.im, high.im)};
    flag = flag | ~finite(r);
    return join(r);
  }
};

// Products in the type itself, where what underflows on the way may be lost or flushed. It counts in
// no part from 2^lowest_part on. Nor does it in any part, and a zero is an exact one, where all parts
// of both factors are zeros or from 2^lowest_factor on.
template <class E, bool conjugate, int lowest_part, int lowest_factor>
struct MulInRange : MulBase<E, conjugate> {
  using Base = MulBase<E, conjugate>;
  using typename Base::V, typename Base::Flag;

  // Small parts are mostly exact zeros, in packs without tiny factors in any order of lanes.
  ORBA_INLINE static void confirm(Pairs<V> a, Pairs<V> b, Pairs<V> r, Flag& flag) {
    if (!any(tiny(a.lo, a.hi) | tiny(b.lo, b.hi) | not_finite(r.lo, r.hi))) {
      flag = Flag{};
      return;
    }
    const Complex<V> x = split(a), y = split(b), z = split(r);
    flag = flag & (tiny(x.re, x.im) | tiny(y.re, y.im) | not_finite(z.re, z.im));
  }

 protected:
  ORBA_INLINE static Flag doubtful(Complex<V> r) {
    return outside(size(r.re), size(r.im), high_word(lowest_part), kLargest);
  }

 private:
  static constexpr bool is_double = sizeof(E) == 16;
  static constexpr uint32_t kLargest = is_double ? 0x7fefffff : 0x7f7fffff;
  static constexpr uint32_t high_word(int exponent) {
    return is_double ? static_cast<uint32_t>(exponent + 1023) << 20
                     : static_cast<uint32_t>(exponent + 127) << 23;
  }
  ORBA_INLINE static typename V::Bits size(V x) { return as_bits(abs(x)); }
  ORBA_INLINE static Flag not_finite(V u, V v) { return outside(size(u), size(v), 0, kLargest); }
  // One less than the bits of a zero is the largest unsigned number.
  ORBA_INLINE static Flag tiny(V u, V v) {
    const typename V::Bits one(1);
    return outside(size(u) - one, size(v) - one, high_word(lowest_factor), 0xffffffff);
  }
};

template <class E, bool conjugate>
using MulFastRange =
    MulInRange<E, conjugate, sizeof(E) == 16 ? -980 : -108, sizeof(E) == 16 ? -500 : -60>;

template <class E, bool conjugate>
struct MulFast : MulFastRange<E, conjugate> {
  using Base = MulFastRange<E, conjugate>;
  using typename Base::V;
  ORBA_INLINE static Pairs<V> eval(Pairs<V> a, Pairs<V> b, typename Base::Flag& flag) {
    const Complex<V> r = product_fused(split(a), Base::second_factor(b));
    flag = flag | Base::doubtful(r);
    return join(r);
  }
};

// Flushed tails are below 2^-110 of a part.
template <bool conjugate>
using MulWithTails = MulInRange<KamComplex16, conjugate, -912, -440>;

template <bool conjugate>
struct MulKahan : MulWithTails<conjugate> {
  using Base = MulWithTails<conjugate>;
  ORBA_INLINE static Pairs<F64> eval(Pairs<F64> a, Pairs<F64> b, M64& flag) {
    const Complex<F64> x = split(a), y = Base::second_factor(b);
    const F64 w = x.im * y.im, v = x.im * y.re;
    // Rounding errors are taken off in both parts: adding a +0 would lose the sign of a zero.
    const Complex<F64> r{mul_sub(x.re, y.re, w) - mul_sub(x.im, y.im, w),
                         mul_add(x.re, y.im, v) - neg_mul_add(x.im, y.re, v)};
    flag = flag | Base::doubtful(r);
    return join(r);
  }
};

template <bool conjugate>
struct MulPairs : MulWithTails<conjugate> {
  using Base = MulWithTails<conjugate>;
  ORBA_INLINE static Pairs<F64> eval(Pairs<F64> a, Pairs<F64> b, M64& flag) {
    const Complex<F64> x = split(a), y = Base::second_factor(b);
    const Pair<F64> re = sum_of_products(x.re, y.re, negate(x.im), y.im);
    const Pair<F64> im = sum_of_products(x.re, y.im, x.im, y.re);
    const Complex<F64> r{total(re), total(im)};
    flag = flag | Base::doubtful(r);
    if constexpr (!kFused) {  // factors are split as well, and their tails may be flushed
      const F64 smallest = min(min(abs(x.re), abs(x.im)), min(abs(y.re), abs(y.im)));
      flag = flag | (smallest < F64(pow2(-912)));
    }
    return join(r);
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

#define ORBA_MUL_KERNELS(Name, conjugate)                 \
  ORBA_KERNEL(2i_1o, c, Name, HA, MulInDouble<conjugate>) \
  ORBA_SAME_KERNEL(2i_1o, c, Name, LA, HA)                \
  ORBA_KERNEL(2i_1o, z, Name, HA, MulPairs<conjugate>)    \
  ORBA_MUL_LA(Name, conjugate)                            \
  ORBA_MUL_EP(Name, conjugate)
#if ORBA_CLASS >= 3
#  define ORBA_MUL_LA(Name, conjugate) ORBA_KERNEL(2i_1o, z, Name, LA, MulKahan<conjugate>)
#else
#  define ORBA_MUL_LA(Name, conjugate) ORBA_SAME_KERNEL(2i_1o, z, Name, LA, HA)
#endif
#if ORBA_CLASS >= 2
#  define ORBA_MUL_EP(Name, conjugate)                               \
    ORBA_KERNEL(2i_1o, c, Name, EP, MulFast<KamComplex8, conjugate>) \
    ORBA_KERNEL(2i_1o, z, Name, EP, MulFast<KamComplex16, conjugate>)
#else
#  define ORBA_MUL_EP(Name, conjugate)       \
    ORBA_SAME_KERNEL(2i_1o, c, Name, EP, HA) \
    ORBA_SAME_KERNEL(2i_1o, z, Name, EP, HA)
#endif

ORBA_MUL_KERNELS(Mul, false)
ORBA_MUL_KERNELS(MulByConj, true)
