// Thread counts of this process. The environment is read and the processors are counted once, at
// the first query; whatever changes later is not seen.
#pragma once

#include <stdint.h>

#include "services/threads/settings.h"

namespace orba::services {

// Threads that a call of this domain may use. 1, whatever is asked for, in a process whose threads
// were lost in a fork.
int32_t thread_count(Domain domain) noexcept;

// True when a thread count is an upper bound, to be lowered where fewer threads do.
bool dynamic_threads() noexcept;

// Lowers *threads to what n elements of cost `hint` keep busy, and returns it.
int32_t balance_threads(int32_t* threads, int32_t n, float hint) noexcept;

// A thread count of the calling thread that overrides everything else while it is above 0. Returns
// the old one.
int32_t set_local_thread_count(int32_t count) noexcept;

int32_t stripe_count() noexcept;  // -1 when not set
int32_t node_count() noexcept;
int32_t cores_per_node() noexcept;
int32_t logical_processors() noexcept;

// To be called when the library is loaded: its OpenMP runtime stays, should it be unloaded. Worker
// threads run in the runtime as long as the process lives.
void keep_thread_runtime() noexcept;

}  // namespace orba::services
