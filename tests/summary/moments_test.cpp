#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "orba_kam.h"
#include "services/threads/thread_count.h"
#include "statistics/frame/dispatch.h"
#include "statistics/summary/moments.h"
#include "tests/summary/moments_reference.h"
#include "tests/summary/task_fixture.h"
#include "tests/support/failing_allocator.h"

namespace {

using namespace orba::test;
using namespace orba::statistics;

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
        for (size_t k = kRows[r].storage_id != 0 ? 0 : j;
             k < (kRows[r].storage_id != 0 ? p : j + 1); ++k) {
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
  explicit Threads(int32_t count) : old(orba::services::set_local_thread_count(count)) {}
  ~Threads() { orba::services::set_local_thread_count(old); }
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
        {{n}, 1, false, kEverything, 1},         {{n}, 1, true, kVectors, 1},
        {{n}, 3, true, kEverything, 1},          {{1, 3, n / 3, n}, 2, false, kEverything, far},
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
    for (const WeightShape weights :
         {WeightShape::kNone, WeightShape::kEqual, WeightShape::kZeros, WeightShape::kSpanning}) {
      check_everything<TypeParam>(shape, weights, 1, 301, 20);
      check_everything<TypeParam>(shape, weights, 3, 60, 20);
      check_everything<TypeParam>(shape, weights, 19, 400, 20);
    }
  }
  check_everything<TypeParam>(Shape::kShifted, WeightShape::kZeros, 2, 12000, 20);
}

// ---- Estimates one by one ----

// Only what an estimate needs is touched, and a call continues from no more than that.
TYPED_TEST(MomentsOf, EachEstimateAloneInBlocks) {
  using Real = TypeParam;
  const size_t p = 5, n = 240;
  const Data<Real> data = make_data<Real>(Shape::kRandom, p, n);
  for (const WeightShape shape : {WeightShape::kNone, WeightShape::kZeros}) {
    const std::vector<Real> weights = make_weights<Real>(shape, n), means = means_of(data, weights);
    for (const uint32_t method : kMethods) {
      const bool user = method == kUserMeanMethod;
      const MomentsReference reference(data, weights, user ? means : std::vector<Real>(),
                                       method == kFastMethod);
      for (const Row& row : kRows) {
        SCOPED_TRACE(testing::Message() << row.name << ", method " << method);
        MomentsTask<Real> task(static_cast<int32_t>(p), shape == WeightShape::kNone);
        task.accumulate();
        if (user) task.results[kMean] = means;
        // A first block of one observation has no variance; around the caller's mean it then has no
        // moment from which the sum could come back.
        const size_t ends[] = {user ? n / 3 : weights.empty() ? 1 : 6, n / 2, n};
        size_t first = 0;
        for (const size_t end : ends) {
          task.feed(data, weights, first, end);
          ASSERT_EQ(task.compute(row.estimate, method), 0);
          first = end;
        }
        MomentsPlan plan;
        ASSERT_EQ(validate_moments(*task.handle, row.estimate, method, &plan), 0);
        uint64_t computed = 0;
        for (uint32_t r = 0; r < kMomentsResultCount; ++r) {
          if (plan.needs(static_cast<MomentsResult>(r))) {
            computed |= kRows[r].estimate;
          } else {
            EXPECT_EQ(task.results[r], std::vector<Real>(task.results[r].size(), kUntouched))
                << kRows[r].name;
          }
        }
        if (user) computed &= ~RAU_SS_MEAN;
        Worst<Real> worst;
        worst.see(task, reference, computed);
        EXPECT_LT(worst.error, 20) << worst.where;
      }
    }
  }
}

// Another task that starts from kept arrays has no more than these: lower central sums come from
// raw moments where those are there, and where not a result is honestly lost.
TEST(Moments, ContinuesInAnotherTask) {
  const Data<double> data = make_data<double>(Shape::kRandom, 2, 100);
  const MomentsReference reference(data, std::vector<double>(), {}, false);
  MomentsTask<double> first(2, true), second(2, true);
  first.accumulate();
  second.accumulate();
  first.feed(data, {}, 0, 60);
  for (const uint64_t estimate : {RAU_SS_3C_MOM, RAU_SS_4C_SUM}) {
    first.accumulated = {};
    ASSERT_EQ(first.compute(estimate, kOnePassMethod), 0);
    second.results = first.results;
    second.accumulated = first.accumulated;
    for (uint32_t r = 0; r < kMomentsResultCount; ++r) {
      second.edit(kRows[r].id, second.results[r].data());
    }
    second.feed(data, {}, 60, 100);
    ASSERT_EQ(second.compute(estimate, kOnePassMethod), 0);
    if (estimate == RAU_SS_3C_MOM) {
      Worst<double> worst;
      worst.see(second, reference, estimate);
      EXPECT_LT(worst.error, 20) << worst.where;
    } else {
      EXPECT_TRUE(std::isnan(second.results[kCentralSum4][0]));
    }
  }
}

