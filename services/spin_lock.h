// The library's one lock: a 32-bit word, 0 free. No fairness, no owner; nothing recursive takes it,
// and nobody waits for files, streams or other threads while he holds one. Every once-only decision
// rests on it with a test before and after.
//
// A fork of the process waits until no lock is held, so the child finds all of them free and what
// they guard whole. It does not wait for ever (a signal handler may fork on top of a holder): what
// is held all the same counts as free in the child.
#pragma once

#include <stdint.h>

#include <atomic>

namespace orba::services {

class SpinLock {
 public:
  bool try_lock() noexcept;
  void lock() noexcept;  // after 5000 failed tries each further one yields the processor
  void unlock() noexcept;

 private:
  std::atomic<uint32_t> word_{0};  // held: the generation of the process
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

// For the platform layer: in the parent before and after a fork, and in the child.
void hold_locks_for_fork() noexcept;
void release_locks_after_fork() noexcept;
void release_locks_in_forked_child() noexcept;

}  // namespace orba::services
