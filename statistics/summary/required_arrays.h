// Which arrays the moments driver needs for what it is asked, and whether the task has them.
#pragma once

#include <stdint.h>

#include "statistics/summary/task.h"

namespace orba::statistics {

// Results of the moments driver by their position in sets.
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

// kConversion: one of the two conversion methods or both, which are one: what is asked decides.
enum class MomentsMethod { kOnePass, kFast, kUserMean, kConversion };

struct MomentsPlan {
  MomentsMethod method;
  uint32_t asked;   // set of the results that the estimate mask names
  uint32_t needed;  // all of them and what they are made of: arrays that the task holds
  int64_t p;
  int64_t n;  // under kConversion: only without accumulated weights, else 0
  bool rows;  // element (variable j, observation i) at j*n + i, else i*p + j

  bool asks(MomentsResult result) const noexcept { return (asked >> result & 1) != 0; }
  bool needs(MomentsResult result) const noexcept { return (needed >> result & 1) != 0; }
};

// Status of the driver's checks; fills the plan when it is 0. Storage addresses of needed matrices
// are checked too. The task's dimension has to be there.
int32_t validate_moments(const SsTask& task, uint64_t estimates, uint32_t method,
                         MomentsPlan* plan) noexcept;

}  // namespace orba::statistics
