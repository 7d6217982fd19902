#include "vector/frame/threader.h"

#include <omp.h>

#include <atomic>
#include <tuple>
#include <type_traits>
#include <utility>

#include "services/threads/float_state.h"
#include "services/threads/thread_count.h"
#include "vector/words/thread_words.h"

namespace orba::vector {
namespace {

// Shorter vectors never pay for a thread, nor for the question.
constexpr int32_t kShortestToFork = 100;

int32_t threads_worth_using(int32_t n, float hint) noexcept {
  int32_t threads = services::thread_count(services::Domain::kam);
  if (threads != 1 && services::dynamic_threads()) services::balance_threads(&threads, n, hint);
  return threads;
}

// Runs the kernel of `call` over `count` elements from `first` on.
using SliceRunner = void (*)(const void* call, int32_t first, int32_t count);

void run_in_parallel(int32_t threads, SliceRunner run_slice, const void* call, int32_t n,
                     const void* base) noexcept {
  const KamErrorCallBack callers_callback = callback();
  const uint32_t callers_mode = mode();
  services::RegionFloatState float_state;
  std::atomic<int32_t> merged{KAM_STATUS_OK};  // the last error stored stands
#pragma omp parallel num_threads(threads)
  {
    const services::ThreadFloatState as_the_caller(float_state);
    // Setting the callback changes the mode, so the mode comes after it.
    set_callback(callers_callback);
    set_mode(callers_mode);
    set_status(KAM_STATUS_OK);
    thread_words().base = base;

    // Slices differ by one element at most, the longer ones first.
    const int32_t id = omp_get_thread_num();
    const int32_t length = n / omp_get_num_threads();
    const int32_t longer = n % omp_get_num_threads();
    if (id < longer) {
      run_slice(call, (length + 1) * id, length + 1);
    } else if (length != 0) {
      run_slice(call, length * id + longer, length);
    }

    thread_words().base = nullptr;
    if (const int32_t error = status(); error != KAM_STATUS_OK) {
      merged.store(error, std::memory_order_relaxed);
    }
  }
  set_status(merged.load(std::memory_order_relaxed));
}

template <class... Args>
struct Call {
  void (*kernel)(int32_t, Args...);
  std::tuple<Args...> args;
};

// Argument i of the slice that starts at element `first`: arrays move on, by their increment if one
// follows, scalars and increments stay.
template <size_t i, class... Args>
auto slice_argument(const std::tuple<Args...>& args, int32_t first) noexcept {
  const auto argument = std::get<i>(args);
  if constexpr (!std::is_pointer_v<decltype(argument)>) {
    return argument;
  } else {
    ptrdiff_t offset = first;
    if constexpr (i + 1 < sizeof...(Args)) {
      if constexpr (std::is_same_v<std::tuple_element_t<i + 1, std::tuple<Args...>>, int32_t>) {
        offset *= std::get<i + 1>(args);
      }
    }
    return argument + offset;
  }
}

template <class... Args>
void run_slice(const void* call, int32_t first, int32_t count) {
  const auto* whole = static_cast<const Call<Args...>*>(call);
  [&]<size_t... i>(std::index_sequence<i...>) {
    whole->kernel(count, slice_argument<i>(whole->args, first)...);
  }
  (std::index_sequence_for<Args...>{});
}

template <class... Args>
[[gnu::noinline]] void run_long(void (*kernel)(int32_t, Args...), int32_t n, float hint,
                                Args... args) {
  const int32_t threads = threads_worth_using(n, hint);
  if (threads == 1) return kernel(n, args...);
  const Call<Args...> call = {kernel, {args...}};
  run_in_parallel(threads, run_slice<Args...>, &call, n, std::get<0>(call.args));
}

}  // namespace

// On short vectors a compare and a jump into the kernel.
#define ORBA_UNWRAP(...) __VA_ARGS__
#define ORBA_THREADER(name, parameters, arguments)                                              \
  extern "C" void orba_kam_serv_threader_##name(void (*kernel)(int32_t ORBA_UNWRAP parameters), \
                                                int32_t n ORBA_UNWRAP parameters, float hint) { \
    if (n < kShortestToFork) return kernel(n ORBA_UNWRAP arguments);                            \
    run_long(kernel, n, hint ORBA_UNWRAP arguments);                                            \
  }
#include "vector/frame/threaders.def"

}  // namespace orba::vector
