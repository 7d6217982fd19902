// The natural logarithm as a pair, for callouts here and for what multiplies or subtracts
// logarithms: powers, inverse hyperbolic and complex functions.
#pragma once

#include "vector/kernels/explog/log_reduction.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// e - e^2/2 for |e| < 1/16.
ORBA_INLINE Pair<F64> log_lead(F64 e) {
  if constexpr (kFused) {
    const F64 half = -0.5 * e;
    const F64 sum = mul_add(half, e, e);
    return {sum, mul_add(half, e, e - sum)};
  }
  const Pair<F64> square = two_product(e, e);
  const Pair<F64> sum = fast_two_sum(e, -0.5 * square.hi);
  return {sum.hi, sum.lo - 0.5 * square.lo};
}

// log + ln(1 + e) for |log.hi| >= 2|e| or 0, of a reduction by the data: relative error that of the
// data's polynomial and table, and 2^-52 of the cubic term.
template <class Data>
ORBA_INLINE Pair<F64> log_pair_sum(Pair<F64> log, F64 e) {
  const F64 square = e * e;
  const F64 tail = mul_add(square * e, even_odd<1>(e, square, Data::series), log.lo);
  const Pair<F64> lead = log_lead(e);
  const Pair<F64> sum = fast_two_sum(log.hi, lead.hi);
  return fast_two_sum(sum.hi, (sum.lo + lead.lo) + tail);
}

// ln(x * 2^k), x positive and normal. Relative error below 2^-65, which the polynomial and, in the
// rows next to 1, the tails of the table use up; 2^-70 of results above 1.
ORBA_INLINE Pair<F64> log_pair(F64 x, double k = 0) {
  const LogReduction<LogNatural256, F64> reduction(x);
  return log_pair_sum<LogNatural256>(reduction.log(k), reduction.excess_of(x));
}

// ln(x) for any positive finite number.
ORBA_INLINE Pair<double> log_pair(double x) {
  const bool denormal = x < pow2(-1022);
  const Pair<F64> log = log_pair(F64(denormal ? x * pow2(60) : x), denormal ? -60 : 0);
  return {first_lane(log.hi), first_lane(log.lo)};
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
