// The stream object: identifiers, copies, generators of a caller's own, states that are foreign to a
// generator, and a generator that fails.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

#include "services/memory.h"
#define ORBA_CLASS 1
#define ORBA_CLASS_NAMESPACE limited_test
#include "statistics/streams/extensions.h"
#include "statistics/streams/generators/brng_entries.h"
#include "statistics/streams/generators/generator.h"
#include "statistics/streams/generators/kernels/blocks.h"
#include "tests/streams/scripted.h"
#include "tests/streams/streams.h"
#include "tests/support/failing_allocator.h"

namespace orba::test {
namespace {

TEST(Identifiers, OldNumbering) {
  const std::pair<int32_t, int32_t> numbers[] = {
      {0, RAU_BRNG_MCG31M1}, {1, RAU_BRNG_R250}, {2, RAU_BRNG_MRG32K3A},   {3, RAU_BRNG_MCG59},
      {4, RAU_BRNG_WH},      {5, 0x500001},      {276, RAU_BRNG_WH + 272}, {150, 0x500092}};
  for (const auto& [number, brng] : numbers) {
    Stream old(number, {77, 78}), present(brng, {77, 78});
    EXPECT_EQ(rauGetStreamStateBrng(old), number);
    EXPECT_TRUE(same(old.words(100), present.words(100))) << number;
    EXPECT_TRUE(same(old.doubles(100), present.doubles(100))) << number;
    EXPECT_EQ(rauSkipAheadStream(old, 1000), rauSkipAheadStream(present, 1000));
    EXPECT_TRUE(same(old.copy().words(100), present.words(100))) << number;
  }
}

TEST(Copy, IsAStreamOfItsOwn) {
  for_each_subject([](const Subject& subject) {
    Stream source(subject.brng, full_seed(subject)), dest(subject.brng, {99});
    EXPECT_EQ(reinterpret_cast<uintptr_t>(static_cast<StreamState*>(source)) % 128, 0);
    EXPECT_EQ(source.at<int32_t>(0), subject.brng);
    EXPECT_EQ(source.at(4), 1);  // marker, and zeros behind it
    EXPECT_EQ(source.at<void*>(8), nullptr);
    EXPECT_EQ(rauGetStreamStateBrng(source), subject.brng);
    EXPECT_EQ(rauGetStreamSize(source), subject.row().StreamStateSize + 8);
    source.words(123);
    dest.words(10);
    Stream other = source.copy();
    EXPECT_EQ(other.bytes(), source.bytes());
    ASSERT_EQ(rauCopyStreamState(dest, source), 0);
    EXPECT_EQ(dest.bytes(), source.bytes());
    EXPECT_EQ(rauCopyStreamState(source, source), 0);
    EXPECT_EQ(source.bytes(), other.bytes());
    const Words expected = source.copy().words(500);
    source.words(3);
    EXPECT_TRUE(same(other.words(500), expected));
    EXPECT_TRUE(same(dest.words(500), expected));
    ASSERT_EQ(rauDeleteStream(source.address()), 0);
    EXPECT_EQ(static_cast<StreamState*>(source), nullptr);
    EXPECT_TRUE(same(other.words(300), dest.words(300)));
  });
}

// Only as many bytes move as the row counts for a seed: the multipliers of the two multiplicative
// generators stay, the four of Wichmann-Hill go along. Between generators that means nothing, but
// no copy reaches beyond either state.
TEST(CopyState, MovesASeedAndNoMore) {
  for_each_subject([](const Subject& subject) {
    for (const Subject& from : subjects()) {
      if (from.rau_class != subject.rau_class) continue;
      Stream source(from.brng, full_seed(from)), dest(subject.brng, full_seed(subject));
      source.words(50);
      rauLeapfrogStream(dest, 1, 6);
      const std::string a = source.bytes(), before = dest.bytes();
      ASSERT_EQ(rauCopyStreamState(dest, source), 0);
      const auto seed = static_cast<size_t>(from.row().NSeeds) * from.row().WordSize;
      const size_t end = std::min({16 + seed, a.size(), before.size()});
      EXPECT_EQ(source.bytes(), a);
      EXPECT_EQ(dest.bytes(), before.substr(0, 16) + a.substr(16, end - 16) + before.substr(end));
    }
  });
}

// Without memory: the status, no stream, nothing kept.
TEST(Copy, WithoutMemory) {
  StreamState *made = nullptr, *copy = nullptr;
  const auto expect = [](int64_t allocations, auto call, auto check) {
    EXPECT_EQ(fail_each_allocation(RAU_ERROR_MEM_FAILURE, call, check), allocations);
  };
  expect(
      1, [&] { return rauNewStream(&made, RAU_BRNG_R250, 1); }, [&] { EXPECT_EQ(made, nullptr); });
  Stream source(made), dest(RAU_BRNG_R250, {2});
  for (uint32_t id = 1; id <= 3; ++id) {
    void* data = services::allocate(8, statistics::kStreamAlignment);
    ASSERT_EQ(statistics::add_extension(*source, id, nullptr, data, 8), 0);
  }
  expect(
      7, [&] { return rauCopyStream(&copy, source); }, [&] { EXPECT_EQ(copy, nullptr); });
  EXPECT_EQ(rauGetStreamSize(Stream(copy)), rauGetStreamSize(source));
  expect(
      6, [&] { return rauCopyStreamState(dest, source); },
      [&] { EXPECT_EQ(rauGetStreamSize(dest), 1032); });
  take_reports();
}

// ---- Generators of a caller's own, and the contract of ours ----

TEST(Registration, ARowOfItsOwn) {
  const int32_t known = rauGetNumRegBrngs();
  BrngProperties given = idle_properties();
  given.StreamStateSize = 40, given.NSeeds = 5;
  const int32_t brng = rauRegisterBrng(&given);
  EXPECT_EQ(brng, (known + 1) << 20);
  for (int c = 0; c <= highest_rau_class(); ++c) {
    const RauClass running(c);
    BrngProperties found = {};
    ASSERT_EQ(rauGetBrngProperties(brng, &found), 0);
    EXPECT_TRUE(found.StreamStateSize == 40 && found.NSeeds == 5 && found.WordSize == 4);
    EXPECT_TRUE(found.InitStream == given.InitStream && found.sBRng == given.sBRng);
    EXPECT_TRUE(found.dBRng == given.dBRng && found.iBRng == given.iBRng);
  }
  // A state smaller than a stream's head, and a seed larger than any memory: a stream is as large
  // as its state, and a copy of the state keeps to both ends.
  given.StreamStateSize = 0, given.NSeeds = INT32_MAX, given.WordSize = 16;
  EXPECT_EQ(rauRegisterBrng(&given), brng + 0x100000);
  EXPECT_EQ(rauGetNumRegBrngs(), known + 2);
  Stream stream(brng + 0x100000, {1}), other = stream.copy(), r250(RAU_BRNG_R250, {1});
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
      // Multiples of moduli as well, some by other multipliers, and the largest words.
      if (kind % 4 == 1) word = word % 256 * 16770647;
      if (kind % 4 == 2 && i % 2 == 0) word = word % 3 * 0x7fffffff;
      if (kind % 4 == 3) word |= 0xfffff000;
      reinterpret_cast<uint32_t*>(stream)[i] = word;
    }
    return 0;
  };
  const int32_t brng = rauRegisterBrng(&noise);
  std::map<std::pair<int32_t, uint32_t>, std::string> of_class_0;
  for_each_subject([&](const Subject& subject) {
    for (uint32_t seed = 0; seed < 20; ++seed) {
      Stream start(subject.brng, {1});
      ASSERT_EQ(rauCopyStreamState(start, Stream(brng, {seed})), 0);
      EXPECT_EQ(rauGetStreamStateBrng(start), subject.brng);
      std::string drawn;  // in all types
      const auto draw = [&](auto sample) {
        Stream whole = start.copy();
        const auto all = sample(whole, 300);
        for (const size_t first : {1, 2, 3, 8, 30, 100}) {
          Stream split = start.copy();
          auto joined = sample(split, first);
          append(joined, sample(split, 300 - first));
          EXPECT_TRUE(same(joined, all)) << first << ", seed " << seed;
        }
        drawn.append(reinterpret_cast<const char*>(all.data()), all.size() * sizeof all[0]);
        return all;
      };
      const Words words = draw([](Stream& s, size_t n) { return s.words(n); });
      draw([](Stream& s, size_t n) { return s.doubles(n); });
      draw([](Stream& s, size_t n) { return s.floats(n); });
      draw([](Stream& s, size_t n) { return s.integers(n, -9, 999); });
      EXPECT_TRUE(of_class_0.try_emplace({subject.brng, seed}, drawn).first->second == drawn);
      if (rauSkipAheadStream(start, 123) != 0) continue;
      const size_t width = subject.output_words();
      EXPECT_TRUE(same(start.words(9), slice(words, 123 * width, 9 * width))) << seed;
    }
  });
  take_reports();
}

