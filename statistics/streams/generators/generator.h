// The contract of a generator, as far as it is the same code on every class: seeding and
// repositioning. The blocks of numbers are in kernels/generator.h.
//
// A generator is three files: NAME.h, the layout of its state (offsets are part of saved images)
// and what the other two share; NAME.cpp, a type G as below and ORBA_BRNG_INIT(Name, G);
// kernels/NAME.cpp, its blocks. G supplies
//
//   using State = ...                                              derived from StreamState
//   static int32_t seed(State&, int32_t n, const uint32_t* words)  from whatever there is
//
// and, where brngs.def says that it can,
//
//   static int32_t leapfrog(State&, uint32_t k, uint32_t nstreams)
//   static int32_t skip_ahead(State&, uint64_t n)
//   static int32_t skip_ahead_words(State&, int32_t count, const uint64_t* words)
//
// Each returns a status of orba_rau.h, and leaves the state as it was when that is negative.
//
// Of a state nothing is believed: it may be a copy from another generator. Every function takes
// any bytes for what they stand for (a residue for its least one, say), so that the sequence depends
// neither on the class nor on how it is asked for, and touches no memory outside the state.
#pragma once

#include "statistics/streams/brng.h"

namespace orba::statistics {

// The moves that G supplies.
template <class G, class State = typename G::State>
constexpr uint32_t moves_of(State* state = nullptr, const uint64_t* words = nullptr) {
  return (requires { G::leapfrog(*state, 0u, 0u); } ? uint32_t{kLeapfrog} : 0) |
         (requires { G::skip_ahead(*state, uint64_t{0}); } ? uint32_t{kSkipAhead} : 0) |
         (requires { G::skip_ahead_words(*state, 0, words); } ? uint32_t{kSkipAheadWords} : 0);
}

template <class G>
int32_t init_stream(int32_t operation, StreamState* stream, int32_t count, const void* params) {
  auto& state = *static_cast<typename G::State*>(stream);
  switch (operation) {
    case kSeedStream:
      return G::seed(state, count, static_cast<const uint32_t*>(params));
    case kLeapfrogStream:
      if constexpr ((moves_of<G>() & kLeapfrog) != 0) {
        return G::leapfrog(state, *static_cast<const uint32_t*>(params),
                           static_cast<uint32_t>(count));
      }
      return RAU_ERROR_LEAPFROG_UNSUPPORTED;
    case kSkipStream:
      if constexpr ((moves_of<G>() & kSkipAhead) != 0) {
        uint64_t skip;
        __builtin_memcpy(&skip, params, sizeof skip);
        return G::skip_ahead(state, skip);
      }
      return RAU_ERROR_SKIPAHEAD_UNSUPPORTED;
    case kSkipStreamByWords:
      if constexpr ((moves_of<G>() & kSkipAheadWords) != 0) {
        return G::skip_ahead_words(state, count, static_cast<const uint64_t*>(params));
      }
      return RAU_ERROR_SKIPAHEADEX_UNSUPPORTED;
    default:
      return RAU_ERROR_BAD_OPERATION;
  }
}

// Whether G has the size and the moves that the table states.
template <int32_t size, uint32_t abilities>
struct BrngRow {
  static constexpr uint32_t kMoves = abilities & (kLeapfrog | kSkipAhead | kSkipAheadWords);
  template <class G>
  static constexpr bool kFits = (sizeof(typename G::State) == size) && (moves_of<G>() == kMoves);
};
#define ORBA_BRNG(row, Name, size, seeds, zero, word, bits, subs, abilities, uniform, blocks) \
  using Name##_row = BrngRow<size, abilities>;
#include "statistics/streams/generators/brngs.def"
#undef ORBA_BRNG

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

// Leapfrog and skip-ahead of a multiplicative generator: a state x, its multiplier a, and
// G::multiply(x, a), the step, for any two words.
template <class G, class StateType>
struct Multiplicative {
  using State = StateType;
  using Word = decltype(State::x);

  static Word power_of(Word base, uint64_t exponent) { return power(base, exponent, G::multiply); }
  static int32_t leapfrog(State& state, uint32_t k, uint32_t nstreams) {
    state.x = G::multiply(power_of(state.a, k), state.x);
    state.a = power_of(state.a, nstreams);
    return RAU_STATUS_OK;
  }
  static int32_t skip_ahead(State& state, uint64_t n) {
    state.x = G::multiply(power_of(state.a, n), state.x);
    return RAU_STATUS_OK;
  }
};

}  // namespace orba::statistics

// ORBA_BRNG_INIT(MCG31m1, Mcg31m1): the entry InitStream of a row of brngs.def, from a type G.
#define ORBA_BRNG_INIT(Name, G)                                                       \
  static_assert(orba::statistics::Name##_row::kFits<G>,                               \
                "brngs.def states another size or other moves");                      \
  extern "C" int32_t orba_##Name##_InitStream(int32_t operation, StreamState* stream, \
                                              int32_t count, const void* params) {    \
    return orba::statistics::init_stream<G>(operation, stream, count, params);        \
  }
