// The anatomy of an exported vector function: checks, mode, kernel selection, hand-over.
#pragma once

#include <type_traits>

#include "services/detect/detect.h"
#include "services/parameter_reporter.h"
#include "vector/frame/rows.h"
#include "vector/frame/threader.h"
#include "vector/words/thread_words.h"

namespace orba::vector {

// Out of line: what a call does about a bad argument.
[[gnu::noinline]] void refuse_arguments(const char* name, int32_t position,
                                        int32_t status) noexcept;

// What a row of the function table says of a call.
//   threaded  the threader of the kernel's signature runs it
//   warning   the same; a call under LA or HA leaves KAM_STATUS_ACCURACYWARNING in the status, since
//             the rows of these accuracies have no kernel of their own class of accuracy
//   lean      n alone is checked, and the kernel runs in the calling thread
enum class CallKind { threaded, warning, lean };

// Checks n and then, unless the call is lean, each array pointer in the order of the signature; a
// scalar between arrays keeps its argument number. True when there is work to do.
template <CallKind kind, class... Args>
inline bool accept_arguments(const char* name, int32_t n, Args... args) noexcept {
  if (n < 0) [[unlikely]] {
    refuse_arguments(name, 1, KAM_STATUS_BADSIZE);
    return false;
  }
  if (n == 0) return false;
  if constexpr (kind == CallKind::lean) return true;
  int32_t position = 1;
  int32_t bad = 0;
  const auto check = [&](auto argument) {
    ++position;
    if constexpr (std::is_pointer_v<decltype(argument)>) {
      if (argument == nullptr && bad == 0) bad = position;
    }
  };
  (check(args), ...);
  if (bad != 0) [[unlikely]] {
    refuse_arguments(name, bad, KAM_STATUS_BADMEM);
    return false;
  }
  return true;
}

template <class Kernel, CallKind kind, class... Args>
inline void run_selected(int kernel_class, uint32_t mode_word, const KamKernelRow& row, int32_t n,
                         Args... args) noexcept {
  const int index = row_index(kernel_class, mode_word);
  if constexpr (kind == CallKind::warning) {
    if (index / kClassCount != KAM_EP - 1) set_status(KAM_STATUS_ACCURACYWARNING);
  }
  auto* const kernel = reinterpret_cast<Kernel*>(row.kernel.data()[index]);
  if constexpr (kind == CallKind::lean)
    kernel(n, args...);
  else
    threader<Kernel>(kernel, n, args..., row.hint.data()[index]);
}

// For calls that may still have to find class or mode. Out of line with all arguments handed on, so
// that the others need no registers saved for it.
template <class Kernel, CallKind kind, class... Args>
[[gnu::noinline]] void find_and_run(const KamKernelRow& row, int32_t n, Args... args) noexcept {
  run_selected<Kernel, kind>(services::kam_class(), mode(), row, n, args...);
}

template <class Kernel, CallKind kind, class... Args>
inline void vector_call(const KamKernelRow& row, const char* name, int32_t n,
                        Args... args) noexcept {
  if (!accept_arguments<kind>(name, n, args...)) return;
  const int kernel_class = services::kam_class_word.load(std::memory_order_relaxed);
  const auto* words = static_cast<const KamThreadWords*>(services::platform::thread_slot);
  const uint32_t mode_word = words != nullptr ? words->mode : 0;
  if (kernel_class == -1 || mode_word == 0) [[unlikely]] {
    return find_and_run<Kernel, kind>(row, n, args...);
  }
  run_selected<Kernel, kind>(kernel_class, mode_word, row, n, args...);
}

inline uint32_t value_of(uint32_t call_mode) noexcept { return call_mode; }
inline uint32_t value_of(const uint32_t* call_mode) noexcept { return *call_mode; }

// The form with a mode, a value or its address, which is not looked at before the checks have
// passed. The old word comes back through the same merge, so a field that was zero in it stays as
// the argument set it.
template <class Kernel, CallKind kind, class Mode, class... Args>
inline void vector_call_with_mode(Mode call_mode, const KamKernelRow& row, const char* name,
                                  int32_t n, Args... args) noexcept {
  if (!accept_arguments<kind>(name, n, args...)) return;
  const uint32_t old_mode = set_mode(value_of(call_mode));
  find_and_run<Kernel, kind>(row, n, args...);
  set_mode(old_mode);
}

}  // namespace orba::vector
