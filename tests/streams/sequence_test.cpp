// The sequence of every generator on every class: against known answers and exact arithmetic, in
// whatever pieces and types it is asked for.

#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <numeric>
#include <set>
#include <sstream>

#include "statistics/streams/generators/wichmann_hill_table.h"
#include "tests/streams/streams.h"

namespace orba::test {
namespace {

// A file NAME.txt in kat/ has the numbers of the generator's row (uniform bits: 0 none, 1 words, 2
// upper words) and, for seeds, outputs (index of the first), words of the state, whose layout images
// depend on (number of outputs before, index of the first), and the state 2^p steps on.
TEST(Sequence, KnownAnswers) {
  for_each_subject([](const Subject& subject) {
    std::set<std::string> read;
    std::string name = subject.generator;
    for (char& c : name) c = static_cast<char>(std::tolower(c));
    std::ifstream input(std::string(ORBA_KNOWN_ANSWERS) + "/" + name + ".txt");
    const size_t width = subject.output_words();
    Words seed;
    for (std::string line; std::getline(input, line);) {
      std::istringstream fields(line);
      std::string key;
      unsigned first = 0, word = 0;
      fields >> key;
      if (key == "#") continue;
      if (key != "seed" && key != "row") fields >> first;
      if (key == "state") fields >> word;
      const Words values{std::istream_iterator<uint32_t>(fields), {}};
      ASSERT_FALSE(values.empty());
      read.insert(key);
      Words got;
      if (key == "row") {
        const statistics::Brng& p = subject.row();
        for (const int32_t number : {p.StreamStateSize, p.NSeeds, p.IncludesZero, p.WordSize,
                                     p.NBits, p.sub_generators, static_cast<int>(p.uniform_bits)}) {
          got.push_back(static_cast<uint32_t>(number));
        }
      } else if (key == "seed") {
        got = seed = values;
      } else if (key == "outputs") {
        const Words all = Stream(subject.brng, seed).words(first + values.size() / width);
        got = slice(all, first * width, values.size());
      } else if (key == "state") {
        Stream stream(subject.brng, seed);
        stream.words(first);
        got = stream.state_words(word, values.size());
      } else if (key == "skip") {
        std::vector<uint64_t> steps(4);
        steps[first / 64] = uint64_t{1} << first % 64;
        for (size_t count = first / 64 + 1; count <= 4; ++count) {
          Stream moved(subject.brng, seed);
          ASSERT_EQ(subject.move_by_words(moved, slice(steps, 0, count)), 0);
          append(got, moved.state_words(0, count < 4 ? 0 : values.size()));
        }
      }
      EXPECT_TRUE(same(got, values)) << line;
    }
    std::set<std::string> expected = {"row", "seed", "outputs", "state"};
    if (subject.can(statistics::kSkipAheadWords)) expected.insert("skip");
    EXPECT_TRUE(read == expected || name.find(' ') != std::string::npos) << "what is known";
  });
}

// Every generator maps any seed to a state of its own: words that are missing, too many, zero, at
// the moduli and above.
TEST(Sequence, EverySeedIsMapped) {
  const uint32_t m1 = 4294967087, m2 = 4294944443, top = 0xffffffff, mersenne = 0x7fffffff;
  std::vector<Words> seeds = {{}, {0}, {7}, {top}, {mersenne}, {2 * mersenne}, {mersenne + 1}};
  append(seeds, {{0, 0x08000000}, {0, 0xf8000000}});  // 0 once cut to 59 bits
  append(seeds, {{5, top}, {0, 0, 0}, {0, 0, 0, 0, 0, 0}, {1, 2, 3, 4, 5, 6, 7, 8}});
  append(seeds, {{m1, m1, m1, m2, m2, m2}, {m1, 0, m1, 0, m2, 3}});
  append(seeds, {{m1 - 1, m1 + 1, top, m2 - 1, m2 + 1, top}});
  for (const WichmannHillRow& row : kWichmannHillRows) {
    const auto& m = row.modulus;
    seeds.push_back({m[0], 2 * m[1], m[2] - 1, m[3] + 1});
  }
  for (const size_t n : {249, 250, 251, 252, 300}) {
    seeds.emplace_back();
    for (uint32_t i = 0; i < n; ++i) seeds.back().push_back(i * 2654435761u + 1);
  }
  for_each_subject([&](const Subject& subject) {
    for (const Words& seed : seeds) {
      EXPECT_TRUE(same(Stream(subject.brng, seed).words(600), reference_words(subject, seed, 600)))
          << seed.size() << " seed words, the first of " << testing::PrintToString(seed);
    }
    StreamState *by_default = nullptr, *by_word = nullptr;
    EXPECT_EQ(rauNewStreamEx(&by_default, subject.brng, INT32_MIN, nullptr), 0);
    EXPECT_EQ(rauNewStream(&by_word, subject.brng, 7), 0);
    EXPECT_TRUE(same(Stream(by_default).words(5), reference_words(subject, {}, 5)));
    EXPECT_TRUE(same(Stream(by_word).words(5), reference_words(subject, {7}, 5)));
  });
}

// A sequence is exact in integers on every class, and doesn't depend on the lengths of the requests,
// of any type, nor on the types before.
TEST(Sequence, AnySplitOfARequestGivesOneSequence) {
  constexpr size_t kLargest = 300, kBehind = 270, kTotal = 70500;
  std::vector<std::vector<size_t>> splits = {
      {1, 2, 3, 55, 65536, 7, 250, 1000, 16, 249, 251, 31, 33, 8, 4}, {70003, 147, 1, 103}};
  for (size_t n = 0; n <= kLargest; ++n) splits.push_back({n, kBehind});
  for (const size_t n : {15, 16, 17, 31, 32, 33, 63, 64, 65, 146, 147, 148, 385, 769}) {
    for (size_t first = 0; first <= n; ++first) splits.push_back({first, n - first});
  }
  for_each_subject([&](const Subject& subject) {
    Stream start(subject.brng, full_seed(subject));
    start.words(3);
    const Words words = start.copy().words(kTotal);
    const size_t width = subject.output_words();
    const Words exact = reference_words(subject, full_seed(subject), kTotal + 3);
    ASSERT_TRUE(same(words, slice(exact, 3 * width, kTotal * width)));
    const auto check = [&](uint32_t output, size_t element_width, auto draw) {
      if (!subject.can(output)) return;
      Stream whole = start.copy();
      const auto all = draw(whole, kTotal);
      for (const std::vector<size_t>& split : splits) {
        Stream stream = start.copy();
        size_t position = 0;
        for (const size_t n : split) {
          ASSERT_TRUE(
              same(draw(stream, n), slice(all, position * element_width, n * element_width)))
              << n << " behind " << position;
          position += n;
        }
        ASSERT_TRUE(same(stream.words(3), slice(words, position * width, 3 * width)))
            << "behind " << position;
      }
    };
    check(statistics::kIntegers, width, [](Stream& s, size_t n) { return s.words(n); });
    check(statistics::kDoubles, 1, [](Stream& s, size_t n) { return s.doubles(n, -1.7, 3.1); });
    check(statistics::kSingles, 1, [](Stream& s, size_t n) { return s.floats(n, -1.7f, 3.1f); });
    check(statistics::kDoubles, 1, [](Stream& s, size_t n) { return s.integers(n, -70, 30); });
  });
}

// ---- Exact integers ----

uint64_t power(uint64_t base, uint64_t exponent, uint64_t m) {
  uint64_t result = 1;
  for (; exponent != 0; exponent >>= 1, base = base * base % m) {
    if (exponent & 1) result = result * base % m;
  }
  return result;
}
uint64_t modulo(int64_t a, int64_t m) { return static_cast<uint64_t>((a % m + m) % m); }

std::vector<uint64_t> prime_factors(uint64_t n) {
  std::vector<uint64_t> factors;
  for (uint64_t p = 2; p * p <= n; ++p) {
    for (; n % p == 0; n /= p) factors.push_back(p);
  }
  if (n > 1) factors.push_back(n);
  return factors;
}

// Each of the 273 Wichmann-Hill generators has the period that its construction promises: moduli are
// primes used once, with coprime halves; multipliers the largest primitive roots left.
TEST(WichmannHillTable, EverySetHasItsPeriod) {
  std::set<uint32_t> moduli;
  for (const auto& [m, multiplier] : statistics::kWichmannHillSets) {
    std::set<uint32_t> multipliers;
    for (int k = 0; k < 4; ++k) {
      EXPECT_TRUE(m[k] >= 16718909 && m[k] <= 16776971 && moduli.insert(m[k]).second) << m[k];
      EXPECT_EQ(prime_factors(m[k]).size(), 1u) << m[k];
      for (int other = 0; other < k; ++other) {
        EXPECT_LT(m[k], m[other]);
        EXPECT_EQ(std::gcd((m[k] - 1) / 2, (m[other] - 1) / 2), 1u) << m[k] << ' ' << m[other];
      }
      const std::vector<uint64_t> factors = prime_factors(m[k] - 1);
      const auto is_root = [&](uint32_t a) {
        return std::all_of(factors.begin(), factors.end(),
                           [&](uint64_t f) { return power(a, (m[k] - 1) / f, m[k]) != 1; });
      };
      uint32_t a = 127;
      while (a >= 112 && (multipliers.count(a) != 0 || !is_root(a))) --a;
      EXPECT_EQ(multiplier[k], a) << m[k];
      EXPECT_GE(multiplier[k], 112);
      multipliers.insert(a);
    }
  }
  EXPECT_EQ(moduli.size(), 4 * 273);
  for (const auto& [row, modulus, multiplier] : kWichmannHillRows) {
    const statistics::WichmannHillSet& set = statistics::kWichmannHillSets[row];
    EXPECT_TRUE(std::equal(modulus.begin(), modulus.end(), set.modulus)) << row;
    EXPECT_TRUE(std::equal(multiplier.begin(), multiplier.end(), set.multiplier)) << row;
  }
}

// Block forms reduce products by estimated quotients, which products next to a multiple of the
// modulus put to the test. The seed is `steps` outputs before such a product's residue.
TEST(Sequence, ResiduesAtTheEndsOfTheirRange) {
  const auto before = [&](int64_t residue, uint64_t a, size_t steps, uint64_t m) {
    const uint64_t back = power(power(a, m - 2, m), steps, m);
    return static_cast<uint32_t>(modulo(residue, static_cast<int64_t>(m)) * back % m);
  };
  for_each_subject([&](const Subject& subject) {
    for (size_t steps = 0; steps < 140; ++steps) {
      for (const int64_t residue : {1, 2, 3, -3, -2, -1}) {
        Words seed;
        if (subject.brng == RAU_BRNG_MCG31M1) {
          seed = {before(residue, 1132489760, steps, 0x7fffffff)};
        }
        for (const WichmannHillRow& row : kWichmannHillRows) {
          if (subject.brng != RAU_BRNG_WH + row.sub_generator) continue;
          for (size_t i = 0; i < 4; ++i) {
            seed.push_back(before(residue, row.multiplier[i], steps, row.modulus[i]));
          }
        }
        if (seed.empty()) return;
        ASSERT_TRUE(
            same(Stream(subject.brng, seed).words(150), reference_words(subject, seed, 150)))
            << residue << " after " << steps << " steps";
      }
    }
  });
}

// The same for the two components of MRG32k3a: windows of telling values, reached after `steps`.
TEST(Sequence, ComponentsAtTheEndsOfTheirRange) {
  constexpr uint64_t m1 = 4294967087, m2 = 4294944443;
  const uint64_t inverse_x = power(810728, m1 - 2, m1);
  const uint64_t inverse_y = power(1370589, m2 - 2, m2);
  const int64_t telling[] = {0, 1, -1, -2, (m2 - 1) / 2, 12345};
  const auto window = [&](size_t i, uint64_t m) {  // i in the system of base 6
    Words w;
    for (const size_t digit : {i / 36, i / 6 % 6, i % 6}) {
      w.push_back(static_cast<uint32_t>(modulo(telling[digit], m)));
    }
    return w;
  };
  for_each_subject([&](const Subject& subject) {
    if (subject.brng != RAU_BRNG_MRG32K3A) return;
    for (size_t i = 1; i < 216; ++i) {  // 0: all zeros
      Words x = window(i, m1), y = window(216 - i, m2);
      for (size_t steps = 0; steps < 36; ++steps) {
        Words seed = x;
        append(seed, y);
        const size_t n = steps < 3 ? 800 : 40;
        ASSERT_TRUE(same(Stream(subject.brng, seed).words(n), reference_words(subject, seed, n)))
            << "window " << i << " after " << steps << " steps";
        const uint64_t px = modulo(1403580 * int64_t{x[0]} - x[2], m1) * inverse_x % m1;
        const uint64_t py = modulo(527612 * int64_t{y[1]} - y[2], m2) * inverse_y % m2;
        x = {static_cast<uint32_t>(px), x[0], x[1]};
        y = {static_cast<uint32_t>(py), y[0], y[1]};
      }
    }
  });
}

// The caller's floating-point environment neither enters the integers nor is it changed.
TEST(Sequence, FloatingPointEnvironment) {
  constexpr unsigned kDefault = 0x1f80, kFlags = 0x3f;
  for_each_subject([&](const Subject& subject) {
    const Words seed = full_seed(subject), expected = Stream(subject.brng, seed).words(1000);
    for (const unsigned bits : {0x0, 0x2000, 0x4000, 0x6000, 0x8040, 0xa040, 0xc040, 0xe040}) {
      const unsigned mode = kDefault | bits;  // rounding, flushes
      Stream stream(subject.brng, seed);
      _mm_setcsr(mode);
      const Words got = stream.words(1000);
      stream.doubles(1000);
      stream.floats(1000);
      const unsigned after = _mm_getcsr() & ~kFlags;
      _mm_setcsr(kDefault);
      EXPECT_TRUE(same(got, expected)) << "mode " << mode;
      EXPECT_EQ(after, mode);
    }
  });
}

// ---- Real numbers ----

// Bit by bit; in particular the last step is fused on the upper classes and not below, also where
// a request ends.
template <class Real>
void expect_formula(const Subject& subject, const Words& seed, size_t n, Real a, Real b) {
  const auto reference = make_reference(subject.brng, seed);
  std::vector<Real> expected;
  while (expected.size() < n) {
    const Output u = reference.next();
    if constexpr (sizeof(Real) == sizeof(double)) {
      expected.push_back(reference.real(u, a, b, subject.fused()));
    } else {
      expected.push_back(reference.single(u, a, b, subject.fused()));
    }
  }
  Stream stream(subject.brng, seed);
  ASSERT_TRUE(same(stream.reals(n, a, b), expected)) << n << " in " << a << " to " << b;
}

TEST(Sequence, RealNumbersFollowTheFormula) {
  const std::pair<double, double> intervals[] = {
      {0, 1},         {-3.7, 10.9}, {1e-3, 1e5},
      {-1, 1},        {5, 5.00001}, {-1e300, 1e300},
      {1e8, 1e8 + 1}, {0, 1e-310},  {-0.1, 1e-20 - 0.1 + 0.2}};
  for_each_subject([&](const Subject& subject) {
    const Words seed = full_seed(subject);
    for (const auto& [a, b] : intervals) {
      const auto fa = static_cast<float>(a), fb = static_cast<float>(b);
      for (const size_t n : {1, 5, 1003}) {
        expect_formula(subject, seed, n, a, b);
        if (std::fabs(a) < 1e30 && fa < fb) expect_formula(subject, seed, n, fa, fb);
      }
    }
  });
}

// MCG59's outputs are wider than a significand: both conversions round once, ties to even.
TEST(Sequence, WideOutputsAreRoundedOnce) {
  constexpr uint64_t kMask = (uint64_t{1} << 59) - 1, kMultiplier = 302875106592253;
  uint64_t inverse = 1;  // of the multiplier modulo 2^59, by Newton's iteration
  for (int i = 0; i < 6; ++i) inverse *= 2 - kMultiplier * inverse;
  std::vector<uint64_t> hard = {2, 3, kMask};
  for (const int digits : {24, 53}) {
    for (int bits = digits + 1; bits <= 59; ++bits) {
      const int cut = bits - digits;
      for (const uint64_t last : {0, 1}) {
        const uint64_t head = (uint64_t{1} << (digits - 1)) + 1234 * 2 + last;
        hard.push_back((head << cut | uint64_t{1} << (cut - 1)) & kMask);  // a tie
      }
      hard.push_back((uint64_t{1} << bits) - 1);
    }
  }
  append(hard, {uint64_t{1} << 31, uint64_t{1} << 32, kMask - 1});
  for (size_t i = 0, n = hard.size(); i < n; ++i)
    append(hard, {hard[i] - 1, (hard[i] + 1) & kMask});
  for_each_subject([&](const Subject& subject) {
    if (subject.brng != RAU_BRNG_MCG59) return;
    for (const size_t position : {0, 37, 69}) {  // in a block, behind the blocks
      uint64_t back = 1;
      for (size_t i = 0; i < position; ++i) back *= inverse;
      for (const uint64_t u : hard) {
        if (u == 0) continue;
        const uint64_t first = u * back & kMask;
        const Words seed = {static_cast<uint32_t>(first), static_cast<uint32_t>(first >> 32)};
        // Scaled by a power of two, so that the conversion alone rounds.
        expect_formula(subject, seed, 70, 0.0f, 1.0f);
        expect_formula(subject, seed, 70, 0.0, 1.0);
      }
    }
  });
}

}  // namespace
}  // namespace orba::test
