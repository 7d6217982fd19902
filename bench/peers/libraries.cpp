// Peers: vector functions of other libraries, called over the array at the class's vector width.
// ORBA_BENCH_LIBMVEC, ORBA_BENCH_SLEEF and ORBA_BENCH_XSIMD say which of them are there.
#include <immintrin.h>
#include <string.h>

#include "bench/peers/sink.h"

#if ORBA_BENCH_SLEEF
#  include <sleef.h>
#endif
#if ORBA_BENCH_XSIMD
#  include <xsimd/xsimd.hpp>
#endif

// The vectors of the class and how the libraries name their functions for them.
#if ORBA_CLASS == 5
#  define ORBA_VECTOR_d __m512d
#  define ORBA_VECTOR_s __m512
#  define ORBA_LIBMVEC_d(operands, name) _ZGVeN8##operands##_##name
#  define ORBA_LIBMVEC_s(operands, name) _ZGVeN16##operands##_##name##f
#  define ORBA_SLEEF_d(name, bound) Sleef_##name##d8_##bound##avx512f
#  define ORBA_SLEEF_s(name, bound) Sleef_##name##f16_##bound##avx512f
#elif ORBA_CLASS == 3
#  define ORBA_VECTOR_d __m256d
#  define ORBA_VECTOR_s __m256
#  define ORBA_LIBMVEC_d(operands, name) _ZGVdN4##operands##_##name
#  define ORBA_LIBMVEC_s(operands, name) _ZGVdN8##operands##_##name##f
#  define ORBA_SLEEF_d(name, bound) Sleef_##name##d4_##bound##avx2
#  define ORBA_SLEEF_s(name, bound) Sleef_##name##f8_##bound##avx2
#else
#  define ORBA_VECTOR_d __m128d
#  define ORBA_VECTOR_s __m128
#  define ORBA_LIBMVEC_d(operands, name) _ZGVbN2##operands##_##name
#  define ORBA_LIBMVEC_s(operands, name) _ZGVbN4##operands##_##name##f
#  if ORBA_CLASS == 2
#    define ORBA_SLEEF_d(name, bound) Sleef_##name##d2_##bound##sse4
#    define ORBA_SLEEF_s(name, bound) Sleef_##name##f4_##bound##sse4
#  else
#    define ORBA_SLEEF_d(name, bound) Sleef_##name##d2_##bound##sse2
#    define ORBA_SLEEF_s(name, bound) Sleef_##name##f4_##bound##sse2
#  endif
#endif

#if ORBA_BENCH_LIBMVEC
#  define ORBA_DECLARE_LIBMVEC(name)                                 \
    extern "C" ORBA_VECTOR_d ORBA_LIBMVEC_d(v, name)(ORBA_VECTOR_d); \
    extern "C" ORBA_VECTOR_s ORBA_LIBMVEC_s(v, name)(ORBA_VECTOR_s);
#  define ORBA_DECLARE_LIBMVEC_2(name)                                               \
    extern "C" ORBA_VECTOR_d ORBA_LIBMVEC_d(vv, name)(ORBA_VECTOR_d, ORBA_VECTOR_d); \
    extern "C" ORBA_VECTOR_s ORBA_LIBMVEC_s(vv, name)(ORBA_VECTOR_s, ORBA_VECTOR_s);
ORBA_DECLARE_LIBMVEC(cbrt)
ORBA_DECLARE_LIBMVEC(exp)
ORBA_DECLARE_LIBMVEC(expm1)
ORBA_DECLARE_LIBMVEC(log)
ORBA_DECLARE_LIBMVEC(log10)
ORBA_DECLARE_LIBMVEC(log1p)
ORBA_DECLARE_LIBMVEC(sin)
ORBA_DECLARE_LIBMVEC(cos)
ORBA_DECLARE_LIBMVEC(tan)
ORBA_DECLARE_LIBMVEC(asin)
ORBA_DECLARE_LIBMVEC(acos)
ORBA_DECLARE_LIBMVEC(atan)
ORBA_DECLARE_LIBMVEC_2(atan2)
ORBA_DECLARE_LIBMVEC(asinh)
ORBA_DECLARE_LIBMVEC(acosh)
ORBA_DECLARE_LIBMVEC(atanh)
ORBA_DECLARE_LIBMVEC_2(pow)
ORBA_DECLARE_LIBMVEC(sinh)
ORBA_DECLARE_LIBMVEC(cosh)
ORBA_DECLARE_LIBMVEC(tanh)
ORBA_DECLARE_LIBMVEC_2(hypot)
#endif

