// Log1p: ln(1 + a). KAM_STATUS_SING at -1, KAM_STATUS_ERRDOM below.
//
// s = 1 + x and what its rounding lost, l, are reduced together: with c near 1/s for the exact
// e = c*s - 1, the argument of the series is f = e + c*l, and its rounding error joins the tail.
// Near x = 0 c is 1 and f is x itself.
//
// class      0, 1, 2                        3, 5
// HA         compensated sum                compensated sum
// LA         as HA                          plain sum; c*l as it is joins the tail
// EP         one word, f rounded once       the same, f = c*x + (c - 1)
//
// Single precision on classes 0 to 2: the EP computation in double at all accuracies.
#pragma once

#include "vm/kernels/explog/log_kernel.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// 1 + x = hi + lo, exact for x below 2^53 (2^24), and above to more than the result can tell.
template <class V>
ORBA_INLINE Pair<V> one_plus(V x) {
  const V s = 1 + x;
  return {s, x - (s - 1)};
}

// The sign of a zero is the only one that the sum may lose.
template <class V>
ORBA_INLINE V with_sign_of(V x, V y) {
  return as_float(as_bits(y) | (as_bits(x) & as_bits(V(-0.0f))));
}

template <class Data, Accuracy accuracy, class V>
ORBA_INLINE V log1p_of(V x) {
  const Pair<V> s = one_plus(x);
  const LogReduction<Data, V> reduction(s.hi);
  const V c = without_exponent(reduction.c(), s.hi);
  if constexpr (accuracy == kEp) {
    const V f = kFused ? mul_add(c, x, c - 1) : excess(c, s.hi) + c * s.lo;
    return with_sign_of(x, log_sum_ep<Data>(reduction.rounded_log(), f));
  } else {
    const V e = excess(c, s.hi), rest = c * s.lo;
    Pair<V> log = reduction.log();
    if constexpr (accuracy == kLa) {
      log.lo = log.lo + neg_mul_add(rest, e, rest);  // log(1 + f) - log(1 + e)
      return with_sign_of(x, log_sum<Data, kLa>(log, e));
    }
    const V f = e + rest;
    log.lo = log.lo + (rest - (f - e));
    return with_sign_of(x, log_sum<Data, kHa>(log, f));
  }
}

// Lanes whose 1 + x isn't a positive normal number, or so large that 1/(1 + x) is not.
ORBA_INLINE M64 special(F64 x) { return outside(as_bits(1 + x), 0x00100000, 0x7f3fffff); }
ORBA_INLINE M32 special(F32 x) { return outside(as_bits(1 + x), 0x00800000, 0x7e7fffff); }

ORBA_COLD int32_t log1p_callout(const double* a, double* r) {
  const double x = *a;
  if (x > -1 && x < pow2(1000)) {
    *r = first_lane(log1p_of<Natural256, kHa>(F64(x)));
    return kOk;
  }
  if (x == -1) {
    *r = -1.0 / (x + 1);
    return kSing;
  }
  return log_callout<Natural256>(a, r);  // of x as it is: too large to notice 1, or no number > -1
}

template <class V>
struct Log1pCallout;
template <>
struct Log1pCallout<F64> {
  static int32_t callout(const double* a, double* r) { return log1p_callout(a, r); }
};
template <>
struct Log1pCallout<F32> {
  static int32_t callout(const float* a, float* r) { return narrowed(log1p_callout, a, r); }
};

template <class V, Accuracy accuracy>
struct Log1pKernel : Log1pCallout<V> {
  using In = typename V::Element;
  using Out = In;
  using Flag = typename V::Mask;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = 2;

  ORBA_INLINE static V eval(V x, Flag& flag) {
    flag = flag | special(x);
    if constexpr (kClass < 3 && sizeof(In) == 4) {
      using Data = Natural::Data<F64>;
      return narrow(log1p_of<Data, kEp>(widen_low(x)), log1p_of<Data, kEp>(widen_high(x)));
    } else {
      return log1p_of<Natural::Data<V>, accuracy>(x);
    }
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
