// The sequence of every generator on every class: against known answers and exact arithmetic, in
// whatever pieces and types it is asked for.

#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <limits>
#include <numeric>
#include <sstream>

#include "tests/streams/streams.h"

namespace orba::test {
namespace {

// ---- Known answers ----

struct KnownAnswers {
  Words seed;
  std::vector<std::pair<size_t, Words>> outputs;       // by the index of the first
  std::vector<std::pair<unsigned, Words>> after_skip;  // state 2^first steps on
};

std::vector<KnownAnswers> read_known_answers(const std::string& file) {
  std::vector<KnownAnswers> cases;
  std::ifstream input(std::string(ORBA_KNOWN_ANSWERS) + "/" + file);
  for (std::string line; std::getline(input, line);) {
    std::istringstream fields(line);
    std::string key;
    fields >> key;
    if (key == "#") continue;
    unsigned first = 0;
    if (key == "seed") {
      cases.emplace_back();
    } else {
      fields >> first;
    }
    const Words values{std::istream_iterator<uint32_t>(fields), {}};
    KnownAnswers& current = cases.back();
    if (key == "seed") current.seed = values;
    if (key == "outputs") current.outputs.push_back({first, values});
    if (key == "skip") current.after_skip.push_back({first, values});
  }
  EXPECT_FALSE(cases.empty()) << file;
  return cases;
}

void expect_outputs(const Subject& subject, const KnownAnswers& answers) {
  ASSERT_FALSE(answers.outputs.empty());
  const size_t total = answers.outputs.back().first + answers.outputs.back().second.size();
  const Words all = Stream(subject.brng, answers.seed).words(total);
  for (const auto& [first, values] : answers.outputs) {
    EXPECT_TRUE(same(slice(all, first, values.size()), values)) << "from output " << first;
  }
}

TEST(Sequence, KnownAnswersOfMrg32k3a) {
  const auto cases = read_known_answers("mrg32k3a.txt");
  for_each_subject([&](const Subject& subject) {
    if (subject.brng != RAU_BRNG_MRG32K3A) return;
    for (const KnownAnswers& answers : cases) {
      expect_outputs(subject, answers);
      ASSERT_EQ(answers.after_skip.size(), 2);
      for (const auto& [power, state] : answers.after_skip) {
        Stream stream(subject.brng, answers.seed);
        uint64_t steps[4] = {};
        steps[power / 64] = uint64_t{1} << power % 64;
        for (const int32_t count : {2, 3, 4}) {
          Stream moved = stream.copy();
          ASSERT_EQ(subject.row().InitStream(3, moved, count, steps), 0);
          Words words;
          for (size_t i = 0; i < 6; ++i) words.push_back(moved.at(16 + 4 * i));
          EXPECT_TRUE(same(words, state)) << "2^" << power << " steps in " << count << " words";
        }
      }
    }
  });
}

TEST(Sequence, KnownAnswersOfR250) {
  const auto cases = read_known_answers("r250.txt");
  for_each_subject([&](const Subject& subject) {
    if (subject.brng != RAU_BRNG_R250) return;
    for (const KnownAnswers& answers : cases) expect_outputs(subject, answers);
  });
}

TEST(Sequence, FirstOutputsOfMultiplicativeGenerators) {
  struct Case {
    int32_t brng;
    uint32_t seed;
    Words outputs;
  };
  // 1132489760^2 mod 2^31 - 1; 13^13 = 70518 * 2^32 + 2602812925.
  const Case cases[] = {
      {RAU_BRNG_MCG31M1, 0, {1, 1132489760, 826537482}},
      {RAU_BRNG_MCG31M1, 1, {1, 1132489760, 826537482}},
      {RAU_BRNG_MCG31M1, 2147483647, {1, 1132489760, 826537482}},
      {RAU_BRNG_MCG31M1, 2147483648, {1, 1132489760, 826537482}},
      {RAU_BRNG_MCG59, 0, {1, 0, 2602812925, 70518}},
      {RAU_BRNG_MCG59, 1, {1, 0, 2602812925, 70518}},
      {RAU_BRNG_WH, 1, {1, 1, 1, 1, 125, 117, 127, 126, 15625, 13689, 16129, 15876}},
      {RAU_BRNG_WH + 272, 1, {1, 1, 1, 1, 126, 127, 125, 124}},
  };
  for (const Case& c : cases) {
    Stream stream(c.brng, {c.seed});
    EXPECT_TRUE(same(stream.words(c.outputs.size() / stream.output_words()), c.outputs))
        << std::hex << c.brng << ", seed " << c.seed;
  }
}

// ---- Seeds ----

// Every generator maps any seed to a state of its own: words that are missing, too many, zero, at
// the moduli and above.
TEST(Sequence, EverySeedIsMapped) {
  const uint32_t m1 = 4294967087, m2 = 4294944443, top = 0xffffffff, mersenne = 0x7fffffff;
  std::vector<Words> seeds = {
      {},
      {0},
      {7},
      {top},
      {mersenne},
      {2 * mersenne},
      {mersenne + 1},
      {0, 0x08000000},  // 2^59: 0 once cut to 59 bits
      {0, 0xf8000000},
      {5, top},
      {0, 0, 0},
      {0, 0, 0, 0, 0, 0},
      {m1, m1, m1, m2, m2, m2},
      {m1 - 1, m1 + 1, top, m2 - 1, m2 + 1, top},
      {m1, 0, m1, 0, m2, 3},
      {1, 2, 3, 4, 5, 6, 7, 8},
  };
  for (const WichmannHillRow& row : wichmann_hill_rows()) {
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
    StreamState* handle = nullptr;
    EXPECT_EQ(rauNewStreamEx(&handle, subject.brng, std::numeric_limits<int32_t>::min(), nullptr),
              0);
    EXPECT_TRUE(same(Stream(handle).words(5), reference_words(subject, {}, 5)));
    EXPECT_EQ(rauNewStream(&handle, subject.brng, 7), 0);
    EXPECT_TRUE(same(Stream(handle).words(5), reference_words(subject, {7}, 5)));
  });
}

// ---- Continuity ----

// The sequence as the requests of a list bring it.
template <class Draw>
auto in_pieces(const std::vector<size_t>& requests, Draw draw) {
  decltype(draw(size_t{1})) all;
  for (const size_t n : requests) append(all, draw(n));
  return all;
}

TEST(Sequence, AnySplitOfARequestGivesOneSequence) {
  std::vector<size_t> small = {1, 2, 3, 55, 65536, 7, 250, 1000, 16, 249, 251, 31, 33, 8, 4};
  const size_t total = std::accumulate(small.begin(), small.end(), size_t{0});
  std::vector<size_t> large = {total / 2 + 3, 147, 1, 103};
  large.push_back(total - std::accumulate(large.begin(), large.end(), size_t{0}));
  for_each_subject([&](const Subject& subject) {
    const Words seed = full_seed(subject);
    const auto check = [&](auto draw) {
      const auto draw_from = [&](Stream& stream) {
        return [&stream, draw](size_t n) { return draw(stream, n); };
      };
      Stream whole(subject.brng, seed), first(subject.brng, seed), second(subject.brng, seed);
      const auto expected = draw_from(whole)(total);
      EXPECT_TRUE(same(in_pieces(small, draw_from(first)), expected));
      EXPECT_TRUE(same(in_pieces(large, draw_from(second)), expected));
    };
    check([](Stream& stream, size_t n) { return stream.words(n); });
    check([](Stream& stream, size_t n) { return stream.doubles(n, -1.7, 3.1); });
    check([](Stream& stream, size_t n) { return stream.floats(n, -1.7f, 3.1f); });
  });
}

// After a request of any length, in any type, the stream stands right behind it.
TEST(Sequence, NothingIsLostBehindARequest) {
  constexpr size_t kLargest = 300, kBehind = 270;
  for_each_subject([&](const Subject& subject) {
    const size_t width = subject.output_words();
    Stream start(subject.brng, full_seed(subject));
    start.words(3);
    const Words all = start.copy().words(800);
    const auto doubles = start.copy().doubles(kLargest, -2, 5);
    const auto floats = start.copy().floats(kLargest, -2, 5);
    for (size_t n = 0; n <= kLargest; ++n) {
      SCOPED_TRACE(n);
      const auto behind = [&](Stream& stream, size_t position) {
        EXPECT_TRUE(same(stream.words(kBehind), slice(all, position * width, kBehind * width)));
      };
      Stream of_words = start.copy(), of_doubles = start.copy(), of_floats = start.copy();
      EXPECT_TRUE(same(of_words.words(n), slice(all, 0, n * width)));
      EXPECT_TRUE(same(of_doubles.doubles(n, -2, 5), slice(doubles, 0, n)));
      EXPECT_TRUE(same(of_floats.floats(n, -2, 5), slice(floats, 0, n)));
      behind(of_words, n);
      behind(of_doubles, n);
      behind(of_floats, n);
    }
    for (const size_t n :
         {15, 16, 17, 31, 32, 33, 63, 64, 65, 146, 147, 148, 249, 250, 251, 300, 385, 769}) {
      for (size_t first = 0; first <= n; ++first) {
        Stream stream = start.copy();
        stream.words(first);
        EXPECT_TRUE(same(stream.words(n - first), slice(all, first * width, (n - first) * width)))
            << n << " outputs split at " << first;
      }
    }
  });
}

// ---- Exact integers ----

TEST(Sequence, IntegersAreExactOnEveryClass) {
  for_each_subject([&](const Subject& subject) {
    const Words seed = full_seed(subject);
    EXPECT_TRUE(
        same(Stream(subject.brng, seed).words(200000), reference_words(subject, seed, 200000)));
  });
}

// Block forms reduce products by estimated quotients, which products next to a multiple of the
// modulus put to the test. The seed is `steps` outputs before such a product's residue.
TEST(Sequence, ResiduesAtTheEndsOfTheirRange) {
  const auto power = [](uint64_t base, uint64_t exponent, uint64_t m) {
    uint64_t result = 1;
    for (; exponent != 0; exponent >>= 1, base = base * base % m) {
      if (exponent & 1) result = result * base % m;
    }
    return result;
  };
  const auto before = [&](uint64_t residue, uint64_t a, size_t steps, uint64_t m) {
    return static_cast<uint32_t>(residue * power(power(a, m - 2, m), steps, m) % m);
  };
  for_each_subject([&](const Subject& subject) {
    for (size_t steps = 0; steps < 140; ++steps) {
      for (const int64_t offset : {1, 2, 3, -3, -2, -1}) {
        const auto residue = [&](uint64_t m) {
          return offset > 0 ? static_cast<uint64_t>(offset) : m - static_cast<uint64_t>(-offset);
        };
        Words seed;
        if (subject.brng == RAU_BRNG_MCG31M1) {
          seed = {before(residue(0x7fffffff), 1132489760, steps, 0x7fffffff)};
        }
        for (const WichmannHillRow& row : wichmann_hill_rows()) {
          if (subject.brng != RAU_BRNG_WH + row.sub_generator) continue;
          for (size_t i = 0; i < 4; ++i) {
            const uint64_t m = row.modulus[i];
            seed.push_back(before(residue(m), row.multiplier[i], steps, m));
          }
        }
        if (seed.empty()) return;
        ASSERT_TRUE(
            same(Stream(subject.brng, seed).words(150), reference_words(subject, seed, 150)))
            << offset << " after " << steps << " steps";
      }
    }
  });
}

// The same for the two components of MRG32k3a: windows of telling values, reached after `steps`.
TEST(Sequence, ComponentsAtTheEndsOfTheirRange) {
  constexpr int64_t m1 = 4294967087, m2 = 4294944443;
  const auto modulo = [](int64_t a, int64_t m) { return (a % m + m) % m; };
  const auto inverse = [](uint64_t a, uint64_t m) {
    uint64_t result = 1;
    for (uint64_t e = m - 2; e != 0; e >>= 1, a = a * a % m) {
      if (e & 1) result = result * a % m;
    }
    return result;
  };
  const auto divide = [&](int64_t a, uint64_t by_inverse, int64_t m) {
    return static_cast<int64_t>(static_cast<uint64_t>(modulo(a, m)) * by_inverse %
                                static_cast<uint64_t>(m));
  };
  const uint64_t inverse_x = inverse(810728, m1), inverse_y = inverse(1370589, m2);
  std::vector<std::array<int64_t, 3>> windows;
  const int64_t telling[] = {0, 1, -1, -2, (m2 - 1) / 2, 12345};
  for (const int64_t a : telling) {
    for (const int64_t b : telling) {
      for (const int64_t c : telling) windows.push_back({a, b, c});
    }
  }
  windows.erase(windows.begin());  // all zeros
  for_each_subject([&](const Subject& subject) {
    if (subject.brng != RAU_BRNG_MRG32K3A) return;
    for (size_t i = 0; i < windows.size(); ++i) {
      std::array<int64_t, 3> x = windows[i], y = windows[windows.size() - 1 - i];
      for (int64_t& w : x) w = modulo(w, m1);
      for (int64_t& w : y) w = modulo(w, m2);
      for (size_t steps = 0; steps < 36; ++steps) {
        Words seed;
        for (const int64_t w : x) seed.push_back(static_cast<uint32_t>(w));
        for (const int64_t w : y) seed.push_back(static_cast<uint32_t>(w));
        const size_t n = steps < 3 ? 800 : 40;
        ASSERT_TRUE(same(Stream(subject.brng, seed).words(n), reference_words(subject, seed, n)))
            << "window " << i << " after " << steps << " steps";
        x = {divide(1403580 * x[0] - x[2], inverse_x, m1), x[0], x[1]};
        y = {divide(527612 * y[1] - y[2], inverse_y, m2), y[0], y[1]};
      }
    }
  });
}

// The caller's floating-point environment neither enters the integers nor is it changed.
TEST(Sequence, FloatingPointEnvironment) {
  constexpr unsigned kDefault = 0x1f80, kFlush = 0x8040, kFlags = 0x3f;
  for_each_subject([&](const Subject& subject) {
    const Words seed = full_seed(subject);
    const Words expected = Stream(subject.brng, seed).words(1000);
    for (const unsigned rounding :
         {_MM_ROUND_NEAREST, _MM_ROUND_DOWN, _MM_ROUND_UP, _MM_ROUND_TOWARD_ZERO}) {
      for (const unsigned flush : {0u, kFlush}) {
        Stream stream(subject.brng, seed);
        const unsigned mode = kDefault | rounding | flush;
        _mm_setcsr(mode);
        const Words got = stream.words(1000);
        const unsigned after_words = _mm_getcsr() & ~kFlags;
        stream.doubles(1000);
        stream.floats(1000);
        const unsigned after = _mm_getcsr() & ~kFlags;
        _mm_setcsr(kDefault);
        EXPECT_TRUE(same(got, expected)) << "rounding " << rounding;
        EXPECT_EQ(after_words, mode);
        EXPECT_EQ(after, mode);
      }
    }
  });
}

// ---- Real numbers ----

// The values by the formula, from raw outputs.
template <class Real>
std::vector<Real> reference_reals(const Subject& subject, const Words& seed, size_t n, Real a,
                                  Real b) {
  const auto reference = make_reference(subject.brng, seed);
  std::vector<Real> values;
  while (values.size() < n) {
    const Output u = reference->next();
    if constexpr (sizeof(Real) == sizeof(double)) {
      values.push_back(reference->real(u, a, b, subject.fused()));
    } else {
      values.push_back(reference->single(u, a, b, subject.fused()));
    }
  }
  return values;
}

// Bit by bit; in particular the last step is fused on the upper classes and not below, also where
// a request ends.
TEST(Sequence, RealNumbersFollowTheFormula) {
  const std::pair<double, double> intervals[] = {
      {0, 1},         {-3.7, 10.9}, {1e-3, 1e5},
      {-1, 1},        {5, 5.00001}, {-1e300, 1e300},
      {1e8, 1e8 + 1}, {0, 1e-310},  {-0.1, 1e-20 - 0.1 + 0.2}};
  for_each_subject([&](const Subject& subject) {
    const Words seed = full_seed(subject);
    for (const auto& [a, b] : intervals) {
      SCOPED_TRACE(testing::Message() << a << " to " << b);
      for (const size_t n : {1, 5, 1003}) {
        EXPECT_TRUE(same(Stream(subject.brng, seed).doubles(n, a, b),
                         reference_reals(subject, seed, n, a, b)));
      }
      const auto fa = static_cast<float>(a), fb = static_cast<float>(b);
      if (!(std::fabs(a) < 1e30 && fa < fb)) continue;
      for (const size_t n : {1, 5, 1003}) {
        EXPECT_TRUE(same(Stream(subject.brng, seed).floats(n, fa, fb),
                         reference_reals(subject, seed, n, fa, fb)));
      }
    }
  });
}

// The two forms of the last step differ where the addition rounds, and not for [0, 1).
TEST(Sequence, FusionShows) {
  const int highest = highest_rau_class();
  if (highest < 3) GTEST_SKIP() << "no class with fused operations";
  for_each_subject([&](const Subject& subject) {
    if (subject.rau_class != highest) return;
    const auto on = [&](int rau_class, double a, double b) {
      const RauClass running(rau_class);
      return Stream(subject.brng, full_seed(subject)).doubles(1000, a, b);
    };
    EXPECT_TRUE(same(on(0, 0, 1), on(highest, 0, 1)));
    EXPECT_FALSE(same(on(0, -3.7, 10.9), on(highest, -3.7, 10.9)));
  });
}

// MCG59's outputs are wider than a significand: both conversions round once, ties to even.
TEST(Sequence, WideOutputsAreRoundedOnce) {
  constexpr uint64_t kMask = (uint64_t{1} << 59) - 1, kMultiplier = 302875106592253;
  uint64_t inverse = 1;  // of the multiplier modulo 2^59, by Newton's iteration
  for (int i = 0; i < 6; ++i) inverse *= 2 - kMultiplier * inverse;
  std::vector<uint64_t> hard;
  for (const int digits : {24, 53}) {
    for (int bits = digits + 1; bits <= 59; ++bits) {
      const int cut = bits - digits;
      for (const uint64_t last : {0, 1}) {
        const uint64_t head = (uint64_t{1} << (digits - 1)) + 1234 * 2 + last;
        const uint64_t tie = head << cut | uint64_t{1} << (cut - 1);
        for (const uint64_t u : {tie - 1, tie, tie + 1}) hard.push_back(u & kMask);
      }
      hard.push_back((uint64_t{1} << bits) - 1);
    }
  }
  for (const uint64_t u : {uint64_t{1}, uint64_t{1} << 31, uint64_t{1} << 32, kMask - 1}) {
    for (const uint64_t near : {u - 1, u, u + 1}) hard.push_back(near == 0 ? 2 : near);
  }
  for_each_subject([&](const Subject& subject) {
    if (subject.brng != RAU_BRNG_MCG59) return;
    for (const size_t position : {0, 37, 69}) {  // in a block, behind the blocks
      uint64_t back = 1;
      for (size_t i = 0; i < position; ++i) back *= inverse;
      for (const uint64_t u : hard) {
        const uint64_t first = u * back & kMask;
        const Words seed = {static_cast<uint32_t>(first), static_cast<uint32_t>(first >> 32)};
        // Scaled by a power of two, so that the conversion alone rounds.
        ASSERT_TRUE(same(Stream(subject.brng, seed).floats(70),
                         reference_reals(subject, seed, 70, 0.0f, 1.0f)))
            << u;
        ASSERT_TRUE(same(Stream(subject.brng, seed).doubles(70),
                         reference_reals(subject, seed, 70, 0.0, 1.0)))
            << u;
      }
    }
  });
}

}  // namespace
}  // namespace orba::test