// ---- Accuracy ----

// The stored numbers themselves are off by 2e-9 of a deviation of 0.1, which leaves 8.2 digits.
TEST(Moments, OnePassOnSmallDeviationsFarFromZero) {
  for (const bool rows : {true, false}) {
    for (const size_t block : {size_t{1001}, size_t{100}, size_t{7}}) {
      Data<double> data(1, std::vector<double>(1001));
      for (size_t i = 0; i < 1001; ++i) {
        data[0][i] = i == 0 ? 10000000.2 : i % 2 == 1 ? 10000000.1 : 10000000.3;
      }
      MomentsTask<double> task(1, rows);
      task.accumulate();
      for (size_t i = 0; i < 1001; i += block) {
        task.feed(data, {}, i, std::min(i + block, size_t{1001}));
        ASSERT_EQ(task.compute(RAU_SS_MEAN | RAU_SS_2C_MOM, kOnePassMethod), 0);
      }
      EXPECT_NEAR(task.results[kMean][0], 10000000.2, 1e-8);
      const double deviation = std::sqrt(task.results[kCentralMoment2][0]);
      EXPECT_GE(-std::log10(std::abs(deviation - 0.1) / 0.1), 8.0) << "block " << block;
    }
  }
}

// ---- The fold ----

template <class Real>
struct PartArrays {
  PartArrays(size_t p, MomentsMethod method, const Data<Real>& data,
             const std::vector<Real>& weights, const std::vector<Real>& pivot)
      : arrays(7, std::vector<Real>(p)), product(p * p) {
    part.weight = part.squared_weight = 0;
    part.mean = arrays[0].data();
    for (size_t k = 0; k < 3; ++k) {
      part.raw[k] = arrays[k + 1].data();
      part.central[k] = arrays[k + 4].data();
    }
    part.product = product.data();
    if (data[0].empty()) return;
    const bool user = method == MomentsMethod::kUserMean;
    const MomentsReference reference(data, weights, user ? pivot : std::vector<Real>(), false);
    const auto value = [&](uint32_t result, size_t j, size_t k) {
      return static_cast<Real>(reference.of(result, j, k).value);
    };
    part.weight = static_cast<Real>(reference.w);
    part.squared_weight = static_cast<Real>(reference.v);
    for (size_t j = 0; j < p; ++j) {
      part.mean[j] = static_cast<Real>(reference.of(kMean, j, j).value -
                                       (method == MomentsMethod::kFast ? 0 : pivot[j]));
      for (uint32_t k = 0; k < 3; ++k) {
        part.raw[k][j] = value(kRawMoment2 + k, j, j);
        part.central[k][j] = value(kCentralSum2 + k, j, j);
      }
      for (size_t k = 0; k <= j; ++k) product[j * p + k] = value(kCrossProduct, j, k);
    }
  }
  std::vector<std::vector<Real>> arrays;
  std::vector<Real> product;
  MomentsPart<Real> part = {};
};

