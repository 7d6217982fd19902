#include "services/threads/policy.h"

#include <algorithm>

namespace orba::services {

int32_t count_threads(Domain domain, const ThreadSettings& settings, int32_t cores,
                      const OpenMpQueries& openmp) noexcept {
  const bool dynamic = settings.dynamic != 0;
  if (dynamic && openmp.in_parallel()) return 1;

  int32_t threads = settings.count[static_cast<int>(domain)];
  if (threads <= 0) threads = settings.count[static_cast<int>(Domain::all)];
  const bool requested = threads > 0;
  if (!requested) threads = openmp.max_threads();
  if (!dynamic) return threads;

  threads = std::min(threads, cores);
  if (settings.processes_per_node < 0 || requested || settings.openmp_count > 0) return threads;
  // Processes of an MPI job share the node; those that never announced threads get none.
  if (settings.mpi_thread_level < 1) return 1;
  return std::max(std::min(threads, cores / settings.processes_per_node), 1);
}

float balance_factor(const platform::ProcessorCounts& processors) noexcept {
  // Cost of a pair of processors, by how close they are, in the unit of the cost hints. Two
  // hardware threads of one core are the dearest: they share the units that they would both keep
  // busy.
  constexpr float kOnDifferentNodes = 9000.0f;
  constexpr float kOnOneNode = 60000.0f;
  constexpr float kOnOneCore = 500000.0f;

  const int32_t logical = processors.logical;
  if (logical == 1) return 0.0f;
  const int32_t nodes = processors.nodes;
  const int32_t cores_per_node = processors.cores / nodes;
  const int32_t per_core = logical / (nodes * cores_per_node);
  const int32_t per_node = logical / nodes;

  // Of the other processors, the share at each distance.
  const double others = logical - 1;
  const double far = per_node * (nodes - 1) / others;
  const double near = (cores_per_node - 1) * per_core / others;
  const double same = (per_core - 1) / others;
  return 2.0f / (static_cast<float>(far) * kOnDifferentNodes +
                 static_cast<float>(near) * kOnOneNode + static_cast<float>(same) * kOnOneCore);
}

int32_t balance(int32_t threads, int32_t n, float hint, float factor) noexcept {
  const float busy = hint * static_cast<float>(n) * factor;
  if (busy >= static_cast<float>(threads)) return threads;
  return std::max(static_cast<int32_t>(busy), 1);
}

}  // namespace orba::services
