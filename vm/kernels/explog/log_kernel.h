// Ln and Log10: kernels and callouts for a base.
#pragma once

#include "vm/kernels/contract/kernel.h"
#include "vm/kernels/contract/scalar.h"
#include "vm/kernels/explog/log_reduction.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// log(x * 2^-added) to full accuracy, x normal and below 2^1022 (2^126).
template <class Base, class V>
ORBA_INLINE V log_full(V x, V added) {
  const Reduction<Base, V> reduction(x);
  return full_sum<Base>(reduction.log(reduction.exponent() + added), reduction.excess(x),
                        reduction.series());
}
template <class Base, class V>
ORBA_INLINE V log_full(V x) {
  const Reduction<Base, V> reduction(x);
  return full_sum<Base>(reduction.log(reduction.exponent()), reduction.excess(x),
                        reduction.series());
}

// To half the significand.
template <class Base, class V>
ORBA_INLINE V log_ep(V x) {
  const Reduction<Base, V> reduction(x);
  const V e = reduction.excess(x);
  return mul_add(e, horner(e, reduction.series_ep()), reduction.log(reduction.exponent()).hi);
}

template <class Base>
ORBA_COLD int32_t log_callout(const double* a, double* r) {
  double x = *a;
  if (is_nan_or_inf(x)) {
    if (x < 0) {
      *r = x - x;
      return kErrDom;
    }
    *r = x * x;
    return kOk;
  }
  double added = 0;
  if ((bit_cast<uint64_t>(x) & 0x7ff0000000000000) == 0) {
    added = 60;
    x *= pow2(60);
  } else if (x >= pow2(1022)) {
    added = -60;
    x *= pow2(-60);
  }
  if (x > 0) {
    *r = log_full<Base>(F64(x), F64(added)).v[0];
    return kOk;
  }
  if (x == 0) {
    *r = -1.0 / (x * x);
    return kSing;
  }
  *r = (x - x) / (x - x);
  return kErrDom;
}

template <class Base, class V> struct LogBase;
template <class Base>
struct LogBase<Base, F64> {
  static int32_t callout(const double* a, double* r) { return log_callout<Base>(a, r); }
  // Up to 2^1022 where approximate reciprocals are at work.
  ORBA_INLINE static M64 special(F64 x) {
    return outside(as_bits(x), 0x00100000, kClass == 5 ? 0x7fcfffff : 0x7fefffff);
  }
};
template <class Base>
struct LogBase<Base, F32> {
  static int32_t callout(const float* a, float* r) { return narrowed(log_callout<Base>, a, r); }
  ORBA_INLINE static M32 special(F32 x) {
    return outside(as_bits(x), 0x00800000, kClass >= 3 ? 0x7e7fffff : 0x7f7fffff);
  }
};

template <class Base, class V, bool full>
struct LogKernel : LogBase<Base, V> {
  using In = typename V::Element;
  using Out = In;
  using Flag = typename V::Mask;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = kClass < 3 ? 2 : 4;

  ORBA_INLINE static V eval(V x, Flag& flag) {
    flag = flag | LogBase<Base, V>::special(x);
    if constexpr (full)
      return log_full<Base>(x);
    else
      return log_ep<Base>(x);
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
