// Exact quantiles and order statistics, a variable at a time: sorted when the order statistics are
// wanted, else put in order at the ranks of the quantiles alone.
#include "statistics/summary/quantiles.h"

#include "statistics/summary/observations.h"
#include "statistics/summary/task.h"

namespace orba::statistics {
namespace {

constexpr int64_t kScratchLimit = int64_t{1} << 30;  // bytes

template <class Real>
struct Orders {
  const Real* q = nullptr;
  int64_t count = 0;
  Real* results = nullptr;  // element (variable j, order k) at j*count + k
};

template <class Real>
int32_t read_orders(const SsTask& task, Orders<Real>* orders) noexcept {
  if (task.quantiles == nullptr) return RAU_SS_ERROR_BAD_QUANT;
  if (task.quantile_orders == nullptr) return RAU_SS_ERROR_BAD_QUANT_ORDER;
  if (task.quantile_order_count == nullptr) return RAU_SS_ERROR_BAD_QUANT_ORDER_N;
  *orders = {static_cast<const Real*>(task.quantile_orders),
             task.integer(task.quantile_order_count), static_cast<Real*>(task.quantiles)};
  if (orders->count < 0) return RAU_SS_ERROR_BAD_QUANT_ORDER_N;
  // NaN passes and has the quantile NaN.
  for (int64_t k = 0; k < orders->count; ++k) {
    if (orders->q[k] < 0 || orders->q[k] > 1) return RAU_SS_ERROR_BAD_QUANT_ORDER_N;
  }
  return RAU_STATUS_OK;
}

struct OrderStatistics {
  void* results = nullptr;
  bool rows = false;
};

int32_t read_order_statistics(const SsTask& task, OrderStatistics* statistics) noexcept {
  if (task.order_statistics == nullptr) return RAU_SS_ERROR_BAD_ORDER_STATS;
  if (task.order_statistics_storage == nullptr) return RAU_SS_ERROR_BAD_STORAGE_ADDR;
  const int64_t storage = task.integer(task.order_statistics_storage);
  if (!known_storage(storage)) return RAU_SS_ERROR_STORAGE_NOT_SUPPORTED;
  *statistics = {task.order_statistics, in_rows(storage)};
  return RAU_STATUS_OK;
}

}  // namespace

template <class Real>
int32_t compute_quantiles(SsTask& task, uint64_t estimates, uint32_t method) noexcept {
  Observations<Real> data;
  Orders<Real> orders;
  OrderStatistics sorted;
  if (const int32_t bad = read_observations(task, &data)) return bad;
  if ((estimates & RAU_SS_QUANTS) != 0) {
    if (const int32_t bad = read_orders(task, &orders)) return bad;
  }
  if ((estimates & RAU_SS_ORDER_STATS) != 0) {
    if (const int32_t bad = read_order_statistics(task, &sorted)) return bad;
  }
  if ((method & RAU_SS_METHOD_FAST) == 0) return RAU_SS_ERROR_METHOD_NOT_SUPPORTED;

  const bool select = sorted.results == nullptr;
  const Scratch<int64_t> ranks(select ? 2 * orders.count : 0);
  if (select) {
    if (orders.count == 0) return RAU_STATUS_OK;
    if (!ranks) return RAU_SS_ERROR_MEM_FAILURE;
    for (int64_t k = 0; k < orders.count; ++k) {
      const summary::QuantilePlace place(orders.q[k], data.n);
      ranks.data()[2 * k] = place.below;
      ranks.data()[2 * k + 1] = place.above;
    }
    std::sort(ranks.data(), ranks.data() + 2 * orders.count);
  }

  const auto work = [&](int64_t j, Real* row) noexcept {
    Real* scratch = row + data.n;
    data.copy(j, row);
    if (select) {
      summary::order_statistics_at(row, data.n, ranks.data(), 2 * orders.count, scratch);
    } else {
      summary::sort(row, data.n, scratch);
      store_variable(row, j, static_cast<Real*>(sorted.results), data.p, data.n, sorted.rows);
    }
    for (int64_t k = 0; k < orders.count; ++k) {
      orders.results[j * orders.count + k] = summary::QuantilePlace(orders.q[k], data.n).value(row);
    }
    return RAU_STATUS_OK;
  };
  return for_each_variable<Real>(task, data.p, 2 * data.n, kScratchLimit, work);
}

template int32_t compute_quantiles<float>(SsTask&, uint64_t, uint32_t) noexcept;
template int32_t compute_quantiles<double>(SsTask&, uint64_t, uint32_t) noexcept;

}  // namespace orba::statistics
