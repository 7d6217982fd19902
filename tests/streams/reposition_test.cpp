// Skip-ahead and leapfrog lead to where stepping leads.

#include <gtest/gtest.h>

#include <random>

#include "tests/streams/streams.h"

namespace orba::test {
namespace {

bool can_skip(const Subject& subject) { return subject.brng != RAU_BRNG_R250; }
bool can_leapfrog(const Subject& subject) {
  return can_skip(subject) && subject.brng != RAU_BRNG_MRG32K3A;
}

// The next outputs; the stream itself stays.
Words peek(const Stream& stream, size_t n = 8) { return stream.copy().words(n); }

Stream skipped(const Stream& stream, uint64_t n) {
  Stream moved = stream.copy();
  EXPECT_EQ(rauSkipAheadStream(moved, static_cast<int64_t>(n)), 0);
  return moved;
}

TEST(SkipAhead, EqualsStepping) {
  const size_t starts[] = {0, 1, 5, 15, 16, 17, 249, 250, 251, 623, 624, 625};
  const size_t counts[] = {0, 1, 2, 3, 249, 250, 251, 1000, 1000000};
  for_each_subject([&](const Subject& subject) {
    if (!can_skip(subject)) return;
    const size_t width = subject.output_words();
    Stream stream(subject.brng, full_seed(subject));
    const Words all = peek(stream, 625 + 1000000 + 8);
    for (size_t position = 0; const size_t start : starts) {
      stream.words(start - position);
      position = start;
      for (const size_t count : counts) {
        EXPECT_TRUE(
            same(peek(skipped(stream, count)), slice(all, (start + count) * width, 8 * width)))
            << count << " from " << start;
      }
    }
  });
}

// Every bit of the count: 2^i steps are twice 2^(i - 1), and one step is a step.
TEST(SkipAhead, PowersOfTwo) {
  for_each_subject([&](const Subject& subject) {
    if (!can_skip(subject)) return;
    Stream stream(subject.brng, full_seed(subject));
    for (int i = 1; i < 64; ++i) {
      const uint64_t half = uint64_t{1} << (i - 1);
      EXPECT_TRUE(same(peek(skipped(stream, 2 * half)), peek(skipped(skipped(stream, half), half))))
          << "2^" << i;
    }
  });
}

TEST(SkipAhead, CountsAddUpTo64Bits) {
  std::mt19937_64 random(3);
  for_each_subject([&](const Subject& subject) {
    if (!can_skip(subject)) return;
    Stream stream(subject.brng, full_seed(subject));
    stream.words(11);
    for (int i = 0; i < 200; ++i) {
      const uint64_t sum = i == 0 ? ~uint64_t{0} : random() >> (i % 40);
      const uint64_t first = random() % sum;
      EXPECT_TRUE(
          same(peek(skipped(skipped(stream, first), sum - first)), peek(skipped(stream, sum))))
          << first << " of " << sum;
    }
  });
}

TEST(SkipAhead, Periods) {
  struct Case {
    int32_t brng;
    uint64_t period;
  };
  for (const Case& c :
       {Case{RAU_BRNG_MCG31M1, 0x7ffffffe}, Case{RAU_BRNG_MCG59, uint64_t{1} << 57}}) {
    Stream stream(c.brng, {12345});
    EXPECT_TRUE(same(peek(skipped(stream, c.period)), peek(stream)));
    EXPECT_FALSE(same(peek(skipped(stream, c.period / 2)), peek(stream)));
  }
}

// ---- A count of many words ----

Words skip_words(const Subject& subject, const Stream& stream, std::vector<uint64_t> steps) {
  Stream moved = stream.copy();
  EXPECT_EQ(subject.row().InitStream(3, moved, static_cast<int32_t>(steps.size()), steps.data()),
            0);
  return moved.words(8);
}

TEST(MultiWordSkip, PowersOfTwo) {
  constexpr size_t kWords = 5;
  for_each_subject([&](const Subject& subject) {
    if (subject.brng != RAU_BRNG_MRG32K3A) return;
    Stream stream(subject.brng, full_seed(subject));
    for (size_t bit = 1; bit < 64 * kWords; ++bit) {
      std::vector<uint64_t> once(kWords), half(kWords);
      once[bit / 64] = uint64_t{1} << bit % 64;
      half[(bit - 1) / 64] = uint64_t{1} << (bit - 1) % 64;
      Stream twice = stream.copy();
      for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(subject.row().InitStream(3, twice, kWords, half.data()), 0);
      }
      ASSERT_TRUE(same(skip_words(subject, stream, once), twice.words(8))) << "2^" << bit;
    }
    EXPECT_TRUE(same(skip_words(subject, stream, {1}), peek(skipped(stream, 1))));
  });
}

TEST(MultiWordSkip, AgreesWithTheOneOf64Bits) {
  for_each_subject([&](const Subject& subject) {
    if (subject.brng != RAU_BRNG_MRG32K3A) return;
    Stream stream(subject.brng, full_seed(subject));
    std::mt19937_64 random(9);
    for (int i = 0; i < 50; ++i) {
      const uint64_t low = random(), high = random() % 4;
      Stream by_64_bits = skipped(stream, low);
      for (uint64_t j = 0; j < high; ++j) {
        by_64_bits = skipped(skipped(by_64_bits, ~uint64_t{0}), 1);
      }
      const Words expected = peek(by_64_bits);
      EXPECT_TRUE(same(skip_words(subject, stream, {low, high}), expected));
      EXPECT_TRUE(same(skip_words(subject, stream, {low, high, 0, 0, 0, 0}), expected));
      // Words from the fourth on take another road: together with the lower ones, and apart.
      std::vector<uint64_t> steps = {low, high, random(), random(), random()};
      Stream lower_first = stream.copy();
      ASSERT_EQ(subject.row().InitStream(3, lower_first, 3, steps.data()), 0);
      std::vector<uint64_t> upper = steps;
      upper[0] = upper[1] = upper[2] = 0;
      EXPECT_TRUE(
          same(skip_words(subject, stream, steps), skip_words(subject, lower_first, upper)));
    }
    EXPECT_TRUE(same(skip_words(subject, stream, {0, 0, 0, 0}), peek(stream)));
  });
}

// ---- Leapfrog ----

TEST(Leapfrog, StreamsInterleaveToTheUndividedSequence) {
  constexpr size_t kEach = 300;
  for_each_subject([&](const Subject& subject) {
    if (!can_leapfrog(subject)) return;
    const size_t width = subject.output_words();
    Stream stream(subject.brng, full_seed(subject));
    stream.words(2);
    for (const int32_t nstreams : {1, 2, 3, 7, 16, 64}) {
      Words merged(nstreams * kEach * width);
      for (int32_t k = 0; k < nstreams; ++k) {
        Stream part = stream.copy();
        ASSERT_EQ(rauLeapfrogStream(part, k, nstreams), 0);
        const Words words = part.words(kEach);
        for (size_t i = 0; i < words.size(); ++i) {
          merged[(i / width * nstreams + k) * width + i % width] = words[i];
        }
      }
      EXPECT_TRUE(same(merged, peek(stream, nstreams * kEach))) << nstreams << " streams";
    }
  });
}

// A divided stream moves, divides and scales within its own sequence.
TEST(Leapfrog, ADividedStreamIsAStream) {
  for_each_subject([&](const Subject& subject) {
    if (!can_leapfrog(subject)) return;
    const size_t width = subject.output_words();
    Stream stream(subject.brng, full_seed(subject));
    ASSERT_EQ(rauLeapfrogStream(stream, 3, 5), 0);
    const Words all = peek(stream, 2000);
    for (const size_t count : {0, 1, 2, 250, 1500}) {
      EXPECT_TRUE(same(peek(skipped(stream, count)), slice(all, count * width, 8 * width)));
    }
    Stream nested = stream.copy();
    ASSERT_EQ(rauLeapfrogStream(nested, 2, 7), 0);
    const Words part = nested.words(250);
    for (size_t i = 0; i < 250; ++i) {
      ASSERT_TRUE(same(slice(part, i * width, width), slice(all, (7 * i + 2) * width, width))) << i;
    }
    const auto whole = stream.copy().doubles(400);
    Stream pieces = stream.copy();
    auto joined = pieces.doubles(133);
    append(joined, pieces.doubles(267));
    EXPECT_TRUE(same(joined, whole));
  });
}

TEST(Leapfrog, FarApart) {
  for_each_subject([&](const Subject& subject) {
    if (!can_leapfrog(subject)) return;
    const size_t width = subject.output_words();
    Stream stream(subject.brng, full_seed(subject));
    constexpr int32_t kLargest = 0x7fffffff;
    Stream part = stream.copy();
    ASSERT_EQ(rauLeapfrogStream(part, kLargest - 1, kLargest), 0);
    const Words outputs = part.words(40);
    for (uint64_t i = 0; i < 40; ++i) {
      const Words one = skipped(stream, i * kLargest + kLargest - 1).words(1);
      ASSERT_TRUE(same(slice(outputs, i * width, width), one)) << i;
    }
    // No step at all: one output forever.
    ASSERT_EQ(rauLeapfrogStream(stream, 0, 0), 0);
    const Words first = peek(stream, 1);
    for (size_t i = 0; i < 100; ++i) ASSERT_TRUE(same(stream.words(1), first));
  });
}

// ---- Refusals ----

TEST(Reposition, ARefusalLeavesTheStreamAsItWas) {
  for_each_subject([&](const Subject& subject) {
    Stream stream(subject.brng, full_seed(subject));
    stream.words(77);
    const std::string before = stream.bytes();
    const uint64_t steps = 5;
    const int32_t k = 1;
    EXPECT_EQ(rauLeapfrogStream(stream, 1, -1), RAU_ERROR_LEAPFROG_NSTREAMS_TOO_BIG);
    EXPECT_EQ(rauLeapfrogStream(stream, 1, INT32_MIN), RAU_ERROR_LEAPFROG_NSTREAMS_TOO_BIG);
    if (!can_leapfrog(subject)) {
      EXPECT_EQ(rauLeapfrogStream(stream, 0, 2), RAU_ERROR_LEAPFROG_UNSUPPORTED);
      EXPECT_EQ(subject.row().InitStream(1, stream, 2, &k), RAU_ERROR_LEAPFROG_UNSUPPORTED);
    }
    if (!can_skip(subject)) {
      EXPECT_EQ(rauSkipAheadStream(stream, 1), RAU_ERROR_SKIPAHEAD_UNSUPPORTED);
      EXPECT_EQ(rauSkipAheadStream(stream, 0), RAU_ERROR_SKIPAHEAD_UNSUPPORTED);
    }
    if (subject.brng != RAU_BRNG_MRG32K3A) {
      EXPECT_EQ(subject.row().InitStream(3, stream, 1, &steps), RAU_ERROR_SKIPAHEADEX_UNSUPPORTED);
    }
    for (const int32_t operation : {4, 5, INT32_MAX, -1, INT32_MIN}) {
      EXPECT_EQ(subject.row().InitStream(operation, stream, 1, &steps), RAU_ERROR_BAD_OPERATION);
    }
    EXPECT_EQ(stream.bytes(), before);
  });
}

}  // namespace
}  // namespace orba::test
