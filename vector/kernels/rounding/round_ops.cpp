// Floor, Ceil, Trunc, Rint, NearbyInt, Round: the whole number next to a number, exact at every
// accuracy, with the sign of the argument; infinities and NaN stay. Rint and NearbyInt go to the
// nearest one, ties to even, whatever the caller's rounding mode.
//
// From class 2 on the inexact exception is part of the result: Floor, Ceil, Trunc and Rint raise it
// for an argument that is not whole, NearbyInt and Round never. Dead lanes hold a whole number. Before,
// any of them may raise it.
#include "vector/kernels/rounding/whole_numbers.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class V>
struct RoundingBase {
  using In = typename V::Element;
  using Out = In;
  using Flag = NoFlag;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = 4;
  static constexpr double filler = 1;
};

template <class V, int direction>
struct Directed : RoundingBase<V> {
  ORBA_INLINE static V eval(V x, NoFlag&) { return to_whole<direction>(x); }
};

#if ORBA_CLASS == 5
// The sum, to nearest, without exceptions.
ORBA_INLINE F64 silent_sum(F64 a, F64 b) {
  return _mm512_add_round_pd(a.v, b.v, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
}
ORBA_INLINE F32 silent_sum(F32 a, F32 b) {
  return _mm512_add_round_ps(a.v, b.v, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
}

// Half away from zero: the sum with the largest number below 1/2 reaches the next whole number from a
// fraction of 1/2 on, and where there are no fractions it is rounded back to x.
template <class V>
struct HalfAway : RoundingBase<V> {
  ORBA_INLINE static V eval(V x, NoFlag&) {
    using E = typename V::Element;
    const V below_half(static_cast<E>(sizeof(E) == 8 ? 0x1.fffffffffffffp-2 : 0x1.fffffep-2));
    return to_whole<kToZero | kSilent>(silent_sum(x, with_sign_of(x, below_half)));
  }
};
#else
// Half away from zero. The nearest whole number, ties to even, lies below |x| by exactly 1/2 where
// the tie went the other way. (Adding 1/2 first would round 1/2 - 2^-54 up.)
template <class V>
struct HalfAway : RoundingBase<V> {
  ORBA_INLINE static V eval(V x, NoFlag&) {
    using E = typename V::Element;
    const V magnitude = abs(x);
    const V nearest = to_whole<kToNearest | kSilent>(magnitude);
    const V up = where(rest(magnitude, nearest) == V(E(0.5)), V(E(1)));
    return with_sign_of(x, nearest + up);
  }
};
#endif

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

#define ORBA_ROUNDING_KERNELS(Name, F, ...)                           \
  ORBA_KERNEL(1i_1o, s, Name, ALL, F<F32 __VA_OPT__(, ) __VA_ARGS__>) \
  ORBA_KERNEL(1i_1o, d, Name, ALL, F<F64 __VA_OPT__(, ) __VA_ARGS__>)
ORBA_ROUNDING_KERNELS(Floor, Directed, kDown)
ORBA_ROUNDING_KERNELS(Ceil, Directed, kUp)
ORBA_ROUNDING_KERNELS(Trunc, Directed, kToZero)
ORBA_ROUNDING_KERNELS(Rint, Directed, kToNearest)
ORBA_ROUNDING_KERNELS(NearbyInt, Directed, kToNearest | kSilent)
ORBA_ROUNDING_KERNELS(Round, HalfAway)
