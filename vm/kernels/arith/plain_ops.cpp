// Add, Sub, Mul, Sqr, Abs: one hardware operation per element, correctly rounded by IEEE 754 at
// every accuracy. Overflow, NaN and infinity follow the standard; nothing is reported.
#include "vm/kernels/contract/plain.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// On class 5 the operations carry an embedded rounding, to nearest, with exceptions suppressed.
#if ORBA_CLASS == 5
constexpr int kQuietNearest = _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC;
ORBA_INLINE F64 quiet_add(F64 a, F64 b) { return _mm512_add_round_pd(a.v, b.v, kQuietNearest); }
ORBA_INLINE F32 quiet_add(F32 a, F32 b) { return _mm512_add_round_ps(a.v, b.v, kQuietNearest); }
ORBA_INLINE F64 quiet_sub(F64 a, F64 b) { return _mm512_sub_round_pd(a.v, b.v, kQuietNearest); }
ORBA_INLINE F32 quiet_sub(F32 a, F32 b) { return _mm512_sub_round_ps(a.v, b.v, kQuietNearest); }
ORBA_INLINE F64 quiet_mul(F64 a, F64 b) { return _mm512_mul_round_pd(a.v, b.v, kQuietNearest); }
ORBA_INLINE F32 quiet_mul(F32 a, F32 b) { return _mm512_mul_round_ps(a.v, b.v, kQuietNearest); }
#else
template <class V>
ORBA_INLINE V quiet_add(V a, V b) {
  return a + b;
}
template <class V>
ORBA_INLINE V quiet_sub(V a, V b) {
  return a - b;
}
template <class V>
ORBA_INLINE V quiet_mul(V a, V b) {
  return a * b;
}
#endif

#if ORBA_CLASS <= 1
ORBA_INLINE double abs(double a) { return __builtin_fabs(a); }
ORBA_INLINE float abs(float a) { return __builtin_fabsf(a); }
#endif

struct Add {
  static constexpr int inputs = 2;
  template <class V>
  ORBA_INLINE static V apply(V a, V b) {
    return quiet_add(a, b);
  }
};
struct Sub {
  static constexpr int inputs = 2;
  template <class V>
  ORBA_INLINE static V apply(V a, V b) {
    return quiet_sub(a, b);
  }
};
struct Mul {
  static constexpr int inputs = 2;
  template <class V>
  ORBA_INLINE static V apply(V a, V b) {
    return quiet_mul(a, b);
  }
};
struct Sqr {
  static constexpr int inputs = 1;
  template <class V>
  ORBA_INLINE static V apply(V a) {
    return quiet_mul(a, a);
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

ORBA_PLAIN_KERNEL_2i_1o(s, Add, Add) ORBA_PLAIN_KERNEL_2i_1o(d, Add, Add)
    ORBA_PLAIN_KERNEL_2i_1o(s, Sub, Sub) ORBA_PLAIN_KERNEL_2i_1o(d, Sub, Sub)
        ORBA_PLAIN_KERNEL_2i_1o(s, Mul, Mul) ORBA_PLAIN_KERNEL_2i_1o(d, Mul, Mul)
            ORBA_PLAIN_KERNEL_1i_1o(s, Sqr, Sqr) ORBA_PLAIN_KERNEL_1i_1o(d, Sqr, Sqr)
                ORBA_PLAIN_KERNEL_1i_1o(s, Abs, Abs) ORBA_PLAIN_KERNEL_1i_1o(d, Abs, Abs)
