// What the environment says about threads.
#pragma once

#include <stdint.h>

namespace orba::services {

// Parts of the library that a user may give a thread count of their own.
enum class Domain { all, blas, fft, kam, solver };
inline constexpr int kDomainCount = 5;

// -1: not set.
struct ThreadSettings {
  int32_t count[kDomainCount] = {-1, -1, -1, -1, -1};  // requested threads; `all` is the default
  int32_t stripes = -1;                                // for the dense layer
  int32_t dynamic = -1;  // 1: a request is an upper bound, 0: it is taken as it stands
  int32_t openmp_count = -1;
  int32_t processes_per_node = -1;  // of the MPI job that this process belongs to
  int32_t mpi_thread_level = -1;    // MPI_THREAD_SINGLE (0) to MPI_THREAD_MULTIPLE (3)
};

// services::read_environment, or a test's made-up environment.
using EnvironmentReader = int (*)(const char* name, char* buffer, int size);

// A word that several variables can set keeps its first value.
ThreadSettings read_thread_settings(EnvironmentReader read) noexcept;

}  // namespace orba::services
