// The pairwise formulas in vectors of variables.
#pragma once

#include "statistics/summary/kernels/moments_power_sums.h"
#include "statistics/summary/moments_pairwise.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

using statistics::Moments;

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

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
