// Add, Sub, Mul, Sqr, Abs: one hardware operation per element, correctly rounded by IEEE 754 at
// every accuracy. Overflow, NaN and infinity follow the standard; nothing is reported. Class 5 does
// not use embedded rounding: the environment is to nearest with exceptions masked anyway, and the
// register operands that it demands cost 4 % of the loop.
#include "vector/kernels/contract/plain.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

#if ORBA_CLASS <= 1
ORBA_INLINE double abs(double a) { return __builtin_fabs(a); }
ORBA_INLINE float abs(float a) { return __builtin_fabsf(a); }
#endif

struct Add {
  static constexpr int inputs = 2;
  template <class V>
  ORBA_INLINE static V apply(V a, V b) {
    return a + b;
  }
};
struct Sub {
  static constexpr int inputs = 2;
  template <class V>
  ORBA_INLINE static V apply(V a, V b) {
    return a - b;
  }
};
struct Mul {
  static constexpr int inputs = 2;
  template <class V>
  ORBA_INLINE static V apply(V a, V b) {
    return a * b;
  }
};
struct Sqr {
  static constexpr int inputs = 1;
  template <class V>
  ORBA_INLINE static V apply(V a) {
    return a * a;
  }
};
struct Abs {
  static constexpr int inputs = 1;
  template <class V>
  ORBA_INLINE static V apply(V a) {
    return abs(a);
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_PLAIN_KERNEL(2i_1o, s, Add, Add)
ORBA_PLAIN_KERNEL(2i_1o, d, Add, Add)
ORBA_PLAIN_KERNEL(2i_1o, s, Sub, Sub)
ORBA_PLAIN_KERNEL(2i_1o, d, Sub, Sub)
ORBA_PLAIN_KERNEL(2i_1o, s, Mul, Mul)
ORBA_PLAIN_KERNEL(2i_1o, d, Mul, Mul)
ORBA_PLAIN_KERNEL(1i_1o, s, Sqr, Sqr)
ORBA_PLAIN_KERNEL(1i_1o, d, Sqr, Sqr)
ORBA_PLAIN_KERNEL(1i_1o, s, Abs, Abs)
ORBA_PLAIN_KERNEL(1i_1o, d, Abs, Abs)
