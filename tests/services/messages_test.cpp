#include "services/messages.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/observe.h"

namespace {

using namespace orba::services;
using orba::test::stdout_of;

constexpr MessageKind kError = MessageKind::error;

TEST(Messages, EveryRowIsItsNumber) {
  int with_text = 0;
  for (int number = 0; number < kMessageCount; ++number) {
    const MessageRow row = message_row(number);
    ASSERT_EQ(row.number, number);
    with_text += *row.text != '\0';
  }
  EXPECT_EQ(with_text, 32);
}

TEST(Messages, Print) {
  EXPECT_EQ(stdout_of([] { print_message(kError, kMessageNewline, 0); }), "\n");
  EXPECT_EQ(stdout_of([] { print_message(kError, kMessageBadParameter, 2, 3, "vdAdd"); }),
            "Tessel Orba ERROR: Parameter 3 was incorrect on entry to vdAdd.\n");
  EXPECT_EQ(stdout_of([] { print_message(MessageKind::plain, kMessageValuesABYZ + 3, 2, 7, 0.5); }),
            "z(7)=0.5\n");
  EXPECT_EQ(stdout_of([] { print_message(kError, 5, 0); }), "\n");  // a row without a text
  EXPECT_EQ(stdout_of([] { print_format(kError, "%d-%s", 2, 4, "x"); }), "4-x");
  EXPECT_EQ(stdout_of([] { print_format(kError, "%d-%s", 0, 4, "x"); }), "");
  EXPECT_EQ(stdout_of([] { print_to_file(stdout, "%d-%s", 2, 4, "x"); }), "4-x");
}

TEST(Messages, PrintLeavesErrnoAlone) {
  // A first write to something other than a terminal sets errno inside the runtime.
  setvbuf(stdout, nullptr, _IOFBF, 4096);
  errno = 77;
  stdout_of([] { print_message(kError, kMessageUnsupportedProcessor, 0); });
  EXPECT_EQ(errno, 77);
}

TEST(Messages, TooLongIsCutAndTold) {
  const std::string name(600, 'x');
  const std::string notice =
      "\nORBA INTERNAL ERROR: message buffer overflow."
      "\n       Lenght: 618   Buffer size: 512\n";
  EXPECT_EQ(stdout_of([&] { print_message(kError, kMessageStatusUnknown, 1, name.c_str()); }),
            notice + "Unknown error in " + std::string(494, 'x') + "\n");
}

// The catalogue file is tried once, at the first message of the process.
TEST(MessagesDeathTest, TranslatedCatalogue) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  if (system("gencat --version > /dev/null 2>&1") != 0) GTEST_SKIP() << "gencat is missing";
  namespace fs = std::filesystem;
  const fs::path folder = fs::path(testing::TempDir()) / "orba_catalogue";
  fs::create_directories(folder);
  // The second text would read its arguments in the wrong order.
  std::ofstream(folder / "orba_msg.msg") << "$set 1\n"
                                         << "754 Unbekannter Fehler in %s.\n"
                                         << "6 Falsch: %s %d\n";
  ASSERT_EQ(system(("gencat " + (folder / "orba_msg.cat").string() + " " +
                    (folder / "orba_msg.msg").string())
                       .c_str()),
            0);
  const auto texts = [] {
    return stdout_of([] {
      print_message(kError, kMessageStatusUnknown, 1, "vdAdd");
      print_message(kError, kMessageBadParameter, 2, 3, "vdAdd");
      print_message(kError, kMessageStatusSing, 1, "vdAdd");
    });
  };
  EXPECT_EXIT(
      {
        setenv("NLSPATH", (folder / "%N").c_str(), 1);
        const std::string printed = texts();
        release_messages();
        fputs(printed.c_str(), stderr);
        _exit(0);
      },
      testing::ExitedWithCode(0),
      "Unbekannter Fehler in vdAdd\\.\n"
      "Tessel Orba ERROR: Parameter 3 was incorrect on entry to vdAdd\\.\n"
      "Error \\(KAM_STATUS_SING\\) in vdAdd: argument caused singularity\\.\n");
  fs::remove_all(folder);
}

TEST(MessagesDeathTest, Terminate) {
  EXPECT_EXIT(terminate(3), testing::ExitedWithCode(3), "");
  EXPECT_EXIT(
      {
        set_exit_handler([](int exit_code) { _exit(exit_code + 40); });
        terminate(3);
      },
      testing::ExitedWithCode(43), "");
}

}  // namespace
