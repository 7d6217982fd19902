// The logarithms' common ground. Argument reduction (P. T. P. Tang, ACM TOMS 16, 1990):
//
//   x = 2^k * m, 1 <= m < 2,   log(x) = k*log(2) - log(c) + log(1 + e),   e = c*m - 1.
//
// The leading bits of m pick a row of a table: c, near 1/m and of so few bits that e is exact, and
// -log(c) as a head of so few bits that its sum with k times the head of log(2) is exact too, and a
// tail. In the first and the last row, on both sides of x = 1, all but log(1 + e) vanishes, which
// gives results near zero their relative accuracy; elsewhere e is at most half of the rest.
//
//             rows   where                        e below
//   double    16     class 5, in registers        1/16
//             256    the others, in memory        1/256
//   single    16     class 5, in registers        1/16
//             8      class 3, in registers        1/8
//
// Classes 0 to 2 compute single precision in double.
//
// Error of the full sum: half a unit for the last addition; polynomial, tail and the roundings of
// terms that are far below the result add less than 0.05.
#pragma once

#include "vm/kernels/explog/log_polynomials.h"
#include "vm/kernels/explog/log_tables.h"
#include "vm/kernels/simd/exponent.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// The bases. In base 10 the argument of the polynomial has to be scaled, by log10(e).
struct Natural {
  static constexpr bool scaled = false;
};
struct Decimal {
  static constexpr bool scaled = true;
};

// Tables and polynomials of a base and a type.
template <class Base, class V>
struct LogData;

#if ORBA_CLASS == 5
template <>
struct LogData<Natural, F64> {
  static constexpr auto& log_2 = kLnOf2;
  static constexpr auto& reciprocals = kReciprocals16;
  static constexpr auto& logs = kLnRows16;
  static constexpr auto& series = kLnSeries16;
  static constexpr auto& series_ep = kLnSeriesEp16;
};
template <>
struct LogData<Decimal, F64> {
  static constexpr auto& log_2 = kLog10Of2;
  static constexpr auto& log_e = kLog10OfE;
  static constexpr auto& reciprocals = kReciprocals16;
  static constexpr auto& logs = kLog10Rows16;
  static constexpr auto& series = kLog10Series16;
  static constexpr auto& series_ep = kLog10SeriesEp16;
};
template <>
struct LogData<Natural, F32> {
  static constexpr auto& log_2 = kLnOf2F;
  static constexpr auto& reciprocals = kReciprocals16F;
  static constexpr auto& logs = kLnRows16F;
  static constexpr auto& series = kLnSeries16F;
  static constexpr auto& rounded_log_2 = kLnOf2RoundedF;
  static constexpr auto& rounded_logs = kLnRounded16F;
  static constexpr auto& series_ep = kLnSeriesEp16F;
};
template <>
struct LogData<Decimal, F32> {
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
template <>
struct LogData<Natural, F64> {
  static constexpr auto& log_2 = kLnOf2;
  static constexpr auto& logs = kLnRows256;
  static constexpr auto& series = kLnSeries256;
  static constexpr auto& series_ep = kLnSeriesEp256;
};
template <>
struct LogData<Decimal, F64> {
  static constexpr auto& log_2 = kLog10Of2;
  static constexpr auto& log_e = kLog10OfE;
  static constexpr auto& logs = kLog10Rows256;
  static constexpr auto& series = kLog10Series256;
  static constexpr auto& series_ep = kLog10SeriesEp256;
};
template <>
struct LogData<Natural, F32> {
  static constexpr auto& log_2 = kLnOf2F;
  static constexpr auto& reciprocals = kReciprocals8F;
  static constexpr auto& logs = kLnRows8F;
  static constexpr auto& series = kLnSeries8F;
  static constexpr auto& rounded_log_2 = kLnOf2RoundedF;
  static constexpr auto& rounded_logs = kLnRounded8F;
  static constexpr auto& series_ep = kLnSeriesEp8F;
};
template <>
struct LogData<Decimal, F32> {
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

template <int n, class E>
constexpr int row_bits(const PairTable<E, n>&) {
  return __builtin_ctz(n);
}

// c*x - 1, exact when its bits fit in. Without FMA x is cut so that the product with c does.
ORBA_INLINE F64 excess(F64 c, F64 x) {
  if constexpr (kFused) return mul_sub(c, x, F64(1));
  const F64 head = as_float(as_bits(x) & I64(-1024));
  return (c * head - 1.0) + c * (x - head);
}
ORBA_INLINE F32 excess(F32 c, F32 x) { return mul_sub(c, x, F32(1)); }

// The reduction of a normal x.
template <class Base, class V>
class LogReduction {
 public:
  using Data = LogData<Base, V>;

