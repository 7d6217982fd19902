// Atan: no argument is special. Above 1 the ratio is 1/|x|, subtracted from pi/2.
//
// class        0, 1        2           3, 5
// double HA    two words   two words   two words
//        LA    as HA       as HA       one sum less
//        EP    as HA       one word    one word
// single HA    in double   in double   two words
//        LA    as HA       as HA       one sum less
//        EP    as HA       as HA       one word, estimated reciprocal
#include "vector/kernels/invtrig/atan_kernel.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class V>
struct Folded {
  V n, d, sign;
  typename V::Mask inverted;
};
// A NaN passes: the second operand of min and max wins.
template <class V>
ORBA_INLINE Folded<V> folded(V x) {
  const V a = abs(x);
  const auto inverted = a > V(1);
  return {min(V(1), a), max(V(1), a), where(inverted, V(-0.0f)), inverted};
}

ORBA_INLINE F64 atan_in_double(F64 x) {
  const Folded<F64> f = folded(x);
  return with_sign_of(x, short_arctangent((f.n ^ f.sign) / f.d, where(f.inverted, kHalfPiRounded),
                                          kAtanSeriesSingle));
}

template <class V, Accuracy accuracy>
struct Atan {
  using In = typename V::Element;
  using Out = In;
  using Flag = NoFlag;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = 2;

  ORBA_INLINE static V eval(V x, NoFlag&) {
    using D = Data<V>;
    if constexpr (kClass < 3 && sizeof(In) == 4) {
      return narrow(atan_in_double(widen_low(x)), atan_in_double(widen_high(x)));
    } else {
      const Folded<V> f = folded(x);
      if constexpr (accuracy == kEp) {
        const V base = where(f.inverted, V(D::half_pi_rounded));
        if constexpr (sizeof(In) == 4)
          return with_sign_of(x, short_arctangent((f.n ^ f.sign) * approx_recip(f.d), base));
        else
          return with_sign_of(x, short_arctangent((f.n ^ f.sign) / f.d, base, D::atan_ep));
      } else {
        const Quadrant<V> quadrant = {
            {where(f.inverted, V(D::half_pi.hi)), where(f.inverted, V(D::half_pi.lo))}, f.sign};
        // Infinity as a number whose reciprocal no longer matters.
        const V d = min(V(0x1p64f), f.d);
        return with_sign_of(x, arctangent<accuracy, false>(f.n, d, quadrant));
      }
    }
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_KERNEL(1i_1o, d, Atan, HA, Atan<F64, kHa>)
ORBA_KERNEL(1i_1o, s, Atan, HA, Atan<F32, kHa>)
#if ORBA_CLASS >= 3
ORBA_KERNEL(1i_1o, d, Atan, LA, Atan<F64, kLa>)
ORBA_KERNEL(1i_1o, s, Atan, LA, Atan<F32, kLa>)
ORBA_KERNEL(1i_1o, s, Atan, EP, Atan<F32, kEp>)
#else
ORBA_SAME_KERNEL(1i_1o, d, Atan, LA, HA)
ORBA_SAME_KERNEL(1i_1o, s, Atan, LA, HA)
ORBA_SAME_KERNEL(1i_1o, s, Atan, EP, HA)
#endif
#if ORBA_CLASS >= 2
ORBA_KERNEL(1i_1o, d, Atan, EP, Atan<F64, kEp>)
#else
ORBA_SAME_KERNEL(1i_1o, d, Atan, EP, HA)
#endif
