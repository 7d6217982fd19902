// Everything the library asks of the operating system. A port to another system is another source
// beside platform_linux.cpp; no other folder includes a system header of this kind.
#pragma once

#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>

#include "services/platform/kernel_hooks.h"

namespace orba::services::platform {

// Value of an environment variable, with its NUL, into `buffer` of `size` bytes (a negative size
// counts as 0). Returns the length, 0 when absent or empty; when the value with its NUL does not
// fit, minus the size it needs, and the buffer's contents are not defined. A program that runs with
// more rights than its user (set-user-id and the like) has no environment: the user made it.
int read_environment(const char* name, char* buffer, int size) noexcept;

// Gives the processor to another thread.
void yield_processor() noexcept;

// Ends the process at once with this exit code; no exit handlers run.
[[noreturn]] void terminate_process(int exit_code) noexcept;

// True when the code runs out of a shared module, false when it is linked into the executable.
bool loaded_as_module() noexcept;

// A private heap for per-thread blocks: zeroed blocks, null on failure. Destroying it gives back
// every block that is still out, whichever thread had it.
void* private_heap_allocate(size_t size) noexcept;
void private_heap_free(void* block) noexcept;
void destroy_private_heap() noexcept;

// True in a process that was forked from one with several threads, and in its own children. An
// OpenMP runtime may take the lost threads for its workers: work must go on without it.
bool lost_threads_in_fork() noexcept;

// Makes the system call `on_thread_detach` (services/module.h) when the calling thread ends.
// False when the system can't (out of thread-specific keys or memory).
bool watch_thread_exit() noexcept;

// Formats like vsnprintf, always by the rules of the C locale.
int format_text(char* buffer, size_t size, const char* format, va_list arguments) noexcept
    __attribute__((format(printf, 3, 0)));

// Writes a text to the standard output stream and flushes that and the standard error stream. No
// other: one that a thread of the program is reading would have to be waited for. errno keeps its
// value.
void write_standard_output(const char* text) noexcept;

// The standard output stream for the calling thread alone; may be nested.
class StandardOutputLock {
 public:
  StandardOutputLock() noexcept;
  ~StandardOutputLock();
  StandardOutputLock(const StandardOutputLock&) = delete;
  StandardOutputLock& operator=(const StandardOutputLock&) = delete;
};

// Writes a line (with its line feed) to the standard output stream in one piece, behind all that
// the program wrote there before. Touches no other stream.
void write_standard_output_line(const char* line) noexcept;

// Appends a text to a file, which is made if need be, in one piece. False when the file can't be
// opened or doesn't take the text. An empty text tries the opening alone.
bool append_to_file(const char* path, const char* text) noexcept;

// A clock that never goes back: its count, and counts per second.
uint64_t clock_count() noexcept;
uint64_t clock_frequency() noexcept;

// One attempt to open the localised message catalog, null when there is none. `catalog_text` gives
// the text of a message number, null when the catalog has none; it lives as long as the catalog.
void* open_message_catalog() noexcept;
const char* catalog_text(void* catalog, int number) noexcept;
void close_message_catalog(void* catalog) noexcept;

// errno of the calling thread's runtime.
void set_runtime_errno(int value) noexcept;

}  // namespace orba::services::platform
