#include "services/bounded_string.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace orba::services;

std::string reported;
int reported_code;
void note(const char* message, int code) {
  reported = message;
  reported_code = code;
}

class BoundedString : public testing::Test {
 protected:
  void SetUp() override {
    reported.clear();
    reported_code = 0;
    set_string_constraint_handler(note);
    set_bytes_constraint_handler(note);
  }
  void TearDown() override {
    set_string_constraint_handler(nullptr);
    set_bytes_constraint_handler(nullptr);
  }
};

struct StringCase {
  int (*routine)(char*, size_t, const char*, size_t);
  const char* before;  // what the destination holds, null for a null pointer
  size_t size;
  const char* source;
  size_t count;
  int code;
  const char* after;
  const char* message;
};

TEST_F(BoundedString, CopyAndConcatenate) {
  constexpr size_t kTooLarge = kBoundedStringLimit + 1;
  const StringCase cases[] = {
      {copy_string, "old", 8, "abc", 8, 0, "abc", ""},
      {copy_string, "old", 8, "abcdef", 3, 0, "abc", ""},
      {copy_string, "old", 4, "abc", 3, 0, "abc", ""},
      {copy_string, "old", 8, "abc", 0, 0, "", ""},
      {copy_string, "old", 3, "abc", 8, 406, "", "strncpy_s: not enough space for src"},
      {copy_string, nullptr, 8, "abc", 3, 400, "", "strncpy_s: dest is null"},
      {copy_string, "old", 0, "abc", 3, 401, "old", "strncpy_s: dmax is 0"},
      {copy_string, "old", kTooLarge, "abc", 3, 403, "", "strncpy_s: dmax exceeds max"},
      {copy_string, "old", 8, nullptr, 3, 400, "", "strncpy_s: src is null"},
      {copy_string, "old", 8, "abc", kTooLarge, 403, "", "strncpy_s: slen exceeds max"},
      {concatenate_string, "old", 8, "abc", 8, 0, "oldabc", ""},
      {concatenate_string, "old", 6, "abc", 2, 0, "oldab", ""},
      {concatenate_string, "old", 8, "abc", 0, 0, "old", ""},
      {concatenate_string, "old", 6, "abc", 3, 406, "", "strncat_s: not enough space for src"},
      {concatenate_string, "old", 3, "abc", 3, 407, "", "strncat_s: dest unterminated"},
      {concatenate_string, "old", 8, nullptr, 3, 400, "", "strncat_s: src is null"}};
  for (const StringCase& c : cases) {
    SCOPED_TRACE(std::string(c.message) + " " + std::to_string(&c - cases));
    SetUp();
    char memory[16] = {};
    if (c.before != nullptr) std::string(c.before).copy(memory, sizeof memory);
    EXPECT_EQ(c.routine(c.before ? memory : nullptr, c.size, c.source, c.count), c.code);
    EXPECT_STREQ(memory, c.after);
    EXPECT_EQ(reported, c.message);
    EXPECT_EQ(reported_code, c.code);
  }
}

TEST_F(BoundedString, Overlap) {
  struct Case {
    int to, from, count, code;
  };
  // In the second case only the NUL would touch the source.
  for (const Case& c :
       {Case{0, 4, 3, 0}, Case{0, 4, 4, 404}, Case{0, 2, 6, 404}, Case{2, 0, 4, 404}}) {
    char text[16] = "abcdefgh";
    EXPECT_EQ(copy_string(text + c.to, 10, text + c.from, c.count), c.code) << c.from << c.count;
    EXPECT_STREQ(text + c.to, c.code == 0 ? "efg" : "");
  }
  char self[16] = "abc";
  EXPECT_EQ(concatenate_string(self, 16, self, 3), 404);
}

TEST_F(BoundedString, Length) {
  EXPECT_EQ(string_length("abc", 25), 3u);
  EXPECT_EQ(string_length("abc", 2), 2u);
  EXPECT_EQ(string_length("", 25), 0u);
  EXPECT_EQ(reported_code, 0);
  EXPECT_EQ(string_length(nullptr, 25), 0u);
  EXPECT_EQ(reported_code, 400);
  EXPECT_EQ(string_length("abc", 0), 0u);
  EXPECT_EQ(reported_code, 401);
  EXPECT_EQ(string_length("abc", 4097), 0u);
  EXPECT_EQ(reported_code, 403);
}

struct BytesCase {
  bool has_dest;
  size_t size;
  bool has_source;
  size_t count;
  int code;
  char first;  // of the destination afterwards
  const char* message;
};

TEST_F(BoundedString, CopyBytes) {
  const BytesCase cases[] = {{true, 4, true, 4, 0, 'a', ""},
                             {false, 4, true, 4, 400, 'x', "memcpy_s: dest is NULL"},
                             {true, 0, true, 4, 401, 'x', "memcpy_s: dmax is 0"},
                             {true, 4097, true, 4, 403, '\0', "memcpy_s: dmax exceeds max"},
                             {true, 4, false, 4, 400, '\0', "memcpy_s: src is NULL"},
                             {true, 4, true, 0, 401, '\0', "memcpy_s: smax is 0"},
                             {true, 4, true, 5, 403, '\0', "memcpy_s: smax exceeds dmax"}};
  for (const BytesCase& c : cases) {
    SCOPED_TRACE(c.message);
    SetUp();
    char dest[8] = {'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x'};
    const char source[] = "abcdefg";
    EXPECT_EQ(
        copy_bytes(c.has_dest ? dest : nullptr, c.size, c.has_source ? source : nullptr, c.count),
        c.code);
    EXPECT_EQ(dest[0], c.first);
    EXPECT_EQ(dest[4], 'x');
    EXPECT_EQ(reported, c.message);
  }
  char both[8] = "abcdefg";
  EXPECT_EQ(copy_bytes(both, 8, both + 3, 4), 404);
  EXPECT_EQ(reported, "memcpy_s: overlap undefined");
}

}  // namespace
