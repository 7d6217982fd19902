// The stream object: identifiers, layout, copies.

#include <gtest/gtest.h>

#include <algorithm>

#include "services/memory.h"
#include "statistics/streams/extensions.h"
#include "tests/streams/reports.h"
#include "tests/streams/scripted.h"
#include "tests/streams/streams.h"
#include "tests/support/failing_allocator.h"

namespace orba::test {
namespace {

TEST(Identifiers, OldNumbering) {
  const std::pair<int32_t, int32_t> numbers[] = {
      {0, RAU_BRNG_MCG31M1},    {1, RAU_BRNG_R250},      {2, RAU_BRNG_MRG32K3A},
      {3, RAU_BRNG_MCG59},      {4, RAU_BRNG_WH},        {5, RAU_BRNG_WH + 1},
      {150, RAU_BRNG_WH + 146}, {276, RAU_BRNG_WH + 272}};
  for (const auto& [number, brng] : numbers) {
    Stream old(number, {77, 78}), present(brng, {77, 78});
    EXPECT_EQ(rauGetStreamStateBrng(old), number);
    EXPECT_TRUE(same(old.words(100), present.words(100))) << number;
    EXPECT_TRUE(same(old.doubles(100), present.doubles(100))) << number;
    EXPECT_EQ(rauSkipAheadStream(old, 1000), rauSkipAheadStream(present, 1000));
    EXPECT_TRUE(same(old.copy().words(100), present.words(100))) << number;
  }
}

TEST(Identifiers, UnknownOnesAreRefused) {
  StreamState* const untouched = reinterpret_cast<StreamState*>(0x10);
  const int32_t scripted = scripted_brng();
  for (const int32_t brng : {279,
                             280,
                             281,
                             0xfffff,
                             0x100001,
                             0x200001,
                             0x300001,
                             0x400001,
                             0x500000 + 273,
                             0x5fffff,
                             0xA00000,
                             0xB00000,
                             0xC00000,
                             0xA00001,
                             scripted + 1,
                             scripted + 0x100000,
                             512 << 20,
                             INT32_MAX,
                             -1,
                             INT32_MIN}) {
    StreamState* handle = untouched;
    EXPECT_EQ(rauNewStream(&handle, brng, 1), RAU_ERROR_INVALID_BRNG_INDEX) << brng;
    EXPECT_EQ(handle, untouched);
    BrngProperties p = idle_properties();
    EXPECT_EQ(rauGetBrngProperties(brng, &p), RAU_ERROR_INVALID_BRNG_INDEX) << brng;
    EXPECT_EQ(p.StreamStateSize, idle_properties().StreamStateSize);
  }
  take_reports();
}

TEST(Layout, OfTheHead) {
  for_each_subject([](const Subject& subject) {
    Stream stream(subject.brng, full_seed(subject));
    EXPECT_EQ(reinterpret_cast<uintptr_t>(static_cast<StreamState*>(stream)) % 128, 0);
    EXPECT_EQ(stream.at<int32_t>(0), subject.brng);
    EXPECT_EQ(stream.at(4), 1);  // marker, and zeros behind it
    EXPECT_EQ(stream.at<void*>(8), nullptr);
    EXPECT_EQ(rauGetStreamStateBrng(stream), subject.brng);
    EXPECT_EQ(rauGetStreamSize(stream), subject.row().StreamStateSize + 8);
  });
}

// ---- Copies ----

TEST(Copy, IsAStreamOfItsOwn) {
  for_each_subject([](const Subject& subject) {
    Stream source(subject.brng, full_seed(subject)), dest(subject.brng, {99});
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
  StreamState* handle = nullptr;
  const auto expect_none = [&] { EXPECT_EQ(handle, nullptr); };

  EXPECT_EQ(fail_each_allocation(
                RAU_ERROR_MEM_FAILURE, [&] { return rauNewStream(&handle, RAU_BRNG_R250, 1); },
                expect_none),
            1);
  Stream source(handle);
  for (uint32_t id = 1; id <= 3; ++id) {
    void* data = services::allocate(8, statistics::kStreamAlignment);
    ASSERT_EQ(statistics::add_extension(*source, id, nullptr, data, 8), 0);
  }
  handle = nullptr;
  EXPECT_EQ(fail_each_allocation(
                RAU_ERROR_MEM_FAILURE, [&] { return rauCopyStream(&handle, source); }, expect_none),
            7);
  EXPECT_EQ(rauGetStreamSize(handle), rauGetStreamSize(source));
  EXPECT_EQ(rauDeleteStream(&handle), 0);
  Stream dest(RAU_BRNG_R250, {2});
  EXPECT_EQ(fail_each_allocation(
                RAU_ERROR_MEM_FAILURE, [&] { return rauCopyStreamState(dest, source); },
                [&] { EXPECT_EQ(rauGetStreamSize(dest), 1032); }),
            6);
  take_reports();
}

}  // namespace
}  // namespace orba::test
