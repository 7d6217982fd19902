// The floating-point state of a parallel region. The runtime's threads have one of their own; here
// they compute under that of the caller (rounding, denormals, precision, traps), so that no result
// depends on how many they are, and the exceptions that they raise become the caller's, as in a call
// on one thread.
#pragma once

#include <stdint.h>

#include <atomic>

namespace orba::services {

// x87 environment as fnstenv stores it in 64-bit mode.
struct X87Environment {
  uint32_t control;  // 16 bits, the rest reserved; so too the next two
  uint32_t status;
  uint32_t tag;
  uint32_t instruction_pointer[2];
  uint32_t data_pointer[2];
};
static_assert(sizeof(X87Environment) == 28);

// The exception flags, in the x87 status word as in MXCSR.
inline constexpr uint32_t kFloatExceptions = 0x3F;

struct FloatState {
  uint32_t mxcsr;
  X87Environment x87;

  static FloatState of_this_thread() noexcept;
  void load() const noexcept;
};

// On the calling thread, around the region.
class RegionFloatState {
 public:
  RegionFloatState() noexcept : caller_(FloatState::of_this_thread()) {}
  ~RegionFloatState();
  RegionFloatState(const RegionFloatState&) = delete;
  RegionFloatState& operator=(const RegionFloatState&) = delete;

 private:
  friend class ThreadFloatState;
  const FloatState caller_;
  std::atomic<uint32_t> raised_sse_{0};
  std::atomic<uint32_t> raised_x87_{0};
};

// In the region, on each of its threads, around the work.
class ThreadFloatState {
 public:
  explicit ThreadFloatState(RegionFloatState& region) noexcept;
  ~ThreadFloatState();  // gives the thread its own state back
  ThreadFloatState(const ThreadFloatState&) = delete;
  ThreadFloatState& operator=(const ThreadFloatState&) = delete;

 private:
  RegionFloatState& region_;
  const FloatState own_;
};

}  // namespace orba::services
