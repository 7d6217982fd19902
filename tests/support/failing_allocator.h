// Lack of memory on command. A program that uses this is linked with failing_allocator.cpp and
// -Wl,--wrap=aligned_alloc -Wl,--wrap=free: the library's one call for memory, and its release,
// then come here first.
#pragma once

#include <gtest/gtest.h>
#include <stdint.h>

namespace orba::test {

// While it lives, allocation number `number` (from 1; 0 for none) of the library fails, on whatever
// thread. One at a time.
class FailingAllocator {
 public:
  explicit FailingAllocator(int64_t number);
  ~FailingAllocator();
  FailingAllocator(const FailingAllocator&) = delete;
  FailingAllocator& operator=(const FailingAllocator&) = delete;

  bool failed() const;          // the call came as far as that allocation
  int64_t live_blocks() const;  // taken and not given back since
};

// Makes the call again and again, with its first, second, ... allocation failing, until it succeeds
// because it makes no more of them. Each time else it has to return `status` and to hold no block;
// `check()` looks at what it left behind. Returns the number of allocations.
template <class Call, class Check>
int64_t fail_each_allocation(int32_t status, Call call, Check check) {
  constexpr int64_t kMost = 1000;
  for (int64_t number = 1; number < kMost; ++number) {
    const FailingAllocator allocator(number);
    const int32_t got = call();
    if (!allocator.failed()) {
      EXPECT_EQ(got, 0);
      return number - 1;
    }
    EXPECT_EQ(got, status) << "allocation " << number;
    EXPECT_EQ(allocator.live_blocks(), 0) << "allocation " << number;
    check();
  }
  ADD_FAILURE() << "no end of allocations";
  return kMost;
}

}  // namespace orba::test
