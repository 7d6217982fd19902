// Forks of the statistics layer: as many threads as its domain of the thread-count service allows.
// Vector calls inside such a fork run on one thread.
#pragma once

#include <stdint.h>

namespace orba::statistics {

// One item of a loop, or one thread's share.
using ForkBody = void (*)(int64_t item, int32_t thread, int32_t threads, void* context);

}  // namespace orba::statistics

extern "C" {

// Runs body(item, thread number, team size, context) for the items 0 ... nitems - 1, on
// min(allowed, nthreads) threads when nthreads is above 0, else on all that are allowed. Each
// thread takes one contiguous run of items.
void orba_rau_serv_threader_for(int64_t nitems, int32_t nthreads, void* context,
                                orba::statistics::ForkBody body) noexcept;

// The same; inside a body orba_rau_serv_threader_ordered(context, part) runs `part` in the order of
// the items, once per item at most.
void orba_rau_serv_threader_for_ordered(int64_t nitems, int32_t nthreads, void* context,
                                        orba::statistics::ForkBody body) noexcept;
void orba_rau_serv_threader_ordered(void* context, void (*part)(void* context)) noexcept;

// Runs each of the sections once, every one on some thread.
void orba_rau_serv_threader_sections(int32_t nsections, int32_t nthreads, void* context,
                                     void (*const* sections)(void* context)) noexcept;

// Threads that a fork may use now.
int32_t orba_rau_serv_thread_count() noexcept;
}
