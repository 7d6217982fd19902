#include "services/spin_lock.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
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

// A fork waits for the holder, so the child finds the lock free and what it guards whole. A holder
// that takes too long is not waited for; the child does not wait for him either.
TEST(SpinLock, InAForkedChild) {
  for (const int milliseconds : {50, 2000}) {
    const bool whole = milliseconds < 100;
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
    const pid_t child = fork();
    if (child == 0) {
      alarm(10);
      for (int round = 0; round < 3; ++round) SpinGuard guard(lock);
      _exit(first == second);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1500));
    int status;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), whole);
    holder.join();
    EXPECT_TRUE(lock.try_lock());
  }
}

}  // namespace
