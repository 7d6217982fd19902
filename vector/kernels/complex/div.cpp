// Complex Div. KAM_STATUS_OVERFLOW when finite parts give an infinite part; a zero divisor is not
// reported. Special parts as C99, Annex G.
//
// With a = x + iy, b = u + iv: a/b = (x*u + y*v, y*u - x*v) / (u*u + v*v).
//   single, LA and HA   in double, where products are exact: half a unit of each part
//   double, LA and HA   numerators and denominator as pairs, one reciprocal, a step on the residual:
//                       half a unit of each part
//   EP                  plain products, seeded reciprocal
// There is no scaling in the vector path: lanes whose parts lie so far from 1 that a square or a
// tail is lost go to the callout, which scales.
#include "vector/kernels/arith/recip.h"
#include "vector/kernels/complex/arith.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class V>
ORBA_INLINE V size(Complex<V> z) {
  return abs(z.re) + abs(z.im);
}
template <class V>
ORBA_INLINE typename V::Bits bits_of_smaller_part(Complex<V> z) {
  return as_bits(min(abs(z.re), abs(z.im)));
}

// Lanes of which a size is not within [2^-400, 2^400) ([2^-50, 2^50)), infinities and NaN too, or a
// part that is not zero below 2^-500 (2^-60): its products with the other operand's might be lost.
// One less than the bits of a zero is the largest unsigned number.
template <class V>
ORBA_INLINE typename V::Mask far_from_one(Complex<V> a, Complex<V> b) {
  const bool is_double = sizeof(typename V::Element) == 8;
  const uint32_t low = is_double ? (1023U - 400) << 20 : (127U - 50) << 23;
  const uint32_t high = is_double ? (1023U + 400) << 20 : (127U + 50) << 23;
  const uint32_t tiny = is_double ? (1023U - 500) << 20 : (127U - 60) << 23;
  const typename V::Bits one(1);
  return outside(as_bits(size(a)), as_bits(size(b)), low, high - 1) |
         outside(bits_of_smaller_part(a) - one, bits_of_smaller_part(b) - one, tiny, 0xffffffff);
}

template <class E>
struct DivBase {
  using In = E;
  using Out = E;
  using V = decltype(PackOf<E>::Pack::lo);
  using Flag = typename V::Mask;
  static constexpr int inputs = 2;
  static constexpr int outputs = 1;
  static constexpr int unroll = 1;

  static int32_t callout(const E* a, const E* b, E* r) {
    const Z wide_a{a->real, a->imag}, wide_b{b->real, b->imag};
    const Z quotient = divide(wide_a, wide_b);
    using Part = decltype(r->real);
    r->real = static_cast<Part>(quotient.real);
    r->imag = static_cast<Part>(quotient.imag);
    const bool zero_divisor = wide_b.real == 0 && wide_b.imag == 0;
    return overflow_status(finite(wide_a) && finite(wide_b) && !zero_divisor,
                           is_inf(r->real) || is_inf(r->imag));
  }
};

// Squares of widened floats neither overflow nor underflow in double.
struct DivInDouble : DivBase<KamComplex8> {
  ORBA_INLINE static Pairs<F32> eval(Pairs<F32> a, Pairs<F32> b, M32& flag) {
    const Complex<F32> x = split(a), y = split(b);
    const Complex<F64> low =
        half(widen_low(x.re), widen_low(x.im), widen_low(y.re), widen_low(y.im));
    const Complex<F64> high =
        half(widen_high(x.re), widen_high(x.im), widen_high(y.re), widen_high(y.im));
    const Complex<F32> r{narrow(low.re, high.re), narrow(low.im, high.im)};
    const F32 infinity(__builtin_inff());
    flag = flag | ~((abs(r.re) < infinity) & (abs(r.im) < infinity));
    return join(r);
  }

 private:
  ORBA_INLINE static Complex<F64> half(F64 x, F64 y, F64 u, F64 v) {
    const F64 d = mul_add(u, u, v * v);
    return {mul_add(u, x, y * v) / d, mul_sub(u, y, x * v) / d};
  }
};

struct DivPairs : DivBase<KamComplex16> {
  ORBA_INLINE static Pairs<F64> eval(Pairs<F64> a, Pairs<F64> b, M64& flag) {
    const Complex<F64> x = split(a), y = split(b);
    flag = flag | far_from_one(x, y);
    const Pair<F64> d = sum_of_products(y.re, y.re, y.im, y.im);
    const F64 recip = F64(1) / d.hi;
    const auto re = part_quotient(sum_of_products(x.re, y.re, x.im, y.im), d, recip);
    const auto im = part_quotient(sum_of_products(x.im, y.re, negate(x.re), y.im), d, recip);
    return join(Complex<F64>{neg_mul_add(re.excess, recip, re.value),
                             neg_mul_add(im.excess, recip, im.value)});
  }
};

template <class E>
struct DivFast : DivBase<E> {
  using typename DivBase<E>::V;
  ORBA_INLINE static Pairs<V> eval(Pairs<V> a, Pairs<V> b, typename V::Mask& flag) {
    const Complex<V> x = split(a), y = split(b);
    flag = flag | far_from_one(x, y);
    const V d = mul_add(y.re, y.re, y.im * y.im);
    const V recip = recip_ep(d);
    return join(Complex<V>{mul_add(x.re, y.re, x.im * y.im) * recip,
                           mul_sub(x.im, y.re, x.re * y.im) * recip});
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_KERNEL(2i_1o, c, Div, HA, DivInDouble)
ORBA_SAME_KERNEL(2i_1o, c, Div, LA, HA)
ORBA_KERNEL(2i_1o, z, Div, HA, DivPairs)
ORBA_SAME_KERNEL(2i_1o, z, Div, LA, HA)
#if ORBA_CLASS >= 2
ORBA_KERNEL(2i_1o, c, Div, EP, DivFast<KamComplex8>)
ORBA_KERNEL(2i_1o, z, Div, EP, DivFast<KamComplex16>)
#else
ORBA_SAME_KERNEL(2i_1o, c, Div, EP, HA)
ORBA_SAME_KERNEL(2i_1o, z, Div, EP, HA)
#endif
