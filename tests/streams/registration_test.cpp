// Generators of a caller's own.

#include <gtest/gtest.h>
#include <unistd.h>

#include <random>
#include <vector>

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
    EXPECT_EQ(found.StreamStateSize, 40);
    EXPECT_EQ(found.NSeeds, 5);
    EXPECT_EQ(found.InitStream, given.InitStream);
    EXPECT_EQ(found.sBRng, given.sBRng);
    EXPECT_EQ(found.dBRng, given.dBRng);
    EXPECT_EQ(found.iBRng, given.iBRng);
  }
}

// The least state that passes the checks: smaller than a stream's head, and than the bytes that a
// copy of the state moves.
TEST(Registration, ATinyState) {
  BrngProperties tiny = idle_properties();
  tiny.StreamStateSize = 0;
  tiny.NSeeds = 1000;
  tiny.WordSize = 16;
  const int32_t brng = rauRegisterBrng(&tiny);
  ASSERT_GT(brng, 0);
  Stream stream(brng, {1}), other = stream.copy(), r250(RAU_BRNG_R250, {1});
  EXPECT_EQ(rauGetStreamSize(stream), 8);
  EXPECT_EQ(rauCopyStreamState(other, stream), 0);
  EXPECT_EQ(rauCopyStreamState(r250, stream), 0);
  EXPECT_EQ(rauCopyStreamState(stream, r250), 0);
  EXPECT_EQ(rauGetStreamStateBrng(r250), RAU_BRNG_R250);
}

// The state of a foreign generator in a stream of a built-in one means nothing, but does no harm.
TEST(Registration, StatesOfNoise) {
  BrngProperties noise = idle_properties();
  noise.StreamStateSize = 16 + 1008;
  noise.NSeeds = 252;
  noise.InitStream = [](int32_t, StreamState* stream, int32_t, const void* seed) {
    std::minstd_rand random(*static_cast<const uint32_t*>(seed));
    for (size_t i = 4; i < 256; ++i)
      reinterpret_cast<uint32_t*>(stream)[i] = static_cast<uint32_t>(random()) | 0x80000000;
    return 0;
  };
  const int32_t brng = rauRegisterBrng(&noise);
  for_each_subject([&](const Subject& subject) {
    for (uint32_t seed = 0; seed < 20; ++seed) {
      Stream stream(subject.brng, {1});
      ASSERT_EQ(rauCopyStreamState(stream, Stream(brng, {seed})), 0);
      for (const size_t n : {1, 100, 1000}) {
        stream.words(n);
        stream.floats(n);
        stream.doubles(n);
      }
      rauSkipAheadStream(stream, 12345);
      EXPECT_EQ(rauGetStreamStateBrng(stream), subject.brng);
    }
  });
}

// The table is full at 512 rows. In a child process, as a registration stays.
TEST(RegistrationDeathTest, TheTableIsFull) {
  const auto fill = [] {
    const BrngProperties properties = idle_properties();
    int32_t last = 0;
    for (int32_t row = rauGetNumRegBrngs(); row < 512; ++row) {
      last = rauRegisterBrng(&properties);
      if (last != (row + 1) << 20) return 1;
    }
    take_reports();
    for (int i = 0; i < 3; ++i) {
      if (rauRegisterBrng(&properties) != RAU_ERROR_MEM_FAILURE) return 2;
    }
    if (take_reports() != std::vector<Report>(3, {"rauRegisterBrng", 1})) return 3;
    if (rauGetNumRegBrngs() != 512) return 4;
    StreamState* stream = nullptr;
    if (rauNewStream(&stream, last, 1) != 0 || rauGetStreamStateBrng(stream) != last) return 5;
    rauDeleteStream(&stream);
    return rauNewStream(&stream, last + 0x100000, 1) == RAU_ERROR_INVALID_BRNG_INDEX ? 0 : 6;
  };
  EXPECT_EXIT(_exit(fill()), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace orba::test
