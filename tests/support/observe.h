// Ways to look at what a call leaves behind.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <type_traits>

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

}  // namespace orba::test
