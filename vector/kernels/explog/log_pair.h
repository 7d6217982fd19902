// The natural logarithm as a pair, for callouts here and for what multiplies or subtracts
// logarithms: powers, inverse hyperbolic and complex functions.
#pragma once

#include "vector/kernels/explog/log_reduction.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// ln(x * 2^k), x positive and normal. Relative error below 2^-65, which the polynomial and, in the
// rows next to 1, the tails of the table use up; 2^-70 of results above 1.
ORBA_INLINE Pair<F64> log_pair(F64 x, double k = 0) {
  using Data = LogNatural256;
  const LogReduction<Data, F64> reduction(x);
  const Pair<F64> log = reduction.log(k);
  const F64 e = reduction.excess_of(x);
  // e - e^2/2 + e^3*P(e) on top of the table's sum, whose head is 0 or at least 2|e|.
  const Pair<F64> z = two_product(e, e);
  const F64 cubic = z.hi * (e * even_odd<1>(e, z.hi, Data::series));
  const Pair<F64> first = fast_two_sum(log.hi, e);
  const Pair<F64> second = fast_two_sum(first.hi, -0.5 * z.hi);
  const F64 rest = (first.lo + second.lo) + (log.lo + mul_add(F64(-0.5), z.lo, cubic));
  return fast_two_sum(second.hi, rest);
}

// ln(x) for any positive finite number.
ORBA_INLINE Pair<double> log_pair(double x) {
  const bool denormal = x < pow2(-1022);
  const Pair<F64> log = log_pair(F64(denormal ? x * pow2(60) : x), denormal ? -60 : 0);
  return {first_lane(log.hi), first_lane(log.lo)};
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
