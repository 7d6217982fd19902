#include "services/memory.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <string>
#include <utility>

#include "tests/support/process.h"

namespace {

using namespace orba::services;

TEST(Memory, AlignedAndWritable) {
  const std::pair<int, uintptr_t> asked_and_given[] = {{-64, 64}, {0, 64},    {3, 64},     {32, 64},
                                                       {96, 64},  {128, 128}, {4096, 4096}};
  for (const auto& [asked, given] : asked_and_given) {
    for (const uint64_t size : {1u, 63u, 1000u, 100000u}) {
      void* blocks[] = {allocate(size, asked), allocate_plain(size, asked),
                        allocate_zeroed(1, size, asked)};
      for (void* block : blocks) {
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % given, 0u) << asked << ' ' << size;
      }
      const auto* zeroed = static_cast<const char*>(blocks[2]);
      EXPECT_EQ(std::count(zeroed, zeroed + size, 0), static_cast<ptrdiff_t>(size));
      for (void* block : blocks) memset(block, 0xFF, size);
      free_memory(blocks[0]);
      free_plain(blocks[1]);
      free_memory(blocks[2]);
    }
  }
}

TEST(Memory, NullForWhatCannotBe) {
  for (void* block :
       {allocate(0, 64), allocate_plain(0, 64), allocate_zeroed(0, 8, 64),
        allocate_zeroed(8, 0, 64), allocate(UINT64_MAX, 64), allocate(UINT64_MAX - 100, 4096),
        allocate_zeroed(uint64_t{1} << 33, uint64_t{1} << 33, 64)}) {
    EXPECT_EQ(block, nullptr);
  }
  free_memory(nullptr);
}

// Any value, even one that is longer than the buffer it is read into; read once.
TEST(Memory, FastMemorySwitch) {
  if (orba::test::in_test_process()) {
    const bool first = fast_memory_disabled();
    setenv("ORBA_DISABLE_FAST_MM", first ? "" : "1", 1);
    printf("\nswitch %d %d\n", first, fast_memory_disabled());
    return;
  }
  for (const std::string& value : {std::string(), std::string("0"), std::string(50, 'x')}) {
    const std::string expected = value.empty() ? "switch 0 0" : "switch 1 1";
    EXPECT_NE(orba::test::run_test_process("ORBA_DISABLE_FAST_MM=" + value).output.find(expected),
              std::string::npos)
        << value;
  }
}

}  // namespace
