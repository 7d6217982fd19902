// Every exported entry in both its forms: what it does, what it refuses and in which order, what it
// reports, what a trace shows of it.

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>

#include "services/verbose.h"
#include "tests/streams/reports.h"
#include "tests/streams/scripted.h"
#include "tests/streams/streams.h"
#include "tests/support/observe.h"

namespace orba::test {
namespace {

constexpr int32_t kAccurate = RAU_METHOD_ACCURATE;

// The arguments of any call, good ones at first, and what they point to.
struct Scene {
  Stream live{RAU_BRNG_MCG59, {3}}, other{RAU_BRNG_MCG59, {4, 5}}, shift{RAU_BRNG_R250, {3}};
  Stream doomed{RAU_BRNG_MCG59, {6}};
  alignas(16) unsigned char dead[64] = {0, 0, 0, 0, 2};  // no stream
  Stream made{nullptr};
  alignas(8) unsigned char results[64] = {};
  const uint32_t words[2] = {1, 2};
  BrngProperties record = idle_properties();

  StreamState **out = made.address(), **victim = doomed.address();
  StreamState *stream = live, *source = other;
  bool has_address = true;  // of a handle
  int32_t brng = RAU_BRNG_MCG59, count = 2, k = 1, nstreams = 3, method = 0, n = 2;
  uint32_t seed = 0xffffffff;
  const uint32_t* params = words;
  int64_t nskip = -5;
  BrngProperties* properties = &record;
  void* r = results;
  double a = -1.5, b = 2;
  float fa = -1.5f, fb = 2;
  int32_t ia = -7, ib = 7;

