// What the inverse hyperbolic functions share. Each is a logarithm: at HA and LA of a sum that is known
// in two words, with what its root or quotient lacks joined to the tail of the result; at EP of 1 + y.
//
// class      0, 1            2               3, 5
// double HA  two words       two words       two words
//        LA  as HA           as HA           the logarithm's shorter sum
//        EP  as HA           one word        one word
// single     EP in double    EP in double    as double
#pragma once

#include "vector/kernels/explog/log1p_kernel.h"
#include "vector/kernels/simd/residual.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// a + n/d, the quotient to 2^-28 of itself on class 5 (single: 2^-14), on others rounded.
#if ORBA_CLASS == 5
ORBA_INLINE F64 add_quotient(F64 a, F64 n, F64 d) {
  const F64 y = approx_recip(d);
  return mul_add(n, mul_add(y, neg_mul_add(d, y, F64(1)), y), a);
}
ORBA_INLINE F32 add_quotient(F32 a, F32 n, F32 d) { return mul_add(n, approx_recip(d), a); }
#else
template <class V>
ORBA_INLINE V add_quotient(V a, V n, V d) {
  return a + n / d;
}
#endif

// ln(a + sqrt(w)) for w = a^2 + unit, a pair; w.lo is a few units of w.hi at most. What the root lacks,
// its residual tells, divided by 2 sqrt(w) * (a + sqrt(w)) = (a + sqrt(w))^2 + unit.
template <class Data, Accuracy accuracy, int unit, class V>
ORBA_INLINE V log_of_sum_with_root(V a, Pair<V> w) {
  const V s = sqrt(w.hi);
  // At LA two operations less let go half a unit of w, at most a sixth of one of the result.
  const V rest = accuracy == kLa && unit > 0 ? mul_add(a, a, neg_mul_add(s, s, V(unit)))
                                             : residual(w.hi, s, s) + w.lo;
  const Pair<V> sum = unit > 0 ? fast_two_sum(s, a) : fast_two_sum(a, s);
  V d = mul_add(sum.hi, sum.hi, V(unit));
  if constexpr (unit < 0) d = max(d, V(0x1p-60f));  // a = 1: 0/0
  typename V::Mask unused;
  return log_of_sum<Data, accuracy>(sum, unused, [&](V lo) { return add_quotient(lo, rest, d); });
}

// Arguments whose square, and four times that, is far from overflow.
template <class V>
constexpr typename V::Element kSquarable = 0x1p500;
template <>
constexpr float kSquarable<F32> = 0x1p60f;
template <class V>
constexpr typename V::Element kMost = 0x1.fffffffffffffp1023;
template <>
constexpr float kMost<F32> = 0x1.fffffep127f;

// ln(2a) for large a.
template <class Data, class V>
ORBA_INLINE V log_of_twice(V a) {
  constexpr int k = 32;
  a = a * V(static_cast<typename V::Element>(pow2(-k)));
  const LogReduction<Data, V> reduction(a);
  return log_sum<Data, kHa>(reduction.log(k + 1), reduction.excess_of(a));
}

// A kernel. Function supplies
//   special(x, most)         lanes that are no numbers of the domain up to `most`
//   eval<Data, accuracy>(x)  the function of the others up to kSquarable
//   callout(x, r)            what special lanes get
//   unbounded                the domain goes on, with ln(2|x|)
template <class Function, class V, Accuracy accuracy>
struct InverseHyperbolic {
  using In = typename V::Element;
  using Out = In;
  using Flag = typename V::Mask;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = 2;
  static constexpr bool in_double = kClass < 3 && sizeof(In) == 4;

  ORBA_INLINE static V eval(V x, Flag& flag) {
    flag = flag | Function::special(x, in_double ? V(kMost<V>) : V(kSquarable<V>));
    if constexpr (in_double)
      return narrow(Function::template eval<LogNatural256, kEp>(widen_low(x)),
                    Function::template eval<LogNatural256, kEp>(widen_high(x)));
    else
      return Function::template eval<LogNatural::AboveOneData<V>, accuracy>(x);
  }
  ORBA_INLINE static V eval_rare(V x, Flag& flag) requires(Function::unbounded && !in_double) {
    flag = flag | Function::special(x, V(kMost<V>));
    return with_sign_of(x, log_of_twice<LogNatural::AboveOneData<V>>(abs(x)));
  }
  static int32_t callout(const double* a, double* r) { return Function::callout(*a, r); }
  static int32_t callout(const float* a, float* r) {
    return narrowed([](const double* x, double* y) { return Function::callout(*x, y); }, a, r);
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

// All kernels of a function; on classes 0 and 1 one serves all accuracies.
#define ORBA_INVHYP_HA(Name)                                         \
  ORBA_KERNEL(1i_1o, d, Name, HA, InverseHyperbolic<Name, F64, kHa>) \
  ORBA_KERNEL(1i_1o, s, Name, HA, InverseHyperbolic<Name, F32, kHa>)
#if ORBA_CLASS >= 3
#  define ORBA_INVHYP_LA(Name)                                         \
    ORBA_KERNEL(1i_1o, d, Name, LA, InverseHyperbolic<Name, F64, kLa>) \
    ORBA_KERNEL(1i_1o, s, Name, LA, InverseHyperbolic<Name, F32, kLa>)
#  define ORBA_INVHYP_EP_SINGLE(Name) \
    ORBA_KERNEL(1i_1o, s, Name, EP, InverseHyperbolic<Name, F32, kEp>)
#else
#  define ORBA_INVHYP_LA(Name)               \
    ORBA_SAME_KERNEL(1i_1o, d, Name, LA, HA) \
    ORBA_SAME_KERNEL(1i_1o, s, Name, LA, HA)
#  define ORBA_INVHYP_EP_SINGLE(Name) ORBA_SAME_KERNEL(1i_1o, s, Name, EP, HA)
#endif
#if ORBA_CLASS >= 2
#  define ORBA_INVHYP_EP_DOUBLE(Name) \
    ORBA_KERNEL(1i_1o, d, Name, EP, InverseHyperbolic<Name, F64, kEp>)
#else
#  define ORBA_INVHYP_EP_DOUBLE(Name) ORBA_SAME_KERNEL(1i_1o, d, Name, EP, HA)
#endif
#define ORBA_INVHYP_KERNELS(Name) \
  ORBA_INVHYP_HA(Name)            \
  ORBA_INVHYP_LA(Name)            \
  ORBA_INVHYP_EP_DOUBLE(Name)     \
  ORBA_INVHYP_EP_SINGLE(Name)
