// Results of the moments driver: the caller's arrays, and how states of a sweep turn into them.
//
// Number is what a state is kept in: the caller's type Real, or Wide<Real>.
#pragma once

#include <stdint.h>

#include <limits>
#include <type_traits>

#include "statistics/summary/moments_parts.h"
#include "statistics/summary/symmetric_matrix.h"
#include "statistics/summary/task.h"

namespace orba::statistics::summary {

// Sum of the weights and of their squares.
template <class Real, class Number = Real>
struct Weight {
  Number w, v;

  // Second central moments and covariances are sums over w - v/w, without weights n - 1. A single
  // observation leaves 0; in a wider type so does what is no more than the rounding of w and v.
  Number degrees() const noexcept {
    constexpr Number slack =
        std::is_same_v<Real, Number> ? 0 : Number(std::numeric_limits<Real>::epsilon());
    const Number square = w * w, rest = square - v;
    return rest > slack * square || rest < -slack * square ? rest / w : rest - rest;
  }
  Number covariance_factor() const noexcept { return w > 0 ? 1 / degrees() : 1; }
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
  Real* raw(int k) const noexcept { return of(order(kMean, k - 1)); }
  Real* raw_sum(int k) const noexcept { return of(order(kSum, k - 1)); }
  Real* central(int k) const noexcept { return of(order(kCentralMoment2, k - 2)); }
  Real* central_sum(int k) const noexcept { return of(order(kCentralSum2, k - 2)); }

  // Needed or not.
  Real* attached_raw_sum(int k) const noexcept { return attached(order(kSum, k - 1)); }
  Real* attached_central_sum(int k) const noexcept { return attached(order(kCentralSum2, k - 2)); }

 private:
  Real* attached(MomentsResult result) const noexcept {
    return static_cast<Real*>(task_.*kResultArrays[result]);
  }
  static MomentsResult order(MomentsResult lowest, int above) noexcept {
    return static_cast<MomentsResult>(lowest + static_cast<uint32_t>(above));
  }

  const SsTask& task_;
  const MomentsPlan& plan_;
};

template <class Real>
SymmetricMatrix<Real> matrix_of(const SsTask& task, MomentsResult result, int64_t p) noexcept {
  const int64_t code = task.integer(task.*storage_of(result));
  return {task.*kResultArrays[result], matrix_storage(code), p};
}

// Writes moments, sums and their ratios of the selected variables. Averages of x - pivot are means
// but for kFast.
template <class Real, class Number>
void write_moments(const SsTask& task, const MomentsPlan& plan, const MomentsPart<Number>& part,
                   const Real* pivot) noexcept;

// Writes the matrices from sums of products. `scratch` is for p numbers.
template <class Real, class Number>
void write_matrices(const SsTask& task, const MomentsPlan& plan, const Weight<Real, Number>& weight,
                    const Number* product, Number* scratch) noexcept;

// The methods without observations: moments from sums, covariances from a cross-product.
template <class Real>
int32_t convert(const SsTask& task, const MomentsPlan& plan) noexcept;

}  // namespace orba::statistics::summary
