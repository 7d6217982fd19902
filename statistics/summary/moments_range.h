// Moments whose sums leave the range of their type though they themselves do not: fourth powers of
// large numbers, squares of tiny ones, sums with heavy or light weights.
//
// A sweep does not look for that on its way. Its state tells when it has ended: what overflowed is
// infinite or NaN, and where a sum of even powers is so small that its terms may have been
// denormal, digits may be missing. The variables in question are then swept again in Wide<Real>,
// whose range no such sum can leave.
#pragma once

#include <stdint.h>

#include "statistics/summary/moments_results.h"
#include "statistics/summary/scratch.h"

namespace orba::statistics::summary {

// A sweep that has ended, with the caller's arrays still as they were.
template <class Real>
struct EndedSweep {
  const SsTask& task;
  const MomentsPlan& plan;
  const MomentsOrders& orders;
  const Real* pivot;
  const MomentsPart<Real>& part;
};

// Whether a sweep may have left the range, in its weights or in the sums of a selected variable.
template <class Real>
class RangeCheck {
 public:
  explicit RangeCheck(const EndedSweep<Real>& sweep) noexcept;

  bool any() const noexcept;
  bool weights() const noexcept;
  bool variable(int64_t j) const noexcept { return vectors(j, j + 1) || products(j, j + 1); }
  // Of the first to before the last variable: in moments, and in sums of products.
  bool vectors(int64_t first, int64_t last) const noexcept;
  bool products(int64_t first, int64_t last) const noexcept;
  // Also used for means by themselves.
  bool needs_mean() const noexcept { return needs_mean_; }

 private:
  bool squares_lost(const Real* x, Real factor, int64_t count, int64_t stride) const noexcept;

  const EndedSweep<Real>& sweep_;
  bool needs_mean_, needs_degrees_;
  Real least_;  // sums from there on have lost no digits
  Real most_;   // up to there results of sums do not overflow
};

template <class Real>
class WideSweep {
 public:
  using Number = Wide<Real>;

  explicit WideSweep(const EndedSweep<Real>& sweep) noexcept;

  // Sweeps again what is in question and can be helped; the rest keeps its state. `changed` tells
  // whether there was anything of the kind. A status.
  int32_t run(bool* changed) noexcept;
  const MomentsPart<Number>& part() const noexcept { return part_; }
  Number* scratch() const noexcept { return scratch_; }  // p numbers

 private:
  // Of a variable's observations from the first with weight on.
  struct Extent {
    bool finite;
    Real least, greatest;
  };

  bool nothing_differs() const noexcept;
  bool take_vectors() noexcept;
  bool choose() noexcept;
  bool can_be_helped(int64_t j, bool weights) const noexcept;
  bool known_before(int64_t j) const noexcept;
  Extent extent_of(int64_t j) const noexcept;
  void add(int64_t i) noexcept;
  void add_products(int64_t j, Number factor) noexcept;
  void keep_others() noexcept;

  Real x(int64_t i, int64_t j) const noexcept {
    const MomentsPlan& plan = sweep_.plan;
    return static_cast<const Real*>(
        sweep_.task.observations)[plan.rows ? j * plan.n + i : i * plan.p + j];
  }
  Number pivot(int64_t j) const noexcept {
    return sweep_.orders.method == MomentsMethod::kFast ? 0 : sweep_.pivot[j];
  }

  const EndedSweep<Real>& sweep_;
  const RangeCheck<Real> check_;
  const Real* const weights_;
  int64_t first_ = 0;  // observation with weight
  Scratch<Number> vectors_, product_;
  Scratch<char> chosen_;  // for each variable
  MomentsPart<Number> part_ = {};
  Number* scratch_ = nullptr;  // also the distances of an observation from the means
};

}  // namespace orba::statistics::summary
