#include "services/verbose.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <locale.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "services/detect/detection.h"
#include "services/timer.h"
#include "tests/support/observe.h"
#include "tests/support/process.h"

namespace orba::services {
namespace {

using test::in_test_process;
using test::on_threads;
using test::Outcome;
using test::run_test_process;
using test::stdout_of;

void emit(const char* call, double seconds = 0.5) {
  errno = 4711;
  emit_verbose(kInterfaceLp64, call, seconds);
  EXPECT_EQ(errno, 4711);
}

// The lines of the trace; what the test framework prints is left out.
std::vector<std::string> trace_lines(std::istream&& text) {
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);) {
    if (line.find("ORBA_VERBOSE") != line.npos) lines.push_back(line);
  }
  return lines;
}
std::vector<std::string> trace_lines(const std::string& text) {
  return trace_lines(std::istringstream(text));
}

// By the POSIX extended syntax.
bool matches(const std::string& line, const char* pattern) {
  return testing::internal::RE::FullMatch(line, pattern);
}
bool is_header(const std::string& line) {
  return matches(line,
                 "ORBA_VERBOSE Orba 2024\\.0 Update 1 Product build 20240215 for Tessel\\(R\\) 64 "
                 "architecture .*, Win [0-9]+\\.[0-9][0-9]GHz lp64 tessel_thread");
}
bool is_line_of(const std::string& line, const std::string& call) {
  const std::string start = "ORBA_VERBOSE " + call;
  return line.starts_with(start) &&
         matches(line.substr(start.size()),
                 " 500\\.00ms CNR:[A-Z0-9_]+(,STRICT)? Dyn:[01] FastMM:[01] TID:[0-9]+ * "
                 "NThr:[0-9]+(,(BLAS|FFT|KAM|SOLVER):[0-9]+)*");
}

// A whole trace: the header and a line for each call.
void expect_trace(const std::vector<std::string>& lines, const std::vector<std::string>& calls) {
  ASSERT_EQ(lines.size(), 1 + calls.size());
  EXPECT_TRUE(is_header(lines[0])) << lines[0];
  for (size_t i = 0; i < calls.size(); ++i) {
    EXPECT_TRUE(is_line_of(lines[i + 1], calls[i])) << lines[i + 1];
  }
}

struct TemporaryDirectory {
  std::filesystem::path path;
  TemporaryDirectory() {
    std::string name = std::filesystem::temp_directory_path() / "orba_trace_XXXXXX";
    path = mkdtemp(name.data());
  }
  ~TemporaryDirectory() { std::filesystem::remove_all(path); }
};

// ---- texts ----

TraceState state_of_branch(int branch) { return {branch, true, true, 0, {1, 1, 1, 1, 1}}; }
std::string trace_of(double seconds, const TraceState& state) {
  TraceText text;
  format_trace(text, seconds, state);
  return text;
}

