// Ln and Log10: kernels and callout for a base.
//
//   full   LA and HA: the reduction's full sum
//   EP     one-word logarithms, shorter polynomials
//
// Classes 0 to 2 run single precision in double by the EP polynomial, which is enough for half a
// unit and 2^-4 of one there.
#pragma once

#include "vm/kernels/contract/kernel.h"
#include "vm/kernels/contract/scalar.h"
#include "vm/kernels/explog/log_reduction.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class Base, class V>
ORBA_INLINE V log_full(V x) {
  const LogReduction<Base, V> reduction(x);
  return full_sum<Base>(reduction.log(), excess(reduction.c(), significand(x)));
}
// log(x * 2^-k)
template <class Base, class V>
ORBA_INLINE V log_full(V x, V k) {
  const LogReduction<Base, V> reduction(x);
  return full_sum<Base>(reduction.log(k), excess(reduction.c(), significand(x)));
}

template <class Base, class V>
ORBA_INLINE V log_ep(V x) {
  const LogReduction<Base, V> reduction(x);
  return ep_sum<Base>(reduction.rounded_log(), excess(reduction.c(), significand(x)));
}
#if ORBA_CLASS < 3
template <class Base>
ORBA_INLINE F32 log_in_double(F32 x) {
  return narrow(log_ep<Base>(widen_low(x)), log_ep<Base>(widen_high(x)));
}
#endif

// The complete function: special arguments, or the kernel's computation in one lane.
template <class Base>
ORBA_COLD int32_t log_callout(const double* a, double* r) {
  double x = *a;
  if (is_nan_or_inf(x)) {
    *r = x < 0 ? x - x : x * x;
    return x < 0 ? kErrDom : kOk;
  }
  double k = 0;
  if (bit_cast<uint64_t>(x) << 1 < uint64_t{0x0020000000000000}) {  // zero or denormal
    k = 60;
    x *= pow2(60);
  }
  if (x > 0) {
    *r = log_full<Base>(F64(x), F64(k)).v[0];
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
};
template <class Base>
struct LogBase<Base, F32> {
  static int32_t callout(const float* a, float* r) { return narrowed(log_callout<Base>, a, r); }
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
    flag = flag | not_positive_normal(x);
#if ORBA_CLASS < 3
    if constexpr (V::lanes == F32::lanes) return log_in_double<Base>(x);
    else
#endif
    if constexpr (full)
      return log_full<Base>(x);
    else
      return log_ep<Base>(x);
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
