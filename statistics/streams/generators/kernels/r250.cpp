// R250: w(n) = w(n-250) xor w(n-147), the generalised feedback shift register of S. Kirkpatrick and
// E. Stoll, "A very fast shift-register sequence random number generator", Journal of Computational
// Physics 40 (1981).
#include "statistics/streams/generators/kernels/generator.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

struct R250 {
  static constexpr uint32_t kLength = 250, kPartner = 103;

  struct State : StreamState {
    uint32_t x[kLength];  // the last outputs, a ring
    uint32_t p1;          // the oldest of them, which the next output replaces
    uint32_t p2;          // its partner, kPartner words on
  };
  static_assert(sizeof(State) == 1024);

  static constexpr double kUnit = 0x1p-32;

  // Words of the multiplicative generator 69069 mod 2^32. Their top bits are then forced into a
  // triangle, which makes 32 words linearly independent.
  static void fill(uint32_t (&x)[kLength], uint32_t v) {
    for (uint32_t& word : x) word = v *= 69069;
    for (uint32_t j = 0; j < 32; ++j) {
      uint32_t& word = x[3 + 7 * j];
      word = (word & (0xffffffff >> j)) | (0x80000000 >> j);
    }
  }
  static void seed(State& state, int32_t n, const uint32_t* words) {
    if (n >= static_cast<int32_t>(kLength)) {
      __builtin_memcpy(state.x, words, sizeof state.x);
    } else {
      fill(state.x, n > 0 && words[0] != 0 ? words[0] : 1);
    }
    state.p1 = 0;
    state.p2 = kPartner;
  }

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
  static void generate(State& state, int32_t n, Sink sink) {
    constexpr int32_t kWords = 2 * kLanes;
    uint32_t p1 = state.p1 % kLength;  // a state that was loaded may hold anything
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
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_BRNG_KERNELS(R250, Generator<R250>)
