// Calls the exported entries of streams and uniform variates in any order with any arguments, as
// far as a caller may go: live streams, null handles, blocks that are no streams, but no freed
// ones. Arrays are as long as the call needs to the byte, for the address sanitizer to watch.
//
//   stream_fuzzer SEED COUNT   runs COUNT sessions drawn from SEED
//
// Built with ORBA_LIBFUZZER it is a libFuzzer target. It aborts with a message when a refused call
// changes anything, when a report doesn't fit its status, or when a sequence depends on how it is
// asked for.
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "include/orba_rau.h"
#include "services/memory.h"
#include "services/parameter_reporter.h"
#include "services/verbose.h"
#include "statistics/streams/extensions.h"
#include "statistics/streams/generators/table.h"

namespace {

using namespace orba;

const char* current = "";  // entry under test

void require(bool good, const char* promise) {
  if (good) return;
  fprintf(stderr, "%s: broken promise: %s\n", current, promise);
  abort();
}

// ---- Reports ----

int reports = 0;
void count_report(const char* name, const int32_t* position, int32_t length) {
  ++reports;
  require(length > 0 && length <= 50 && strlen(name) == static_cast<size_t>(length),
          "a report bears a name");
  require(*position >= 1 && *position <= 6, "a report tells an argument");
}

// A status of a call: 0 or above in silence, or negative and reported at most once.
int32_t checked(int32_t status) {
  require(status < 0 ? reports <= 1 : reports == 0, "reports fit the status");
  require(status >= -1200, "statuses are documented ones");
  reports = 0;
  return status;
}
#define CALL(name, ...) (current = #name, checked(name(__VA_ARGS__)))

// ---- Generators of a caller's own ----

constexpr int32_t kRefused = -77;

int32_t init_own(int32_t operation, StreamState* stream, int32_t count, const void* params) {
  if (operation != 0) return kRefused;
  BrngProperties row;
  if (rauGetBrngProperties(rauGetStreamStateBrng(stream), &row) != 0) abort();
  // A state of noise, and none for odd seeds.
  const uint32_t seed = count > 0 ? *static_cast<const uint32_t*>(params) : 0;
  std::minstd_rand noise(seed);
  auto* bytes = reinterpret_cast<unsigned char*>(stream);
  for (int32_t i = 16; i < row.StreamStateSize; ++i) bytes[i] = static_cast<unsigned char>(noise());
  return seed % 2 == 0 ? 0 : kRefused;
}

template <class Real>
int32_t reals_own(StreamState*, int32_t n, Real* r, Real a, Real b) {
  static int calls = 0;
  const Real odd[] = {a,     b,
                      b + b, std::numeric_limits<Real>::quiet_NaN(),
                      -a,    std::numeric_limits<Real>::infinity()};
  for (int32_t i = 0; i < n; ++i) r[i] = odd[i % 6];
  return ++calls % 3 == 0 ? kRefused : 0;
}

template <int word>
int32_t integers_own(StreamState*, int32_t n, void* r) {
  memset(r, 0xff, static_cast<size_t>(n) * word);
  return 0;
}

// Fills the table, so that what a session can do doesn't depend on those before it.
void register_own() {
  const BrngProperties rows[] = {
      {0, 1, 1, 4, 32, init_own, reals_own, reals_own, integers_own<4>},
      {1024, 252, 1, 4, 32, init_own, reals_own, reals_own, integers_own<4>},
      {100, 40, 1, 16, 32, init_own, reals_own, reals_own, integers_own<16>},
      {5000, 3, 1, 8, 32, init_own, reals_own, reals_own, integers_own<8>},
  };
  int32_t last = 0, status;
  for (size_t i = 0; (status = rauRegisterBrng(&rows[i % 4])) > 0; ++i) last = status;
  require(status == RAU_ERROR_MEM_FAILURE && reports == 1, "a full table is refused");
  require(rauGetNumRegBrngs() == 512 && last == 512 << 20, "a table of 512 rows");
  StreamState* stream = nullptr;
  require(rauNewStream(&stream, last, 2) == 0 && rauGetStreamStateBrng(stream) == last,
          "the last row makes streams");
  rauDeleteStream(&stream);
  reports = 0;
}

// ---- Arguments from bytes ----

constexpr int32_t kBuiltIn[] = {
#define ORBA_BRNG(row, ...) (row + 1) << 20,
#include "statistics/streams/generators/brngs.def"
#undef ORBA_BRNG
};

class Input {
 public:
  Input(const uint8_t* data, size_t size) : at_(data), end_(data + size) {}
  bool empty() const { return at_ == end_; }
  uint8_t byte() { return at_ == end_ ? 0 : *at_++; }
  template <class T>
  T raw() {
    T value = {};
    for (size_t i = 0; i < sizeof(T); ++i) {
      const uint8_t next = byte();
      memcpy(reinterpret_cast<char*>(&value) + i, &next, 1);
    }
    return value;
  }

