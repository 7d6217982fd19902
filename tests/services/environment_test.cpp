#include "services/environment.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/auxv.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "services/memory.h"
#include "services/threads/thread_count.h"
#include "services/verbose.h"
#include "tests/support/process.h"

namespace {

using namespace orba::services;

constexpr char kName[] = "ORBA_TEST_VALUE";

TEST(Environment, LengthOfEveryBufferSize) {
  char buffer[16];
  unsetenv(kName);
  EXPECT_EQ(read_environment(kName, buffer, sizeof buffer), 0);
  setenv(kName, "", 1);
  EXPECT_EQ(read_environment(kName, buffer, sizeof buffer), 0);

  const std::string value = "0123456789";
  setenv(kName, value.c_str(), 1);
  for (int size = -1; size <= 16; ++size) {
    const int length = read_environment(kName, buffer, size);
    EXPECT_EQ(length, size > 10 ? 10 : -11) << size;  // the size it needs
    if (size > 10) {
      EXPECT_EQ(buffer, value) << size;
    }
  }
  unsetenv(kName);
}

TEST(Environment, ScrambledName) {
  constexpr auto scrambled = scramble(kName);
  EXPECT_NE(std::string(scrambled.data(), 6), std::string(kName, 6));
  setenv(kName, "found", 1);
  char buffer[16];
  const int length = static_cast<int>(scrambled.size());
  EXPECT_EQ(read_scrambled_environment(scrambled.data(), length, buffer, sizeof buffer), 5);
  EXPECT_STREQ(buffer, "found");
  EXPECT_EQ(read_scrambled_environment(scrambled.data(), length - 1, buffer, sizeof buffer), 0);
  const std::string too_long(32, 'x');
  EXPECT_EQ(read_scrambled_environment(too_long.data(), 32, buffer, sizeof buffer), 0);
  unsetenv(kName);
}

// A copy of this program that runs as another user than the one who started it.
TEST(Environment, IsNotReadWithRaisedRights) {
  namespace fs = std::filesystem;
  const fs::path folder = fs::path(testing::TempDir()) / "orba_raised_rights";
  const fs::path program = folder / "program", trace = folder / "trace";
  if (!orba::test::in_test_process()) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can give a program away";
    fs::create_directories(folder);
    fs::permissions(folder, fs::perms::all);
    struct statvfs volume;
    const bool ignored = statvfs(folder.c_str(), &volume) != 0 ||
                         (volume.f_flag & ST_NOSUID) != 0 ||
                         prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) != 0;
    if (ignored) GTEST_SKIP() << "set-user-id programs have no effect here";
    fs::copy_file("/proc/self/exe", program, fs::copy_options::overwrite_existing);
    constexpr uid_t kNobody = 65534;
    ASSERT_EQ(chown(program.c_str(), kNobody, kNobody), 0);
    ASSERT_EQ(chmod(program.c_str(), 04755), 0);
  }
  if (orba::test::in_process_with("ORBA_TEST_VALUE=1 ORBA_NUM_THREADS=7 ORBA_DYNAMIC=FALSE "
                                  "ORBA_DISABLE_FAST_MM=1 ORBA_VERBOSE=1 "
                                  "ORBA_VERBOSE_OUTPUT_FILE=" +
                                      trace.string(),
                                  program)) {
    ASSERT_NE(getauxval(AT_SECURE), 0u);
    char buffer[16];
    EXPECT_EQ(read_environment(kName, buffer, sizeof buffer), 0);
    EXPECT_TRUE(dynamic_threads());
    EXPECT_FALSE(fast_memory_disabled());
    EXPECT_EQ(verbose_level(), 0);
    emit_verbose(kInterfaceLp64, "call()", 0.5);
    EXPECT_FALSE(fs::exists(trace));
    return;
  }
  fs::remove_all(folder);
}

}  // namespace
