// Messages and the reports of bad arguments.
#include "services/messages.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <stdio_ext.h>
#include <stdlib.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "services/parameter_reporter.h"
#include "tests/support/observe.h"
#include "tests/support/process.h"

namespace {

using namespace orba::services;
using orba::test::stdout_of;

constexpr MessageKind kError = MessageKind::error;

TEST(Messages, Print) {
  int with_text = 0;
  for (int number = 0; number < kMessageCount; ++number) {
    ASSERT_EQ(message_row(number).number, number);
    with_text += *message_row(number).text != '\0';
  }
  EXPECT_EQ(with_text, 32);
  EXPECT_EQ(stdout_of([] { print_message(kError, kMessageNewline, 0); }), "\n");
  EXPECT_EQ(stdout_of([] { print_message(kError, kMessageBadParameter, 2, 3, "vdAdd"); }),
            "Tessel Orba ERROR: Parameter 3 was incorrect on entry to vdAdd.\n");
  EXPECT_EQ(stdout_of([] { print_message(MessageKind::plain, kMessageValuesABYZ + 3, 2, 7, 0.5); }),
            "z(7)=0.5\n");
  EXPECT_EQ(stdout_of([] { print_message(kError, 5, 0); }), "\n");  // a row without a text
  EXPECT_EQ(stdout_of([] { print_format(kError, "%d-%s", 2, 4, "x"); }), "4-x");
  EXPECT_EQ(stdout_of([] { print_format(kError, "%d-%s", 0, 4, "x"); }), "");
  EXPECT_EQ(stdout_of([] { print_to_file(stdout, "%d-%s", 2, 4, "x"); }), "4-x");

  const std::string name(600, 'x');
  const std::string notice =
      "\nORBA INTERNAL ERROR: message buffer overflow."
      "\n       Lenght: 618   Buffer size: 512\n";
  EXPECT_EQ(stdout_of([&] { print_message(kError, kMessageStatusUnknown, 1, name.c_str()); }),
            notice + "Unknown error in " + std::string(494, 'x') + "\n");

  // A first write to something other than a terminal sets errno inside the runtime.
  setvbuf(stdout, nullptr, _IOFBF, 4096);
  errno = 77;
  stdout_of([] { print_message(kError, kMessageUnsupportedProcessor, 0); });
  EXPECT_EQ(errno, 77);
}

// The two standard streams are flushed. One that another thread is reading is not waited for.
TEST(Messages, LeaveOtherStreamsAlone) {
  if (!orba::test::in_process_with("")) return;
  alarm(10);
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  FILE* stream = fdopen(ends[0], "r");
  std::atomic<bool> reading{false};
  std::thread reader([&] {
    flockfile(stream);
    reading = true;
    char line[8];
    EXPECT_EQ(fgets(line, sizeof line, stream), nullptr);
    funlockfile(stream);
  });
  while (!reading) std::this_thread::yield();
  setvbuf(stderr, nullptr, _IOFBF, 4096);
  fputs("of the program\n", stderr);
  print_message(kError, kMessageBadParameter, 2, 3, "vdAdd");
  EXPECT_EQ(__fpending(stderr), 0u);
  EXPECT_EQ(__fpending(stdout), 0u);
  close(ends[1]);
  reader.join();
}

// The catalogue file is tried once, at the first message of the process.
TEST(Messages, TranslatedCatalogue) {
  const std::filesystem::path folder = std::filesystem::path(testing::TempDir()) / "orba_catalogue";
  if (!orba::test::in_test_process()) {
    if (system("gencat --version > /dev/null 2>&1") != 0) GTEST_SKIP() << "gencat is missing";
    std::filesystem::create_directories(folder);
    // The second text would read its arguments in the wrong order.
    const std::string file = folder / "orba_msg";
    std::ofstream(file + ".msg") << "$set 1\n754 Unbekannter Fehler in %s.\n6 Falsch: %s %d\n";
    ASSERT_EQ(system(("gencat " + file + ".cat " + file + ".msg").c_str()), 0);
  }
  if (orba::test::in_process_with("NLSPATH=" + (folder / "%N").string())) {
    EXPECT_EQ(stdout_of([] {
                print_message(kError, kMessageStatusUnknown, 1, "vdAdd");
                print_message(kError, kMessageBadParameter, 2, 3, "vdAdd");
                print_message(kError, kMessageStatusSing, 1, "vdAdd");
              }),
              "Unbekannter Fehler in vdAdd.\n"
              "Tessel Orba ERROR: Parameter 3 was incorrect on entry to vdAdd.\n"
              "Error (KAM_STATUS_SING) in vdAdd: argument caused singularity.\n");
    return release_messages();
  }
  std::filesystem::remove_all(folder);
}

// ---- reports ----

std::string report_text(const char* name, int32_t position, int32_t length) {
  return stdout_of([&] { report_parameter(name, &position, length); });
}

TEST(ParameterReporter, Texts) {
  const std::pair<int32_t, std::string> cases[] = {
      {1, "ERROR: Parameter 1 was incorrect on entry to vdAdd."},
      {1000, "INTERNAL ERROR: Insufficient workspace available in function vdAdd."},
      {1001, "ERROR: Incompatible optional parameters on entry to vdAdd."},
      {1002, "ERROR: Parameter 1002 was incorrect on entry to vdAdd."},
      {1102, "INTERNAL ERROR: Not enough work memory in function vdAdd"},
      {1225, "INTERNAL ERROR: Issue accessing coprocessor vdAdd."},
      {0, "INTERNAL ERROR: Condition 0 detected in function vdAdd."},
      {-12, "INTERNAL ERROR: Condition 12 detected in function vdAdd."},
      {INT32_MIN, "INTERNAL ERROR: Condition -2147483648 detected in function vdAdd."}};
  for (const auto& [position, text] : cases) {
    EXPECT_EQ(report_text("vdAdd", position, 5), "\nTessel Orba " + text + "\n");
  }
  const std::string before = "\nTessel Orba ERROR: Parameter 2 was incorrect on entry to ";
  EXPECT_EQ(report_text("vdLinearFrac", 2, 8), before + "vdLinear.\n");
  EXPECT_EQ(report_text("abcdefghijklmnopqrstuvwxyz", 2, 25), before + "abcdefghijklmnopqrst.\n");
  EXPECT_EQ(report_text("vdAdd", 2, 0), before + ".\n");
  EXPECT_EQ(report_text("vdAdd", 2, -1), "");
  EXPECT_EQ(report_text(nullptr, 1, 5), "");
  EXPECT_EQ(stdout_of([] { report_parameter("vdAdd", nullptr, 5); }), "");
}

std::string reported;
void own_reporter(const char* name, const int32_t* position, int32_t length) {
  reported = std::string(name, static_cast<size_t>(length)) + ' ' + std::to_string(*position);
}

// The first reporter stays for the life of the process.
TEST(ParameterReporter, FirstInstallerWins) {
  if (!orba::test::in_process_with("")) return;
  EXPECT_TRUE(install_reporter(own_reporter));
  install_default_reporter();
  EXPECT_FALSE(install_reporter(default_reporter));
  EXPECT_EQ(report_text("vdAdd", 3, 5), "");
  EXPECT_EQ(reported, "vdAdd 3");
}

TEST(ParameterReporter, DefaultInstalledFirst) {
  if (!orba::test::in_process_with("")) return;
  install_default_reporter();
  EXPECT_FALSE(install_reporter(own_reporter));
  EXPECT_NE(report_text("vdAdd", 3, 5), "");
}

}  // namespace
