#include "statistics/summary/moments_range.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "statistics/summary/moments_pairwise.h"
#include "statistics/summary/moments_prior.h"

namespace orba::statistics::summary {

// ---- What is in question ----

template <class Real>
RangeCheck<Real>::RangeCheck(const EndedSweep<Real>& sweep) noexcept : sweep_(sweep) {
  const MomentsPlan& plan = sweep.plan;
  // Under kUserMean means are not made, and what moves products to other means may be unknown.
  needs_mean_ = plan.method != MomentsMethod::kUserMean || plan.needs(kSum);
  needs_degrees_ = (plan.needed & set_of(kCentralMoment2, kCovariance, kCorrelation)) != 0;
  // n terms lose at most half of the least denormal number each.
  least_ = static_cast<Real>(plan.n) * std::numeric_limits<Real>::min();
  // Differences of raw moments make central ones of kFast, the third through 9/8 of its greatest term.
  most_ = std::numeric_limits<Real>::max() / 2;
}

template <class Real>
bool RangeCheck<Real>::any() const noexcept {
  if (weights()) return true;
  if (sweep_.task.indices == nullptr)
    return vectors(0, sweep_.plan.p) || products(0, sweep_.plan.p);
  for (int64_t j = 0; j < sweep_.plan.p; ++j) {
    if (sweep_.task.selects(j) && variable(j)) return true;
  }
  return false;
}

template <class Real>
bool RangeCheck<Real>::weights() const noexcept {
  const Real w = sweep_.part.weight, v = sweep_.part.squared_weight;
  if (!(w > 0)) return false;
  // Products of weights and observations that are lost must be lost in sums of squares, too.
  if (!(w >= 0x1p64f * least_ && std::isfinite(w))) return true;
  return needs_degrees_ && !(v >= least_ && std::isfinite(v) && std::isfinite(w * w));
}

// Whether any of so many averages of squares, or of fourth powers, is, or `factor` times it.
template <class Real>
bool RangeCheck<Real>::squares_lost(const Real* x, Real factor, int64_t count,
                                    int64_t stride) const noexcept {
  const Real least = std::max(least_ / factor, std::numeric_limits<Real>::min());
  const Real most = most_ / std::max(factor, Real(1));
  bool good = true;
  for (int64_t j = 0; j < count; ++j) {
    const Real one = x[j * stride];
    good &= (one >= least) & (one <= most);
  }
  return !good;
}

template <class Real>
bool RangeCheck<Real>::vectors(int64_t first, int64_t last) const noexcept {
  const MomentsOrders& orders = sweep_.orders;
  const MomentsPart<Real>& part = sweep_.part;
  const Real w = part.weight, least = least_, most = most_;
  if (!(w > 0)) return false;
  bool good = true;
  const auto finite = [&](const Real* x) {
    for (int64_t j = first; j < last; ++j) good &= x[j] - x[j] == 0;
  };
  const auto squares = [&](const Real* x, Real factor) {
    good &= !squares_lost(x + first, factor, last - first, 1);
  };
  // Sums of cubes may be small because they cancel; of their size those of squares tell.
  const auto cubes = [&](const Real* x) {
    for (int64_t j = first; j < last; ++j) {
      const Real one = x[j] * std::sqrt(x[j]), sum = one * w;
      good &= (sum >= least) & (sum <= most) & (one <= most);
    }
  };
  if (needs_mean_) finite(part.mean);
  if (orders.raw >= 2) squares(part.raw[0], w);
  if (orders.raw >= 3) finite(part.raw[1]);
  if (orders.raw == 3) cubes(part.raw[0]);
  if (orders.raw >= 4) squares(part.raw[2], w);
  if (orders.central >= 2) squares(part.central[0], 1);
  if (orders.central >= 3) finite(part.central[1]);
  if (orders.central >= 4) squares(part.central[2], 1);
  // A mean by itself has no squares to tell that w x was denormal.
  if (sweep_.task.weights != nullptr && orders.raw == 1 && orders.central == 1 && !orders.product) {
    const bool fast = orders.method == MomentsMethod::kFast;
    for (int64_t j = first; j < last; ++j) {
      good &= std::abs(w * (part.mean[j] + (fast ? 0 : sweep_.pivot[j]))) >= least;
    }
  }
  return !good;
}

template <class Real>
bool RangeCheck<Real>::products(int64_t first, int64_t last) const noexcept {
  const MomentsPart<Real>& part = sweep_.part;
  const int64_t next = sweep_.plan.p + 1;  // along the diagonal
  return sweep_.orders.product && part.weight > 0 &&
         squares_lost(part.product + first * next, 1, last - first, next);
}

// ---- The sweep in a wider type ----

template <class Real>
WideSweep<Real>::WideSweep(const EndedSweep<Real>& sweep) noexcept
    : sweep_(sweep), check_(sweep), weights_(static_cast<const Real*>(sweep.task.weights)) {
  while (weights_ != nullptr && first_ < sweep.plan.n && weights_[first_] == 0) ++first_;
}

template <class Real>
int32_t WideSweep<Real>::run(bool* changed) noexcept {
  const MomentsPlan& plan = sweep_.plan;
  *changed = false;
  if (nothing_differs()) return RAU_STATUS_OK;
  if (!take_vectors()) return RAU_SS_ERROR_MEM_FAILURE;
  MomentsOrders vectors = sweep_.orders;
  vectors.product = false;
  read_prior<Real>(sweep_.task, plan, vectors, sweep_.pivot, &part_);
  if (!choose()) return RAU_STATUS_OK;
  if (sweep_.orders.product) {
    int64_t square;
    if (__builtin_mul_overflow(plan.p, plan.p, &square) || !product_.take(square)) {
      return RAU_SS_ERROR_MEM_FAILURE;
    }
    part_.product = product_.data();
    read_prior<Real>(sweep_.task, plan, sweep_.orders, sweep_.pivot, &part_);
  }
  for (int64_t i = first_; i < plan.n; ++i) add(i);
  keep_others();
  *changed = true;
  return RAU_STATUS_OK;
}

// The sums of squares of a single first observation are 0 as they should be.
template <class Real>
bool WideSweep<Real>::nothing_differs() const noexcept {
  const auto* kept = static_cast<const Real*>(sweep_.task.accumulated_weight);
  const bool continues = kept != nullptr && kept[0] > 0;
  return sweep_.orders.method == MomentsMethod::kOnePass && sweep_.plan.n - first_ == 1 &&
         !continues && !check_.weights();
}

template <class Real>
bool WideSweep<Real>::take_vectors() noexcept {
  const MomentsOrders& orders = sweep_.orders;
  const int64_t p = sweep_.plan.p;
  int64_t count;
  if (__builtin_mul_overflow(p, orders.raw + orders.central, &count) || !vectors_.take(count) ||
      !chosen_.take(p)) {
    return false;
  }
  Number* next = vectors_.data();
  const auto take = [&] { return (next += p) - p; };
  scratch_ = take();
  part_.mean = take();
  for (int k = 0; k < orders.raw - 1; ++k) part_.raw[k] = take();
  for (int k = 0; k < orders.central - 1; ++k) part_.central[k] = take();
  return true;
}

template <class Real>
bool WideSweep<Real>::choose() noexcept {
  const bool all = check_.weights();
  if (all && !std::isfinite(part_.weight)) return false;
  for (int64_t i = first_; all && weights_ != nullptr && i < sweep_.plan.n; ++i) {
    if (!std::isfinite(weights_[i])) return false;
  }
  bool any = false;
  for (int64_t j = 0; j < sweep_.plan.p; ++j) {
    const bool in_question = sweep_.task.selects(j) && (all || check_.variable(j));
    chosen_.data()[j] = in_question && can_be_helped(j, all);
    any = any || chosen_.data()[j];
  }
  return any;
}

// Not where this block or an earlier one has infinities or NaN, nor where sums are 0 because
// nothing differs.
template <class Real>
bool WideSweep<Real>::can_be_helped(int64_t j, bool weights) const noexcept {
  if (!known_before(j)) return false;
  const Extent extent = extent_of(j);
  if (!extent.finite) return false;
  if (weights || extent.least != extent.greatest) return true;
  const MomentsMethod method = sweep_.orders.method;
  if (method == MomentsMethod::kUserMean) return extent.least != pivot(j);
  if (part_.weight > 0 && extent.least != part_.mean[j] + pivot(j)) return true;
  return method == MomentsMethod::kFast && extent.least != 0 && check_.vectors(j, j + 1);
}

template <class Real>
bool WideSweep<Real>::known_before(int64_t j) const noexcept {
  const MomentsOrders& orders = sweep_.orders;
  bool known = !check_.needs_mean() || std::isfinite(part_.mean[j]);
  for (int k = 0; k < orders.raw - 1; ++k) known = known && std::isfinite(part_.raw[k][j]);
  for (int k = 0; k < orders.central - 1; ++k) known = known && std::isfinite(part_.central[k][j]);
  const Weight<Real, Number> weight = {part_.weight, part_.squared_weight};
  if (!orders.product || !(weight.w > 0) || weight.degrees() == 0) return known;
  const MomentsPlan& plan = sweep_.plan;
  return known && std::isfinite(matrix_of<Real>(sweep_.task, product_source(plan), plan.p)(j, j));
}

template <class Real>
typename WideSweep<Real>::Extent WideSweep<Real>::extent_of(int64_t j) const noexcept {
  Extent extent = {true, std::numeric_limits<Real>::max(), std::numeric_limits<Real>::lowest()};
  for (int64_t i = first_; i < sweep_.plan.n && extent.finite; ++i) {
    const Real value = x(i, j);
    extent.finite = std::isfinite(value);
    extent.least = std::min(extent.least, value);
    extent.greatest = std::max(extent.greatest, value);
  }
  return extent;
}

// One observation as a part of its own.
template <class Real>
void WideSweep<Real>::add(int64_t i) noexcept {
  const MomentsOrders& orders = sweep_.orders;
  const Number w = weights_ != nullptr ? weights_[i] : Real(1);
  const Merger<Number, Number> merge(part_.weight, w);
  const bool user = orders.method == MomentsMethod::kUserMean;
  for (int64_t j = 0; j < sweep_.plan.p; ++j) {
    // Products of a chosen variable with others need the means of those.
    if (!sweep_.task.selects(j) || !(orders.product || chosen_.data()[j])) continue;
    const Number value = x(i, j), distance = value - pivot(j);
    Moments<Number> to = {part_.mean[j], {}, {}}, from = {distance, {}, {}};
    Number power = value, central = w * distance;
    for (int k = 0; k < orders.raw - 1; ++k) {
      to.raw[k] = part_.raw[k][j];
      from.raw[k] = power *= value;
    }
    for (int k = 0; k < orders.central - 1; ++k) {
      to.central[k] = part_.central[k][j];
      from.central[k] = user ? central *= distance : 0;
    }
    const Number from_mean = merge(orders, to, from);
    scratch_[j] = user ? distance : from_mean;
    part_.mean[j] = to.mean;
    for (int k = 0; k < orders.raw - 1; ++k) part_.raw[k][j] = to.raw[k];
    for (int k = 0; k < orders.central - 1; ++k) part_.central[k][j] = to.central[k];
  }
  if (orders.product) {
    for (int64_t j = 0; j < sweep_.plan.p; ++j) {
      if (sweep_.task.selects(j)) add_products(j, user ? w : merge.c2);
    }
  }
  part_.weight += w;
  part_.squared_weight += w * w;
}

// Row j of what an observation adds.
template <class Real>
void WideSweep<Real>::add_products(int64_t j, Number factor) noexcept {
  for (int64_t k = 0; k <= j; ++k) {
    if (!chosen_.data()[j] && !chosen_.data()[k]) continue;
    if (!sweep_.task.selects(k)) continue;
    part_.product[j * sweep_.plan.p + k] += factor * scratch_[j] * scratch_[k];
  }
}

template <class Real>
void WideSweep<Real>::keep_others() noexcept {
  const MomentsOrders& orders = sweep_.orders;
  const MomentsPart<Real>& narrow = sweep_.part;
  for (int64_t j = 0; j < sweep_.plan.p; ++j) {
    for (int64_t k = 0; orders.product && k <= j; ++k) {
      if (chosen_.data()[j] || chosen_.data()[k]) continue;
      part_.product[j * sweep_.plan.p + k] = narrow.product[j * sweep_.plan.p + k];
    }
    if (chosen_.data()[j]) continue;
    part_.mean[j] = narrow.mean[j];
    for (int k = 0; k < orders.raw - 1; ++k) part_.raw[k][j] = narrow.raw[k][j];
    for (int k = 0; k < orders.central - 1; ++k) part_.central[k][j] = narrow.central[k][j];
  }
}

template class RangeCheck<float>;
template class RangeCheck<double>;
template class WideSweep<float>;
template class WideSweep<double>;

}  // namespace orba::statistics::summary
