// Pow and Powx: x^y = e^(y*ln(x)). Special situations as C99, annex F.9.4.4, has them; statuses are told
// at pow_callout.
//
//   full    ln(x) as a pair to 2^-66, times y as a pair, then the full exponential (explog/), whose
//           argument of up to 710 so is good to 2^-56
//   short   ln(x) in one word to 2^-38, the exponential to 2^-29; in double for single precision, too
//   float   the same in single precision: ln(x) to 2^-23, the exponential to 2^-12
//
// class       0, 1      2         3                5
// double HA   full      full      full             full
// double LA   as HA     as HA     as HA            full, a polynomial shorter by a degree
// double EP   as HA     short     short            short
// single HA   short     short     short            short
// single LA   as HA     as HA     as HA            as HA
// single EP   as HA     as HA     float            float
//
// Lanes for the callout: x not positive and normal; y*ln(x) out of the exponential's range, where results
// are infinite or denormal; y infinite or NaN, which makes that NaN or infinite.
#pragma once

#include "vector/kernels/contract/kernel.h"
#include "vector/kernels/explog/exp_kernel.h"
#include "vector/kernels/explog/log_pair.h"
#include "vector/kernels/power/power_coefficients.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Logarithms as factors: data of their reductions.
struct FactorLog128 {
  static constexpr LogReciprocal reciprocal = LogReciprocal::kRows;
  static constexpr auto& log_2 = kLnOf2Full;
  static constexpr auto& rounded_log_2 = kLnOf2Rounded;
  static constexpr auto& logs = vector::kLnRows128;
  static constexpr auto& series = kLnPairSeries128;
  static constexpr auto& series_ep = kLnFactorSeries128;
};
#if ORBA_CLASS == 5
struct FactorLogThirtySeconds {
  static constexpr LogReciprocal reciprocal = LogReciprocal::kApproximate;
  static constexpr auto& log_2 = kLnOf2Full;
  static constexpr auto& logs = kLnThirtySeconds;
  static constexpr auto& series = kLnPairSeriesThirtySeconds;
};
struct FactorLogThirtySecondsLa : FactorLogThirtySeconds {
  static constexpr auto& series = kLnPairSeriesLaThirtySeconds;
};
struct FactorLogSixteenths {
  static constexpr LogReciprocal reciprocal = LogReciprocal::kApproximate;
  static constexpr auto& log_2 = kLnOf2Full;
  static constexpr auto& logs = kLnSixteenths;
  static constexpr auto& rounded_log_2 = kLnOf2Rounded;
  static constexpr auto& rounded_logs = kLnRoundedSixteenths;
  static constexpr auto& series_ep = kLnFactorSeriesSixteenths;
};
#endif
#if ORBA_CLASS == 5
struct FactorLogSingleEp : LogNaturalSixteenthsSingle {
  static constexpr auto& series_ep = kLnFactorSeriesSixteenthsF;
};
#elif ORBA_CLASS == 3
struct FactorLogSingle {
  static constexpr LogReciprocal reciprocal = LogReciprocal::kTable;
  static constexpr auto& log_2 = kLnOf2F;
  static constexpr auto& reciprocals = kReciprocals16F;
  static constexpr auto& logs = kLnRows16F;
  static constexpr auto& series = kLnFactorSeries16;  // in double
};
struct FactorLogSingleEp : LogNaturalSingle {
  static constexpr auto& series_ep = kLnFactorSeries8F;
};
#endif

// 0: y is no integer, 1: odd, 2: even, as all numbers from 2^53 on and the infinities are.
enum class Parity { kNone, kOdd, kEven };
ORBA_INLINE Parity parity(double y) {
  if (__builtin_fabs(y) >= pow2(53)) return Parity::kEven;
  const auto integer = static_cast<int64_t>(y);
  if (static_cast<double>(integer) != y) return Parity::kNone;
  return (integer & 1) != 0 ? Parity::kOdd : Parity::kEven;
}

