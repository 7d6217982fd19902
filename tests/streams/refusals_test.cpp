// Faults in arguments: the status, what is reported, the order in which faults are found, and that
// nothing changes. And what a trace shows of a call.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>

#include "services/verbose.h"
#include "tests/streams/reports.h"
#include "tests/streams/scripted.h"
#include "tests/streams/streams.h"
#include "tests/support/observe.h"

namespace orba::test {
namespace {

constexpr int32_t kAccurate = RAU_METHOD_ACCURATE;

// A live stream, a block that is none, and results that no refused call may touch.
struct Scene {
  Stream live{RAU_BRNG_MCG59, {3}};
  Stream shift{RAU_BRNG_R250, {3}};
  alignas(16) unsigned char dead_block[64] = {0, 0, 0, 0, 2};
  StreamState* dead = reinterpret_cast<StreamState*>(dead_block);
  StreamState* null = nullptr;
  double d[4] = {1, 2, 3, 4};
  float f[4] = {1, 2, 3, 4};
  int32_t i[4] = {1, 2, 3, 4};
  uint32_t u[4] = {1, 2, 3, 4};
  uint64_t w[4] = {1, 2, 3, 4};
  StreamState* out = nullptr;
  BrngProperties properties = idle_properties();

  std::string image() const {
    const auto bytes = [](const auto& field) {
      return std::string(reinterpret_cast<const char*>(&field), sizeof field);
    };
    return live.bytes() + shift.bytes() + bytes(dead_block) + bytes(d) + bytes(f) + bytes(i) +
           bytes(u) + bytes(w) + bytes(out) + std::to_string(rauGetNumRegBrngs());
  }
};

struct Case {
  int line;
  std::function<int32_t(Scene&)> call;
  int32_t status;
  std::vector<Report> reports;
};

void expect_refusals(const std::vector<Case>& cases) {
  Scene scene;
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "case of line " << c.line);
    const std::string before = scene.image();
    take_reports();
    EXPECT_EQ(c.call(scene), c.status);
    EXPECT_EQ(take_reports(), c.reports);
    EXPECT_EQ(scene.image(), before);
  }
}

// ORBA_CASE(call, status, reported name, reported position), in which s is the scene.
#define ORBA_CASE(call, status, ...) \
  Case {                             \
    __LINE__,                        \
        [](Scene& s) {               \
          (void)s;                   \
          return call;               \
        },                           \
        status, {                    \
      Report { __VA_ARGS__ }         \
    }                                \
  }
#define ORBA_UNREPORTED(call, status) \
  Case {                              \
    __LINE__,                         \
        [](Scene& s) {                \
          (void)s;                    \
          return call;                \
        },                            \
        status, {}                    \
  }

