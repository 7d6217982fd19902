// The floating-point environment around a kernel: what it sets at entry, what it gives back.
#pragma once

#include "vector/kernels/simd/simd.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Sets all exceptions masked, round to nearest, and denormal handling by the mode; at the end the
// caller's control bits return and the exceptions raised meanwhile stay visible as sticky bits.
class FloatEnvironment {
 public:
  ORBA_INLINE explicit FloatEnvironment(uint32_t mode) {
    // Vector code of class 5 never touches the x87 unit; its callouts may (see before_callout).
    if constexpr (kClass != 5) mask_x87();
    constexpr uint32_t control_bits = 0xffc0;
    const uint32_t wanted = (mode & 0x3c0000) == 0x280000 ? 0x9fc0 : 0x1f80;
    mxcsr_ = _mm_getcsr();
    if ((mxcsr_ & control_bits) != wanted) {
      set_mxcsr((mxcsr_ & ~control_bits) | wanted);
      mxcsr_changed_ = true;
    }
  }

  ORBA_INLINE ~FloatEnvironment() {
    if (x87_changed_) {
      const uint16_t control = x87_control_;
      asm volatile("fldcw %0" : : "m"(control));
    }
    if (mxcsr_changed_) set_mxcsr(mxcsr_ | (_mm_getcsr() & 0x3f));
  }

  FloatEnvironment(const FloatEnvironment&) = delete;
  FloatEnvironment& operator=(const FloatEnvironment&) = delete;

  // Before each callout. Nothing of the vector state is live here.
  ORBA_INLINE void before_callout() {
    if constexpr (kClass == 5) {
      if (!x87_looked_at_) mask_x87();
    }
#if ORBA_CLASS >= 3
    _mm256_zeroupper();
#endif
  }

 private:
  ORBA_INLINE void mask_x87() {
    constexpr uint16_t all_masked = 0x3f;
    x87_looked_at_ = true;
    uint16_t control;  // a local, so that the members can live in registers
    asm volatile("fnstcw %0" : "=m"(control));
    x87_control_ = control;
    if ((x87_control_ & all_masked) != all_masked) {
      const uint16_t masked = x87_control_ | all_masked;
      asm volatile("fnclex\n\tfldcw %0" : : "m"(masked));
      x87_changed_ = true;
    }
  }

  // The barrier keeps loads and stores of the kernel on their side of the change.
  ORBA_INLINE static void set_mxcsr(uint32_t value) {
    asm volatile("ldmxcsr %0" : : "m"(value) : "memory");
  }

  uint32_t mxcsr_;
  uint16_t x87_control_ = 0;
  bool x87_looked_at_ = false;
  bool x87_changed_ = false;
  bool mxcsr_changed_ = false;
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
