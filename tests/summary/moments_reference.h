// Moments from their definitions, in extended precision and two passes.
#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

#include "statistics/summary/moments_plan.h"

namespace orba::test {

// A number and the size of what it is made of: computing it well errs by a few epsilons of that.
struct Expected {
  long double value;
  long double size;
};

class MomentsReference {
 public:
  using Number = long double;

  // Observations data[j][i]; without weights all are 1. Central results are around `centres`, or
  // where there are none around the means; `fast` says that they come out of raw moments.
  template <class Real>
  MomentsReference(const std::vector<std::vector<Real>>& data, const std::vector<Real>& weights,
                   const std::vector<Real>& centres, bool fast)
      : p_(data.size()), fast_(fast), user_(!centres.empty()) {
    const size_t n = data[0].size();
    const auto weight = [&](size_t i) { return weights.empty() ? Number(1) : weights[i]; };
    for (size_t i = 0; i < n; ++i) {
      w += weight(i);
      v += weight(i) * weight(i);
    }
    variables_.resize(p_);
    for (size_t j = 0; j < p_; ++j) {
      Variable& x = variables_[j];
      for (size_t i = 0; i < n; ++i) add(x.raw, data[j][i], weight(i));
      x.base = centres.empty() ? data[j][n - 1] : centres[j];
      if (centres.empty()) {
        for (size_t i = 0; i < n; ++i) x.offset += weight(i) * (data[j][i] - x.base) / w;
      }
      for (size_t i = 0; i < n; ++i) add(x.central, x.deviation(data[j][i]), weight(i));
    }
    products_.resize(p_ * p_);
    for (size_t j = 0; j < p_; ++j) {
      for (size_t k = 0; k <= j; ++k) {
        Number sum = 0;
        for (size_t i = 0; i < n; ++i) {
          sum +=
              weight(i) * variables_[j].deviation(data[j][i]) * variables_[k].deviation(data[k][i]);
        }
        products_[j * p_ + k] = products_[k * p_ + j] = sum;
      }
    }
  }

  // Of variable j; of matrices row j and column k.
  Expected of(uint32_t result, size_t j, size_t k) const {
    using namespace orba::statistics;
    switch (result) {
      case kMean:
      case kRawMoment2:
      case kRawMoment3:
      case kRawMoment4:
        return scaled(variables_[j].raw[result - kMean + 1], 1 / w);
      case kSum:
      case kRawSum2:
      case kRawSum3:
      case kRawSum4:
        return variables_[j].raw[result - kSum + 1];
      case kCentralMoment2:
      case kCentralMoment3:
      case kCentralMoment4:
        return moment(j, result - kCentralMoment2 + 2);
      case kCentralSum2:
      case kCentralSum3:
      case kCentralSum4:
        return central(j, result - kCentralSum2 + 2);
      case kKurtosis: {
        const Expected c2 = moment(j, 2), c4 = moment(j, 4);
        const Number ratio = c4.value / (c2.value * c2.value);
        return {ratio - 3, ratio * (c4.size / c4.value + 2 * c2.size / c2.value)};
      }
      case kSkewness: {
        const Expected c2 = moment(j, 2), c3 = moment(j, 3);
        const Number unit = std::sqrt(c2.value * c2.value * c2.value);
        return {c3.value / unit,
                c3.size / unit + 1.5L * std::abs(c3.value) / unit * c2.size / c2.value};
      }
      case kVariation: {
        const Number centre = variables_[j].base;
        const Expected c2 = moment(j, 2),
                       m = user_ ? Expected{centre, std::abs(centre)} : of(kMean, j, j);
        const Number ratio = std::abs(std::sqrt(c2.value) / m.value);
        return {std::sqrt(c2.value) / m.value,
                ratio * (c2.size / c2.value + m.size / std::abs(m.value))};
      }
      case kCrossProduct:
        return product(j, k);
      case kCovariance:
        return scaled(product(j, k), 1 / (w - v / w));
      default: {  // kCorrelation, which has variances on the diagonal
        if (j == k) return of(kCovariance, j, k);
        const Number jj = product(j, j).value, kk = product(k, k).value, unit = std::sqrt(jj * kk);
        const Number value = product(j, k).value / unit;
        return {value, product(j, k).size / unit +
                           std::abs(value) * (product(j, j).size / jj + product(k, k).size / kk)};
      }
    }
  }

  Number w = 0, v = 0;

 private:
  struct Variable {
    Expected raw[5] = {}, central[5] = {};  // sums of powers
    Number base = 0, offset = 0;            // their sum is the centre, more exactly than a number

    Number deviation(Number x) const { return (x - base) - offset; }
  };

  static Expected scaled(Expected x, Number factor) {
    return {x.value * factor, x.size * std::abs(factor)};
  }
  static void add(Expected (&sums)[5], Number x, Number weight) {
    Number power = weight;
    for (int k = 1; k <= 4; ++k) {
      power *= x;
      sums[k].value += power;
      sums[k].size += std::abs(power);
    }
  }
  Expected central(size_t j, uint32_t k) const {
    const Variable& x = variables_[j];
    // The coefficients of the raw moments add up to less than 2^k.
    return {x.central[k].value, fast_ ? x.raw[k].size * (1 << k) : x.central[k].size};
  }
  Expected moment(size_t j, uint32_t k) const {
    return scaled(central(j, k), k == 2 ? w / (w * w - v) : 1 / w);
  }
  Expected product(size_t j, size_t k) const {
    return {products_[j * p_ + k], std::sqrt(central(j, 2).size * central(k, 2).size)};
  }

  size_t p_;
  bool fast_, user_;
  std::vector<Variable> variables_;
  std::vector<Number> products_;
};

}  // namespace orba::test
