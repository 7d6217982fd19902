// Callouts as contenders: stands in front of the kernel sources (tests/CMakeLists.txt compiles them
// once more per class, as orba_callouts_cN_...) and makes kernels that vouch for no lane, so that
// every element takes the road of a callout, under the control state and with the reports of a
// real call.
#pragma once

#include "vector/kernels/contract/kernel.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class M>
ORBA_INLINE M every_lane(M m) {
  return m | ~m;
}
ORBA_INLINE WordMask every_lane(WordMask m) { return {every_lane(m.v)}; }
template <class M>
ORBA_INLINE PairMask<M> every_lane(PairMask<M> m) {
  return {every_lane(m.lo), every_lane(m.hi)};
}

template <class F>
struct CalloutAlone : F {
  using typename F::Flag;
  template <class Pack>
  ORBA_INLINE auto eval(const Pack& a, Flag& flag) const {
    const auto y = F::eval(a, flag);
    flag = every_lane(flag);
    return y;
  }
  template <class Pack>
  ORBA_INLINE auto eval(const Pack& a, const Pack& b, Flag& flag) const {
    const auto y = F::eval(a, b, flag);
    flag = every_lane(flag);
    return y;
  }
};

// Functions without callouts stay as they are.
template <class F>
ORBA_INLINE void run_callouts_alone(int32_t n, const Arrays<F>& x, const char* name,
                                    const F& f = F{}) {
  if constexpr (has_flags<F>)
    run_kernel<CalloutAlone<F>>(n, {x.a, x.b, x.y, x.z}, name, CalloutAlone<F>{f});
  else
    run_kernel<F>(n, x, name, f);
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

#define run_kernel run_callouts_alone