TEST(Refusals, OfStreamEntries) {
  static const int32_t brng = RAU_BRNG_R250, bad = -5, one = 1, minus = -1;
  static const int64_t steps = 1;
  static const uint32_t seed[] = {1};
  expect_refusals({
      ORBA_CASE(rauNewStream(&s.out, -1, 1), -1000, "rauNewStream", 2),
      ORBA_CASE(rauNewStream(&s.out, 0xA00000, 1), -1000, "rauNewStream", 2),
      ORBA_CASE(raunewstream(&s.out, &bad, seed), -1000, "rauNewStream", 2),
      ORBA_CASE(rauNewStream(nullptr, brng, 1), -5, "rauNewStream", 1),
      ORBA_CASE(rauNewStreamEx(&s.out, INT32_MIN, 1, seed), -1000, "rauNewStream", 2),
      ORBA_CASE(rauNewStreamEx(&s.out, 281, 1, seed), -1000, "rauNewStream", 2),
      ORBA_CASE(rauNewStreamEx(&s.out, 281, 0, nullptr), -1000, "rauNewStream", 2),
      ORBA_CASE(raunewstreamex(&s.out, &bad, &one, seed), -1000, "rauNewStream", 2),
      ORBA_CASE(rauNewStreamEx(nullptr, brng, 1, seed), -5, "rauNewStream", 1),
      ORBA_CASE(rauNewStreamEx(&s.out, brng, 1, nullptr), -3, "rauNewStream", 4),

      ORBA_CASE(rauDeleteStream(&s.null), -5, "rauDeleteStream", 1),
      ORBA_CASE(rauDeleteStream(nullptr), -5, "rauDeleteStream", 1),
      ORBA_CASE(rauDeleteStream(&s.dead), -1006, "rauDeleteStream", 1),
      ORBA_CASE(raudeletestream(&s.null), -5, "rauDeleteStream", 1),

      ORBA_CASE(rauCopyStream(&s.out, nullptr), -5, "rauCopyStream", 2),
      ORBA_CASE(rauCopyStream(&s.out, s.dead), -1006, "rauCopyStream", 2),
      ORBA_CASE(rauCopyStream(nullptr, s.live), -5, "rauCopyStream", 1),
      ORBA_CASE(raucopystream(&s.out, &s.null), -5, "rauCopyStream", 2),
      ORBA_CASE(raucopystream(&s.out, nullptr), -5, "rauCopyStream", 2),

      ORBA_CASE(rauCopyStreamState(nullptr, nullptr), -5, "rauCopyStreamState", 1),
      ORBA_CASE(rauCopyStreamState(s.dead, nullptr), -1006, "rauCopyStreamState", 1),
      ORBA_CASE(rauCopyStreamState(s.live, nullptr), -5, "rauCopyStreamState", 2),
      ORBA_CASE(rauCopyStreamState(s.live, s.dead), -1006, "rauCopyStreamState", 2),
      ORBA_CASE(raucopystreamstate(&s.null, &s.dead), -5, "rauCopyStreamState", 1),
      ORBA_CASE(raucopystreamstate(s.live.address(), &s.dead), -1006, "rauCopyStreamState", 2),

      ORBA_CASE(rauLeapfrogStream(nullptr, 0, -1), -5, "rauLeapfrogStream", 1),
      ORBA_CASE(rauLeapfrogStream(s.dead, 0, -1), -1006, "rauLeapfrogStream", 1),
      ORBA_CASE(rauLeapfrogStream(s.live, 0, -1), -1013, "rauLeapfrogStream", 1),
      ORBA_CASE(rauLeapfrogStream(s.shift, 0, -1), -1013, "rauLeapfrogStream", 1),
      ORBA_CASE(rauLeapfrogStream(s.shift, 0, 1), -1002, "rauLeapfrogStream", 1),
      ORBA_CASE(rauleapfrogstream(s.shift.address(), &one, &minus), -1013, "rauLeapfrogStream", 1),

      ORBA_CASE(rauSkipAheadStream(nullptr, 1), -5, "rauSkipAheadStream", 1),
      ORBA_CASE(rauSkipAheadStream(s.dead, 1), -1006, "rauSkipAheadStream", 1),
      ORBA_CASE(rauSkipAheadStream(s.shift, 1), -1003, "rauSkipAheadStream", 1),
      ORBA_CASE(rauskipaheadstream(&s.null, &steps), -5, "rauSkipAheadStream", 1),

      ORBA_CASE(rauGetStreamStateBrng(nullptr), -5, "rauGetStreamStateBrng", 1),
      ORBA_CASE(rauGetStreamStateBrng(s.dead), -1006, "rauGetStreamStateBrng", 1),
      ORBA_CASE(raugetstreamstatebrng(&s.null), -5, "rauGetStreamStateBrng", 1),
      ORBA_CASE(rauGetStreamSize(nullptr), -5, "rauGetStreamSize", 1),
      ORBA_CASE(rauGetStreamSize(s.dead), -1006, "rauGetStreamSize", 1),
      ORBA_CASE(raugetstreamsize(&s.null), -5, "rauGetStreamSize", 1),

      ORBA_CASE(rauGetBrngProperties(-1, &s.properties), -1000, "rauRegisterBrng", 1),
      ORBA_CASE(rauGetBrngProperties(279, &s.properties), -1000, "rauRegisterBrng", 1),
      ORBA_CASE(rauGetBrngProperties(brng, nullptr), -5, "rauRegisterBrng", 1),
      ORBA_CASE(raugetbrngproperties(&bad, &s.properties), -1000, "rauRegisterBrng", 1),
  });
}

