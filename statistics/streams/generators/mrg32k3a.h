// MRG32k3a: the difference of two multiple-recursive generators of order 3,
//
//   x(n+3) = 1403580 x(n+1) - 810728 x(n) mod m1,   y(n+3) = 527612 y(n+2) - 1370589 y(n) mod m2,
//
// output x(n+3) - y(n+3) mod m1. P. L'Ecuyer, "Good parameters and implementations for combined
// multiple recursive random number generators", Operations Research 47 (1999).
#pragma once

#include "statistics/streams/stream_state.h"

namespace orba::statistics {

struct Mrg32k3aState : StreamState {
  uint32_t x[3];  // the last three values, oldest first
  uint32_t y[3];
};

namespace mrg32k3a {

// w(n+3) = a w(n+lag) - b w(n) mod m.
struct X {
  static constexpr uint32_t m = 4294967087, a = 1403580, b = 810728;
  static constexpr int lag = 1;
};
struct Y {
  static constexpr uint32_t m = 4294944443, a = 527612, b = 1370589;
  static constexpr int lag = 2;
};

// A jump by n: w(n) = c[0] w(0) + c[1] w(1) + c[2] w(2) with c the coefficients of t^n modulo the
// characteristic polynomial t^3 - a t^lag + b.
struct Polynomial {
  uint64_t c[3];  // below m
};
constexpr Polynomial kOne = {{1, 0, 0}};

template <class Recurrence>
static constexpr Polynomial times_t(const Polynomial& p) {
  Polynomial result = {{p.c[2] * (Recurrence::m - Recurrence::b) % Recurrence::m, p.c[0], p.c[1]}};
  result.c[Recurrence::lag] = (result.c[Recurrence::lag] + p.c[2] * Recurrence::a) % Recurrence::m;
  return result;
}

}  // namespace mrg32k3a
}  // namespace orba::statistics
