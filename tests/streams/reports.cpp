#include "tests/streams/reports.h"

#include <gtest/gtest.h>

#include <utility>

#include "services/parameter_reporter.h"

namespace orba::test {
namespace {

thread_local std::vector<Report> reports;

void record(const char* name, const int32_t* position, int32_t length) {
  reports.push_back({std::string(name, static_cast<size_t>(length)), *position});
}

// Before any test: the first reporter of a process stays.
class InstallRecorder : public testing::Environment {
  void SetUp() override { ASSERT_TRUE(services::install_reporter(record)); }
};
const testing::Environment* const installed =
    testing::AddGlobalTestEnvironment(new InstallRecorder);

}  // namespace

std::vector<Report> take_reports() { return std::exchange(reports, {}); }

}  // namespace orba::test
