// Skip-ahead and leapfrog lead to where stepping leads.

#include <gtest/gtest.h>

#include <random>

#include "tests/streams/streams.h"

namespace orba::test {
namespace {

using statistics::kLeapfrog, statistics::kSkipAhead, statistics::kSkipAheadWords;

// Runs a test for every subject with the ability, some way into its sequence.
void for_each_able(uint32_t ability, auto test) {
  for_each_subject([&](const Subject& subject) {
    if (!subject.can(ability)) return;
    Stream stream(subject.brng, full_seed(subject));
    stream.words(11);
    test(subject, stream);
  });
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
  for_each_able(kSkipAhead, [&](const Subject& subject, Stream& stream) {
    const size_t width = subject.output_words();
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

// Of any 64 bits, every power of two among them.
TEST(SkipAhead, CountsAddUp) {
  std::mt19937_64 random(3);
  for_each_able(kSkipAhead, [&](const Subject&, Stream& stream) {
    for (int i = 1; i < 250; ++i) {
      uint64_t sum = i < 64 ? uint64_t{1} << i : random() >> (i % 40), first = sum / 2;
      if (i >= 64) first = random() % sum;
      if (i == 64) sum = ~uint64_t{0};
      EXPECT_TRUE(
          same(peek(skipped(skipped(stream, first), sum - first)), peek(skipped(stream, sum))))
          << first << " of " << sum;
    }
  });
}

TEST(SkipAhead, Periods) {
  const std::pair<int32_t, uint64_t> periods[] = {{RAU_BRNG_MCG31M1, 0x7ffffffe},
                                                  {RAU_BRNG_MCG59, uint64_t{1} << 57}};
  for (const auto& [brng, period] : periods) {
    Stream stream(brng, {12345});
    EXPECT_TRUE(same(peek(skipped(stream, period)), peek(stream)));
    EXPECT_FALSE(same(peek(skipped(stream, period / 2)), peek(stream)));
  }
}

// A count of many words: powers of two are twice their halves, any lower words agree with the skip
// of 64 bits, and those from the fourth on, which take another road, with the lower ones.
TEST(SkipAhead, ByManyWords) {
  std::mt19937_64 random(9);
  for_each_able(kSkipAheadWords, [&](const Subject& subject, Stream& stream) {
    const auto moved = [&](const Stream& from, const std::vector<uint64_t>& steps) {
      Stream to = from.copy();
      EXPECT_EQ(subject.move_by_words(to, steps), 0);
      return to;
    };
    const auto power = [](size_t bit) {
      std::vector<uint64_t> steps(5);
      steps[bit / 64] = uint64_t{1} << bit % 64;
      return steps;
    };
    for (size_t bit = 1; bit < 320; ++bit) {
      ASSERT_TRUE(same(peek(moved(stream, power(bit))),
                       peek(moved(moved(stream, power(bit - 1)), power(bit - 1)))))
          << "2^" << bit;
    }
    for (int i = 0; i < 50; ++i) {
      const uint64_t low = random(), high = random() % 4;
      Stream by_64_bits = skipped(stream, low);
      for (uint64_t j = 0; j < high; ++j) {
        by_64_bits = skipped(skipped(by_64_bits, ~uint64_t{0}), 1);
      }
      EXPECT_TRUE(same(peek(moved(stream, {low, high})), peek(by_64_bits)));
      EXPECT_TRUE(same(peek(moved(stream, {low, high, 0, 0, 0, 0})), peek(by_64_bits)));
      const uint64_t a = random(), b = random(), c = random();
      EXPECT_TRUE(same(peek(moved(stream, {low, high, a, b, c})),
                       peek(moved(moved(stream, {low, high, a}), {0, 0, 0, b, c}))));
    }
    EXPECT_TRUE(same(peek(moved(stream, {0, 0, 0, 0})), peek(stream)));
  });
}

TEST(Leapfrog, StreamsInterleaveToTheUndividedSequence) {
  constexpr size_t kEach = 300;
  for_each_able(kLeapfrog, [&](const Subject& subject, Stream& stream) {
    const size_t width = subject.output_words();
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
  for_each_able(kLeapfrog, [&](const Subject& subject, Stream& stream) {
    const size_t width = subject.output_words();
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
  for_each_able(kLeapfrog, [&](const Subject& subject, Stream& stream) {
    const size_t width = subject.output_words();
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

// What the table doesn't name as a generator's ability is refused, and changes nothing.
TEST(Reposition, ARefusalLeavesTheStreamAsItWas) {
  for_each_subject([&](const Subject& subject) {
    Stream stream(subject.brng, full_seed(subject));
    stream.words(77);
    const std::string before = stream.bytes();
    const uint64_t steps = 5;
    const auto init = [&](int32_t operation) {
      return subject.row().InitStream(operation, stream, 2, &steps);
    };
    const std::tuple<uint32_t, int32_t, int32_t> moves[] = {
        {kLeapfrog, 1, RAU_ERROR_LEAPFROG_UNSUPPORTED},
        {kSkipAhead, 2, RAU_ERROR_SKIPAHEAD_UNSUPPORTED},
        {kSkipAheadWords, 3, RAU_ERROR_SKIPAHEADEX_UNSUPPORTED}};
    for (const auto& [ability, operation, status] : moves) {
      if (subject.can(ability)) continue;
      EXPECT_EQ(init(operation), status);
    }
    for (const int32_t operation : {4, 5, INT32_MAX, -1, INT32_MIN}) {
      EXPECT_EQ(init(operation), RAU_ERROR_BAD_OPERATION);
    }
    EXPECT_EQ(stream.bytes(), before);
  });
}

}  // namespace
}  // namespace orba::test
