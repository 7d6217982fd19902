#include <gtest/gtest.h>
#include <stdint.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <utility>

#include "tests/summary/moments_task.h"
#include "tests/support/failing_allocator.h"

namespace {

using namespace orba;
using namespace orba::test;

constexpr uint32_t kFast = 0x1, kOnePass = 0x2, kUserMean = 0x100, kCovariances = 0x200,
                   kMoments = 0x400, kRadix = 0x100000;

// A task of which one thing after the other is put right: what it says before each.
struct Ladder {
  template <class Compute>
  void climb(Compute compute, int32_t last) {
    task = {};
    if (has_arrays) task.mean = task.covariance = results;
    p = n = 0;
    EXPECT_EQ(compute(), -4001);
    task.dimension = &p;
    EXPECT_EQ(compute(), -4001);
    p = 2;
    EXPECT_EQ(compute(), -4002);
    task.observation_count = &n;
    EXPECT_EQ(compute(), -4002);
    n = 2;
    EXPECT_EQ(compute(), -4032);
    task.observations = x;
    EXPECT_EQ(compute(), -4044);
    task.observation_storage = &storage;
    storage = 4;
    EXPECT_EQ(compute(), -4003);
    storage = RAU_SS_MATRIX_STORAGE_ROWS | RAU_SS_MATRIX_STORAGE_COLS;
    EXPECT_EQ(compute(), last);
  }
  double x[4] = {}, results[4];
  int32_t p, n, storage;
  bool has_arrays = false;
  SsTask task;
};

TEST(ComputeFrame, ChecksInOrder) {
  Ladder ladder;
  const auto asking = [&](uint64_t estimates) {
    return [&, estimates] { return raudSSCompute(&ladder.task, estimates, kFast | kRadix); };
  };
  // The frame takes one storage or the other, and no estimate still means checks.
  for (const uint64_t estimates : {uint64_t{0}, RAU_SS_MIN, RAU_SS_MISSING_VALS, RAU_SS_MEAN}) {
    ladder.climb(asking(estimates), -4003);
  }
  ladder.storage = RAU_SS_MATRIX_STORAGE_COLS;
  EXPECT_EQ(asking(0)(), 0);
  // Beside estimates that need no observations each driver looks for itself, at the bits of codes.
  for (const uint64_t free :
       {RAU_SS_PARTIAL_COV, RAU_SS_PARTIAL_COR, RAU_SS_PARAMTR_COR, RAU_SS_STREAM_QUANTS}) {
    ladder.has_arrays = true;
    for (const uint32_t method : {kFast, kOnePass, kUserMean}) {
      const auto compute = [&] { return raudSSCompute(&ladder.task, free | RAU_SS_COV, method); };
      ladder.climb(compute, -4044);  // the storage of the covariance
      ladder.task.mean = nullptr;
      EXPECT_EQ(compute(), -4006);
    }
    ladder.has_arrays = false;
    ladder.climb(asking(free | RAU_SS_MIN), -4015);
    ladder.climb(asking(free | RAU_SS_MDAD), -4082);
    const bool before_quantiles = free == RAU_SS_PARTIAL_COV || free == RAU_SS_PARTIAL_COR;
    EXPECT_EQ(asking(free | RAU_SS_QUANTS)(), before_quantiles ? -4029 : -4023);
    ladder.task = {};
    ladder.task.dimension = &ladder.p;
    EXPECT_EQ(asking(free)(), -4029);
  }
  EXPECT_TRUE(raudSSCompute(nullptr, 0, 0) == -4031 && rausSSCompute(nullptr, 0, 0) == -4031);
  SsTask* const none = nullptr;
  const uint64_t no_estimate = 0;
  EXPECT_EQ(raudsscompute(&none, &no_estimate, &kFast), -4031);
}

// Each driver fails for want of something; what is given to it lets the next one speak.
TEST(ComputeFrame, OrderOfDrivers) {
  MomentsTask<double> task(1, true);
  task.feed({{3, 1, 4, 1}}, {}, 0, 4);
  double low = 9, sorted[4], deviations[2];
  constexpr uint64_t all =
      ~uint64_t{0} & ~(RAU_SS_MISSING_VALS | RAU_SS_PARTIAL_COV | RAU_SS_MAX | RAU_SS_PARTIAL_COR |
                       RAU_SS_PARAMTR_COR | RAU_SS_STREAM_QUANTS);
  void* const mean = std::exchange(task.handle->mean, nullptr);
  const auto fails_then = [&](int32_t status, int32_t id, auto* array) {
    EXPECT_EQ(task.compute(all, kFast | kRadix), status);
    task.edit(id, array);
  };
  fails_then(-4015, RAU_SS_ED_MIN, &low);
  fails_then(-4084, RAU_SS_ED_SORTED_OBSERV, sorted);
  fails_then(-4044, RAU_SS_ED_SORTED_OBSERV_STORAGE, &task.storage);
  fails_then(-4006, RAU_SS_ED_MEAN, static_cast<double*>(mean));
  fails_then(-4082, RAU_SS_ED_MDAD, deviations);
  fails_then(-4083, RAU_SS_ED_MNAD, deviations + 1);
  EXPECT_EQ(task.compute(all, kFast | kRadix), -4029);  // groups
  EXPECT_TRUE(low == 1 && sorted[3] == 4 && task.results[kMean][0] == 2.25);
  EXPECT_TRUE(deviations[0] == 1 && deviations[1] == 1.25);

  // What runs alone, and what is not there yet: groups, outliers, robust estimates before quantiles.
  task.results[kMean][0] = 77;
  EXPECT_EQ(task.compute(RAU_SS_MISSING_VALS | RAU_SS_MEAN, kFast), -4029);
  EXPECT_EQ(task.results[kMean][0], 77);
  for (const uint64_t later : {RAU_SS_POOLED_COV, RAU_SS_POOLED_MEAN, RAU_SS_GROUP_COV,
                               RAU_SS_GROUP_MEAN, RAU_SS_OUTLIERS, RAU_SS_ROBUST_COV}) {
    EXPECT_EQ(task.compute(later | RAU_SS_QUANTS, ~0u), -4029) << later;
  }
  EXPECT_EQ(task.compute(RAU_SS_QUANTS | RAU_SS_STREAM_QUANTS | RAU_SS_PARAMTR_COR, ~0u), -4023);
}

TEST(ComputeFrame, IntegersOf64Bits) {
  const int64_t p = 2, n = 3, cols = RAU_SS_MATRIX_STORAGE_COLS, mask[] = {0, int64_t{1} << 32},
                count = 1, below_one = -(int64_t{1} << 40), other = cols + (int64_t{1} << 32);
  const double x[] = {1, 6, 2, 4, 3, 5}, order = 0.5;
  double high[2] = {}, quantiles[2] = {}, sorted[6] = {}, deviations[2] = {};
  SsTask* task;
  const auto make = [&](const int64_t& dimension, const int64_t& length, const int64_t& storage) {
    return statistics::new_task(&task, &dimension, &length, &storage, x, nullptr, mask, true, 1);
  };
  EXPECT_EQ(make(below_one, n, cols), -4001);
  EXPECT_EQ(make(p, below_one, cols), -4002);
  EXPECT_EQ(make(p, n, other), -4003);
  ASSERT_EQ(make(p, n, cols), 0);
  task->maximum = high;
  task->quantile_order_count = &count;
  task->quantile_orders = const_cast<double*>(&order);
  task->quantiles = quantiles;
  task->sorted_observations = sorted;
  task->sorted_observations_storage = &cols;
  task->median_absolute_deviation = deviations;
  EXPECT_EQ(raudSSCompute(task, RAU_SS_MAX | RAU_SS_QUANTS | RAU_SS_SORTED_OBSERV | RAU_SS_MDAD,
                          kFast | kRadix),
            0);
  EXPECT_TRUE(high[0] == 0 && high[1] == 6 && quantiles[0] == 0 && quantiles[1] == 5);
  EXPECT_TRUE(sorted[0] == 0 && sorted[1] == 4 && sorted[3] == 5 && sorted[5] == 6);
  EXPECT_EQ(deviations[1], 1);
  rauSSDeleteTask(&task);
}

// ---- What the moments driver needs ----

class MomentsNeeds : public testing::Test {
 protected:
  MomentsNeeds() {
    for (const Row& row : kRows) {
      if (row.storage_id != 0) task.edit(row.storage_id, &full);
    }
  }
  void attach(uint32_t set) {
    for (uint32_t r = 0; r < kMomentsResultCount; ++r) {
      task.handle->*kResultArrays[r] = (set >> r & 1) != 0 ? results[r] : nullptr;
    }
  }
  double results[kMomentsResultCount][9] = {};
  const int32_t full = 0;
  Task<double> task{3, 5, false};
};

// Exactly those of the table: with them and no others a call succeeds; a missing one speaks, the
// first of them first, and before what is wrong with the data.
TEST_F(MomentsNeeds, ArraysOfEachEstimate) {
  for (const uint32_t method : {kFast, kOnePass, kUserMean, kCovariances, kMoments}) {
    for (const Row& asked : kRows) {
      SCOPED_TRACE(testing::Message() << asked.name << ", method " << method);
      const uint32_t needed = required(asked, method);
      attach(needed == kNever ? ~0u : needed);
      EXPECT_EQ(task.compute(asked.estimate, method), needed == kNever ? -4029 : 0);
      if (needed == kNever) continue;
      task.handle->observation_storage = nullptr;
      uint32_t present = 0;
      for (uint32_t r = 0; r < kMomentsResultCount; ++r) {
        if ((needed >> r & 1) == 0) continue;
        for (const uint32_t others : {present, ~(1u << r)}) {
          attach(others);
          EXPECT_EQ(task.compute(asked.estimate | RAU_SS_STREAM_QUANTS, method), kRows[r].missing);
        }
        present |= 1u << r;
      }
      task.handle->observation_storage = &task.storage;
    }
  }
  attach(~set_of(kSum));  // comes first
  EXPECT_EQ(task.compute(RAU_SS_MEAN | RAU_SS_SUM, kMoments), -4074);
}

TEST_F(MomentsNeeds, OneMethodOrConversions) {
  attach(~0u);
  std::fill(task.x.begin(), task.x.end(), 4.0);
  const uint32_t known[] = {kFast, kOnePass, kUserMean, kCovariances, kMoments};
  for (uint32_t bits = 0; bits < 32; ++bits) {
    uint32_t method = kRadix | 0x4;  // of others
    for (uint32_t k = 0; k < 5; ++k) method |= (bits >> k & 1) != 0 ? known[k] : 0;
    const int passes = std::popcount(bits & 7);
    const bool converts = passes == 0 && bits != 0;
    results[kMean][0] = 2;
    results[kSum][0] = 15;
    EXPECT_EQ(task.compute(RAU_SS_MEAN, method), passes == 1 || converts ? 0 : -4029) << method;
    const double mean = converts ? 3 : passes == 1 && (bits & 4) == 0 ? 4 : 2;
    EXPECT_EQ(results[kMean][0], mean) << method;
  }
}

// The weight of a conversion comes from the accumulated weights, or is the number of observations.
TEST_F(MomentsNeeds, WeightsOfConversions) {
  SsTask& handle = *task.handle;
  attach(~0u);
  double weight[2] = {3, 3};
  results[kCrossProduct][0] = 8;
  const auto expect = [&](double covariance, int32_t status) {
    // Past the frame's checks; the next driver is not there.
    EXPECT_EQ(task.compute(RAU_SS_COV | RAU_SS_STREAM_QUANTS, kCovariances), status);
    EXPECT_EQ(results[kCovariance][0], covariance);
  };
  handle.observations = nullptr;
  handle.observation_storage = nullptr;
  expect(2, -4029);
  handle.weights = weight;
  expect(2, -4020);
  handle.accumulated_weight = weight;
  handle.observation_count = nullptr;
  expect(4, -4029);
  handle.cross_product_storage = nullptr;
  expect(4, -4044);
  handle.weights = handle.accumulated_weight = nullptr;
  expect(4, -4020);
}

}  // namespace
