// The stream object: identifiers, layout, copies, and the entries in both their forms.

#include <gtest/gtest.h>

#include <algorithm>

#include "statistics/streams/extensions.h"
#include "tests/streams/reports.h"
#include "tests/streams/scripted.h"
#include "tests/streams/streams.h"

namespace orba::test {
namespace {

// ---- Identifiers ----

TEST(Identifiers, EveryRowOfTheTable) {
  struct Row {
    int32_t brng, size, seeds, zero, word, bits, subs;
  };
  const Row rows[] = {{RAU_BRNG_MCG31M1, 24, 1, 0, 4, 31, 1},
                      {RAU_BRNG_R250, 1024, 252, 1, 4, 32, 1},
                      {RAU_BRNG_MRG32K3A, 40, 6, 1, 4, 32, 1},
                      {RAU_BRNG_MCG59, 32, 1, 0, 8, 59, 1},
                      {RAU_BRNG_WH, 48, 4, 1, 16, 24, 273}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.brng);
    for (const int32_t sub : {0, row.subs - 1}) {
      BrngProperties p = {};
      ASSERT_EQ(rauGetBrngProperties(row.brng + sub, &p), 0);
      EXPECT_EQ(p.StreamStateSize, row.size);
      EXPECT_EQ(p.NSeeds, row.seeds);
      EXPECT_EQ(p.IncludesZero, row.zero);
      EXPECT_EQ(p.WordSize, row.word);
      EXPECT_EQ(p.NBits, row.bits);
      EXPECT_TRUE(p.InitStream && p.sBRng && p.dBRng && p.iBRng);
      Stream stream(row.brng + sub, {1});
      EXPECT_EQ(rauGetStreamStateBrng(stream), row.brng + sub);
      EXPECT_EQ(rauGetStreamSize(stream), row.size + 8);
    }
    BrngProperties p = {};
    EXPECT_EQ(rauGetBrngProperties(row.brng + row.subs, &p), RAU_ERROR_INVALID_BRNG_INDEX);
    EXPECT_EQ(p.StreamStateSize, 0);
  }
}

TEST(Identifiers, OldNumbering) {
  struct Case {
    int32_t old, brng;
  };
  const Case cases[] = {{0, RAU_BRNG_MCG31M1},    {1, RAU_BRNG_R250},      {2, RAU_BRNG_MRG32K3A},
                        {3, RAU_BRNG_MCG59},      {4, RAU_BRNG_WH},        {5, RAU_BRNG_WH + 1},
                        {150, RAU_BRNG_WH + 146}, {276, RAU_BRNG_WH + 272}};
  for (const Case& c : cases) {
    Stream old(c.old, {77, 78}), present(c.brng, {77, 78});
    EXPECT_EQ(rauGetStreamStateBrng(old), c.old);
    EXPECT_TRUE(same(old.words(100), present.words(100))) << c.old;
    EXPECT_TRUE(same(old.doubles(100), present.doubles(100))) << c.old;
    if (c.brng != RAU_BRNG_R250) {
      EXPECT_EQ(rauSkipAheadStream(old, 1000), 0);
      EXPECT_EQ(rauSkipAheadStream(present, 1000), 0);
    }
    EXPECT_TRUE(same(old.copy().words(100), present.words(100))) << c.old;
  }
}

TEST(Identifiers, UnknownOnesAreRefused) {
  StreamState* const untouched = reinterpret_cast<StreamState*>(0x10);
  const int32_t scripted = scripted_brng();
  for (const int32_t brng : {279, 280, 281, 0xfffff, 0x100001, 0x200001, 0x500000 + 273, 0x5fffff,
                             0xA00000, 0xB00000, 0xC00000, 0xA00001, scripted + 1,
                             scripted + 0x100000, 512 << 20, INT32_MAX, -1, INT32_MIN}) {
    take_reports();
    StreamState* handle = untouched;
    EXPECT_EQ(rauNewStream(&handle, brng, 1), RAU_ERROR_INVALID_BRNG_INDEX) << brng;
    EXPECT_EQ(handle, untouched);
    EXPECT_EQ(take_reports(), (std::vector<Report>{{"rauNewStream", 2}})) << brng;
    BrngProperties p;
    EXPECT_EQ(rauGetBrngProperties(brng, &p), RAU_ERROR_INVALID_BRNG_INDEX) << brng;
    EXPECT_EQ(take_reports(), (std::vector<Report>{{"rauRegisterBrng", 1}})) << brng;
  }
}

// ---- Layout ----

// Offsets are part of saved images.
TEST(Layout, Header) {
  for_each_subject([](const Subject& subject) {
    Stream stream(subject.brng, full_seed(subject));
    EXPECT_EQ(reinterpret_cast<uintptr_t>(static_cast<StreamState*>(stream)) % 128, 0);
    EXPECT_EQ(stream.at<int32_t>(0), subject.brng);
    EXPECT_EQ(stream.at(4), 1);  // marker, and zeros behind it
    EXPECT_EQ(stream.at<void*>(8), nullptr);
  });
}

TEST(Layout, States) {
  for_each_subject([](const Subject& subject) {
    const Words seed = full_seed(subject);
    Stream stream(subject.brng, seed);
    const auto expect_words = [&](size_t offset, const Words& expected) {
      Words got;
      for (size_t i = 0; i < expected.size(); ++i) got.push_back(stream.at(offset + 4 * i));
      EXPECT_TRUE(same(got, expected)) << "offset " << offset;
    };
    switch (subject.brng) {
      case RAU_BRNG_MCG31M1:
        expect_words(16, {seed[0] % 0x7fffffff, 1132489760});
        stream.words(100);
        EXPECT_EQ(stream.at(16), stream.copy().words(1)[0]);
        break;
      case RAU_BRNG_R250: {
        expect_words(16, slice(seed, 0, 250));
        expect_words(1016, {0, 103});
        const Words outputs = reference_words(subject, seed, 1000);
        stream.words(1);
        expect_words(16, {outputs[0], seed[1]});
        expect_words(1016, {1, 104});
        stream.words(146);
        expect_words(1016, {147, 0});
        stream.words(250);
        expect_words(16, slice(outputs, 147, 250));
        expect_words(1016, {0, 103});
        break;
      }
      case RAU_BRNG_MRG32K3A: {
        // Three steps on, the output is the difference of the newest words.
        const uint32_t u = stream.words(100).back();
        const int64_t difference = int64_t{stream.at(24)} - stream.at(36);
        EXPECT_EQ(u, difference < 0 ? difference + 4294967087 : difference);
        Stream small(subject.brng, {1, 2, 3, 4, 5, 6});
        for (uint32_t i = 0; i < 6; ++i) EXPECT_EQ(small.at(16 + 4 * i), i + 1);
        small.words(1);
        for (uint32_t i : {0u, 1u, 3u, 4u}) EXPECT_EQ(small.at(16 + 4 * i), i + 2);
        break;
      }
      case RAU_BRNG_MCG59: {
        EXPECT_EQ(stream.at<uint64_t>(24), 302875106592253);
        stream.words(100);
        const Words next = stream.copy().words(1);
        expect_words(16, next);
        break;
      }
      default: {
        stream.words(100);
        const Words next = stream.copy().words(1);
        expect_words(16, next);
        for (const WichmannHillRow& row : wichmann_hill_rows()) {
          if (subject.brng != RAU_BRNG_WH + row.sub_generator) continue;
          expect_words(32, {row.multiplier.begin(), row.multiplier.end()});
        }
      }
    }
  });
}

// ---- Copies ----

TEST(Copy, IsAStreamOfItsOwn) {
  for_each_subject([](const Subject& subject) {
    Stream source(subject.brng, full_seed(subject));
    source.words(123);
    Stream other = source.copy();
    EXPECT_EQ(other.bytes(), source.bytes());
    const Words expected = source.copy().words(500);
    source.words(3);
    EXPECT_TRUE(same(other.words(500), expected));
    Stream last = other.copy();
    const Words next = other.words(300);
    ASSERT_EQ(rauDeleteStream(other.address()), 0);
    EXPECT_EQ(static_cast<StreamState*>(other), nullptr);
    EXPECT_TRUE(same(last.words(300), next));
  });
}

TEST(CopyState, TakesOverTheSequence) {
  for_each_subject([](const Subject& subject) {
    Stream source(subject.brng, full_seed(subject)), dest(subject.brng, {99});
    source.words(321);
    dest.words(10);
    ASSERT_EQ(rauCopyStreamState(dest, source), 0);
    EXPECT_EQ(dest.bytes(), source.bytes());
    const Words expected = source.words(400);
    EXPECT_TRUE(same(dest.words(400), expected));
    const std::string before = source.bytes();
    EXPECT_EQ(rauCopyStreamState(source, source), 0);
    EXPECT_EQ(source.bytes(), before);
  });
}

// Only as many bytes move as the row counts for a seed: the multipliers of the two multiplicative
// generators stay, the four of Wichmann-Hill go along.
TEST(CopyState, MovesASeedAndNoMore) {
  for_each_subject([](const Subject& subject) {
    Stream source(subject.brng, full_seed(subject)), dest(subject.brng, {99});
    if (rauLeapfrogStream(dest, 1, 6) != 0) return;
    const std::string divided = dest.bytes();
    ASSERT_EQ(rauCopyStreamState(dest, source), 0);
    const std::string a = source.bytes(), b = dest.bytes();
    const size_t moved = subject.row().NSeeds * subject.row().WordSize;
    const size_t end = std::min(16 + moved, a.size());
    EXPECT_EQ(b.substr(16, end - 16), a.substr(16, end - 16));
    EXPECT_EQ(b.substr(end), divided.substr(end));
  });
}

// Between generators the copy means nothing, but does no harm: every generator runs on from bytes
// of any other.
TEST(CopyState, BetweenGenerators) {
  for_each_subject([](const Subject& subject) {
    for (const Subject& from : subjects()) {
      if (from.rau_class != subject.rau_class) continue;
      Stream source(from.brng, full_seed(from)), dest(subject.brng, full_seed(subject));
      source.words(50);
      const std::string before = source.bytes();
      EXPECT_EQ(rauCopyStreamState(dest, source), 0);
      EXPECT_EQ(source.bytes(), before);
      EXPECT_EQ(rauGetStreamStateBrng(dest), subject.brng);
      EXPECT_EQ(dest.at(4), 1);
      dest.words(600);
      dest.doubles(600);
      dest.floats(600);
      rauSkipAheadStream(dest, 1000);
    }
  });
}

// ---- Both forms of every entry ----

TEST(Aliases, DoTheSame) {
  const int32_t brng = RAU_BRNG_MCG59, n = 100, count = 2, method = 0, k = 1, nstreams = 3;
  const uint32_t seed = 5, seeds[] = {5, 6};
  const int64_t steps = 1000;
  StreamState *one = nullptr, *other = nullptr, *full = nullptr;
  ASSERT_EQ(rauNewStream(&one, brng, seed), 0);
  ASSERT_EQ(raunewstream(&other, &brng, &seed), 0);
  ASSERT_EQ(raunewstreamex(&full, &brng, &count, seeds), 0);
  Stream capital(one), small(other), small_full(full), capital_full(brng, {5, 6});
  EXPECT_EQ(small.bytes(), capital.bytes());
  EXPECT_EQ(small_full.bytes(), capital_full.bytes());

  EXPECT_EQ(rauSkipAheadStream(one, steps), 0);
  EXPECT_EQ(rauskipaheadstream(&other, &steps), 0);
  EXPECT_EQ(small.bytes(), capital.bytes());
  EXPECT_EQ(rauLeapfrogStream(one, k, nstreams), 0);
  EXPECT_EQ(rauleapfrogstream(&other, &k, &nstreams), 0);
  EXPECT_EQ(small.bytes(), capital.bytes());
  EXPECT_EQ(raugetstreamstatebrng(&other), brng);
  EXPECT_EQ(raugetstreamsize(&other), rauGetStreamSize(one));

  const auto draw = [&](auto element, auto call, auto alias) {
    using Element = decltype(element);
    std::vector<Element> a(2 * n), b(2 * n);
    EXPECT_EQ(call(a.data()), 0);
    EXPECT_EQ(alias(b.data()), 0);
    EXPECT_TRUE(same(b, a));
    EXPECT_NE(a, std::vector<Element>(2 * n));
    EXPECT_EQ(small.bytes(), capital.bytes());
  };
  const double a = -3.5, b = 9.25;
  const float fa = -3.5f, fb = 9.25f;
  const int32_t ia = -30, ib = 90;
  draw(
      0.0, [&](double* r) { return vdRngUniform(method, one, n, r, a, b); },
      [&](double* r) { return vdrnguniform(&method, &other, &n, r, &a, &b); });
  draw(
      0.0f, [&](float* r) { return vsRngUniform(method, one, n, r, fa, fb); },
      [&](float* r) { return vsrnguniform(&method, &other, &n, r, &fa, &fb); });
  draw(
      int32_t{}, [&](int32_t* r) { return viRngUniform(method, one, n, r, ia, ib); },
      [&](int32_t* r) { return virnguniform(&method, &other, &n, r, &ia, &ib); });
  draw(
      uint32_t{}, [&](uint32_t* r) { return viRngUniformBits(method, one, n, r); },
      [&](uint32_t* r) { return virnguniformbits(&method, &other, &n, r); });
  draw(
      uint32_t{}, [&](uint32_t* r) { return viRngUniformBits32(method, one, n, r); },
      [&](uint32_t* r) { return virnguniformbits32(&method, &other, &n, r); });
  draw(
      uint64_t{}, [&](uint64_t* r) { return viRngUniformBits64(method, one, n, r); },
      [&](uint64_t* r) { return virnguniformbits64(&method, &other, &n, r); });

  StreamState* copied = nullptr;
  EXPECT_EQ(raucopystream(&copied, &other), 0);
  Stream copy(copied);
  EXPECT_EQ(copy.bytes(), small.bytes());
  EXPECT_EQ(raucopystreamstate(&full, &other), 0);
  EXPECT_EQ(rauCopyStreamState(capital_full, one), 0);
  EXPECT_EQ(small_full.bytes(), capital_full.bytes());
  EXPECT_EQ(raudeletestream(copy.address()), 0);
  EXPECT_EQ(static_cast<StreamState*>(copy), nullptr);

  BrngProperties by_value = {}, by_address = {};
  EXPECT_EQ(rauGetBrngProperties(brng, &by_value), 0);
  EXPECT_EQ(raugetbrngproperties(&brng, &by_address), 0);
  EXPECT_EQ(by_address.StreamStateSize, by_value.StreamStateSize);
  EXPECT_EQ(by_address.iBRng, by_value.iBRng);
  const int32_t known = rauGetNumRegBrngs();
  const BrngProperties idle = idle_properties();
  EXPECT_EQ(rauregisterbrng(&idle), (known + 1) << 20);
  EXPECT_EQ(raugetnumregbrngs(), known + 1);
}

}  // namespace
}  // namespace orba::test
