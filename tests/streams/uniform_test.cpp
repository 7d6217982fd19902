// The uniform variates above the generators: the accurate method, integers, bits.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "tests/streams/reports.h"
#include "tests/streams/scripted.h"
#include "tests/streams/streams.h"

namespace orba::test {
namespace {

using statistics::UniformBits;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

void for_each_class(auto test) {
  for (int c = 0; c <= highest_rau_class(); ++c) {
    SCOPED_TRACE(testing::Message() << "class " << c);
    const RauClass running(c);
    test();
  }
}

Stream scripted(const std::vector<double>& reals) {
  script() = {};
  script().reals = reals;
  return Stream(scripted_brng(), {1});
}

// ---- The accurate method ----

// Results are within the interval, and what was there before stays, also what is no number.
template <class Real>
void expect_within(const std::vector<double>& given, Real a, Real b, size_t n) {
  std::vector<Real> plain = scripted(given).reals(n, a, b), expected;
  for (const Real x : plain) expected.push_back(x < a ? a : x > b ? b : x);
  EXPECT_TRUE(same(scripted(given).reals(n, a, b, RAU_METHOD_ACCURATE), expected)) << a << b;
}

TEST(Accurate, ResultsStayInTheInterval) {
  const double a = -1.25, b = 3.5;
  std::vector<double> given = {std::nextafter(a, -9), a, std::nextafter(a, 9), 0.0, kNan, -0.0};
  append(given, {std::nextafter(b, 0), b, std::nextafter(b, 9), kInfinity, -kInfinity, 1e9, -1e9});
  for_each_class([&] {
    for (size_t n = 1; n <= 40; ++n) {
      for (const auto& [low, high] : {std::pair{a, b}, {kNan, b}, {a, kNan}, {kNan, kNan}}) {
        expect_within<double>(given, low, high, n);
        expect_within<float>(given, static_cast<float>(low), static_cast<float>(high), n);
      }
    }
  });
}

// Floats that round to an end; the accurate method draws the same outputs. Without a number for a
// bound there is none for a result.
TEST(Accurate, ChangesNothingElse) {
  for_each_subject([](const Subject& subject) {
    const auto check = [&](auto a, auto b, uint32_t output) {
      if (!subject.can(output)) return;
      Stream plain(subject.brng, full_seed(subject)), accurate = plain.copy();
      auto expected = plain.reals(1000, a, b);
      const auto got = accurate.reals(1000, a, b, RAU_METHOD_ACCURATE);
      EXPECT_EQ(accurate.bytes(), plain.bytes());
      const bool number = a < b;
      for (auto& x : expected) x = std::min(b, std::max(a, x));
      EXPECT_TRUE(!number || same(got, expected));
      for (const auto x : got) ASSERT_EQ(std::isnan(x), !number);
    };
    check(1e15, 1e15 + 1, statistics::kDoubles);
    check(16777213.0f, 16777215.0f, statistics::kSingles);
    for (const auto& [a, b] : {std::pair{kNan, 1.0}, {0.0, kNan}}) {
      check(a, b, statistics::kDoubles);
      check(static_cast<float>(a), static_cast<float>(b), statistics::kSingles);
    }
  });
}

// ---- Integers ----

// Numbers that leave the range come only from a caller's own generator. They become the least
// integer, on every class and wherever in a request they stand.
TEST(UniformIntegers, AreFloors) {
  const std::vector<double> reals = {-3,
                                     -2.5,
                                     -2,
                                     -1.0000001,
                                     -1,
                                     -0.5,
                                     -0.0,
                                     0.0,
                                     1e-9,
                                     -1e-9,
                                     1 - 1e-9,
                                     1,
                                     2.5,
                                     -2147483648.0,
                                     -2147483647.5,
                                     2147483647.0,
                                     2147483647.5,
                                     2147483646.99999,
                                     -2147483648.5,
                                     -2147483649.0,
                                     2147483648.0,
                                     -1e300,
                                     1e300,
                                     5e9,
                                     -5e9,
                                     1e-310,
                                     -1e-310,
                                     kInfinity,
                                     -kInfinity,
                                     kNan};
  std::vector<int32_t> expected;
  while (expected.size() < 2100) {
    const double x = std::floor(reals[expected.size() % reals.size()]);
    const bool in_range = x >= -2147483648.0 && x <= 2147483647.0;
    expected.push_back(in_range ? static_cast<int32_t>(x) : INT32_MIN);
  }
  for_each_class([&] {
    for (const size_t length : {2100, 1, 2, 3, 7, 8, 9, 31, 1024, 1025}) {
      Stream stream = scripted(reals);
      std::vector<int32_t> got;
      while (got.size() < expected.size()) {
        append(got, stream.integers(std::min(length, expected.size() - got.size()), -3, 3));
      }
      EXPECT_TRUE(same(got, expected)) << length;
    }
  });
}

TEST(UniformIntegers, OfEveryGenerator) {
  const std::pair<int32_t, int32_t> intervals[] = {{-3, 3},   {0, 1},       {5, 6},
                                                   {-10, -2}, {0, 1000000}, {INT32_MIN, INT32_MAX}};
  for_each_subject([&](const Subject& subject) {
    if (!subject.can(statistics::kDoubles)) return;
    for (const auto& [a, b] : intervals) {
      for (const size_t n : {1, 1023, 1024, 1025, 3000}) {
        Stream stream(subject.brng, full_seed(subject)), reals = stream.copy();
        std::vector<int32_t> expected;
        for (const double x : reals.doubles(n, a, b)) {
          expected.push_back(static_cast<int32_t>(std::floor(x)));
        }
        const auto got = stream.integers(n, a, b);
        EXPECT_TRUE(same(got, expected)) << a << " to " << b;
        EXPECT_EQ(stream.bytes(), reals.bytes());
        for (int32_t value = -3; n == 3000 && a == -3 && value < b; ++value) {
          EXPECT_GT(std::count(got.begin(), got.end(), value), 350);  // 500 expected
        }
      }
    }
  });
}

// ---- Failures of a generator ----

TEST(Failures, AreHandedOnUnreported) {
  for_each_class([] {
    take_reports();
    script() = {};
    script().calls_until_failure = 0;
    Stream stream(scripted_brng(), {1});
    double d[2] = {};
    float f[2] = {};
    uint32_t u[2] = {};
    EXPECT_EQ(vdRngUniform(0, stream, 2, d, 0, 1), -77);
    EXPECT_EQ(vdRngUniform(RAU_METHOD_ACCURATE, stream, 2, d, 3, 4), -77);
    EXPECT_EQ(vsRngUniform(RAU_METHOD_ACCURATE, stream, 2, f, 3, 4), -77);
    EXPECT_EQ(viRngUniformBits(0, stream, 2, u), -77);
    EXPECT_EQ(d[0] + d[1] + f[0] + f[1] + u[0] + u[1], 0);

    // Integers come in chunks: what was written before the failure stays.
    script() = {};
    script().calls_until_failure = 2;
    Guarded<int32_t> r(3000);
    EXPECT_EQ(viRngUniform(0, stream, 3000, r.data(), 0, 9), -77);
    EXPECT_EQ(script().requests, (std::vector<int32_t>{1024, 1024, 952}));
    r.expect_unwritten_from(2048);
    EXPECT_EQ(r.data()[2047], 0);
    EXPECT_TRUE(take_reports().empty());
  });
}

TEST(Failures, OfSeedingAndMoving) {
  for (const int32_t status : {-77, int32_t{RAU_ERROR_MEM_FAILURE}, 0, -1000}) {
    script() = {};
    script().seeding = status;
    script().moving = -78;
    take_reports();
    StreamState* handle = nullptr;
    EXPECT_EQ(rauNewStream(&handle, scripted_brng(), 1), status);
    EXPECT_EQ(take_reports(),
              (std::vector<Report>(status == -1000 ? 1 : 0, Report{"rauNewStream", 2})));
    // The stream is there all the same.
    ASSERT_NE(handle, nullptr);
    Stream stream(handle);
    EXPECT_EQ(rauGetStreamStateBrng(stream), scripted_brng());
    EXPECT_EQ(rauSkipAheadStream(stream, 1), -78);
    EXPECT_EQ(rauLeapfrogStream(stream, 0, 1), -78);
    EXPECT_EQ(take_reports(),
              (std::vector<Report>{{"rauSkipAheadStream", 1}, {"rauLeapfrogStream", 1}}));
  }
}

// ---- Bits ----

TEST(UniformBits, StandWhereTheTableSays) {
  for_each_subject([](const Subject& subject) {
    Stream start(subject.brng, full_seed(subject));
    const Words raw = start.copy().words(12000);
    const size_t width = subject.output_words();
    const UniformBits bits = subject.row().uniform_bits;
    Words uniform = raw;
    if (bits == UniformBits::kUpperWords) {
      const int cut = subject.row().NBits - 32;
      uniform.clear();
      for (size_t i = 0; i < raw.size(); i += 2) {
        uniform.push_back(raw[i] >> cut | raw[i + 1] << (32 - cut));
      }
    }
    for (const size_t n : {1, 2, 7, 1023, 1024, 1025, 2047, 2048, 2049, 5000}) {
      Stream by_words = start.copy(), by_pairs = start.copy();
      Guarded<uint32_t> words(n);
      Guarded<uint64_t> pairs(n);
      const int32_t status = bits == UniformBits::kNone ? RAU_ERROR_NO_NUMBER_BITS : 0;
      const auto count = static_cast<int32_t>(n);
      EXPECT_EQ(viRngUniformBits32(0, by_words, count, words.data()), status);
      EXPECT_EQ(viRngUniformBits64(0, by_pairs, count, pairs.data()), status);
      if (status != 0) {
        words.expect_unwritten_from(0);
        pairs.expect_unwritten_from(0);
        EXPECT_EQ(by_words.bytes() + by_pairs.bytes(), start.bytes() + start.bytes());
        continue;
      }
      std::vector<uint64_t> expected;
      for (size_t i = 0; i < 2 * n; i += 2) {
        expected.push_back(uniform[i] | uint64_t{uniform[i + 1]} << 32);
      }
      EXPECT_TRUE(same(words.take(), slice(uniform, 0, n)));
      EXPECT_TRUE(same(by_words.words(5), slice(raw, width * n, width * 5)));
      EXPECT_TRUE(same(pairs.take(), expected));
      EXPECT_TRUE(same(by_pairs.words(5), slice(raw, width * 2 * n, width * 5)));
    }
  });
  // Which generators have them; none that a caller has registered.
  Words with_bits;
  for (const Subject& subject : subjects()) {
    if (subject.rau_class == 0 && subject.row().uniform_bits != UniformBits::kNone) {
      with_bits.push_back(static_cast<uint32_t>(subject.brng));
    }
  }
  EXPECT_EQ(with_bits, Words{RAU_BRNG_MCG59});
  for_each_class([] {
    uint32_t u[2];
    Stream stream = scripted({1});
    EXPECT_EQ(viRngUniformBits32(0, stream, 2, u), RAU_ERROR_NO_NUMBER_BITS);
    EXPECT_TRUE(script().requests.empty());
  });
}

}  // namespace
}  // namespace orba::test