// A record with faults from some point on: the first one in the order of the checks counts.
TEST(Refusals, OfRegistration) {
  const auto registered = [](auto spoil) {
    return [spoil](Scene& s) {
      s.properties = idle_properties();
      spoil(s.properties);
      return rauRegisterBrng(&s.properties);
    };
  };
  const std::vector<Report> reported = {{"rauRegisterBrng", 1}};
  const auto no_init = [](BrngProperties& p) { p.InitStream = nullptr; };
  const auto no_bits = [no_init](BrngProperties& p) { no_init(p), p.NBits = 0; };
  const auto no_seeds = [no_bits](BrngProperties& p) { no_bits(p), p.NSeeds = 0; };
  const auto no_word = [no_seeds](BrngProperties& p) { no_seeds(p), p.WordSize = 3; };
  const auto no_size = [no_word](BrngProperties& p) { no_word(p), p.StreamStateSize = -1; };
  std::vector<Case> cases = {
      {__LINE__, registered(no_size), -1008, reported},
      {__LINE__, registered(no_word), -1009, reported},
      {__LINE__, registered(no_seeds), -1010, reported},
      {__LINE__, registered(no_bits), -1011, reported},
      {__LINE__, registered(no_init), -5, reported},
      {__LINE__, registered([](BrngProperties& p) { p.sBRng = nullptr; }), -5, reported},
      {__LINE__, registered([](BrngProperties& p) { p.dBRng = nullptr; }), -5, reported},
      {__LINE__, registered([](BrngProperties& p) { p.iBRng = nullptr; }), -5, reported},
      {__LINE__, [](Scene&) { return rauRegisterBrng(nullptr); }, -5, reported},
  };
  for (const int32_t word : {INT32_MIN, -4, 0, 1, 2, 5, 12, 32, INT32_MAX}) {
    cases.push_back(
        {word, registered([word](BrngProperties& p) { p.WordSize = word; }), -1009, reported});
  }
  for (const int32_t low : {INT32_MIN, -1, 0}) {
    cases.push_back(
        {low, registered([low](BrngProperties& p) { p.NSeeds = low; }), -1010, reported});
    cases.push_back(
        {low, registered([low](BrngProperties& p) { p.NBits = low; }), -1011, reported});
  }
  expect_refusals(cases);
}