  StreamState* dead_stream() { return reinterpret_cast<StreamState*>(dead); }
  StreamState* value(StreamState* const& handle) const { return has_address ? handle : nullptr; }
  StreamState* const* address(StreamState* const& handle) const {
    return has_address ? &handle : nullptr;
  }
  template <class T>
  T* to() const {
    return static_cast<T*>(r);
  }
  // All that a call could change, but for addresses.
  std::string image() const {
    std::string all(reinterpret_cast<const char*>(results), sizeof results);
    all.append(reinterpret_cast<const char*>(dead), sizeof dead);
    all += std::to_string(record.StreamStateSize);
    for (const Stream* s : {&live, &other, &shift, &doomed, &made}) {
      all += *s == nullptr ? "none" : s->bytes();
    }
    return all;
  }
};

struct Fault {
  std::function<void(Scene&)> make;
  int32_t status, position;  // reported at this position; at none if 0
};

struct Entry {
  std::string name, reported;  // as traced, as reported
  std::function<int32_t(Scene&)> by_value, by_address;
  std::vector<Fault> faults;                        // in the order in which they count
  std::function<std::string(const Scene&)> traced;  // arguments
};

std::string hex(const void* address) {
  char text[32];
  std::snprintf(text, sizeof text, "%p", address);
  return text;
}

#define SET(field, ...) [](Scene& s) { s.field = __VA_ARGS__; }
#define CALL(...) [](Scene& s) { return __VA_ARGS__; }
#define TEXT(...) [](const Scene& s) -> std::string { return (void)s, __VA_ARGS__; }

std::vector<Fault> bad_stream(int32_t position) {
  return {{SET(has_address, false), -5, position},
          {SET(stream, nullptr), -5, position},
          {SET(stream, s.dead_stream()), -1006, position}};
}
std::vector<Fault> operator+(std::vector<Fault> first, const std::vector<Fault>& then) {
  append(first, then);
  return first;
}

// Faults that every variate generator finds before it looks at its parameters; of the standard
// methods it takes those that `refused` doesn't name.
std::vector<Fault> bad_variate(const std::vector<int32_t>& refused) {
  std::vector<Fault> faults = {{SET(method, -1), -3, 1}, {SET(method, INT32_MIN), -3, 1}};
  append(faults, bad_stream(2));
  append(faults, {{SET(n, -1), -3, 3},
                  {SET(n, INT32_MIN), -3, 3},
                  {SET(n, 0), 0, 0},
                  {SET(r, nullptr), -3, 4}});
  for (const int32_t method : refused) {
    faults.push_back({[method](Scene& s) { s.method = method; }, -3, 1});
  }
  return faults;
}

// One row per entry.
std::vector<Entry> entries() {
  const std::vector<Fault> no_stream_out = {{SET(out, nullptr), -5, 1}};
  const std::vector<Fault> bad_brng = {
      {SET(brng, -1), -1000, 2},       {SET(brng, INT32_MIN), -1000, 2},
      {SET(brng, 281), -1000, 2},      {SET(brng, 0x1100000 + 0xf00000), -1000, 2},
      {SET(brng, 0xA00000), -1000, 2}, {SET(brng, RAU_BRNG_WH + 273), -1000, 2}};
  const std::vector<int32_t> unknown = {1, 7, kAccurate + 1, INT32_MAX},
                             not_standard = {1, 7, kAccurate, INT32_MAX};
  const auto text_of_draw = [](const std::string& parameters) {
    return [parameters](const Scene& s) {
      return "0," + hex(s.stream) + ",2," + hex(s.r) + parameters;
    };
  };
  return {
      {"rauNewStream", "rauNewStream", CALL(rauNewStream(s.out, s.brng, s.seed)),
       CALL(raunewstream(s.out, &s.brng, &s.seed)), bad_brng + no_stream_out,
       TEXT(hex(s.out) + ",4194304,-1")},
      {"rauNewStreamEx", "rauNewStream", CALL(rauNewStreamEx(s.out, s.brng, s.count, s.params)),
       CALL(raunewstreamex(s.out, &s.brng, &s.count, s.params)),
       bad_brng + no_stream_out + std::vector<Fault>{{SET(params, nullptr), -3, 4}},
       TEXT(hex(s.out) + ",4194304,2," + hex(s.params))},
      {"rauDeleteStream",
       "rauDeleteStream",
       CALL(rauDeleteStream(s.victim)),
       CALL(raudeletestream(s.victim)),
       {{SET(victim, nullptr), -5, 1},
        {[](Scene& s) { s.stream = nullptr, s.victim = &s.stream; }, -5, 1},
        {[](Scene& s) { s.stream = s.dead_stream(), s.victim = &s.stream; }, -1006, 1}},
       TEXT(hex(s.victim))},
      {"rauCopyStream", "rauCopyStream", CALL(rauCopyStream(s.out, s.value(s.stream))),
       CALL(raucopystream(s.out, s.address(s.stream))), bad_stream(2) + no_stream_out,
       TEXT(hex(s.out) + "," + hex(s.stream))},
      {"rauCopyStreamState", "rauCopyStreamState",
       CALL(rauCopyStreamState(s.value(s.stream), s.value(s.source))),
       CALL(raucopystreamstate(s.address(s.stream), s.address(s.source))),
       bad_stream(1) + std::vector<Fault>{{SET(source, nullptr), -5, 2},
                                          {SET(source, s.dead_stream()), -1006, 2}},
       TEXT(hex(s.stream) + "," + hex(s.source))},
      {"rauLeapfrogStream", "rauLeapfrogStream",
       CALL(rauLeapfrogStream(s.value(s.stream), s.k, s.nstreams)),
       CALL(rauleapfrogstream(s.address(s.stream), &s.k, &s.nstreams)),
       bad_stream(1) + std::vector<Fault>{{SET(nstreams, -1), -1013, 1},
                                          {SET(nstreams, INT32_MIN), -1013, 1},
                                          {SET(stream, s.shift), -1002, 1}},
       TEXT(hex(s.stream) + ",1,3")},
      {"rauSkipAheadStream", "rauSkipAheadStream",
       CALL(rauSkipAheadStream(s.value(s.stream), s.nskip)),
       CALL(rauskipaheadstream(s.address(s.stream), &s.nskip)),
       bad_stream(1) + std::vector<Fault>{{SET(stream, s.shift), -1003, 1}},
       TEXT(hex(s.stream) + ",-5")},
      {"rauGetStreamStateBrng", "rauGetStreamStateBrng",
       CALL(rauGetStreamStateBrng(s.value(s.stream))),
       CALL(raugetstreamstatebrng(s.address(s.stream))), bad_stream(1), TEXT(hex(s.stream))},
      {"GetStreamSize", "rauGetStreamSize", CALL(rauGetStreamSize(s.value(s.stream))),
       CALL(raugetstreamsize(s.address(s.stream))), bad_stream(1), TEXT(hex(s.stream))},
      {"rauRegisterBrng",
       "rauRegisterBrng",
       CALL(rauRegisterBrng(s.properties) > 0 ? 0 : -1),
       CALL(rauregisterbrng(s.properties) > 0 ? 0 : -1),
       {},
       nullptr},
      {"rauGetBrngProperties",
       "rauRegisterBrng",
       CALL(rauGetBrngProperties(s.brng, s.properties)),
       CALL(raugetbrngproperties(&s.brng, s.properties)),
       {{SET(brng, -1), -1000, 1},
        {SET(brng, 279), -1000, 1},
        {SET(brng, 0x600000), -1000, 1},
        {SET(properties, nullptr), -5, 1}},
       TEXT("4194304," + hex(s.properties))},
      {"rauGetNumRegBrngs",
       "",
       CALL((void)s, rauGetNumRegBrngs() < 17),
       CALL((void)s, raugetnumregbrngs() < 17),
       {},
       nullptr},
      {"vdRngUniform", "vdRngUniform",
       CALL(vdRngUniform(s.method, s.value(s.stream), s.n, s.to<double>(), s.a, s.b)),
       CALL(vdrnguniform(&s.method, s.address(s.stream), &s.n, s.to<double>(), &s.a, &s.b)),
       bad_variate(unknown) + std::vector<Fault>{{SET(b, s.a), -3, 5}, {SET(b, -9), -3, 5}},
       text_of_draw(",-1.500000,2.000000")},
      {"vsRngUniform", "vsRngUniform",
       CALL(vsRngUniform(s.method, s.value(s.stream), s.n, s.to<float>(), s.fa, s.fb)),
       CALL(vsrnguniform(&s.method, s.address(s.stream), &s.n, s.to<float>(), &s.fa, &s.fb)),
       bad_variate(unknown) + std::vector<Fault>{{SET(fb, s.fa), -3, 5}, {SET(fb, -9), -3, 5}},
       text_of_draw(",-1.500000,2.000000")},
      {"viRngUniform", "viRngUniform",
       CALL(viRngUniform(s.method, s.value(s.stream), s.n, s.to<int32_t>(), s.ia, s.ib)),
       CALL(virnguniform(&s.method, s.address(s.stream), &s.n, s.to<int32_t>(), &s.ia, &s.ib)),
       bad_variate(not_standard) +
           std::vector<Fault>{{SET(ib, s.ia), -3, 5}, {SET(ib, INT32_MIN), -3, 5}},
       text_of_draw(",-7,7")},
      {"viRngUniformBits", "viRngUniformBits",
       CALL(viRngUniformBits(s.method, s.value(s.stream), s.n, s.to<uint32_t>())),
       CALL(virnguniformbits(&s.method, s.address(s.stream), &s.n, s.to<uint32_t>())),
       bad_variate(not_standard), text_of_draw("")},
      // A kernel's own refusal is not reported.
      {"viRngUniformBits32", "viRngUniformBits32",
       CALL(viRngUniformBits32(s.method, s.value(s.stream), s.n, s.to<uint32_t>())),
       CALL(virnguniformbits32(&s.method, s.address(s.stream), &s.n, s.to<uint32_t>())),
       bad_variate(not_standard) + std::vector<Fault>{{SET(stream, s.shift), -1014, 0}},
       text_of_draw("")},
      {"viRngUniformBits64", "viRngUniformBits64",
       CALL(viRngUniformBits64(s.method, s.value(s.stream), s.n, s.to<uint64_t>())),
       CALL(virnguniformbits64(&s.method, s.address(s.stream), &s.n, s.to<uint64_t>())),
       bad_variate(not_standard) + std::vector<Fault>{{SET(stream, s.shift), -1014, 0}},
       text_of_draw("")},
  };
}

// Both forms of an entry by arguments with one fault, and with two: the first in its order counts,
// and nothing changes.
TEST(Entries, TheFirstFaultCounts) {
  for (const Entry& entry : entries()) {
    for (size_t first = 0; first < entry.faults.size(); ++first) {
      for (size_t second = first; second < entry.faults.size(); ++second) {
        for (const auto& call : {entry.by_value, entry.by_address}) {
          Scene scene;
          entry.faults[second].make(scene);
          entry.faults[first].make(scene);
          const std::string before = scene.image();
          take_reports();
          const auto& [make, status, position] = entry.faults[first];
          std::vector<Report> expected;
          if (position != 0) expected.push_back({entry.reported, position});
          EXPECT_EQ(call(scene), status) << entry.name << " faults " << first << ", " << second;
          EXPECT_EQ(take_reports(), expected)
              << entry.name << " faults " << first << ", " << second;
          EXPECT_TRUE(scene.image() == before)
              << entry.name << " faults " << first << ", " << second;
        }
      }
    }
  }
}

TEST(Entries, BothFormsDoTheSame) {
  for (const Entry& entry : entries()) {
    SCOPED_TRACE(entry.name);
    Scene one, other;
    const std::string before = one.image();
    take_reports();
    const int32_t status = entry.by_value(one);
    EXPECT_GE(status, 0);
    EXPECT_EQ(entry.by_address(other), status);
    EXPECT_TRUE(take_reports().empty());
    EXPECT_TRUE(other.image() == one.image());
    const bool asks = entry.name.find("GetS") != std::string::npos || !entry.traced;
    EXPECT_EQ(one.image() == before, asks);
  }
}

// A record with two faults: the first one in the order of the checks counts.
TEST(Entries, RegistrationRefuses) {
  using Spoil = std::function<void(BrngProperties&)>;
  std::vector<std::pair<int32_t, Spoil>> faults;
  for (const int32_t bad : {INT32_MIN, -1}) {
    faults.push_back({-1008, [=](BrngProperties& p) { p.StreamStateSize = bad; }});
  }
  for (const int32_t bad : {INT32_MIN, -4, 0, 1, 2, 3, 5, 12, 32, INT32_MAX}) {
    faults.push_back({-1009, [=](BrngProperties& p) { p.WordSize = bad; }});
  }
  for (const int32_t bad : {INT32_MIN, -1, 0}) {
    faults.push_back({-1010, [=](BrngProperties& p) { p.NSeeds = bad; }});
  }
  for (const int32_t bad : {INT32_MIN, -1, 0}) {
    faults.push_back({-1011, [=](BrngProperties& p) { p.NBits = bad; }});
  }
  faults.push_back({-5, [](BrngProperties& p) { p.InitStream = nullptr; }});
  faults.push_back({-5, [](BrngProperties& p) { p.sBRng = nullptr; }});
  faults.push_back({-5, [](BrngProperties& p) { p.dBRng = nullptr; }});
  faults.push_back({-5, [](BrngProperties& p) { p.iBRng = nullptr; }});
  const int32_t known = rauGetNumRegBrngs();
  const std::vector<Report> reported = {{"rauRegisterBrng", 1}};
  take_reports();
  for (size_t first = 0; first < faults.size(); ++first) {
    for (size_t second = first; second < faults.size(); ++second) {
      BrngProperties record = idle_properties();
      faults[second].second(record);
      faults[first].second(record);
      EXPECT_EQ(rauRegisterBrng(&record), faults[first].first) << first << ", " << second;
      EXPECT_EQ(take_reports(), reported);
    }
  }
  EXPECT_EQ(rauRegisterBrng(nullptr), -5);
  EXPECT_EQ(take_reports(), reported);
  EXPECT_EQ(rauGetNumRegBrngs(), known);
}

// ---- Traces ----

class TraceScope {
 public:
  TraceScope() { services::verbose_level_word.store(1); }
  ~TraceScope() { services::verbose_level_word.store(0); }
};

std::string trace_of(const std::function<void()>& call) {
  return stdout_of([&] {
    const TraceScope on;
    call();
  });
}

TEST(Trace, ShowsNameAndArguments) {
  for (const Entry& entry : entries()) {
    for (const auto& call : {entry.by_value, entry.by_address}) {
      Scene scene;
      const std::string arguments = entry.traced ? "(" + entry.traced(scene) + ") " : " ";
      const std::string text = trace_of([&] { EXPECT_GE(call(scene), 0); });
      EXPECT_NE(text.find("ORBA_VERBOSE " + entry.name + arguments), std::string::npos) << text;
    }
  }
}

// Faults in arguments are found before the trace; an unknown generator and a registration are
// refused behind it, the latter without a report then.
TEST(Trace, OfRefusedCalls) {
  Scene s;
  BrngProperties bad = idle_properties();
  bad.NBits = 0;
  take_reports();
  const std::string text = trace_of([&] {
    EXPECT_EQ(rauSkipAheadStream(nullptr, 1), -5);
    EXPECT_EQ(vdRngUniform(0, s.live, 2, s.to<double>(), 2, 1), -3);
    EXPECT_EQ(rauNewStream(s.out, -1, 1), -1000);
    EXPECT_EQ(rauRegisterBrng(&bad), -1011);
    EXPECT_EQ(rauNewStream(s.out, 281, 5), -1000);
  });
  EXPECT_NE(text.find("ORBA_VERBOSE rauRegisterBrng "), std::string::npos) << text;
  EXPECT_NE(text.find("ORBA_VERBOSE rauNewStream(" + hex(s.out) + ",281,5) "), std::string::npos);
  for (const char* name : {"SkipAhead", "Uniform", ",-1,1)"}) {
    EXPECT_EQ(text.find(name), std::string::npos) << name;
  }
  EXPECT_EQ(take_reports(), (std::vector<Report>{{"rauSkipAheadStream", 1},
                                                 {"vdRngUniform", 5},
                                                 {"rauNewStream", 2},
                                                 {"rauNewStream", 2}}));
}

}  // namespace
}  // namespace orba::test
