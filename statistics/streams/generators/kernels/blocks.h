// The blocks of a generator: what it supplies, and what follows for all alike.
//
// A generator supplies a type G with
//
//   using State = ...                                     as in generators/generator.h
//   static constexpr double kUnit                         c in r = u * ((b - a) * c) + a
//   static int32_t generate(State&, int32_t n, sink)      the next n outputs into a sink; a status
//
// Outputs are words of 32 bits; a generator of others derives from Blocks and puts its own block
// functions in place.
//
// `generate` hands its outputs to the sink in vectors and, at the end of a request, one by one: the
// state after n outputs is the one n steps on, whatever n is, and nothing is buffered. Of the state
// it believes nothing, as generator.h says.
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

// ---- The entry points of the table, from a generator ----

template <class G>
struct Blocks {
  using State = typename G::State;
  static State& state_of(StreamState* stream) { return *static_cast<State*>(stream); }

  static int32_t single(StreamState* stream, int32_t n, float* r, float a, float b) {
    return G::generate(state_of(stream), n, RealSink<float>(r, G::kUnit, a, b));
  }
  static int32_t real(StreamState* stream, int32_t n, double* r, double a, double b) {
    return G::generate(state_of(stream), n, RealSink<double>(r, G::kUnit, a, b));
  }
  // Floors of numbers in [a, b).
  static int32_t floors(StreamState* stream, int32_t n, int32_t* r, double a, double b) {
    return G::generate(state_of(stream), n, RealSink<int32_t>(r, G::kUnit, a, b));
  }
  static int32_t integer(StreamState* stream, int32_t n, void* r) {
    return G::generate(state_of(stream), n, WordSink{static_cast<uint32_t*>(r)});
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

// ORBA_BRNG_BLOCKS(MCG31m1, Mcg31m1): the entry points of a row of brngs.def, from a type
// that has the functions of Blocks.
#define ORBA_BRNG_PASTE_(build, Name, entry) orba_##build##_##Name##_##entry
#define ORBA_BRNG_PASTE(build, Name, entry) ORBA_BRNG_PASTE_(build, Name, entry)
#define ORBA_BRNG_ENTRY(Name, entry) ORBA_BRNG_PASTE(ORBA_CLASS_NAMESPACE, Name, entry)
#define ORBA_BRNG_BLOCKS(Name, ...)                                                             \
  namespace orba::ORBA_CLASS_NAMESPACE {                                                        \
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
