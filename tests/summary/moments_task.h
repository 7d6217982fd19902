// A task with an array for every result of the moments driver, and how far these are off from their
// definitions in extended precision and two passes.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <sstream>
#include <string>

#include "statistics/summary/moments_plan.h"
#include "tests/summary/task_fixture.h"

namespace orba::test {

using namespace orba::statistics;

constexpr uint32_t kFastMethod = RAU_SS_METHOD_FAST, kOnePassMethod = RAU_SS_METHOD_1PASS,
                   kUserMeanMethod = RAU_SS_METHOD_FAST_USER_MEAN;
constexpr uint32_t kMethods[] = {kOnePassMethod, kFastMethod, kUserMeanMethod};

// A number and the size of what it is made of: computing it well errs by a few epsilons of that.
struct Expected {
  long double value, size;
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
    for (size_t j = 0; j < p_; ++j) {
      Variable& x = variables_.emplace_back();
      x.base = user_ ? centres[j] : data[j][n - 1];
      for (size_t i = 0; i < n; ++i) {
        add(x.raw, data[j][i], weight(i));
        if (!user_) x.offset += weight(i) * (data[j][i] - x.base) / w;
      }
      for (size_t i = 0; i < n; ++i) add(x.central, x.deviation(data[j][i]), weight(i));
    }
    products_.resize(p_ * p_);
    for (size_t e = 0; e < p_ * p_; ++e) {
      const size_t j = e / p_, k = e % p_;
      for (size_t i = 0; i < n; ++i) {
        products_[e] +=
            weight(i) * variables_[j].deviation(data[j][i]) * variables_[k].deviation(data[k][i]);
      }
    }
  }

