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
Stream divided(const Stream& stream, int32_t k, int32_t nstreams) {
  Stream part = stream.copy();
  EXPECT_EQ(rauLeapfrogStream(part, k, nstreams), 0);
  return part;
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
      const uint64_t low = random();
      const Words over = peek(skipped(skipped(skipped(stream, low), ~uint64_t{0}), 1));
      EXPECT_TRUE(same(peek(moved(stream, {low})), peek(skipped(stream, low))));
      EXPECT_TRUE(same(peek(moved(stream, {low, 1})), over));
      EXPECT_TRUE(same(peek(moved(stream, {low, 1, 0, 0, 0, 0})), over));
      const uint64_t a = random(), b = random(), c = random();
      EXPECT_TRUE(same(peek(moved(stream, {low, 1, a, b, c})),
                       peek(moved(moved(stream, {low, 1, a}), {0, 0, 0, b, c}))));
    }
    EXPECT_TRUE(same(peek(moved(stream, {0, 0, 0, 0})), peek(stream)));
  });
}

TEST(Leapfrog, StreamsInterleaveToTheUndividedSequence) {
  constexpr size_t kEach = 300;
  for_each_able(kLeapfrog, [&](const Subject& subject, Stream& stream) {
    const size_t width = subject.output_words();
    for (const int32_t nstreams : {1, 2, 3, 7, 16, 64}) {
      const auto distance = static_cast<size_t>(nstreams);
      Words merged(distance * kEach * width);
      for (size_t k = 0; k < distance; ++k) {
        const Words words = divided(stream, static_cast<int32_t>(k), nstreams).words(kEach);
        for (size_t i = 0; i < words.size(); ++i) {
          merged[(i / width * distance + k) * width + i % width] = words[i];
        }
      }
      EXPECT_TRUE(same(merged, peek(stream, distance * kEach))) << nstreams << " streams";
    }
  });
}

// A divided stream moves, divides and scales within its own sequence, however far apart its outputs
// are; with no step at all it gives one output for ever.
TEST(Leapfrog, ADividedStreamIsAStream) {
  constexpr int32_t kLargest = 0x7fffffff;
  for_each_able(kLeapfrog, [&](const Subject& subject, Stream& stream) {
    const size_t width = subject.output_words();
    const Stream part = divided(stream, 3, 5), far = divided(stream, kLargest - 1, kLargest);
    const Words all = peek(part, 2000), nested = divided(part, 2, 7).words(250);
    for (const size_t count : {0, 1, 2, 250, 1500}) {
      EXPECT_TRUE(same(peek(skipped(part, count)), slice(all, count * width, 8 * width)));
    }
    for (size_t i = 0; i < 250; ++i) {
      ASSERT_TRUE(same(slice(nested, i * width, width), slice(all, (7 * i + 2) * width, width)));
    }
    const auto whole = part.copy().doubles(400);
    Stream pieces = part.copy();
    auto joined = pieces.doubles(133);
    append(joined, pieces.doubles(267));
    EXPECT_TRUE(same(joined, whole));
    const Words outputs = peek(far, 40), still = divided(stream, 0, 0).words(100);
    for (uint64_t i = 0; i < 40; ++i) {
      const Words one = skipped(stream, i * kLargest + kLargest - 1).words(1);
      ASSERT_TRUE(same(slice(outputs, i * width, width), one)) << i;
    }
    for (size_t i = 0; i < 100; ++i) {
      ASSERT_TRUE(same(slice(still, i * width, width), peek(stream, 1)));
    }
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
