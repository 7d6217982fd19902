// Estimates by the order of observations, and deviations from the middle.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>

#include "statistics/summary/task.h"
#include "tests/summary/task_fixture.h"
#include "tests/support/failing_allocator.h"

namespace {

using namespace orba::test;

constexpr uint32_t kMethod = RAU_SS_METHOD_FAST | RAU_SS_METHOD_RADIX;
constexpr uint64_t kQuantiles = RAU_SS_QUANTS, kSorted = RAU_SS_ORDER_STATS,
                   kDeviations = RAU_SS_MDAD | RAU_SS_MNAD;

// The definition, in extended precision over sorted numbers.
template <class Real>
long double quantile(const std::vector<Real>& sorted, long double order) {
  const long double place = order * (sorted.size() - 1);
  const auto k = static_cast<size_t>(place);
  const long double f = place - static_cast<long double>(k);
  if (f == 0) return sorted[k];
  return (1 - f) * sorted[k] + f * sorted[k + 1];
}

// Rounding of the place h is what the neighbouring values differ by times n units; that of the
// interpolation is a unit of the larger.
template <class Real>
long double tolerance(const std::vector<Real>& sorted) {
  const long double low = sorted.front(), high = sorted.back();
  return 2 * std::max(std::abs(low), std::abs(high)) * std::numeric_limits<Real>::epsilon() +
         (high - low) * static_cast<long double>(sorted.size()) * 0x1p-52L;
}

// A storage that holds what `at(j, i)` gives for selected variables and -99 for others.
template <class Real, class At>
void expect_stored(const std::vector<Real>& got, const Task<Real>& task, bool in_rows, At at) {
  for (int32_t j = 0; j < task.p; ++j) {
    for (int32_t i = 0; i < task.n; ++i) {
      const int64_t place = in_rows ? int64_t{j} * task.n + i : int64_t{i} * task.p + j;
      ASSERT_EQ(got[static_cast<size_t>(place)],
                task.selects(j) ? at(static_cast<size_t>(j), static_cast<size_t>(i)) : -99);
    }
  }
}

template <class Real>
std::vector<std::vector<Real>> sorted_variables(Task<Real>& task) {
  std::vector<std::vector<Real>> sorted;
  for (int32_t j = 0; j < task.p; ++j) {
    sorted.push_back(task.variable(j));
    std::sort(sorted.back().begin(), sorted.back().end());
  }
  return sorted;
}

// All at once, with the task's means and weights or without; then sorted in place.
TEST(Order, ByDefinition) {
  for_all_variants([](auto zero, bool rows) {
    using Real = decltype(zero);
    for (int variant = 0; variant < 28; ++variant) {
      const int32_t lengths[] = {1, 2, 3, 10, 257, 1000, 4000}, n = lengths[variant / 4];
      const int32_t p = n % 3 == 1 ? 1 : 4;
      const bool weighted = (variant & 1) != 0, means_given = (variant & 2) != 0;
      Task<Real> task(p, n, rows);
      task.fill(static_cast<unsigned>(n));
      if (p > 1) task.mask_some();
      std::vector<Real> orders = {Real(0.5), 0,         1,          Real(0.25), Real(0.1),
                                  Real(0.9), Real(0.5), Real(0.01), Real(1) / 3};
      const auto count = static_cast<int32_t>(orders.size());
      std::vector<Real> selected(orders.size() * static_cast<size_t>(p), -99), full(selected),
          medians(4, -99), means(4, -99), given(4, 2), weights(task.x.size(), 1),
          statistics(task.x.size(), -99), sorted_x(statistics);
      for (size_t i = 0; weighted && i < weights.size(); ++i) weights[i] = Real(1 + i % 3);
      if (weighted) task.edit(RAU_SS_ED_WEIGHTS, weights.data());
      if (means_given) task.edit(RAU_SS_ED_MEAN, given.data());
      task.edit(RAU_SS_ED_MDAD, medians.data());
      task.edit(RAU_SS_ED_MNAD, means.data());
      task.edit(RAU_SS_ED_QUANT_ORDER_N, &count);
      task.edit(RAU_SS_ED_QUANT_ORDER, orders.data());
      task.edit(RAU_SS_ED_QUANT_QUANTILES, selected.data());
      ASSERT_EQ(task.compute(kQuantiles | kDeviations, kMethod), 0);

      // With the order statistics, in the other layout, quantiles come from a sort.
      const int32_t other = rows ? RAU_SS_MATRIX_STORAGE_COLS : RAU_SS_MATRIX_STORAGE_ROWS;
      task.edit(RAU_SS_ED_QUANT_QUANTILES, full.data());
      task.edit(RAU_SS_ED_ORDER_STATS, statistics.data());
      task.edit(RAU_SS_ED_ORDER_STATS_STORAGE, &other);
      task.edit(RAU_SS_ED_SORTED_OBSERV, sorted_x.data());
      task.edit(RAU_SS_ED_SORTED_OBSERV_STORAGE, weighted ? &task.storage : &other);
      const std::vector<Real> before = task.x;
      ASSERT_EQ(task.compute(kQuantiles | kSorted | RAU_SS_SORTED_OBSERV, kMethod), 0);
      EXPECT_EQ(full, selected);
      EXPECT_EQ(task.x, before);

      const auto sorted = sorted_variables(task);
      const auto expected = [&](size_t j, size_t i) { return sorted[j][i]; };
      expect_stored(statistics, task, !rows, expected);
      expect_stored(sorted_x, task, weighted ? rows : !rows, expected);
      for (size_t e = 0; e < selected.size(); ++e) {
        const size_t j = e / orders.size();
        const Real order = orders[e % orders.size()];
        const bool out = !task.selects(static_cast<int32_t>(j)), exact = order == 0 || order == 1;
        EXPECT_LE(std::abs(selected[e] - (out ? -99 : quantile(sorted[j], order))),
                  out || exact || n == 1 ? 0 : tolerance(sorted[j]))
            << "n " << n << ", order " << order;
      }
      for (size_t j = 0; j < sorted.size(); ++j) {
        if (!task.selects(static_cast<int32_t>(j))) {
          EXPECT_TRUE(medians[j] == -99 && means[j] == -99);
          continue;
        }
        const std::vector<Real> x = task.variable(static_cast<int32_t>(j));
        const long double median = quantile(sorted[j], 0.5L), none = 0,
                          weight = std::accumulate(weights.begin(), weights.begin() + n, none),
                          sum = std::inner_product(x.begin(), x.end(), weights.begin(), none),
                          mean = means_given ? 2 : sum / weight;
        long double deviation = 0;
        std::vector<long double> distances;
        for (size_t i = 0; i < x.size(); ++i) {
          deviation += weights[i] * std::abs(x[i] - mean);
          distances.push_back(std::abs(x[i] - median));
        }
        std::sort(distances.begin(), distances.end());
        // Numbers up to 50: a few roundings of the data, a sum of n for the means.
        const long double unit = 50 * std::numeric_limits<Real>::epsilon();
        EXPECT_LE(std::abs(medians[j] - quantile(distances, 0.5L)), 2 * unit) << n;
        EXPECT_LE(std::abs(means[j] - deviation / weight), 20 * unit) << n;
      }
      task.edit(RAU_SS_ED_SORTED_OBSERV, task.x.data());
      task.edit(RAU_SS_ED_SORTED_OBSERV_STORAGE, &task.storage);
      task.handle->indices = nullptr;
      task.mask.clear();
      ASSERT_EQ(task.compute(RAU_SS_SORTED_OBSERV, kMethod), 0);
      expect_stored(task.x, task, rows, expected);
    }
  });
}

// An order that is none gives none; a quantile that falls on an observation is that one, whatever
// its neighbour.
TEST(Order, SpecialOrdersAndValues) {
  const double infinity = std::numeric_limits<double>::infinity();
  Task<double> task(1, 5, true);
  task.x = {infinity, 1, -infinity, 2, 3};
  std::vector<double> orders = {0.25, 0.5, 0.75, 1, 0.9, 0.1, std::nan("")}, results(7, 8);
  const int32_t count = 7;
  task.edit(RAU_SS_ED_QUANT_ORDER_N, &count);
  task.edit(RAU_SS_ED_QUANT_ORDER, orders.data());
  task.edit(RAU_SS_ED_QUANT_QUANTILES, results.data());
  ASSERT_EQ(task.compute(kQuantiles, RAU_SS_METHOD_FAST), 0);
  EXPECT_TRUE(std::isnan(results.back()));
  results.pop_back();
  EXPECT_EQ(results, (std::vector<double>{1, 2, 3, infinity, infinity, -infinity}));
}

// Lengths around the rounds of the kernels, dimensions around their ways of walking columns; the
// first block without numbers but for a few.
TEST(Order, ExtremesOfBlocks) {
  for_all_variants([](auto zero, bool rows) {
    using Real = decltype(zero);
    for (const int32_t p : {1, 2, 3, 5, 17, 64, 65, 130}) {
      for (const int32_t n : {1, 2, 7, 8, 31, 64, 67, 203}) {
        Task<Real> task(p, n, rows);
        const Real infinity = std::numeric_limits<Real>::infinity(), untouched = 1000;
        std::vector<Real> low(static_cast<size_t>(p), infinity), high(low.size(), -infinity);
        if (p > 2) {
          task.mask_some();
          low[1] = high[1] = untouched;
        }
        task.edit(RAU_SS_ED_MIN, low.data());
        task.edit(RAU_SS_ED_MAX, high.data());
        std::vector<Real> expected_low = low, expected_high = high;
        for (unsigned block = 0; block < 4; ++block) {
          task.fill(block + static_cast<unsigned>(17 * n + p));
          for (int32_t i = 0; i < n * p && block < 2; ++i) {
            if (block == 0 || i % 5 != 3) task.x[static_cast<size_t>(i)] = std::nanf("");
          }
          const uint64_t asked = block == 2 ? RAU_SS_MIN : RAU_SS_MIN | RAU_SS_MAX;
          for (int32_t j = 0; j < p; ++j) {
            if (!task.selects(j)) continue;
            for (const Real x : task.variable(j)) {
              auto &l = expected_low[static_cast<size_t>(j)],
                   &h = expected_high[static_cast<size_t>(j)];
              if (x < l) l = x;
              if (x > h && block != 2) h = x;
            }
          }
          ASSERT_EQ(task.compute(asked, block % 2 == 0 ? RAU_SS_METHOD_FAST : RAU_SS_METHOD_1PASS),
                    0);
          ASSERT_EQ(low, expected_low) << p << ' ' << n;
          ASSERT_EQ(high, expected_high) << p << ' ' << n;
        }
      }
    }
  });
}

// What is missing or wrong speaks in turn, and what it takes to go on.
using Step = std::pair<int32_t, std::function<void()>>;
void climb(Task<double>& task, uint64_t estimates, const std::vector<Step>& steps) {
  for (const auto& [status, mend] : steps) {
    EXPECT_EQ(task.compute(estimates, RAU_SS_METHOD_1PASS), status);
    if (mend) mend();
  }
}

TEST(Order, FaultsInOrder) {
  Task<double> task(2, 6, false);
  double results[4], statistics[12], orders[2] = {0.5, 1.5}, medians[2] = {}, means[2];
  int32_t count = -1, storage = 1;
  const auto set = [&](int32_t id, auto* to) { return [=, &task] { task.edit(id, to); }; };
  climb(task, RAU_SS_MIN | RAU_SS_MAX | kSorted,
        {{-4015, set(RAU_SS_ED_MIN, medians)}, {-4016, set(RAU_SS_ED_MAX, medians)}, {-4024, {}}});
  EXPECT_EQ(task.compute(RAU_SS_MIN, RAU_SS_METHOD_RADIX), -4029);
  climb(task, kQuantiles | kSorted,
        {{-4023, set(RAU_SS_ED_QUANT_QUANTILES, results)},
         {-4021, set(RAU_SS_ED_QUANT_ORDER, orders)},
         {-4022, set(RAU_SS_ED_QUANT_ORDER_N, &count)},
         {-4022, [&] { count = 0; }},
         {-4024, [&] { count = 2; }},
         {-4022, [&] { orders[1] = -0.5; }},
         {-4022, [&] { orders[1] = 0.75; }},
         {-4024, set(RAU_SS_ED_ORDER_STATS, statistics)},
         {-4044, set(RAU_SS_ED_ORDER_STATS_STORAGE, &storage)},
         {-4003, [&] { storage = RAU_SS_MATRIX_STORAGE_ROWS; }},
         {-4029, {}}});
  climb(task, kQuantiles, {{-4029, {}}});
  climb(task, kDeviations, {{-4082, set(RAU_SS_ED_MDAD, medians)}, {-4029, {}}});
  EXPECT_EQ(task.compute(kDeviations, kMethod), -4083);
  EXPECT_EQ(medians[0], 0);  // nothing before all is there
  climb(task, RAU_SS_MNAD, {{-4083, set(RAU_SS_ED_MNAD, means)}, {-4029, {}}});
  const int32_t rows = RAU_SS_MATRIX_STORAGE_ROWS, cols = RAU_SS_MATRIX_STORAGE_COLS, none = 4;
  task.fill(1);
  climb(task, RAU_SS_SORTED_OBSERV,
        {{-4084, set(RAU_SS_ED_SORTED_OBSERV, task.x.data())},
         {-4044, set(RAU_SS_ED_SORTED_OBSERV_STORAGE, &rows)},
         {-4044, [&] { task.mask_some(); }},  // in place from columns to rows
         {-4044, set(RAU_SS_ED_SORTED_OBSERV_STORAGE, &cols)},
         {-4085, set(RAU_SS_ED_SORTED_OBSERV, statistics)},
         {-4029, set(RAU_SS_ED_SORTED_OBSERV_STORAGE, &none)},
         {-4003, set(RAU_SS_ED_SORTED_OBSERV_STORAGE, &cols)}});

  // Lists of variables, rows of scratch, and for quantiles by themselves ranks.
  const std::vector<double> before = task.x;
  task.edit(RAU_SS_ED_MIN, results);
  const std::pair<uint64_t, int64_t> allocations[] = {{RAU_SS_MIN, 1},
                                                      {kQuantiles | kSorted, 2},
                                                      {kQuantiles, 3},
                                                      {RAU_SS_SORTED_OBSERV, 2},
                                                      {RAU_SS_MDAD, 2}};
  for (const auto& [estimates, number] : allocations) {
    const auto call = [&, asked = estimates] { return task.compute(asked, kMethod); };
    EXPECT_EQ(fail_each_allocation(-4000, call, [&] { EXPECT_EQ(task.x, before); }), number);
  }
}

}  // namespace
