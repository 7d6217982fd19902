#pragma once

#include <x86intrin.h>

#include <chrono>
#include <cstdint>

namespace orba::bench {

// Ticks of the time-stamp counter per second.
inline double tsc_frequency() {
  using Clock = std::chrono::steady_clock;
  const auto begin = Clock::now();
  const uint64_t first = __rdtsc();
  while (Clock::now() - begin < std::chrono::milliseconds(50)) {
  }
  const uint64_t ticks = __rdtsc() - first;
  return static_cast<double>(ticks) / std::chrono::duration<double>(Clock::now() - begin).count();
}

}  // namespace orba::bench
