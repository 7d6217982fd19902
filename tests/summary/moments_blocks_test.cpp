// One task over blocks of observations, and over arrays that change under it.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/summary/moments_task.h"

namespace {

using namespace orba::test;

template <class Real>
class MomentsBlocks : public testing::Test {};
using Reals = testing::Types<double, float>;
TYPED_TEST_SUITE(MomentsBlocks, Reals);

// Everything that the estimate of a row computes.
uint64_t computed_with(const Row& row, uint32_t method) {
  uint64_t computed = 0;
  for (uint32_t r = 0; r < kMomentsResultCount; ++r) {
    if ((required(row, method) >> r & 1) != 0) computed |= kRows[r].estimate;
  }
  return method == kUserMeanMethod ? computed & ~RAU_SS_MEAN : computed;
}

// Blocks of one observation, of one with weight, of none with weight, and a call without any: what
// comes out is that of one block, for each estimate alone, and nothing else is touched.
TYPED_TEST(MomentsBlocks, AnySplitGivesTheResultOfOneBlock) {
  using Real = TypeParam;
  const size_t p = 3, n = 48;
  const Data<Real> data = make_data<Real>(Shape::kRandom, p, n);
  std::vector<size_t> ones(n);
  for (size_t i = 0; i < n; ++i) ones[i] = i + 1;
  const std::vector<std::vector<size_t>> splits = {
      {1, n / 2, n}, {3, 6, 20, 24, n}, {n / 3, 2 * n / 3, n - 1, n}, ones};
  const Real nan = std::numeric_limits<Real>::quiet_NaN();
  for (const WeightShape shape : {WeightShape::kNone, WeightShape::kZeros, WeightShape::kEqual}) {
    const std::vector<Real> weights = make_weights<Real>(shape, n);
    Data<Real> seen = data;  // unread in front of the first weight
    if (shape == WeightShape::kZeros) {
      for (auto& x : seen) std::fill_n(x.begin(), 3, nan);
    }
    for (const uint32_t method : kMethods) {
      const bool user = method == kUserMeanMethod;
      const std::vector<Real> means = {Real(0.5), Real(-1), 2};
      const MomentsReference reference(data, weights, user ? means : std::vector<Real>(),
                                       method == kFastMethod);
      for (const Row& row : kRows) {
        for (const auto& ends : splits) {
          SCOPED_TRACE(testing::Message()
                       << row.name << ", method " << method << ", " << ends.size()
                       << " blocks, weights " << static_cast<int>(shape));
          MomentsTask<Real> task(static_cast<int32_t>(p), ends[0] == 1,
                                 static_cast<int32_t>(ends[0]));
          task.accumulate();
          if (user) task.results[kMean] = means;
          size_t first = 0;
          for (const size_t end : ends) {
            task.feed(seen, weights, first, end);
            ASSERT_EQ(task.compute(row.estimate, method), 0);
            task.n = 0;
            ASSERT_EQ(task.compute(row.estimate, method), -4002);
            first = end;
          }
          const uint64_t computed = computed_with(row, method);
          for (uint32_t r = 0; r < kMomentsResultCount; ++r) {
            if ((computed & kRows[r].estimate) != 0 || (user && r == kMean)) continue;
            EXPECT_EQ(task.results[r], std::vector<Real>(task.results[r].size(), kUntouched))
                << kRows[r].name;
          }
          Worst<Real> worst;
          worst.see(task, reference, computed);
          EXPECT_LT(worst.error, ends.size() == n ? 60 : 20) << worst.where;
        }
      }
    }
  }
}

// Two sets of data of equal number through one task in turns: with arrays of their own, where one
// is the other's mirror image, or changing places in the same arrays. What the task carries for one
// of them is not taken for the other; where lower sums are nowhere else a result is honestly lost.
TYPED_TEST(MomentsBlocks, ArraysThatChange) {
  using Real = TypeParam;
  const size_t p = 2, n = 90;
  for (const bool swapped : {false, true}) {
    Data<Real> data[2] = {make_data<Real>(Shape::kRandom, p, n), Data<Real>(p)};
    for (size_t j = 0; j < p; ++j) {
      for (Real& value : data[0][j]) {
        value = std::exp(value);
        data[1][j].push_back(swapped ? Real(-1.25) * value : -value);
      }
    }
    for (const uint32_t method : kMethods) {
      for (const Row& row : kRows) {
        SCOPED_TRACE(testing::Message() << row.name << ", method " << method << swapped);
        const bool user = method == kUserMeanMethod;
        MomentsTask<Real> task(p, true), other(p, true);
        MomentsTask<Real>* const sets[] = {&task, &other};
        const std::vector<Real> means[2] = {{1, 2}, {-1, -2}};
        for (size_t i : {0, 1}) sets[i]->results[kMean] = user ? means[i] : sets[i]->results[kMean];
        for (size_t block = 0; block < 6; ++block) {
          const size_t which = block % 2, first = block / 2 * n / 3;
          if (swapped && block > 0) {
            for (uint32_t r = 0; r < kMomentsResultCount; ++r) {
              std::swap_ranges(task.results[r].begin(), task.results[r].end(),
                               other.results[r].begin());
            }
            std::swap(task.accumulated, other.accumulated);
          }
          MomentsTask<Real>& set = swapped ? task : *sets[which];
          task.edit(RAU_SS_ED_ACCUM_WEIGHT, set.accumulated.data());
          for (uint32_t r = 0; r < kMomentsResultCount; ++r) {
            task.edit(kRows[r].id, set.results[r].data());
          }
          task.feed(data[which], {}, first, first + n / 3);
          ASSERT_EQ(task.compute(row.estimate, method), 0);
        }
        for (const size_t which : {0, 1}) {
          // The second set was the last.
          const MomentsTask<Real>& set = swapped ? *sets[1 - which] : *sets[which];
          const uint32_t r = static_cast<uint32_t>(&row - kRows);
          if (method == kOnePassMethod && (r == kCentralSum3 || r == kCentralSum4)) {
            EXPECT_TRUE(std::isnan(set.results[r][0]));
            continue;
          }
          const MomentsReference reference(data[which], std::vector<Real>(),
                                           user ? means[which] : std::vector<Real>(), true);
          Worst<Real> worst;
          worst.see(set, reference, computed_with(row, method));
          EXPECT_LT(worst.error, 20) << worst.where;
        }
      }
    }
  }
}

// What one method leaves to another is in the arrays: lower sums of 1PASS come from raw moments.
TYPED_TEST(MomentsBlocks, MethodsThatChange) {
  using Real = TypeParam;
  const size_t n = 90;
  const Data<Real> data = make_data<Real>(Shape::kRandom, 2, n);
  const MomentsReference reference(data, std::vector<Real>(), std::vector<Real>(), true);
  for (uint32_t first_method = 0; first_method < 2; ++first_method) {
    for (const uint64_t estimate :
         {RAU_SS_3C_MOM, RAU_SS_4C_MOM, RAU_SS_KURTOSIS, RAU_SS_COV, RAU_SS_4R_SUM}) {
      MomentsTask<Real> task(2, true);
      task.accumulate();
      for (uint32_t block = 0; block < 9; ++block) {
        task.feed(data, {}, block * 10, block * 10 + 10);
        ASSERT_EQ(task.compute(estimate, kMethods[(first_method + block) % 2]), 0);
      }
      Worst<Real> worst;
      worst.see(task, reference, estimate);
      EXPECT_LT(worst.error, 20) << worst.where;
    }
  }
}

// Covariances are around the means of the last call, whatever those of earlier ones were; central
// sums are, block by block, around the means of their call.
TYPED_TEST(MomentsBlocks, RefinedMeans) {
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
TEST(MomentsBlock, UserMeansOfAnotherTypeAndDimension) {
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

}  // namespace
