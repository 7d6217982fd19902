// The frame of a compute call: what all estimates need is checked, then the drivers run in a fixed
// order.
#include "statistics/summary/observations.h"
#include "statistics/summary/task.h"

namespace orba::statistics {
namespace {

constexpr uint64_t kExtremes = RAU_SS_MIN | RAU_SS_MAX;
constexpr uint64_t kMoments = RAU_SS_MEAN | RAU_SS_2R_MOM | RAU_SS_3R_MOM | RAU_SS_4R_MOM |
                              RAU_SS_2C_MOM | RAU_SS_3C_MOM | RAU_SS_4C_MOM | RAU_SS_KURTOSIS |
                              RAU_SS_SKEWNESS | RAU_SS_VARIATION | RAU_SS_COV | RAU_SS_COR |
                              RAU_SS_SUM | RAU_SS_2R_SUM | RAU_SS_3R_SUM | RAU_SS_4R_SUM |
                              RAU_SS_2C_SUM | RAU_SS_3C_SUM | RAU_SS_4C_SUM | RAU_SS_CP;
constexpr uint64_t kGroups =
    RAU_SS_POOLED_COV | RAU_SS_POOLED_MEAN | RAU_SS_GROUP_COV | RAU_SS_GROUP_MEAN;
constexpr uint64_t kPartial = RAU_SS_PARTIAL_COV | RAU_SS_PARTIAL_COR;

// Estimates that can do without observations; their drivers look for themselves.
constexpr uint64_t kWithoutObservations = kPartial | RAU_SS_PARAMTR_COR | RAU_SS_STREAM_QUANTS;

template <class Real>
int32_t not_yet(SsTask&, uint64_t, uint32_t) noexcept {
  return RAU_SS_ERROR_METHOD_NOT_SUPPORTED;
}

template <class Real>
struct Stage {
  uint64_t estimates;
  SsDriver<Real>* driver;
};

// Imputation runs alone, the others in this order.
template <class Real>
constexpr Stage<Real> kImputation = {RAU_SS_MISSING_VALS, not_yet<Real>};
template <class Real>
constexpr Stage<Real> kStages[] = {
    {kExtremes, compute_extremes<Real>},
    {RAU_SS_SORTED_OBSERV, compute_sorted_observations<Real>},
    {kMoments, compute_moments<Real>},
    {RAU_SS_MDAD | RAU_SS_MNAD, compute_absolute_deviations<Real>},
    {kGroups, not_yet<Real>},
    {RAU_SS_OUTLIERS, not_yet<Real>},
    {RAU_SS_ROBUST_COV, not_yet<Real>},
    {kPartial, not_yet<Real>},
    {RAU_SS_QUANTS | RAU_SS_ORDER_STATS, compute_quantiles<Real>},
    {RAU_SS_STREAM_QUANTS, not_yet<Real>},
    {RAU_SS_PARAMTR_COR, not_yet<Real>},
};

// Stricter about the storage code than the drivers, which look at its bits.
int32_t check_observations(const SsTask& task) noexcept {
  Observations<void> observations;
  if (const int32_t bad = read_observations(task, &observations)) return bad;
  const int64_t storage = task.integer(task.observation_storage);
  if (storage != RAU_SS_MATRIX_STORAGE_ROWS && storage != RAU_SS_MATRIX_STORAGE_COLS) {
    return RAU_SS_ERROR_STORAGE_NOT_SUPPORTED;
  }
  return RAU_STATUS_OK;
}

}  // namespace

template <class Real>
int32_t compute(SsTask* task, uint64_t estimates, uint32_t method) noexcept {
  if (task == nullptr) return RAU_SS_ERROR_NULL_TASK;
  if (task->dimension == nullptr || task->integer(task->dimension) < 1) {
    return RAU_SS_ERROR_BAD_DIMEN;
  }
  if ((estimates & kWithoutObservations) == 0) {
    if (const int32_t bad = check_observations(*task)) return bad;
  }
  if ((estimates & kImputation<Real>.estimates) != 0) {
    return kImputation<Real>.driver(*task, estimates, method);
  }
  int32_t status = RAU_STATUS_OK;
  for (const Stage<Real>& stage : kStages<Real>) {
    if ((estimates & stage.estimates) == 0) continue;
    status = stage.driver(*task, estimates, method);
    if (status < 0) break;
  }
  return status;
}

template int32_t compute<float>(SsTask*, uint64_t, uint32_t) noexcept;
template int32_t compute<double>(SsTask*, uint64_t, uint32_t) noexcept;

}  // namespace orba::statistics