  ORBA_INLINE explicit LogReduction(V x) : k_(exponent(x)), index_(shr<shift>(as_bits(x))) {
    if constexpr (packed) {
      const Pair<V> row = lookup(Data::logs, index_);
      constexpr int64_t upper_24_bits = static_cast<int64_t>(0xffffff0000000000);
      c_ = as_float(as_bits(row.lo) & I64(upper_24_bits));
      log_ = {row.hi, as_float(shl<24>(as_bits(row.lo)))};
    } else {
      c_ = lookup(Data::reciprocals, index_);
      log_ = lookup(Data::logs, index_);
    }
  }

  ORBA_INLINE V c() const { return c_; }

  // (k - shift)*log(2) - log(c), in two words and, for EP, in one.
  ORBA_INLINE Pair<V> log(V k_shift) const { return log_at(k_ - k_shift); }
  ORBA_INLINE Pair<V> log() const { return log_at(k_); }
  ORBA_INLINE V rounded_log() const {
    if constexpr (wide)
      return mul_add(k_, V(Data::log_2[0]), log_.hi);
    else
      return mul_add(k_, V(Data::rounded_log_2), lookup(Data::rounded_logs, index_));
  }

 private:
  static constexpr bool wide = sizeof(typename V::Element) == 8;
  static constexpr bool packed = wide && kClass != 5;
  static constexpr int shift = (wide ? 52 : 23) - row_bits(Data::logs);

  ORBA_INLINE Pair<V> log_at(V k) const {
    return {mul_add(k, V(Data::log_2[0]), log_.hi), mul_add(k, V(Data::log_2[1]), log_.lo)};
  }

  V k_, c_;
  typename V::Bits index_;
  Pair<V> log_;
};

template <class V, class C, int n>
ORBA_INLINE V horner(V x, const C (&c)[n]) {
  V sum = c[n - 1];
  ORBA_UNROLL
  for (int i = n - 2; i >= 0; --i) sum = mul_add(sum, x, V(c[i]));
  return sum;
}

// The same as two chains in the square z of x, of half the latency.
template <class V, class C, int n>
ORBA_INLINE V even_odd(V x, V z, const C (&c)[n]) {
  V even = c[(n - 1) / 2 * 2], odd = c[(n - 2) / 2 * 2 + 1];
  ORBA_UNROLL
  for (int i = (n - 1) / 2 * 2 - 2; i >= 0; i -= 2) even = mul_add(even, z, V(c[i]));
  ORBA_UNROLL
  for (int i = (n - 2) / 2 * 2 - 1; i >= 0; i -= 2) odd = mul_add(odd, z, V(c[i]));
  return mul_add(odd, x, even);
}

// log + log(1 + e), to full accuracy; |log.hi| >= 2|e| or 0.
template <class Base, class V>
ORBA_INLINE V full_sum(Pair<V> log, V e) {
  using Data = LogData<Base, V>;
  const V z = e * e;
  const V q = even_odd(e, z, Data::series);
  V sum, error, tail;
  if constexpr (Base::scaled) {
    const V log_e = Data::log_e[0];
    tail = mul_add(z, q, mul_add(e, V(Data::log_e[1]), log.lo));
    if constexpr (kFused) {
      sum = mul_add(e, log_e, log.hi);
      error = mul_add(e, log_e, log.hi - sum);  // the difference is exact, or nearly all of the sum
    } else {
      const Pair<V> lead = two_product(e, log_e);
      sum = log.hi + lead.hi;
      error = (lead.hi - (sum - log.hi)) + lead.lo;
    }
  } else {
    tail = mul_add(z, q, log.lo);
    sum = log.hi + e;
    error = e - (sum - log.hi);
  }
  return sum + (error + tail);
}

// To half the significand.
template <class Base, class V>
ORBA_INLINE V ep_sum(V log, V e) {
  return mul_add(e, horner(e, LogData<Base, V>::series_ep), log);
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
