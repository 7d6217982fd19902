#include <gtest/gtest.h>
#include <stdint.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "tests/summary/moments_task.h"
#include "tests/support/failing_allocator.h"

namespace {

using namespace orba;
using namespace orba::test;

constexpr uint32_t kFast = 0x1, kOnePass = 0x2, kUserMean = 0x100, kCovariances = 0x200,
                   kMoments = 0x400, kRadix = 0x100000;

TEST(ComputeFrame, ChecksInOrder) {
  double x[4] = {}, low[2] = {};
  int32_t p = 0, n = 0, storage = 0x30000;
  SsTask task = {};
  const auto compute = [&](uint64_t estimates) {
    return raudSSCompute(&task, estimates, kFast | kRadix);
  };
  EXPECT_EQ(raudSSCompute(nullptr, 0, 0), -4031);
  EXPECT_EQ(rausSSCompute(nullptr, 0, 0), -4031);
  SsTask* const none = nullptr;
  const uint64_t no_estimate = 0;
  EXPECT_EQ(raudsscompute(&none, &no_estimate, &kFast), -4031);

  for (const uint64_t estimates : {uint64_t{0}, RAU_SS_MIN, RAU_SS_MISSING_VALS, RAU_SS_MEAN}) {
    task = {};
    EXPECT_EQ(compute(estimates), -4001);
    p = 0;
    task.dimension = &p;
    EXPECT_EQ(compute(estimates), -4001);
    p = 2;
    EXPECT_EQ(compute(estimates), -4002);
    n = 0;
    task.observation_count = &n;
    EXPECT_EQ(compute(estimates), -4002);
    n = 2;
    EXPECT_EQ(compute(estimates), -4032);
    task.observations = x;
    EXPECT_EQ(compute(estimates), -4044);
    storage = 0x30000;
    task.observation_storage = &storage;
    EXPECT_EQ(compute(estimates), -4003);
    storage = 0;
    EXPECT_EQ(compute(estimates), -4003);
  }
  storage = 0x20000;
  EXPECT_EQ(compute(0), 0);

  // Beside estimates that need no observations each driver looks for itself, at the bits of codes.
  for (const uint64_t free :
       {RAU_SS_PARTIAL_COV, RAU_SS_PARTIAL_COR, RAU_SS_PARAMTR_COR, RAU_SS_STREAM_QUANTS}) {
    task = {};
    task.dimension = &p;
    const uint64_t estimates = free | RAU_SS_MIN;
    EXPECT_EQ(compute(free), -4029);
    EXPECT_EQ(compute(estimates), -4002);
    const bool before_quantiles = free == RAU_SS_PARTIAL_COV || free == RAU_SS_PARTIAL_COR;
    EXPECT_EQ(compute(free | RAU_SS_QUANTS), before_quantiles ? -4029 : -4002);
    task.observation_count = &n;
    EXPECT_EQ(compute(estimates), -4032);
    task.observations = x;
    EXPECT_EQ(compute(estimates), -4044);
    task.observation_storage = &storage;
    storage = 4;
    EXPECT_EQ(compute(estimates), -4003);
    storage = 0x30000;
    EXPECT_EQ(compute(estimates), -4015);
    task.minimum = low;
    EXPECT_EQ(compute(estimates), -4029);
  }
}

// Each driver fails for want of something; what is given to it lets the next one speak.
TEST(ComputeFrame, OrderOfDrivers) {
  Task<double> task(1, 4, true);
  task.x = {3, 1, 4, 1};
  double low = 9, high = -9, sorted[4], mean, median_deviation, mean_deviation, group[4];
  constexpr uint64_t all = ~uint64_t{0} & ~RAU_SS_MISSING_VALS & ~RAU_SS_PARTIAL_COV &
                           ~RAU_SS_PARTIAL_COR & ~RAU_SS_PARAMTR_COR & ~RAU_SS_STREAM_QUANTS;
  const uint32_t method = kFast | kRadix;
  EXPECT_EQ(task.compute(all, method), -4015);
  task.edit(RAU_SS_ED_MIN, &low);
  task.edit(RAU_SS_ED_MAX, &high);
  EXPECT_EQ(task.compute(all, method), -4084);
  EXPECT_EQ(low, 1);
  EXPECT_EQ(high, 4);
  task.edit(RAU_SS_ED_SORTED_OBSERV, sorted);
  task.edit(RAU_SS_ED_SORTED_OBSERV_STORAGE, &task.storage);
  EXPECT_EQ(task.compute(all, method), -4006);
  EXPECT_EQ(sorted[3], 4);
  task.edit(RAU_SS_ED_MEAN, &mean);
  const uint64_t mean_only =
      RAU_SS_MEAN |
      (all & ~(RAU_SS_2R_MOM | RAU_SS_3R_MOM | RAU_SS_4R_MOM | RAU_SS_2C_MOM | RAU_SS_3C_MOM |
               RAU_SS_4C_MOM | RAU_SS_KURTOSIS | RAU_SS_SKEWNESS | RAU_SS_VARIATION | RAU_SS_COV |
               RAU_SS_COR | RAU_SS_CP | uint64_t{0xFE000000}));
  EXPECT_EQ(task.compute(mean_only, method), -4082);
  EXPECT_EQ(mean, 2.25);
  task.edit(RAU_SS_ED_MDAD, &median_deviation);
  EXPECT_EQ(task.compute(mean_only, method), -4083);
  task.edit(RAU_SS_ED_MNAD, &mean_deviation);
  EXPECT_EQ(task.compute(mean_only, method), -4029);  // groups
  EXPECT_EQ(median_deviation, 1);
  EXPECT_EQ(mean_deviation, 1.25);

  // What runs alone, and what is not there yet.
  mean = 77;
  EXPECT_EQ(task.compute(RAU_SS_MISSING_VALS | RAU_SS_MEAN, kFast), -4029);
  EXPECT_EQ(mean, 77);
  task.edit(RAU_SS_ED_QUANT_QUANTILES, group);
  for (const uint64_t later : {RAU_SS_POOLED_COV, RAU_SS_POOLED_MEAN, RAU_SS_GROUP_COV,
                               RAU_SS_GROUP_MEAN, RAU_SS_OUTLIERS, RAU_SS_ROBUST_COV}) {
    EXPECT_EQ(task.compute(later | RAU_SS_QUANTS, ~0u), -4029) << later;  // before quantiles
  }
  EXPECT_EQ(task.compute(RAU_SS_QUANTS | RAU_SS_STREAM_QUANTS | RAU_SS_PARAMTR_COR, ~0u), -4021);
}

TEST(ComputeFrame, TypeIsThatOfTheComputingEntry) {
  const int32_t p = 1, n = 3, rows = RAU_SS_MATRIX_STORAGE_ROWS;
  const float x[] = {2, -5, 3};
  float low = 0;
  SsTask* task;
  ASSERT_EQ(raudSSNewTask(&task, &p, &n, &rows, nullptr, nullptr, nullptr), 0);
  ASSERT_EQ(rausSSEditTask(task, RAU_SS_ED_OBSERV, x), 0);
  ASSERT_EQ(rausSSEditTask(task, RAU_SS_ED_MIN, &low), 0);
  const uint64_t estimates = RAU_SS_MIN;
  EXPECT_EQ(raussscompute(&task, &estimates, &kFast), 0);
  EXPECT_EQ(low, -5);
  rauSSDeleteTask(&task);
}

TEST(ComputeFrame, IntegersOf64Bits) {
  const int64_t p = 2, n = 3, cols = RAU_SS_MATRIX_STORAGE_COLS, mask[] = {0, int64_t{1} << 32},
                count = 1;
  const double x[] = {1, 6, 2, 4, 3, 5}, order = 0.5;
  double low[2] = {}, quantiles[2] = {}, sorted[6] = {}, deviations[2] = {};
  SsTask* task;
  ASSERT_EQ(statistics::new_task(&task, &p, &n, &cols, x, nullptr, mask, true, 1), 0);
  task->maximum = low;
  task->quantile_order_count = &count;
  task->quantile_orders = const_cast<double*>(&order);
  task->quantiles = quantiles;
  task->sorted_observations = sorted;
  task->sorted_observations_storage = &cols;
  task->median_absolute_deviation = deviations;
  EXPECT_EQ(raudSSCompute(task, RAU_SS_MAX | RAU_SS_QUANTS | RAU_SS_SORTED_OBSERV | RAU_SS_MDAD,
                          kFast | kRadix),
            0);
  EXPECT_EQ(std::vector<double>(low, low + 2), (std::vector<double>{0, 6}));
  EXPECT_EQ(std::vector<double>(quantiles, quantiles + 2), (std::vector<double>{0, 5}));
  EXPECT_EQ(std::vector<double>(sorted, sorted + 6), (std::vector<double>{0, 4, 0, 5, 0, 6}));
  EXPECT_EQ(std::vector<double>(deviations, deviations + 2), (std::vector<double>{0, 1}));
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
  attach(~0u);
  EXPECT_EQ(task.compute(kEverything, kFast), 0);
  EXPECT_EQ(task.compute(RAU_SS_MEAN | RAU_SS_SUM, kMoments), -4029);
  attach(~set_of(kSum));
  EXPECT_EQ(task.compute(RAU_SS_MEAN | RAU_SS_SUM, kMoments), -4074);
}

TEST_F(MomentsNeeds, OneMethodOrConversions) {
  attach(~0u);
  for (uint32_t bits = 0; bits < 32; ++bits) {
    const uint32_t known[] = {kFast, kOnePass, kUserMean, kCovariances, kMoments};
    uint32_t method = kRadix | 0x4;  // of others
    int passes = 0;
    for (uint32_t k = 0; k < 5; ++k) {
      if ((bits >> k & 1) == 0) continue;
      method |= known[k];
      passes += k < 3;
    }
    const bool converts = passes == 0 && (method & (kCovariances | kMoments)) != 0;
    std::fill_n(task.x.begin(), 15, 4.0);
    results[kMean][0] = 2;
    results[kSum][0] = 15;
    EXPECT_EQ(task.compute(RAU_SS_MEAN, method), passes == 1 || converts ? 0 : -4029) << method;
    const bool user = (method & kUserMean) != 0;
    EXPECT_EQ(results[kMean][0], converts ? 3 : passes == 1 && !user ? 4 : 2) << method;
  }
}

TEST_F(MomentsNeeds, DataAndStorage) {
  SsTask& handle = *task.handle;
  attach(~0u);
  const auto compute = [&](uint32_t method) {
    return task.compute(RAU_SS_COV | RAU_SS_STREAM_QUANTS, method);  // past the frame's checks
  };
  for (const uint32_t method : {kFast, kOnePass, kUserMean}) {
    const SsTask whole = handle;
    const int32_t none = 4, zero = 0;
    handle.covariance_storage = nullptr;
    EXPECT_EQ(compute(method), -4044);
    handle.observation_storage = &none;
    EXPECT_EQ(compute(method), -4003);
    handle.observation_storage = nullptr;
    EXPECT_EQ(compute(method), -4044);
    handle.observations = nullptr;
    EXPECT_EQ(compute(method), -4032);
    handle.observation_count = &zero;
    EXPECT_EQ(compute(method), -4002);
    handle.observation_count = nullptr;
    EXPECT_EQ(compute(method), -4002);
    handle.mean = nullptr;
    EXPECT_EQ(compute(method), -4006);
    handle = whole;
  }
  // Conversions: the weight comes from the accumulated weights, or is the number of observations.
  double weight[2] = {3, 3};
  results[kCrossProduct][0] = 8;
  const auto convert = [&] {
    const int32_t status = compute(kCovariances);
    return status == -4069 || status == -4029 ? results[kCovariance][0] : status;
  };
  handle.observations = nullptr;
  handle.observation_storage = nullptr;
  EXPECT_EQ(convert(), 2);
  handle.weights = weight;
  EXPECT_EQ(convert(), -4020);
  handle.accumulated_weight = weight;
  handle.observation_count = nullptr;
  EXPECT_EQ(convert(), 4);
  handle.cross_product_storage = nullptr;
  EXPECT_EQ(convert(), -4044);
  handle.weights = handle.accumulated_weight = nullptr;
  EXPECT_EQ(convert(), -4020);
}

// ---- Absolute deviations ----

template <class Real>
long double median_of(std::vector<Real> x) {
  std::sort(x.begin(), x.end());
  const size_t n = x.size();
  return (static_cast<long double>(x[(n - 1) / 2]) + x[n / 2]) / 2;
}

TEST(AbsoluteDeviations, ByDefinition) {
  for_all_variants([](auto zero, bool rows) {
    using Real = decltype(zero);
    for (const int32_t p : {1, 4}) {
      for (const int32_t n : {1, 2, 9, 1000}) {
        for (const bool weighted : {false, true}) {
          for (const bool means_given : {false, true}) {
            Task<Real> task(p, n, rows);
            task.fill(static_cast<unsigned>(n));
            if (p > 1) task.mask_some();
            const auto size = static_cast<size_t>(p);
            std::vector<Real> medians(size, -1), means(size, -1), given(size, 2);
            std::vector<Real> weights(static_cast<size_t>(n), 1);
            if (weighted) {
              for (size_t i = 0; i < weights.size(); ++i) weights[i] = static_cast<Real>(1 + i % 3);
              task.edit(RAU_SS_ED_WEIGHTS, weights.data());
            }
            if (means_given) task.edit(RAU_SS_ED_MEAN, given.data());
            task.edit(RAU_SS_ED_MDAD, medians.data());
            task.edit(RAU_SS_ED_MNAD, means.data());
            const std::vector<Real> before = task.x;
            ASSERT_EQ(task.compute(RAU_SS_MDAD | RAU_SS_MNAD, kFast), 0);
            EXPECT_EQ(task.x, before);
            for (int32_t j = 0; j < p; ++j) {
              const auto at = static_cast<size_t>(j);
              if (!task.selects(j)) {
                EXPECT_EQ(medians[at], -1);
                EXPECT_EQ(means[at], -1);
                continue;
              }
              const std::vector<Real> x = task.variable(j);
              long double weight = 0, mean = 0, deviation = 0;
              for (size_t i = 0; i < x.size(); ++i) {
                weight += weights[i];
                mean += static_cast<long double>(weights[i]) * x[i];
              }
              mean = means_given ? 2 : mean / weight;
              std::vector<long double> distances;
              const long double median = median_of(x);
              for (size_t i = 0; i < x.size(); ++i) {
                deviation += weights[i] * std::abs(x[i] - mean);
                distances.push_back(std::abs(x[i] - median));
              }
              // Numbers up to 50: a few roundings of the data, a sum of n for the means.
              const long double unit = 50 * std::numeric_limits<Real>::epsilon();
              EXPECT_LE(std::abs(medians[at] - median_of(distances)), 2 * unit) << n;
              EXPECT_LE(std::abs(means[at] - deviation / weight), 20 * unit) << n;
            }
          }
        }
      }
    }
  });
}

TEST(AbsoluteDeviations, FaultsInOrder) {
  Task<double> task(3, 6, false);
  task.fill(1);
  std::vector<double> medians(3), means(3);
  constexpr uint64_t both = RAU_SS_MDAD | RAU_SS_MNAD;
  EXPECT_EQ(task.compute(both, 0), -4082);
  task.edit(RAU_SS_ED_MDAD, medians.data());
  EXPECT_EQ(task.compute(both, kOnePass), -4029);
  EXPECT_EQ(task.compute(both, kFast), -4083);
  EXPECT_EQ(medians, std::vector<double>(3));  // nothing before all is there
  EXPECT_EQ(task.compute(RAU_SS_MNAD, 0), -4083);
  task.edit(RAU_SS_ED_MNAD, means.data());
  EXPECT_EQ(task.compute(RAU_SS_MNAD, 0), -4029);

  task.mask_some();
  const std::vector<double> before = task.x;
  const auto call = [&] { return task.compute(both, kFast); };
  const auto unchanged = [&] { EXPECT_EQ(task.x, before); };
  EXPECT_GE(fail_each_allocation(-4000, call, unchanged), 2);
}

}  // namespace
