#include "services/bounded_string.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace orba::services;

int reported_code;
void note(const char* message, int code) {
  EXPECT_NE(message, nullptr);
  reported_code = code;
}

struct BoundedString : testing::Test {
  BoundedString() { set_handlers(note); }
  ~BoundedString() override { set_handlers(nullptr); }
  static void set_handlers(decltype(&note) handler) {
    set_string_constraint_handler(handler);
    set_bytes_constraint_handler(handler);
  }
};

constexpr size_t kTooLarge = kBoundedStringLimit + 1;

TEST_F(BoundedString, CopyAndConcatenate) {
  const struct {
    int (*routine)(char*, size_t, const char*, size_t);
    bool has_dest;  // which holds "old"
    size_t size;
    const char* source;
    size_t count;
    int code;
    const char* after;
  } cases[] = {// clang-format off
      {copy_string, true, 8, "abc", 8, 0, "abc"}, {copy_string, true, 8, "abcdef", 3, 0, "abc"},
      {copy_string, true, 4, "abc", 3, 0, "abc"}, {copy_string, true, 8, "abc", 0, 0, ""},
      {copy_string, true, 3, "abc", 8, 406, ""}, {copy_string, false, 8, "abc", 3, 400, ""},
      {copy_string, true, 0, "abc", 3, 401, "old"},
      {copy_string, true, kTooLarge, "abc", 3, 403, ""},
      {copy_string, true, 8, nullptr, 3, 400, ""},
      {copy_string, true, 8, "abc", kTooLarge, 403, ""},
      {concatenate_string, true, 8, "abc", 8, 0, "oldabc"},
      {concatenate_string, true, 6, "abc", 2, 0, "oldab"},
      {concatenate_string, true, 8, "abc", 0, 0, "old"},
      {concatenate_string, true, 6, "abc", 3, 406, ""},
      {concatenate_string, true, 3, "abc", 3, 407, ""},
      {concatenate_string, true, 8, nullptr, 3, 400, ""}};
  // clang-format on
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    reported_code = 0;
    char memory[16] = {};
    if (c.has_dest) std::string("old").copy(memory, 3);
    EXPECT_EQ(c.routine(c.has_dest ? memory : nullptr, c.size, c.source, c.count), c.code);
    EXPECT_STREQ(memory, c.after);
    EXPECT_EQ(reported_code, c.code);
  }
  // Overlap. In the second case only the NUL would touch the source.
  const int overlaps[][4] = {{0, 4, 3, 0}, {0, 4, 4, 404}, {0, 2, 6, 404}, {2, 0, 4, 404}};
  for (const auto& [to, from, count, code] : overlaps) {
    char text[16] = "abcdefgh";
    EXPECT_EQ(copy_string(text + to, 10, text + from, static_cast<size_t>(count)), code) << from;
    EXPECT_STREQ(text + to, code == 0 ? "efg" : "");
  }
  char self[16] = "abc";
  EXPECT_EQ(concatenate_string(self, 16, self, 3), 404);
}

TEST_F(BoundedString, Length) {
  const struct {
    const char* text;
    size_t size, length;
    int code;
  } cases[] = {{"abc", 25, 3, 0},     {"abc", 2, 2, 0},   {"", 25, 0, 0},
               {nullptr, 25, 0, 400}, {"abc", 0, 0, 401}, {"abc", kTooLarge, 0, 403}};
  for (const auto& c : cases) {
    reported_code = 0;
    EXPECT_EQ(string_length(c.text, c.size), c.length);
    EXPECT_EQ(reported_code, c.code);
  }
}

TEST_F(BoundedString, CopyBytes) {
  const struct {
    bool has_dest;
    size_t size;
    bool has_source;
    size_t count;
    int code;
    char first;  // of the destination afterwards
  } cases[] = {  // clang-format off
      {true, 4, true, 4, 0, 'a'}, {false, 4, true, 4, 400, 'x'}, {true, 0, true, 4, 401, 'x'},
      {true, kTooLarge, true, 4, 403, '\0'}, {true, 4, false, 4, 400, '\0'},
      {true, 4, true, 0, 401, '\0'}, {true, 4, true, 5, 403, '\0'}};
  // clang-format on
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    reported_code = 0;
    char dest[] = "xxxxxxx";
    const void* source = c.has_source ? "abcdefg" : nullptr;
    EXPECT_EQ(copy_bytes(c.has_dest ? dest : nullptr, c.size, source, c.count), c.code);
    EXPECT_EQ(dest[0], c.first);
    EXPECT_EQ(dest[4], 'x');
    EXPECT_EQ(reported_code, c.code);
  }
  char both[8] = "abcdefg";
  EXPECT_EQ(copy_bytes(both, 8, both + 3, 4), 404);
}

}  // namespace
