// The contract of a generator: what it supplies, and what follows for all alike.
//
// A generator is a type G with
//
//   struct State : StreamState { ... }                the layout of its stream
//   static constexpr double kUnit                     c in r = u * ((b - a) * c) + a
//   static void seed(State&, int32_t n, const uint32_t* words)     accepts everything
//   static void generate(State&, int32_t n, sink)     the next n outputs into a sink
//
// and, where it can,
//
//   static void leapfrog(State&, uint32_t k, uint32_t nstreams)
//   static void skip_ahead(State&, uint64_t n)
//   static void skip_ahead_words(State&, int32_t count, const uint64_t* words)
//
// Outputs are words of 32 bits; a generator of others derives from Generator and puts its own block
// functions in place.
//
// `generate` hands its outputs to the sink in vectors and, at the end of a request, one by one: the
// state after n outputs is the one n steps on, whatever n is, and nothing is buffered.
#pragma once

#include "statistics/streams/stream_state.h"
#include "vector/kernels/contract/scalar.h"
#include "vector/kernels/simd/integers.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

constexpr int kLanes = F64::lanes;  // outputs of a vector

// ---- Sinks: where outputs go ----
//
// put(i, v): outputs i ... i + kLanes - 1, one per 64-bit lane or as doubles, or twice as many, one
// per 32-bit lane. put_one(i, u): output i.

struct WordSink {
  uint32_t* r;
  ORBA_INLINE void put(int64_t i, I64 v) { store_low_words(r + i, v); }
  ORBA_INLINE void put(int64_t i, I32 v) { store(r + i, v); }
  ORBA_INLINE void put(int64_t i, F64 v) { store_low_words(r + i, as_bits(v + F64(0x1p52))); }
  ORBA_INLINE void put_one(int64_t i, uint32_t u) { r[i] = u; }
};

// A number as an element of an array: as it is, rounded to float, or its floor.
ORBA_INLINE void put_as(double* r, double x) { *r = x; }
ORBA_INLINE void put_as(float* r, double x) { *r = static_cast<float>(x); }
ORBA_INLINE void put_as(int32_t* r, double x) {
  const int32_t whole = static_cast<int32_t>(x);
  *r = whole - (static_cast<double>(whole) > x);
}

// u * s + a in double precision, the sum fused where the class has it, for outputs below 2^52.
template <class Element>
struct RealSink {
  Element* r;
  double s, a;
  RealSink(Element* result, double unit, double low, double high)
      : r(result), s((high - low) * unit), a(low) {}
  ORBA_INLINE void put(int64_t i, I64 v) { put(i, to_double_52(v)); }
  ORBA_INLINE void put(int64_t i, F64 v) { store_as(r + i, mul_add(v, F64(s), F64(a))); }
  ORBA_INLINE void put(int64_t i, I32 v) {
    put(i, to_double_low(v));
    put(i + kLanes, to_double_high(v));
  }
  ORBA_INLINE void put_one(int64_t i, uint64_t u) {
    put_as(r + i, mul_add(static_cast<double>(static_cast<int64_t>(u)), s, a));
  }
};

// base^exponent by squaring, for any associative product.
template <class Word, class Product>
Word power(Word base, uint64_t exponent, Product multiply) {
  Word result = 1;
  for (; exponent != 0; exponent >>= 1) {
    if (exponent & 1) result = multiply(result, base);
    base = multiply(base, base);
  }
  return result;
}

// Leapfrog and skip-ahead of a multiplicative generator G: a state x, its multiplier a, and
// multiply(x, a), the step.
template <class G, class Word>
struct Multiplicative {
  static Word power(Word base, uint64_t exponent) {
    return ORBA_CLASS_NAMESPACE::power(base, exponent,
                                       [](Word x, Word y) { return G::multiply(x, y); });
  }
  template <class State>
  static void leapfrog(State& state, uint32_t k, uint32_t nstreams) {
    state.x = G::multiply(power(state.a, k), state.x);
    state.a = power(state.a, nstreams);
  }
  template <class State>
  static void skip_ahead(State& state, uint64_t n) {
    state.x = G::multiply(power(state.a, n), state.x);
  }
};

// ---- The entry points of the table, from a generator ----

template <class G>
struct Generator {
  using State = typename G::State;
  static State& state_of(StreamState* stream) { return *static_cast<State*>(stream); }