// Its seed is the number of outputs that it has; behind them, and behind skips beyond them, it
// fails. It has no other moves, and one object of blocks for all classes.
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
ORBA_BLOCKS_ONCE(Limited)
using LimitedBlocks = limited_test::Blocks<Limited>;
extern "C" int32_t orba_Limited_sBRng(StreamState* s, int32_t n, float* r, float a, float b) {
  return LimitedBlocks::single(s, n, r, a, b);
}
extern "C" int32_t orba_Limited_dBRng(StreamState* s, int32_t n, double* r, double a, double b) {
  return LimitedBlocks::real(s, n, r, a, b);
}
extern "C" int32_t orba_Limited_iBRng(StreamState* s, int32_t n, void* r) {
  return LimitedBlocks::integer(s, n, r);
}

TEST(Generator, StatusesReachTheCaller) {
  using namespace statistics;
  static_assert(BrngRow<24, kSeeded | kSkipAhead>::kFits<Limited>);
  static_assert(!BrngRow<25, kSkipAhead>::kFits<Limited> && !BrngRow<24, 0>::kFits<Limited>);
  BrngProperties limited = idle_properties();
  limited.StreamStateSize = 24;
  limited.InitStream = init_stream<Limited>;
  limited.sBRng = Limited_sBRng_kernels[0];
  limited.dBRng = Limited_dBRng_kernels[statistics::kBuildCount - 1];
  limited.iBRng = Limited_iBRng_kernels[1];
  EXPECT_EQ(Limited_floors_kernels[2], nullptr);
  const int32_t brng = rauRegisterBrng(&limited);
  take_reports();
  StreamState* refused = nullptr;
  EXPECT_EQ(rauNewStreamEx(&refused, brng, 0, nullptr), RAU_ERROR_BADARGS);
  EXPECT_TRUE(take_reports().empty());
  Stream there_all_the_same(refused), stream(brng, {10});
  EXPECT_EQ(rauGetStreamStateBrng(refused), brng);
  EXPECT_EQ(stream.doubles(2, 1, 3), std::vector<double>(2, 4.0));
  EXPECT_EQ(stream.floats(2, 1, 3), std::vector<float>(2, 4.0f));
  EXPECT_EQ(stream.words(2), Words(2, 3));
  EXPECT_EQ(rauSkipAheadStream(stream, 2), 0);
  EXPECT_TRUE(take_reports().empty());
  EXPECT_EQ(rauSkipAheadStream(stream, 3), RAU_ERROR_QRNG_PERIOD_ELAPSED);
  EXPECT_EQ(rauLeapfrogStream(stream, 0, 2), RAU_ERROR_LEAPFROG_UNSUPPORTED);
  EXPECT_EQ(take_reports(),
            (std::vector<Report>{{"rauSkipAheadStream", 1}, {"rauLeapfrogStream", 1}}));
  double d[3];
  float f[3];
  uint32_t u[3];
  EXPECT_EQ(vdRngUniform(0, stream, 3, d, 0, 1), RAU_ERROR_QRNG_PERIOD_ELAPSED);
  EXPECT_EQ(vsRngUniform(0, stream, 3, f, 0, 1), RAU_ERROR_QRNG_PERIOD_ELAPSED);
  EXPECT_EQ(viRngUniformBits(0, stream, 3, u), RAU_ERROR_QRNG_PERIOD_ELAPSED);
  EXPECT_EQ(stream.words(2), Words(2, 3));
  EXPECT_TRUE(take_reports().empty());
}

}  // namespace
}  // namespace orba::test
