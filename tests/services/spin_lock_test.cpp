#include "services/spin_lock.h"

#include <gtest/gtest.h>
#include <sched.h>

#include <thread>
#include <vector>

namespace {

using orba::services::SpinGuard;
using orba::services::SpinLock;

TEST(SpinLock, GuardsACounterUnderContention) {
  constexpr int kThreads = 8;
  constexpr int kRounds = 20000;
  SpinLock lock;
  int counter = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < kRounds; ++i) {
        SpinGuard guard(lock);
        ++counter;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(counter, kThreads * kRounds);
}

// On one processor a waiting thread must give way to a holder that went to sleep.
TEST(SpinLock, ProgressesOnOneProcessor) {
  std::thread([] {
    cpu_set_t all, one;
    ASSERT_EQ(sched_getaffinity(0, sizeof all, &all), 0);
    CPU_ZERO(&one);
    for (int i = 0; i < CPU_SETSIZE && CPU_COUNT(&one) == 0; ++i) {
      if (CPU_ISSET(i, &all)) CPU_SET(i, &one);
    }
    ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);  // threads made here inherit it

    SpinLock lock;
    int turns = 0;
    const auto work = [&] {
      for (int i = 0; i < 200; ++i) {
        SpinGuard guard(lock);
        ++turns;
        sched_yield();
      }
    };
    std::thread first(work), second(work);
    first.join();
    second.join();
    EXPECT_EQ(turns, 400);
  }).join();
}

}  // namespace
