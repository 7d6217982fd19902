// What the moments driver and its kernels hand each other.
//
// Moments are kept as (weight, mean, central sums) and merged by the pairwise formulas of T. F.
// Chan, G. H. Golub and R. J. LeVeque (The American Statistician 37, 1983) and P. P. Pebay (Sandia
// report SAND2008-6212): blocks of observations into a part, parts of a fork into one another, and
// the results of earlier calls with new ones are one and the same operation.
#pragma once

#include <stdint.h>

#include "statistics/summary/moments_plan.h"

namespace orba::statistics {

// A type that holds fourth powers of a type's numbers, and sums and products of them with weights.
template <class Real>
struct WiderThan;
template <>
struct WiderThan<float> {
  using Type = double;
};
template <>
struct WiderThan<double> {
  using Type = long double;
};
template <class Real>
using Wide = typename WiderThan<Real>::Type;

// What is kept of each variable, beside its mean, under one of the three methods over observations.
struct MomentsOrders {
  MomentsMethod method;
  int raw;      // highest raw moment, 1 for none
  int central;  // highest central sum, 1 for none
  bool product;
};

// State of a range of observations. The method says what is kept: all of it around the mean
// (kOnePass), means and raw moments alone, and the product around the mean (kFast), central sums
// and product around the caller's means (kUserMean). While a range is swept, means and raw moments
// of kFast and kUserMean are sums.
template <class Real>
struct MomentsPart {
  Real weight;
  Real squared_weight;
  Real* mean;        // averages of x - pivot; kFast: of x
  Real* raw[3];      // averages of x^2, x^3, x^4; null where not kept
  Real* central[3];  // sums of (x - mean)^2, ^3, ^4; null where not kept
  Real* product;     // p x p sums of (x_j - mean_j)(x_k - mean_k), row by row, used for k <= j

  // All but the weights, for p variables.
  void clear(int64_t p) const noexcept {
    const auto clear = [](Real* x, int64_t count) {
      for (int64_t i = 0; x != nullptr && i < count; ++i) x[i] = 0;
    };
    clear(mean, p);
    for (Real* x : raw) clear(x, p);
    for (Real* x : central) clear(x, p);
    clear(product, p * p);
  }
};

// Consecutive observations.
template <class Real>
struct MomentsBlock {
  const Real* x;        // element (variable j, observation i) at j*leading + i or i*leading + j
  const Real* weights;  // null for none
  int64_t leading;
  bool rows;
  int64_t observations;
  int64_t first, last;  // variables to deal with
  const Real* pivot;    // a number near each variable; its mean under kUserMean
  Real weight;
  Real squared_weight;
};

// Memory of a thread for the sums of one block, and what a matrix needs to know of it.
template <class Real>
struct MomentsWork {
  Real* sums;        // of power k at sums + (k - 1)*stride
  int64_t stride;    // at least p
  Real* centre;      // kOnePass: the block is summed around these
  Real* residual;    // kOnePass: its mean less the centre
  Real* difference;  // means of what was added less those of what it was added to
};

}  // namespace orba::statistics
