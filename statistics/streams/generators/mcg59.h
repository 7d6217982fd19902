// MCG59: x(n+1) = 13^13 x(n) mod 2^59, output x(n).
#pragma once

#include "statistics/streams/stream_state.h"

namespace orba::statistics {

struct Mcg59State : StreamState {
  uint64_t x;  // the next output, below 2^59
  uint64_t a;  // the multiplier, changed by leapfrog
};

constexpr uint64_t kMcg59Mask = (uint64_t{1} << 59) - 1;

}  // namespace orba::statistics
