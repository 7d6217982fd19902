// What happens when the library, or a thread that used it, comes and goes.
#pragma once

#include <stdint.h>

namespace orba::services {

// An action run at process detach, last added first. A full list ends the process with exit code 3.
using UnloadAction = void (*)(void* argument);
enum class UnloadList { memory, threads };  // room for 32 and for 8 actions
void add_unload_action(UnloadList list, UnloadAction action, void* argument) noexcept;
void run_unload_actions(UnloadList list) noexcept;

// The per-thread block of the vector frame lives in platform::thread_slot; these two own it.
// `make_thread_block` makes a zeroed block of `size` bytes on the first call of a thread; a failure
// prints message 773 and terminates with exit code 3 (null, should an exit handler return).
void* make_thread_block(uint32_t size) noexcept;

// Module entry points, called by the platform layer.
void on_process_attach() noexcept;
void on_thread_detach() noexcept;   // frees the thread's block, then its cached memory
void on_process_detach() noexcept;  // once; not when the process is exiting

}  // namespace orba::services
