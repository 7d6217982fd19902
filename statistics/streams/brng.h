// A row of the generator table: what users see of a generator, and what the library knows beside it.
#pragma once

#include <stdint.h>

#include "statistics/streams/stream_state.h"

namespace orba::statistics {

// Operations of InitStream.
enum BrngOperation : int32_t { kSeedStream, kLeapfrogStream, kSkipStream, kSkipStreamByWords };

// What a generator can do.
enum BrngAbility : uint32_t {
  kSeeded = 1,  // made by rauNewStream and rauNewStreamEx
  kLeapfrog = 2,
  kSkipAhead = 4,
  kSkipAheadWords = 8,  // by a count of many words
  // Which blocks it has; for the others it answers RAU_ERROR_BAD_ABSTRACT_OUTPUT.
  kSingles = 16,
  kDoubles = 32,
  kIntegers = 64,
  kAllOutputs = kSingles | kDoubles | kIntegers,
};

// Where in an output of NBits the uniformly distributed bits are: nowhere, everywhere in a word of
// 32 bits, or in the upper 32 bits of a wider output.
enum class UniformBits : uint32_t { kNone, kWords, kUpperWords };

// A block of the floors of numbers in [a, b).
using FloorsEntry = int32_t(StreamState* stream, int32_t n, int32_t* r, double a, double b);

struct Brng : BrngProperties {
  FloorsEntry* floors;  // null: floors are made of doubles
  uint32_t abilities;
  UniformBits uniform_bits;
  int32_t sub_generators;  // 0 in a row without a generator
};

// A stream and the row of its generator, which a call looks up once.
struct Source {
  StreamState* stream;
  const Brng* row;
};

}  // namespace orba::statistics
