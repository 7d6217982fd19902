// The environment variables at work: child processes of this program detect on the real processor.
#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <array>
#include <string>

#include "services/detect/detect.h"
#include "services/detect/detection.h"
#include "tests/support/observe.h"
#include "tests/support/process.h"

namespace orba::services {
namespace {

// CpuType, vector class, CpuType and class of the statistics, level, branch, word of ORBA_CBWR.
using Words = std::array<int, 7>;
Words words_now() {
  return {cpu_type(),  kam_class(),        rau_cpu_type(),     rau_class(rau_cpu_type()),
          cpu_level(), reproducibility(1), reproducibility(-1)};
}
std::string text_of(const Words& words) {
  std::string text = "words";
  for (const int word : words) text += ' ' + std::to_string(word);
  return text + '\n';
}

// In the child: many threads race for the first query, each in another order.
void report_as_child() {
  std::array<Words, 4> results{};
  test::on_threads(4, [&](int i) {
    if (i == 1) cpu_level();
    if (i == 2) rau_cpu_type();
    if (i == 3) reproducibility(-1);
    results[static_cast<size_t>(i)] = words_now();
  });
  setenv("ORBA_ENABLE_INSTRUCTIONS", "SSE4_2", 1);  // too late to matter
  setenv("ORBA_CBWR", "SSE2", 1);
  setenv("ORBA_FORCE_KERNELCLASS", "0", 1);
  for (const Words& words : results) EXPECT_EQ(words, words_now());
  printf("\n%s", text_of(results[0]).c_str());
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

TEST(DetectionProcess, EnvironmentSelectsClass) {
  if (test::in_test_process()) return report_as_child();
  const int native = level_of_this_processor();
  EXPECT_EQ(fold_level(raw_level(1)), native);
  EXPECT_EQ(raw_level(0), raw_level(1));
  EXPECT_EQ(reproducibility(0), -2);
  EXPECT_EQ(reproducibility(2), -2);
  const auto at_level = [](int level, int word) {
    const int type = level == 0 ? 0 : level + 2;
    const int kam = level == 7 ? 5 : level == 5 ? 3 : level == 3 ? 2 : 0;
    return Words{type, kam, type, std::min(kam, 4), level, word & 0xFFFF, word};
  };
  const auto forced = [&](int number, int rau) {
    return Words{at_level(native, 1)[0], number, number, rau, native, 1, 1};
  };
  constexpr int kStrict = 0x10000;
  const std::string request = "ORBA_ENABLE_INSTRUCTIONS=", branch = "ORBA_CBWR=",
                    number = "ORBA_FORCE_KERNELCLASS=";
  const struct {
    std::string settings;
    Words words;
    int needs = 0;  // level of the processor; others skip the row
  } cases[] = {
      // clang-format off
      {"", at_level(native, 1)}, {request + "SSE4_2", at_level(3, 1), 3},
      {request + "AVX", at_level(3, 1), 5}, {request + "AVX2", at_level(5, 1), 5},
      {request + "AVX512", at_level(native, 1)},
      {request + std::string(40, 'A'), at_level(native, 1)}, {branch + "AVX2", at_level(5, 10), 5},
      {branch + "'BRANCH=AVX2, STRICT'", at_level(5, 10 | kStrict), 5},
      {branch + "SSE2", at_level(0, 4), 3}, {branch + "nonsense", at_level(native, 2)},
      {branch + std::string(200, 'A'), at_level(native, 1)},
      {branch + "AVX2 " + request + "SSE4_2", at_level(5, 10), 5}, {number + "3", forced(3, 0)},
      {number + "05", forced(5, 2)}, {number + "7x", at_level(native, 1)},
      {number + "0" + std::string(40, 'x'), at_level(native, 1)},
      // clang-format on
  };
  for (const auto& c : cases) {
    if (native < c.needs) continue;
    // Threads that meet in the first query tell the user once. Not every run makes them meet.
    const bool warns = c.settings.ends_with("=AVX");
    for (int run = 0; run < (warns ? 8 : 1); ++run) {
      const test::Outcome child = test::run_test_process(c.settings);
      SCOPED_TRACE(c.settings + '\n' + child.output);
      EXPECT_EQ(child.exit_code, 0);
      EXPECT_NE(child.output.find(text_of(c.words)), std::string::npos) << text_of(c.words);
      const size_t first = child.output.find("Tessel Orba WARNING");
      EXPECT_EQ(first != std::string::npos, warns);
      EXPECT_EQ(first, child.output.rfind("Tessel Orba WARNING"));
    }
  }
}

}  // namespace
}  // namespace orba::services
