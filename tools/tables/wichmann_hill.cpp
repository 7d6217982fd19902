// Writes the parameters of the 273 Wichmann-Hill generators to standard output:
//   tool_wichmann_hill > statistics/streams/generators/wichmann_hill_table.h
//
// Four generators are given. The others take the remaining primes of the range from the top down,
// four to a row: a prime joins the row if its (m - 1)/2 has no factor in common with those of the
// row and one of the multipliers is left that is a primitive root of it.
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <list>
#include <numeric>
#include <set>
#include <utility>
#include <vector>

namespace {

constexpr uint32_t kFirst = 16718909, kLast = 16776971;
constexpr int kSets = 273;

struct Set {
  std::vector<uint32_t> moduli;
  std::vector<uint32_t> multipliers;
};

std::vector<uint32_t> prime_factors(uint32_t n) {
  std::vector<uint32_t> factors;
  for (uint32_t p = 2; p * p <= n; ++p) {
    if (n % p != 0) continue;
    factors.push_back(p);
    while (n % p == 0) n /= p;
  }
  if (n > 1) factors.push_back(n);
  return factors;
}

bool is_prime(uint32_t n) { return prime_factors(n) == std::vector<uint32_t>{n}; }

uint32_t power(uint64_t base, uint32_t exponent, uint32_t m) {
  uint64_t result = 1;
  for (; exponent != 0; exponent >>= 1) {
    if (exponent & 1) result = result * base % m;
    base = base * base % m;
  }
  return static_cast<uint32_t>(result);
}

bool is_primitive_root(uint32_t a, uint32_t prime) {
  for (const uint32_t factor : prime_factors(prime - 1))
    if (power(a, (prime - 1) / factor, prime) == 1) return false;
  return true;
}

// Adds a modulus and the largest multiplier that the set does not use, if both fit.
bool join(Set& set, uint32_t m) {
  for (const uint32_t other : set.moduli)
    if (std::gcd((m - 1) / 2, (other - 1) / 2) != 1) return false;
  for (uint32_t a = 127; a >= 112; --a) {
    bool used = false;
    for (const uint32_t other : set.multipliers) used = used || a == other;
    if (used || !is_primitive_root(a, m)) continue;
    set.moduli.push_back(m);
    set.multipliers.push_back(a);
    return true;
  }
  return false;
}

}  // namespace

int main() {
  std::vector<Set> sets(kSets);
  const std::vector<std::pair<int, std::vector<uint32_t>>> given = {
      {0, {16770647, 16770643, 16770623, 16770617}},
      {1, {16770311, 16770283, 16770263, 16770209}},
      {2, {16769807, 16769771, 16769749, 16769663}},
      {272, {16766363, 16766359, 16766327, 16766231}}};
  std::set<uint32_t> used;
  for (const auto& [row, moduli] : given) {
    for (const uint32_t m : moduli) {
      if (!is_prime(m) || !join(sets[static_cast<size_t>(row)], m)) return 1;
      used.insert(m);
    }
  }
  std::list<uint32_t> free;
  for (uint32_t m = kLast; m >= kFirst; m -= 2)
    if (used.count(m) == 0 && is_prime(m)) free.push_back(m);
  for (Set& set : sets) {
    for (auto m = free.begin(); set.moduli.size() < 4;) {
      if (m == free.end()) return 1;
      m = join(set, *m) ? free.erase(m) : std::next(m);
    }
  }

  std::printf(
      "// Written by tools/tables/wichmann_hill.cpp; do not edit.\n"
      "// clang-format off\n"
      "#pragma once\n\n"
      "#include <stdint.h>\n\n"
      "namespace orba::statistics {\n\n"
      "// Moduli and multipliers of a Wichmann-Hill generator.\n"
      "struct WichmannHillSet {\n"
      "  uint32_t modulus[4];\n"
      "  uint8_t multiplier[4];\n"
      "};\n\n"
      "constexpr WichmannHillSet kWichmannHillSets[%d] = {\n",
      kSets);
  for (const Set& set : sets)
    std::printf("    {{%u, %u, %u, %u}, {%u, %u, %u, %u}},\n", set.moduli[0], set.moduli[1],
                set.moduli[2], set.moduli[3], set.multipliers[0], set.multipliers[1],
                set.multipliers[2], set.multipliers[3]);
  std::printf("};\n\n}  // namespace orba::statistics\n");
}
