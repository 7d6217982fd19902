#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "serv/threads/thread_count.h"
#include "tests/ss/moments_reference.h"
#include "tests/ss/task_fixture.h"
#include "tests/support/failing_allocator.h"
#include "vs/frame/dispatch.h"
#include "vs/ss/moments.h"

namespace {

using namespace orba::test;
using namespace orba::vs;

constexpr uint32_t kFastMethod = RAU_SS_METHOD_FAST, kOnePassMethod = RAU_SS_METHOD_1PASS,
                   kUserMeanMethod = RAU_SS_METHOD_FAST_USER_MEAN;
constexpr uint32_t kMethods[] = {kOnePassMethod, kFastMethod, kUserMeanMethod};

// By MomentsResult.
struct Row {
  const char* name;
  uint64_t estimate;
  int32_t id;
  int32_t storage_id;  // of matrices
};
constexpr Row kRows[] = {
    {"mean", RAU_SS_MEAN, RAU_SS_ED_MEAN, 0},
    {"2R", RAU_SS_2R_MOM, RAU_SS_ED_2R_MOM, 0},
    {"3R", RAU_SS_3R_MOM, RAU_SS_ED_3R_MOM, 0},
    {"4R", RAU_SS_4R_MOM, RAU_SS_ED_4R_MOM, 0},
    {"2C", RAU_SS_2C_MOM, RAU_SS_ED_2C_MOM, 0},
    {"3C", RAU_SS_3C_MOM, RAU_SS_ED_3C_MOM, 0},
    {"4C", RAU_SS_4C_MOM, RAU_SS_ED_4C_MOM, 0},
    {"covariance", RAU_SS_COV, RAU_SS_ED_COV, RAU_SS_ED_COV_STORAGE},
    {"correlation", RAU_SS_COR, RAU_SS_ED_COR, RAU_SS_ED_COR_STORAGE},
    {"kurtosis", RAU_SS_KURTOSIS, RAU_SS_ED_KURTOSIS, 0},
    {"skewness", RAU_SS_SKEWNESS, RAU_SS_ED_SKEWNESS, 0},
    {"variation", RAU_SS_VARIATION, RAU_SS_ED_VARIATION, 0},
    {"sum", RAU_SS_SUM, RAU_SS_ED_SUM, 0},
    {"2R sum", RAU_SS_2R_SUM, RAU_SS_ED_2R_SUM, 0},
    {"3R sum", RAU_SS_3R_SUM, RAU_SS_ED_3R_SUM, 0},
    {"4R sum", RAU_SS_4R_SUM, RAU_SS_ED_4R_SUM, 0},
    {"2C sum", RAU_SS_2C_SUM, RAU_SS_ED_2C_SUM, 0},
    {"3C sum", RAU_SS_3C_SUM, RAU_SS_ED_3C_SUM, 0},
    {"4C sum", RAU_SS_4C_SUM, RAU_SS_ED_4C_SUM, 0},
    {"cross-product", RAU_SS_CP, RAU_SS_ED_CP, RAU_SS_ED_CP_STORAGE},
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
        for (size_t k = kRows[r].storage_id != 0 ? 0 : j; k < (kRows[r].storage_id != 0 ? p : j + 1);
             ++k) {
          const Real got = task.get(r, j, k);
          if (!task.selects(static_cast<int32_t>(j)) || !task.selects(static_cast<int32_t>(k))) {
            EXPECT_EQ(got, Real(kUntouched)) << kRows[r].name << " of a variable left out";
            continue;
          }
          const Expected expected = reference.of(r, j, k);
          if (ratio_without_digits(reference, r, j, k, loss)) continue;
          const long double off = std::abs(got - expected.value);
          const long double units = off == 0 ? 0 : off / (expected.size * epsilon * loss);
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

enum class Shape { kRandom, kShifted, kConstant, kScaled };
enum class WeightShape { kNone, kEqual, kZeros, kSpanning };

template <class Real>
Data<Real> make_data(Shape shape, size_t p, size_t n) {
  std::mt19937 random(static_cast<unsigned>(p * 1000 + n));
  std::normal_distribution<double> normal;
  Data<Real> data(p, std::vector<Real>(n));
  const double far = is_double<Real> ? 1e9 : 1e4, scale = is_double<Real> ? 1e60 : 1e4;
  for (size_t i = 0; i < n; ++i) {
    const double common = normal(random);
    for (size_t j = 0; j < p; ++j) {
      double x = 0.6 * common + 0.8 * normal(random) + 0.1 * static_cast<double>(j);
      if (shape == Shape::kShifted) x += j % 2 == 0 ? far : -far;
      if (shape == Shape::kConstant) x = 0.1 * static_cast<double>(j + 1);
      if (shape == Shape::kScaled) x *= j % 2 == 0 ? scale : 1 / scale;
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
  for (size_t i = 0; i < weights.size(); ++i) {
    const double u = uniform(random);
    if (shape == WeightShape::kZeros) weights[i] = Real(i < 5 || u < 0.3 ? 0 : u);
    if (shape == WeightShape::kSpanning) weights[i] = Real(std::pow(10, 24 * u - 12));
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
  explicit Threads(int32_t count) : old(orba::serv::set_local_thread_count(count)) {}
  ~Threads() { orba::serv::set_local_thread_count(old); }
  int32_t old;
};

// Everything at once, in one block and in blocks, on one thread and on several, in all classes and
// both layouts.
template <class Real>
void check_everything(Shape shape, WeightShape weight_shape, size_t p, size_t n,
                      long double limit) {
  const Data<Real> data = make_data<Real>(shape, p, n);
  const std::vector<Real> weights = make_weights<Real>(weight_shape, n);
  const std::vector<Real> means = means_of(data, weights);
  constexpr long double epsilon = std::numeric_limits<Real>::epsilon();
  for (const uint32_t method : kMethods) {
    const bool user = method == kUserMeanMethod, fast = method == kFastMethod;
    const MomentsReference reference(data, weights, user ? means : std::vector<Real>(), fast);
    // Between calls a mean is kept as a number; what its rounding is to a deviation is lost.
    const long double far =
        shape == Shape::kShifted && !fast ? std::abs(static_cast<long double>(means[0])) : 1;
    const struct {
      std::vector<size_t> ends;
      int32_t threads;
      bool masked;
      uint64_t estimates;
      long double loss;
    } runs[] = {
        {{n}, 1, false, kEverything, 1},
        {{n}, 1, true, kVectors, 1},
        {{n}, 3, true, kEverything, 1},
        {{1, 3, n / 3, n}, 2, false, kEverything, far},
        {{n / 2, n}, 1, true, kEverything, far},
    };
    for (int variant = 0; variant <= 2 * highest_rau_class() + 1; ++variant) {
      const RauClass running(variant / 2);
      const bool rows = variant % 2 == 0;
      for (const auto& run : runs) {
        SCOPED_TRACE(testing::Message()
                     << "class " << variant / 2 << (rows ? ", rows" : ", columns") << ", method "
                     << method << ", " << run.ends.size() << " blocks, " << run.threads
                     << " threads, shape " << static_cast<int>(shape) << ", weights "
                     << static_cast<int>(weight_shape) << ", p " << p << ", n " << n);
        const Threads threads(run.threads);
        MomentsTask<Real> task(static_cast<int32_t>(p), rows, static_cast<int32_t>(n % 3));
        if (run.masked) task.mask_some();
        if (user) task.results[kMean] = means;
        if (run.ends.size() > 1) task.accumulate();
        size_t first = 0;
        for (const size_t last : run.ends) {
          task.feed(data, weights, first, last);
          ASSERT_EQ(task.compute(run.estimates, method), 0);
          first = last;
        }
        Worst<Real> worst;
        worst.see(task, reference, user ? run.estimates & ~RAU_SS_MEAN : run.estimates, run.loss);
        EXPECT_LT(worst.error, limit) << worst.where;
        if (run.ends.size() > 1) {
          EXPECT_LT(std::abs(task.accumulated[0] / reference.w - 1), limit * epsilon);
          EXPECT_LT(std::abs(task.accumulated[1] / reference.v - 1), limit * epsilon);
        }
      }
    }
  }
}

template <class Real>
class MomentsOf : public testing::Test {};
using Reals = testing::Types<double, float>;
TYPED_TEST_SUITE(MomentsOf, Reals);

TYPED_TEST(MomentsOf, Definition) {
  for (const Shape shape : {Shape::kRandom, Shape::kShifted, Shape::kConstant, Shape::kScaled}) {
    for (const WeightShape weights : {WeightShape::kNone, WeightShape::kEqual, WeightShape::kZeros,
                                      WeightShape::kSpanning}) {
      check_everything<TypeParam>(shape, weights, 1, 301, 20);
      check_everything<TypeParam>(shape, weights, 3, 60, 20);
      check_everything<TypeParam>(shape, weights, 19, 400, 20);
    }
  }
  check_everything<TypeParam>(Shape::kShifted, WeightShape::kZeros, 2, 12000, 20);
}

}  // namespace