  uint32_t below(uint32_t n) { return byte() % n; }

  // Often a plausible value, else any.
  int32_t integer() {
    constexpr int32_t kTelling[] = {0, 1, 2, -1, -2, INT32_MIN, INT32_MAX, 1000, 0x40000000};
    return below(4) == 0 ? raw<int32_t>() : kTelling[below(9)];
  }
  double real() {
    constexpr double kTelling[] = {0, 1, -1, 0.5, -3.25, 1e308, -1e308, 1e-310, 1e15};
    return below(4) == 0 ? raw<double>() : kTelling[below(9)];
  }
  int32_t brng() {
    switch (below(8)) {
      case 0:
        return raw<int32_t>();
      case 1:
        return byte() + static_cast<int32_t>(below(2)) * 50;  // the old numbering
      case 2:
        return (static_cast<int32_t>(below(30)) << 20) + static_cast<int32_t>(below(3));
      case 3:
        return RAU_BRNG_WH + raw<uint16_t>() % 300;
      case 4:
        return static_cast<int32_t>(17 + below(4)) << 20;  // own
      default:
        return kBuiltIn[below(std::size(kBuiltIn))];
    }
  }
  int32_t method() {
    return below(8) == 0 ? integer() : below(4) == 0 ? RAU_METHOD_ACCURATE : RAU_METHOD_STD;
  }
  int32_t count() {
    switch (below(16)) {
      case 0:
        return -static_cast<int32_t>(below(3));
      case 1:
        return INT32_MIN;
      case 2:
        return 3000;
      default:
        return raw<uint16_t>() % 600;
    }
  }

 private:
  const uint8_t *at_, *end_;
};

// ---- A session ----

class Session {
 public:
  explicit Session(Input& input) : in_(input) {}
  ~Session() {
    for (Slot& slot : slots_) {
      if (slot.stream != nullptr) rauDeleteStream(&slot.stream);
    }
    services::verbose_level_word.store(0);
    reports = 0;
  }

  void step() {
    switch (in_.below(16)) {
      case 0:
      case 1:
      case 2:
        return create();
      case 3:
        return copy();
      case 4:
        return copy_state();
      case 5:
        return erase();
      case 6:
        return reposition();
      case 7:
        return query();
      case 8:
        return register_row();
      case 9:
        return attach();
      case 10:
        return split_request();
      case 11:
        return split_skip();
      case 12:
        services::verbose_level_word.store(in_.below(2) != 0);
        return;
      default:
        return draw();
    }
  }

 private:
  struct Slot {
    StreamState* stream = nullptr;
    bool own_state = true;  // made by its own generator; false once it took another's bytes
  };
  static constexpr uint32_t kSlots = 6;

  static const BrngProperties& row(const StreamState* stream) {
    return *statistics::find_brng(statistics::running_class(), stream->brng);
  }
  static std::string image(const StreamState* stream) {
    if (stream == nullptr) return {};
    const auto size = static_cast<size_t>(row(stream).StreamStateSize);
    return {reinterpret_cast<const char*>(stream), std::max(size, sizeof(StreamState))};
  }
  std::string image() const {
    std::string all(reinterpret_cast<const char*>(dead_block_), sizeof dead_block_);
    for (const Slot& slot : slots_) all += image(slot.stream);
    return all;
  }

