// The logarithms' common ground. Argument reduction (P. T. P. Tang, ACM TOMS 16, 1990):
//
//   log(x) = -log(c) + log(1 + e),   e = c*x - 1,
//
// c a number of few bits near 1/x, so that e is exact; log(c) comes from a table, as a head of so
// few bits that its sum with a multiple of log(2) is exact too, and a tail. Around x = 1 head and
// tail vanish and log(1 + e) alone carries the relative accuracy.
//
//   ReciprocalReduction   class 5 and, in single precision, class 3: c is the hardware's approximate
//                         reciprocal rounded to 5 bits; 16 rows, in registers; |e| < 0.0304
//   CellReduction         double on the others: the upper 8 bits of the significand pick c, of 9
//                         bits, and its logarithm; 256 rows in memory; |e| < 0.003
//
// Errors of the full sum: half a unit for the last addition, the polynomial's and those of terms
// below 2^-5 of the result; together under 0.53 ULP.
#pragma once

#include "vm/kernels/explog/log_polynomials.h"
#include "vm/kernels/explog/log_tables.h"
#include "vm/kernels/simd/exponent.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// What belongs to a base: logarithms of 2 and of e, tables and polynomials. In base 10 the argument
// of the polynomial has to be scaled, by log10(e).
struct Natural {
  static constexpr bool scaled = false;
  static constexpr auto& cells = kLnCells;
  static constexpr auto& cell_series = kLnCell;
  static constexpr auto& cell_series_ep = kLnCellEp;
  ORBA_INLINE static constexpr const auto& rows(F64) { return kLnOfReciprocal; }
  ORBA_INLINE static constexpr const auto& rows(F32) { return kLnOfReciprocalF; }
  ORBA_INLINE static constexpr const auto& series(F64) { return kLnReciprocal; }
  ORBA_INLINE static constexpr const auto& series(F32) { return kLnReciprocalF; }
  ORBA_INLINE static constexpr const auto& series_ep(F64) { return kLnReciprocalEp; }
  ORBA_INLINE static constexpr const auto& series_ep(F32) { return kLnReciprocalEpF; }
  ORBA_INLINE static Pair<F64> log_2(F64) { return {kLnOf2[0], kLnOf2[1]}; }
  ORBA_INLINE static Pair<F32> log_2(F32) { return {kLnOf2F[0], kLnOf2F[1]}; }
};
struct Decimal {
  static constexpr bool scaled = true;
  static constexpr auto& cells = kLog10Cells;
  static constexpr auto& cell_series = kLog10Cell;
  static constexpr auto& cell_series_ep = kLog10CellEp;
  ORBA_INLINE static constexpr const auto& rows(F64) { return kLog10OfReciprocal; }
  ORBA_INLINE static constexpr const auto& rows(F32) { return kLog10OfReciprocalF; }
  ORBA_INLINE static constexpr const auto& series(F64) { return kLog10Reciprocal; }
  ORBA_INLINE static constexpr const auto& series(F32) { return kLog10ReciprocalF; }
  ORBA_INLINE static constexpr const auto& series_ep(F64) { return kLog10ReciprocalEp; }
  ORBA_INLINE static constexpr const auto& series_ep(F32) { return kLog10ReciprocalEpF; }
  ORBA_INLINE static Pair<F64> log_2(F64) { return {kLog10Of2[0], kLog10Of2[1]}; }
  ORBA_INLINE static Pair<F32> log_2(F32) { return {kLog10Of2F[0], kLog10Of2F[1]}; }
  ORBA_INLINE static Pair<F64> log_e(F64) { return {kLog10OfE[0], kLog10OfE[1]}; }
  ORBA_INLINE static Pair<F32> log_e(F32) { return {kLog10OfEF[0], kLog10OfEF[1]}; }
};

// A reduction answers for the argument x of its constructor
//
//   excess(x)        e = c*x - 1
//   scaled(part)     c*part, for a part of the argument that x left out
//   exponent()       of c
//   log(exponent)    -log(c), in two words; the caller may have added to the exponent
//   series()         polynomials of log(1 + e) for the range of e: the full one from degree 2 on,
//   series_ep()      that of EP from degree 1 on

#if ORBA_CLASS >= 3
// Normal x below 2^1022 (single: 2^126), whose reciprocals are normal.
template <class Base, class V>
class ReciprocalReduction {
 public:
  ORBA_INLINE explicit ReciprocalReduction(V x) : c_(rounded(approx_recip(x))) {}

