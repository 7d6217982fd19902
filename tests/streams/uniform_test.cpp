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

void for_each_class(auto test) {
  for (int c = 0; c <= highest_rau_class(); ++c) {
    SCOPED_TRACE(testing::Message() << "class " << c);
    const RauClass running(c);
    test();
  }
}

// ---- The accurate method ----

TEST(Accurate, ResultsStayInTheInterval) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const double a = -1.25, b = 3.5;
  const std::vector<double> given = {
      std::nextafter(a, -9), a,         std::nextafter(a, 9), 0.0, -0.0, std::nextafter(b, 0), b,
      std::nextafter(b, 9),  kInfinity, -kInfinity,           1e9, -1e9};
  for_each_class([&] {
    for (size_t n = 1; n <= 40; ++n) {
      script() = {};
      for (size_t i = 0; i < n; ++i) script().reals.push_back(given[i % given.size()]);
      script().reals.erase(script().reals.begin());
      std::vector<double> expected;
      for (const double x : script().reals) expected.push_back(std::min(b, std::max(a, x)));
      Stream stream(scripted_brng(), {1});
      Guarded<double> d(n);
      ASSERT_EQ(vdRngUniform(RAU_METHOD_ACCURATE, stream, static_cast<int32_t>(n), d.data(), a, b),
                0);
      EXPECT_TRUE(same(d.take(), expected));
      EXPECT_TRUE(same(Stream(scripted_brng(), {1}).doubles(n, a, b), script().reals));
      Guarded<float> f(n);
      ASSERT_EQ(vsRngUniform(RAU_METHOD_ACCURATE, stream, static_cast<int32_t>(n), f.data(),
                             static_cast<float>(a), static_cast<float>(b)),
                0);
      EXPECT_TRUE(same(f.take(), std::vector<float>(expected.begin(), expected.end())));
    }
  });
}

// Floats that round to an end; the accurate method draws the same outputs.
TEST(Accurate, ChangesNothingElse) {
  for_each_subject([](const Subject& subject) {
    const double a = 1e15, b = 1e15 + 1;
    const float fa = 16777213.0f, fb = 16777215.0f;
    constexpr int32_t n = 1000;
    Stream plain(subject.brng, full_seed(subject)), accurate = plain.copy();
    auto expected = plain.doubles(n, a, b);
    Guarded<double> d(n);
    ASSERT_EQ(vdRngUniform(RAU_METHOD_ACCURATE, accurate, n, d.data(), a, b), 0);
    for (double& x : expected) x = std::min(b, std::max(a, x));
    EXPECT_TRUE(same(d.take(), expected));
    auto singles = plain.floats(n, fa, fb);
    Guarded<float> f(n);
    ASSERT_EQ(vsRngUniform(RAU_METHOD_ACCURATE, accurate, n, f.data(), fa, fb), 0);
    for (float& x : singles) x = std::min(fb, std::max(fa, x));
    EXPECT_TRUE(same(f.take(), singles));
    EXPECT_EQ(accurate.bytes(), plain.bytes());
  });
}

// ---- Integers ----

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
                                     0.999999999,
                                     1,
                                     2.5,
                                     -2147483648.0,
                                     -2147483647.5,
                                     2147483647.0,
                                     2147483646.99999};
  for_each_class([&] {
    script() = {};
    script().reals = reals;
    Stream stream(scripted_brng(), {1});
    Guarded<int32_t> r(40);
    ASSERT_EQ(viRngUniform(0, stream, 40, r.data(), -3, 3), 0);
    std::vector<int32_t> expected;
    for (size_t i = 0; i < 40; ++i) {
      expected.push_back(static_cast<int32_t>(std::floor(reals[i % reals.size()])));
    }
    EXPECT_TRUE(same(r.take(), expected));
  });
}

// Numbers that only a caller's own generator gives: whatever becomes of them doesn't depend on
// where in a request they stand.
TEST(UniformIntegers, OutOfRange) {
  for_each_class([&] {
    for (const double x :
         {-2147483648.5, -1e300, 2147483648.0, 1e300, -std::numeric_limits<double>::infinity(),
          std::numeric_limits<double>::quiet_NaN()}) {
      script() = {};
      script().reals = {x};
      Stream stream(scripted_brng(), {1});
      Guarded<int32_t> r(47);
      ASSERT_EQ(viRngUniform(0, stream, 47, r.data(), -3, 3), 0);
      const auto got = r.take();
      EXPECT_TRUE(same(got, std::vector<int32_t>(47, got[0]))) << x;
    }
  });
}

