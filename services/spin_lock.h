// The library's one lock: a 32-bit word, 0 free. No fairness, no owner; nothing recursive takes it.
// Every once-only decision rests on it with a test before and after.
#pragma once

#include <stdint.h>

#include <atomic>

namespace orba::services {

class SpinLock {
 public:
  bool try_lock() noexcept;
  void lock() noexcept;  // after 5000 failed tries each further one yields the processor
  void unlock() noexcept { word_.store(0, std::memory_order_release); }

 private:
  std::atomic<uint32_t> word_{0};
};

class SpinGuard {
 public:
  explicit SpinGuard(SpinLock& lock) noexcept : lock_(lock) { lock_.lock(); }
  ~SpinGuard() { lock_.unlock(); }
  SpinGuard(const SpinGuard&) = delete;
  SpinGuard& operator=(const SpinGuard&) = delete;

 private:
  SpinLock& lock_;
};

}  // namespace orba::services
