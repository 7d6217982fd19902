// Sorted observations: each variable on its own, in place when the output is the input.
#include "statistics/summary/observations.h"
#include "statistics/summary/quantiles.h"
#include "statistics/summary/task.h"

namespace orba::statistics {
namespace {

constexpr int64_t kScratchLimitOfThread = int64_t{1} << 30;  // bytes

}  // namespace

template <class Real>
int32_t compute_sorted_observations(SsTask& task, uint64_t, uint32_t method) noexcept {
  auto* results = static_cast<Real*>(task.sorted_observations);
  if (results == nullptr) return RAU_SS_ERROR_BAD_SORTED_OBSERV;
  if (task.sorted_observations_storage == nullptr) return RAU_SS_ERROR_BAD_STORAGE_ADDR;
  const int64_t storage = task.integer(task.sorted_observations_storage);
  if (results == task.observations) {
    if (task.observation_storage == nullptr || task.integer(task.observation_storage) != storage) {
      return RAU_SS_ERROR_BAD_STORAGE_ADDR;
    }
    if (task.indices != nullptr) return RAU_SS_ERROR_BAD_SORTED_OBSERV_ALIAS;
  }
  Observations<Real> data;
  if (const int32_t bad = read_observations(task, &data)) return bad;
  if (!known_storage(storage)) return RAU_SS_ERROR_STORAGE_NOT_SUPPORTED;
  if ((method & RAU_SS_METHOD_RADIX) == 0) return RAU_SS_ERROR_METHOD_NOT_SUPPORTED;

  // A contiguous output is sorted where it lies.
  const bool rows = in_rows(storage);
  const bool in_output = rows || data.p == 1;
  const auto work = [&](int64_t j, Real* scratch) noexcept {
    Real* row = in_output ? results + j * data.n : scratch + data.n;
    if (row != data.variable(j)) data.copy(j, row);
    summary::sort(row, data.n, scratch);
    if (!in_output) store_variable(row, j, results, data.p, data.n, rows);
    return RAU_STATUS_OK;
  };
  return for_each_variable<Real>(task, data.p, (in_output ? 1 : 2) * data.n,
                                 orba_rau_serv_thread_count() * kScratchLimitOfThread, work);
}

template int32_t compute_sorted_observations<float>(SsTask&, uint64_t, uint32_t) noexcept;
template int32_t compute_sorted_observations<double>(SsTask&, uint64_t, uint32_t) noexcept;

}  // namespace orba::statistics
