// Every exported entry in both its forms: what it does, what it refuses and in which order, what it
// reports, what a trace shows of it.

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>

#include "services/verbose.h"
#include "tests/streams/scripted.h"
#include "tests/streams/streams.h"
#include "tests/support/observe.h"

namespace orba::test {
namespace {

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
  StreamState *stream = live, *source = other, *null = nullptr;
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
  std::string name, reported;
  std::function<int32_t(Scene&)> by_value, by_address;
  std::vector<Fault> faults;  // in the order in which they count
  std::function<std::string(const Scene&)> text;
};

std::string hex(const void* address) {
  char text[32];
  std::snprintf(text, sizeof text, "%p", address);
  return text;
}

using Faults = std::vector<Fault>;
Faults operator+(Faults first, const Faults& then) {
  append(first, then);
  return first;
}

#define BAD(field, value, status, position)             \
  Fault {                                               \
    [](Scene& s) { s.field = value; }, status, position \
  }

Faults bad_stream(int32_t position) {
  return {BAD(has_address, false, -5, position), BAD(stream, nullptr, -5, position),
          BAD(stream, s.dead_stream(), -1006, position)};
}
Faults bad_brng(int32_t position) {
  Faults faults;
  for (const int32_t brng : {-1, INT32_MIN, 279, 280, 281, 0xfffff, 0x100001, 0x300001,
                             RAU_BRNG_WH + 273, 0x5fffff, 0x600000, 0xA00000, 0xB00000, 0xC00000,
                             (rauGetNumRegBrngs() + 1) << 20, 512 << 20, INT32_MAX}) {
    faults.push_back({[=](Scene& s) { s.brng = brng; }, -1000, position});
  }
  return faults;
}
Faults bad_record() {
  Faults faults = {BAD(properties, nullptr, -5, 1)};
  const auto field = [&](int32_t status, auto member, auto... values) {
    for (const auto value : {values...}) {
      faults.push_back({[=](Scene& s) { s.record.*member = value; }, status, 1});
    }
  };
  field(-1008, &BrngProperties::StreamStateSize, INT32_MIN, -1);
  field(-1009, &BrngProperties::WordSize, INT32_MIN, -4, 0, 1, 2, 3, 5, 12, 32, INT32_MAX);
  field(-1010, &BrngProperties::NSeeds, INT32_MIN, -1, 0);
  field(-1011, &BrngProperties::NBits, INT32_MIN, -1, 0);
  field(-5, &BrngProperties::InitStream, nullptr);
  field(-5, &BrngProperties::sBRng, nullptr);
  field(-5, &BrngProperties::dBRng, nullptr);
  field(-5, &BrngProperties::iBRng, nullptr);
  return faults;
}
// Faults that every variate generator finds before it looks at its parameters.
Faults bad_variate(int32_t refused_method) {
  return Faults{BAD(method, -1, -3, 1), BAD(method, INT32_MIN, -3, 1)} + bad_stream(2) +
         Faults{BAD(n, -1, -3, 3),
                BAD(n, INT32_MIN, -3, 3),
                BAD(n, 0, 0, 0),
                BAD(r, nullptr, -3, 4),
                BAD(method, 1, -3, 1),
                BAD(method, INT32_MAX, -3, 1),
                {[=](Scene& s) { s.method = refused_method; }, -3, 1}};
}

// One row per entry: names, arguments by value and by address, faults, text of the arguments.
// clang-format off
#define ENTRY(Name, name, reported, values, addresses, faults, text)                    \
  Entry{#Name, reported, [](Scene& s) { return (void)s, Name values; },                 \
        [](Scene& s) { return (void)s, name addresses; }, faults,                       \
        [](const Scene& s) -> std::string { return (void)s, text; }}
#define VARIATE(Name, name, Element, refused, values, addresses, faults, text)           \
  ENTRY(Name, name, #Name,                                                              \
        (s.method, s.value(s.stream), s.n, s.to<Element>() LIST values),                \
        (&s.method, s.address(s.stream), &s.n, s.to<Element>() LIST addresses),         \
        bad_variate(refused) + faults, "0," + hex(s.stream) + ",2," + hex(s.r) + text)
#define LIST(...) __VA_OPT__(,) __VA_ARGS__

std::vector<Entry> entries() {
  const Faults none, bad_out = {BAD(out, nullptr, -5, 1)}, bad_params = {BAD(params, nullptr, -3, 4)};
  const Faults bad_properties = {BAD(properties, nullptr, -5, 1)};
  const Faults bad_victim = {BAD(victim, nullptr, -5, 1), BAD(victim, (s.null = nullptr, &s.null), -5, 1),
                             BAD(victim, (s.null = s.dead_stream(), &s.null), -1006, 1)};
  const Faults bad_source = {BAD(source, nullptr, -5, 2), BAD(source, s.dead_stream(), -1006, 2)};
  const Faults bad_leap = {BAD(nstreams, -1, -1013, 1), BAD(nstreams, INT32_MIN, -1013, 1), BAD(stream, s.shift, -1002, 1)};
  const Faults bad_skip = {BAD(stream, s.shift, -1003, 1)}, no_bits = {BAD(stream, s.shift, -1014, 0)};
  const Faults bad_d = {BAD(b, s.a, -3, 5), BAD(b, -9, -3, 5)}, bad_f = {BAD(fb, s.fa, -3, 5), BAD(fb, -9, -3, 5)};
  const Faults bad_i = {BAD(ib, s.ia, -3, 5), BAD(ib, INT32_MIN, -3, 5)};
  constexpr int32_t accurate = RAU_METHOD_ACCURATE;
  return {
      ENTRY(rauNewStream, raunewstream, "rauNewStream", (s.out, s.brng, s.seed), (s.out, &s.brng, &s.seed),
            bad_brng(2) + bad_out, hex(s.out) + ",4194304,-1"),
      ENTRY(rauNewStreamEx, raunewstreamex, "rauNewStream", (s.out, s.brng, s.count, s.params), (s.out, &s.brng, &s.count, s.params),
            bad_brng(2) + bad_out + bad_params, hex(s.out) + ",4194304,2," + hex(s.params)),
      ENTRY(rauDeleteStream, raudeletestream, "rauDeleteStream", (s.victim), (s.victim), bad_victim, hex(s.victim)),
      ENTRY(rauCopyStream, raucopystream, "rauCopyStream", (s.out, s.value(s.stream)), (s.out, s.address(s.stream)),
            bad_stream(2) + bad_out, hex(s.out) + "," + hex(s.stream)),
      ENTRY(rauCopyStreamState, raucopystreamstate, "rauCopyStreamState", (s.value(s.stream), s.value(s.source)),
            (s.address(s.stream), s.address(s.source)), bad_stream(1) + bad_source, hex(s.stream) + "," + hex(s.source)),
      ENTRY(rauLeapfrogStream, rauleapfrogstream, "rauLeapfrogStream", (s.value(s.stream), s.k, s.nstreams),
            (s.address(s.stream), &s.k, &s.nstreams), bad_stream(1) + bad_leap, hex(s.stream) + ",1,3"),
      ENTRY(rauSkipAheadStream, rauskipaheadstream, "rauSkipAheadStream", (s.value(s.stream), s.nskip),
            (s.address(s.stream), &s.nskip), bad_stream(1) + bad_skip, hex(s.stream) + ",-5"),
      ENTRY(rauGetStreamStateBrng, raugetstreamstatebrng, "rauGetStreamStateBrng", (s.value(s.stream)),
            (s.address(s.stream)), bad_stream(1), hex(s.stream)),
      ENTRY(rauGetStreamSize, raugetstreamsize, "rauGetStreamSize", (s.value(s.stream)), (s.address(s.stream)),
            bad_stream(1), hex(s.stream)),
      ENTRY(rauRegisterBrng, rauregisterbrng, "rauRegisterBrng", (s.properties), (s.properties), bad_record(), ""),
      ENTRY(rauGetBrngProperties, raugetbrngproperties, "rauRegisterBrng", (s.brng, s.properties), (&s.brng, s.properties),
            bad_brng(1) + bad_properties, "4194304," + hex(s.properties)),
      ENTRY(rauGetNumRegBrngs, raugetnumregbrngs, "", (), (), none, ""),
      VARIATE(vdRngUniform, vdrnguniform, double, accurate + 1, (s.a, s.b), (&s.a, &s.b), bad_d, ",-1.500000,2.000000"),
      VARIATE(vsRngUniform, vsrnguniform, float, accurate + 1, (s.fa, s.fb), (&s.fa, &s.fb), bad_f, ",-1.500000,2.000000"),
      VARIATE(viRngUniform, virnguniform, int32_t, accurate, (s.ia, s.ib), (&s.ia, &s.ib), bad_i, ",-7,7"),
      VARIATE(viRngUniformBits, virnguniformbits, uint32_t, accurate, (), (), none, ""),
      VARIATE(viRngUniformBits32, virnguniformbits32, uint32_t, accurate, (), (), no_bits, ""),
      VARIATE(viRngUniformBits64, virnguniformbits64, uint64_t, accurate, (), (), no_bits, ""),
  };
}
// clang-format on

std::string trace_of(const std::function<void()>& call) {
  return stdout_of([&] {
    services::verbose_level_word.store(1);
    call();
    services::verbose_level_word.store(0);
  });
}
std::string name_in_trace(const std::string& name) {
  return "ORBA_VERBOSE " + (name == "rauGetStreamSize" ? "GetStreamSize" : name);
}

// Both forms of an entry by arguments with one fault, and with two: the first in its order counts,
// and nothing changes.
TEST(Entries, TheFirstFaultCounts) {
  const int32_t known = rauGetNumRegBrngs();
  for (const Entry& entry : entries()) {
    for (size_t first = 0; first < entry.faults.size(); ++first) {
      for (size_t second = first; second < entry.faults.size(); ++second) {
        SCOPED_TRACE(testing::Message() << entry.name << " faults " << first << ", " << second);
        for (const auto& call : {entry.by_value, entry.by_address}) {
          Scene scene;
          entry.faults[second].make(scene);
          entry.faults[first].make(scene);
          const std::string before = scene.image();
          take_reports();
          const auto& [make, status, position] = entry.faults[first];
          EXPECT_EQ(call(scene), status);
          EXPECT_EQ(take_reports(),
                    std::vector<Report>(position != 0, Report{entry.reported, position}));
          EXPECT_TRUE(scene.image() == before);
        }
      }
    }
  }
  EXPECT_EQ(rauGetNumRegBrngs(), known);
}

// Without faults, the two forms of an entry do and return the same, and the trace has its text.
TEST(Entries, BothFormsDoTheSame) {
  for (const Entry& entry : entries()) {
    SCOPED_TRACE(entry.name);
    const auto traced = [&](const auto& call, Scene& scene) {
      int32_t status = -1;
      const std::string arguments = entry.text(scene);
      const std::string text = trace_of([&] { status = call(scene); });
      EXPECT_NE(text.find(name_in_trace(entry.name) + (arguments.empty() ? "" : "(") + arguments +
                          (arguments.empty() ? " " : ") ")),
                std::string::npos)
          << text;
      EXPECT_GE(status, 0);
      return status;
    };
    Scene one, other, untraced;
    const std::string before = one.image();
    take_reports();
    const int32_t step = entry.name == "rauRegisterBrng" ? 0x100000 : 0;
    const int32_t status = traced(entry.by_value, one);
    EXPECT_EQ(traced(entry.by_address, other), status + step);
    EXPECT_EQ(entry.by_value(untraced), status + 2 * step);
    EXPECT_TRUE(take_reports().empty());
    EXPECT_TRUE(other.image() == one.image() && untraced.image() == one.image());
    const bool asks = entry.name.find("GetS") != std::string::npos || entry.text(one).empty();
    EXPECT_EQ(one.image() == before, asks);
  }
}

// Faults in arguments are found before the trace; an unknown generator and a registration are
// refused behind it, the latter without a report then.
TEST(Entries, TraceOfRefusedCalls) {
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
