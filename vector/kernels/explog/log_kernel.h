// Ln and Log10: kernels and callout for a base.
//
// class      0, 1, 2                        3, 5
// HA         compensated sum                compensated sum
// LA         as HA                          plain sum
// EP         one word, short polynomial     the same
//
// Single precision on classes 0 to 2: the EP computation in double at all accuracies, for half a
// unit and 2^-4 of one.
#pragma once

#include "vector/kernels/contract/kernel.h"
#include "vector/kernels/contract/scalar.h"
#include "vector/kernels/explog/log_pair.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class Data, Accuracy accuracy, class V>
ORBA_INLINE V log_of(const LogReduction<Data, V>& reduction, V x) {
  const V e = reduction.excess_of(x);
  if constexpr (accuracy == kEp)
    return log_sum_ep<Data>(reduction.rounded_log(), e);
  else
    return log_sum<Data, accuracy>(reduction.log(), e);
}

// The complete function: special arguments, else full accuracy.
template <class Base>
ORBA_COLD int32_t log_callout(const double* a, double* r) {
  const double x = *a;
  if (is_nan_or_inf(x)) {
    *r = x < 0 ? x - x : x * x;
    return x < 0 ? kErrDom : kOk;
  }
  if (x > 0) {
    Pair<double> log = log_pair(x);
    if constexpr (Base::decimal) log = log * Pair<double>{kLog10OfE[0], kLog10OfE[1]};
    *r = log.hi + log.lo;
    return kOk;
  }
  if (x == 0) {
    *r = -1.0 / (x * x);
    return kSing;
  }
  *r = (x - x) / (x - x);
  return kErrDom;
}

// Callouts by type.
template <class Base, class V>
struct LogCallout;
template <class Base>
struct LogCallout<Base, F64> {
  static int32_t callout(const double* a, double* r) { return log_callout<Base>(a, r); }
};
template <class Base>
struct LogCallout<Base, F32> {
  static int32_t callout(const float* a, float* r) { return narrowed(log_callout<Base>, a, r); }
};

template <class Base, class V, Accuracy accuracy>
struct LogKernel : LogCallout<Base, V> {
  using In = typename V::Element;
  using Out = In;
  using Flag = typename V::Mask;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = 2;

  ORBA_INLINE static V eval(V x, Flag& flag) {
    if constexpr (kClass < 3 && sizeof(In) == 4) {
      flag = flag | not_positive_normal(x);
      return narrow(in_double(widen_low(x)), in_double(widen_high(x)));
    } else {
      const LogReduction<typename Base::template Data<V>, V> reduction(x);
      flag = flag | reduction.special();
      return log_of<typename Base::template Data<V>, accuracy>(reduction, x);
    }
  }

 private:
  ORBA_INLINE static F64 in_double(F64 x) {
    using Data = typename Base::template Data<F64>;
    return log_of<Data, kEp>(LogReduction<Data, F64>(x), x);
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

// The kernels of a logarithm, from a template over vector and accuracy. Without FMA the three
// accuracies of a double share one kernel but for EP, those of a float one.
#if ORBA_CLASS >= 3
#  define ORBA_LOG_KERNELS(Name, Kernel)              \
    ORBA_KERNEL(1i_1o, d, Name, HA, Kernel<F64, kHa>) \
    ORBA_KERNEL(1i_1o, d, Name, LA, Kernel<F64, kLa>) \
    ORBA_KERNEL(1i_1o, d, Name, EP, Kernel<F64, kEp>) \
    ORBA_KERNEL(1i_1o, s, Name, HA, Kernel<F32, kHa>) \
    ORBA_KERNEL(1i_1o, s, Name, LA, Kernel<F32, kLa>) \
    ORBA_KERNEL(1i_1o, s, Name, EP, Kernel<F32, kEp>)
#else
#  define ORBA_LOG_KERNELS(Name, Kernel)              \
    ORBA_KERNEL(1i_1o, d, Name, HA, Kernel<F64, kHa>) \
    ORBA_SAME_KERNEL(1i_1o, d, Name, LA, HA)          \
    ORBA_KERNEL(1i_1o, d, Name, EP, Kernel<F64, kEp>) \
    ORBA_KERNEL(1i_1o, s, Name, HA, Kernel<F32, kHa>) \
    ORBA_SAME_KERNEL(1i_1o, s, Name, LA, HA)          \
    ORBA_SAME_KERNEL(1i_1o, s, Name, EP, HA)
#endif
