#include "services/parameter_reporter.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "tests/support/observe.h"

namespace {

using namespace orba::services;
using orba::test::stdout_of;

std::string report_text(const char* name, int32_t position, int32_t length) {
  return stdout_of([&] { report_parameter(name, &position, length); });
}

TEST(ParameterReporter, TextOfEveryPosition) {
  struct Case {
    int32_t position;
    const char* text;
  };
  const Case cases[] = {
      {1, "Tessel Orba ERROR: Parameter 1 was incorrect on entry to vdAdd."},
      {1000, "Tessel Orba INTERNAL ERROR: Insufficient workspace available in function vdAdd."},
      {1001, "Tessel Orba ERROR: Incompatible optional parameters on entry to vdAdd."},
      {1002, "Tessel Orba ERROR: Parameter 1002 was incorrect on entry to vdAdd."},
      {1102, "Tessel Orba INTERNAL ERROR: Not enough work memory in function vdAdd"},
      {1225, "Tessel Orba INTERNAL ERROR: Issue accessing coprocessor vdAdd."},
      {0, "Tessel Orba INTERNAL ERROR: Condition 0 detected in function vdAdd."},
      {-12, "Tessel Orba INTERNAL ERROR: Condition 12 detected in function vdAdd."},
      {INT32_MIN, "Tessel Orba INTERNAL ERROR: Condition -2147483648 detected in function vdAdd."},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(report_text("vdAdd", c.position, 5), std::string("\n") + c.text + "\n");
  }
}

TEST(ParameterReporter, ShownName) {
  const auto shown = [](const char* name, int32_t length) {
    const std::string text = report_text(name, 2, length);
    const std::string before = "\nTessel Orba ERROR: Parameter 2 was incorrect on entry to ";
    EXPECT_EQ(text.substr(0, before.size()), before);
    return text.substr(before.size());
  };
  EXPECT_EQ(shown("vdLinearFrac", 8), "vdLinear.\n");
  EXPECT_EQ(shown("abcdefghijklmnopqrstuvwxyz", 25), "abcdefghijklmnopqrst.\n");
  EXPECT_EQ(shown("vdAdd", 0), ".\n");
  EXPECT_EQ(report_text("vdAdd", 2, -1), "");
}

TEST(ParameterReporter, NullPointersAreNotReported) {
  EXPECT_EQ(report_text(nullptr, 1, 5), "");
  EXPECT_EQ(stdout_of([] { report_parameter("vdAdd", nullptr, 5); }), "");
}

std::string reported_name;
int32_t reported_position;
void own_reporter(const char* name, const int32_t* position, int32_t length) {
  reported_name.assign(name, length);
  reported_position = *position;
}

// In child processes: the first reporter stays for the life of the process.
TEST(ParameterReporterDeathTest, FirstInstallerWins) {
  EXPECT_EXIT(
      {
        bool good = install_reporter(own_reporter);
        install_default_reporter();
        good = good && !install_reporter(default_reporter);
        const std::string text = report_text("vdAdd", 3, 5);
        good = good && text.empty() && reported_name == "vdAdd" && reported_position == 3;
        _exit(good ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
  EXPECT_EXIT(
      {
        install_default_reporter();
        const bool refused = !install_reporter(own_reporter);
        _exit(refused && !report_text("vdAdd", 3, 5).empty() ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
