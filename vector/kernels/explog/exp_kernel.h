// Shared by Exp and Expm1: reduction, table, series, and the scalar function behind the callouts.
//
//   x = (k/rows)*ln2 + r,  |r| <= ln2/(2*rows),  e^x = 2^(k/rows) * e^r
//
// 2^(j/rows), j = k mod rows, comes from a table as head*(1 + tail) (P. T. P. Tang, ACM TOMS 15,
// 1989). Coefficients and error bounds: tools/coefficients/exp.sollya.
#pragma once

#include "vector/kernels/contract/kernel.h"
#include "vector/kernels/contract/scalar.h"
#include "vector/kernels/explog/exp_tables.h"
#include "vector/kernels/simd/lookup.h"
#include "vector/kernels/simd/pair_arithmetic.h"

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
  static constexpr double log2e = 0x1.71547652b82fep0;
  static constexpr double shifter = 0x1.8p52;
  static constexpr double ln2 = 0x1.62e42fefa39efp-1;
  static constexpr double ln2_tail = 0x1.abc9e3b39803fp-56;
  static constexpr double ln2_short = 0x1.62e42fefap-1;
  static constexpr double ln2_short_tail = 0x1.cf79abc9e3b3ap-40;
  static constexpr auto& rows = kExp2Rows;
};
template <>
struct ExpConstants<F32> {
  static constexpr int fraction_bits = 23;
  static constexpr float log2e = 0x1.715476p0f;
  static constexpr float shifter = 0x1.8p23f;
  static constexpr float ln2 = 0x1.62e43p-1f;
  static constexpr float ln2_tail = -0x1.05c61p-29f;
  static constexpr float ln2_short = 0x1.63p-1f;
  static constexpr float ln2_short_tail = -0x1.bd0106p-13f;
  static constexpr auto& rows = kExp2RowsSingle;
};

template <int rows>
constexpr int log2_rows = __builtin_ctz(rows);

// Adding k, shifted so that its bits above the row number meet the exponent field, to the head of
// row j leaves j in the fraction. The table's heads have that taken off beforehand.
ORBA_INLINE constexpr double without_row(double head, int64_t j, int64_t rows) {
  return bit_cast<double>(bit_cast<int64_t>(head) - (j << 52) / rows);
}
ORBA_INLINE constexpr float without_row(float head, int64_t j, int64_t rows) {
  return bit_cast<float>(bit_cast<int32_t>(head) - static_cast<int32_t>((j << 23) / rows));
}
template <class V, int rows>
constexpr auto exp2_pairs() {
  using E = typename V::Element;
  E pairs[rows][2] = {};
  for (int j = 0; j < rows; ++j) {
    const auto& row = ExpConstants<V>::rows[64 / rows * j];
    pairs[j][0] = without_row(row[0], j, rows);
    pairs[j][1] = row[1];
  }
  return PairTable<E, rows>(pairs);
}
template <class V, int rows>
constexpr auto exp2_heads() {
  Table<typename V::Element, rows> table = {};
  for (int j = 0; j < rows; ++j)
    table.row[j] = without_row(ExpConstants<V>::rows[64 / rows * j][0], j, rows);
  return table;
}
template <class V, int rows>
constexpr auto kExp2Pairs = exp2_pairs<V, rows>();
template <class V, int rows>
constexpr auto kExp2Heads = exp2_heads<V, rows>();

// k/rows, rounded to nearest by a constant whose unit is 1/rows; the sum's low bits are k.
template <class V, int rows>
struct Quotient {
  V shifted, value;
  ORBA_INLINE explicit Quotient(V x) {
    const V shifter(ExpConstants<V>::shifter / rows);
    shifted = mul_add(x, V(ExpConstants<V>::log2e), shifter);
    value = shifted - shifter;
  }
  ORBA_INLINE typename V::Bits bits() const { return as_bits(shifted); }

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
  ORBA_INLINE V power(V head) const {
    return as_float(as_bits(head) + shl<ExpConstants<V>::fraction_bits - log2_rows<rows>>(bits()));
  }
  // 2^(k/rows) * (1 + p). Without FMA the product with p could be denormal although the result is
  // not, so the power of two comes in last.
  ORBA_INLINE V times_power(V head, V p) const {
    constexpr int shift = ExpConstants<V>::fraction_bits - log2_rows<rows>;
    if constexpr (kFused) {
      const V scale = power(head);
      return mul_add(scale, p, scale);
    }
    const auto row = bits() & typename V::Bits(rows - 1);
    const V t = as_float(as_bits(head) + shl<shift>(row));
    return as_float(as_bits(mul_add(t, p, t)) + shl<shift>(bits() - row));
  }
};

