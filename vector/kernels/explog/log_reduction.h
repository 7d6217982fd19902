// The logarithms' common ground. Argument reduction (P. T. P. Tang, ACM TOMS 16, 1990):
//
//   log(x) = -log(c) + log(1 + e),   e = c*x - 1,
//
// c a number near 1/x, of so few bits that e is exact. -log(c) is the sum of k*log(2) for a power
// of two and the entry of a table: a head of so few bits that their sum is exact too, and a tail.
// Around x = 1, on both sides, all but log(1 + e) vanishes, which gives results near zero their
// relative accuracy; elsewhere e is at most half of the rest.
//
//             rows   c                                        where                 |e| below
//   double    16     the hardware's, rounded to 5 bits        class 5               0.0304
//             256    table, by 8 leading bits of x            0 to 3, callouts      1/256
//   single    16     the hardware's, rounded to 5 bits        class 5, Log1p        0.0304
//             16     table, by 4 leading bits of x            class 5               1/16
//             8      table, by 3 leading bits of x            class 3               1/8
//
// Tables of up to 16 rows are in registers. Classes 0 to 2 compute single precision in double.
#pragma once

#include "vector/kernels/contract/accuracy.h"
#include "vector/kernels/explog/log_coefficients.h"
#include "vector/kernels/explog/log_tables.h"
#include "vector/kernels/simd/exponent.h"
#include "vector/kernels/simd/polynomial.h"
#include "vector/tables/tables.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Where c comes from.
enum class LogReciprocal {
  kApproximate,
  kTable,
  kPacked,  // into the rows of logarithms
  kRows     // of four: logarithm in two words, c, logarithm rounded once
};

// Tables and polynomials of a base. In base 10 the argument of the polynomial has to be scaled, by
// log10(e).
struct LogNatural256 {
  static constexpr LogReciprocal reciprocal = LogReciprocal::kPacked;
  static constexpr auto& log_2 = kLnOf2;
  static constexpr auto& logs = vector::kLnRows256;
  static constexpr auto& series = kLnSeries256;
  static constexpr auto& series_ep = kLnSeriesEp256;
};
struct LogDecimal256 {
  static constexpr LogReciprocal reciprocal = LogReciprocal::kPacked;
  static constexpr auto& log_2 = kLog10Of2;
  static constexpr auto& log_e = kLog10OfE;
  static constexpr auto& logs = vector::kLog10Rows256;
  static constexpr auto& series = kLog10Series256;
  static constexpr auto& series_ep = kLog10SeriesEp256;
};
#if ORBA_CLASS == 5
struct LogNaturalSixteenths {
  static constexpr LogReciprocal reciprocal = LogReciprocal::kApproximate;
  static constexpr auto& log_2 = kLnOf2;
  static constexpr auto& logs = kLnSixteenths;
  static constexpr auto& series = kLnSeriesSixteenths;
  static constexpr auto& series_la = kLnSeriesLaSixteenths;
  static constexpr auto& series_ep = kLnSeriesEpSixteenths;
};
struct LogDecimalSixteenths {
  static constexpr LogReciprocal reciprocal = LogReciprocal::kApproximate;
  static constexpr auto& log_2 = kLog10Of2;
  static constexpr auto& log_e = kLog10OfE;
  static constexpr auto& logs = kLog10Sixteenths;
  static constexpr auto& series = kLog10SeriesSixteenths;
  static constexpr auto& series_la = kLog10SeriesLaSixteenths;
  static constexpr auto& series_ep = kLog10SeriesEpSixteenths;
};
// Log1p, which needs c for 1/x itself.
struct LogNaturalSixteenthsSingle {
  static constexpr LogReciprocal reciprocal = LogReciprocal::kApproximate;
  static constexpr auto& log_2 = kLnOf2F;
  static constexpr auto& logs = kLnSixteenthsF;
  static constexpr auto& series = kLnSeriesSixteenthsF;
  static constexpr auto& rounded_log_2 = kLnOf2RoundedF;
  static constexpr auto& rounded_logs = kLnRoundedSixteenthsF;
  static constexpr auto& series_ep = kLnSeriesEpSixteenthsF;
};
// Arguments from 1 on leave LA room for a term less: below 1 the error would come to a whole unit.
struct LogNaturalSixteenthsSingleAboveOne : LogNaturalSixteenthsSingle {
  static constexpr auto& series_la = kLnSeriesLaSixteenthsF;
};
#endif

