// Sinh and Cosh: of |a| by the pair e^|a| and e^-|a| (explog/exp_pair.h), up to 707.7 (single precision:
// 86.6); beyond it they are e^|a|/2, which the callout takes.
//
// class       0, 1                2          3           5
// double HA   64 rows             64 rows    64 rows     16 rows
// double LA   as HA               as HA      powers      powers
// double EP   as HA               short      short       short
// single HA   short, in double    as 0, 1    16 rows     16 rows
// single LA   as HA               as HA      powers      powers
// single EP   as HA               short      short       short
#pragma once

#include "vector/kernels/contract/accuracy.h"
#include "vector/kernels/explog/exp_pair.h"
#include "vector/kernels/hyperbolic/hyperbolic_coefficients.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Above it the results are infinite.
template <class E>
constexpr E kSinhBound = kSinhOverflow;
template <>
constexpr float kSinhBound<float> = kSinhOverflowF;

// Lanes for the callout: 2^-k of a normal half ends here; NaN too.
ORBA_INLINE M64 sinh_special(F64 a) { return not_le(a, F64(0x1.61da04cbafe43p9)); }
ORBA_INLINE M32 sinh_special(F32 a) { return as_bits(a) > I32(0x42ad496b); }

// For the arguments that get here: e^-|a| is far below the last place of e^|a|.
template <ExpPairFunction f, class E>
ORBA_COLD int32_t sinh_or_cosh_callout(const E* a, E* r) {
  const double x = *a;
  const double size = __builtin_fabs(x);
  const double sign = f == ExpPairFunction::kSinh ? __builtin_copysign(1.0, x) : 1.0;
  if (is_nan_or_inf(x)) {
    *r = static_cast<E>(sign * size);
    return kOk;
  }
  if (size > static_cast<double>(kSinhBound<E>)) {
    *r = static_cast<E>(sign * opaque(pow2(1023)) * pow2(1023));
    return kOverflow;
  }
  const ScaledExp e = scaled_exp({size, 0});
  *r = static_cast<E>(sign * rounded(e.value, e.n - 1));
  return kOk;
}

template <ExpPairFunction f, class V, Accuracy accuracy>
struct SinhOrCosh {
  using In = typename V::Element;
  using Out = In;
  using Flag = typename V::Mask;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = 2;

  ORBA_INLINE static V eval(V x, Flag& flag) {
    const V a = abs(x);
    flag = flag | sinh_special(a);
    const V y = of_size(a);
    return f == ExpPairFunction::kSinh ? with_sign_of(x, y) : y;
  }
  static int32_t callout(const In* a, In* r) { return sinh_or_cosh_callout<f>(a, r); }

 private:
  ORBA_INLINE static V of_size(V a) {
    if constexpr (accuracy == kEp) {
      return short_sinh_or_cosh<f>(a);
    } else if constexpr (sizeof(In) == 4 && !kFused) {
      return narrow(short_sinh_or_cosh<f>(widen_low(a)), short_sinh_or_cosh<f>(widen_high(a)));
    } else {
      constexpr int rows = sizeof(In) == 4 || kClass == 5 ? 16 : 64;
      const Pair<V> y =
          accuracy == kLa ? sinh_or_cosh_by_powers<f>(a) : sinh_or_cosh_by_rows<f, rows>(a);
      return y.hi + y.lo;
    }
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

#define ORBA_SINH_OR_COSH_KERNEL(t, Name, accuracy, V, kAccuracy) \
  ORBA_KERNEL(1i_1o, t, Name, accuracy, SinhOrCosh<ExpPairFunction::k##Name, V, kAccuracy>)
#if ORBA_CLASS >= 3
#  define ORBA_SINH_OR_COSH_LA(t, Name, V) ORBA_SINH_OR_COSH_KERNEL(t, Name, LA, V, kLa)
#else
#  define ORBA_SINH_OR_COSH_LA(t, Name, V) ORBA_SAME_KERNEL(1i_1o, t, Name, LA, HA)
#endif
#if ORBA_CLASS >= 2
#  define ORBA_SINH_OR_COSH_EP(t, Name, V) ORBA_SINH_OR_COSH_KERNEL(t, Name, EP, V, kEp)
#else
#  define ORBA_SINH_OR_COSH_EP(t, Name, V) ORBA_SAME_KERNEL(1i_1o, t, Name, EP, HA)
#endif
#define ORBA_SINH_OR_COSH(t, Name, V)           \
  ORBA_SINH_OR_COSH_KERNEL(t, Name, HA, V, kHa) \
  ORBA_SINH_OR_COSH_LA(t, Name, V)              \
  ORBA_SINH_OR_COSH_EP(t, Name, V)
