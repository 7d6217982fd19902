// The logarithms' common ground. Argument reduction (P. T. P. Tang, ACM TOMS 16, 1990):
//
//   x = 2^k * m, 1 <= m < 2,   log(x) = k*log(2) - log(c) + log(1 + e),   e = c*m - 1.
//
// The leading bits of m pick a row of a table: c, near 1/m and of so few bits that e is exact, and
// -log(c) as a head of so few bits that its sum with k times the head of log(2) is exact too, and a
// tail. In the first and the last row, on both sides of x = 1, all but log(1 + e) vanishes, which
// gives results near zero their relative accuracy; elsewhere e is at most half of the rest.
//
//             rows   where                                          e below
//   double    16     class 5, in registers                          1/16
//             256    the others and the callouts, in memory         1/256
//   single    16     class 5, in registers                          1/16
//             8      class 3, in registers                          1/8
//
// Classes 0 to 2 compute single precision in double.
#pragma once

#include "vm/kernels/explog/log_polynomials.h"
#include "vm/kernels/explog/log_tables.h"
#include "vm/kernels/simd/exponent.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

enum Accuracy { kEp, kLa, kHa };

// Tables and polynomials of a base. Where there are no reciprocals, they are packed into the rows.
// In base 10 the argument of the polynomial has to be scaled, by log10(e).
struct Natural256 {
  static constexpr auto& log_2 = kLnOf2;
  static constexpr auto& logs = kLnRows256;
  static constexpr auto& series = kLnSeries256;
  static constexpr auto& series_ep = kLnSeriesEp256;
};
struct Decimal256 {
  static constexpr auto& log_2 = kLog10Of2;
  static constexpr auto& log_e = kLog10OfE;
  static constexpr auto& logs = kLog10Rows256;
  static constexpr auto& series = kLog10Series256;
  static constexpr auto& series_ep = kLog10SeriesEp256;
};
#if ORBA_CLASS == 5
struct Natural16 {
  static constexpr auto& log_2 = kLnOf2;
  static constexpr auto& reciprocals = kReciprocals16;
  static constexpr auto& logs = kLnRows16;
  static constexpr auto& series = kLnSeries16;
  static constexpr auto& series_ep = kLnSeriesEp16;
};
struct Decimal16 {
  static constexpr auto& log_2 = kLog10Of2;
  static constexpr auto& log_e = kLog10OfE;
  static constexpr auto& reciprocals = kReciprocals16;
  static constexpr auto& logs = kLog10Rows16;
  static constexpr auto& series = kLog10Series16;
  static constexpr auto& series_ep = kLog10SeriesEp16;
};
#endif