  static int32_t init(int32_t operation, StreamState* stream, int32_t count, const void* params) {
    State& state = state_of(stream);
    switch (operation) {
      case 0:
        G::seed(state, count, static_cast<const uint32_t*>(params));
        return RAU_STATUS_OK;
      case 1:
        if constexpr (requires { G::leapfrog(state, 0u, 0u); }) {
          G::leapfrog(state, *static_cast<const uint32_t*>(params), static_cast<uint32_t>(count));
          return RAU_STATUS_OK;
        }
        return RAU_ERROR_LEAPFROG_UNSUPPORTED;
      case 2:
        if constexpr (requires { G::skip_ahead(state, uint64_t{0}); }) {
          uint64_t skip;
          __builtin_memcpy(&skip, params, sizeof skip);
          G::skip_ahead(state, skip);
          return RAU_STATUS_OK;
        }
        return RAU_ERROR_SKIPAHEAD_UNSUPPORTED;
      case 3:
        if constexpr (requires(const uint64_t* words) { G::skip_ahead_words(state, 0, words); }) {
          G::skip_ahead_words(state, count, static_cast<const uint64_t*>(params));
          return RAU_STATUS_OK;
        }
        return RAU_ERROR_SKIPAHEADEX_UNSUPPORTED;
      default:
        return RAU_ERROR_BAD_OPERATION;
    }
  }

  static int32_t single(StreamState* stream, int32_t n, float* r, float a, float b) {
    G::generate(state_of(stream), n, RealSink<float>(r, G::kUnit, a, b));
    return RAU_STATUS_OK;
  }
  static int32_t real(StreamState* stream, int32_t n, double* r, double a, double b) {
    G::generate(state_of(stream), n, RealSink<double>(r, G::kUnit, a, b));
    return RAU_STATUS_OK;
  }
  // Floors of numbers in [a, b).
  static int32_t floors(StreamState* stream, int32_t n, int32_t* r, double a, double b) {
    G::generate(state_of(stream), n, RealSink<int32_t>(r, G::kUnit, a, b));
    return RAU_STATUS_OK;
  }
  static int32_t integer(StreamState* stream, int32_t n, void* r) {
    G::generate(state_of(stream), n, WordSink{static_cast<uint32_t*>(r)});
    return RAU_STATUS_OK;
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

// ORBA_BRNG_KERNELS(MCG31m1, Mcg31m1): the entry points of a row of brngs.def, from a type
// that has the functions of Generator.
#define ORBA_BRNG_PASTE_(build, Name, entry) orba_##build##_##Name##_##entry
#define ORBA_BRNG_PASTE(build, Name, entry) ORBA_BRNG_PASTE_(build, Name, entry)
#define ORBA_BRNG_ENTRY(Name, entry) ORBA_BRNG_PASTE(ORBA_CLASS_NAMESPACE, Name, entry)
#define ORBA_BRNG_KERNELS(Name, ...)                                                            \
  namespace orba::ORBA_CLASS_NAMESPACE {                                                        \
  extern "C" int32_t ORBA_BRNG_ENTRY(Name, InitStream)(int32_t operation, StreamState* stream,  \
                                                       int32_t count, const void* params) {     \
    return __VA_ARGS__::init(operation, stream, count, params);                                 \
  }                                                                                             \
  extern "C" int32_t ORBA_BRNG_ENTRY(Name, sBRng)(StreamState * stream, int32_t n, float* r,    \
                                                  float a, float b) {                           \
    return __VA_ARGS__::single(stream, n, r, a, b);                                             \
  }                                                                                             \
  extern "C" int32_t ORBA_BRNG_ENTRY(Name, dBRng)(StreamState * stream, int32_t n, double* r,   \
                                                  double a, double b) {                         \
    return __VA_ARGS__::real(stream, n, r, a, b);                                               \
  }                                                                                             \
  extern "C" int32_t ORBA_BRNG_ENTRY(Name, floors)(StreamState * stream, int32_t n, int32_t* r, \
                                                   double a, double b) {                        \
    return __VA_ARGS__::floors(stream, n, r, a, b);                                             \
  }                                                                                             \
  extern "C" int32_t ORBA_BRNG_ENTRY(Name, iBRng)(StreamState * stream, int32_t n, void* r) {   \
    return __VA_ARGS__::integer(stream, n, r);                                                  \
  }                                                                                             \
  }