namespace orba::bench::ORBA_CLASS_NAMESPACE {
namespace {

// Applies `function` to whole vectors of the inputs; the rest goes through padded ones.
template <class V, class T, class F, class... In>
void apply(int32_t n, T* y, F function, const In*... in) {
  using Vector = typename V::Type;
  constexpr int32_t kWidth = sizeof(Vector) / sizeof(T);
  const auto whole = [](const T* p) {
    Vector v;
    memcpy(&v, p, sizeof v);
    return v;
  };
  int32_t i = 0;
  for (; i + kWidth <= n; i += kWidth) {
    const Vector v = function(whole(in + i)...);
    memcpy(y + i, &v, sizeof v);
  }
  if (i < n) {
    const auto padded = [&](const T* p) {
      T lanes[kWidth];
      for (T& lane : lanes) lane = T{0.75};
      memcpy(lanes, p, sizeof(T) * (n - i));
      return whole(lanes);
    };
    const Vector v = function(padded(in + i)...);
    memcpy(y + i, &v, sizeof(T) * (n - i));
  }
}

// A vector type as such is no template argument: its alignment would be dropped.
struct Vector_d {
  using Type = ORBA_VECTOR_d;
};
struct Vector_s {
  using Type = ORBA_VECTOR_s;
};

}  // namespace

#define ORBA_VECTOR_PEER(t, E, Name, peer, call)                   \
  hand_over(                                                       \
      sink, "v" #t #Name, peer, +[](int32_t n, const E* a, E* y) { \
        using Vector = Vector_##t::Type;                           \
        apply<Vector_##t>(                                         \
            n, y, [](Vector x) -> Vector { return call; }, a);     \
      })
#define ORBA_VECTOR_PEER_2(t, E, Name, peer, call)                             \
  hand_over(                                                                   \
      sink, "v" #t #Name, peer, +[](int32_t n, const E* a, const E* b, E* y) { \
        using Vector = Vector_##t::Type;                                       \
        apply<Vector_##t>(                                                     \
            n, y, [](Vector p, Vector q) -> Vector { return call; }, a, b);    \
      })
// The second argument a number.
#define ORBA_VECTOR_PEER_SCALAR(t, E, Name, peer, call)                 \
  hand_over(                                                            \
      sink, "v" #t #Name, peer, +[](int32_t n, const E* a, E b, E* y) { \
        using Vector = Vector_##t::Type;                                \
        const Vector q = Vector{} + b;                                  \
        apply<Vector_##t>(                                              \
            n, y, [q](Vector p) -> Vector { return call; }, a);         \
      })
#define ORBA_LIBMVEC_PEER(Name, name)                                      \
  ORBA_VECTOR_PEER(s, float, Name, "libmvec", ORBA_LIBMVEC_s(v, name)(x)); \
  ORBA_VECTOR_PEER(d, double, Name, "libmvec", ORBA_LIBMVEC_d(v, name)(x))
#define ORBA_LIBMVEC_PEER_2(Name, name)                                          \
  ORBA_VECTOR_PEER_2(s, float, Name, "libmvec", ORBA_LIBMVEC_s(vv, name)(p, q)); \
  ORBA_VECTOR_PEER_2(d, double, Name, "libmvec", ORBA_LIBMVEC_d(vv, name)(p, q))
#define ORBA_LIBMVEC_PEER_SCALAR(Name, name)                                          \
  ORBA_VECTOR_PEER_SCALAR(s, float, Name, "libmvec", ORBA_LIBMVEC_s(vv, name)(p, q)); \
  ORBA_VECTOR_PEER_SCALAR(d, double, Name, "libmvec", ORBA_LIBMVEC_d(vv, name)(p, q))
