// The pairwise formulas, once for a block joining its part and for parts joining each other.
#pragma once

#include "statistics/summary/kernels/moments_power_sums.h"
#include "statistics/summary/moments_parts.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Moments of a vector of variables, as in MomentsPart.
template <class V>
struct Moments {
  V mean;
  V raw[3];
  V central[3];
};

template <class V, class Real = typename V::Element>
ORBA_INLINE Moments<V> load_moments(const statistics::MomentsPart<Real>& part,
                                    const statistics::MomentsOrders& orders, int64_t j,
                                    int64_t live) {
  Moments<V> m;
  m.mean = load_live<V>(part.mean + j, live);
  for (int k = 0; k < orders.raw - 1; ++k) m.raw[k] = load_live<V>(part.raw[k] + j, live);
  for (int k = 0; k < orders.central - 1; ++k) {
    m.central[k] = load_live<V>(part.central[k] + j, live);
  }
  return m;
}

template <class V, class Real = typename V::Element>
ORBA_INLINE void store_moments(const statistics::MomentsPart<Real>& part,
                               const statistics::MomentsOrders& orders, int64_t j, int64_t live,
                               const Moments<V>& m) {
  store_live(part.mean + j, live, m.mean);
  for (int k = 0; k < orders.raw - 1; ++k) store_live(part.raw[k] + j, live, m.raw[k]);
  for (int k = 0; k < orders.central - 1; ++k) store_live(part.central[k] + j, live, m.central[k]);
}

// Merges b, of weight wb, into a, of weight wa. The weights enter as fractions, so nothing
// overflows that the result doesn't.
template <class V>
struct Merger {
  using Real = typename V::Element;
  V a, b;        // fractions of the whole
  V c2, c3, c4;  // of d^2, d^3, d^4

  ORBA_INLINE Merger(Real wa, Real wb) {
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
  ORBA_INLINE V operator()(const statistics::MomentsOrders& orders, Moments<V>& to,
                           const Moments<V>& from) const {
    const V d = from.mean - to.mean;
    if (orders.method == statistics::MomentsMethod::kOnePass) {
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
    to.mean = mul_add(b, from.mean, a * to.mean);
    for (int k = 0; k < orders.raw - 1; ++k) {
      to.raw[k] = mul_add(b, from.raw[k], a * to.raw[k]);
    }
    return d;
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
