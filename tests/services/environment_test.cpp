#include "services/environment.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <string>

namespace {

using namespace orba::services;

constexpr char kName[] = "ORBA_TEST_VALUE";

TEST(Environment, LengthOfEveryBufferSize) {
  char buffer[16];
  unsetenv(kName);
  EXPECT_EQ(read_environment(kName, buffer, sizeof buffer), 0);
  setenv(kName, "", 1);
  EXPECT_EQ(read_environment(kName, buffer, sizeof buffer), 0);

  const std::string value = "0123456789";
  setenv(kName, value.c_str(), 1);
  for (int size = -1; size <= 16; ++size) {
    const int length = read_environment(kName, buffer, size);
    if (size > 10) {
      EXPECT_EQ(length, 10) << size;
      EXPECT_EQ(buffer, value) << size;
    } else {
      EXPECT_EQ(length, -11) << size;  // the size it needs
    }
  }
  unsetenv(kName);
}

TEST(Environment, ScrambledName) {
  constexpr auto scrambled = scramble(kName);
  EXPECT_EQ(scrambled[0], 'O' ^ 1);
  EXPECT_EQ(scrambled[1], 'R' ^ 3);
  EXPECT_EQ(scrambled[2], 'B' ^ 5);
  EXPECT_EQ(scrambled[3], 'A' ^ 2);
  EXPECT_EQ(scrambled[4], '_' ^ 4);
  EXPECT_EQ(scrambled[5], 'T' ^ 1);

  setenv(kName, "found", 1);
  char buffer[16];
  const int length = static_cast<int>(scrambled.size());
  EXPECT_EQ(read_scrambled_environment(scrambled.data(), length, buffer, sizeof buffer), 5);
  EXPECT_STREQ(buffer, "found");
  EXPECT_EQ(read_scrambled_environment(scrambled.data(), length - 1, buffer, sizeof buffer), 0);
  const std::string too_long(32, 'x');
  EXPECT_EQ(read_scrambled_environment(too_long.data(), 32, buffer, sizeof buffer), 0);
  unsetenv(kName);
}

}  // namespace