// Parts of all sorts of lengths, an empty one first, in between and last.
TYPED_TEST(MomentsOf, FoldOfUnequalParts) {
  using Real = TypeParam;
  const size_t p = 5;
  const size_t lengths[] = {0, 1, 40, 0, 1, 2, 300, 17, 0};
  const size_t n = 361;
  const Data<Real> data = make_data<Real>(Shape::kRandom, p, n);
  const std::vector<Real> weights = make_weights<Real>(WeightShape::kSpanning, n);
  const std::vector<Real> pivot(p, Real(0.4));
  for (const MomentsMethod method :
       {MomentsMethod::kOnePass, MomentsMethod::kFast, MomentsMethod::kUserMean}) {
    for (int number = 0; number <= highest_rau_class(); ++number) {
      const MomentsOrders orders = {method, 4, method == MomentsMethod::kFast ? 1 : 4, true};
      PartArrays<Real> whole(p, method, Data<Real>(p), {}, pivot);
      size_t first = 0;
      for (const size_t length : lengths) {
        Data<Real> some(p);
        for (size_t j = 0; j < p; ++j) {
          some[j].assign(data[j].begin() + static_cast<std::ptrdiff_t>(first),
                         data[j].begin() + static_cast<std::ptrdiff_t>(first + length));
        }
        const std::vector<Real> some_weights(
            weights.begin() + static_cast<std::ptrdiff_t>(first),
            weights.begin() + static_cast<std::ptrdiff_t>(first + length));
        const PartArrays<Real> part(p, method, some, some_weights, pivot);
        std::vector<Real> difference(p);
        summary::merge_parts(number, orders, static_cast<int64_t>(p), &whole.part, part.part,
                             difference.data());
        first += length;
      }
      ASSERT_EQ(first, n);
      const PartArrays<Real> expected(p, method, data, weights, pivot);
      constexpr Real limit = 30 * std::numeric_limits<Real>::epsilon();
      EXPECT_NEAR(whole.part.weight / expected.part.weight, 1, limit);
      EXPECT_NEAR(whole.part.squared_weight / expected.part.squared_weight, 1, limit);
      const Real scale = expected.part.weight;
      for (size_t j = 0; j < p; ++j) {
        EXPECT_NEAR(whole.part.mean[j], expected.part.mean[j], limit);
        for (size_t k = 0; k < 3; ++k) {
          EXPECT_NEAR(whole.part.raw[k][j], expected.part.raw[k][j], 4 * limit);
          if (method == MomentsMethod::kFast) continue;
          EXPECT_NEAR(whole.part.central[k][j] / scale, expected.part.central[k][j] / scale,
                      4 * limit)
              << "order " << k + 2;
        }
        for (size_t k = 0; k <= j; ++k) {
          EXPECT_NEAR(whole.product[j * p + k] / scale, expected.product[j * p + k] / scale, limit);
        }
      }
    }
  }
}

// ---- The caller's means ----

// Covariances are around the means of the last call, whatever those of earlier ones were; central
// sums are, block by block, around the means of their call.
TYPED_TEST(MomentsOf, RefinedMeans) {
  using Real = TypeParam;
  const size_t p = 3, n = 500;
  const size_t ends[] = {100, 180, 500};
  const Data<Real> data = make_data<Real>(Shape::kShifted, p, n);
  for (const bool exact : {true, false}) {
    std::vector<Real> means = means_of<Real>(data, {});
    const Real last_off = exact ? Real(0) : Real(0.25);
    MomentsTask<Real> task(static_cast<int32_t>(p), exact);
    task.accumulate();
    size_t first = 0;
    std::vector<long double> sums(p);
    for (const size_t end : ends) {
      const std::vector<Real> best = means_of<Real>(data, {});
      for (size_t j = 0; j < p; ++j) {
        means[j] = best[j] + (end == n ? last_off : Real(2) - Real(0.01) * static_cast<Real>(end));
      }
      task.results[kMean] = means;
      task.edit(RAU_SS_ED_MEAN, task.results[kMean].data());
      task.feed(data, {}, first, end);
      ASSERT_EQ(task.compute(RAU_SS_COV | RAU_SS_2C_SUM | RAU_SS_SUM, kUserMeanMethod), 0);
      for (size_t j = 0; j < p; ++j) {
        for (size_t i = first; i < end; ++i) {
          const long double d = static_cast<long double>(data[j][i]) - means[j];
          sums[j] += d * d;
        }
        EXPECT_NEAR(static_cast<double>(task.results[kCentralSum2][j] / sums[j]), 1,
                    20 * std::numeric_limits<Real>::epsilon());
      }
      first = end;
    }
    EXPECT_EQ(task.results[kMean], means);
    const MomentsReference reference(data, std::vector<Real>(), means, false);
    Worst<Real> worst;
    // Means differ by up to 2 deviations from one call to the next, and cancel again.
    worst.see(task, reference, RAU_SS_COV | RAU_SS_SUM, 4);
    EXPECT_LT(worst.error, 20) << worst.where;
  }
}