// The hi words of singles are too short for EP, which has logarithms rounded to one word.
#if ORBA_CLASS == 5
struct LogNaturalSingle {
  static constexpr LogReciprocal reciprocal = LogReciprocal::kTable;
  static constexpr auto& log_2 = kLnOf2F;
  static constexpr auto& reciprocals = kReciprocals16F;
  static constexpr auto& logs = kLnRows16F;
  static constexpr auto& series = kLnSeries16F;
  static constexpr auto& rounded_log_2 = kLnOf2RoundedF;
  static constexpr auto& rounded_logs = kLnRounded16F;
  static constexpr auto& series_ep = kLnSeriesEp16F;
};
struct LogDecimalSingle {
  static constexpr LogReciprocal reciprocal = LogReciprocal::kTable;
  static constexpr auto& log_2 = kLog10Of2F;
  static constexpr auto& log_e = kLog10OfEF;
  static constexpr auto& reciprocals = kReciprocals16F;
  static constexpr auto& logs = kLog10Rows16F;
  static constexpr auto& series = kLog10Series16F;
  static constexpr auto& rounded_log_2 = kLog10Of2RoundedF;
  static constexpr auto& rounded_logs = kLog10Rounded16F;
  static constexpr auto& series_ep = kLog10SeriesEp16F;
};
#else
struct LogNaturalSingle {
  static constexpr LogReciprocal reciprocal = LogReciprocal::kTable;
  static constexpr auto& log_2 = kLnOf2F;
  static constexpr auto& reciprocals = kReciprocals8F;
  static constexpr auto& logs = kLnRows8F;
  static constexpr auto& series = kLnSeries8F;
  static constexpr auto& rounded_log_2 = kLnOf2RoundedF;
  static constexpr auto& rounded_logs = kLnRounded8F;
  static constexpr auto& series_ep = kLnSeriesEp8F;
};
struct LogDecimalSingle {
  static constexpr LogReciprocal reciprocal = LogReciprocal::kTable;
  static constexpr auto& log_2 = kLog10Of2F;
  static constexpr auto& log_e = kLog10OfEF;
  static constexpr auto& reciprocals = kReciprocals8F;
  static constexpr auto& logs = kLog10Rows8F;
  static constexpr auto& series = kLog10Series8F;
  static constexpr auto& rounded_log_2 = kLog10Of2RoundedF;
  static constexpr auto& rounded_logs = kLog10Rounded8F;
  static constexpr auto& series_ep = kLog10SeriesEp8F;
};
#endif

// The bases: data of the kernels of a type.
template <class Double, class Single, class V>
struct LogDataOfType {
  using Type = Double;
};
template <class Double, class Single>
struct LogDataOfType<Double, Single, F32> {
  using Type = Single;
};
struct LogNatural {
  static constexpr bool decimal = false;
#if ORBA_CLASS == 5
  template <class V>
  using Log1pData =
      typename LogDataOfType<LogNaturalSixteenths, LogNaturalSixteenthsSingle, V>::Type;
  template <class V>
  using AboveOneData =
      typename LogDataOfType<LogNaturalSixteenths, LogNaturalSixteenthsSingleAboveOne, V>::Type;
  template <class V>
  using Data = typename LogDataOfType<LogNaturalSixteenths, LogNaturalSingle, V>::Type;
#else
  template <class V>
  using Data = typename LogDataOfType<LogNatural256, LogNaturalSingle, V>::Type;
  template <class V>
  using Log1pData = Data<V>;
  template <class V>
  using AboveOneData = Data<V>;
#endif
};
struct LogDecimal {
  static constexpr bool decimal = true;
#if ORBA_CLASS == 5
  template <class V>
  using Data = typename LogDataOfType<LogDecimalSixteenths, LogDecimalSingle, V>::Type;
#else
  template <class V>
  using Data = typename LogDataOfType<LogDecimal256, LogDecimalSingle, V>::Type;
#endif
};

template <class E, int rows>
constexpr int log2_rows(const PairTable<E, rows>&) {
  return __builtin_ctz(rows);
}
template <int rows, int width>
constexpr int log2_rows(const double (&)[rows][width]) {
  return __builtin_ctz(rows);
}

// c*x - 1, exact where it fits. Without FMA x is cut so that the product with c is exact.
ORBA_INLINE F64 log_excess(F64 c, F64 x) {
  if constexpr (kFused) return mul_sub(c, x, F64(1));
  const F64 head = as_float(as_bits(x) & I64(-1024));
  return (c * head - 1.0) + c * (x - head);
}
ORBA_INLINE F32 log_excess(F32 c, F32 x) { return mul_sub(c, x, F32(1)); }

// The reduction of a normal x; where reciprocals are approximate, of an x whose rounded reciprocal
// is normal, flushed denormals or not. Others are flagged.
template <class Data, class V>
class LogReduction {
 public:
  ORBA_INLINE explicit LogReduction(V x) {
    if constexpr (Data::reciprocal == LogReciprocal::kApproximate) {
      // Rounded an estimate just below the largest number becomes infinity, one just below the
      // smallest normal number normal.
      c_ = rounded(approx_recip(x));
      special_ = not_positive_normal(c_);
      k_ = exponent(c_);
      index_ = shr<shift>(as_bits(c_));
    } else {
      special_ = not_positive_normal(x);
      k_ = exponent(x);
      index_ = shr<shift>(as_bits(x));
    }
    if constexpr (Data::reciprocal == LogReciprocal::kRows) {
      const Row<V, 4> row = lookup(Data::logs, index_);
      log_ = {row.word[0], row.word[1]};
      c_ = row.word[2];
      rounded_ = row.word[3];
      return;
    } else {
      log_ = lookup(Data::logs, index_);
    }
    if constexpr (Data::reciprocal == LogReciprocal::kTable) {
      c_ = lookup(Data::reciprocals, index_);
    } else if constexpr (Data::reciprocal == LogReciprocal::kPacked) {
      constexpr int64_t upper_24_bits = static_cast<int64_t>(0xffffff0000000000);
      c_ = as_float(as_bits(log_.lo) & I64(upper_24_bits));
      log_.lo = as_float(shl<24>(as_bits(log_.lo)));
    }
  }

