// Between a wrapper and a kernel: a threader runs the kernel over the whole vector, or over slices
// of it on several threads when the vector is long enough to pay for them.
//
// On a fork every thread gets the caller's mode, callback and floating-point control, and the caller
// the exceptions that they raise. The status that the call leaves behind is then that of some thread
// that met an error, else 0; errno is set on the thread that computed the element. A call that runs
// in the calling thread alone touches the status only for an error.
#pragma once

#include <stdint.h>

#include "vector/words/shapes.h"

namespace orba::vector {

#define ORBA_UNWRAP(...) __VA_ARGS__

// orba_kam_serv_threader_d_1i_1o(kernel, n, a, y, hint), ...: `hint` is the kernel's cost per
// element.
#define ORBA_THREADER(name, parameters, arguments)                                              \
  extern "C" void orba_kam_serv_threader_##name(void (*kernel)(int32_t ORBA_UNWRAP parameters), \
                                                int32_t n ORBA_UNWRAP parameters, float hint);
#include "vector/frame/threaders.def"
#undef ORBA_THREADER

// The threader of kernels with this signature.
template <class Kernel>
inline constexpr auto threader = nullptr;
#define ORBA_THREADER(name, parameters, arguments)                       \
  template <>                                                            \
  inline constexpr auto threader<void(int32_t ORBA_UNWRAP parameters)> = \
      &orba_kam_serv_threader_##name;
#include "vector/frame/threaders.def"
#undef ORBA_THREADER

#undef ORBA_UNWRAP

}  // namespace orba::vector