// What a task keeps for itself is not taken for another type's or dimension's.
TEST(Moments, UserMeansOfAnotherTypeAndDimension) {
  const int32_t n = 40, rows = RAU_SS_MATRIX_STORAGE_ROWS, full = RAU_SS_MATRIX_STORAGE_FULL;
  int32_t p = 1;
  std::vector<float> x(400, 1.5f), mean(10, 1.0f), covariance(100), weight(2);
  std::vector<double> wide_x(400, 1.5), wide_mean(10, 1.0), wide_covariance(100), wide_weight(2);
  SsTask* task = nullptr;
  ASSERT_EQ(rausSSNewTask(&task, &p, &n, &rows, x.data(), nullptr, nullptr), 0);
  rausSSEditCovCor(task, mean.data(), covariance.data(), &full, nullptr, nullptr);
  rausSSEditTask(task, RAU_SS_ED_ACCUM_WEIGHT, weight.data());
  ASSERT_EQ(rausSSCompute(task, RAU_SS_COV, kUserMeanMethod), 0);
  EXPECT_EQ(covariance[0], 10.0f / 39);
  p = 10;
  ASSERT_EQ(rausSSCompute(task, RAU_SS_COV, kUserMeanMethod), 0);
  raudSSEditTask(task, RAU_SS_ED_OBSERV, wide_x.data());
  raudSSEditCovCor(task, wide_mean.data(), wide_covariance.data(), nullptr, nullptr, nullptr);
  raudSSEditTask(task, RAU_SS_ED_ACCUM_WEIGHT, wide_weight.data());
  ASSERT_EQ(raudSSCompute(task, RAU_SS_COV, kUserMeanMethod), 0);
  ASSERT_EQ(raudSSCompute(task, RAU_SS_COV, kUserMeanMethod), 0);
  EXPECT_EQ(wide_covariance[99], 20.0 / 79);
  EXPECT_EQ(rauSSDeleteTask(&task), 0);
}

// ---- Conversions ----

TYPED_TEST(MomentsOf, Conversions) {
  using Real = TypeParam;
  const size_t p = 4, n = 90;
  constexpr uint64_t sums = RAU_SS_SUM | RAU_SS_2R_SUM | RAU_SS_3R_SUM | RAU_SS_4R_SUM |
                            RAU_SS_2C_SUM | RAU_SS_3C_SUM | RAU_SS_4C_SUM | RAU_SS_CP;
  constexpr uint64_t converted = kEverything & ~sums;
  const Data<Real> data = make_data<Real>(Shape::kRandom, p, n);
  for (const WeightShape shape : {WeightShape::kNone, WeightShape::kZeros}) {
    const std::vector<Real> weights = make_weights<Real>(shape, n);
    const MomentsReference reference(data, weights, {}, false);
    for (const bool masked : {false, true}) {
      MomentsTask<Real> task(static_cast<int32_t>(p), masked, masked ? 1 : 0);
      if (shape != WeightShape::kNone) task.accumulate();
      if (masked) task.mask_some();
      task.feed(data, weights, 0, n);
      ASSERT_EQ(task.compute(sums, kOnePassMethod), 0);
      for (uint32_t r = 0; r < kMomentsResultCount; ++r) {  // only sums are needed from here on
        if ((kRows[r].estimate & converted) != 0) {
          std::fill(task.results[r].begin(), task.results[r].end(), Real(kUntouched));
        }
      }
      const auto kept = task.results;
      task.x.assign(task.x.size(), std::numeric_limits<Real>::quiet_NaN());
      ASSERT_EQ(task.compute(converted & kVectors, RAU_SS_METHOD_SUM_TO_MOM), 0);
      ASSERT_EQ(task.compute(converted & kMatrices, RAU_SS_METHOD_CP_TO_COVCOR), 0);
      Worst<Real> worst;
      worst.see(task, reference, converted);
      EXPECT_LT(worst.error, 20) << worst.where;
      for (uint32_t r = 0; r < kMomentsResultCount; ++r) {
        if ((kRows[r].estimate & sums) == 0) continue;
        EXPECT_EQ(task.results[r], kept[r]) << kRows[r].name;
      }
    }
  }
}

// ---- Special values and weights ----

TEST(Moments, BlocksWithoutWeightChangeNothing) {
  for (const uint32_t method : kMethods) {
    for (const bool rows : {true, false}) {
      const double nan = std::numeric_limits<double>::quiet_NaN();
      const Data<double> data = {{nan, 1, 2, 4, nan, nan, nan}, {nan, 3, 5, 5, nan, nan, nan}};
      const std::vector<double> weights = {0, 1, 2, 0, 0, 0, 0};
      MomentsTask<double> task(2, rows);
      task.accumulate();
      task.results[kMean] = {1, 4};
      task.feed(data, weights, 0, 4);  // weightless at the front and at the end
      ASSERT_EQ(task.compute(kEverything, method), 0);
      EXPECT_NEAR(task.results[kRawSum2][0], 9, 1e-14);
      EXPECT_EQ(task.accumulated, (std::array<double, 2>{3, 5}));
      const auto before = task.results;
      task.feed(data, weights, 4, 7);
      ASSERT_EQ(task.compute(kEverything, method), 0);
      EXPECT_EQ(task.accumulated, (std::array<double, 2>{3, 5}));
      for (uint32_t r = 0; r < kMomentsResultCount; ++r) {
        for (size_t i = 0; i < before[r].size(); ++i) {
          EXPECT_NEAR(task.results[r][i], before[r][i], 1e-13) << kRows[r].name;
        }
      }
    }
  }
}

