// Shared by Exp and Expm1: reduction, table, series, and the scalar function behind the callouts.
//
//   x = (k/rows)*ln2 + r,  |r| <= ln2/(2*rows),  e^x = 2^(k/rows) * e^r
//
// 2^(j/rows), j = k mod rows, comes from a table as head*(1 + tail) (P. T. P. Tang, ACM TOMS 15,
// 1989). Coefficients and their error bounds: exp_coefficients.h.
#pragma once

#include "vector/kernels/contract/kernel.h"
#include "vector/kernels/contract/scalar.h"
#include "vector/kernels/explog/exp_coefficients.h"
#include "vector/kernels/explog/exp_tables.h"
#include "vector/kernels/simd/lookup.h"
#include "vector/kernels/simd/polynomial.h"
#include "vector/tables/tables.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Constants of the reduction. By FMA x - q*ln2 is exact for the multiple q of 1/rows nearest to
// x/ln2: it is a multiple of the last place of ln2/rows, and below 2^53 (2^24) of them. Without FMA
// the product has to be exact by itself: ln2_short leaves room for the bits of q.
template <class V>
struct ExpConstants;
template <>
struct ExpConstants<F64> {
  static constexpr int fraction_bits = 52;
  static constexpr double shifter = 0x1.8p52;
  static constexpr double log2e = kExpLog2E;
  static constexpr double ln2 = kExpLn2, ln2_tail = kExpLn2Tail;
  static constexpr double ln2_short = kExpLn2Short, ln2_short_tail = kExpLn2ShortTail;
};
template <>
struct ExpConstants<F32> {
  static constexpr int fraction_bits = 23;
  static constexpr float shifter = 0x1.8p23f;
  static constexpr float log2e = kExpLog2EF;
  static constexpr float ln2 = kExpLn2F, ln2_tail = kExpLn2TailF;
  static constexpr float ln2_short = kExpLn2ShortF, ln2_short_tail = kExpLn2ShortTailF;
};

// 2^(j/rows), heads and tails, and heads alone.
template <class V, int rows>
struct Exp2Rows;
template <>
struct Exp2Rows<F64, 16> {
  static constexpr auto& pairs = kExp2Pairs16;
  static constexpr auto& heads = kExp2Heads16;
};
template <>
struct Exp2Rows<F64, 64> {
  static constexpr auto& pairs = vector::kExp2Pairs64;
  static constexpr auto& heads = vector::kExp2Heads64;
};
template <>
struct Exp2Rows<F32, 8> {
  static constexpr auto& pairs = kExp2Pairs8F;
  static constexpr auto& heads = kExp2Heads8F;
};
template <>
struct Exp2Rows<F32, 16> {
  static constexpr auto& pairs = kExp2Pairs16F;
  static constexpr auto& heads = kExp2Heads16F;
};
template <>
struct Exp2Rows<F32, 64> {
  static constexpr auto& pairs = vector::kExp2Pairs64F;
  static constexpr auto& heads = vector::kExp2Heads64F;
};

// k/rows, rounded to nearest by a constant whose unit is 1/rows; the sum's low bits are k.
template <class V, int rows>
struct ExpQuotient {
  using Rows = Exp2Rows<V, rows>;
  static constexpr int shift = ExpConstants<V>::fraction_bits - __builtin_ctz(rows);

  V shifted, value;
  ORBA_INLINE explicit ExpQuotient(V x) {
    const V shifter(ExpConstants<V>::shifter / rows);
    shifted = mul_add(x, V(ExpConstants<V>::log2e), shifter);
    value = shifted - shifter;
  }
  // That of -x.
  ORBA_INLINE ExpQuotient negated() const {
    ExpQuotient k;
    k.shifted = V(2 * ExpConstants<V>::shifter / rows) - shifted;
    k.value = negate(value);
    return k;
  }
  ORBA_INLINE typename V::Bits bits() const { return as_bits(shifted); }
  ORBA_INLINE Pair<V> row() const { return lookup(Rows::pairs, bits()); }
  ORBA_INLINE V row_head() const { return lookup(Rows::heads, bits()); }

  // x less value*ln2: an exact difference from the head of ln2, and the product with its tail.
  ORBA_INLINE Pair<V> remainder(V x) const {
    using C = ExpConstants<V>;
    return {neg_mul_add(value, V(kFused ? C::ln2 : C::ln2_short), x),
            value * V(kFused ? -C::ln2_tail : -C::ln2_short_tail)};
  }
  // The same rounded once.
  ORBA_INLINE V rounded_remainder(V x) const {
    using C = ExpConstants<V>;
    return neg_mul_add(value, V(kFused ? C::ln2_tail : C::ln2_short_tail),
                       neg_mul_add(value, V(kFused ? C::ln2 : C::ln2_short), x));
  }
  // The same with ln2 in one word: absolute error |x| 2^-53 (2^-24).
  ORBA_INLINE V short_remainder(V x) const {
    return neg_mul_add(value, V(ExpConstants<V>::ln2), x);
  }