TEST(UniformIntegers, OfEveryGenerator) {
  const std::pair<int32_t, int32_t> intervals[] = {{-3, 3},   {0, 1},       {5, 6},
                                                   {-10, -2}, {0, 1000000}, {INT32_MIN, INT32_MAX}};
  for_each_subject([&](const Subject& subject) {
    for (const auto& [a, b] : intervals) {
      for (const size_t n : {1, 1023, 1024, 1025, 3000}) {
        Stream stream(subject.brng, full_seed(subject)), reals = stream.copy();
        std::vector<int32_t> expected;
        for (const double x : reals.doubles(n, a, b)) {
          expected.push_back(static_cast<int32_t>(std::floor(x)));
        }
        Guarded<int32_t> r(n);
        ASSERT_EQ(viRngUniform(0, stream, static_cast<int32_t>(n), r.data(), a, b), 0);
        const auto got = r.take();
        EXPECT_TRUE(same(got, expected)) << a << " to " << b;
        EXPECT_TRUE(same(stream.words(300), reals.words(300))) << n;
        if (n == 3000 && a == -3) {
          std::vector<int> seen(6);
          for (const int32_t x : got) {
            ASSERT_TRUE(x >= a && x < b) << x;
            ++seen[static_cast<size_t>(x - a)];
          }
          for (const int count : seen) EXPECT_GT(count, 350);  // 500 expected
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
  for (const int32_t status : {-77, int32_t{RAU_ERROR_MEM_FAILURE}, 0}) {
    script() = {};
    script().seeding = status;
    script().moving = -78;
    take_reports();
    StreamState* handle = nullptr;
    EXPECT_EQ(rauNewStream(&handle, scripted_brng(), 1), status);
    EXPECT_TRUE(take_reports().empty());
    // The stream is there all the same.
    ASSERT_NE(handle, nullptr);
    Stream stream(handle);
    EXPECT_EQ(rauGetStreamStateBrng(stream), scripted_brng());
    EXPECT_EQ(rauSkipAheadStream(stream, 1), -78);
    EXPECT_EQ(rauLeapfrogStream(stream, 0, 1), -78);
    EXPECT_EQ(take_reports(),
              (std::vector<Report>{{"rauSkipAheadStream", 1}, {"rauLeapfrogStream", 1}}));
  }
  script() = {};
  script().seeding = RAU_ERROR_INVALID_BRNG_INDEX;
  StreamState* handle = nullptr;
  EXPECT_EQ(rauNewStream(&handle, scripted_brng(), 1), RAU_ERROR_INVALID_BRNG_INDEX);
  EXPECT_EQ(take_reports(), (std::vector<Report>{{"rauNewStream", 2}}));
  Stream cleanup(handle);
}

// ---- Bits ----

TEST(UniformBits, OfMcg59AreItsUpperBits) {
  for_each_subject([](const Subject& subject) {
    if (subject.brng != RAU_BRNG_MCG59) return;
    const Words seed = full_seed(subject);
    const Words raw = Stream(subject.brng, seed).words(12000);
    Words upper;
    for (size_t i = 0; i < raw.size(); i += 2) upper.push_back(raw[i] >> 27 | raw[i + 1] << 5);
    for (const size_t n : {1, 2, 7, 1023, 1024, 1025, 2047, 2048, 2049, 5000}) {
      Stream by_words(subject.brng, seed), by_pairs(subject.brng, seed);
      Guarded<uint32_t> words(n);
      ASSERT_EQ(viRngUniformBits32(0, by_words, static_cast<int32_t>(n), words.data()), 0);
      EXPECT_TRUE(same(words.take(), slice(upper, 0, n)));
      EXPECT_TRUE(same(by_words.words(5), slice(raw, 2 * n, 10)));
      Guarded<uint64_t> pairs(n);
      ASSERT_EQ(viRngUniformBits64(0, by_pairs, static_cast<int32_t>(n), pairs.data()), 0);
      std::vector<uint64_t> expected;
      for (size_t i = 0; i < n; ++i) {
        expected.push_back(upper[2 * i] | uint64_t{upper[2 * i + 1]} << 32);
      }
      EXPECT_TRUE(same(pairs.take(), expected));
      EXPECT_TRUE(same(by_pairs.words(5), slice(raw, 4 * n, 10)));
    }
  });
}

TEST(UniformBits, AreRefusedByTheOthers) {
  script() = {};
  const auto refused = [](Stream& stream) {
    Guarded<uint32_t> words(50);
    Guarded<uint64_t> pairs(50);
    const std::string before = stream.bytes();
    EXPECT_EQ(viRngUniformBits32(0, stream, 50, words.data()), RAU_ERROR_NO_NUMBER_BITS);
    EXPECT_EQ(viRngUniformBits64(0, stream, 50, pairs.data()), RAU_ERROR_NO_NUMBER_BITS);
    words.expect_unwritten_from(0);
    pairs.expect_unwritten_from(0);
    EXPECT_EQ(stream.bytes(), before);
  };
  for_each_subject([&](const Subject& subject) {
    if (subject.brng == RAU_BRNG_MCG59) return;
    Stream stream(subject.brng, full_seed(subject));
    refused(stream);
  });
  for_each_class([&] {
    Stream registered(scripted_brng(), {1});
    refused(registered);
  });
}

}  // namespace
}  // namespace orba::test
