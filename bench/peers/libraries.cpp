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
#  define ORBA_LIBMVEC_d(name) _ZGVeN8v_##name
#  define ORBA_LIBMVEC_s(name) _ZGVeN16v_##name##f
#  define ORBA_SLEEF_d(name, bound) Sleef_##name##d8_##bound##avx512f
#  define ORBA_SLEEF_s(name, bound) Sleef_##name##f16_##bound##avx512f
#elif ORBA_CLASS == 3
#  define ORBA_VECTOR_d __m256d
#  define ORBA_VECTOR_s __m256
#  define ORBA_LIBMVEC_d(name) _ZGVdN4v_##name
#  define ORBA_LIBMVEC_s(name) _ZGVdN8v_##name##f
#  define ORBA_SLEEF_d(name, bound) Sleef_##name##d4_##bound##avx2
#  define ORBA_SLEEF_s(name, bound) Sleef_##name##f8_##bound##avx2
#else
#  define ORBA_VECTOR_d __m128d
#  define ORBA_VECTOR_s __m128
#  define ORBA_LIBMVEC_d(name) _ZGVbN2v_##name
#  define ORBA_LIBMVEC_s(name) _ZGVbN4v_##name##f
#  if ORBA_CLASS == 2
#    define ORBA_SLEEF_d(name, bound) Sleef_##name##d2_##bound##sse4
#    define ORBA_SLEEF_s(name, bound) Sleef_##name##f4_##bound##sse4
#  else
#    define ORBA_SLEEF_d(name, bound) Sleef_##name##d2_##bound##sse2
#    define ORBA_SLEEF_s(name, bound) Sleef_##name##f4_##bound##sse2
#  endif
#endif

#if ORBA_BENCH_LIBMVEC
#  define ORBA_DECLARE_LIBMVEC(name)                              \
    extern "C" ORBA_VECTOR_d ORBA_LIBMVEC_d(name)(ORBA_VECTOR_d); \
    extern "C" ORBA_VECTOR_s ORBA_LIBMVEC_s(name)(ORBA_VECTOR_s);
ORBA_DECLARE_LIBMVEC(exp)
ORBA_DECLARE_LIBMVEC(expm1)
ORBA_DECLARE_LIBMVEC(log)
ORBA_DECLARE_LIBMVEC(log10)
ORBA_DECLARE_LIBMVEC(log1p)
ORBA_DECLARE_LIBMVEC(sin)
ORBA_DECLARE_LIBMVEC(cos)
ORBA_DECLARE_LIBMVEC(tan)
#endif

namespace orba::bench::ORBA_CLASS_NAMESPACE {
namespace {

// Applies `function` to whole vectors; the rest goes through one padded vector.
template <class V, class T, class F>
void apply(int32_t n, const T* a, T* y, F function) {
  using Vector = typename V::Type;
  constexpr int32_t kWidth = sizeof(Vector) / sizeof(T);
  int32_t i = 0;
  Vector v;
  for (; i + kWidth <= n; i += kWidth) {
    memcpy(&v, a + i, sizeof v);
    v = function(v);
    memcpy(y + i, &v, sizeof v);
  }
  if (i < n) {
    T lanes[kWidth];
    for (T& lane : lanes) lane = T{0.75};
    memcpy(lanes, a + i, sizeof(T) * (n - i));
    memcpy(&v, lanes, sizeof v);
    v = function(v);
    memcpy(lanes, &v, sizeof v);
    memcpy(y + i, lanes, sizeof(T) * (n - i));
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

#define ORBA_VECTOR_PEER(t, E, Name, peer, call)                                   \
  hand_over(                                                                       \
      sink, "v" #t #Name, peer, +[](int32_t n, const E* a, E* y) {                 \
        apply<Vector_##t>(                                                         \
            n, a, y, [](Vector_##t::Type x) -> Vector_##t::Type { return call; }); \
      })
#define ORBA_LIBMVEC_PEER(Name, name)                                   \
  ORBA_VECTOR_PEER(s, float, Name, "libmvec", ORBA_LIBMVEC_s(name)(x)); \
  ORBA_VECTOR_PEER(d, double, Name, "libmvec", ORBA_LIBMVEC_d(name)(x))
#define ORBA_SLEEF_PEER(Name, name, bound)                                         \
  ORBA_VECTOR_PEER(s, float, Name, "sleef_" #bound, ORBA_SLEEF_s(name, bound)(x)); \
  ORBA_VECTOR_PEER(d, double, Name, "sleef_" #bound, ORBA_SLEEF_d(name, bound)(x))
// Functions with two results, in x and y of a structure.
#define ORBA_SLEEF_TWO_(t, E, Name, bound, function)                                \
  hand_over(                                                                        \
      sink, "v" #t #Name, "sleef_" #bound, +[](int32_t n, const E* a, E* y, E* z) { \
        apply<Vector_##t>(n, a, y, [&, i = 0](Vector_##t::Type x) mutable {         \
          const auto both = function(x);                                            \
          constexpr int32_t kWidth = sizeof x / sizeof(E);                          \
          memcpy(z + i, &both.y, sizeof(E) * (n - i < kWidth ? n - i : kWidth));    \
          i += kWidth;                                                              \
          return both.x;                                                            \
        });                                                                         \
      })
#define ORBA_SLEEF_TWO_PEER(Name, name, bound)                       \
  ORBA_SLEEF_TWO_(s, float, Name, bound, ORBA_SLEEF_s(name, bound)); \
  ORBA_SLEEF_TWO_(d, double, Name, bound, ORBA_SLEEF_d(name, bound))
#define ORBA_XSIMD_PEER(Name, name)                                               \
  ORBA_VECTOR_PEER(s, float, Name, "xsimd", xsimd::name(xsimd::batch<float>(x))); \
  ORBA_VECTOR_PEER(d, double, Name, "xsimd", xsimd::name(xsimd::batch<double>(x)))

extern "C" __attribute__((visibility("default"))) void ORBA_PEER_ENTRY(PeerSink sink) {
#if ORBA_BENCH_LIBMVEC
  ORBA_LIBMVEC_PEER(Exp, exp);
  ORBA_LIBMVEC_PEER(Expm1, expm1);
  ORBA_LIBMVEC_PEER(Ln, log);
  ORBA_LIBMVEC_PEER(Log10, log10);
  ORBA_LIBMVEC_PEER(Log1p, log1p);
  ORBA_LIBMVEC_PEER(Sin, sin);
  ORBA_LIBMVEC_PEER(Cos, cos);
  ORBA_LIBMVEC_PEER(Tan, tan);
#endif
#if ORBA_BENCH_SLEEF
  ORBA_SLEEF_PEER(Sqrt, sqrt, u05);
  ORBA_SLEEF_PEER(Sqrt, sqrt, u35);
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
#endif
#if ORBA_BENCH_XSIMD
  ORBA_XSIMD_PEER(Sqrt, sqrt);
  ORBA_XSIMD_PEER(Exp, exp);
  ORBA_XSIMD_PEER(Expm1, expm1);
  ORBA_XSIMD_PEER(Ln, log);
  ORBA_XSIMD_PEER(Log10, log10);
  ORBA_XSIMD_PEER(Log1p, log1p);
  ORBA_XSIMD_PEER(Sin, sin);
  ORBA_XSIMD_PEER(Cos, cos);
  ORBA_XSIMD_PEER(Tan, tan);
#endif
}

}  // namespace orba::bench::ORBA_CLASS_NAMESPACE