TEST(Verbose, Texts) {
  // clang-format off
  const std::pair<double, const char*> times[] = {
      {-0.0, "0.00s"}, {-3.0, "0.00s"}, {1.0, "1000.00ms"}, {1.25, "1.25s"},
      {12345.678, "12345.68s"}, {0.001, "1000.00us"}, {0.0010625, "1.06ms"}, {1e-6, "1000ns"},
      {12.34e-6, "12.34us"}, {9.4e-7, "940ns"}, {4e-10, "0ns"}, {0.99, "990.00ms"}};
  // clang-format on
  for (const auto& [seconds, text] : times) {
    EXPECT_TRUE(trace_of(seconds, state_of_branch(1)).starts_with(std::string(text) + ' ')) << text;
  }
  const char* const names[] = {"?0",   "OFF",   "AUTO",   "COMPATIBLE", "SSE2",
                               "?5",   "SSSE3", "SSE4_1", "SSE4_2",     "AVX",
                               "AVX2", "?b",    "AVX512", "?d",         "?e"};
  for (int branch = 0; branch < static_cast<int>(std::size(names)); ++branch) {
    EXPECT_EQ(trace_of(0.0, state_of_branch(branch)),
              std::string("0.00s CNR:") + names[branch] + " Dyn:1 FastMM:1 TID:0  NThr:1");
  }
  EXPECT_EQ(trace_of(1.5e-6, {2 | kStrictFlag, false, false, 12, {8, 1, 8, 8, 8}}),
            "1.50us CNR:AUTO,STRICT Dyn:0 FastMM:0 TID:12 NThr:8,BLAS:1");
  EXPECT_EQ(trace_of(1.5e-6, {3, true, true, 100, {1, 2, 3, 4, 5}}),
            "1.50us CNR:COMPATIBLE Dyn:1 FastMM:1 TID:100 NThr:1,BLAS:2,FFT:3,KAM:4,SOLVER:5");

  const std::pair<int, const char*> interfaces[] = {
      {0, ""}, {-1, " cdecl"}, {1, " lp64"}, {2, " ilp64"}, {3, " iface3"}, {0xAB, " ifaceab"}};
  for (const auto& [code, name] : interfaces) {
    TraceText text;
    format_header(text, code, "processors with AVX2", 2.596);
    EXPECT_TRUE(std::string(text).ends_with(std::string(" processors with AVX2, Win 2.60GHz") +
                                            name + " tessel_thread"))
        << text;
  }

  // Overlong texts are cut.
  struct {
    TraceText text;
    char guard[8] = "guard";
  } room;
  format_trace(room.text, 1e308, {3 | kStrictFlag, true, true, 0, {1, INT32_MAX, 2, 3, 4}});
  EXPECT_EQ(strlen(room.text), sizeof(TraceText) - 1);
  format_header(room.text, 1, std::string(1000, 'p').c_str(), 2.6);
  EXPECT_EQ(strlen(room.text), sizeof(TraceText) - 1);
  EXPECT_STREQ(room.guard, "guard");
  const std::string printed = stdout_of([] { emit(std::string(1000, 'x').c_str()); });
  EXPECT_TRUE(is_line_of(trace_lines(printed).back(), std::string(255, 'x'))) << printed;
}

// A program's locale changes no number.
TEST(Verbose, DecimalComma) {
  if (in_test_process()) {
    setlocale(LC_ALL, "");
    char number[8];
    snprintf(number, sizeof number, "%.1f", 0.5);
    printf("\nit prints %s\n", number);
    return emit("call()");
  }
  const TemporaryDirectory directory;
  const std::string folder = directory.path;
  std::ofstream(folder + "/source") << "LC_NUMERIC\ndecimal_point \",\"\nEND LC_NUMERIC\n";
  test::run_with("",
                 "localedef -c -i " + folder + "/source -f ANSI_X3.4-1968 " + folder + "/xx_XX");
  const Outcome child = run_test_process("LOCPATH=" + folder + " LC_ALL=xx_XX");
  if (child.output.find("it prints 0,5") == std::string::npos) {
    GTEST_SKIP() << "the system makes no locale with a decimal comma";
  }
  expect_trace(trace_lines(child.output), {"call()"});
}

// ---- the environment ----

TEST(Verbose, Levels) {
  // clang-format off
  const std::pair<const char*, int> cases[] = {
      {"0", 0}, {"1", 1}, {"2", 2}, {"3", 0}, {"-1", 0}, {"", 0}, {"1x", 0}, {"x", 0}, {" ", 0},
      {"0x1", 1}, {"0X2", 2}, {"02", 2}, {" 1", 1}, {"1 ", 0}, {"+1", 1}, {"1.0", 0}, {"08", 0},
      {"4294967297", 0}, {"99999999999999999999", 0}};
  // clang-format on
  for (const auto& [value, level] : cases) EXPECT_EQ(parse_verbose_level(value), level) << value;
}

