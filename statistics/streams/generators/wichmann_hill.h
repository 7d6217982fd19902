// The Wichmann-Hill generators: four multiplicative generators x(n+1) = a x(n) mod m, the output
// their sum x/m modulo 1. B. A. Wichmann and I. D. Hill, "Generating good pseudo-random numbers",
// Computational Statistics & Data Analysis 51 (2006), has the construction; each of the 273 has
// primes and multipliers of its own.
#pragma once

#include "statistics/streams/kernel_hooks.h"
#include "statistics/streams/stream_state.h"

namespace orba::statistics {

struct WichmannHillState : StreamState {
  uint32_t x[4];  // the next output, 1 to m - 1
  uint32_t a[4];  // the multipliers, changed by leapfrog
};

}  // namespace orba::statistics
