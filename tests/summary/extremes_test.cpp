#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "tests/summary/task_fixture.h"
#include "tests/support/failing_allocator.h"

namespace {

using namespace orba::test;

constexpr uint64_t kBoth = RAU_SS_MIN | RAU_SS_MAX;

// Lengths around the rounds of the kernels, dimensions around their ways of walking columns.
TEST(Extremes, OfBlocksEqualThoseOfTheWhole) {
  for_all_variants([](auto zero, bool rows) {
    using Real = decltype(zero);
    for (const int32_t p : {1, 2, 3, 5, 17, 64, 65, 130}) {
      for (const int32_t n : {1, 2, 7, 8, 31, 64, 67, 203}) {
        Task<Real> task(p, n, rows);
        std::vector<Real> low(static_cast<size_t>(p)), high(low);
        const Real untouched = 1000;
        for (size_t j = 0; j < low.size(); ++j) {
          low[j] = std::numeric_limits<Real>::infinity();
          high[j] = -low[j];
        }
        if (p > 2) {
          task.mask_some();
          low[1] = high[1] = untouched;
        }
        task.edit(RAU_SS_ED_MIN, low.data());
        task.edit(RAU_SS_ED_MAX, high.data());
        std::vector<Real> expected_low = low, expected_high = high;
        for (unsigned block = 0; block < 3; ++block) {
          task.fill(block + static_cast<unsigned>(17 * n + p));
          for (int32_t j = 0; j < p; ++j) {
            if (!task.selects(j)) continue;
            const std::vector<Real> x = task.variable(j);
            auto& l = expected_low[static_cast<size_t>(j)];
            auto& h = expected_high[static_cast<size_t>(j)];
            l = std::min(l, *std::min_element(x.begin(), x.end()));
            h = std::max(h, *std::max_element(x.begin(), x.end()));
          }
          ASSERT_EQ(task.compute(kBoth, block % 2 == 0 ? RAU_SS_METHOD_FAST : RAU_SS_METHOD_1PASS),
                    0);
          ASSERT_EQ(low, expected_low) << p << ' ' << n;
          ASSERT_EQ(high, expected_high) << p << ' ' << n;
        }
      }
    }
  });
}

TEST(Extremes, OneOfThemAndNoNumbers) {
  for_all_variants([](auto zero, bool rows) {
    using Real = decltype(zero);
    for (const int32_t p : {1, 3}) {
      Task<Real> task(p, 100, rows);
      std::fill(task.x.begin(), task.x.end(), std::numeric_limits<Real>::quiet_NaN());
      const Real infinity = std::numeric_limits<Real>::infinity();
      const auto all = [p](Real value) { return std::vector<Real>(static_cast<size_t>(p), value); };
      std::vector<Real> low = all(infinity), high = all(-infinity);
      task.edit(RAU_SS_ED_MIN, low.data());
      task.edit(RAU_SS_ED_MAX, high.data());
      EXPECT_EQ(task.compute(kBoth, RAU_SS_METHOD_FAST), 0);
      EXPECT_EQ(low, all(infinity));
      EXPECT_EQ(high, all(-infinity));
      for (int32_t j = 0; j < p; ++j) {
        task.at(j, 37 + j) = -1;
        task.at(j, 99) = 9;
      }
      EXPECT_EQ(task.compute(RAU_SS_MIN, RAU_SS_METHOD_FAST), 0);
      EXPECT_EQ(low, all(-1));
      EXPECT_EQ(high, all(-infinity));
      EXPECT_EQ(task.compute(RAU_SS_MAX, RAU_SS_METHOD_FAST), 0);
      EXPECT_EQ(high, all(9));
    }
  });
}

TEST(Extremes, Faults) {
  Task<double> task(2, 3, false);
  double low[] = {1, 2}, high[] = {3, 4};
  const uint32_t none = RAU_SS_METHOD_RADIX;
  EXPECT_EQ(task.compute(kBoth, none), -4015);
  task.edit(RAU_SS_ED_MIN, low);
  EXPECT_EQ(task.compute(kBoth, none), -4016);
  EXPECT_EQ(task.compute(RAU_SS_MIN, none), -4029);
  task.edit(RAU_SS_ED_MAX, high);
  EXPECT_EQ(task.compute(kBoth, none), -4029);
  const auto call = [&] { return task.compute(kBoth, RAU_SS_METHOD_FAST); };
  const auto unchanged = [&] { EXPECT_TRUE(low[0] == 1 && low[1] == 2 && high[1] == 4); };
  EXPECT_EQ(fail_each_allocation(-4000, call, unchanged), 1);
  EXPECT_EQ(low[0], 0);
}

}  // namespace
