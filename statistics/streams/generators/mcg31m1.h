// MCG31m1: x(n+1) = 1132489760 x(n) mod 2^31 - 1, output x(n). The multiplier is from P. L'Ecuyer,
// "Tables of linear congruential generators of different sizes and good lattice structure",
// Mathematics of Computation 68 (1999).
#pragma once

#include "statistics/streams/stream_state.h"

namespace orba::statistics {

struct Mcg31m1State : StreamState {
  uint32_t x;  // the next output, 1 to 2^31 - 2
  uint32_t a;  // the multiplier, changed by leapfrog
};

constexpr uint32_t kMcg31m1Modulus = 0x7fffffff;

}  // namespace orba::statistics
