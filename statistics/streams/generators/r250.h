// R250: w(n) = w(n-250) xor w(n-147), the generalised feedback shift register of S. Kirkpatrick and
// E. Stoll, "A very fast shift-register sequence random number generator", Journal of Computational
// Physics 40 (1981).
#pragma once

#include "statistics/streams/stream_state.h"

namespace orba::statistics {

constexpr uint32_t kR250Length = 250, kR250Partner = 103;

struct R250State : StreamState {
  uint32_t x[kR250Length];  // the last outputs, a ring
  uint32_t p1;              // the oldest of them, which the next output replaces
  uint32_t p2;              // its partner, kR250Partner words on
};

}  // namespace orba::statistics