// The frame that all variate generators share, by the six uniform ones: a call with all faults from
// one check on shows that check.
TEST(Refusals, OfUniformVariates) {
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
#define ORBA_FRAME_CASES(name, r, ...)                                           \
  ORBA_CASE(name(-1, nullptr, -1, nullptr, ##__VA_ARGS__), -3, #name, 1),        \
      ORBA_CASE(name(INT32_MIN, s.live, 1, r, ##__VA_ARGS__), -3, #name, 1),     \
      ORBA_CASE(name(7, nullptr, -1, nullptr, ##__VA_ARGS__), -5, #name, 2),     \
      ORBA_CASE(name(7, s.dead, -1, nullptr, ##__VA_ARGS__), -1006, #name, 2),   \
      ORBA_CASE(name(0, nullptr, 0, nullptr, ##__VA_ARGS__), -5, #name, 2),      \
      ORBA_CASE(name(7, s.live, -1, nullptr, ##__VA_ARGS__), -3, #name, 3),      \
      ORBA_CASE(name(0, s.live, INT32_MIN, r, ##__VA_ARGS__), -3, #name, 3),     \
      ORBA_UNREPORTED(name(7, s.live, 0, nullptr, ##__VA_ARGS__), 0),            \
      ORBA_CASE(name(7, s.live, 2, nullptr, ##__VA_ARGS__), -3, #name, 4),       \
      ORBA_CASE(name(7, s.live, 2, r, ##__VA_ARGS__), -3, #name, 1),             \
      ORBA_CASE(name(1, s.live, 2, r, ##__VA_ARGS__), -3, #name, 1),             \
      ORBA_CASE(name(kAccurate + 1, s.live, 2, r, ##__VA_ARGS__), -3, #name, 1), \
      ORBA_CASE(name(INT32_MAX, s.live, 2, r, ##__VA_ARGS__), -3, #name, 1)
  // The intervals in the frame's cases are faulty too: they are tested last.
  expect_refusals({
      ORBA_FRAME_CASES(vdRngUniform, s.d, 2.0, 1.0),
      ORBA_CASE(vdRngUniform(0, s.live, 2, s.d, 2, 2), -3, "vdRngUniform", 5),
      ORBA_CASE(vdRngUniform(kAccurate, s.live, 2, s.d, 2, 1), -3, "vdRngUniform", 5),
      ORBA_FRAME_CASES(vsRngUniform, s.f, 2.0f, 1.0f),
      ORBA_CASE(vsRngUniform(0, s.live, 2, s.f, 2, 2), -3, "vsRngUniform", 5),
      ORBA_CASE(vsRngUniform(kAccurate, s.live, 2, s.f, 2, 1), -3, "vsRngUniform", 5),
      ORBA_FRAME_CASES(viRngUniform, s.i, 2, 1),
      ORBA_CASE(viRngUniform(kAccurate, s.live, 2, s.i, 1, 2), -3, "viRngUniform", 1),
      ORBA_CASE(viRngUniform(0, s.live, 2, s.i, 2, 2), -3, "viRngUniform", 5),
      ORBA_CASE(viRngUniform(0, s.live, 2, s.i, INT32_MAX, INT32_MIN), -3, "viRngUniform", 5),
      ORBA_FRAME_CASES(viRngUniformBits, s.u),
      ORBA_CASE(viRngUniformBits(kAccurate, s.live, 2, s.u), -3, "viRngUniformBits", 1),
      ORBA_FRAME_CASES(viRngUniformBits32, s.u),
      ORBA_CASE(viRngUniformBits32(kAccurate, s.live, 2, s.u), -3, "viRngUniformBits32", 1),
      ORBA_FRAME_CASES(viRngUniformBits64, s.w),
      ORBA_CASE(viRngUniformBits64(kAccurate, s.live, 2, s.w), -3, "viRngUniformBits64", 1),
      // A kernel's own refusal is not reported.
      ORBA_UNREPORTED(viRngUniformBits32(0, s.shift, 2, s.u), -1014),
      ORBA_UNREPORTED(viRngUniformBits64(0, s.shift, 2, s.w), -1014),
  });
  Scene scene;
  take_reports();
  EXPECT_EQ(vdRngUniform(0, scene.live, 2, scene.d, kNan, 1), 0);
  EXPECT_EQ(vdRngUniform(0, scene.live, 2, scene.d, 0, kNan), 0);
  EXPECT_EQ(vsRngUniform(0, scene.live, 2, scene.f, 0, static_cast<float>(kNan)), 0);
  EXPECT_TRUE(take_reports().empty());
  EXPECT_TRUE(std::isnan(scene.d[0]) && std::isnan(scene.f[1]));
}

// By address, the frame is the same and so is the name that is shown.
TEST(Refusals, OfUniformVariatesByAddress) {
  static const int32_t method = 0, wrong = 5, two = 2, minus = -2, a = 0, b = -1;
  static const double da = 1, db = 1;
  static const float fa = 1, fb = 1;
  expect_refusals({
      ORBA_CASE(vdrnguniform(&method, s.live.address(), &two, s.d, &da, &db), -3, "vdRngUniform",
                5),
      ORBA_CASE(vdrnguniform(&method, &s.null, &two, s.d, &da, &db), -5, "vdRngUniform", 2),
      ORBA_CASE(vdrnguniform(&method, nullptr, &two, s.d, &da, &db), -5, "vdRngUniform", 2),
      ORBA_CASE(vsrnguniform(&method, s.live.address(), &two, s.f, &fa, &fb), -3, "vsRngUniform",
                5),
      ORBA_CASE(virnguniform(&method, s.live.address(), &two, s.i, &a, &b), -3, "viRngUniform", 5),
      ORBA_CASE(virnguniformbits(&wrong, s.live.address(), &two, s.u), -3, "viRngUniformBits", 1),
      ORBA_CASE(virnguniformbits32(&method, &s.dead, &two, s.u), -1006, "viRngUniformBits32", 2),
      ORBA_CASE(virnguniformbits64(&method, s.live.address(), &minus, s.w), -3,
                "viRngUniformBits64", 3),
  });
}

// ---- Traces ----

class TraceScope {
 public:
  TraceScope() { services::verbose_level_word.store(1); }
  ~TraceScope() { services::verbose_level_word.store(0); }
};

TEST(Trace, TextOfEveryEntry) {
  Scene scene;
  Scene& s = scene;
  const auto p = [](const void* address) {
    char text[32];
    std::snprintf(text, sizeof text, "%p", address);
    return std::string(text);
  };
  const std::string live = p(s.live), r = "2," + p(s.d);
  StreamState* made = nullptr;
  static const uint32_t seed[] = {1, 2};
  const int32_t next = (rauGetNumRegBrngs() + 1) << 20;
  const struct {
    std::function<int32_t()> call;
    int32_t status;
    std::string text;
  } cases[] = {
      {[&] { return rauNewStream(&made, RAU_BRNG_R250, 0xffffffff); }, 0,
       "rauNewStream(" + p(&made) + ",2097152,-1)"},
      {[&] { return rauDeleteStream(&made); }, 0, "rauDeleteStream(" + p(&made) + ")"},
      {[&] { return rauNewStreamEx(&made, RAU_BRNG_WH + 5, 2, seed); }, 0,
       "rauNewStreamEx(" + p(&made) + ",5242885,2," + p(seed) + ")"},
      {[&] { return raudeletestream(&made); }, 0, "rauDeleteStream(" + p(&made) + ")"},
      {[&] { return rauNewStream(&made, 281, 5); }, -1000, "rauNewStream(" + p(&made) + ",281,5)"},
      {[&] { return rauCopyStream(&made, s.live); }, 0,
       "rauCopyStream(" + p(&made) + "," + live + ")"},
      {[&] { return rauCopyStreamState(made, s.live); }, 0, "rauCopyStreamState("},
      {[&] { return rauDeleteStream(&made); }, 0, "rauDeleteStream(" + p(&made) + ")"},
      {[&] { return rauLeapfrogStream(s.live, 1, 3); }, 0, "rauLeapfrogStream(" + live + ",1,3)"},
      {[&] { return rauSkipAheadStream(s.live, -5); }, 0, "rauSkipAheadStream(" + live + ",-5)"},
      {[&] { return rauGetStreamStateBrng(s.live); }, RAU_BRNG_MCG59,
       "rauGetStreamStateBrng(" + live + ")"},
      {[&] { return rauGetStreamSize(s.live); }, 40, "GetStreamSize(" + live + ")"},
      {[&] { return rauGetBrngProperties(5, &s.properties); }, 0,
       "rauGetBrngProperties(5," + p(&s.properties) + ")"},
      {[&] { return rauGetNumRegBrngs(); }, (next >> 20) - 1, "rauGetNumRegBrngs "},
      {[&] { return rauRegisterBrng(&s.properties); }, next, "rauRegisterBrng "},
      {[&] { return vdRngUniform(kAccurate, s.live, 2, s.d, -1.5, 2); }, 0,
       "vdRngUniform(1073741824," + live + "," + r + ",-1.500000,2.000000)"},
      {[&] { return vsRngUniform(0, s.live, 2, s.f, -1.5, 2); }, 0,
       "vsRngUniform(0," + live + ",2," + p(s.f) + ",-1.500000,2.000000)"},
      {[&] { return viRngUniform(0, s.live, 2, s.i, -7, 7); }, 0,
       "viRngUniform(0," + live + ",2," + p(s.i) + ",-7,7)"},
      {[&] { return viRngUniformBits(0, s.live, 2, s.u); }, 0,
       "viRngUniformBits(0," + live + ",2," + p(s.u) + ")"},
      {[&] { return viRngUniformBits32(0, s.live, 2, s.u); }, 0,
       "viRngUniformBits32(0," + live + ",2," + p(s.u) + ")"},
      {[&] { return viRngUniformBits64(0, s.live, 2, s.w); }, 0,
       "viRngUniformBits64(0," + live + ",2," + p(s.w) + ")"},
  };
  for (const auto& c : cases) {
    int32_t status = 0;
    const std::string text = stdout_of([&] {
      const TraceScope on;
      status = c.call();
    });
    EXPECT_EQ(status, c.status) << c.text;
    EXPECT_NE(text.find("ORBA_VERBOSE " + c.text), std::string::npos) << text << c.text;
  }
  take_reports();
}

TEST(Trace, OfRefusedCalls) {
  Scene s;
  take_reports();
  BrngProperties bad = idle_properties();
  bad.NBits = 0;
  // Faults in arguments are found before the trace; a refused registration is traced and then not
  // reported.
  const std::string text = stdout_of([&] {
    const TraceScope on;
    EXPECT_EQ(rauSkipAheadStream(nullptr, 1), -5);
    EXPECT_EQ(vdRngUniform(0, s.live, 2, s.d, 2, 1), -3);
    EXPECT_EQ(rauNewStream(&s.out, -1, 1), -1000);
    EXPECT_EQ(rauRegisterBrng(&bad), -1011);
  });
  EXPECT_NE(text.find("ORBA_VERBOSE rauRegisterBrng "), std::string::npos);
  for (const char* name : {"SkipAhead", "Uniform", "NewStream"}) {
    EXPECT_EQ(text.find(name), std::string::npos) << name;
  }
  EXPECT_EQ(
      take_reports(),
      (std::vector<Report>{{"rauSkipAheadStream", 1}, {"vdRngUniform", 5}, {"rauNewStream", 2}}));
}

}  // namespace
}  // namespace orba::test
