#include "services/verbose.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <locale.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <atomic>
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

using test::Outcome;
using test::stdout_of;

constexpr char kChildMark[] = "ORBA_TEST_VERBOSE_CHILD";
bool in_child() { return getenv(kChildMark) != nullptr; }

// The current test in a process of its own, where in_child() holds.
Outcome run_child(const std::string& settings) {
  const std::string program = std::filesystem::read_symlink("/proc/self/exe");
  const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
  return test::run_with(
      "-u ORBA_VERBOSE -u ORBA_VERBOSE_OUTPUT_FILE -u ORBA_CBWR " + std::string(kChildMark) +
          "=1 " + settings,
      '\'' + program + "' --gtest_filter=" + test.test_suite_name() + '.' + test.name());
}

void emit(const char* call, double seconds = 0.5) {
  errno = 4711;
  emit_verbose(kInterfaceLp64, call, seconds);
  EXPECT_EQ(errno, 4711);
}

// The lines of the trace; what the test framework prints is left out.
std::vector<std::string> trace_lines(std::istream& text) {
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);) {
    if (line.find("ORBA_VERBOSE") != line.npos) lines.push_back(line);
  }
  return lines;
}
std::vector<std::string> trace_lines(const std::string& text) {
  std::istringstream stream(text);
  return trace_lines(stream);
}
std::vector<std::string> lines_of_file(const std::filesystem::path& path) {
  std::ifstream stream(path);
  return trace_lines(stream);
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
bool is_warning(const std::string& line, const std::string& text) {
  return line == "ORBA_VERBOSE WARNING: " + text;
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

TEST(Verbose, Times) {
  struct Case {
    double seconds;
    const char* text;
  };
  const Case cases[] = {
      {0.0, "0.00s"},        {-0.0, "0.00s"},          {-3.0, "0.00s"},    {1.0, "1000.00ms"},
      {1.25, "1.25s"},       {12345.678, "12345.68s"}, {0.5, "500.00ms"},  {0.001, "1000.00us"},
      {0.0010625, "1.06ms"}, {1e-6, "1000ns"},         {1.5e-6, "1.50us"}, {12.34e-6, "12.34us"},
      {9.4e-7, "940ns"},     {4e-10, "0ns"},           {0.99, "990.00ms"},
  };
  for (const Case& c : cases) {
    TraceText text;
    format_trace(text, c.seconds, state_of_branch(1));
    EXPECT_EQ(std::string(text).substr(0, std::string(text).find(' ')), c.text) << c.seconds;
  }
}

TEST(Verbose, State) {
  struct Case {
    TraceState state;
    const char* text;
  };
  const Case cases[] = {
      {{1, true, true, 0, {8, 8, 8, 8, 8}}, "1.50us CNR:OFF Dyn:1 FastMM:1 TID:0  NThr:8"},
      {{2 | kStrictFlag, false, false, 12, {8, 1, 8, 8, 8}},
       "1.50us CNR:AUTO,STRICT Dyn:0 FastMM:0 TID:12 NThr:8,BLAS:1"},
      {{3, true, true, 100, {1, 2, 3, 4, 5}},
       "1.50us CNR:COMPATIBLE Dyn:1 FastMM:1 TID:100 NThr:1,BLAS:2,FFT:3,KAM:4,SOLVER:5"},
  };
  for (const Case& c : cases) {
    TraceText text;
    format_trace(text, 1.5e-6, c.state);
    EXPECT_STREQ(text, c.text);
  }

  const char* const names[] = {"?0",   "OFF",   "AUTO",   "COMPATIBLE", "SSE2",
                               "?5",   "SSSE3", "SSE4_1", "SSE4_2",     "AVX",
                               "AVX2", "?b",    "AVX512", "?d",         "?e"};
  for (int branch = 0; branch < static_cast<int>(std::size(names)); ++branch) {
    TraceText text;
    format_trace(text, 0.0, state_of_branch(branch));
    EXPECT_TRUE(std::string(text).starts_with(std::string("0.00s CNR:") + names[branch] + " Dyn:"))
        << text;
  }
}

TEST(Verbose, Header) {
  const std::string start =
      "ORBA_VERBOSE Orba 2024.0 Update 1 Product build 20240215 for Tessel(R) 64 architecture "
      "processors with AVX2, Win 2.60GHz";
  const std::pair<int, const char*> cases[] = {{0, ""},       {-1, " cdecl"}, {1, " lp64"},
                                               {2, " ilp64"}, {3, " iface3"}, {0xAB, " ifaceab"}};
  for (const auto& [code, name] : cases) {
    TraceText text;
    format_header(text, code, "processors with AVX2", 2.596);
    EXPECT_EQ(text, start + name + " tessel_thread");
  }
}

TEST(Verbose, OverlongTextsAreCut) {
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
  if (in_child()) {
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
  const Outcome child = run_child("LOCPATH=" + folder + " LC_ALL=xx_XX");
  if (child.output.find("it prints 0,5") == std::string::npos) {
    GTEST_SKIP() << "the system makes no locale with a decimal comma";
  }
  const std::vector<std::string> lines = trace_lines(child.output);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_TRUE(is_header(lines[0])) << lines[0];
  EXPECT_TRUE(is_line_of(lines[1], "call()")) << lines[1];
}

// ---- the environment ----

TEST(Verbose, Levels) {
  if (in_child()) {
    errno = 4711;
    const int32_t level = verbose_level();
    EXPECT_EQ(errno, 4711);
    setenv("ORBA_VERBOSE", level == 0 ? "1" : "0", 1);  // too late to matter
    printf("\nlevels %d %d\n", level, verbose_level());
    return;
  }
  const std::pair<std::string, int> cases[] = {
      {"unset", 0},
      {"0", 0},
      {"1", 1},
      {"2", 2},
      {"3", 0},
      {"-1", 0},
      {"''", 0},
      {"1x", 0},
      {"x", 0},
      {"' '", 0},
      {"0x1", 1},
      {"0X2", 2},
      {"02", 2},
      {"' 1'", 1},
      {"'1 '", 0},
      {"+1", 1},
      {"1.0", 0},
      {"08", 0},
      {"4294967297", 0},
      {"99999999999999999999", 0},
      {std::string(126, '0') + '1', 1},
      {std::string(127, '0') + '1', 0},
  };
  for (const auto& [value, level] : cases) {
    const Outcome child = run_child(value == "unset" ? "" : "ORBA_VERBOSE=" + value);
    const std::string expected = "levels " + std::to_string(level) + ' ' + std::to_string(level);
    EXPECT_NE(child.output.find(expected), std::string::npos) << value << '\n' << child.output;
    EXPECT_EQ(child.exit_code, 0);
  }
}

TEST(Verbose, OutputFile) {
  if (in_child()) {
    emit("first(1)");
    emit("second(2)");
    return;
  }
  const TemporaryDirectory directory;
  // As long as a name may be: the components are short enough for any file system.
  std::string longest = directory.path;
  while (longest.size() + 2 <= 259)
    longest += "/" + std::string(std::min<size_t>(200, 258 - longest.size()), 'n');
  std::filesystem::create_directories(std::filesystem::path(longest).parent_path());

  constexpr char kBadName[] = "incorrect output filename: too long or empty";
  constexpr char kBadFile[] = "Unable to open verbose output file.";
  constexpr char kBadLine[] = "unable to open output file. Print to STDOUT";
  struct Case {
    std::string name;
    std::vector<std::string> warnings;
    bool to_file;
  };
  const Case cases[] = {
      {"", {}, false},
      {directory.path / "trace", {}, true},
      {longest, {}, true},
      {longest + 'n', {kBadName}, false},
      {std::string(5000, 'n'), {kBadName}, false},
      {directory.path / "missing" / "trace", {kBadFile}, false},
      {directory.path, {kBadFile}, false},
      {"/dev/full", {kBadLine, kBadLine, kBadLine}, false},  // opens, but takes nothing
  };
  for (const Case& c : cases) {
    const Outcome child = run_child("ORBA_VERBOSE_OUTPUT_FILE='" + c.name + '\'');
    SCOPED_TRACE(c.name + '\n' + child.output);
    EXPECT_EQ(child.exit_code, 0);
    const std::vector<std::string> printed = trace_lines(child.output);
    std::vector<std::string> warnings, lines = c.to_file ? lines_of_file(c.name) : printed;
    for (const std::string& line : printed) {
      if (line.find("WARNING") != line.npos) warnings.push_back(line.substr(22));
    }
    EXPECT_EQ(warnings, c.warnings);
    std::erase_if(lines, [](const std::string& l) { return l.find("WARNING") != l.npos; });
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_TRUE(is_header(lines[0]));
    EXPECT_TRUE(is_line_of(lines[1], "first(1)"));
    EXPECT_TRUE(is_line_of(lines[2], "second(2)"));
    if (c.to_file) {
      EXPECT_EQ(printed.size(), 0u);
    }
  }
}

// A file that can't be opened for a while: lines are neither lost nor written twice.
TEST(Verbose, OutputFileComesAndGoes) {
  if (in_child()) {
    const std::filesystem::path folder = getenv("ORBA_TEST_FOLDER");
    emit("one()");
    std::filesystem::rename(folder / "here", folder / "away");
    emit("two()");
    std::filesystem::rename(folder / "away", folder / "here");
    emit("three()");
    return;
  }
  const TemporaryDirectory directory;
  std::filesystem::create_directory(directory.path / "here");
  const std::filesystem::path file = directory.path / "here" / "trace";
  std::ofstream(file) << "ORBA_VERBOSE of an earlier process\n";
  const Outcome child = run_child("ORBA_TEST_FOLDER=" + directory.path.string() +
                                  " ORBA_VERBOSE_OUTPUT_FILE=" + file.string());
  SCOPED_TRACE(child.output);
  const std::vector<std::string> printed = trace_lines(child.output), written = lines_of_file(file);
  ASSERT_EQ(printed.size(), 2u);
  EXPECT_TRUE(is_warning(printed[0], "unable to open output file. Print to STDOUT"));
  EXPECT_TRUE(is_line_of(printed[1], "two()"));
  ASSERT_EQ(written.size(), 4u);
  EXPECT_EQ(written[0], "ORBA_VERBOSE of an earlier process");
  EXPECT_TRUE(is_header(written[1]));
  EXPECT_TRUE(is_line_of(written[2], "one()"));
  EXPECT_TRUE(is_line_of(written[3], "three()"));
}

// The state is that of the process and of the calling thread.
TEST(Verbose, StateOfTheProcess) {
  if (in_child()) return emit("call()");
  const Outcome child = run_child(
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
  return "call(" + std::to_string(thread) + ',' + std::to_string(number) + ',' +
         std::string(static_cast<size_t>(number), 'x') + ')';
}

void expect_whole(const std::vector<std::string>& lines) {
  ASSERT_EQ(lines.size(), 1u + kThreads * kCalls);
  EXPECT_TRUE(is_header(lines[0])) << lines[0];
  int next[kThreads] = {};
  for (size_t i = 1; i < lines.size(); ++i) {
    int thread = -1;
    ASSERT_EQ(sscanf(lines[i].c_str(), "ORBA_VERBOSE call(%d,", &thread), 1) << lines[i];
    ASSERT_TRUE(thread >= 0 && thread < kThreads);
    EXPECT_TRUE(is_line_of(lines[i], call_of(thread, next[thread]++))) << lines[i];
  }
}

TEST(Verbose, ThreadsWriteWholeLinesAndOneHeader) {
  if (in_child()) {
    std::atomic<int> waiting{kThreads};
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int thread = 0; thread < kThreads; ++thread) {
      threads.emplace_back([&waiting, thread] {
        waiting.fetch_sub(1);
        while (waiting.load() > 0) {
        }
        for (int i = 0; i < kCalls; ++i) emit(call_of(thread, i).c_str());
      });
    }
    for (std::thread& thread : threads) thread.join();
    return;
  }
  for (int run = 0; run < 3; ++run) {  // not every run makes the threads meet at the header
    expect_whole(trace_lines(run_child("").output));
    const TemporaryDirectory directory;
    const std::filesystem::path file = directory.path / "trace";
    EXPECT_EQ(trace_lines(run_child("ORBA_VERBOSE_OUTPUT_FILE=" + file.string()).output).size(),
              0u);
    expect_whole(lines_of_file(file));
  }
}

// A program that holds the stream for several lines of its own may trace a call in between.
TEST(Verbose, HeldStreamDoesNotBlock) {
  if (in_child()) {
    flockfile(stdout);
    std::thread other([] { emit("other()"); });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));  // it waits for the stream now
    emit("own()");
    funlockfile(stdout);
    other.join();
    return;
  }
  const std::vector<std::string> lines = trace_lines(run_child("timeout 60").output);
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_TRUE(is_header(lines[0]));
  EXPECT_TRUE(is_line_of(lines[1], "own()"));
  EXPECT_TRUE(is_line_of(lines[2], "other()"));
}

// ---- timer ----

TEST(Timer, AgreesWithTheClock) {
  using Clock = std::chrono::steady_clock;
  const auto seconds = [](Clock::duration d) { return std::chrono::duration<double>(d).count(); };
  timer_seconds();  // measures the rate
  for (int run = 0; run < 3; ++run) {
    const Clock::time_point before_start = Clock::now();
    const double start = timer_seconds();
    const Clock::time_point after_start = Clock::now();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const Clock::time_point before_end = Clock::now();
    const double elapsed = timer_seconds() - start;
    const Clock::time_point after_end = Clock::now();
    EXPECT_GE(elapsed, 0.998 * seconds(before_end - after_start));
    EXPECT_LE(elapsed, 1.002 * seconds(after_end - before_start));
  }
}

TEST(Timer, NeverGoesBack) {
  double last = timer_seconds();
  for (int i = 0; i < 10000; ++i) {
    const double now = timer_seconds();
    ASSERT_GE(now, last);
    last = now;
  }
}

// All threads use one rate, even those that measure at the same time.
TEST(Timer, OneRate) {
  if (in_child()) {
    double rates[kThreads];
    std::vector<std::thread> threads;
    for (double& rate : rates) threads.emplace_back([&rate] { rate = counter_rate(); });
    for (std::thread& thread : threads) thread.join();
    for (const double rate : rates) EXPECT_EQ(rate, counter_rate());
    return;
  }
  EXPECT_EQ(run_child("").exit_code, 0);
}

TEST(Timer, RateInBrand) {
  const std::pair<const char*, double> cases[] = {
      {"PU @ 2.60GHz\0\0\0\0", 2.6},
      {"@ 2.60GHz\0\0\0\0\0\0\0", 2.6},
      {"2.60GHz\0\0\0\0\0\0\0\0\0", 2.6},
      {" CPU    3.06GHz\0", 3.06},
      {"CPU      3.06GHz", 3.06},
      {" 1700MHz\0\0\0\0\0\0\0\0", 1.7},
      {"@ 1.25THz\0\0\0\0\0\0\0", 1250.0},
      {"@ 9.87MHz\0\0\0\0\0\0\0", 0.00987},
      {"@ 0.00GHz\0\0\0\0\0\0\0", 0.0},
      {"@ x.60GHz\0\0\0\0\0\0\0", 0.0},
      {"@  800MHz\0\0\0\0\0\0\0", 0.0},
      {"@ 2.60KHz\0\0\0\0\0\0\0", 0.0},
      {".60GHz\0\0\0\0\0\0\0\0\0\0", 0.0},
      {"Processor\0\0\0\0\0\0\0", 0.0},
      {"\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 0.0},
  };
  for (const auto& [text, rate] : cases) {
    char tail[16];
    memcpy(tail, text, sizeof tail);
    EXPECT_NEAR(rate_in_brand(tail), rate, 1e-12 * rate) << text;
  }
}

TEST(Timer, RatesArePlausible) {
  EXPECT_GT(calibrate_rate(), 0.2);
  EXPECT_LT(calibrate_rate(), 10.0);
  EXPECT_GT(clock_rate_for_header(), 0.2);
  EXPECT_LT(clock_rate_for_header(), 10.0);
}

}  // namespace
}  // namespace orba::services
