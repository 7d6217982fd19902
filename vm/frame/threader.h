// Between a wrapper and a kernel: runs the kernel over the whole vector.
#pragma once

#include "vm/frame/rows.h"

namespace orba::vm {

template <class Kernel, class... Args>
inline void run_threaded(KamKernel kernel, float hint, int32_t n, Args... args) {
  (void)hint;
  reinterpret_cast<Kernel*>(kernel)(n, args...);
}

}  // namespace orba::vm
