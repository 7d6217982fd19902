// Every one of the 273 generators has the period that its construction promises.
#include "statistics/streams/generators/wichmann_hill_table.h"

#include <gtest/gtest.h>

#include <numeric>
#include <set>
#include <vector>

#include "tests/streams/reference.h"

namespace {

using orba::statistics::kWichmannHillSets;

constexpr int kSets = sizeof kWichmannHillSets / sizeof kWichmannHillSets[0];
static_assert(kSets == 273);

std::vector<uint64_t> prime_factors(uint64_t n) {
  std::vector<uint64_t> factors;
  for (uint64_t p = 2; p * p <= n; ++p)
    for (; n % p == 0; n /= p) factors.push_back(p);
  if (n > 1) factors.push_back(n);
  return factors;
}

uint64_t power(uint64_t base, uint64_t exponent, uint64_t m) {
  uint64_t result = 1;
  for (; exponent != 0; exponent >>= 1) {
    if (exponent & 1) result = result * base % m;
    base = base * base % m;
  }
  return result;
}

bool is_primitive_root(uint64_t a, uint64_t m) {
  if (power(a, m - 1, m) != 1) return false;
  for (const uint64_t factor : prime_factors(m - 1))
    if (power(a, (m - 1) / factor, m) == 1) return false;
  return true;
}

// Moduli are primes used once, with coprime halves; multipliers the largest primitive roots left.
TEST(WichmannHillTable, EverySetHasItsPeriod) {
  std::set<uint32_t> moduli;
  for (int row = 0; row < kSets; ++row) {
    SCOPED_TRACE(row);
    const auto& [m, multiplier] = kWichmannHillSets[row];
    std::set<uint32_t> multipliers;
    for (int k = 0; k < 4; ++k) {
      EXPECT_TRUE(m[k] >= 16718909 && m[k] <= 16776971);
      EXPECT_EQ(prime_factors(m[k]).size(), 1u) << m[k];
      EXPECT_TRUE(moduli.insert(m[k]).second) << m[k];
      for (int other = 0; other < k; ++other) {
        EXPECT_LT(m[k], m[other]);
        EXPECT_EQ(std::gcd((m[k] - 1) / 2, (m[other] - 1) / 2), 1u) << m[k] << ' ' << m[other];
      }
      uint32_t a = 127;
      while (a >= 112 && (multipliers.count(a) != 0 || !is_primitive_root(a, m[k]))) --a;
      EXPECT_EQ(multiplier[k], a) << m[k];
      EXPECT_GE(multiplier[k], 112);
      multipliers.insert(a);
    }
  }
}

TEST(WichmannHillTable, GivenSets) {
  for (const auto& [row, modulus, multiplier] : orba::test::wichmann_hill_rows()) {
    for (size_t k = 0; k < 4; ++k) {
      EXPECT_EQ(kWichmannHillSets[row].modulus[k], modulus[k]) << row;
      EXPECT_EQ(kWichmannHillSets[row].multiplier[k], multiplier[k]) << row;
    }
  }
}

}  // namespace
