// Tests that need a process of their own: fresh once-only words under a given environment.
#pragma once

#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace orba::test {

struct Outcome {
  int exit_code = -1;
  std::string output;
};

// `settings` in shell form: NAME='value' ...; the library's variables are unset otherwise.
inline Outcome run_with(const std::string& settings, const std::string& program_and_arguments) {
  std::string command = "env";
  for (const char* name : {"ORBA_NUM_THREADS",
                           "ORBA_NUM_STRIPES",
                           "ORBA_DOMAIN_NUM_THREADS",
                           "ORBA_DYNAMIC",
                           "OMP_NUM_THREADS",
                           "OMP_PROC_BIND",
                           "OMP_PLACES",
                           "OMP_DYNAMIC",
                           "OMP_NESTED",
                           "OMP_MAX_ACTIVE_LEVELS",
                           "OMP_THREAD_LIMIT",
                           "ORBA_MPI_PPN",
                           "TSL_MPI_NUMBER_OF_MPI_PROCESSES_PER_NODE",
                           "TSL_MPI_PIN_MAPPING",
                           "OMPI_COMM_WORLD_LOCAL_SIZE",
                           "MPI_LOCALNRANKS",
                           "TSL_MPI_THREAD_LEVEL",
                           "ORBA_VERBOSE",
                           "ORBA_VERBOSE_OUTPUT_FILE",
                           "ORBA_CBWR",
                           "ORBA_ENABLE_INSTRUCTIONS",
                           "ORBA_FORCE_KERNELCLASS",
                           "ORBA_KAMMODE"}) {
    command += std::string(" -u ") + name;
  }
  command += ' ' + settings + ' ' + program_and_arguments + " 2>&1";
  Outcome outcome;
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return outcome;
  char text[4096];
  while (const size_t length = fread(text, 1, sizeof text, pipe)) {
    outcome.output.append(text, length);
  }
  const int status = pclose(pipe);
  outcome.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return outcome;
}

inline constexpr char kMark[] = "ORBA_TEST_PROCESS";
inline bool in_test_process() { return getenv(kMark) != nullptr; }
inline std::string this_program() { return std::filesystem::read_symlink("/proc/self/exe"); }

// Runs the current test in a process of its own, of this program or a copy of it, where
// in_test_process() holds.
inline Outcome run_test_process(const std::string& settings,
                                const std::string& program = this_program()) {
  const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
  return run_with(
      std::string(kMark) + "=1 " + settings,
      '\'' + program + "' --gtest_filter=" + test.test_suite_name() + '.' + test.name());
}

// True in a process with these settings. Elsewhere runs the current test in such a process, expects
// it to pass, and returns false:
//     if (!in_process_with("ORBA_DYNAMIC=FALSE")) return;
inline bool in_process_with(const std::string& settings,
                            const std::string& program = this_program()) {
  if (in_test_process()) return true;
  const Outcome outcome = run_test_process(settings, program);
  EXPECT_EQ(outcome.exit_code, 0) << settings << '\n' << outcome.output;
  EXPECT_NE(outcome.output.find("[  PASSED  ] 1 test"), std::string::npos) << outcome.output;
  return false;
}

// What `work` returns in a forked child; -1 when it does not come to an end.
template <class Work>
int in_child(Work work) {
  const pid_t child = fork();
  if (child == 0) {
    alarm(10);
    _exit(work());
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace orba::test
