#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "tests/summary/task_fixture.h"
#include "tests/support/failing_allocator.h"

namespace {

using namespace orba::test;

// The definition, in extended precision over sorted numbers.
template <class Real>
long double quantile(const std::vector<Real>& sorted, Real order) {
  const long double place = static_cast<long double>(order) * (sorted.size() - 1);
  const auto k = static_cast<size_t>(place);
  const long double f = place - static_cast<long double>(k);
  if (f == 0) return sorted[k];
  return (1 - f) * sorted[k] + f * sorted[k + 1];
}

// Rounding of the place h is what the neighbouring values differ by times n units; that of the
// interpolation is a unit of the larger.
template <class Real>
long double tolerance(const std::vector<Real>& sorted) {
  const long double range = static_cast<long double>(sorted.back()) - sorted.front();
  const long double largest = std::max(std::abs(static_cast<long double>(sorted.back())),
                                       std::abs(static_cast<long double>(sorted.front())));
  return 2 * largest * std::numeric_limits<Real>::epsilon() +
         range * static_cast<long double>(sorted.size()) * 0x1p-52L;
}

constexpr uint64_t kQuantiles = RAU_SS_QUANTS, kSorted = RAU_SS_ORDER_STATS;

TEST(Quantiles, ByDefinition) {
  for_all_variants([](auto zero, bool rows) {
    using Real = decltype(zero);
    for (const int32_t p : {1, 4}) {
      for (const int32_t n : {1, 2, 3, 10, 257, 4000}) {
        Task<Real> task(p, n, rows);
        task.fill(static_cast<unsigned>(n));
        if (p > 1) task.mask_some();
        const std::vector<Real> orders = {Real(0.5), 0,         1,          Real(0.25), Real(0.1),
                                          Real(0.9), Real(0.5), Real(0.01), Real(1) / 3};
        const auto count = static_cast<int32_t>(orders.size());
        std::vector<Real> selected(orders.size() * static_cast<size_t>(p), -99), full(selected);
        std::vector<Real> statistics(task.x.size(), -99);
        task.edit(RAU_SS_ED_QUANT_ORDER_N, &count);
        task.edit(RAU_SS_ED_QUANT_ORDER, const_cast<Real*>(orders.data()));
        task.edit(RAU_SS_ED_QUANT_QUANTILES, selected.data());
        ASSERT_EQ(task.compute(kQuantiles, RAU_SS_METHOD_FAST), 0);

        // With the order statistics, in the other layout, quantiles come from a sort.
        const int32_t other = rows ? RAU_SS_MATRIX_STORAGE_COLS : RAU_SS_MATRIX_STORAGE_ROWS;
        task.edit(RAU_SS_ED_QUANT_QUANTILES, full.data());
        task.edit(RAU_SS_ED_ORDER_STATS, statistics.data());
        task.edit(RAU_SS_ED_ORDER_STATS_STORAGE, &other);
        const std::vector<Real> before = task.x;
        ASSERT_EQ(task.compute(kQuantiles | kSorted, RAU_SS_METHOD_FAST), 0);
        EXPECT_EQ(full, selected);
        EXPECT_EQ(task.x, before);

        for (int32_t j = 0; j < p; ++j) {
          std::vector<Real> sorted = task.variable(j);
          std::sort(sorted.begin(), sorted.end());
          for (int32_t k = 0; k < count; ++k) {
            const Real got = selected[static_cast<size_t>(j * count + k)];
            if (!task.selects(j)) {
              EXPECT_EQ(got, -99);
              continue;
            }
            const Real order = orders[static_cast<size_t>(k)];
            EXPECT_LE(std::abs(got - quantile(sorted, order)), tolerance(sorted))
                << "n " << n << ", order " << order;
            if (order == 0 || n == 1) {
              EXPECT_EQ(got, sorted.front());
            }
            if (order == 1) {
              EXPECT_EQ(got, sorted.back());
            }
          }
          for (int32_t i = 0; i < n; ++i) {
            const int64_t at = rows ? int64_t{i} * p + j : int64_t{j} * n + i;
            ASSERT_EQ(statistics[static_cast<size_t>(at)],
                      task.selects(j) ? sorted[static_cast<size_t>(i)] : -99);
          }
        }
      }
    }
  });
}

TEST(Quantiles, SpecialOrdersAndValues) {
  const double infinity = std::numeric_limits<double>::infinity();
  Task<double> task(1, 5, true);
  task.x = {infinity, 1, -infinity, 2, 3};
  std::vector<double> orders = {std::nan(""), 0.25, 0.5, 0.75, 1, 0.9, 0.1}, results(7);
  int32_t count = 7;
  task.edit(RAU_SS_ED_QUANT_ORDER_N, &count);
  task.edit(RAU_SS_ED_QUANT_ORDER, orders.data());
  task.edit(RAU_SS_ED_QUANT_QUANTILES, results.data());
  ASSERT_EQ(task.compute(kQuantiles, RAU_SS_METHOD_FAST), 0);
  EXPECT_TRUE(std::isnan(results[0]));
  // A quantile that falls on an observation is that one, whatever its neighbour.
  EXPECT_EQ(std::vector<double>(results.begin() + 1, results.end()),
            (std::vector<double>{1, 2, 3, infinity, infinity, -infinity}));
  count = 0;
  results.assign(7, 8);
  EXPECT_EQ(task.compute(kQuantiles, RAU_SS_METHOD_FAST), 0);
  EXPECT_EQ(results, std::vector<double>(7, 8));
}

TEST(Quantiles, FaultsInOrder) {
  Task<float> task(2, 6, false);
  float results[4], statistics[12], orders[2] = {0.5f, 1.5f};
  int32_t count = -1, storage = 1;
  constexpr uint64_t all = kQuantiles | kSorted;
  EXPECT_EQ(task.compute(all, 0), -4023);
  task.edit(RAU_SS_ED_QUANT_QUANTILES, results);
  EXPECT_EQ(task.compute(all, 0), -4021);
  task.edit(RAU_SS_ED_QUANT_ORDER, orders);
  EXPECT_EQ(task.compute(all, 0), -4022);
  task.edit(RAU_SS_ED_QUANT_ORDER_N, &count);
  EXPECT_EQ(task.compute(all, 0), -4022);
  count = 2;
  EXPECT_EQ(task.compute(all, 0), -4022);
  orders[1] = -0.5f;
  EXPECT_EQ(task.compute(all, 0), -4022);
  orders[1] = 0.75f;
  EXPECT_EQ(task.compute(all, 0), -4024);
  task.edit(RAU_SS_ED_ORDER_STATS, statistics);
  EXPECT_EQ(task.compute(all, 0), -4044);
  task.edit(RAU_SS_ED_ORDER_STATS_STORAGE, &storage);
  EXPECT_EQ(task.compute(all, 0), -4003);
  storage = RAU_SS_MATRIX_STORAGE_ROWS;
  EXPECT_EQ(task.compute(all, RAU_SS_METHOD_1PASS), -4029);
  EXPECT_EQ(task.compute(kQuantiles, RAU_SS_METHOD_1PASS), -4029);

  task.mask_some();
  const std::vector<float> before = task.x;
  const auto unchanged = [&] { EXPECT_EQ(task.x, before); };
  const auto both = [&] { return task.compute(all, RAU_SS_METHOD_FAST); };
  EXPECT_EQ(fail_each_allocation(-4000, both, unchanged), 2);  // variables, rows
  const auto alone = [&] { return task.compute(kQuantiles, RAU_SS_METHOD_FAST); };
  EXPECT_EQ(fail_each_allocation(-4000, alone, unchanged), 3);  // ranks too
}

// ---- Sorted observations ----

TEST(SortedObservations, InEveryLayoutAndInPlace) {
  for_all_variants([](auto zero, bool rows) {
    using Real = decltype(zero);
    for (const int32_t p : {1, 4}) {
      for (const int32_t n : {1, 2, 100, 3000}) {
        for (const bool in_place : {false, true}) {
          for (const bool output_rows : {true, false}) {
            if (in_place && rows != output_rows) continue;
            Task<Real> task(p, n, rows);
            task.fill(static_cast<unsigned>(n));
            if (!in_place && p > 1) task.mask_some();
            const std::vector<Real> before = task.x;
            std::vector<std::vector<Real>> expected;
            for (int32_t j = 0; j < p; ++j) {
              expected.push_back(task.variable(j));
              std::sort(expected.back().begin(), expected.back().end());
            }
            std::vector<Real> separate(task.x.size(), -99);
            std::vector<Real>& output = in_place ? task.x : separate;
            const int32_t storage =
                output_rows ? RAU_SS_MATRIX_STORAGE_ROWS : RAU_SS_MATRIX_STORAGE_COLS;
            task.edit(RAU_SS_ED_SORTED_OBSERV, output.data());
            task.edit(RAU_SS_ED_SORTED_OBSERV_STORAGE, &storage);
            ASSERT_EQ(task.compute(RAU_SS_SORTED_OBSERV, RAU_SS_METHOD_RADIX), 0);
            if (!in_place) {
              EXPECT_EQ(task.x, before);
            }
            for (int32_t j = 0; j < p; ++j) {
              for (int32_t i = 0; i < n; ++i) {
                const int64_t at = output_rows ? int64_t{j} * n + i : int64_t{i} * p + j;
                ASSERT_EQ(output[static_cast<size_t>(at)],
                          task.selects(j) ? expected[static_cast<size_t>(j)][static_cast<size_t>(i)]
                                          : -99);
              }
            }
          }
        }
      }
    }
  });
}

TEST(SortedObservations, FaultsInOrder) {
  Task<double> task(2, 3, false);
  const int32_t rows = RAU_SS_MATRIX_STORAGE_ROWS, cols = RAU_SS_MATRIX_STORAGE_COLS, none = 4;
  double separate[6];
  const auto sort = [&](uint32_t method) { return task.compute(RAU_SS_SORTED_OBSERV, method); };
  EXPECT_EQ(sort(0), -4084);
  task.edit(RAU_SS_ED_SORTED_OBSERV, task.x.data());
  EXPECT_EQ(sort(0), -4044);
  task.edit(RAU_SS_ED_SORTED_OBSERV_STORAGE, &rows);
  task.mask_some();
  EXPECT_EQ(sort(0), -4044);  // in place from columns to rows
  task.edit(RAU_SS_ED_SORTED_OBSERV_STORAGE, &cols);
  EXPECT_EQ(sort(0), -4085);
  task.edit(RAU_SS_ED_SORTED_OBSERV, separate);
  task.edit(RAU_SS_ED_SORTED_OBSERV_STORAGE, &none);
  EXPECT_EQ(sort(0), -4003);
  task.edit(RAU_SS_ED_SORTED_OBSERV_STORAGE, &cols);
  EXPECT_EQ(sort(RAU_SS_METHOD_FAST), -4029);
  const auto call = [&] { return sort(RAU_SS_METHOD_RADIX); };
  EXPECT_EQ(fail_each_allocation(-4000, call, [] {}), 2);
}

}  // namespace
