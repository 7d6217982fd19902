// Aligned memory for the whole library.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace orba::services {

// All give null on failure, on a size of 0 and when size plus overhead overflows. An alignment
// below 64 or not a power of two counts as 64. Blocks of any of them go back through `free_memory`
// (null allowed), those of `allocate_plain` through `free_plain`.
void* allocate(uint64_t size, int alignment) noexcept;
void* allocate_zeroed(uint64_t count, uint64_t size, int alignment) noexcept;
void* allocate_plain(uint64_t size, int alignment) noexcept;
void free_memory(void* block) noexcept;
void free_plain(void* block) noexcept;

// Gives back what this thread (at its end) or all threads (at unload) keep cached.
void release_thread_memory() noexcept;
void release_all_memory() noexcept;

// The word of ORBA_DISABLE_FAST_MM: true when the variable holds any non-empty value.
bool fast_memory_disabled() noexcept;

}  // namespace orba::services
