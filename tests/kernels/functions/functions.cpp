// Kernels of the tests' own functions. Each road leaves a result that tells it from the others.
#include "vector/kernels/contract/kernel.h"
#include "vector/kernels/contract/scalar.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class V>
using ElementOf = typename V::Element;

template <class Argument, class Result, class Mask, int in, int out, int packs>
struct Function {
  using In = Argument;
  using Out = Result;
  using Flag = Mask;
  static constexpr int inputs = in;
  static constexpr int outputs = out;
  static constexpr int unroll = packs;
};

template <class V>
ORBA_INLINE typename V::Mask beyond(V x, double limit) {
  return ~(abs(x) <= V(static_cast<ElementOf<V>>(limit)));
}
template <class V>
ORBA_INLINE typename V::Mask not_finite(V x) {
  return ~(abs(x) < V(static_cast<ElementOf<V>>(__builtin_inf())));
}

// Two results and a second road. (2a, a/2), beyond 10 (a/4, -a); infinities fail.
template <class V>
struct TwoResults : Function<ElementOf<V>, ElementOf<V>, typename V::Mask, 1, 2, 2> {
  using E = ElementOf<V>;
  ORBA_INLINE static Results<V> eval(V a, typename V::Mask& flag) {
    flag = flag | beyond(a, 10);
    return {a + a, V(E(0.5)) * a};
  }
  ORBA_INLINE static Results<V> eval_rare(V a, typename V::Mask& flag) {
    flag = flag | not_finite(a);
    return {V(E(0.25)) * a, negate(a)};
  }
  static int32_t callout(const E* a, E* y, E* z) {
    *y = *a != *a ? E(5) : E(3);
    *z = *a != *a ? E(6) : E(4);
    return *a != *a ? kOk : kErrDom;
  }
};

// A scalar that reaches callout, report and the form without error handling. ab, overflow reported.
template <class V>
struct Scale : Function<ElementOf<V>, ElementOf<V>, typename V::Mask, 1, 1, 3> {
  using E = ElementOf<V>;
  E b;
  explicit Scale(E scalar) : b(scalar) {}

  ORBA_INLINE V eval(V a, typename V::Mask& flag) const {
    const V y = a * V(b);
    flag = flag | not_finite(y);
    return y;
  }
  int32_t callout(const E* a, E* y) const {
    *y = *a * b;
    return is_nan_or_inf(*a) ? kOk : kOverflow;
  }
  E second_argument() const { return b; }

  struct NoError : Function<E, E, NoFlag, 1, 1, 2> {
    E b;
    explicit NoError(const Scale& f) : b(f.b) {}
    ORBA_INLINE V eval(V a, NoFlag&) const { return a * V(b); }
  };
};

// A complex scalar and a callout that never reports. (re*re(b), im*im(b)), -im where not finite.
template <class C, class V>
struct ScaleParts : Function<C, C, typename V::Mask, 1, 1, 2> {
  C b;
  explicit ScaleParts(C scalar) : b(scalar) {}

  ORBA_INLINE Pairs<V> eval(Pairs<V> a, typename V::Mask& flag) const {
    const Complex<V> x = split(a);
    const Complex<V> y{x.re * V(b.real), x.im * V(b.imag)};
    flag = flag | not_finite(y.re) | not_finite(y.im);
    return join(y);
  }
  void callout(const C* a, C* y) const { *y = {a->real * b.real, -a->imag * b.imag}; }
};

// Results of another type. |re| + |im|, where not finite 7.
template <class C, class V>
struct Norm : Function<C, ElementOf<V>, typename V::Mask, 1, 1, 2> {
  ORBA_INLINE static V eval(Pairs<V> a, typename V::Mask& flag) {
    const Complex<V> x = split(a);
    const V y = abs(x.re) + abs(x.im);
    flag = flag | not_finite(y);
    return y;
  }
  static void callout(const C*, ElementOf<V>* y) { *y = 7; }
};

// The same the other way round, with a second road. (a, 2a), beyond 10 (a/4, -a), else (8, 9).
template <class C, class V>
struct Unit : Function<ElementOf<V>, C, typename V::Mask, 1, 1, 2> {
  using E = ElementOf<V>;
  ORBA_INLINE static Pairs<V> eval(V a, typename V::Mask& flag) {
    flag = flag | beyond(a, 10);
    return join(Complex<V>{a, a + a});
  }
  ORBA_INLINE static Pairs<V> eval_rare(V a, typename V::Mask& flag) {
    flag = flag | not_finite(a);
    return join(Complex<V>{V(E(0.25)) * a, negate(a)});
  }
  static void callout(const E*, C* y) { *y = {8, 9}; }
};

// Four scalars in their order.
template <class V>
struct Fraction : Function<ElementOf<V>, ElementOf<V>, NoFlag, 2, 1, 2> {
  using E = ElementOf<V>;
  E scalea, shifta, scaleb, shiftb;
  Fraction(E sa, E ta, E sb, E tb) : scalea(sa), shifta(ta), scaleb(sb), shiftb(tb) {}
  ORBA_INLINE V eval(V a, V b, NoFlag&) const {
    return (a * V(scalea) + V(shifta)) / (b * V(scaleb) + V(shiftb));
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

#define ORBA_REAL_KERNELS(shape, Name, F)  \
  ORBA_KERNEL(shape, s, Name, ALL, F<F32>) \
  ORBA_KERNEL(shape, d, Name, ALL, F<F64>)
#define ORBA_COMPLEX_KERNELS(shape, Name, F)            \
  ORBA_KERNEL(shape, c, Name, ALL, F<KamComplex8, F32>) \
  ORBA_KERNEL(shape, z, Name, ALL, F<KamComplex16, F64>)
ORBA_REAL_KERNELS(1i_2o, TestPair, TwoResults)
ORBA_REAL_KERNELS(1i_scalar_1o, TestScale, Scale)
ORBA_COMPLEX_KERNELS(1i_scalar_1o, TestScale, ScaleParts)
ORBA_COMPLEX_KERNELS(complex_to_real, TestNorm, Norm)
ORBA_COMPLEX_KERNELS(real_to_complex, TestUnit, Unit)
ORBA_REAL_KERNELS(linear_fraction, TestFraction, Fraction)
ORBA_KERNEL_ENTRY(pack_increment, z, TestGather, ALL) {
  for (int64_t i = 0; i < n && y != nullptr; ++i) y[i] = a[i * inca];
}
