// Peers: what a compiler makes of the plain loop over the C expression or the C library's function.
// Compiled per class and compiler at -O3, without errno and with contraction allowed. ORBA_PEER is
// the peer's name, ORBA_PEER_ENTRY the entry point's.
#include <math.h>

#include "bench/peers/sink.h"

namespace orba::bench::ORBA_CLASS_NAMESPACE {
namespace {

// Arrays are declared free of overlap: the compiler then needs no run-time test for it.
#define ORBA_LOOP_1(t, E, Name, expression)                                                   \
  hand_over(                                                                                  \
      sink, "v" #t #Name, ORBA_PEER, +[](int32_t n, const E* __restrict a, E* __restrict y) { \
        for (int32_t i = 0; i < n; ++i) {                                                     \
          const E x = a[i];                                                                   \
          y[i] = expression;                                                                  \
        }                                                                                     \
      })
#define ORBA_LOOP_2(t, E, Name, expression)                                           \
  hand_over(                                                                          \
      sink, "v" #t #Name, ORBA_PEER,                                                  \
      +[](int32_t n, const E* __restrict a, const E* __restrict b, E* __restrict y) { \
        for (int32_t i = 0; i < n; ++i) {                                             \
          const E p = a[i], q = b[i];                                                 \
          y[i] = expression;                                                          \
        }                                                                             \
      })

// Overloads give each precision its own C function.
inline float square_root(float x) { return sqrtf(x); }
inline double square_root(double x) { return sqrt(x); }
inline float magnitude(float x) { return fabsf(x); }
inline double magnitude(double x) { return fabs(x); }

template <class C>
C quotient(C p, C q) {
  const auto scale = 1 / (q.real * q.real + q.imag * q.imag);
  return {(p.real * q.real + p.imag * q.imag) * scale, (p.imag * q.real - p.real * q.imag) * scale};
}

}  // namespace

#define ORBA_REAL_LOOPS(t, E)              \
  ORBA_LOOP_2(t, E, Add, p + q);           \
  ORBA_LOOP_2(t, E, Sub, p - q);           \
  ORBA_LOOP_2(t, E, Mul, p* q);            \
  ORBA_LOOP_2(t, E, Div, p / q);           \
  ORBA_LOOP_1(t, E, Sqr, x* x);            \
  ORBA_LOOP_1(t, E, Abs, magnitude(x));    \
  ORBA_LOOP_1(t, E, Inv, 1 / x);           \
  ORBA_LOOP_1(t, E, Sqrt, square_root(x)); \
  ORBA_LOOP_1(t, E, InvSqrt, 1 / square_root(x))

#define ORBA_COMPLEX_LOOPS(t, E)                                                          \
  ORBA_LOOP_2(t, E, Add, (E{p.real + q.real, p.imag + q.imag}));                          \
  ORBA_LOOP_2(t, E, Sub, (E{p.real - q.real, p.imag - q.imag}));                          \
  ORBA_LOOP_2(t, E, Mul,                                                                  \
              (E{p.real * q.real - p.imag * q.imag, p.real * q.imag + p.imag * q.real})); \
  ORBA_LOOP_2(t, E, MulByConj,                                                            \
              (E{p.real * q.real + p.imag * q.imag, p.imag * q.real - p.real * q.imag})); \
  ORBA_LOOP_2(t, E, Div, quotient(p, q));                                                 \
  ORBA_LOOP_1(t, E, Conj, (E{x.real, -x.imag}))

#define ORBA_LIBM_LOOP(Name, name)         \
  ORBA_LOOP_1(s, float, Name, name##f(x)); \
  ORBA_LOOP_1(d, double, Name, name(x))

extern "C" __attribute__((visibility("default"))) void ORBA_PEER_ENTRY(PeerSink sink) {
  ORBA_REAL_LOOPS(s, float);
  ORBA_REAL_LOOPS(d, double);
  ORBA_COMPLEX_LOOPS(c, KamComplex8);
  ORBA_COMPLEX_LOOPS(z, KamComplex16);
  ORBA_LIBM_LOOP(Cbrt, cbrt);
  ORBA_LIBM_LOOP(Exp, exp);
  ORBA_LIBM_LOOP(Expm1, expm1);
  ORBA_LIBM_LOOP(Ln, log);
  ORBA_LIBM_LOOP(Log10, log10);
  ORBA_LIBM_LOOP(Log1p, log1p);
  ORBA_LIBM_LOOP(Sin, sin);
  ORBA_LIBM_LOOP(Cos, cos);
  ORBA_LIBM_LOOP(Tan, tan);
  ORBA_LIBM_LOOP(Asin, asin);
  ORBA_LIBM_LOOP(Acos, acos);
  ORBA_LIBM_LOOP(Atan, atan);
  ORBA_LOOP_2(s, float, Hypot, hypotf(p, q));
  ORBA_LOOP_2(d, double, Hypot, hypot(p, q));
  ORBA_LOOP_2(s, float, Atan2, atan2f(p, q));
  ORBA_LOOP_2(d, double, Atan2, atan2(p, q));
}

}  // namespace orba::bench::ORBA_CLASS_NAMESPACE
