// A task with an array for every result of the moments driver, and how far these are off.
#pragma once

#include <algorithm>
#include <array>
#include <limits>
#include <random>
#include <string>

#include "services/threads/thread_count.h"
#include "tests/summary/moments_reference.h"
#include "tests/summary/task_fixture.h"

namespace orba::test {

using namespace orba::statistics;

constexpr uint32_t kFastMethod = RAU_SS_METHOD_FAST, kOnePassMethod = RAU_SS_METHOD_1PASS,
                   kUserMeanMethod = RAU_SS_METHOD_FAST_USER_MEAN;
constexpr uint32_t kMethods[] = {kOnePassMethod, kFastMethod, kUserMeanMethod};

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

constexpr uint64_t every_estimate() {
  uint64_t all = 0;
  for (const Row& row : kRows) all |= row.estimate;
  return all;
}
constexpr uint64_t kMatrices = RAU_SS_COV | RAU_SS_COR | RAU_SS_CP;
constexpr uint64_t kEverything = every_estimate(), kVectors = kEverything & ~kMatrices;

template <class Real>
using Data = std::vector<std::vector<Real>>;

inline uint32_t required(const Row& row, uint32_t method) {
  if (method == kFastMethod) return row.fast;
  return method == kOnePassMethod || method == kUserMeanMethod ? row.one_pass : row.conversion;
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
    const size_t size = static_cast<size_t>(this->p);
    if (kRows[r].storage_id == 0) return results[r][j];
    const size_t low = std::min(j, k), high = std::max(j, k);
    switch (storages[r]) {
      case RAU_SS_MATRIX_STORAGE_L_PACKED:
        return results[r][high * (high + 1) / 2 + low];
      case RAU_SS_MATRIX_STORAGE_U_PACKED:
        return results[r][low * size - low * (low + 1) / 2 + high];
      default:
        return results[r][j * size + k];
    }
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
    constexpr long double epsilon = std::numeric_limits<Real>::epsilon();
    const auto p = static_cast<size_t>(task.p);
    for (uint32_t r = 0; r < kMomentsResultCount; ++r) {
      if ((estimates & kRows[r].estimate) == 0) continue;
      for (size_t j = 0; j < p; ++j) {
        for (size_t k = kRows[r].storage_id != 0 ? 0 : j;
             k < (kRows[r].storage_id != 0 ? p : j + 1); ++k) {
          const Real got = task.get(r, j, k);
          if (!task.selects(static_cast<int32_t>(j)) || !task.selects(static_cast<int32_t>(k))) {
            EXPECT_EQ(got, Real(kUntouched)) << kRows[r].name << " of a variable left out";
            continue;
          }
          const Expected expected = reference.of(r, j, k);
          if (ratio_without_digits(reference, r, j, k, loss)) continue;
          // Outside the range of Real there are infinities, and denormal numbers with few digits.
          const bool overflows = std::abs(expected.value) > std::numeric_limits<Real>::max();
          const Real infinity = std::numeric_limits<Real>::infinity();
          if (overflows && got == (expected.value > 0 ? infinity : -infinity)) continue;
          const long double off = std::abs(got - expected.value);
          const long double size =
              std::max<long double>(expected.size, std::numeric_limits<Real>::min());
          const long double units = off == 0 ? 0 : off / (size * epsilon * loss);
          if (!(units <= error)) {
            error = std::isnan(units) ? std::numeric_limits<long double>::infinity() : units;
            where = std::string(kRows[r].name) + " of " + std::to_string(j) + ", " +
                    std::to_string(k) + ": " + std::to_string(static_cast<double>(got)) + " for " +
                    std::to_string(static_cast<double>(expected.value));
          }
        }
      }
    }
  }

 private:
  static bool ratio_without_digits(const MomentsReference& reference, uint32_t r, size_t j,
                                   size_t k, long double loss) {
    if (r != kKurtosis && r != kSkewness && r != kVariation && r != kCorrelation) return false;
    for (const size_t variable : {j, k}) {
      const Expected variance = reference.of(kCentralMoment2, variable, variable);
      if (!(variance.size * loss * std::numeric_limits<Real>::epsilon() < 1e-3L * variance.value)) {
        return true;
      }
    }
    return false;
  }
};

// Of observations; kLarge and kSmall to kMinute are near the ends of the range, the former two with
// fourth powers in it.
enum class Shape { kRandom, kShifted, kConstant, kScaled, kLarge, kSmall, kHuge, kMinute };
// kZeros: in front, in a third of the places, and in the middle third. kHeavy, kLight: the square
// of their sum, or their squares, leave the range.
enum class WeightShape { kNone, kEqual, kZeros, kSpanning, kHeavy, kLight };

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
      if (shape == Shape::kConstant) x = 0.1 * static_cast<double>(j + 1);
      if (shape == Shape::kScaled) x *= j % 2 == 0 ? scale : 1 / scale;
      if (shape == Shape::kLarge) x *= std::pow(largest, 0.25) / 16;
      if (shape == Shape::kSmall) x *= std::pow(least, 0.25) * 16;
      if (shape == Shape::kHuge) x = std::tanh(x) * 0.9 * largest;
      if (shape == Shape::kMinute) x *= 1000 * least;
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
    if (shape == WeightShape::kZeros) weights[i] = Real(none ? 0 : u);
    if (shape == WeightShape::kSpanning) weights[i] = Real(std::pow(10, 24 * u - 12));
    if (shape == WeightShape::kHeavy) weights[i] = Real((1 + u) * heavy);
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

// Threads of this process's calls while it lives.
struct Threads {
  explicit Threads(int32_t count) : old(orba::services::set_local_thread_count(count)) {}
  ~Threads() { orba::services::set_local_thread_count(old); }
  int32_t old;
};

}  // namespace orba::test
