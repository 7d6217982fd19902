// Complex Add and Sub: sums of parts, correctly rounded. LA and HA report KAM_STATUS_OVERFLOW when
// a part of the result is infinite while no part of the arguments is; EP reports nothing.
#include "vector/kernels/complex/arith.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

ORBA_INLINE float sum(float a, float b, bool subtract) { return subtract ? a - b : a + b; }
ORBA_INLINE double sum(double a, double b, bool subtract) { return subtract ? a - b : a + b; }

template <class E, bool subtract>
struct SumQuiet {
  using In = E;
  using Out = E;
  using Flag = NoFlag;
  using V = decltype(PackOf<E>::Pack::lo);
  static constexpr int inputs = 2;
  static constexpr int outputs = 1;
  static constexpr int unroll = 2;
  ORBA_INLINE static Pairs<V> eval(Pairs<V> a, Pairs<V> b, NoFlag&) {
    if constexpr (subtract) return {a.lo - b.lo, a.hi - b.hi};
    return {a.lo + b.lo, a.hi + b.hi};
  }
};

template <class E, bool subtract>
struct SumChecked : SumQuiet<E, subtract> {
  using V = typename SumQuiet<E, subtract>::V;
  using Flag = PairMask<typename V::Mask>;
  ORBA_INLINE static Pairs<V> eval(Pairs<V> a, Pairs<V> b, Flag& flag) {
    NoFlag none;
    const Pairs<V> y = SumQuiet<E, subtract>::eval(a, b, none);
    const V infinity = typename V::Element(__builtin_inf());
    flag = flag | Flag{abs(y.lo) == infinity, abs(y.hi) == infinity};
    return y;
  }
  static int32_t callout(const E* a, const E* b, E* r) {
    r->real = sum(a->real, b->real, subtract);
    r->imag = sum(a->imag, b->imag, subtract);
    const bool infinite_argument =
        is_inf(a->real) || is_inf(a->imag) || is_inf(b->real) || is_inf(b->imag);
    return overflow_status(!infinite_argument, is_inf(r->real) || is_inf(r->imag));
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

#define ORBA_SUM_KERNELS(t, Name, E, subtract)             \
  ORBA_KERNEL(2i_1o, t, Name, HA, SumChecked<E, subtract>) \
  ORBA_SAME_KERNEL(2i_1o, t, Name, LA, HA)                 \
  ORBA_SUM_EP(t, Name, E, subtract)
#if ORBA_CLASS == 1
#  define ORBA_SUM_EP(t, Name, E, subtract) ORBA_SAME_KERNEL(2i_1o, t, Name, EP, HA)
#else
#  define ORBA_SUM_EP(t, Name, E, subtract) ORBA_KERNEL(2i_1o, t, Name, EP, SumQuiet<E, subtract>)
#endif

ORBA_SUM_KERNELS(c, Add, KamComplex8, false)
ORBA_SUM_KERNELS(z, Add, KamComplex16, false)
ORBA_SUM_KERNELS(c, Sub, KamComplex8, true)
ORBA_SUM_KERNELS(z, Sub, KamComplex16, true)
