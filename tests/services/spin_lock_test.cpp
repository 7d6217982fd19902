#include "services/spin_lock.h"

#include <gtest/gtest.h>
#include <sched.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "tests/support/observe.h"
#include "tests/support/process.h"

namespace {

using orba::services::SpinGuard;
using orba::services::SpinLock;

TEST(SpinLock, GuardsACounterUnderContention) {
  constexpr int kThreads = 8;
  constexpr int kRounds = 20000;
  SpinLock lock;
  int counter = 0;
  orba::test::on_threads(kThreads, [&](int) {
    for (int i = 0; i < kRounds; ++i) {
      SpinGuard guard(lock);
      ++counter;
    }
  });
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
    orba::test::on_threads(2, [&](int) {
      for (int i = 0; i < 200; ++i) {
        SpinGuard guard(lock);
        ++turns;
        sched_yield();
      }
    });
    EXPECT_EQ(turns, 400);
  }).join();
}

// A fork waits for the holder, so the child finds the lock free and what it guards whole. A holder
// that takes too long is not waited for; the child does not wait for him either.
TEST(SpinLock, InAForkedChild) {
  for (const int milliseconds : {50, 2000}) {
    SpinLock lock;
    int first = 0, second = 0;
    std::atomic<bool> inside{false};
    std::thread holder([&] {
      SpinGuard guard(lock);
      first = 1;
      inside = true;
      std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
      second = 1;
    });
    while (!inside) std::this_thread::yield();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(orba::test::in_child([&] {
                for (int round = 0; round < 3; ++round) SpinGuard guard(lock);
                return first == second;
              }),
              milliseconds < 100);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1500));
    holder.join();
    EXPECT_TRUE(lock.try_lock());
  }
}

}  // namespace
