// Results of the moments driver: the caller's arrays, and how states of a sweep turn into them.
#pragma once

#include <stdint.h>

#include "statistics/summary/moments_parts.h"
#include "statistics/summary/task.h"

namespace orba::statistics::summary {

// Sum of the weights and of their squares. Second central moments and covariances are sums over
// w - v/w, without weights n - 1; with a single observation that is 0, and so is the sum.
template <class Real>
struct Weight {
  Real w, v;

  Real degrees() const noexcept { return w - v / w; }
  Real moment_2_factor() const noexcept { return w / (w * w - v); }
  Real covariance_factor() const noexcept { return w > 0 ? 1 / degrees() : 1; }
};

// Arrays of a task for the results of a plan; null for those that are not needed. Orders k: 1 is
// the mean or the sum.
template <class Real>
class ResultArrays {
 public:
  ResultArrays(const SsTask& task, const MomentsPlan& plan) : task_(task), plan_(plan) {}

  Real* of(MomentsResult result) const noexcept {
    return plan_.needs(result) ? attached(result) : nullptr;
  }
  Real* raw(int k) const noexcept { return of(raw_result(kMean, k)); }
  Real* raw_sum(int k) const noexcept { return of(raw_result(kSum, k)); }
  Real* central(int k) const noexcept { return of(central_result(kCentralMoment2, k)); }
  Real* central_sum(int k) const noexcept { return of(central_result(kCentralSum2, k)); }

  // Needed or not.
  Real* attached(MomentsResult result) const noexcept {
    return static_cast<Real*>(task_.*kArrays[result]);
  }
  Real* attached_raw_sum(int k) const noexcept { return attached(raw_result(kSum, k)); }
  Real* attached_central_sum(int k) const noexcept {
    return attached(central_result(kCentralSum2, k));
  }

 private:
  static MomentsResult raw_result(MomentsResult first, int k) noexcept {
    return static_cast<MomentsResult>(first + static_cast<uint32_t>(k) - 1);
  }
  static MomentsResult central_result(MomentsResult second, int k) noexcept {
    return static_cast<MomentsResult>(second + static_cast<uint32_t>(k) - 2);
  }
  static constexpr void* SsTask::*kArrays[kMomentsResultCount] = {
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

  const SsTask& task_;
  const MomentsPlan& plan_;
};

inline bool needs_product(const MomentsPlan& plan) noexcept {
  return plan.needs(kCovariance) || plan.needs(kCorrelation) || plan.needs(kCrossProduct);
}

// True when the caller's covariance can serve as working memory for products.
bool product_in_place(const SsTask& task, const MomentsPlan& plan) noexcept;

// Writes moments, sums and their ratios of the selected variables. Averages of x - pivot are means
// but for kFast.
template <class Real>
void write_moments(const SsTask& task, const MomentsPlan& plan, const MomentsPart<Real>& part,
                   const Real* pivot) noexcept;

// The sums of products that the caller's matrices hold after an earlier call; those of variables
// left out are 0.
template <class Real>
void read_product(const SsTask& task, const MomentsPlan& plan, const Weight<Real>& weight,
                  Real* product) noexcept;

// Writes the matrices; `product` may be the caller's covariance. `scratch` is for p numbers.
template <class Real>
void write_matrices(const SsTask& task, const MomentsPlan& plan, const Weight<Real>& weight,
                    const Real* product, Real* scratch) noexcept;

// The methods without observations: moments from sums, covariances from a cross-product.
template <class Real>
int32_t convert(const SsTask& task, const MomentsPlan& plan) noexcept;

}  // namespace orba::statistics::summary
