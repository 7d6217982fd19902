#include "services/threads/float_state.h"

#include <xmmintrin.h>

namespace orba::services {

FloatState FloatState::of_this_thread() noexcept {
  FloatState state;
  asm volatile("fnstenv %0" : "=m"(state.x87) : : "memory");
  asm volatile("fldcw %0" : : "m"(state.x87.control));  // fnstenv masks all exceptions
  state.mxcsr = _mm_getcsr();
  return state;
}

void FloatState::load() const noexcept {
  asm volatile("fldenv %0" : : "m"(x87) : "memory");
  _mm_setcsr(mxcsr);
}

ThreadFloatState::ThreadFloatState(RegionFloatState& region) noexcept
    : region_(region), own_(FloatState::of_this_thread()) {
  // The summary and busy bits of the status follow from the flags.
  constexpr uint32_t kFlagsAndSummary = kFloatExceptions | 0x8080;
  FloatState state = own_;
  state.mxcsr = region.caller_.mxcsr & ~kFloatExceptions;
  state.x87.control = region.caller_.x87.control;
  state.x87.status &= ~kFlagsAndSummary;
  state.load();
}

ThreadFloatState::~ThreadFloatState() {
  const FloatState state = FloatState::of_this_thread();
  region_.raised_sse_.fetch_or(state.mxcsr & kFloatExceptions, std::memory_order_relaxed);
  region_.raised_x87_.fetch_or(state.x87.status & kFloatExceptions, std::memory_order_relaxed);
  own_.load();
}

RegionFloatState::~RegionFloatState() {
  FloatState state = FloatState::of_this_thread();
  state.mxcsr |= raised_sse_.load(std::memory_order_relaxed);
  state.x87.status |= raised_x87_.load(std::memory_order_relaxed);
  state.load();
}

}  // namespace orba::services