// The hi words of singles are too short for EP, which has logarithms rounded to one word.
#if ORBA_CLASS == 5
struct NaturalSingle {
  static constexpr auto& log_2 = kLnOf2F;
  static constexpr auto& reciprocals = kReciprocals16F;
  static constexpr auto& logs = kLnRows16F;
  static constexpr auto& series = kLnSeries16F;
  static constexpr auto& rounded_log_2 = kLnOf2RoundedF;
  static constexpr auto& rounded_logs = kLnRounded16F;
  static constexpr auto& series_ep = kLnSeriesEp16F;
};
struct DecimalSingle {
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
struct NaturalSingle {
  static constexpr auto& log_2 = kLnOf2F;
  static constexpr auto& reciprocals = kReciprocals8F;
  static constexpr auto& logs = kLnRows8F;
  static constexpr auto& series = kLnSeries8F;
  static constexpr auto& rounded_log_2 = kLnOf2RoundedF;
  static constexpr auto& rounded_logs = kLnRounded8F;
  static constexpr auto& series_ep = kLnSeriesEp8F;
};
struct DecimalSingle {
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

// The bases: data of the kernels of a type, and of the callouts.
template <class Double, class Single, class V>
struct DataOfType {
  using Type = Double;
};
template <class Double, class Single>
struct DataOfType<Double, Single, F32> {
  using Type = Single;
};
struct Natural {
  using CalloutData = Natural256;
#if ORBA_CLASS == 5
  template <class V>
  using Data = typename DataOfType<Natural16, NaturalSingle, V>::Type;
#else
  template <class V>
  using Data = typename DataOfType<Natural256, NaturalSingle, V>::Type;
#endif
};
struct Decimal {
  using CalloutData = Decimal256;
#if ORBA_CLASS == 5
  template <class V>
  using Data = typename DataOfType<Decimal16, DecimalSingle, V>::Type;
#else
  template <class V>
  using Data = typename DataOfType<Decimal256, DecimalSingle, V>::Type;
#endif
};

template <class E, int rows>
constexpr int row_bits(const PairTable<E, rows>&) {
  return __builtin_ctz(rows);
}

// c*x - 1, exact where it fits. Without FMA x is cut so that the product with c is exact.
ORBA_INLINE F64 excess(F64 c, F64 x) {
  if constexpr (kFused) return mul_sub(c, x, F64(1));
  const F64 head = as_float(as_bits(x) & I64(-1024));
  return (c * head - 1.0) + c * (x - head);
}
ORBA_INLINE F32 excess(F32 c, F32 x) { return mul_sub(c, x, F32(1)); }

// The reduction of a normal x.
template <class Data, class V>
class LogReduction {
 public:
  ORBA_INLINE explicit LogReduction(V x) : k_(exponent(x)), index_(shr<shift>(as_bits(x))) {
    if constexpr (packed) {
      constexpr int64_t upper_24_bits = static_cast<int64_t>(0xffffff0000000000);
      const Pair<V> row = lookup(Data::logs, index_);
      c_ = as_float(as_bits(row.lo) & I64(upper_24_bits));
      log_ = {row.hi, as_float(shl<24>(as_bits(row.lo)))};
    } else {
      c_ = lookup(Data::reciprocals, index_);
      log_ = lookup(Data::logs, index_);
    }
  }

  ORBA_INLINE V c() const { return c_; }

  // k*log(2) - log(c), for a double also with a correction of k, in two words; for EP in one.
  ORBA_INLINE Pair<V> log() const { return log_at(k_); }
  ORBA_INLINE Pair<V> log(double k_correction) const { return log_at(k_ + V(k_correction)); }
  ORBA_INLINE V rounded_log() const {
    if constexpr (requires { Data::rounded_logs; })
      return mul_add(k_, V(Data::rounded_log_2 / unit), lookup(Data::rounded_logs, index_));
    else
      return log().hi;
  }

 private:
  static constexpr bool wide = sizeof(typename V::Element) == 8;
  static constexpr bool packed = !requires { Data::reciprocals; };
  static constexpr int shift = (wide ? 52 : 23) - row_bits(Data::logs);
  static constexpr typename V::Element unit = kExponentUnit<V>;

  ORBA_INLINE Pair<V> log_at(V k) const {
    return {mul_add(k, V(Data::log_2[0] / unit), log_.hi),
            mul_add(k, V(Data::log_2[1] / unit), log_.lo)};
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

// From coefficient `first` on, in two chains in the square z of x, which halves the latency.
template <int first, class V, class C, int n>
ORBA_INLINE V even_odd(V x, V z, const C (&c)[n]) {
  constexpr int last = n - 1, last_even = last - (last - first) % 2,
                last_odd = last - (last - first + 1) % 2;
  V even = c[last_even], odd = c[last_odd];
  ORBA_UNROLL
  for (int i = last_even - 2; i >= first; i -= 2) even = mul_add(even, z, V(c[i]));
  ORBA_UNROLL
  for (int i = last_odd - 2; i >= first; i -= 2) odd = mul_add(odd, z, V(c[i]));
  return mul_add(odd, x, even);
}

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