  Slot& slot() { return slots_[in_.below(kSlots)]; }
  // A handle to call with: mostly one of the slots, which may be null.
  StreamState* any(const Slot& slot) {
    return in_.below(16) == 0 ? reinterpret_cast<StreamState*>(dead_block_) : slot.stream;
  }
  Slot* built_in() {
    Slot& found = slot();
    const bool good = found.stream != nullptr && found.own_state &&
                      statistics::resolve_brng(found.stream->brng).row < statistics::kBuiltInBrngs;
    return good ? &found : nullptr;
  }

  void put(Slot& slot, StreamState* stream, bool own_state) {
    if (slot.stream != nullptr && CALL(rauDeleteStream, &slot.stream) != 0) abort();
    slot = {stream, own_state};
  }

  void create() {
    Slot& target = slot();
    StreamState* const nothing = reinterpret_cast<StreamState*>(dead_block_);
    StreamState* made = nothing;
    const int32_t brng = in_.brng();
    int32_t status;
    if (in_.below(2) == 0) {
      const uint32_t seed = in_.raw<uint32_t>();
      status = CALL(rauNewStream, &made, brng, seed);
    } else {
      std::vector<uint32_t> seed(in_.below(8) == 0 ? 250 + in_.below(5) : in_.below(8));
      for (uint32_t& word : seed) word = in_.raw<uint32_t>();
      const auto n = static_cast<int32_t>(seed.size());
      // A null array is allowed where nothing is read.
      status = CALL(rauNewStreamEx, &made, brng,
                    in_.below(4) == 0 && n == 0 ? in_.integer() & INT32_MIN : n,
                    n == 0 ? nullptr : seed.data());
    }
    require(status == 0 || made == nothing || status == kRefused, "a refusal leaves the handle");
    if (made == nothing) return;
    require(made->marker == 1 && made->brng == brng && made->extensions == nullptr,
            "a new stream has its head");
    put(target, made, status == 0);
  }

  void copy() {
    Slot &target = slot(), &source = slot();
    StreamState* const from = any(source);
    StreamState* made = nullptr;
    const std::string before = image();
    const int32_t status = CALL(rauCopyStream, &made, from);
    require(image() == before, "a source stays");
    require((made != nullptr) == (status == 0), "a handle comes with success");
    if (made == nullptr) return;
    // All but the list of extensions.
    require(image(made).substr(16) == image(from).substr(16) && made->brng == from->brng,
            "a copy is in the source's state");
    put(target, made, source.own_state);
  }

  void copy_state() {
    Slot &dest = slot(), &source = slot();
    StreamState *const to = any(dest), *const from = any(source);
    const std::string before = image(), source_before = image(source.stream);
    const int32_t status = CALL(rauCopyStreamState, to, from);
    if (status != 0) {
      require(image() == before, "a refusal changes nothing");
      return;
    }
    require(image(source.stream) == source_before, "a source stays");
    if (to == from) return;
    require(&row(to) != &row(from) || rauGetStreamSize(to) == rauGetStreamSize(from),
            "extensions go along");
    dest.own_state = dest.own_state && source.own_state && to->brng == from->brng;
  }

  void erase() {
    Slot& victim = slot();
    StreamState* handle = any(victim);
    const bool live = handle != nullptr && handle == victim.stream;
    const std::string before = image();
    const int32_t status = CALL(rauDeleteStream, &handle);
    require((status == 0) == live, "live streams can be deleted, and no others");
    if (live) {
      require(handle == nullptr, "a deleted handle is null");
      victim = {};
    } else {
      require(image() == before, "a refusal changes nothing");
    }
  }

