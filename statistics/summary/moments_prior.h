// What earlier calls left: state in the result arrays, and beside it what the task carries.
#pragma once

#include <stdint.h>

#include "services/memory.h"
#include "statistics/summary/moments_results.h"

namespace orba::statistics::summary {

// What the result arrays cannot tell the next call, kept by the task. Under kUserMean the caller's
// means and how far the true ones are from them, which moves a product to better means and stands
// for what covariances and variances of a single observation, over 0, have lost; under kOnePass
// the central sums of orders 2 and 3 that a higher one needs and nobody asked for.
//
// It belongs to the state that the call left: it is looked at only while the weights and all
// arrays that the next call continues from are at the same places and hold the same bits.
template <class Real>
class Carried {
 public:
  using Number = Wide<Real>;

  // Whether a call has to leave it.
  static bool wanted(const SsTask& task, const MomentsPlan& plan,
                     const MomentsOrders& orders) noexcept;
  // Makes room in the task; false without memory.
  static bool prepare(SsTask& task, int64_t p) noexcept;
  // Null when the task holds none that belongs.
  static const Carried* find(const SsTask& task, const MomentsPlan& plan) noexcept;
  // To be called with the results in place.
  template <class State>
  static void leave(SsTask& task, const MomentsPlan& plan, const MomentsOrders& orders,
                    const MomentsPart<State>& part, const Real* pivot) noexcept;

  const Number* central_sums(int k) const noexcept { return row(k - 2); }
  const Number* user_means() const noexcept { return row(0); }
  const Number* offsets() const noexcept { return row(1); }  // true means less those

 private:
  static constexpr int kRows = 2;

  const Number* row(int64_t i) const noexcept { return values_ + i * p_; }
  static bool fits(const SsTask& task, int64_t p) noexcept;

  int64_t p_;
  int64_t element_size_;
  MomentsMethod method_;
  Real weight_, squared_weight_;
  uint64_t marks_[kMomentsResultCount];
  alignas(128) Number values_[1];  // kRows rows of p
};

// The state that the task's arrays hold, around `pivot` as far as the method has one; zero without
// accumulated weight. Unselected variables have a zero product.
template <class Real, class Number>
void read_prior(const SsTask& task, const MomentsPlan& plan, const MomentsOrders& orders,
                const Real* pivot, MomentsPart<Number>* part) noexcept;

// Of the matrices that a plan needs, the one that products come from.
inline MomentsResult product_source(const MomentsPlan& plan) noexcept {
  return plan.needs(kCrossProduct) ? kCrossProduct
         : plan.needs(kCovariance) ? kCovariance
                                   : kCorrelation;
}

// The sums of products that it holds.
template <class Real, class Number>
void read_product(const SsTask& task, const MomentsPlan& plan, const Weight<Real, Number>& weight,
                  Number* product) noexcept;

}  // namespace orba::statistics::summary
