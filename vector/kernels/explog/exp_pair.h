// The pair e^a and e^-a from one reduction, for functions made of their sum and difference:
//
//   cosh a = (up + down)*cosh r + (up - down)*sinh r,    a = (k/rows)*ln2 + r, |r| <= ln2/(2*rows),
//   sinh a = (up - down)*cosh r + (up + down)*sinh r     up = 2^(k/rows)/2, down = 2^(-k/rows)/2
//
//   rows    from the tables of e^x, with tails; the terms beyond up +- down and r are so small that
//           nothing but the last rounding touches the result
//   powers  no table but powers of two: the product with r is exact, and so is its sum with
//           up +- down as a head and a tail; the terms beyond are up to a seventh of the result
//   short   the same to half precision, without tails
//
// At r = a all three are the series of sinh and cosh themselves.
#pragma once

#include "vector/kernels/explog/exp_kernel.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// (sinh r)/r - 1 and cosh r - 1 in r^2, from the first coefficient on.
template <class V, int rows>
struct ExpPairSeries;
template <>
struct ExpPairSeries<F64, 1> {
  static constexpr auto& sinh = kSinhSeries;
  static constexpr auto& cosh = kCoshSeries;
  static constexpr auto& sinh_short = kSinhShortSeries;
  static constexpr auto& cosh_short = kCoshShortSeries;
  static constexpr auto& sinh_short_in_cosh = kSinhShortSeriesInCosh;
};
template <>
struct ExpPairSeries<F64, 16> {
  static constexpr auto& sinh = kSinhSeries16;
  static constexpr auto& cosh = kCoshSeries16;
};
template <>
struct ExpPairSeries<F64, 64> : ExpPairSeries<F64, 16> {};
template <>
struct ExpPairSeries<F32, 1> {
  static constexpr auto& sinh = kSinhSeriesF;
  static constexpr auto& cosh = kCoshSeriesF;
  static constexpr auto& sinh_short = kSinhShortSeriesF;
  static constexpr auto& cosh_short = kCoshShortSeriesF;
  static constexpr auto& sinh_short_in_cosh = kSinhShortSeriesF;
};
template <>
struct ExpPairSeries<F32, 16> {
  static constexpr auto& sinh = kSinhSeries16F;
  static constexpr auto& cosh = kCoshSeries16F;
};

// r, sinh r - r.hi and cosh r - 1.
template <class V>
struct ExpPairTerms {
  Pair<V> r;
  V odd, even;
};
template <class V, int rows>
ORBA_INLINE ExpPairTerms<V> exp_pair_terms(const ExpQuotient<V, rows>& k, V a) {
  using S = ExpPairSeries<V, rows>;
  const Pair<V> r = k.remainder(a);
  const V sum = r.hi + r.lo;
  const V z = sum * sum;
  return {r, mul_add(sum * z, horner(z, S::sinh), r.lo), z * horner(z, S::cosh)};
}

// up and down, normal for a up to 707.7 (single precision: 86.6).
template <class V>
struct ExpHalfPowers {
  V up, down;
};
template <class V>
ORBA_INLINE V half_of_power(V power) {
  constexpr int fraction_bits = ExpConstants<V>::fraction_bits;
  return as_float(as_bits(power) - shl<fraction_bits>(typename V::Bits(1)));
}
template <class V>
ORBA_INLINE ExpHalfPowers<V> exp_half_powers(const ExpQuotient<V, 1>& k) {
  const auto one_half = as_bits(V(0.5f)), steps = shl<ExpQuotient<V, 1>::shift>(k.bits());
  return {as_float(one_half + steps), as_float(one_half - steps)};
}

