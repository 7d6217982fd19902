#include "tests/streams/scripted.h"

#include <gtest/gtest.h>

#include <cstring>
#include <utility>

#include "services/parameter_reporter.h"

namespace orba::test {
namespace {

Script current;

template <class R>
int32_t draw(StreamState* stream, int32_t n, R* r) {
  current.requests.push_back(n);
  if (current.calls_until_failure-- <= 0) return -77;
  uint64_t position;
  char* state = reinterpret_cast<char*>(stream) + 16;
  std::memcpy(&position, state, sizeof position);
  for (int32_t i = 0; i < n; ++i) {
    r[i] = static_cast<R>(current.reals[position++ % current.reals.size()]);
  }
  std::memcpy(state, &position, sizeof position);
  return RAU_STATUS_OK;
}

int32_t succeed(int32_t, StreamState*, int32_t, const void*) { return RAU_STATUS_OK; }
int32_t singles(StreamState* stream, int32_t n, float* r, float, float) {
  return draw(stream, n, r);
}
int32_t doubles(StreamState* stream, int32_t n, double* r, double, double) {
  return draw(stream, n, r);
}
int32_t integers(StreamState* stream, int32_t n, void* r) {
  return draw(stream, n, static_cast<uint32_t*>(r));
}

thread_local std::vector<Report> reports;

// Before any test: the first reporter of a process stays.
class InstallRecorder : public testing::Environment {
  void SetUp() override {
    ASSERT_TRUE(
        services::install_reporter([](const char* name, const int32_t* position, int32_t length) {
          reports.push_back({std::string(name, static_cast<size_t>(length)), *position});
        }));
  }
};
const testing::Environment* const installed =
    testing::AddGlobalTestEnvironment(new InstallRecorder);

}  // namespace

Script& script() { return current; }

int32_t scripted_brng() {
  static const int32_t brng = [] {
    const BrngProperties properties = {24, 2, 1, 4, 32, succeed, singles, doubles, integers};
    return rauRegisterBrng(&properties);
  }();
  return brng;
}

BrngProperties idle_properties() {
  return {16,
          1,
          0,
          4,
          32,
          succeed,
          [](StreamState*, int32_t, float*, float, float) { return 0; },
          [](StreamState*, int32_t, double*, double, double) { return 0; },
          [](StreamState*, int32_t, void*) { return 0; }};
}

std::vector<Report> take_reports() { return std::exchange(reports, {}); }

}  // namespace orba::test
