#include "services/spin_lock.h"

#include "services/platform/platform.h"

namespace orba::services {
namespace {

constinit std::atomic<uint32_t> generation{1};  // forks that led to this process, from 1 on
constinit std::atomic<int32_t> held{0};         // locks that are held now
constinit std::atomic<int32_t> forks{0};        // in progress: no lock is given out

}  // namespace

bool SpinLock::try_lock() noexcept {
  // The plain reads first keep waiting threads from fighting for the cache line.
  const uint32_t taken = generation.load(std::memory_order_relaxed);
  uint32_t seen = word_.load(std::memory_order_relaxed);
  if (seen == taken || forks.load(std::memory_order_relaxed) != 0) return false;
  // A fork announces itself and then counts; this counts and then looks. One sees the other.
  held.fetch_add(1);
  if (forks.load() == 0 && word_.compare_exchange_strong(seen, taken, std::memory_order_acquire,
                                                         std::memory_order_relaxed)) {
    return true;
  }
  held.fetch_sub(1);
  return false;
}

void SpinLock::lock() noexcept {
  // Long enough for any holder that runs, short enough when the holder lost its processor.
  constexpr int kFailuresBeforeYield = 5000;
  for (int failures = 0; !try_lock();) {
    if (failures < kFailuresBeforeYield) {
      ++failures;
    } else {
      platform::yield_processor();
    }
  }
}

void SpinLock::unlock() noexcept {
  word_.store(0, std::memory_order_release);
  held.fetch_sub(1, std::memory_order_release);
}

void hold_locks_for_fork() noexcept {
  // A holder needs microseconds, or a turn on its processor.
  const uint64_t patience = platform::clock_frequency() / 2;
  forks.fetch_add(1);
  const uint64_t start = platform::clock_count();
  while (held.load() > 0 && platform::clock_count() - start < patience) platform::yield_processor();
}

void release_locks_after_fork() noexcept { forks.fetch_sub(1); }

void release_locks_in_forked_child() noexcept {
  generation.fetch_add(1, std::memory_order_relaxed);
  held.store(0);
  forks.store(0);
}

}  // namespace orba::services