// The factors of cosh r and of sinh r, and what rounding takes off the former.
enum class ExpPairFunction { kSinh, kCosh };
template <class V>
struct ExpPairFactors {
  V of_cosh, of_sinh;
};
template <ExpPairFunction f, class V>
ORBA_INLINE ExpPairFactors<V> exp_pair_factors(ExpHalfPowers<V> p) {
  if constexpr (f == ExpPairFunction::kSinh) return {p.up - p.down, p.up + p.down};
  return {p.up + p.down, p.up - p.down};
}
template <ExpPairFunction f, class V>
ORBA_INLINE V exp_pair_rounding(ExpHalfPowers<V> p, V factor) {
  if constexpr (f == ExpPairFunction::kSinh) return (p.up - factor) - p.down;
  return (p.up - factor) + p.down;
}

// sinh a or cosh a for a >= 0 as a head and a tail, not yet added; of 16 rows at least. Where both are
// asked for, what they share is computed once.
template <ExpPairFunction f, int rows, class V>
ORBA_INLINE Pair<V> sinh_or_cosh_by_rows(V a) {
  const ExpQuotient<V, rows> k(a), minus_k = k.negated();
  const ExpPairTerms<V> t = exp_pair_terms(k, a);
  const Pair<V> up = k.row(), down = minus_k.row();
  const ExpHalfPowers<V> p = {half_of_power(k.power(up.hi)), half_of_power(minus_k.power(down.hi))};
  const ExpPairFactors<V> factor = exp_pair_factors<f>(p);
  V head = factor.of_cosh;
  V tail = mul_add(p.up, up.lo, exp_pair_rounding<f>(p, head));
  if constexpr (f == ExpPairFunction::kSinh) {
    // r may be half as large as the head: r itself is added exactly, then what the factor of sinh r is
    // off 1, in which the tails count too.
    const V down_tail = p.down * down.lo;
    const V of_sinh_less_one =
        ((p.up - V(0.5f)) + (p.down - V(0.5f))) + mul_add(p.up, up.lo, down_tail);
    const Pair<V> leading = fast_two_sum(head, t.r.hi);
    head = leading.hi;
    tail = mul_add(of_sinh_less_one, t.r.hi, (tail - down_tail) + leading.lo);
  } else {
    tail = mul_add(factor.of_sinh, t.r.hi, mul_add(p.down, down.lo, tail));
  }
  return {head, mul_add(factor.of_cosh, t.even, mul_add(factor.of_sinh, t.odd, tail))};
}

// The same for classes with FMA.
template <ExpPairFunction f, class V>
ORBA_INLINE Pair<V> sinh_or_cosh_by_powers(V a) {
  const ExpQuotient<V, 1> k(a);
  const ExpPairTerms<V> t = exp_pair_terms(k, a);
  const ExpHalfPowers<V> p = exp_half_powers(k);
  const ExpPairFactors<V> factor = exp_pair_factors<f>(p);
  const V head = mul_add(factor.of_sinh, t.r.hi, factor.of_cosh);
  const V tail = mul_add(factor.of_sinh, t.r.hi, factor.of_cosh - head) +
                 exp_pair_rounding<f>(p, factor.of_cosh);
  return {head, mul_add(factor.of_cosh, t.even, mul_add(factor.of_sinh, t.odd, tail))};
}

// In cosh a the term of sinh r is half of the result at most, so that fewer coefficients do.
template <ExpPairFunction f, class V>
ORBA_INLINE V short_sinh_or_cosh(V a) {
  using S = ExpPairSeries<V, 1>;
  const ExpQuotient<V, 1> k(a);
  const V r = k.short_remainder(a);
  const V z = r * r;
  const V cosh = mul_add(z, horner(z, S::cosh_short), V(1.0f));
  const V odd =
      f == ExpPairFunction::kSinh ? horner(z, S::sinh_short) : horner(z, S::sinh_short_in_cosh);
  const V sinh = mul_add(r * z, odd, r);
  const ExpPairFactors<V> factor = exp_pair_factors<f>(exp_half_powers(k));
  return mul_add(factor.of_cosh, cosh, factor.of_sinh * sinh);
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