  void reposition() {
    StreamState* const stream = any(slot());
    const std::string before = image();
    int32_t status;
    if (in_.below(2) == 0) {
      const int32_t k = in_.integer(), nstreams = in_.integer();
      status = CALL(rauLeapfrogStream, stream, k, nstreams);
    } else {
      const int64_t skip = in_.below(2) == 0 ? in_.integer() : in_.raw<int64_t>();
      status = CALL(rauSkipAheadStream, stream, skip);
    }
    require(status == 0 || image() == before, "a refusal changes nothing");
  }

  void query() {
    StreamState* const stream = any(slot());
    const bool live = stream != nullptr && stream->marker == 1;
    const std::string before = image();
    require((CALL(rauGetStreamStateBrng, stream) >= 0) == live, "live streams have an identifier");
    require((CALL(rauGetStreamSize, stream) > 0) == live, "live streams have a size");
    BrngProperties properties;
    memset(static_cast<void*>(&properties), 0, sizeof properties);
    BrngProperties* const target = in_.below(8) == 0 ? nullptr : &properties;
    const int32_t status = CALL(rauGetBrngProperties, in_.brng(), target);
    require(status != 0 || properties.InitStream != nullptr, "a row has its entries");
    require(status == 0 || properties.InitStream == nullptr, "a refusal writes nothing");
    require(CALL(rauGetNumRegBrngs) == statistics::kMaxBrngs, "the table stays full");
    require(image() == before, "a query changes nothing");
  }

  void register_row() {
    BrngProperties row = {in_.integer(), in_.integer(), in_.integer(),
                          in_.integer(), in_.integer(), init_own,
                          reals_own,     reals_own,     integers_own<4>};
    if (in_.below(4) == 0) row.WordSize = 8;
    if (in_.below(8) == 0) row.dBRng = nullptr;
    require(CALL(rauRegisterBrng, in_.below(8) == 0 ? nullptr : &row) < 0, "the table is full");
  }

  void attach() {
    Slot& target = slot();
    if (target.stream == nullptr) return;
    const uint32_t size = 1 + in_.byte(), id = in_.below(14);
    if (in_.below(4) == 0) return statistics::remove_extension(*target.stream, id);
    void* data = services::allocate(size, statistics::kStreamAlignment);
    memset(data, static_cast<int>(id), size);
    const statistics::SharedKey key = statistics::make_shared_key(id);
    if (statistics::add_extension(*target.stream, id, in_.below(2) == 0 ? &key : nullptr, data,
                                  size) != 0) {
      abort();
    }
  }

  // Draws n values by `call(r)` into room for exactly these.
  template <class Element, class Call>
  void draw_as(int32_t n, size_t element_size, Call call) {
    const size_t bytes = n > 0 ? static_cast<size_t>(n) * element_size : 0;
    auto* r = static_cast<Element*>(malloc(bytes + (bytes == 0)));
    if (r == nullptr) abort();
    memset(static_cast<void*>(r), 0x5a, bytes);
    const std::string before = image();
    const int32_t status = call(in_.below(16) == 0 ? nullptr : r);
    // A failing generator may have moved and written; the frame's refusals may not.
    if (status < 0 && status != kRefused) {
      require(image() == before, "a refusal changes no stream");
      bool untouched = true;
      for (size_t i = 0; i < bytes; ++i) {
        untouched = untouched && reinterpret_cast<unsigned char*>(r)[i] == 0x5a;
      }
      require(untouched, "a refusal writes nothing");
    }
    free(r);
  }

