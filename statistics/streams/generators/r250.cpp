#include "statistics/streams/generators/r250.h"

#include <string.h>

#include "statistics/streams/generators/generator.h"

namespace orba::statistics {
namespace {

// Words of the multiplicative generator 69069 mod 2^32. Their top bits are then forced into a
// triangle, which makes 32 words linearly independent.
void fill(uint32_t (&x)[kR250Length], uint32_t v) {
  for (uint32_t& word : x) word = v *= 69069;
  for (uint32_t j = 0; j < 32; ++j) {
    uint32_t& word = x[3 + 7 * j];
    word = (word & (0xffffffff >> j)) | (0x80000000 >> j);
  }
}

struct R250 {
  using State = R250State;

  static int32_t seed(State& state, int32_t n, const uint32_t* words) {
    if (n >= static_cast<int32_t>(kR250Length)) {
      memcpy(state.x, words, sizeof state.x);
    } else {
      fill(state.x, n > 0 && words[0] != 0 ? words[0] : 1);
    }
    state.p1 = 0;
    state.p2 = kR250Partner;
    return RAU_STATUS_OK;
  }
};

}  // namespace
}  // namespace orba::statistics

ORBA_BRNG_INIT(R250, orba::statistics::R250)