// The result where it takes no logarithm: whether it does, and the status.
struct PowException {
  bool found;
  double result;
  int32_t status;
};
ORBA_INLINE PowException pow_exception(double x, double y, Parity y_parity, double sign) {
  if (y == 0 || x == 1) return {true, 1.0, kOk};
  if (x != x || y != y) return {true, x + y, kOk};
  if (x == 0) {
    const double zero = x * x;
    if (y > 0) return {true, zero * sign, kOk};
    return {true, sign / zero, kErrDom};
  }
  if (x == -1 && y_parity != Parity::kNone) return {true, sign, kOk};
  if (is_inf(x) || is_inf(y)) {
    if (__builtin_fabs(x) < 1) return {true, y < 0 ? y * y : 0, kOk};
    return {true, (y > 0 ? y * x * x : 0) * sign, kOk};
  }
  if (x < 0 && y_parity == Parity::kNone) return {true, (x - x) / (x - x), kErrDom};
  return {false, 0, kOk};
}

// x^y of positive numbers, error below 2^-56 of it; what is far out of range stays out of range.
ORBA_INLINE ScaledExp scaled_pow(double x, double y) {
  const bool denormal = x < pow2(-1022);
  const F64 normal = denormal ? x * pow2(60) : x;
  const LogReduction<FactorLog128, F64> reduction(normal);
  const Pair<F64> log =
      log_pair_sum<FactorLog128>(reduction.log(denormal ? -60 : 0), reduction.excess_of(normal));
  const Pair<double> factor = {first_lane(log.hi), first_lane(log.lo)};
  const double exponent = factor.hi * y;
  if (__builtin_fabs(exponent) > 1000) return scaled_exp({__builtin_copysign(1000, exponent), 0});
  return scaled_exp(factor * y);
}

template <class E>
constexpr int lowest_exponent = sizeof(E) == 8 ? -1022 : -126;

// The complete function. KAM_STATUS_ERRDOM for zero to a negative power, with infinity, and for a
// negative number to a power that is no integer; KAM_STATUS_OVERFLOW where finite arguments give
// infinity, KAM_STATUS_UNDERFLOW where the result in the precision of the type, whatever its exponent,
// is below the normal numbers, be it exact or not.
template <class E>
ORBA_COLD int32_t pow_callout(const E* a, const E* b, E* r) {
  const double x = 1.0 * static_cast<double>(*a), y = 1.0 * static_cast<double>(*b);
  const Parity y_parity = parity(y);
  const double sign = y_parity == Parity::kOdd && __builtin_signbit(x) ? -1.0 : 1.0;
  const PowException exception = pow_exception(x, y, y_parity, sign);
  if (exception.found) {
    *r = static_cast<E>(exception.result);
    return exception.status;
  }
  const ScaledExp power = scaled_pow(__builtin_fabs(x), y);
  *r = static_cast<E>(sign * rounded(power.value, power.n));
  if (is_inf(static_cast<double>(*r))) return kOverflow;
  return exponent_of(total(power.value)) + power.n < lowest_exponent<E> ? kUnderflow : kOk;
}

template <class V>
struct PowBase {
  using Vector = V;
  using In = typename V::Element;
  using Out = In;
  using Flag = typename V::Mask;
  static constexpr int inputs = 2;
  static constexpr int outputs = 1;
  static constexpr int unroll = 1;

  static int32_t callout(const In* a, const In* b, In* r) { return pow_callout(a, b, r); }
};

// log*y with a tail that is small, but may be more than half a unit of the head.
ORBA_INLINE Pair<F64> exponent_pair(Pair<F64> log, F64 y) {
  const Pair<F64> product = two_product(log.hi, y);
  return {product.hi, mul_add(log.lo, y, product.lo)};
}

template <class Log, int rows, const auto& series>
struct PowFull : PowBase<F64> {
  ORBA_INLINE static F64 eval(F64 x, F64 y, M64& flag) {
    const LogReduction<Log, F64> reduction(x);
    const Pair<F64> w =
        exponent_pair(log_pair_sum<Log>(reduction.log(), reduction.excess_of(x)), y);
    // Without FMA the tail is NaN where y has no head.
    flag = flag | reduction.special() | exp_special(kFused ? w.hi : w.hi + w.lo);
    const ExpQuotient<F64, rows> k(w.hi);
    const Pair<F64> r = k.remainder(w.hi);
    return exp_full<series>(k, r.hi + (r.lo + w.lo));
  }
};

