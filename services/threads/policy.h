// How many threads a call may use and how many pay off, as pure functions.
#pragma once

#include <stdint.h>

#include "services/platform/topology.h"
#include "services/threads/settings.h"

namespace orba::services {

// What the OpenMP runtime is asked, and only when the answer counts.
struct OpenMpQueries {
  bool (*in_parallel)();
  int32_t (*max_threads)();
};

int32_t count_threads(Domain domain, const ThreadSettings& settings, int32_t cores,
                      const OpenMpQueries& openmp) noexcept;

// Threads per unit of work: the reciprocal of what it costs, on average over all pairs, to keep two
// of the processors in step. 0 with a single processor.
float balance_factor(const platform::ProcessorCounts& processors) noexcept;

// Lowers a thread count to what n elements of this cost keep busy; at least 1.
int32_t balance(int32_t threads, int32_t n, float hint, float factor) noexcept;

}  // namespace orba::services
