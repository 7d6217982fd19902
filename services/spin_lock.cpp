#include "services/spin_lock.h"

#include "services/platform/platform.h"

namespace orba::services {

bool SpinLock::try_lock() noexcept {
  // The plain read first keeps waiting threads from fighting for the cache line.
  uint32_t free = 0;
  return word_.load(std::memory_order_relaxed) == 0 &&
         word_.compare_exchange_strong(free, 1, std::memory_order_acquire,
                                       std::memory_order_relaxed);
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

}  // namespace orba::services
