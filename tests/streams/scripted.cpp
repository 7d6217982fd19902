#include "tests/streams/scripted.h"

#include <cstring>

namespace orba::test {
namespace {

Script current;

template <class T, class R>
int32_t draw(StreamState* stream, const std::vector<T>& source, int32_t n, R* r) {
  current.requests.push_back(n);
  if (current.calls_until_failure-- <= 0) return current.failure;
  uint64_t position;
  char* state = reinterpret_cast<char*>(stream) + 16;
  std::memcpy(&position, state, sizeof position);
  for (int32_t i = 0; i < n; ++i) r[i] = static_cast<R>(source[position++ % source.size()]);
  std::memcpy(state, &position, sizeof position);
  return RAU_STATUS_OK;
}

int32_t init(int32_t operation, StreamState*, int32_t, const void*) {
  return operation == 0 ? current.seeding : current.moving;
}
int32_t singles(StreamState* stream, int32_t n, float* r, float, float) {
  return draw(stream, current.reals, n, r);
}
int32_t doubles(StreamState* stream, int32_t n, double* r, double, double) {
  return draw(stream, current.reals, n, r);
}
int32_t integers(StreamState* stream, int32_t n, void* r) {
  return draw(stream, current.words, n, static_cast<uint32_t*>(r));
}

}  // namespace

Script& script() { return current; }

int32_t scripted_brng() {
  static const int32_t brng = [] {
    const BrngProperties properties = {24, 2, 1, 4, 32, init, singles, doubles, integers};
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
          [](int32_t, StreamState*, int32_t, const void*) { return 0; },
          [](StreamState*, int32_t, float*, float, float) { return 0; },
          [](StreamState*, int32_t, double*, double, double) { return 0; },
          [](StreamState*, int32_t, void*) { return 0; }};
}

}  // namespace orba::test