TEST(Moments, OneObservation) {
  for (const uint32_t method : {kOnePassMethod, kFastMethod}) {
    MomentsTask<double> task(2, true);
    task.feed({{3}, {4}}, {}, 0, 1);
    ASSERT_EQ(task.compute(kEverything, method), 0);
    EXPECT_EQ(task.results[kMean][1], 4);
    EXPECT_EQ(task.results[kRawMoment4][0], 81);
    EXPECT_TRUE(std::isnan(task.results[kCentralMoment2][0]));
    EXPECT_EQ(task.results[kCrossProduct][1], 0);
  }
}

TEST(Moments, InfinityAndNan) {
  const double inf = std::numeric_limits<double>::infinity();
  for (const uint32_t method : {kOnePassMethod, kFastMethod}) {
    for (const bool rows : {true, false}) {
      MomentsTask<double> task(3, rows);
      task.accumulate();
      Data<double> data(3, std::vector<double>(100, 1));
      data[0][40] = inf;
      data[1][99] = -std::numeric_limits<double>::quiet_NaN();
      task.feed(data, {}, 0, 60);
      ASSERT_EQ(task.compute(kVectors, method), 0);
      task.feed(data, {}, 60, 100);
      ASSERT_EQ(task.compute(kVectors, method), 0);
      for (const MomentsResult result : {kMean, kRawMoment2, kRawMoment3, kRawSum4}) {
        EXPECT_EQ(task.results[result][0], inf) << kRows[result].name;
        EXPECT_TRUE(std::isnan(task.results[result][1])) << kRows[result].name;
      }
      EXPECT_TRUE(std::isnan(task.results[kCentralSum2][0]));
      EXPECT_EQ(task.results[kMean][2], 1);
      EXPECT_EQ(task.results[kCentralSum2][2], 0);
    }
  }
}

// A variable without variance has undefined correlations; they become defined with it. The mode of
// the vector functions is the thread's again after a call.
TEST(Moments, CorrelationsOfAVariableThatWasConstant) {
  const uint32_t mode = kamSetMode(KAM_LA | KAM_DENORMALS_FLUSH | KAM_ERRMODE_IGNORE);
  const uint32_t wanted = kamGetMode();
  Data<double> data = make_data<double>(Shape::kRandom, 2, 100);
  std::fill_n(data[1].begin(), 50, 0.1);
  const MomentsReference reference(data, std::vector<double>(), {}, false);
  MomentsTask<double> task(2, true);
  task.accumulate();
  task.feed(data, {}, 0, 50);
  ASSERT_EQ(task.compute(RAU_SS_COR, kOnePassMethod), 0);
  EXPECT_TRUE(std::isnan(task.get(kCorrelation, 1, 0)));
  EXPECT_EQ(task.get(kCorrelation, 1, 1), 0);
  task.feed(data, {}, 50, 100);
  ASSERT_EQ(task.compute(RAU_SS_COR, kOnePassMethod), 0);
  Worst<double> worst;
  worst.see(task, reference, RAU_SS_COR);
  EXPECT_LT(worst.error, 20) << worst.where;
  EXPECT_EQ(kamGetMode(), wanted);
  kamClearErrStatus();
  kamSetMode(mode);
}

// ---- Lack of memory ----

TYPED_TEST(MomentsOf, OutOfMemory) {
  using Real = TypeParam;
  const Threads threads(3);
  const Data<Real> data = make_data<Real>(Shape::kRandom, 20, 200);
  const std::vector<Real> weights = make_weights<Real>(WeightShape::kZeros, 200);
  for (const uint32_t method :
       {kOnePassMethod, kFastMethod, kUserMeanMethod, uint32_t{RAU_SS_METHOD_CP_TO_COVCOR}}) {
    MomentsTask<Real> task(20, false);
    task.accumulate();
    task.feed(data, weights, 0, 100);
    const uint64_t estimates = method == RAU_SS_METHOD_CP_TO_COVCOR
                                   ? RAU_SS_COR
                                   : RAU_SS_COV | RAU_SS_COR | RAU_SS_CP | RAU_SS_3C_MOM;
    const auto before = task.results;
    const int64_t allocations = fail_each_allocation(
        RAU_SS_ERROR_MEM_FAILURE, [&] { return task.compute(estimates, method); },
        [&] {
          EXPECT_EQ(task.results, before);
          EXPECT_EQ(task.accumulated, (std::array<Real, 2>{0, 0}));
        });
    EXPECT_GE(allocations, method == kOnePassMethod || method == kUserMeanMethod ? 2 : 1);
  }
}

}  // namespace