// Read once, if it fits; errno is not touched.
TEST(Verbose, LevelOfTheProcess) {
  if (in_test_process()) {
    errno = 4711;
    const int32_t level = verbose_level();
    EXPECT_EQ(errno, 4711);
    setenv("ORBA_VERBOSE", level == 0 ? "1" : "0", 1);  // too late to matter
    EXPECT_EQ(verbose_level(), level);
    printf("\nlevel %d\n", level);
    return;
  }
  for (const auto& [value, level] : {std::pair{std::string("2"), 2},
                                     {"8e9", 0},
                                     {std::string(126, '0') + '1', 1},
                                     {std::string(127, '0') + '1', 0}}) {
    const Outcome child = run_test_process("ORBA_VERBOSE=" + value);
    EXPECT_NE(child.output.find("level " + std::to_string(level)), std::string::npos)
        << child.output;
    EXPECT_EQ(child.exit_code, 0);
  }
}

TEST(Verbose, OutputFile) {
  if (in_test_process()) {
    emit("first(1)");
    emit("second(2)");
    return;
  }
  const TemporaryDirectory directory;
  // As long as a name may be: the components are short enough for any file system.
  std::string longest = directory.path;
  while (longest.size() + 2 <= 259) {
    longest += '/';
    longest.append(std::min<size_t>(200, 259 - longest.size()), 'n');
  }
  std::filesystem::create_directories(std::filesystem::path(longest).parent_path());
  const std::string trace = directory.path / "trace";
  std::ofstream(trace) << "earlier\n";

  constexpr char kBadName[] = "incorrect output filename: too long or empty";
  constexpr char kBadFile[] = "Unable to open verbose output file.";
  constexpr char kBadLine[] = "unable to open output file. Print to STDOUT";
  const struct {
    std::string name;
    const char* warning;
    size_t warnings;
    bool to_file;
  } cases[] = {
      {"", "", 0, false},
      {trace, "", 0, true},
      {longest, "", 0, true},
      {longest + 'n', kBadName, 1, false},
      {std::string(5000, 'n'), kBadName, 1, false},
      {directory.path / "missing" / "trace", kBadFile, 1, false},
      {directory.path, kBadFile, 1, false},
      {"/dev/full", kBadLine, 3, false},  // opens, takes nothing, is tried again
  };
  for (const auto& c : cases) {
    const Outcome child = run_test_process("ORBA_VERBOSE_OUTPUT_FILE='" + c.name + '\'');
    SCOPED_TRACE(c.name + '\n' + child.output);
    EXPECT_EQ(child.exit_code, 0);
    std::vector<std::string> printed = trace_lines(child.output);
    EXPECT_EQ(std::erase(printed, std::string("ORBA_VERBOSE WARNING: ") + c.warning), c.warnings);
    expect_trace(c.to_file ? trace_lines(std::ifstream(c.name)) : printed,
                 {"first(1)", "second(2)"});
    EXPECT_EQ(printed.empty(), c.to_file);
  }
  std::string first;
  std::ifstream(trace) >> first;
  EXPECT_EQ(first, "earlier");
}

// The state is that of the process and of the calling thread.
TEST(Verbose, StateOfTheProcess) {
  if (in_test_process()) return emit("call()");
  const Outcome child = run_test_process(
      "ORBA_CBWR=COMPATIBLE,STRICT ORBA_DYNAMIC=FALSE ORBA_DISABLE_FAST_MM=1 ORBA_NUM_THREADS=3 "
      "ORBA_DOMAIN_NUM_THREADS=ORBA_DOMAIN_KAM=2");
  EXPECT_NE(child.output.find("ORBA_VERBOSE call() 500.00ms CNR:COMPATIBLE,STRICT Dyn:0 FastMM:0 "
                              "TID:0  NThr:3,KAM:2\n"),
            std::string::npos)
      << child.output;
}

// ---- threads ----

constexpr int kThreads = 4;
constexpr int kCalls = 200;

std::string call_of(int thread, int number) {
  return "call(" + std::to_string(thread) + ',' + std::to_string(1000 + number) + ',' +
         std::string(static_cast<size_t>(number), 'x') + ')';
}

