#include "vector/words/thread_words.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <string>
#include <utility>

#include "tests/support/observe.h"

namespace {

using namespace orba::vector;
using orba::test::in_new_thread;

constexpr char kVariable[] = "ORBA_KAMMODE";

TEST(ModeWord, Texts) {
  // clang-format off
  const std::pair<const char*, uint32_t> cases[] = {
      {"LA", 0x1}, {"HA", 0x2}, {"EP", 0x3},
      {"DEFAULT_PRECISION", 0}, {"FLOAT_CONSISTENT", 0x10}, {"DOUBLE_CONSISTEN", 0x20},
      {"RESTORE", 0x30}, {"ERRMODE_IGNORE", 0x100}, {"ERRMODE_ERRNO", 0x200},
      {"ERRMODE_STDERR", 0x400}, {"ERRMODE_EXCEPT", 0x800}, {"ERRMODE_CALLBACK", 0x1000},
      {"ERRMODE_NOERR", 0x2000}, {"ERRMODE_DEFAULT", 0x1A00}, {"TRAP_INVALID", 0x1000000},
      {"TRAP_DIVBYZERO", 0x2000000}, {"TRAP_OVERFLOW", 0x4000000},
      {"TRAP_UNDERFLOW", 0x8000000}};
  // clang-format on
  for (const auto& [keyword, bits] : cases) {
    uint32_t value = 99;
    EXPECT_TRUE(parse_mode(("KAM_" + std::string(keyword)).c_str(), &value)) << keyword;
    EXPECT_EQ(value, bits) << keyword;
    EXPECT_TRUE(parse_mode(("KAM_LA,KAM_" + std::string(keyword)).c_str(), &value)) << keyword;
    EXPECT_EQ(value, bits | 1) << keyword;
  }
  for (const char* text : {"", "HA", "KAM_", "KAM_XX", "kam_ha", "KAM_ha", " KAM_HA", "KAM_HA ",
                           "KAM_HA, KAM_LA", "KAM_HA,", "KAM_HA,,KAM_LA", ",KAM_HA", "KAM_HAPPY",
                           "KAM_HA;KAM_LA", "KAM_HA,LA", "KAM_DOUBLE_CONSISTENT"}) {
    uint32_t value = 99;
    EXPECT_FALSE(parse_mode(text, &value)) << text;
    EXPECT_EQ(value, 99u) << text;
  }
}

// Bits 4 to 7 and those of no field are never changed; a field of zero keeps what is there.
TEST(ModeWord, MergeReplacesWholeFields) {
  const uint32_t cases[][3] = {// clang-format off
      {0x1A02, 0, 0x1A02}, {0x1A02, 0x800, 0x802}, {0x1A02, 0x10, 0x1A02}, {0x1A32, 0x1, 0x1A31},
      {0x1A02, 0x280000, 0x281A02}, {0x281A02, 0x140000, 0x141A02}, {0x141A02, 0x40000, 0x41A02},
      {0x1A02, 0x3000000, 0x3001A02}, {0x3001A02, 0x8000000, 0x8001A02}, {0x1A02, 0x10000, 0x11A02},
      {0x11A02, 0x20000, 0x21A02}, {0x1A02, 0xF0C000F0, 0x1A02}, {0x3141A02, ~0u, 0xF3FFF0F}};
  // clang-format on
  for (const auto& [old, request, merged] : cases) {
    EXPECT_EQ(merge_mode(old, request), merged) << std::hex << old << ' ' << request;
  }
}

TEST(ModeWord, DefaultOfANewThread) {
  unsetenv(kVariable);
  EXPECT_EQ(in_new_thread(kamGetMode), 0x1A02u);
  std::string longest = "KAM_LA";  // up to 255 characters
  while (longest.size() + 7 <= 255) longest += ",KAM_LA";
  const std::pair<std::string, uint32_t> cases[] = {// clang-format off
      {"", 0x1A02}, {"KAM_LA", 0x1A01}, {"KAM_ERRMODE_ERRNO", 0x202}, {longest, 0x1A01},
      {longest + ",KAM_LA", 0x1A02}, {"KAM_HA,KAM_ERRMODE_ERRNO", 0x202},
      {"KAM_TRAP_INVALID", 0x1001A02}, {"KAM_LA,KAM_ERRMODE_ERRNO,nonsense", 0x1A02}};
  // clang-format on
  for (const auto& [text, mode] : cases) {
    setenv(kVariable, text.c_str(), 1);
    EXPECT_EQ(in_new_thread(kamGetMode), mode) << text;
    EXPECT_EQ(in_new_thread([] {
                const uint32_t first = kamSetMode(0);
                setenv(kVariable, "KAM_EP", 1);  // too late to matter
                return first == kamGetMode() ? first : 0;
              }),
              mode);
  }
  unsetenv(kVariable);
}

// Each thread has its own; setters return the old value, and any status is stored.
TEST(ThreadWords, ModeAndStatus) {
  EXPECT_EQ(kamSetMode(KAM_EP | KAM_ERRMODE_IGNORE) & KAM_ACCURACY_MASK, KAM_HA);
  kamClearErrStatus();
  EXPECT_EQ(kamSetErrStatus(1234), 0);
  EXPECT_EQ(in_new_thread(kamGetMode), 0x1A02u);
  EXPECT_EQ(in_new_thread(kamGetErrStatus), 0);
  EXPECT_EQ(kamGetMode(), 0x103u);
  const uint32_t mode = 0x1A02;
  EXPECT_EQ(kamsetmode(&mode), 0x103u);
  EXPECT_EQ(kamgetmode(), 0x1A02u);
  const int32_t next = -7;
  EXPECT_EQ(kamseterrstatus(&next), 1234);
  EXPECT_EQ(kamgeterrstatus(), -7);
  EXPECT_EQ(kamclearerrstatus(), -7);
  EXPECT_EQ(kamGetErrStatus(), 0);
}

int first_callback(KamErrorContext*) { return 0; }
int second_callback(KamErrorContext*) { return 1; }

TEST(Callback, ModeBitFollowsThePointer) {
  EXPECT_TRUE(in_new_thread([] {
    EXPECT_EQ(kamGetErrorCallBack(), nullptr);
    kamSetMode(KAM_ERRMODE_ERRNO);
    EXPECT_EQ(kamSetErrorCallBack(first_callback), nullptr);
    EXPECT_EQ(kamGetMode(), 0x1202u);
    EXPECT_EQ(kamseterrorcallback(second_callback), first_callback);
    EXPECT_EQ(kamgeterrorcallback(), second_callback);
    EXPECT_EQ(kamSetErrorCallBack(nullptr), second_callback);
    EXPECT_EQ(kamGetMode(), 0x202u);
    kamSetErrorCallBack(first_callback);
    EXPECT_EQ(kamClearErrorCallBack(), first_callback);
    EXPECT_EQ(kamGetMode(), 0x202u);

    // Alone in its field the bit stays: an empty field keeps what is there.
    kamSetMode(KAM_ERRMODE_CALLBACK);
    EXPECT_EQ(kamSetErrorCallBack(nullptr), nullptr);
    EXPECT_EQ(kamclearerrorcallback(), nullptr);
    return kamGetMode() == 0x1002u;
  }));
}

}  // namespace
