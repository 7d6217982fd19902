#include "services/verbose.h"

#include <omp.h>
#include <stdarg.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <iterator>

#include "services/detect/detect.h"
#include "services/detect/detection.h"
#include "services/environment.h"
#include "services/memory.h"
#include "services/platform/errno_keeper.h"
#include "services/platform/platform.h"
#include "services/spin_lock.h"
#include "services/threads/thread_count.h"
#include "services/timer.h"
#include "services/version.h"

namespace orba::services {

constinit std::atomic<int32_t> verbose_level_word{-1};

namespace {

// Writes behind what it wrote before; what finds no room is cut.
class Printer {
 public:
  template <size_t Size>
  explicit Printer(char (&buffer)[Size]) noexcept : at_(buffer), room_(Size) {
    buffer[0] = '\0';
  }

  __attribute__((format(printf, 2, 3))) void print(const char* format, ...) noexcept {
    va_list arguments;
    va_start(arguments, format);
    const int length = platform::format_text(at_, room_, format, arguments);
    va_end(arguments);
    const size_t written = std::min(static_cast<size_t>(std::max(length, 0)), room_ - 1);
    at_ += written;
    room_ -= written;
  }

 private:
  char* at_;
  size_t room_;  // with the NUL; never 0
};

// "ORBA_VERBOSE ", the call, a blank, the state, a line feed, NUL.
constexpr int kCallLength = 255;
constexpr size_t kLineSize = 13 + kCallLength + 1 + kTraceTextSize + 1;

// ---- where the trace goes ----

constinit SpinLock level_lock;

// Empty for standard output. Fixed once `output_known` is set.
constinit char output_name[260] = "";
constinit std::atomic<bool> output_known{false};
constinit SpinLock output_lock;

constinit std::atomic<bool> header_printed{false};

void warn(const char* text) noexcept {
  char line[128];
  Printer(line).print("ORBA_VERBOSE WARNING: %s\n", text);
  platform::write_standard_output_line(line);
}

// Threads that meet here each look at the file, and one of them publishes and complains: what may
// wait for the file system, or for the stream that the program holds, is not done under the lock.
void choose_output() noexcept {
  char name[sizeof output_name] = "";
  const char* complaint = nullptr;
  const int length = read_environment("ORBA_VERBOSE_OUTPUT_FILE", name, sizeof name);
  if (length < 0) {
    complaint = "incorrect output filename: too long or empty";
  } else if (length > 0 && !platform::append_to_file(name, "")) {
    complaint = "Unable to open verbose output file.";
  }
  {
    SpinGuard guard(output_lock);
    if (output_known.load(std::memory_order_relaxed)) return;
    if (complaint == nullptr) memcpy(output_name, name, sizeof name);
    output_known.store(true, std::memory_order_release);
  }
  if (complaint != nullptr) warn(complaint);
}

// The file is opened for each line, so nothing is left in a buffer when the program crashes.
void write_line(const char* line) noexcept {
  if (output_name[0] != '\0') {
    if (platform::append_to_file(output_name, line)) return;
    warn("unable to open output file. Print to STDOUT");
  }
  platform::write_standard_output_line(line);
}

void print_header(int interface_code) noexcept {
  TraceText header;
  format_header(header, interface_code, processor_description(), clock_rate_for_header());
  char line[kTraceTextSize + 1];
  Printer(line).print("%s\n", header);
  // Also when it goes to a file: one lock decides who prints it, and a thread of the program that
  // holds the stream may trace a call, too.
  const platform::StandardOutputLock stream;
  if (header_printed.load(std::memory_order_relaxed)) return;
  write_line(line);
  header_printed.store(true, std::memory_order_release);
}

// ---- what it says ----

// Names of the branches; null for numbers without one.
constexpr const char* kBranchNames[] = {nullptr, "OFF",   "AUTO",   "COMPATIBLE", "SSE2",
                                        nullptr, "SSSE3", "SSE4_1", "SSE4_2",     "AVX",
                                        "AVX2",  nullptr, "AVX512"};

struct DomainName {
  Domain domain;
  const char* name;
};
constexpr DomainName kDomainNames[] = {
    {Domain::blas, "BLAS"}, {Domain::fft, "FFT"}, {Domain::kam, "KAM"}, {Domain::solver, "SOLVER"}};

void print_time(Printer& out, double seconds) noexcept {
  if (seconds <= 0.0) {
    out.print("%.2fs", 0.0);
  } else if (seconds > 1.0) {
    out.print("%.2fs", seconds);
  } else if (seconds * 1000 > 1.0) {
    out.print("%.2fms", seconds * 1000);
  } else if (seconds * 1000 * 1000 > 1.0) {
    out.print("%.2fus", seconds * 1000 * 1000);
  } else {
    out.print("%.0fns", seconds * 1000 * 1000 * 1000);
  }
}

// A function of its own: compilers move queries of the OpenMP runtime to a function's entry, where
// they would come before errno is saved.
[[gnu::noinline]] TraceState current_state() noexcept {
  TraceState state = {.reproducibility = reproducibility(-1),
                      .dynamic = dynamic_threads(),
                      .fast_memory = !fast_memory_disabled(),
                      .thread = omp_get_thread_num(),
                      .threads = {}};
  for (int i = 0; i < kDomainCount; ++i) state.threads[i] = thread_count(static_cast<Domain>(i));
  return state;
}

}  // namespace

int32_t parse_verbose_level(const char* value) noexcept {
  char* end;
  const long number = strtol(value, &end, 0);
  const bool whole = end != value && *end == '\0';
  return whole && (number == 1 || number == 2) ? static_cast<int32_t>(number) : 0;
}

int32_t read_verbose_level() noexcept {
  const platform::ErrnoKeeper keeper;
  SpinGuard guard(level_lock);
  int32_t level = verbose_level_word.load(std::memory_order_relaxed);
  if (level < 0) {
    char value[128];
    const int length = read_environment("ORBA_VERBOSE", value, sizeof value);
    level = length > 0 ? parse_verbose_level(value) : 0;
    verbose_level_word.store(level, std::memory_order_relaxed);
  }
  return level;
}

void format_trace(TraceText& text, double seconds, const TraceState& state) noexcept {
  Printer out(text);
  print_time(out, seconds);

  const int branch = state.reproducibility & ~kStrictFlag;
  const bool named = branch >= 0 && branch < static_cast<int>(std::size(kBranchNames)) &&
                     kBranchNames[branch] != nullptr;
  if (named) {
    out.print(" CNR:%s", kBranchNames[branch]);
  } else {
    out.print(" CNR:?%x", static_cast<unsigned>(branch));
  }
  if (state.reproducibility & kStrictFlag) out.print(",STRICT");

  out.print(" Dyn:%d FastMM:%d TID:%-2d", state.dynamic, state.fast_memory, state.thread);

  const int32_t all = state.threads[static_cast<int>(Domain::all)];
  out.print(" NThr:%d", all);
  for (const auto& [domain, name] : kDomainNames) {
    const int32_t count = state.threads[static_cast<int>(domain)];
    if (count != all) out.print(",%s:%d", name, count);
  }
}

// The words are fixed, down to the name of the system: they are what readers of traces know.
void format_header(TraceText& text, int interface_code, const char* processor,
                   double gigahertz) noexcept {
  Printer out(text);
  out.print("ORBA_VERBOSE Orba %d.%d", kVersion.major, kVersion.minor);
  if (kVersion.update > 0) out.print(" Update %d", kVersion.update);
  out.print(" %s build %s for %s %s, %s %.2fGHz", kVersion.label, kVersion.build_date,
            kVersion.platform, processor, "Win", gigahertz);
  switch (interface_code) {
    case 0:
      break;
    case kInterfaceCdecl:
      out.print(" cdecl");
      break;
    case kInterfaceLp64:
      out.print(" lp64");
      break;
    case kInterfaceIlp64:
      out.print(" ilp64");
      break;
    default:
      out.print(" iface%x", static_cast<unsigned>(interface_code));
  }
  out.print(" tessel_thread");
}

void emit_verbose(int interface_code, const char* call_text, double seconds) noexcept {
  const platform::ErrnoKeeper keeper;
  TraceText trace;
  format_trace(trace, seconds, current_state());
  if (!output_known.load(std::memory_order_acquire)) choose_output();
  if (!header_printed.load(std::memory_order_acquire)) print_header(interface_code);
  char line[kLineSize];
  Printer(line).print("ORBA_VERBOSE %.*s %s\n", kCallLength, call_text, trace);
  write_line(line);
}

}  // namespace orba::services
