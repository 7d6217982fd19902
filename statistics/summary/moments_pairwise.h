// The pairwise formulas, once for blocks joining their part, parts joining each other, and single
// observations in a wider type. V is a number or a vector of Real; each source that includes this
// has its own copy of the code, in its own instructions.
#pragma once

#include "statistics/summary/moments_parts.h"

namespace orba::statistics {
namespace {

// Moments of a variable or of a vector of them, as in MomentsPart.
template <class V>
struct Moments {
  V mean;
  V raw[3];
  V central[3];
};

// Merges b, of weight wb, into a, of weight wa.
template <class V, class Real>
struct Merger {
  V a, b;        // fractions of the whole
  V c2, c3, c4;  // of d^2, d^3, d^4

  [[gnu::always_inline]] Merger(Real wa, Real wb) {
    const Real whole = wa + wb;
    const Real fa = whole != 0 ? wa / whole : 0, fb = whole != 0 ? wb / whole : 0;
    const Real fraction = wa * fb;
    a = V(fa);
    b = V(fb);
    c2 = V(fraction);
    c3 = V(fraction * (fa - fb));
    c4 = V(fraction * (fa * fa - fa * fb + fb * fb));
  }

  // Gives the difference of means.
  [[gnu::always_inline]] V operator()(const MomentsOrders& orders, Moments<V>& to,
                                      const Moments<V>& from) const {
    const V d = from.mean - to.mean;
    if (orders.method == MomentsMethod::kOnePass) {
      if (orders.central >= 4) {
        const V linear = V(4) * (a * from.central[1] - b * to.central[1]);
        const V square = V(6) * (a * a * from.central[0] + b * b * to.central[0]);
        to.central[2] = to.central[2] + from.central[2] + d * (linear + d * (square + d * d * c4));
      }
      if (orders.central >= 3) {
        const V linear = V(3) * (a * from.central[0] - b * to.central[0]);
        to.central[1] = to.central[1] + from.central[1] + d * (linear + d * d * c3);
      }
      if (orders.central >= 2) to.central[0] = to.central[0] + from.central[0] + d * d * c2;
    } else {
      for (int k = 0; k < orders.central - 1; ++k) to.central[k] = to.central[k] + from.central[k];
    }
    to.mean = b * from.mean + a * to.mean;
    for (int k = 0; k < orders.raw - 1; ++k) to.raw[k] = b * from.raw[k] + a * to.raw[k];
    return d;
  }
};

}  // namespace
}  // namespace orba::statistics