// Those of one thread come in their order.
void expect_all_calls(std::vector<std::string> lines) {
  ASSERT_FALSE(lines.empty());
  std::ranges::stable_sort(lines.begin() + 1, lines.end(), {},
                           [](const std::string& line) { return line.substr(0, 20); });
  std::vector<std::string> calls;
  for (int i = 0; i < kThreads * kCalls; ++i) calls.push_back(call_of(i / kCalls, i % kCalls));
  expect_trace(lines, calls);
}

TEST(Verbose, ThreadsWriteWholeLinesAndOneHeader) {
  if (in_test_process()) {
    return on_threads(kThreads, [](int thread) {
      for (int i = 0; i < kCalls; ++i) emit(call_of(thread, i).c_str());
    });
  }
  for (int run = 0; run < 3; ++run) {  // not every run makes the threads meet at the header
    expect_all_calls(trace_lines(run_test_process("").output));
    const TemporaryDirectory directory;
    const std::string file = directory.path / "trace";
    const Outcome child = run_test_process("ORBA_VERBOSE_OUTPUT_FILE=" + file);
    EXPECT_TRUE(trace_lines(child.output).empty());
    expect_all_calls(trace_lines(std::ifstream(file)));
  }
}

// A program that holds the stream for several lines of its own may trace a call in between.
TEST(Verbose, HeldStreamDoesNotBlock) {
  if (in_test_process()) {
    flockfile(stdout);
    std::thread other([] { emit("other()"); });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));  // it waits for the stream now
    emit("own()");
    funlockfile(stdout);
    other.join();
    return;
  }
  expect_trace(trace_lines(run_test_process("timeout 60").output), {"own()", "other()"});
}

// ---- timer ----

TEST(Timer, AgreesWithTheClock) {
  const auto clock = [] {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
  };
  double last = timer_seconds();  // measures the rate
  for (int run = 0; run < 3; ++run) {
    const double before_start = clock(), start = timer_seconds(), after_start = clock();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const double before_end = clock(), elapsed = timer_seconds() - start, after_end = clock();
    EXPECT_GE(elapsed, 0.998 * (before_end - after_start));
    EXPECT_LE(elapsed, 1.002 * (after_end - before_start));
  }
  for (int i = 0; i < 10000; ++i) {
    const double now = timer_seconds();
    ASSERT_GE(now, last);
    last = now;
  }
}

// All threads use one rate, even those that measure at the same time.
TEST(Timer, OneRate) {
  if (!test::in_process_with("")) return;
  double rates[kThreads];
  on_threads(kThreads, [&rates](int i) { rates[i] = counter_rate(); });
  for (const double rate : rates) EXPECT_EQ(rate, counter_rate());
}

TEST(Timer, Rates) {
  // clang-format off
  const std::pair<const char*, double> cases[] = {
      {"PU @ 2.60GHz\0\0\0\0", 2.6}, {"2.60GHz\0\0\0\0\0\0\0\0\0", 2.6}, {" CPU    3.06GHz\0", 3.06},
      {"CPU      3.06GHz", 3.06}, {" 1700MHz\0\0\0\0\0\0\0\0", 1.7},
      {"@ 1.25THz\0\0\0\0\0\0\0", 1250.0}, {"@ 9.87MHz\0\0\0\0\0\0\0", 0.00987},
      {"@ 0.00GHz\0\0\0\0\0\0\0", 0.0}, {"@ x.60GHz\0\0\0\0\0\0\0", 0.0},
      {"@  800MHz\0\0\0\0\0\0\0", 0.0}, {"@ 2.60KHz\0\0\0\0\0\0\0", 0.0},
      {".60GHz\0\0\0\0\0\0\0\0\0\0", 0.0}, {"Processor\0\0\0\0\0\0\0", 0.0}};
  // clang-format on
  for (const auto& [text, rate] : cases) {
    char tail[16];
    memcpy(tail, text, sizeof tail);
    EXPECT_NEAR(rate_in_brand(tail), rate, 1e-12 * rate) << text;
  }
  for (const double rate : {calibrate_rate(), clock_rate_for_header()}) {
    EXPECT_GT(rate, 0.2);
    EXPECT_LT(rate, 10.0);
  }
}

}  // namespace
}  // namespace orba::services
