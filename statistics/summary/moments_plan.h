// The plan of a moments call: which arrays it needs for what it is asked, and whether the task has
// them.
#pragma once

#include <stdint.h>

#include "statistics/summary/task.h"

namespace orba::statistics {

// Results of the moments driver. Moments and sums of a kind follow each other by their orders.
enum MomentsResult : uint32_t {
  kMean,
  kRawMoment2,
  kRawMoment3,
  kRawMoment4,
  kCentralMoment2,
  kCentralMoment3,
  kCentralMoment4,
  kCovariance,
  kCorrelation,
  kKurtosis,
  kSkewness,
  kVariation,
  kSum,
  kRawSum2,
  kRawSum3,
  kRawSum4,
  kCentralSum2,
  kCentralSum3,
  kCentralSum4,
  kCrossProduct,
  kMomentsResultCount
};

using ResultSet = uint32_t;
template <class... Results>
constexpr ResultSet set_of(Results... results) noexcept {
  return ((ResultSet{1} << results) | ... | 0);
}

// The task's array of each.
inline constexpr void* SsTask::*kResultArrays[kMomentsResultCount] = {
    &SsTask::mean,
    &SsTask::raw_moment_2,
    &SsTask::raw_moment_3,
    &SsTask::raw_moment_4,
    &SsTask::central_moment_2,
    &SsTask::central_moment_3,
    &SsTask::central_moment_4,
    &SsTask::covariance,
    &SsTask::correlation,
    &SsTask::kurtosis,
    &SsTask::skewness,
    &SsTask::variation,
    &SsTask::sum,
    &SsTask::raw_sum_2,
    &SsTask::raw_sum_3,
    &SsTask::raw_sum_4,
    &SsTask::central_sum_2,
    &SsTask::central_sum_3,
    &SsTask::central_sum_4,
    &SsTask::cross_product,
};

// Of a matrix; null for other results.
inline const void* SsTask::*storage_of(MomentsResult result) noexcept {
  switch (result) {
    case kCovariance:
      return &SsTask::covariance_storage;
    case kCorrelation:
      return &SsTask::correlation_storage;
    case kCrossProduct:
      return &SsTask::cross_product_storage;
    default:
      return nullptr;
  }
}

// kConversion: one of the two conversion methods or both, which are one: what is asked decides.
enum class MomentsMethod { kOnePass, kFast, kUserMean, kConversion };

struct MomentsPlan {
  MomentsMethod method;
  ResultSet needed;  // what the estimate mask names and what that is made of: the task has arrays
  int64_t p;
  int64_t n;  // under kConversion: only without accumulated weights, else 0
  bool rows;  // element (variable j, observation i) at j*n + i, else i*p + j

  bool needs(MomentsResult result) const noexcept { return (needed & set_of(result)) != 0; }
  bool needs_product() const noexcept {
    return (needed & set_of(kCovariance, kCorrelation, kCrossProduct)) != 0;
  }
};

// Status of the driver's checks; fills the plan when it is 0. Storage addresses of needed matrices
// are checked too. The task's dimension has to be there.
int32_t validate_moments(const SsTask& task, uint64_t estimates, uint32_t method,
                         MomentsPlan* plan) noexcept;

}  // namespace orba::statistics
