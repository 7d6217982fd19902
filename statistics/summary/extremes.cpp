// Minimum and maximum, continued from what the result arrays hold. Serial: one thread is as fast as
// memory is.
#include "statistics/summary/extremes.h"

#include "statistics/summary/observations.h"
#include "statistics/summary/task.h"

namespace orba::statistics {
namespace {

template <class Real>
struct Kernels {
  summary::ExtremesOfRow<Real>* row;
  summary::ExtremesOfColumns<Real>* columns;
};
template <class Real>
Kernels<Real> kernels() noexcept {
  const auto number = static_cast<size_t>(running_class());
  if constexpr (sizeof(Real) == sizeof(double)) {
    return {summary::ss_d_extremes_of_row_kernels[number],
            summary::ss_d_extremes_of_columns_kernels[number]};
  } else {
    return {summary::ss_s_extremes_of_row_kernels[number],
            summary::ss_s_extremes_of_columns_kernels[number]};
  }
}

}  // namespace

template <class Real>
int32_t compute_extremes(SsTask& task, uint64_t estimates, uint32_t method) noexcept {
  Observations<Real> data;
  if (const int32_t bad = read_observations(task, &data)) return bad;
  auto* minimum = static_cast<Real*>((estimates & RAU_SS_MIN) != 0 ? task.minimum : nullptr);
  auto* maximum = static_cast<Real*>((estimates & RAU_SS_MAX) != 0 ? task.maximum : nullptr);
  if ((estimates & RAU_SS_MIN) != 0 && minimum == nullptr) return RAU_SS_ERROR_BAD_MIN;
  if ((estimates & RAU_SS_MAX) != 0 && maximum == nullptr) return RAU_SS_ERROR_BAD_MAX;
  if ((method & (RAU_SS_METHOD_FAST | RAU_SS_METHOD_1PASS)) == 0) {
    return RAU_SS_ERROR_METHOD_NOT_SUPPORTED;
  }

  // The kernels make both; what is not asked for goes no further than here.
  if (data.contiguous()) {
    for (int64_t j = 0; j < data.p; ++j) {
      if (!task.selects(j)) continue;
      Real lowest = minimum != nullptr ? minimum[j] : 0;
      Real highest = maximum != nullptr ? maximum[j] : 0;
      kernels<Real>().row(data.variable(j), data.n, &lowest, &highest);
      if (minimum != nullptr) minimum[j] = lowest;
      if (maximum != nullptr) maximum[j] = highest;
    }
    return RAU_STATUS_OK;
  }
  const Scratch<Real> scratch(2 * data.p);
  if (!scratch) return RAU_SS_ERROR_MEM_FAILURE;
  Real* lowest = scratch.data();
  Real* highest = scratch.data() + data.p;
  for (int64_t j = 0; j < data.p; ++j) {
    lowest[j] = minimum != nullptr ? minimum[j] : 0;
    highest[j] = maximum != nullptr ? maximum[j] : 0;
  }
  kernels<Real>().columns(data.x, data.n, data.p, lowest, highest);
  for (int64_t j = 0; j < data.p; ++j) {
    if (!task.selects(j)) continue;
    if (minimum != nullptr) minimum[j] = lowest[j];
    if (maximum != nullptr) maximum[j] = highest[j];
  }
  return RAU_STATUS_OK;
}

template int32_t compute_extremes<float>(SsTask&, uint64_t, uint32_t) noexcept;
template int32_t compute_extremes<double>(SsTask&, uint64_t, uint32_t) noexcept;

}  // namespace orba::statistics