  ORBA_INLINE typename V::Mask special() const { return special_; }

  // c*x - 1
  ORBA_INLINE V excess_of(V x) const {
    return log_excess(c_, Data::reciprocal == LogReciprocal::kApproximate ? x : significand(x));
  }
  // c, of which a table holds the significand, near 1/x itself.
  ORBA_INLINE V c(V x) const {
    return Data::reciprocal == LogReciprocal::kApproximate ? c_ : without_exponent(c_, x);
  }

  // -log(c), for a double also of x * 2^k_correction, in two words; for EP in one.
  ORBA_INLINE Pair<V> log() const { return log_at(k_); }
  ORBA_INLINE Pair<V> log(double k_correction) const {
    return log_at(k_ + V(static_cast<Element>(k_correction * unit)));
  }
  ORBA_INLINE V rounded_log() const {
    if constexpr (Data::reciprocal == LogReciprocal::kRows)
      return mul_add(k_, V(Data::rounded_log_2 / unit), rounded_);
    else if constexpr (requires { Data::rounded_logs; })
      return mul_add(k_, V(Data::rounded_log_2 / unit), lookup(Data::rounded_logs, index_));
    else
      return log().hi;
  }

 private:
  using Element = typename V::Element;
  static constexpr int shift = (sizeof(Element) == 8 ? 52 : 23) - log2_rows(Data::logs);
  // k is the exponent of x, or of c: that of 1/x.
  static constexpr Element unit =
      Data::reciprocal == LogReciprocal::kApproximate ? -kExponentUnit<V> : kExponentUnit<V>;

  ORBA_INLINE Pair<V> log_at(V k) const {
    return {mul_add(k, V(Data::log_2[0] / unit), log_.hi),
            mul_add(k, V(Data::log_2[1] / unit), log_.lo)};
  }
  // To 5 bits.
  ORBA_INLINE static F32 rounded(F32 y) {
    constexpr int32_t last = int32_t{1} << shift;
    return as_float((as_bits(y) + I32(last / 2)) & I32(-last));
  }
  ORBA_INLINE static F64 rounded(F64 y) {
    constexpr int64_t last = int64_t{1} << shift;
    return as_float((as_bits(y) + I64(last / 2)) & I64(-last));
  }

  typename V::Mask special_;
  V k_, c_;
  typename V::Bits index_;
  Pair<V> log_;
  V rounded_;  // of kRows alone
};

// log + log(1 + e) for |log.hi| >= 2|e| or 0.
//
//   HA   what the sum of the leading terms loses joins the tail, where the term in e^2 comes last:
//        half a unit for the last addition, less than 0.1 ULP for the rest
//   LA   what that sum loses is let go: another quarter of a unit
//   EP   one word, a short polynomial
template <class Data, Accuracy accuracy, class V>
ORBA_INLINE V log_sum(Pair<V> log, V e) {
  constexpr bool scaled = requires { Data::log_e; };
  const V z = e * e;
  V tail = log.lo;
  if constexpr (scaled) tail = mul_add(e, V(Data::log_e[1]), tail);
  if constexpr (accuracy == kHa) {
    tail = mul_add(z, e * even_odd<1>(e, z, Data::series), tail);
    tail = mul_add(z, V(Data::series[0]), tail);
  } else {
    if constexpr (requires { Data::series_la; })
      tail = mul_add(z, even_odd<0>(e, z, Data::series_la), tail);
    else
      tail = mul_add(z, even_odd<0>(e, z, Data::series), tail);
  }

  if constexpr (accuracy == kLa && scaled) return log.hi + mul_add(e, V(Data::log_e[0]), tail);
  if constexpr (accuracy == kLa) return log.hi + (e + tail);
  if constexpr (scaled && kFused) {
    const V sum = mul_add(e, V(Data::log_e[0]), log.hi);
    return sum + (mul_add(e, V(Data::log_e[0]), log.hi - sum) + tail);  // log.hi - sum is exact
  }
  V lead = e;
  if constexpr (scaled) {
    const Pair<V> product = two_product(e, V(Data::log_e[0]));
    lead = product.hi;
    tail = tail + product.lo;
  }
  const Pair<V> sum = fast_two_sum(log.hi, lead);
  return sum.hi + (sum.lo + tail);
}
template <class Data, class V>
ORBA_INLINE V log_sum_ep(V log, V e) {
  return mul_add(e, horner(e, Data::series_ep), log);
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