#define ORBA_SLEEF_PEER(Name, name, bound)                                         \
  ORBA_VECTOR_PEER(s, float, Name, "sleef_" #bound, ORBA_SLEEF_s(name, bound)(x)); \
  ORBA_VECTOR_PEER(d, double, Name, "sleef_" #bound, ORBA_SLEEF_d(name, bound)(x))
// Functions with two results, in x and y of a structure.
#define ORBA_SLEEF_TWO_(t, E, Name, bound, function)                                \
  hand_over(                                                                        \
      sink, "v" #t #Name, "sleef_" #bound, +[](int32_t n, const E* a, E* y, E* z) { \
        auto step = [&, i = 0](Vector_##t::Type x) mutable {                        \
          const auto both = function(x);                                            \
          constexpr int32_t kWidth = sizeof x / sizeof(E);                          \
          memcpy(z + i, &both.y, sizeof(E) * (n - i < kWidth ? n - i : kWidth));    \
          i += kWidth;                                                              \
          return both.x;                                                            \
        };                                                                          \
        apply<Vector_##t>(n, y, step, a);                                           \
      })
#define ORBA_SLEEF_TWO_PEER(Name, name, bound)                       \
  ORBA_SLEEF_TWO_(s, float, Name, bound, ORBA_SLEEF_s(name, bound)); \
  ORBA_SLEEF_TWO_(d, double, Name, bound, ORBA_SLEEF_d(name, bound))
#define ORBA_SLEEF_PEER_2(Name, name, bound)                                            \
  ORBA_VECTOR_PEER_2(s, float, Name, "sleef_" #bound, ORBA_SLEEF_s(name, bound)(p, q)); \
  ORBA_VECTOR_PEER_2(d, double, Name, "sleef_" #bound, ORBA_SLEEF_d(name, bound)(p, q))
#define ORBA_SLEEF_PEER_SCALAR(Name, name, bound)                                            \
  ORBA_VECTOR_PEER_SCALAR(s, float, Name, "sleef_" #bound, ORBA_SLEEF_s(name, bound)(p, q)); \
  ORBA_VECTOR_PEER_SCALAR(d, double, Name, "sleef_" #bound, ORBA_SLEEF_d(name, bound)(p, q))
#define ORBA_XSIMD_PEER(Name, name)                                               \
  ORBA_VECTOR_PEER(s, float, Name, "xsimd", xsimd::name(xsimd::batch<float>(x))); \
  ORBA_VECTOR_PEER(d, double, Name, "xsimd", xsimd::name(xsimd::batch<double>(x)))
#define ORBA_XSIMD_PEER_2(Name, name)                                              \
  ORBA_VECTOR_PEER_2(s, float, Name, "xsimd",                                      \
                     xsimd::name(xsimd::batch<float>(p), xsimd::batch<float>(q))); \
  ORBA_VECTOR_PEER_2(d, double, Name, "xsimd",                                     \
                     xsimd::name(xsimd::batch<double>(p), xsimd::batch<double>(q)))

extern "C" __attribute__((visibility("default"))) void ORBA_PEER_ENTRY(PeerSink sink) {
#if ORBA_BENCH_LIBMVEC
  ORBA_LIBMVEC_PEER(Cbrt, cbrt);
  ORBA_LIBMVEC_PEER(Exp, exp);
  ORBA_LIBMVEC_PEER(Expm1, expm1);
  ORBA_LIBMVEC_PEER(Ln, log);
  ORBA_LIBMVEC_PEER(Log10, log10);
  ORBA_LIBMVEC_PEER(Log1p, log1p);
  ORBA_LIBMVEC_PEER(Sin, sin);
  ORBA_LIBMVEC_PEER(Cos, cos);
  ORBA_LIBMVEC_PEER(Tan, tan);
  ORBA_LIBMVEC_PEER(Asin, asin);
  ORBA_LIBMVEC_PEER(Acos, acos);
  ORBA_LIBMVEC_PEER(Atan, atan);
  ORBA_LIBMVEC_PEER_2(Atan2, atan2);
  ORBA_LIBMVEC_PEER(Asinh, asinh);
  ORBA_LIBMVEC_PEER(Acosh, acosh);
  ORBA_LIBMVEC_PEER(Atanh, atanh);
  ORBA_LIBMVEC_PEER_2(Pow, pow);
  ORBA_LIBMVEC_PEER_SCALAR(Powx, pow);
  ORBA_LIBMVEC_PEER(Sinh, sinh);
  ORBA_LIBMVEC_PEER(Cosh, cosh);
  ORBA_LIBMVEC_PEER(Tanh, tanh);
  ORBA_LIBMVEC_PEER_2(Hypot, hypot);
#endif
#if ORBA_BENCH_SLEEF
  ORBA_SLEEF_PEER(Sqrt, sqrt, u05);
  ORBA_SLEEF_PEER(Sqrt, sqrt, u35);
  ORBA_SLEEF_PEER(Cbrt, cbrt, u10);
  ORBA_SLEEF_PEER(Cbrt, cbrt, u35);
  ORBA_SLEEF_PEER(Exp, exp, u10);
  ORBA_SLEEF_PEER(Expm1, expm1, u10);
  ORBA_SLEEF_PEER(Ln, log, u10);
  ORBA_SLEEF_PEER(Ln, log, u35);
  ORBA_SLEEF_PEER(Log10, log10, u10);
  ORBA_SLEEF_PEER(Log1p, log1p, u10);
  ORBA_SLEEF_PEER(Sin, sin, u10);
  ORBA_SLEEF_PEER(Sin, sin, u35);
  ORBA_SLEEF_PEER(Cos, cos, u10);
  ORBA_SLEEF_PEER(Cos, cos, u35);
  ORBA_SLEEF_PEER(Tan, tan, u10);
  ORBA_SLEEF_PEER(Tan, tan, u35);
  ORBA_SLEEF_TWO_PEER(SinCos, sincos, u10);
  ORBA_SLEEF_TWO_PEER(SinCos, sincos, u35);
  ORBA_SLEEF_PEER(Asin, asin, u10);
  ORBA_SLEEF_PEER(Asin, asin, u35);
  ORBA_SLEEF_PEER(Acos, acos, u10);
  ORBA_SLEEF_PEER(Acos, acos, u35);
  ORBA_SLEEF_PEER(Atan, atan, u10);
  ORBA_SLEEF_PEER(Atan, atan, u35);
  ORBA_SLEEF_PEER_2(Atan2, atan2, u10);
  ORBA_SLEEF_PEER_2(Atan2, atan2, u35);
  ORBA_SLEEF_PEER(Asinh, asinh, u10);
  ORBA_SLEEF_PEER(Acosh, acosh, u10);
  ORBA_SLEEF_PEER(Atanh, atanh, u10);
  ORBA_SLEEF_PEER_2(Pow, pow, u10);
  ORBA_SLEEF_PEER_SCALAR(Powx, pow, u10);
  ORBA_SLEEF_PEER(Sinh, sinh, u10);
  ORBA_SLEEF_PEER(Sinh, sinh, u35);
  ORBA_SLEEF_PEER(Cosh, cosh, u10);
  ORBA_SLEEF_PEER(Cosh, cosh, u35);
  ORBA_SLEEF_PEER(Tanh, tanh, u10);
  ORBA_SLEEF_PEER(Tanh, tanh, u35);
  ORBA_SLEEF_PEER_2(Hypot, hypot, u05);
  ORBA_SLEEF_PEER_2(Hypot, hypot, u35);
#endif
#if ORBA_BENCH_XSIMD
  ORBA_XSIMD_PEER(Sqrt, sqrt);
  ORBA_XSIMD_PEER(Cbrt, cbrt);
  ORBA_XSIMD_PEER(Exp, exp);
  ORBA_XSIMD_PEER(Expm1, expm1);
  ORBA_XSIMD_PEER(Ln, log);
  ORBA_XSIMD_PEER(Log10, log10);
  ORBA_XSIMD_PEER(Log1p, log1p);
  ORBA_XSIMD_PEER(Sin, sin);
  ORBA_XSIMD_PEER(Cos, cos);
  ORBA_XSIMD_PEER(Tan, tan);
  ORBA_XSIMD_PEER(Asin, asin);
  ORBA_XSIMD_PEER(Acos, acos);
  ORBA_XSIMD_PEER(Atan, atan);
  ORBA_XSIMD_PEER_2(Atan2, atan2);
  ORBA_XSIMD_PEER(Asinh, asinh);
  ORBA_XSIMD_PEER(Acosh, acosh);
  ORBA_XSIMD_PEER(Atanh, atanh);
  ORBA_XSIMD_PEER_2(Pow, pow);
  ORBA_XSIMD_PEER(Sinh, sinh);
  ORBA_XSIMD_PEER(Cosh, cosh);
  ORBA_XSIMD_PEER(Tanh, tanh);
  ORBA_XSIMD_PEER_2(Hypot, hypot);
#endif
}

}  // namespace orba::bench::ORBA_CLASS_NAMESPACE
