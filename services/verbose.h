// The trace: with ORBA_VERBOSE set, a traced call writes a line with its arguments, its time and
// the state that governed it. An entry point does this:
//
//     const bool traced = verbose_level() != 0;
//     double seconds = traced ? -timer_seconds() : 0.0;
//     ...the work...
//     if (verbose_level() != 0) {
//       seconds += timer_seconds();
//       ...format the call into text...
//       emit_verbose(1, text, seconds);
//     }
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <atomic>

#include "services/threads/settings.h"

namespace orba::services {

// 0: off. 1 and 2 act alike. Settled at the first query; while off a query is one load and a test.
int32_t read_verbose_level() noexcept;
[[gnu::visibility("hidden")]] extern std::atomic<int32_t> verbose_level_word;  // -1: not read
inline int32_t verbose_level() noexcept {
  const int32_t level = verbose_level_word.load(std::memory_order_relaxed);
  if (level == 0) [[likely]]
    return 0;
  return level > 0 ? level : read_verbose_level();
}

// Integer model of the caller's interface, which the header names; 0: not named.
enum InterfaceCode : int { kInterfaceCdecl = -1, kInterfaceLp64 = 1, kInterfaceIlp64 = 2 };

// Writes the line of a call, cut to 255 characters, that took `seconds`; before the first line of
// the process, the header. errno keeps its value.
void emit_verbose(int interface_code, const char* call_text, double seconds) noexcept;

// What the texts are made of.

int32_t parse_verbose_level(const char* value) noexcept;  // 1, 2 or 0

struct TraceState {
  int reproducibility;            // branch and strict flag
  bool dynamic;                   // thread counts are upper bounds
  bool fast_memory;               // the memory service may keep freed blocks
  int thread;                     // number of the caller in its parallel region
  int32_t threads[kDomainCount];  // counts by domain
};

inline constexpr size_t kTraceTextSize = 400;
using TraceText = char[kTraceTextSize];
void format_trace(TraceText& text, double seconds, const TraceState& state) noexcept;
void format_header(TraceText& text, int interface_code, const char* processor,
                   double gigahertz) noexcept;

}  // namespace orba::services
