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
ORBA_INLINE typename V::Mask not_finite(Complex<V> z) {
  const V infinity = typename V::Element(__builtin_inf());
  return ~((abs(z.re) < infinity) & (abs(z.im) < infinity));
}

// Denormal where those count as zeros is not non-zero.
template <class V>
ORBA_INLINE typename V::Mask non_zero(Complex<V> z) {
  return as_float(as_bits(z.re) | as_bits(z.im)) != V(0);
}

// Products of non-zero numbers that are so large that a part may be infinite, or so small that what
// is flushed on the way, 2^-1022 (2^-126) at a time, may count. A zero times an infinity or NaN is
// NaN in both parts, which is right.
template <int lowest_exponent>
ORBA_INLINE M64 out_of_range(Complex<F64> a, Complex<F64> b, Complex<F64> r) {
  constexpr uint32_t lowest = static_cast<uint32_t>(lowest_exponent + 1023) << 20;
  return outside(as_bits(abs(r.re) + abs(r.im)), lowest, 0x7fefffff) & non_zero(a) & non_zero(b);
}
template <int lowest_exponent>
ORBA_INLINE M32 out_of_range(Complex<F32> a, Complex<F32> b, Complex<F32> r) {
  constexpr uint32_t lowest = static_cast<uint32_t>(lowest_exponent + 127) << 23;
  return outside(as_bits(abs(r.re) + abs(r.im)), lowest, 0x7f7fffff) & non_zero(a) & non_zero(b);
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

template <class E, bool conjugate>
struct MulFast : MulBase<E, conjugate> {
  using Base = MulBase<E, conjugate>;
  using typename Base::V;
  ORBA_INLINE static Pairs<V> eval(Pairs<V> a, Pairs<V> b, typename Base::Flag& flag) {
    const Complex<V> x = split(a), y = Base::second_factor(b);
    const Complex<V> r = product_fused(x, y);
    flag = flag | out_of_range < sizeof(E) == 16 ? -980 : -108 > (x, y, r);
    return join(r);
  }
};

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
    flag = flag | not_finite(r);
    return join(r);
  }
};

// From here on a flushed tail is below 2^-110 of the larger part of a product.
constexpr int kLowestPairs = -912;

template <bool conjugate>
struct MulKahan : MulBase<KamComplex16, conjugate> {
  using Base = MulBase<KamComplex16, conjugate>;
  ORBA_INLINE static Pairs<F64> eval(Pairs<F64> a, Pairs<F64> b, M64& flag) {
    const Complex<F64> x = split(a), y = Base::second_factor(b);
    const F64 w = x.im * y.im, v = x.im * y.re;
    // Rounding errors are taken off in both parts: adding a +0 would lose the sign of a zero.
    const Complex<F64> r{mul_sub(x.re, y.re, w) - mul_sub(x.im, y.im, w),
                         mul_add(x.re, y.im, v) - neg_mul_add(x.im, y.re, v)};
    flag = flag | out_of_range<kLowestPairs>(x, y, r);
    return join(r);
  }
};

// Without FMA factors are split as well: their tails may be flushed, and splitting makes a NaN of a
// large number, beside a zero too.
ORBA_INLINE M64 out_of_split_range(Complex<F64> a, Complex<F64> b, Complex<F64> r) {
  const F64 lowest = pow2(kLowestPairs), size = abs(r.re) + abs(r.im);
  const F64 smaller = min(abs(a.re) + abs(a.im), abs(b.re) + abs(b.im));
  return (((size < lowest) | (smaller < lowest)) & (smaller != F64(0))) |
         ~(size < F64(__builtin_inf()));
}

template <bool conjugate>
struct MulPairs : MulBase<KamComplex16, conjugate> {
  using Base = MulBase<KamComplex16, conjugate>;
  ORBA_INLINE static Pairs<F64> eval(Pairs<F64> a, Pairs<F64> b, M64& flag) {
    const Complex<F64> x = split(a), y = Base::second_factor(b);
    const Pair<F64> re = sum_of_products(x.re, y.re, negate(x.im), y.im);
    const Pair<F64> im = sum_of_products(x.re, y.im, x.im, y.re);
    const Complex<F64> r{total(re), total(im)};
    if constexpr (kFused)
      flag = flag | out_of_range<kLowestPairs>(x, y, r);
    else
      flag = flag | out_of_split_range(x, y, r);
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
