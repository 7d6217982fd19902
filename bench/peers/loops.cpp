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

#define ORBA_LOOP_SCALAR(t, E, Name, expression)                                                   \
  hand_over(                                                                                       \
      sink, "v" #t #Name, ORBA_PEER, +[](int32_t n, const E* __restrict a, E q, E* __restrict y) { \
        for (int32_t i = 0; i < n; ++i) {                                                          \
          const E p = a[i];                                                                        \
          y[i] = expression;                                                                       \
        }                                                                                          \
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

#define ORBA_TWO_RESULTS_LOOPS(t, E, modf)                                                 \
  hand_over(                                                                               \
      sink, "v" #t "Modf", ORBA_PEER,                                                      \
      +[](int32_t n, const E* __restrict a, E* __restrict y, E* __restrict z) {            \
        for (int32_t i = 0; i < n; ++i) z[i] = modf(a[i], &y[i]);                          \
      });                                                                                  \
  hand_over(                                                                               \
      sink, "v" #t "LinearFrac", ORBA_PEER,                                                \
      +[](int32_t n, const E* __restrict a, const E* __restrict b, E sa, E ta, E sb, E tb, \
          E* __restrict y) {                                                               \
        for (int32_t i = 0; i < n; ++i) y[i] = (a[i] * sa + ta) / (b[i] * sb + tb);        \
      })

// `d` is the mask or the index vector, j the place among the selected elements.
#define ORBA_PACK_LOOP_(t, E, Name, body)                                                   \
  hand_over(                                                                                \
      sink, "v" #t #Name, ORBA_PEER,                                                        \
      +[](int32_t n, const E* __restrict a, const int32_t* __restrict d, E* __restrict y) { \
        for (int32_t i = 0, j = 0; i < n; ++i) body;                                        \
        (void)d;                                                                            \
      })
#define ORBA_UNPACK_LOOP_(t, E, Name, body)                                                 \
  hand_over(                                                                                \
      sink, "v" #t #Name, ORBA_PEER,                                                        \
      +[](int32_t n, const E* __restrict a, E* __restrict y, const int32_t* __restrict d) { \
        for (int32_t i = 0, j = 0; i < n; ++i) body;                                        \
        (void)d;                                                                            \
      })
#define ORBA_PACK_LOOPS(t, E)                                               \
  hand_over(                                                                \
      sink, "v" #t "PackI", ORBA_PEER,                                      \
      +[](int32_t n, const E* __restrict a, int32_t inc, E* __restrict y) { \
        for (int32_t i = 0; i < n; ++i) y[i] = a[int64_t{i} * inc];         \
      });                                                                   \
  hand_over(                                                                \
      sink, "v" #t "UnpackI", ORBA_PEER,                                    \
      +[](int32_t n, const E* __restrict a, E* __restrict y, int32_t inc) { \
        for (int32_t i = 0; i < n; ++i) y[int64_t{i} * inc] = a[i];         \
      });                                                                   \
  ORBA_PACK_LOOP_(t, E, PackM, if (d[i] != 0) y[j++] = a[i]);               \
  ORBA_PACK_LOOP_(t, E, PackV, y[i + 0 * j] = a[d[i]]);                     \
  ORBA_UNPACK_LOOP_(t, E, UnpackM, if (d[i] != 0) y[i] = a[j++]);           \
  ORBA_UNPACK_LOOP_(t, E, UnpackV, y[d[i] + 0 * j] = a[i])

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
  ORBA_LIBM_LOOP(Floor, floor);
  ORBA_LIBM_LOOP(Ceil, ceil);
  ORBA_LIBM_LOOP(Trunc, trunc);
  ORBA_LIBM_LOOP(Round, round);
  ORBA_LIBM_LOOP(NearbyInt, nearbyint);
  ORBA_LIBM_LOOP(Rint, rint);
  ORBA_TWO_RESULTS_LOOPS(s, float, modff);
  ORBA_TWO_RESULTS_LOOPS(d, double, modf);
  ORBA_PACK_LOOPS(s, float);
  ORBA_PACK_LOOPS(d, double);
  ORBA_PACK_LOOPS(c, KamComplex8);
  ORBA_PACK_LOOPS(z, KamComplex16);
  ORBA_LIBM_LOOP(Sinh, sinh);
  ORBA_LIBM_LOOP(Cosh, cosh);
  ORBA_LIBM_LOOP(Tanh, tanh);
  ORBA_LOOP_2(s, float, Hypot, hypotf(p, q));
  ORBA_LOOP_2(d, double, Hypot, hypot(p, q));
  ORBA_LOOP_2(s, float, Atan2, atan2f(p, q));
  ORBA_LOOP_2(d, double, Atan2, atan2(p, q));
  ORBA_LIBM_LOOP(Asinh, asinh);
  ORBA_LIBM_LOOP(Acosh, acosh);
  ORBA_LIBM_LOOP(Atanh, atanh);
  ORBA_LOOP_2(s, float, Pow, powf(p, q));
  ORBA_LOOP_2(d, double, Pow, pow(p, q));
  ORBA_LOOP_SCALAR(s, float, Powx, powf(p, q));
  ORBA_LOOP_SCALAR(d, double, Powx, pow(p, q));
}

}  // namespace orba::bench::ORBA_CLASS_NAMESPACE
