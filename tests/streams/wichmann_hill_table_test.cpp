// Every one of the 273 generators has the period that its construction promises.
#include "statistics/streams/generators/wichmann_hill_table.h"

#include <gtest/gtest.h>

#include <numeric>
#include <set>
#include <vector>

namespace {

using orba::statistics::kWichmannHillSets;
using orba::statistics::WichmannHillSet;

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

TEST(WichmannHillTable, ModuliArePrimesUsedOnceWithCoprimeHalves) {
  std::set<uint32_t> used;
  for (int row = 0; row < kSets; ++row) {
    SCOPED_TRACE(row);
    const auto& m = kWichmannHillSets[row].modulus;
    for (int k = 0; k < 4; ++k) {
      EXPECT_GE(m[k], 16718909u);
      EXPECT_LE(m[k], 16776971u);
      EXPECT_EQ(prime_factors(m[k]).size(), 1u) << m[k];
      EXPECT_TRUE(used.insert(m[k]).second) << m[k];
      for (int other = 0; other < k; ++other) {
        EXPECT_LT(m[k], m[other]);
        EXPECT_EQ(std::gcd((m[k] - 1) / 2, (m[other] - 1) / 2), 1u) << m[k] << ' ' << m[other];
      }
    }
  }
}

TEST(WichmannHillTable, MultipliersAreTheLargestPrimitiveRootsLeft) {
  for (int row = 0; row < kSets; ++row) {
    SCOPED_TRACE(row);
    const WichmannHillSet& set = kWichmannHillSets[row];
    std::set<uint32_t> used;
    for (int k = 0; k < 4; ++k) {
      uint32_t a = 127;
      while (a >= 112 && (used.count(a) != 0 || !is_primitive_root(a, set.modulus[k]))) --a;
      EXPECT_EQ(set.multiplier[k], a) << set.modulus[k];
      EXPECT_GE(set.multiplier[k], 112);
      used.insert(set.multiplier[k]);
    }
  }
}

TEST(WichmannHillTable, GivenSets) {
  const struct {
    int row;
    WichmannHillSet set;
  } given[] = {{0, {{16770647, 16770643, 16770623, 16770617}, {125, 117, 127, 126}}},
               {1, {{16770311, 16770283, 16770263, 16770209}, {127, 126, 125, 123}}},
               {2, {{16769807, 16769771, 16769749, 16769663}, {125, 119, 123, 126}}},
               {272, {{16766363, 16766359, 16766327, 16766231}, {126, 127, 125, 124}}}};
  for (const auto& [row, set] : given) {
    for (int k = 0; k < 4; ++k) {
      EXPECT_EQ(kWichmannHillSets[row].modulus[k], set.modulus[k]) << row;
      EXPECT_EQ(kWichmannHillSets[row].multiplier[k], set.multiplier[k]) << row;
    }
  }
}

}  // namespace
