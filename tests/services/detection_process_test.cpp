// The environment variables at work: child processes of this program detect on the real processor.
#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "services/detect/detect.h"
#include "services/detect/detection.h"

namespace orba::services {
namespace {

constexpr char kChildMark[] = "ORBA_TEST_DETECTION_CHILD";

struct Words {
  int kam, rau_type, rau, type, level, branch, word;
  bool operator==(const Words&) const = default;
};

// In the child: many threads race for the first query, each in another order.
Words race() {
  constexpr int kThreads = 4;
  std::array<Words, kThreads> results{};
  std::atomic<int> waiting{kThreads};  // a spinning barrier: a sleeping one lets them go one by one
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      waiting.fetch_sub(1);
      while (waiting.load() > 0) {
      }
      if (i % 4 == 1) cpu_level();
      if (i % 4 == 2) rau_cpu_type();
      if (i % 4 == 3) reproducibility(-1);
      results[i] = {kam_class(), rau_cpu_type(),     rau_class(rau_cpu_type()), cpu_type(),
                    cpu_level(), reproducibility(1), reproducibility(-1)};
    });
  }
  for (std::thread& thread : threads) thread.join();
  const bool agree = std::ranges::all_of(results, [&](const Words& w) { return w == results[0]; });
  return agree ? results[0] : Words{};
}

void report_as_child() {
  const Words w = race();
  // Too late to matter.
  setenv("ORBA_ENABLE_INSTRUCTIONS", "SSE4_2", 1);
  setenv("ORBA_CBWR", "SSE2", 1);
  setenv("ORBA_FORCE_KERNELCLASS", "0", 1);
  const Words late{kam_class(), rau_cpu_type(),     rau_class(rau_cpu_type()), cpu_type(),
                   cpu_level(), reproducibility(1), reproducibility(-1)};
  printf("\nstable %d words %d %d %d %d %d %d %d description %s\n", w == late, w.kam, w.rau_type,
         w.rau, w.type, w.level, w.branch, w.word, processor_description());
}

struct Child {
  int exit_code = -1;
  std::string output;
  bool stable = false;
  Words words{};
};

// `settings` in shell form: NAME='value' ...
Child run_child(const std::string& settings) {
  char program[4096];
  const ssize_t length = readlink("/proc/self/exe", program, sizeof program - 1);
  program[length > 0 ? length : 0] = '\0';
  const std::string command =
      "env -u ORBA_ENABLE_INSTRUCTIONS -u ORBA_CBWR -u ORBA_FORCE_KERNELCLASS " +
      std::string(kChildMark) + "=1 " + settings + " '" + program +
      "' --gtest_filter=DetectionProcess.environment_selects_class 2>&1";
  Child child;
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return child;
  char line[1024];
  while (fgets(line, sizeof line, pipe) != nullptr) {
    child.output += line;
    int stable;
    Words& w = child.words;
    if (sscanf(line, "stable %d words %d %d %d %d %d %d %d", &stable, &w.kam, &w.rau_type, &w.rau,
               &w.type, &w.level, &w.branch, &w.word) == 8) {
      child.stable = stable == 1;
    }
  }
  const int status = pclose(pipe);
  child.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return child;
}

// What this processor can do, by the compiler's own detection.
int level_of_this_processor() {
  __builtin_cpu_init();
  if (!__builtin_cpu_is("intel") && !__builtin_cpu_is("amd")) return 0;
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
      __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl")) {
    return 7;
  }
  if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma")) return 5;
  return __builtin_cpu_supports("sse4.2") ? 3 : 0;
}

size_t count_of(const std::string& text, std::string_view part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++count;
  return count;
}

