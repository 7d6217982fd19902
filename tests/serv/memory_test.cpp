#include "serv/memory.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>

namespace {

using namespace orba::serv;

TEST(Memory, AlignmentOfEveryRoutine) {
  struct Case {
    int asked;
    uintptr_t given;
  };
  const Case cases[] = {{-64, 64}, {0, 64},  {1, 64},    {3, 64},      {32, 64},
                        {96, 64},  {64, 64}, {128, 128}, {4096, 4096}, {1 << 21, 1 << 21}};
  for (const Case& c : cases) {
    for (const uint64_t size : {1u, 63u, 64u, 1000u, 100000u}) {
      void* blocks[] = {allocate(size, c.asked), allocate_zeroed(1, size, c.asked)};
      for (void* block : blocks) {
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % c.given, 0u) << c.asked << ' ' << size;
        memset(block, 0xA5, size);
        free_memory(block);
      }
      void* plain = allocate_plain(size, c.asked);
      ASSERT_NE(plain, nullptr);
      EXPECT_EQ(reinterpret_cast<uintptr_t>(plain) % c.given, 0u) << c.asked << ' ' << size;
      memset(plain, 0xA5, size);
      free_plain(plain);
    }
  }
}

TEST(Memory, Zeroed) {
  // Dirty a block first, so that the allocator has something to hand out again.
  void* dirty = allocate(3000, 64);
  memset(dirty, 0xFF, 3000);
  free_memory(dirty);
  auto* block = static_cast<char*>(allocate_zeroed(30, 100, 64));
  EXPECT_TRUE(std::all_of(block, block + 3000, [](char byte) { return byte == 0; }));
  free_memory(block);
}

TEST(Memory, NullForWhatCannotBe) {
  EXPECT_EQ(allocate(0, 64), nullptr);
  EXPECT_EQ(allocate_plain(0, 64), nullptr);
  EXPECT_EQ(allocate_zeroed(0, 8, 64), nullptr);
  EXPECT_EQ(allocate_zeroed(8, 0, 64), nullptr);
  EXPECT_EQ(allocate(UINT64_MAX, 64), nullptr);
  EXPECT_EQ(allocate(UINT64_MAX - 100, 4096), nullptr);
  EXPECT_EQ(allocate_zeroed(uint64_t{1} << 33, uint64_t{1} << 33, 64), nullptr);
  free_memory(nullptr);
}

TEST(MemoryDeathTest, FastMemorySwitch) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  struct Case {
    const char* value;
    int disabled;
  };
  for (const Case& c : {Case{"", 0}, Case{"1", 1}, Case{"0", 1},
                        Case{"a value longer than the buffer that it is read into", 1}}) {
    EXPECT_EXIT(
        {
          setenv("ORBA_DISABLE_FAST_MM", c.value, 1);
          const bool first = fast_memory_disabled();
          setenv("ORBA_DISABLE_FAST_MM", first ? "" : "1", 1);  // read once
          _exit(first == fast_memory_disabled() ? first : 2);
        },
        testing::ExitedWithCode(c.disabled), "")
        << c.value;
  }
}

}  // namespace
