// Log1p: ln(1 + a). KAM_STATUS_SING at -1, KAM_STATUS_ERRDOM below.
//
// s = 1 + x and what its rounding lost, l, are reduced together: with c near 1/s for the exact
// e = c*s - 1, the argument of the series is f = e + c*l, and its rounding error joins the tail.
// Near x = 0 c is 1 and f is x itself.
//
// class      0, 1, 2                        3, 5
// HA         compensated sum                compensated sum
// LA         as HA                          plain sum for e; c*l*(1 - e) joins the tail
// EP         one word, f rounded once       the same, f = c*x + (c - 1)
//
// Single precision on classes 0 to 2: the EP computation in double at all accuracies.
#pragma once

#include "vector/kernels/explog/log_kernel.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// 1 + x = hi + lo, exact for x below 2^53 (2^24), and above to more than the result can tell.
template <class V>
ORBA_INLINE Pair<V> log1p_sum(V x) {
  const V s = 1 + x;
  return {s, x - (s - 1)};
}

// Lanes whose 1 + x isn't positive and normal, or so large that the reciprocal is not.
template <class Data>
ORBA_INLINE M64 log1p_special(const LogReduction<Data, F64>& reduction, F64 s) {
  if constexpr (Data::reciprocal == LogReciprocal::kApproximate) return reduction.special();
  return outside(as_bits(s), 0x00100000, 0x7f3fffff);
}
template <class Data>
ORBA_INLINE M32 log1p_special(const LogReduction<Data, F32>& reduction, F32 s) {
  if constexpr (Data::reciprocal == LogReciprocal::kApproximate) return reduction.special();
  return outside(as_bits(s), 0x00800000, 0x7e7fffff);
}

// ln(s.hi + s.lo) at LA and HA, with what `join` adds to the tail of the result. Lanes that
// log1p_special names are flagged.
template <class Data, Accuracy accuracy, class V, class Join>
ORBA_INLINE V log_of_sum(Pair<V> s, typename V::Mask& flag, Join join) {
  const LogReduction<Data, V> reduction(s.hi);
  flag = flag | log1p_special(reduction, s.hi);
  const V c = reduction.c(s.hi);
  const V e = log_excess(c, s.hi);
  Pair<V> log = reduction.log();
  log.lo = join(log.lo);
  if constexpr (accuracy == kLa) {
    log.lo = mul_add(s.lo, neg_mul_add(c, e, c), log.lo);  // log(1 + f) - log(1 + e)
    return log_sum<Data, kLa>(log, e);
  }
  const V rest = c * s.lo;
  const V f = e + rest;
  const V lost = rest - (f - e);
  // d ln(1 + f) = df / (1 + f); what f adds to 1 counts in a table of few rows.
  constexpr bool few_rows = kClass == 3 && sizeof(typename V::Element) == 4;
  log.lo = log.lo + (few_rows ? neg_mul_add(lost, f, lost) : lost);
  return log_sum<Data, kHa>(log, f);
}

// ln(1 + x) at EP, the sign of a zero aside.
template <class Data, class V>
ORBA_INLINE V short_log1p(V x, typename V::Mask& flag) {
  const Pair<V> s = log1p_sum(x);
  const LogReduction<Data, V> reduction(s.hi);
  flag = flag | log1p_special(reduction, s.hi);
  const V c = reduction.c(s.hi);
  const V f = kFused ? mul_add(c, x, c - 1) : log_excess(c, s.hi) + c * s.lo;
  return log_sum_ep<Data>(reduction.rounded_log(), f);
}

template <class Data, Accuracy accuracy, class V>
ORBA_INLINE V log1p_of(V x, typename V::Mask& flag) {
  if constexpr (accuracy == kEp) return with_sign_of(x, short_log1p<Data>(x, flag));
  return with_sign_of(x, log_of_sum<Data, accuracy>(log1p_sum(x), flag, [](V lo) { return lo; }));
}

ORBA_COLD int32_t log1p_callout(const double* a, double* r) {
  const double x = *a;
  if (x > -1 && x < pow2(1000)) {
    M64 flag;
    *r = first_lane(log1p_of<LogNatural256, kHa>(F64(x), flag));
    return kOk;
  }
  if (x == -1) {
    *r = -1.0 / (x + 1);
    return kSing;
  }
  // x as it is is too large to notice 1, or no number above -1.
  return log_callout<LogNatural>(a, r);
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
    if constexpr (kClass < 3 && sizeof(In) == 4) {
      flag = flag | not_positive_normal(1 + x);
      M64 unused;
      return narrow(log1p_of<LogNatural256, kEp>(widen_low(x), unused),
                    log1p_of<LogNatural256, kEp>(widen_high(x), unused));
    } else {
      return log1p_of<LogNatural::Log1pData<V>, accuracy>(x, flag);
    }
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
