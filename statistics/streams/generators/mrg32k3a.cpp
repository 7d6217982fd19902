#include "statistics/streams/generators/mrg32k3a.h"

#include <string.h>

#include "statistics/streams/generators/generator.h"

namespace orba::statistics {
namespace {

using namespace mrg32k3a;

template <class Recurrence>
Polynomial square(const Polynomial& p) {
  const auto multiply = [](uint64_t a, uint64_t b) { return a * b % Recurrence::m; };
  uint64_t c[5] = {multiply(p.c[0], p.c[0]), 2 * multiply(p.c[0], p.c[1]),
                   2 * multiply(p.c[0], p.c[2]) + multiply(p.c[1], p.c[1]),
                   2 * multiply(p.c[1], p.c[2]), multiply(p.c[2], p.c[2])};
  for (int k = 4; k >= 3; --k) {
    c[k - 3 + Recurrence::lag] += multiply(c[k] % Recurrence::m, Recurrence::a);
    c[k - 3] += multiply(c[k] % Recurrence::m, Recurrence::m - Recurrence::b);
  }
  return {{c[0] % Recurrence::m, c[1] % Recurrence::m, c[2] % Recurrence::m}};
}

// Moves a component by the number of steps that the words hold, least significant first.
template <class Recurrence>
void jump(uint32_t (&w)[3], int32_t count, const uint64_t* words) {
  Polynomial p = kOne;
  for (int32_t k = count - 1; k >= 0; --k) {
    for (int bit = 63; bit >= 0; --bit) {
      p = square<Recurrence>(p);
      if (words[k] >> bit & 1) p = times_t<Recurrence>(p);
    }
  }
  uint32_t moved[3];
  for (uint32_t& to : moved) {
    uint64_t sum = 0;
    for (int j = 0; j < 3; ++j) sum += p.c[j] * w[j] % Recurrence::m;
    to = static_cast<uint32_t>(sum % Recurrence::m);
    p = times_t<Recurrence>(p);
  }
  memcpy(w, moved, sizeof moved);
}

struct Mrg32k3a {
  using State = Mrg32k3aState;

  static int32_t seed(State& state, int32_t n, const uint32_t* words) {
    for (int j = 0; j < 3; ++j) {
      const uint32_t x = n > j ? words[j] : 1;
      const uint32_t y = n > j + 3 ? words[j + 3] : 1;
      state.x[j] = x % X::m;
      state.y[j] = y % Y::m;
    }
    if ((state.x[0] | state.x[1] | state.x[2]) == 0) state.x[0] = 1;
    if ((state.y[0] | state.y[1] | state.y[2]) == 0) state.y[0] = 1;
    return RAU_STATUS_OK;
  }
  static int32_t skip_ahead_words(State& state, int32_t count, const uint64_t* words) {
    jump<X>(state.x, count, words);
    jump<Y>(state.y, count, words);
    return RAU_STATUS_OK;
  }
  static int32_t skip_ahead(State& state, uint64_t n) { return skip_ahead_words(state, 1, &n); }
};

}  // namespace
}  // namespace orba::statistics

ORBA_BRNG_INIT(MRG32k3a, orba::statistics::Mrg32k3a)