  // 2^(k/rows) from the head of the row. It has to be normal.
  ORBA_INLINE V power(V head) const { return as_float(as_bits(head) + shl<shift>(bits())); }
  // 2^(k/rows) * (1 + p). Without FMA the product with p could be denormal although the result is
  // not, so the power of two comes in last.
  ORBA_INLINE V times_power(V head, V p) const {
    if constexpr (kFused) {
      const V scale = power(head);
      return mul_add(scale, p, scale);
    }
    const auto row = bits() & typename V::Bits(rows - 1);
    const V t = as_float(as_bits(head) + shl<shift>(row));
    return as_float(as_bits(mul_add(t, p, t)) + shl<shift>(bits() - row));
  }

 private:
  ExpQuotient() = default;
};

// 2^(k/rows) * e^r in full, with the coefficients of (e^r - 1 - r)/r^2. Of an argument given as a
// pair the tail goes into r.
template <const auto& series, class V, int rows>
ORBA_INLINE V exp_full(const ExpQuotient<V, rows>& k, V r) {
  const Pair<V> row = k.row();
  const V r2 = r * r;
  return k.times_power(row.hi, mul_add(r2, in_pairs(r, r2, series), row.lo) + r);
}

// Lanes for the callout: |x| above 707.703 on class 5, from 708.396 (by the high word) on the
// others, above 87.3365 in single precision; NaN too. The results of all other lanes are normal.
ORBA_INLINE M64 exp_special(F64 x) {
  if constexpr (kClass == 5) return not_le(abs(x), F64(0x1.61da04cbafe44p9));
  return high_above(as_bits(abs(x)), 0x4086232a);
}
ORBA_INLINE M32 exp_special(F32 x) { return as_bits(abs(x)) > I32(0x42aeac4f); }

// The scalar e^(x.hi + x.lo) = 2^n * (head + tail), error below 2^-58 of it, for |x.hi| below 1100
// and x.lo within a few units of it.
struct ScaledExp {
  Pair<double> value;
  int n;
};
ORBA_INLINE ScaledExp scaled_exp(Pair<double> x) {
  using C = ExpConstants<F64>;
  constexpr double shifter = C::shifter / 64;
  const double shifted = x.hi * C::log2e + shifter;
  const double value = shifted - shifter;
  const int64_t k = bit_cast<int64_t>(shifted) - bit_cast<int64_t>(shifter);
  const double r = ((x.hi - value * C::ln2_short) - value * C::ln2_short_tail) + x.lo;
  const double p = mul_add(r * r, horner(r, kExpm1Series64), r);
  const int64_t j = k & 63;
  const double(&row)[2] = vector::kExp2Pairs64[j];
  const double head = bit_cast<double>(bit_cast<int64_t>(row[0]) + (j << 46));
  return {{head, (p + row[1]) * head}, static_cast<int>(k >> 6)};
}

// Above `overflow` e^x is infinite, below `denormal` denormal, below `lowest` zero.
template <class E>
struct ExpBounds;
template <>
struct ExpBounds<double> {
  static constexpr double overflow = kExpOverflow, denormal = kExpDenormal, lowest = kExpLowest;
};
template <>
struct ExpBounds<float> {
  static constexpr float overflow = kExpOverflowF, denormal = kExpDenormalF, lowest = kExpLowestF;
};

ORBA_COLD int32_t exp_callout(const double* a, double* r) {
  const double x = *a;
  if (is_nan_or_inf(x)) {
    *r = x < 0 ? 0.0 : x * x;
    return kOk;
  }
  if ((bit_cast<uint64_t>(x) >> 52 & 0x7ff) < 971) {  // |x| < 2^-52
    *r = 1.0 + x;
    return kOk;
  }
  if (x > ExpBounds<double>::overflow) {
    *r = opaque(pow2(1023)) * pow2(1023);
    return kOverflow;
  }
  if (x < ExpBounds<double>::lowest) {
    *r = opaque(pow2(-1022)) * pow2(-1022);
    return kUnderflow;
  }
  const ScaledExp e = scaled_exp({x, 0});
  *r = rounded(e.value, e.n);
  return x >= ExpBounds<double>::denormal ? kOk : kUnderflow;
}

ORBA_COLD int32_t exp_callout(const float* a, float* r) {
  const float x = *a;
  if (is_nan_or_inf(static_cast<double>(x))) {
    *r = x < 0 ? 0.0f : x * x;
    return kOk;
  }
  if (x > ExpBounds<float>::overflow) {
    *r = static_cast<float>(opaque(pow2(200)));
    return kOverflow;
  }
  if (x < ExpBounds<float>::lowest) {
    *r = static_cast<float>(opaque(pow2(-200)));
    return kUnderflow;
  }
  const ScaledExp e = scaled_exp({static_cast<double>(x), 0});
  *r = static_cast<float>(rounded(e.value, e.n));
  return x < ExpBounds<float>::denormal ? kUnderflow : kOk;
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