  void draw() {
    StreamState* const stream = any(slot());
    const int32_t method = in_.method(), n = in_.count();
    const bool live = stream != nullptr && stream->marker == 1;
    const size_t output = live ? static_cast<size_t>(row(stream).WordSize) : 4;
    switch (in_.below(6)) {
      case 0: {
        const double a = in_.real(), b = in_.real();
        return draw_as<double>(n, sizeof(double), [&](double* r) {
          return CALL(vdRngUniform, method, stream, n, r, a, b);
        });
      }
      case 1: {
        const auto a = static_cast<float>(in_.real()), b = static_cast<float>(in_.real());
        return draw_as<float>(n, sizeof(float), [&](float* r) {
          return CALL(vsRngUniform, method, stream, n, r, a, b);
        });
      }
      case 2: {
        const int32_t a = in_.integer(), b = in_.integer();
        return draw_as<int32_t>(n, sizeof(int32_t), [&](int32_t* r) {
          return CALL(viRngUniform, method, stream, n, r, a, b);
        });
      }
      case 3:
        return draw_as<uint32_t>(
            n, output, [&](uint32_t* r) { return CALL(viRngUniformBits, method, stream, n, r); });
      case 4:
        return draw_as<uint32_t>(n, sizeof(uint32_t), [&](uint32_t* r) {
          return CALL(viRngUniformBits32, method, stream, n, r);
        });
      default:
        return draw_as<uint64_t>(n, sizeof(uint64_t), [&](uint64_t* r) {
          return CALL(viRngUniformBits64, method, stream, n, r);
        });
    }
  }

  static std::string outputs(StreamState* stream, int32_t n) {
    std::string r(static_cast<size_t>(n) * static_cast<size_t>(row(stream).WordSize), '\0');
    require(viRngUniformBits(0, stream, n, reinterpret_cast<uint32_t*>(r.data())) == 0,
            "built-in generators don't fail");
    return r;
  }

  void split_request() {
    Slot* const found = built_in();
    if (found == nullptr) return;
    current = "viRngUniformBits";
    const int32_t first = 1 + in_.byte(), second = 1 + in_.raw<uint16_t>() % 1000;
    StreamState* whole = nullptr;
    if (rauCopyStream(&whole, found->stream) != 0) abort();
    const std::string expected = outputs(whole, first + second);
    std::string got = outputs(found->stream, first);
    got += outputs(found->stream, second);
    require(got == expected, "a split request gives one sequence");
    rauDeleteStream(&whole);
  }

  void split_skip() {
    Slot* const found = built_in();
    if (found == nullptr) return;
    current = "rauSkipAheadStream";
    const uint64_t first = in_.raw<uint64_t>() >> (1 + in_.below(63));
    const uint64_t second = in_.raw<uint64_t>() >> (1 + in_.below(63));
    StreamState* at_once = nullptr;
    if (rauCopyStream(&at_once, found->stream) != 0) abort();
    if (rauSkipAheadStream(at_once, static_cast<int64_t>(first + second)) == 0) {
      rauSkipAheadStream(found->stream, static_cast<int64_t>(first));
      rauSkipAheadStream(found->stream, static_cast<int64_t>(second));
      require(outputs(found->stream, 5) == outputs(at_once, 5), "skips add up");
    }
    reports = 0;
    rauDeleteStream(&at_once);
  }

  Input& in_;
  Slot slots_[kSlots];
  alignas(16) unsigned char dead_block_[64] = {};
};

void run(const uint8_t* data, size_t size) {
  static const bool ready = [] {
    services::install_reporter(count_report);
    setenv("ORBA_VERBOSE_OUTPUT_FILE", "/dev/null", 1);
    register_own();
    return true;
  }();
  (void)ready;
  Input input(data, size);
  Session session(input);
  while (!input.empty()) session.step();
}

}  // namespace

#ifdef ORBA_LIBFUZZER
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  run(data, size);
  return 0;
}
#else
int main(int argc, char** argv) {
  if (argc != 3) {
    fprintf(stderr, "usage: %s SEED COUNT\n", argv[0]);
    return 2;
  }
  std::mt19937_64 random(strtoull(argv[1], nullptr, 0));
  const unsigned long count = strtoul(argv[2], nullptr, 0);
  std::vector<uint8_t> data;
  for (unsigned long i = 0; i < count; ++i) {
    data.resize(random() % 2000);
    for (uint8_t& byte : data) byte = static_cast<uint8_t>(random());
    run(data.data(), data.size());
  }
  printf("%lu sessions\n", count);
  return 0;
}
#endif