TEST(DetectionProcess, environment_selects_class) {
  if (getenv(kChildMark) != nullptr) return report_as_child();

  // Words by level: CpuType, vector class, statistics class.
  const int native = level_of_this_processor();
  const auto at_level = [](int level, int word) {
    const int type = level == 0 ? 0 : level + 2;
    const int kam = level == 7 ? 5 : level == 5 ? 3 : level == 3 ? 2 : 0;
    return Words{kam, type, std::min(kam, 4), type, level, word & 0xFFFF, word};
  };
  const auto forced = [&](int number, int rau) {
    Words words = at_level(native, 1);
    words.kam = words.rau_type = number;
    words.rau = rau;
    return words;
  };
  constexpr int kStrict = 0x10000;
  const std::string long_request = "ORBA_ENABLE_INSTRUCTIONS=" + std::string(40, 'A');
  const std::string long_branch = "ORBA_CBWR=" + std::string(200, 'A');
  const std::string long_override = "ORBA_FORCE_KERNELCLASS=0" + std::string(40, 'x');
  struct Case {
    std::string settings;
    int needs;  // level of the processor; others skip the row
    Words words;
  };
  const Case cases[] = {
      {"", 0, at_level(native, 1)},
      {"ORBA_ENABLE_INSTRUCTIONS=SSE4_2", 3, at_level(3, 1)},
      {"ORBA_ENABLE_INSTRUCTIONS=AVX", 5, at_level(3, 1)},
      {"ORBA_ENABLE_INSTRUCTIONS=AVX2", 5, at_level(5, 1)},
      {"ORBA_ENABLE_INSTRUCTIONS=AVX512", 0, at_level(native, 1)},
      {"ORBA_ENABLE_INSTRUCTIONS=avx2", 0, at_level(native, 1)},
      {long_request, 0, at_level(native, 1)},
      {"ORBA_CBWR=AUTO", 0, at_level(native, 2)},
      {"ORBA_CBWR=AVX2", 5, at_level(5, 10)},
      {"ORBA_CBWR='BRANCH=AVX2, STRICT'", 5, at_level(5, 10 | kStrict)},
      {"ORBA_CBWR=SSE4_2,STRICT", 3, at_level(3, 8 | kStrict)},
      {"ORBA_CBWR=SSE2", 3, at_level(0, 4)},
      {"ORBA_CBWR=nonsense", 0, at_level(native, 2)},
      {long_branch, 0, at_level(native, 1)},
      {"ORBA_CBWR=AVX2 ORBA_ENABLE_INSTRUCTIONS=SSE4_2", 5, at_level(5, 10)},
      {"ORBA_FORCE_KERNELCLASS=3", 0, forced(3, 0)},
      {"ORBA_FORCE_KERNELCLASS=05", 0, forced(5, 2)},
      {"ORBA_FORCE_KERNELCLASS=200", 0, forced(2, 0)},
      {"ORBA_FORCE_KERNELCLASS=7x", 0, at_level(native, 1)},
      {"ORBA_FORCE_KERNELCLASS=12", 0, at_level(native, 1)},
      {"ORBA_FORCE_KERNELCLASS=8", 0, at_level(native, 1)},
      {long_override, 0, at_level(native, 1)},
  };
  for (const Case& c : cases) {
    if (native < c.needs) continue;
    const Child child = run_child(c.settings);
    SCOPED_TRACE(c.settings + '\n' + child.output);
    EXPECT_EQ(child.exit_code, 0);
    EXPECT_TRUE(child.stable);
    EXPECT_EQ(child.words, c.words);
    EXPECT_EQ(count_of(child.output, "Tessel Orba WARNING"),
              c.settings.ends_with("=AVX") ? 1u : 0u);
  }
}

// Threads that meet in the first query tell the user once. Not every run makes them meet.
TEST(DetectionProcess, messages_print_once) {
  for (int i = 0; i < 8; ++i) {
    const Child child = run_child("ORBA_ENABLE_INSTRUCTIONS=AVX");
    EXPECT_EQ(count_of(child.output, "(Tessel(R) AVX) enabled only processors has been deprecated"),
              1u)
        << child.output;
  }
}

TEST(DetectionProcess, services) {
  EXPECT_EQ(reproducibility(0), -2);
  EXPECT_EQ(reproducibility(2), -2);
  DetectionReport report;
  EXPECT_EQ(raw_level(1), detect_raw_level(features_of(take_snapshot()), kInitialFlags, report));
  EXPECT_EQ(raw_level(0), raw_level(1));
  EXPECT_EQ(fold_level(raw_level(0)), level_of_this_processor());
}

}  // namespace
}  // namespace orba::services
