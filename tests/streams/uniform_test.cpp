// The uniform variates above the generators: the accurate method, integers, bits.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

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

// Results are within the interval, the same outputs are drawn, and what is no number stays: without
// a number for a bound there is none for a result.
template <class Real>
void expect_within(const Stream& start, size_t n, Real a, Real b) {
  Stream plain = start.copy(), accurate = start.copy();
  auto expected = plain.reals(n, a, b);
  for (Real& x : expected) x = x < a ? a : x > b ? b : x;
  EXPECT_TRUE(same(accurate.reals(n, a, b, RAU_METHOD_ACCURATE), expected)) << a << " to " << b;
  EXPECT_EQ(accurate.bytes(), plain.bytes());
}

TEST(Accurate, ResultsStayInTheInterval) {
  const double a = -1.25, b = 3.5;
  std::vector<double> given = {std::nextafter(a, -9), a, std::nextafter(a, 9), 0.0, kNan, -0.0};
  append(given, {std::nextafter(b, 0), b, std::nextafter(b, 9), kInfinity, -kInfinity, 1e9, -1e9});
  for_each_class([&] {
    const Stream start = scripted(given);
    for (size_t n = 1; n <= 40; ++n) {
      for (const auto& [low, high] : {std::pair{a, b}, {kNan, b}, {a, kNan}, {kNan, kNan}}) {
        expect_within(start, n, low, high);
        expect_within(start, n, static_cast<float>(low), static_cast<float>(high));
      }
    }
  });
  // Ends that rounding reaches.
  for_each_subject([](const Subject& subject) {
    const Stream start(subject.brng, full_seed(subject));
    if (subject.can(statistics::kDoubles)) expect_within(start, 1000, 1e15, 1e15 + 1);
    if (subject.can(statistics::kSingles)) expect_within(start, 1000, 16777213.0f, 16777215.0f);
    for (const auto& [low, high] : {std::pair{kNan, 1.0}, {0.0, kNan}}) {
      for (const int32_t method : {RAU_METHOD_STD, RAU_METHOD_ACCURATE}) {
        const auto got = start.copy().reals(100, low, high, method);
        EXPECT_TRUE(std::all_of(got.begin(), got.end(), [](double x) { return std::isnan(x); }));
      }
    }
  });
}

// ---- Integers ----

// Numbers that leave the range come only from a caller's own generator. They become the least
// integer, on every class and wherever in a request they stand.
TEST(UniformIntegers, AreFloors) {
  std::vector<double> reals = {-3, -2.5, -2, -1.0000001, -1, -0.5, -0.0, 0, 1e-9, -1e-9, 1, 2.5};
  append(reals, {1 - 1e-9, 1e-310, -1e-310, 2147483646.99999, 2147483647, 2147483647.5});
  append(reals, {-2147483647.5, -2147483648.0, -2147483648.5, -2147483649.0, 2147483648.0});
  append(reals, {-1e300, 1e300, 5e9, -5e9, kInfinity, -kInfinity, kNan});
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
      Stream stream(subject.brng, full_seed(subject)), reals = stream.copy();
      std::vector<int32_t> expected;
      for (const double x : reals.doubles(3000, a, b)) {
        expected.push_back(static_cast<int32_t>(std::floor(x)));
      }
      EXPECT_TRUE(same(stream.integers(3000, a, b), expected)) << a << " to " << b;
      EXPECT_EQ(stream.bytes(), reals.bytes());
    }
  });
}

// Integers come in chunks: what was written before the failure stays.
TEST(Failures, AreHandedOnUnreported) {
  for_each_class([] {
    take_reports();
    Stream stream = scripted({0.5});
    script().calls_until_failure = 2;
    Guarded<int32_t> r(3000);
    EXPECT_EQ(viRngUniform(0, stream, 3000, r.data(), 0, 9), -77);
    EXPECT_EQ(script().requests, (std::vector<int32_t>{1024, 1024, 952}));
    r.expect_unwritten_from(2048);
    EXPECT_EQ(r.data()[2047], 0);
    double d[2] = {};
    float f[2] = {};
    uint32_t u[2] = {};
    EXPECT_EQ(vdRngUniform(0, stream, 2, d, 0, 1), -77);
    EXPECT_EQ(vdRngUniform(RAU_METHOD_ACCURATE, stream, 2, d, 3, 4), -77);
    EXPECT_EQ(vsRngUniform(RAU_METHOD_ACCURATE, stream, 2, f, 3, 4), -77);
    EXPECT_EQ(viRngUniformBits(0, stream, 2, u), -77);
    EXPECT_EQ(d[0] + d[1] + f[0] + f[1] + u[0] + u[1], 0);
    EXPECT_TRUE(take_reports().empty());
  });
}

// Where the table says; others refuse and draw nothing.
TEST(UniformBits, OfEveryGenerator) {
  for_each_subject([&](const Subject& subject) {
    const UniformBits bits = subject.row().uniform_bits;
    Stream start(subject.brng, full_seed(subject));
    const size_t width = subject.output_words();
    const int cut = bits == UniformBits::kUpperWords ? subject.row().NBits - 32 : 0;
    const Words raw = start.copy().words(10010);
    Words uniform;
    for (size_t i = 0; i < 10000 * width; i += width) {
      uniform.push_back(cut != 0 ? raw[i] >> cut | raw[i + 1] << (32 - cut) : raw[i]);
    }
    for (const size_t n : {1, 2, 7, 1023, 1024, 1025, 2047, 2048, 2049, 5000}) {
      for (const size_t words : {n, 2 * n}) {
        Stream stream = start.copy();
        Guarded<uint64_t> r((words + 1) / 2);
        const auto count = static_cast<int32_t>(n);
        const int32_t status =
            words == n ? viRngUniformBits32(0, stream, count, reinterpret_cast<uint32_t*>(r.data()))
                       : viRngUniformBits64(0, stream, count, r.data());
        if (bits == UniformBits::kNone) {
          ASSERT_EQ(status, RAU_ERROR_NO_NUMBER_BITS);
          ASSERT_EQ(stream.bytes(), start.bytes());
          r.expect_unwritten_from(0);
          continue;
        }
        ASSERT_EQ(status, 0);
        EXPECT_EQ(std::memcmp(r.take().data(), uniform.data(), words * sizeof uniform[0]), 0);
        EXPECT_TRUE(same(stream.words(5), slice(raw, width * words, width * 5)));
      }
    }
  });
  uint32_t u[2];
  Stream registered = scripted({1});
  EXPECT_EQ(viRngUniformBits32(0, registered, 2, u), RAU_ERROR_NO_NUMBER_BITS);
  EXPECT_TRUE(script().requests.empty());
}

}  // namespace
}  // namespace orba::test