  ORBA_INLINE V excess(V x) const { return mul_sub(c_, x, V(1)); }
  ORBA_INLINE V scaled(V part) const { return c_ * part; }
  ORBA_INLINE V exponent() const { return ORBA_CLASS_NAMESPACE::exponent(c_); }
  ORBA_INLINE Pair<V> log(V exponent) const {
    const Pair<V> row = lookup(Base::rows(V()), shr<index_shift>(as_bits(c_)));
    const Pair<V> log_2 = Base::log_2(V());
    return {neg_mul_add(exponent, log_2.hi, row.hi), neg_mul_add(exponent, log_2.lo, row.lo)};
  }
  ORBA_INLINE static constexpr const auto& series() { return Base::series(V()); }
  ORBA_INLINE static constexpr const auto& series_ep() { return Base::series_ep(V()); }

 private:
  static constexpr int index_shift = sizeof(typename V::Element) == 8 ? 48 : 19;

  // To 5 bits.
  ORBA_INLINE static F64 rounded(F64 y) {
    constexpr int64_t unit = int64_t{1} << index_shift;
    return as_float((as_bits(y) + I64(unit / 2)) & I64(-unit));
  }
  ORBA_INLINE static F32 rounded(F32 y) {
    constexpr int32_t unit = int32_t{1} << index_shift;
    return as_float((as_bits(y) + I32(unit / 2)) & I32(-unit));
  }

  V c_;
};
#endif

// Normal x.
template <class Base>
class CellReduction {
 public:
  ORBA_INLINE explicit CellReduction(F64 x) {
    constexpr int64_t one = 0x3ff0000000000000, exponent_field = 0x7ff0000000000000;
    constexpr int index_shift = 44;
    shifted_ = as_bits(x) + I64(int64_t{1} << (index_shift - 1));
    scale_ = (shifted_ & I64(exponent_field)) - I64(one);
    const Pair<F64> row = lookup(Base::cells, shr<index_shift>(shifted_));
    constexpr int64_t upper_24_bits = static_cast<int64_t>(0xffffff0000000000);
    c_ = as_bits(row.lo) & I64(upper_24_bits);
    log_ = {row.hi, as_float(shl<24>(as_bits(row.lo)))};
  }

  ORBA_INLINE F64 excess(F64 x) const {
    const F64 m = as_float(as_bits(x) - scale_), c = as_float(c_);
    if constexpr (kFused) return mul_sub(c, m, F64(1));
    const F64 m_head = as_float(as_bits(m) & I64(-1024));  // times c it has 52 bits
    return (c * m_head - 1.0) + c * (m - m_head);
  }
  ORBA_INLINE F64 scaled(F64 part) const { return as_float(c_ - scale_) * part; }
  ORBA_INLINE F64 exponent() const { return negate(ORBA_CLASS_NAMESPACE::exponent(as_float(shifted_))); }
  ORBA_INLINE Pair<F64> log(F64 exponent) const {
    const Pair<F64> log_2 = Base::log_2(F64());
    return {neg_mul_add(exponent, log_2.hi, log_.hi), neg_mul_add(exponent, log_2.lo, log_.lo)};
  }
  ORBA_INLINE static constexpr const auto& series() { return Base::cell_series; }
  ORBA_INLINE static constexpr const auto& series_ep() { return Base::cell_series_ep; }

 private:
  I64 shifted_, scale_, c_;
  Pair<F64> log_;
};

#if ORBA_CLASS == 5
template <class Base, class V>
using Reduction = ReciprocalReduction<Base, V>;
#elif ORBA_CLASS == 3
template <class Base, class V> struct ReductionOf { using Type = CellReduction<Base>; };
template <class Base> struct ReductionOf<Base, F32> { using Type = ReciprocalReduction<Base, F32>; };
template <class Base, class V>
using Reduction = typename ReductionOf<Base, V>::Type;
#else
template <class Base, class V>
using Reduction = CellReduction<Base>;
#endif

template <class V, class C, int n>
ORBA_INLINE V horner(V x, const C (&c)[n]) {
  V sum = c[n - 1];
  ORBA_UNROLL
  for (int i = n - 2; i >= 0; --i) sum = mul_add(sum, x, V(c[i]));
  return sum;
}

// -log(c) + log(1 + e) to full accuracy.
template <class Base, class V, class C, int n>
ORBA_INLINE V full_sum(Pair<V> log_c, V e, const C (&series)[n]) {
  const V q = horner(e, series);
  V sum, error, tail;
  if constexpr (Base::scaled) {
    const Pair<V> log_e = Base::log_e(V());
    tail = mul_add(e, mul_add(e, q, log_e.lo), log_c.lo);
    if constexpr (kFused) {
      sum = mul_add(e, log_e.hi, log_c.hi);
      error = mul_add(e, log_e.hi, log_c.hi - sum);
    } else {
      const Pair<V> lead = two_product(e, log_e.hi);
      sum = log_c.hi + lead.hi;
      error = (lead.hi - (sum - log_c.hi)) + lead.lo;
    }
  } else {
    tail = mul_add(e, e * q, log_c.lo);
    sum = log_c.hi + e;
    error = e - (sum - log_c.hi);
  }
  return sum + (error + tail);
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