// y*ln(x) in one word, and the exponential of that.
template <class Log, class V>
ORBA_INLINE V short_product(const LogReduction<Log, V>& reduction, V x, V y) {
  return y * log_sum_ep<Log>(reduction.rounded_log(), reduction.excess_of(x));
}
template <int rows, const auto& series, class V>
ORBA_INLINE V short_exp(V w) {
  const ExpQuotient<V, rows> k(w);
  const V r = k.short_remainder(w);
  return k.times_power(k.row_head(), r * horner(r, series));
}

template <class V, class Log, int rows, const auto& series>
struct PowShort : PowBase<V> {
  ORBA_INLINE static V eval(V x, V y, typename V::Mask& flag) {
    const LogReduction<Log, V> reduction(x);
    const V w = short_product<Log>(reduction, x, y);
    flag = flag | reduction.special() | exp_special(w);
    return short_exp<rows, series>(w);
  }
};

// Single precision in double.
template <class Log, int rows, const auto& series>
struct PowInDouble : PowBase<F32> {
  ORBA_INLINE static F32 eval(F32 x, F32 y, M32& flag) {
    const F64 low = product(widen_low(x), widen_low(y));
    const F64 high = product(widen_high(x), widen_high(y));
    flag = flag | not_positive_normal(x) | exp_special(narrow(low, high));
    return narrow(short_exp<rows, series>(low), short_exp<rows, series>(high));
  }

 private:
  ORBA_INLINE static F64 product(F64 x, F64 y) {
    return short_product<Log>(LogReduction<Log, F64>(x), x, y);
  }
};

// The same with what is exact, and what is small, in single: the reduction of x and the exponential.
template <class Log, int rows, const auto& series>
struct PowWidened : PowBase<F32> {
  ORBA_INLINE static F32 eval(F32 x, F32 y, M32& flag) {
    const LogReduction<Log, F32> reduction(x);
    const Pair<F32> log = reduction.log();
    const F32 e = reduction.excess_of(x);
    const F64 low = product(widen_low(log.hi), widen_low(log.lo), widen_low(e), widen_low(y));
    const F64 high = product(widen_high(log.hi), widen_high(log.lo), widen_high(e), widen_high(y));
    const F32 w = narrow(low, high);
    flag = flag | reduction.special() | exp_special(w);
    const ExpQuotient<F32, rows> k(w);
    const F64 ln2 = kExpLn2;
    return exp_full<series>(k, narrow(neg_mul_add(widen_low(k.value), ln2, low),
                                      neg_mul_add(widen_high(k.value), ln2, high)));
  }

 private:
  ORBA_INLINE static F64 product(F64 log_hi, F64 log_lo, F64 e, F64 y) {
    return y * mul_add(e, in_pairs(e, e * e, Log::series), log_hi + log_lo);
  }
};

#if ORBA_CLASS == 5
using PowHa = PowFull<FactorLogThirtySeconds, 16, kExpm1Series16>;
using PowLa = PowFull<FactorLogThirtySecondsLa, 16, kExpSeries16>;
using PowEp = PowShort<F64, FactorLogSixteenths, 16, kExpShortSeries16>;
using PowSingle = PowInDouble<FactorLogSixteenths, 16, kExpShortSeries16>;
using PowSingleEp = PowShort<F32, FactorLogSingleEp, 16, kExpShortSeries16F>;
#else
using PowHa = PowFull<FactorLog128, 64, kExpSeries64>;
using PowEp = PowShort<F64, FactorLog128, 64, kExpShortSeries64>;
#  if ORBA_CLASS == 3
using PowSingle = PowWidened<FactorLogSingle, 8, kExpSeries8F>;
using PowSingleEp = PowShort<F32, FactorLogSingleEp, 8, kExpm1ShortSeries8F>;
#  else
using PowSingle = PowInDouble<FactorLog128, 64, kExpm1ShortSeries64>;
#  endif
#endif

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
