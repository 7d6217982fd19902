#include "statistics/streams/generators/r250.h"

#include "statistics/streams/generators/kernels/blocks.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

struct R250 {
  using State = statistics::R250State;

  static constexpr uint32_t kLength = statistics::kR250Length, kPartner = statistics::kR250Partner;
  static constexpr double kUnit = 0x1p-32;

  // Brings the oldest word to the front.
  static void rotate(uint32_t (&x)[kLength], uint32_t oldest) {
    uint32_t old[kLength];
    __builtin_memcpy(old, x, sizeof x);
    __builtin_memcpy(x, old + oldest, (kLength - oldest) * sizeof *x);
    __builtin_memcpy(x + kLength - oldest, old, oldest * sizeof *x);
  }

  // The ring is advanced in place, in runs that end where either index wraps: neither distance
  // between the two, 103 ahead or 147 behind, is below the length of a vector. A request that
  // replaces the whole ring leaves the oldest word at its front.
  template <class Sink>
  static int32_t generate(State& state, int32_t n, Sink sink) {
    constexpr int32_t kWords = 2 * kLanes;
    uint32_t p1 = state.p1 % kLength;
    uint32_t p2 = (p1 + kPartner) % kLength;
    for (int32_t i = 0; i < n;) {
      uint32_t* x = state.x + p1;
      const uint32_t* partner = state.x + p2;
      const int32_t to_wrap = static_cast<int32_t>(kLength - (p1 > p2 ? p1 : p2));
      const int32_t run = n - i < to_wrap ? n - i : to_wrap;
      int32_t k = 0;
      for (; k <= run - kWords; k += kWords) {
        const I32 w = load(x + k) ^ load(partner + k);
        store(x + k, w);
        sink.put(i + k, w);
      }
      for (; k < run; ++k) {
        x[k] ^= partner[k];
        sink.put_one(i + k, x[k]);
      }
      i += run;
      p1 += static_cast<uint32_t>(run);
      p2 += static_cast<uint32_t>(run);
      if (p1 == kLength) p1 = 0;
      if (p2 == kLength) p2 = 0;
    }
    if (n >= static_cast<int32_t>(kLength)) {
      if (p1 != 0) rotate(state.x, p1);
      p1 = 0;
      p2 = kPartner;
    }
    state.p1 = p1;
    state.p2 = p2;
    return RAU_STATUS_OK;
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_BRNG_BLOCKS(R250, Blocks<R250>)
