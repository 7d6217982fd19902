// Observations of a task as the drivers read them.
#pragma once

#include <string.h>

#include <algorithm>
#include <atomic>

#include "statistics/frame/threading.h"
#include "statistics/summary/scratch.h"
#include "statistics/summary/task.h"

namespace orba::statistics {

// Of a storage code; a driver looks at its bits, rows first.
inline bool known_storage(int64_t code) noexcept {
  return (code & (RAU_SS_MATRIX_STORAGE_ROWS | RAU_SS_MATRIX_STORAGE_COLS)) != 0;
}
inline bool in_rows(int64_t code) noexcept { return (code & RAU_SS_MATRIX_STORAGE_ROWS) != 0; }

template <class Real>
struct Observations {
  const Real* x;
  int64_t p, n;
  bool rows;  // element (variable j, observation i) at j*n + i, else i*p + j

  bool contiguous() const noexcept { return rows || p == 1; }
  const Real* variable(int64_t j) const noexcept { return rows ? x + j * n : x + j; }
  void copy(int64_t j, Real* to) const noexcept {
    const Real* from = variable(j);
    if (contiguous()) {
      memcpy(to, from, static_cast<size_t>(n) * sizeof(Real));
    } else {
      for (int64_t i = 0; i < n; ++i) to[i] = from[i * p];
    }
  }
};

// What a driver checks of them, for the frame lets calls pass that ask for partial estimates too.
template <class Real>
int32_t read_observations(const SsTask& task, Observations<Real>* observations) noexcept {
  if (task.dimension == nullptr || task.integer(task.dimension) < 1) return RAU_SS_ERROR_BAD_DIMEN;
  if (task.observation_count == nullptr || task.integer(task.observation_count) < 1) {
    return RAU_SS_ERROR_BAD_OBSERV_N;
  }
  if (task.observations == nullptr) return RAU_SS_ERROR_BAD_OBSERV;
  if (task.observation_storage == nullptr) return RAU_SS_ERROR_BAD_STORAGE_ADDR;
  const int64_t storage = task.integer(task.observation_storage);
  if (!known_storage(storage)) return RAU_SS_ERROR_STORAGE_NOT_SUPPORTED;
  *observations = {static_cast<const Real*>(task.observations), task.integer(task.dimension),
                   task.integer(task.observation_count), in_rows(storage)};
  return RAU_STATUS_OK;
}

// A copy of a variable in a storage of all p of them.
template <class Real>
void store_variable(const Real* from, int64_t j, Real* to, int64_t p, int64_t n,
                    bool rows) noexcept {
  if (rows || p == 1) {
    memcpy(to + j * n, from, static_cast<size_t>(n) * sizeof(Real));
  } else {
    for (int64_t i = 0; i < n; ++i) to[i * p + j] = from[i];
  }
}

// Calls work(j, row) for each selected variable j, on as many threads as may run and as `budget`
// bytes hold rows of `length` > 0 elements; a thread uses its row for one variable after the other.
// A negative status of a call becomes the result.
template <class Real, class Work>
int32_t for_each_variable(const SsTask& task, int64_t p, int64_t length, int64_t budget,
                          const Work& work) noexcept {
  int64_t selected = 0;
  for (int64_t j = 0; j < p; ++j) selected += task.selects(j);
  if (selected == 0) return RAU_STATUS_OK;

  // Without a mask the list is the variables themselves.
  const Scratch<int64_t> list(task.indices != nullptr ? selected : 0);
  if (task.indices != nullptr) {
    if (!list) return RAU_SS_ERROR_MEM_FAILURE;
    for (int64_t j = 0, at = 0; j < p; ++j) {
      if (task.selects(j)) list.data()[at++] = j;
    }
  }

  int64_t row_bytes;
  if (__builtin_mul_overflow(length, sizeof(Real), &row_bytes)) return RAU_SS_ERROR_MEM_FAILURE;
  const int64_t threads = std::min(
      {int64_t{orba_rau_serv_thread_count()}, selected, std::max<int64_t>(budget / row_bytes, 1)});
  const Scratch<Real> rows(threads * length);
  if (!rows) return RAU_SS_ERROR_MEM_FAILURE;

  struct Context {
    const Work& work;
    const int64_t* list;
    Real* rows;
    int64_t length;
    std::atomic<int32_t> status;
  } context = {work, list.data(), rows.data(), length, RAU_STATUS_OK};
  const auto body = [](int64_t item, int32_t thread, int32_t, void* pointer) {
    auto& fork = *static_cast<Context*>(pointer);
    const int64_t j = fork.list != nullptr ? fork.list[item] : item;
    const int32_t status = fork.work(j, fork.rows + thread * fork.length);
    if (status < 0) fork.status.store(status, std::memory_order_relaxed);
  };
  orba_rau_serv_threader_for(selected, static_cast<int32_t>(threads), &context, body);
  return context.status.load(std::memory_order_relaxed);
}

}  // namespace orba::statistics
