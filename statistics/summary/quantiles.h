// Exact quantiles: sorting and selection on the running class, and the definition of a quantile.
#pragma once

#include <algorithm>

#include "statistics/summary/sort.h"

namespace orba::statistics::summary {

template <class Real>
void sort(Real* x, int64_t n, Real* scratch) noexcept {
  const auto number = static_cast<size_t>(running_class());
  if constexpr (sizeof(Real) == sizeof(double)) {
    ss_d_sort_kernels[number](x, n, scratch);
  } else {
    ss_s_sort_kernels[number](x, n, scratch);
  }
}

template <class Real>
void order_statistics_at(Real* x, int64_t n, const int64_t* ranks, int64_t count,
                         Real* scratch) noexcept {
  const auto number = static_cast<size_t>(running_class());
  if constexpr (sizeof(Real) == sizeof(double)) {
    ss_d_order_statistics_at_kernels[number](x, n, ranks, count, scratch);
  } else {
    ss_s_order_statistics_at_kernels[number](x, n, ranks, count, scratch);
  }
}

// Where the quantile of an order lies among n sorted numbers: a fraction of the way from one to the
// next. Linear interpolation of the empirical distribution, definition 7 of R. J. Hyndman and Y.
// Fan, Sample quantiles in statistical packages, American Statistician 50 (1996). Ranks are
// computed in double for either type: a float holds whole numbers up to 2^24 only.
struct QuantilePlace {
  int64_t below, above;  // equal when there is nothing between
  double fraction;       // NaN for an order that is none

  QuantilePlace(double order, int64_t n) noexcept {
    const double place = order * static_cast<double>(n - 1);
    below = place >= 0 ? std::min(static_cast<int64_t>(place), n - 1) : 0;
    fraction = place - static_cast<double>(below);
    above = fraction > 0 ? std::min(below + 1, n - 1) : below;
  }

  template <class Real>
  Real value(const Real* x) const noexcept {
    if (fraction == 0) return x[below];
    return static_cast<Real>((1 - fraction) * x[below] + fraction * x[above]);
  }
};

// The median of n numbers, which are permuted.
template <class Real>
Real median(Real* x, int64_t n, Real* scratch) noexcept {
  const QuantilePlace place(0.5, n);
  const int64_t ranks[] = {place.below, place.above};
  order_statistics_at(x, n, ranks, 2, scratch);
  return place.value(x);
}

}  // namespace orba::statistics::summary