  // Of variable j; of matrices row j and column k.
  Expected of(uint32_t result, size_t j, size_t k) const {
    const Variable& x = variables_[j];
    if (result <= kRawMoment4) return scaled(x.raw[result - kMean + 1], 1 / w);
    if (result <= kCentralMoment4) return moment(j, result - kCentralMoment2 + 2);
    if (result >= kSum && result <= kRawSum4) return x.raw[result - kSum + 1];
    if (result >= kCentralSum2 && result <= kCentralSum4) {
      return central(j, result - kCentralSum2 + 2);
    }
    if (result == kCrossProduct) return product(j, k);
    if (result == kCovariance || (result == kCorrelation && j == k)) {  // whose diagonal it is
      return scaled(product(j, k), 1 / (w - v / w));
    }
    // Ratios: relative errors of the parts add up.
    const auto ratio = [](Expected above, Number unit, Number others) {
      const Number value = above.value / unit;
      return Expected{value, above.size / unit + std::abs(value) * others};
    };
    if (result == kCorrelation) {
      const Expected jj = product(j, j), kk = product(k, k);
      return ratio(product(j, k), std::sqrt(jj.value * kk.value),
                   jj.size / jj.value + kk.size / kk.value);
    }
    const Expected c2 = moment(j, 2);
    const Number own = c2.size / c2.value;
    if (result == kVariation) {
      const Expected m = user_ ? Expected{x.base, std::abs(x.base)} : scaled(x.raw[1], 1 / w);
      const Number value = std::sqrt(c2.value) / m.value;
      return {value, std::abs(value) * (own + m.size / std::abs(m.value))};
    }
    if (result == kSkewness) return ratio(moment(j, 3), c2.value * std::sqrt(c2.value), 1.5L * own);
    const Expected kurtosis = ratio(moment(j, 4), c2.value * c2.value, 2 * own);
    return {kurtosis.value - 3, kurtosis.size};
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

// By MomentsResult.
struct Row {
  const char* name;
  uint64_t estimate;
  int32_t id, storage_id;  // storage: of matrices
  int32_t missing;         // status without the array
  // Sets of the arrays, bit by bit in this order, that the methods require.
  uint32_t one_pass, fast, conversion;
};
constexpr uint32_t kNever = 0x100000;
constexpr Row kRows[] = {
    {"mean", 0x1, 7, 0, -4006, 0x1, 0x1, 0x1001},
    {"2R", 0x2, 8, 0, -4007, 0x2, 0x2, 0x2002},
    {"3R", 0x4, 9, 0, -4008, 0x4, 0x4, 0x4004},
    {"4R", 0x8, 10, 0, -4009, 0x8, 0x8, 0x8008},
    {"2C", 0x10, 11, 0, -4010, 0x13, 0x13, 0x10010},
    {"3C", 0x20, 12, 0, -4011, 0x27, 0x27, 0x20020},
    {"4C", 0x40, 13, 0, -4012, 0x4F, 0x4F, 0x40040},
    {"covariance", 0x1000, 19, 20, -4018, 0x81, 0x81, 0x80080},
    {"correlation", 0x2000, 21, 22, -4019, 0x101, 0x101, 0x80100},
    {"kurtosis", 0x80, 14, 0, -4013, 0x25F, 0x25F, 0x251},
    {"skewness", 0x100, 15, 0, -4014, 0x437, 0x437, 0x431},
    {"variation", 0x200, 18, 0, -4017, 0x813, 0x813, 0x811},
    {"sum", 0x2000000, 67, 0, -4074, 0x1000, 0x1000, kNever},
    {"2R sum", 0x4000000, 68, 0, -4075, 0x2000, 0x2000, kNever},
    {"3R sum", 0x8000000, 69, 0, -4076, 0x4000, 0x4000, kNever},
    {"4R sum", 0x10000000, 70, 0, -4077, 0x8000, 0x8000, kNever},
    {"2C sum", 0x20000000, 71, 0, -4078, 0x10001, 0x10003, kNever},
    {"3C sum", 0x40000000, 72, 0, -4079, 0x20001, 0x20007, kNever},
    {"4C sum", 0x80000000, 73, 0, -4080, 0x40001, 0x4000F, kNever},
    {"cross-product", 0x100000000, 74, 75, -4081, 0x80001, 0x80001, kNever},
};
static_assert(std::size(kRows) == kMomentsResultCount);

constexpr uint64_t kEverything = 0x1FE0033FF, kMatrices = RAU_SS_COV | RAU_SS_COR | RAU_SS_CP,
                   kVectors = kEverything & ~kMatrices;

template <class Real>
using Data = std::vector<std::vector<Real>>;

inline uint32_t required(const Row& row, uint32_t method) {
  if (method == kFastMethod) return row.fast;
  return method == kOnePassMethod || method == kUserMeanMethod ? row.one_pass : row.conversion;
}

// Every result that a call for some writes.
inline uint64_t computed_with(uint64_t estimates, uint32_t method) {
  uint64_t computed = 0;
  for (const Row& row : kRows) {
    for (uint32_t r = 0; r < kMomentsResultCount && (estimates & row.estimate) != 0; ++r) {
      if ((required(row, method) >> r & 1) != 0) computed |= kRows[r].estimate;
    }
  }
  return method == kUserMeanMethod ? computed & ~RAU_SS_MEAN : computed;
}

constexpr double kUntouched = -77;

// A task with an array for every result.
template <class Real>
struct MomentsTask : Task<Real> {
  MomentsTask(int32_t variables, bool in_rows, int32_t first_storage = 0)
      : Task<Real>(variables, 1, in_rows) {
    const auto size = static_cast<size_t>(variables);
    for (uint32_t r = 0; r < kMomentsResultCount; ++r) {
      const bool matrix = kRows[r].storage_id != 0;
      results[r].assign(matrix ? size * size : size, Real(kUntouched));
      this->edit(kRows[r].id, results[r].data());
      if (!matrix) continue;
      storages[r] = first_storage++ % 3;
      this->edit(kRows[r].storage_id, &storages[r]);
    }
  }

  // The next observations, with accumulated weights or without.
  void feed(const Data<Real>& data, const std::vector<Real>& weights, size_t first, size_t last) {
    this->n = static_cast<int32_t>(last - first);
    this->x.resize(data.size() * (last - first));
    for (int32_t j = 0; j < this->p; ++j) {
      for (int32_t i = 0; i < this->n; ++i) {
        this->at(j, i) = data[static_cast<size_t>(j)][first + static_cast<size_t>(i)];
      }
    }
    this->edit(RAU_SS_ED_OBSERV, this->x.data());
    if (weights.empty()) return;
    block_weights.assign(weights.begin() + static_cast<std::ptrdiff_t>(first),
                         weights.begin() + static_cast<std::ptrdiff_t>(last));
    this->edit(RAU_SS_ED_WEIGHTS, block_weights.data());
  }
  void accumulate() { this->edit(RAU_SS_ED_ACCUM_WEIGHT, accumulated.data()); }

  Real get(uint32_t r, size_t j, size_t k) const {
    if (kRows[r].storage_id == 0) return results[r][j];
    const size_t size = static_cast<size_t>(this->p), low = std::min(j, k), high = std::max(j, k);
    const size_t by_storage[] = {j * size + k, high * (high + 1) / 2 + low,
                                 low * size - low * (low + 1) / 2 + high};
    return results[r][by_storage[storages[r]]];
  }

  std::array<std::vector<Real>, kMomentsResultCount> results;
  std::array<int32_t, kMomentsResultCount> storages = {};
  std::array<Real, 2> accumulated = {};
  std::vector<Real> block_weights;
};

// Largest error in units of epsilon times the size of what a result is made of. Results of which
// nothing can be left, for their parts cancel, count for nothing.
template <class Real>
struct Worst {
  long double error = 0;
  std::string where = "nothing";

  void see(const MomentsTask<Real>& task, const MomentsReference& reference, uint64_t estimates,
           long double loss = 1) {
    using Limits = std::numeric_limits<Real>;
    const auto p = static_cast<size_t>(task.p);
    for (size_t e = 0; e < kMomentsResultCount * p * p; ++e) {
      const auto r = static_cast<uint32_t>(e / (p * p));
      const size_t j = e / p % p, k = e % p;
      if ((estimates & kRows[r].estimate) == 0 || (kRows[r].storage_id == 0 && j != k)) continue;
      const Real got = task.get(r, j, k);
      if (!task.selects(static_cast<int32_t>(j)) || !task.selects(static_cast<int32_t>(k))) {
        EXPECT_EQ(got, Real(kUntouched)) << kRows[r].name << " of a variable left out";
        continue;
      }
      const Expected expected = reference.of(r, j, k);
      if (ratio_without_digits(reference, r, j, k, loss)) continue;
      // Outside the range of Real there are infinities, and denormal numbers with few digits.
      const bool overflows = std::abs(expected.value) > Limits::max();
      if (overflows && got == std::copysign(Limits::infinity(), expected.value)) continue;
      const long double off = std::abs(got - expected.value);
      const long double size = std::max<long double>(expected.size, Limits::min());
      const long double units = off == 0 ? 0 : off / (size * Limits::epsilon() * loss);
      if (units <= error) continue;
      error = std::isnan(units) ? std::numeric_limits<long double>::infinity() : units;
      std::ostringstream text;
      text << kRows[r].name << " of " << j << ", " << k << ": " << got << " for " << expected.value;
      where = text.str();
    }
  }

 private:
  static bool ratio_without_digits(const MomentsReference& reference, uint32_t r, size_t j,
                                   size_t k, long double loss) {
    if (r != kKurtosis && r != kSkewness && r != kVariation && r != kCorrelation) return false;
    const auto none = [&](size_t variable) {
      const Expected variance = reference.of(kCentralMoment2, variable, variable);
      return !(variance.size * loss * std::numeric_limits<Real>::epsilon() <
               1e-3L * variance.value);
    };
    return none(j) || none(k);
  }
};

// Of observations; those from kLarge on are near the ends of the range with their fourth powers (the
// first two), with their cubes, and as they are.
enum class Shape { kRandom, kShifted, kFlat, kScaled, kLarge, kSmall, kTall, kFine, kHuge, kTiny };
// kZeros: in front, in a third of the places, and in the middle third. kHeavy, kLight: the square
// of their sum, or their squares, leave the range; kFaint: products with small numbers.
enum class WeightShape { kNone, kEqual, kZeros, kSpanning, kHeavy, kLight, kFaint };

template <class Real>
Data<Real> make_data(Shape shape, size_t p, size_t n) {
  using Limits = std::numeric_limits<Real>;
  std::mt19937 random(static_cast<unsigned>(p * 1000 + n));
  std::normal_distribution<double> normal;
  Data<Real> data(p, std::vector<Real>(n));
  const double far = is_double<Real> ? 1e9 : 1e4, scale = is_double<Real> ? 1e60 : 1e4,
               largest = Limits::max(), least = Limits::min();
  for (size_t i = 0; i < n; ++i) {
    const double common = normal(random);
    for (size_t j = 0; j < p; ++j) {
      double x = 0.6 * common + 0.8 * normal(random) + 0.1 * static_cast<double>(j);
      if (shape == Shape::kShifted) x += j % 2 == 0 ? far : -far;
      if (shape == Shape::kFlat) x = 0.1 * static_cast<double>(j + 1);
      if (shape == Shape::kScaled) x *= j % 2 == 0 ? scale : 1 / scale;
      if (shape == Shape::kLarge) x = std::tanh(x) * 0.9 * std::pow(largest, 0.25);
      if (shape == Shape::kSmall) x *= std::pow(least, 0.25);
      if (shape == Shape::kTall)
        x = std::cbrt(1.3) * std::cbrt(largest) *
            (i % 4 == 0 ? 0.01 : 1 - 0.001 * std::abs(std::tanh(x)));
      if (shape == Shape::kFine) x *= std::pow(least, 0.4);
      if (shape == Shape::kHuge) x = std::tanh(x) * 0.9 * largest;
      if (shape == Shape::kTiny) x *= 1000 * least;
      data[j][i] = static_cast<Real>(x);
    }
  }
  return data;
}

template <class Real>
std::vector<Real> make_weights(WeightShape shape, size_t n) {
  std::vector<Real> weights(shape == WeightShape::kNone ? 0 : n, Real(0.3));
  std::mt19937 random(7);
  std::uniform_real_distribution<double> uniform;
  const double heavy = is_double<Real> ? 1.5e152 : 1.5e18;
  for (size_t i = 0; i < weights.size(); ++i) {
    const double u = uniform(random);
    const bool none = i < 5 || u < 0.3 || (i >= n / 3 && i < 2 * (n / 3));
    const double faint = std::pow(std::numeric_limits<Real>::min(), 0.45);
    if (shape == WeightShape::kZeros) weights[i] = Real(none ? 0 : u);
    if (shape == WeightShape::kSpanning) weights[i] = Real(std::pow(10, 24 * u - 12));
    if (shape == WeightShape::kHeavy) weights[i] = Real((1 + u) * heavy);
    if (shape == WeightShape::kFaint) weights[i] = Real(faint);
    if (shape == WeightShape::kLight) weights[i] = Real((1 + u) / heavy / heavy);
  }
  return weights;
}

template <class Real>
std::vector<Real> means_of(const Data<Real>& data, const std::vector<Real>& weights) {
  const MomentsReference reference(data, weights, {}, false);
  std::vector<Real> means;
  for (size_t j = 0; j < data.size(); ++j) {
    means.push_back(static_cast<Real>(reference.of(kMean, j, j).value));
  }
  return means;
}

}  // namespace orba::test
