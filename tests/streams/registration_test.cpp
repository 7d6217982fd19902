// Generators of a caller's own, states that are foreign to a generator, and a generator that fails.

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <vector>

#define ORBA_CLASS 1
#define ORBA_CLASS_NAMESPACE failing_test
#include "statistics/streams/generators/brng_entries.h"
#include "statistics/streams/generators/generator.h"
#include "statistics/streams/generators/kernels/blocks.h"
#include "tests/streams/reports.h"
#include "tests/streams/scripted.h"
#include "tests/streams/streams.h"

namespace orba::test {
namespace {

TEST(Registration, ARowOfItsOwn) {
  const int32_t known = rauGetNumRegBrngs();
  EXPECT_GE(known, 16);
  BrngProperties given = idle_properties();
  given.StreamStateSize = 40;
  given.NSeeds = 5;
  const int32_t brng = rauRegisterBrng(&given);
  EXPECT_EQ(brng, (known + 1) << 20);
  EXPECT_EQ(rauGetNumRegBrngs(), known + 1);
  for (int c = 0; c <= highest_rau_class(); ++c) {
    const RauClass running(c);
    BrngProperties found = {};
    ASSERT_EQ(rauGetBrngProperties(brng, &found), 0);
    EXPECT_EQ(std::memcmp(&found, &given, sizeof given), 0);
  }
}

// A state smaller than a stream's head, and a seed larger than any memory: a stream is as large as
// its state, and a copy of the state keeps to both ends.
TEST(Registration, ATinyState) {
  BrngProperties tiny = idle_properties();
  tiny.StreamStateSize = 0;
  tiny.NSeeds = INT32_MAX;
  tiny.WordSize = 16;
  const int32_t brng = rauRegisterBrng(&tiny);
  ASSERT_GT(brng, 0);
  Stream stream(brng, {1}), other = stream.copy(), r250(RAU_BRNG_R250, {1});
  EXPECT_EQ(rauGetStreamSize(stream), 8);
  const std::string before = r250.bytes();
  EXPECT_EQ(rauCopyStreamState(other, stream), 0);
  EXPECT_EQ(rauCopyStreamState(r250, stream), 0);
  EXPECT_EQ(rauCopyStreamState(stream, r250), 0);
  EXPECT_EQ(r250.bytes(), before);
}

// The state of a foreign generator in a stream of a built-in one means nothing. The sequence that
// goes on from it is one sequence all the same, on every class and for every split of a request.
TEST(Registration, StatesOfNoise) {
  BrngProperties noise = idle_properties();
  noise.StreamStateSize = 16 + 1008;
  noise.NSeeds = 252;
  noise.InitStream = [](int32_t, StreamState* stream, int32_t, const void* seed) {
    const uint32_t kind = *static_cast<const uint32_t*>(seed);
    std::minstd_rand random(kind);
    for (size_t i = 4; i < 256; ++i) {
      auto word = static_cast<uint32_t>(random()) * 2;
      // Multiples of moduli as well, and the largest words.
      if (kind % 4 == 1) word = word % 256 * 16770647;
      if (kind % 4 == 2) word = word % 3 * 0x7fffffff;
      if (kind % 4 == 3) word |= 0xfffff000;
      reinterpret_cast<uint32_t*>(stream)[i] = word;
    }
    return 0;
  };
  const int32_t brng = rauRegisterBrng(&noise);
  struct Drawn {
    Words words;
    std::vector<double> doubles;
    std::vector<float> floats;
    std::vector<int32_t> integers;
    Words skipped;
  };
  std::map<std::pair<int32_t, uint32_t>, Drawn> of_class_0;
  for_each_subject([&](const Subject& subject) {
    for (uint32_t seed = 0; seed < 20; ++seed) {
      Stream start(subject.brng, {1});
      ASSERT_EQ(rauCopyStreamState(start, Stream(brng, {seed})), 0);
      EXPECT_EQ(rauGetStreamStateBrng(start), subject.brng);
      const auto draw = [&](auto sample) {
        Stream whole = start.copy();
        const auto all = sample(whole, 300);
        for (const size_t first : {1, 2, 3, 8, 30, 100}) {
          Stream split = start.copy();
          auto joined = sample(split, first);
          append(joined, sample(split, 300 - first));
          EXPECT_TRUE(same(joined, all)) << first << ", seed " << seed;
        }
        return all;
      };
      Drawn drawn = {draw([](Stream& s, size_t n) { return s.words(n); }),
                     draw([](Stream& s, size_t n) { return s.doubles(n); }),
                     draw([](Stream& s, size_t n) { return s.floats(n); }),
                     draw([](Stream& s, size_t n) { return s.integers(n, -9, 999); }),
                     {}};
      Stream moved = start.copy();
      if (rauSkipAheadStream(moved, 123) == 0) {
        drawn.skipped = moved.words(9);
        const size_t width = subject.output_words();
        EXPECT_TRUE(same(drawn.skipped, slice(drawn.words, 123 * width, 9 * width))) << seed;
      }
      const Drawn& expected = of_class_0.try_emplace({subject.brng, seed}, drawn).first->second;
      EXPECT_TRUE(same(drawn.words, expected.words)) << seed;
      EXPECT_TRUE(same(drawn.doubles, expected.doubles)) << seed;
      EXPECT_TRUE(same(drawn.floats, expected.floats)) << seed;
      EXPECT_TRUE(same(drawn.integers, expected.integers)) << seed;
    }
  });
}

// ---- The contract of a generator ----

// Its seed is the number of outputs that it has; behind them, and behind skips beyond them, it
// fails. It has no other moves.
struct Limited {
  struct State : StreamState {
    uint32_t left;
  };
  static constexpr double kUnit = 0.5;
  static int32_t seed(State& state, int32_t n, const uint32_t* words) {
    state.left = n > 0 ? words[0] : 0;
    return n > 0 ? RAU_STATUS_OK : RAU_ERROR_BADARGS;
  }
  static int32_t skip_ahead(State& state, uint64_t n) {
    if (n > state.left) return RAU_ERROR_QRNG_PERIOD_ELAPSED;
    state.left -= static_cast<uint32_t>(n);
    return RAU_STATUS_OK;
  }
  static int32_t generate(State& state, int32_t n, auto sink) {
    const int32_t status = skip_ahead(state, static_cast<uint64_t>(n));
    for (int32_t i = 0; status == 0 && i < n; ++i) sink.put_one(i, 3);
    return status;
  }
};

TEST(Generator, StatusesReachTheCaller) {
  using statistics::BrngRow;
  static_assert(BrngRow<sizeof(Limited::State), statistics::kSkipAhead>::kFits<Limited>);
  static_assert(!BrngRow<24 + 1, statistics::kSkipAhead>::kFits<Limited>);
  static_assert(!BrngRow<24, statistics::kSkipAhead | statistics::kLeapfrog>::kFits<Limited>);
  static_assert(!BrngRow<24, 0>::kFits<Limited>);
  using Blocks = failing_test::Blocks<Limited>;
  const BrngProperties limited = {24,
                                  1,
                                  1,
                                  4,
                                  32,
                                  statistics::init_stream<Limited>,
                                  Blocks::single,
                                  Blocks::real,
                                  Blocks::integer};
  const int32_t brng = rauRegisterBrng(&limited);
  StreamState* refused = nullptr;
  EXPECT_EQ(rauNewStreamEx(&refused, brng, 0, nullptr), RAU_ERROR_BADARGS);
  Stream cleanup(refused), stream(brng, {10});
  EXPECT_EQ(stream.doubles(2, 1, 3), std::vector<double>(2, 4.0));
  EXPECT_EQ(stream.floats(2, 1, 3), std::vector<float>(2, 4.0f));
  EXPECT_EQ(stream.words(2), Words(2, 3));
  EXPECT_EQ(rauSkipAheadStream(stream, 2), 0);
  EXPECT_EQ(rauSkipAheadStream(stream, 3), RAU_ERROR_QRNG_PERIOD_ELAPSED);
  EXPECT_EQ(rauLeapfrogStream(stream, 0, 2), RAU_ERROR_LEAPFROG_UNSUPPORTED);
  double d[3];
  float f[3];
  uint32_t u[3];
  EXPECT_EQ(vdRngUniform(0, stream, 3, d, 0, 1), RAU_ERROR_QRNG_PERIOD_ELAPSED);
  EXPECT_EQ(vsRngUniform(0, stream, 3, f, 0, 1), RAU_ERROR_QRNG_PERIOD_ELAPSED);
  EXPECT_EQ(viRngUniformBits(0, stream, 3, u), RAU_ERROR_QRNG_PERIOD_ELAPSED);
  EXPECT_EQ(stream.words(2), Words(2, 3));
  take_reports();
}

}  // namespace
}  // namespace orba::test
