// Ways to look at what a call leaves behind.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace orba::test {

// What a call prints on the standard output stream.
template <class Call>
std::string stdout_of(Call call) {
  testing::internal::CaptureStdout();
  call();
  return testing::internal::GetCapturedStdout();
}

// Result of a call on a thread that has never used the library.
template <class Call>
auto in_new_thread(Call call) {
  std::invoke_result_t<Call> result;
  std::thread([&] { result = call(); }).join();
  return result;
}

// Runs `work` with the numbers 0 to count - 1 at the same time: a spinning barrier, as a sleeping
// one lets the threads go one by one.
template <class Work>
void on_threads(int count, Work work) {
  std::atomic<int> waiting{count};
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) {
    threads.emplace_back([&, i] {
      waiting.fetch_sub(1);
      while (waiting.load() > 0) {
      }
      work(i);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace orba::test
