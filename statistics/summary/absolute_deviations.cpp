// Median and mean absolute deviations, about the variable's median and mean.
#include <cmath>

#include "statistics/summary/observations.h"
#include "statistics/summary/quantiles.h"
#include "statistics/summary/task.h"

namespace orba::statistics {
namespace {

template <class Real>
Real median_absolute_deviation(const Observations<Real>& data, int64_t j, Real* row) noexcept {
  Real* scratch = row + data.n;
  data.copy(j, row);
  const Real center = summary::median(row, data.n, scratch);
  for (int64_t i = 0; i < data.n; ++i) row[i] = std::abs(row[i] - center);
  return summary::median(row, data.n, scratch);
}

// The mean of n numbers with the weights of the task.
template <class Real>
int32_t mean_of(const Real* x, int64_t n, void* weights, Real* mean) noexcept {
  const int64_t one = 1, rows = RAU_SS_MATRIX_STORAGE_ROWS;
  SsTask single = {};
  single.integer_width = 1;
  single.dimension = &one;
  single.observation_count = &n;
  single.observations = const_cast<Real*>(x);
  single.observation_storage = &rows;
  single.weights = weights;
  single.mean = mean;
  return compute_moments<Real>(single, RAU_SS_MEAN, RAU_SS_METHOD_FAST);
}

template <class Real>
int32_t mean_absolute_deviation(const SsTask& task, const Observations<Real>& data, int64_t j,
                                Real* row, Real* result) noexcept {
  data.copy(j, row);
  Real center;
  if (task.mean != nullptr) {
    center = static_cast<const Real*>(task.mean)[j];
  } else if (const int32_t status = mean_of(row, data.n, task.weights, &center); status < 0) {
    return status;
  }
  for (int64_t i = 0; i < data.n; ++i) row[i] = std::abs(row[i] - center);
  return mean_of(row, data.n, task.weights, result);
}

}  // namespace

template <class Real>
int32_t compute_absolute_deviations(SsTask& task, uint64_t estimates, uint32_t method) noexcept {
  Observations<Real> data;
  if (const int32_t bad = read_observations(task, &data)) return bad;
  auto* medians = static_cast<Real*>(task.median_absolute_deviation);
  auto* means = static_cast<Real*>(task.mean_absolute_deviation);
  const bool median_asked = (estimates & RAU_SS_MDAD) != 0;
  const bool mean_asked = (estimates & RAU_SS_MNAD) != 0;
  const bool fast = (method & RAU_SS_METHOD_FAST) != 0;
  if (median_asked && medians == nullptr) return RAU_SS_ERROR_BAD_MDAD;
  if (median_asked && !fast) return RAU_SS_ERROR_METHOD_NOT_SUPPORTED;
  if (mean_asked && means == nullptr) return RAU_SS_ERROR_BAD_MNAD;
  if (mean_asked && !fast) return RAU_SS_ERROR_METHOD_NOT_SUPPORTED;

  const auto work = [&](int64_t j, Real* row) noexcept {
    if (median_asked) medians[j] = median_absolute_deviation(data, j, row);
    return mean_asked ? mean_absolute_deviation(task, data, j, row, means + j) : RAU_STATUS_OK;
  };
  return for_each_variable<Real>(task, data.p, (median_asked ? 2 : 1) * data.n, INT64_MAX, work);
}

template int32_t compute_absolute_deviations<float>(SsTask&, uint64_t, uint32_t) noexcept;
template int32_t compute_absolute_deviations<double>(SsTask&, uint64_t, uint32_t) noexcept;

}  // namespace orba::statistics
