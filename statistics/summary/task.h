// The task of a summary-statistics computation: pointers into the caller's memory, read at each
// compute call.
#pragma once

#include <stdint.h>

#include "include/orba_rau.h"

namespace orba::statistics {

// What a driver that keeps state of its own does to it when the task is deleted.
using ReleaseHook = void (*)(SsTask& task) noexcept;

}  // namespace orba::statistics

struct SsTask {
  int32_t integer_width;  // 0: integer parameters are 32-bit, else 64-bit
  int8_t format_tag;      // 2
  int32_t is_double;      // 1 for a task made by raudSSNewTask; no driver looks at it
#define ORBA_SS_FIELD_F(field) void* field;        // floating values of the computing entry's type
#define ORBA_SS_FIELD_I(field) const void* field;  // integers, read by SsTask::integer
#define ORBA_SS_PARAMETER(id, NAME, type, field, null_code) ORBA_SS_FIELD_##type(field)
#define ORBA_SS_STREAM_QUANTILE_STATE void* stream_quantile_state;  // the task's own
#define ORBA_SS_RELEASE_HOOKS \
  int32_t release_count;      \
  orba::statistics::ReleaseHook release_hooks[1];
#include "statistics/summary/parameters.def"
#undef ORBA_SS_PARAMETER
#undef ORBA_SS_STREAM_QUANTILE_STATE
#undef ORBA_SS_RELEASE_HOOKS
#undef ORBA_SS_FIELD_F
#undef ORBA_SS_FIELD_I
  void* saved_mean;  // the task's own: what the moments driver carries from call to call

  // Element i of an integer parameter, in the task's width.
  int64_t integer(const void* parameter, int64_t i = 0) const noexcept {
    return integer_width == 0 ? static_cast<const int32_t*>(parameter)[i]
                              : static_cast<const int64_t*>(parameter)[i];
  }
  // Whether the variable mask selects variable j.
  bool selects(int64_t j) const noexcept { return indices == nullptr || integer(indices, j) != 0; }
};

namespace orba::statistics {

// What the exported entries do. A task points to integers of 32 bits when `integer_width` is 0,
// else of 64.
int32_t new_task(SsTask** task, const void* dimension, const void* observation_count,
                 const void* observation_storage, const void* observations, const void* weights,
                 const void* indices, bool is_double, int32_t integer_width) noexcept;
int32_t delete_task(SsTask** task) noexcept;
int32_t edit_floating(SsTask* task, int32_t id, const void* address) noexcept;
int32_t edit_integer(SsTask* task, int32_t id, const void* address) noexcept;
template <class Real>
int32_t compute(SsTask* task, uint64_t estimates, uint32_t method) noexcept;

// A driver computes the estimates of its family that are in the mask; a status of orba_rau.h. Each
// is a function template over the floating type (float, double), instantiated where it is defined.
template <class Real>
using SsDriver = int32_t(SsTask& task, uint64_t estimates, uint32_t method) noexcept;

template <class Real>
int32_t compute_extremes(SsTask& task, uint64_t estimates, uint32_t method) noexcept;
template <class Real>
int32_t compute_sorted_observations(SsTask& task, uint64_t estimates, uint32_t method) noexcept;
template <class Real>
int32_t compute_moments(SsTask& task, uint64_t estimates, uint32_t method) noexcept;
template <class Real>
int32_t compute_absolute_deviations(SsTask& task, uint64_t estimates, uint32_t method) noexcept;
template <class Real>
int32_t compute_quantiles(SsTask& task, uint64_t estimates, uint32_t method) noexcept;

}  // namespace orba::statistics