// Polynomials, coefficients from the highest down: by Horner's rule, and as one in r2 = r*r of
// linear pieces, which has half the latency and needs no more operations once r2 is there.
template <class V, class... E>
ORBA_INLINE V horner(V r, typename V::Element highest, E... others) {
  V p(highest);
  ((p = mul_add(p, r, V(others))), ...);
  return p;
}
template <class V, class... E>
ORBA_INLINE V in_pairs(V r, V r2, E... from_highest) {
  constexpr int count = sizeof...(from_highest);
  const V c[count] = {V(from_highest)...};
  V p = c[0];
  if constexpr (count % 2 == 0) p = mul_add(p, r, c[1]);
  ORBA_UNROLL
  for (int i = 2 - count % 2; i < count; i += 2) p = mul_add(p, r2, mul_add(c[i], r, c[i + 1]));
  return p;
}

// (e^r - 1 - r)/r^2. Error of e^r - 1: below 2^-59 of it (16 rows) and 2^-62 (64 rows), in single
// precision 2^-31 and 2^-29.
template <int rows>
ORBA_INLINE F64 expm1_series(F64 r, F64 r2) {
  if constexpr (rows == 16)
    return in_pairs(r, r2, 0x1.a01a6dac205c1p-13, 0x1.6c1829140c74ap-10, 0x1.11111111521e8p-7,
                    0x1.55555554a04e9p-5, 0x1.5555555555551p-3, 0x1.0000000000003p-1);
  else
    return in_pairs(r, r2, 0x1.6c16ceddeebcfp-10, 0x1.1111227f3ff3cp-7, 0x1.55555555553e1p-5,
                    0x1.5555555554af3p-3, 0.5);
}
template <int rows>
ORBA_INLINE F32 expm1_series(F32 r, F32 r2) {
  if constexpr (rows == 16)
    return in_pairs(r, r2, 0x1.555638p-5f, 0x1.555708p-3f, 0.5f);
  else
    return in_pairs(r, r2, 0x1.55555ep-3f, 0x1.00001ep-1f);
}

// The callouts' e^x = 2^n * (head + tail) for moderate x: error below 2^-58 of it.
struct ScaledExp {
  double head, tail;
  int64_t n;
};
ORBA_INLINE ScaledExp scaled_exp(double x) {
  using C = ExpConstants<F64>;
  const double shifted = x * C::log2e + C::shifter / 64;
  const double value = shifted - C::shifter / 64;
  const int64_t k = bit_cast<int64_t>(shifted) - bit_cast<int64_t>(C::shifter / 64);
  const double r = (x - value * C::ln2_short) - value * C::ln2_short_tail;
  double p = mul_add(0x1.6c16ceddeebcfp-10, r, 0x1.1111227f3ff3cp-7);
  p = mul_add(p, r, 0x1.55555555553e1p-5);
  p = mul_add(p, r, 0x1.5555555554af3p-3);
  p = mul_add(p, r, 0.5);
  p = mul_add(r * r, p, r);
  const auto& row = kExp2Rows[k & 63];
  return {row[0], (p + row[1]) * row[0], k >> 6};
}

// x times 2^n through the exponent field: x and the product are normal.
ORBA_INLINE double times_pow2(double x, int64_t n) {
  return bit_cast<double>(bit_cast<int64_t>(x) + n * (int64_t{1} << 52));
}

// The compiler can't fold operations on the result, so that they raise their exceptions.
ORBA_INLINE double opaque(double x) {
  asm("" : "+x"(x));
  return x;
}

// Above `overflow` e^x is infinite, below `denormal` denormal, below `lowest` zero.
template <class E>
struct ExpBounds;
template <>
struct ExpBounds<double> {
  static constexpr double overflow = 709.782712893384;
  static constexpr double denormal = -708.3964185322641;
  static constexpr double lowest = -745.1332191019411;
};
template <>
struct ExpBounds<float> {
  static constexpr float overflow = 88.72283f;
  static constexpr float denormal = -87.33654f;
  static constexpr float lowest = -103.97208f;
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
  const ScaledExp e = scaled_exp(x);
  if (x >= ExpBounds<double>::denormal) {
    *r = times_pow2(e.head + e.tail, e.n);
    return kOk;
  }
  // One rounding to the denormals' unit, 2^-1074, here scaled by 2^60: `coarse` and, once back in
  // place, `fine` are multiples of it, and so is their sum.
  constexpr double shifter = 0x1.8p-962;
  const double scale = times_pow2(1.0, e.n + 60);
  const double head = e.head * scale;
  const double coarse = (head + shifter) - shifter;
  const double fine = e.tail * scale + (head - coarse);
  *r = coarse * pow2(-60) + fine * pow2(-60);
  return kUnderflow;
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
  const ScaledExp e = scaled_exp(static_cast<double>(x));
  *r = static_cast<float>(times_pow2(e.head + e.tail, e.n));
  return x < ExpBounds<float>::denormal ? kUnderflow : kOk;
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
