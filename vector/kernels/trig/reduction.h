// Arguments reduced by quarter turns:
//
//   x = (quadrant + 4k)*pi/2 + hi + lo,  |hi + lo| <= pi/4 and the rounding of the quotient
//
// hi + lo is good to 2^-60 of itself, whatever has cancelled. Ordinary arguments take words of pi/2
// (W. J. Cody and W. Waite, Software Manual for the Elementary Functions, 1980), huge ones the
// digits of 1/(2 pi) that matter (M. Payne and R. Hanek, SIGNUM Newsletter 18, 1983).
#pragma once

#include "vector/kernels/simd/integers.h"
#include "vector/kernels/simd/pair_arithmetic.h"
#include "vector/kernels/simd/simd.h"
#include "vector/kernels/trig/trig_coefficients.h"
#include "vector/kernels/trig/trig_tables.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class V>
struct Reduced {
  typename V::Bits quadrant;  // its two lowest bits count
  V hi, lo;
};

// The lowest bit of every lane as a mask.
#if ORBA_CLASS == 5
// A denormal as the bit to test: a constant in memory, where an integer costs a move from another unit.
ORBA_INLINE M64 is_odd(I64 a) { return {_mm512_test_epi64_mask(a.v, as_bits(F64(0x1p-1074)).v)}; }
ORBA_INLINE M32 is_odd(I32 a) { return {_mm512_test_epi32_mask(a.v, as_bits(F32(0x1p-149f)).v)}; }
#elif ORBA_CLASS == 3
ORBA_INLINE M64 is_odd(I64 a) { return {as_float(shl<63>(a)).v}; }
ORBA_INLINE M32 is_odd(I32 a) { return {as_float(shl<31>(a)).v}; }
#else
ORBA_INLINE M64 is_odd(I64 a) {
  const __m128i sign = _mm_srai_epi32(_mm_slli_epi64(a.v, 63), 31);
  return {_mm_castsi128_pd(_mm_shuffle_epi32(sign, _MM_SHUFFLE(3, 3, 1, 1)))};
}
ORBA_INLINE M32 is_odd(I32 a) {
  return {_mm_castsi128_ps(_mm_srai_epi32(_mm_slli_epi32(a.v, 31), 31))};
}
#endif

constexpr double kShifter64 = 0x1.8p52;  // x + it: x rounded, its integer in the lowest bits
constexpr float kShifter32 = 0x1.8p23f;

template <class V>
struct QuarterTurns;
template <>
struct QuarterTurns<F64> {
  static constexpr double shifter = kShifter64, per_turn = kPerQuarterTurn;
  static constexpr double words[] = {kQuarterTurn1, kQuarterTurn2, kQuarterTurn3};
};
template <>
struct QuarterTurns<F32> {
  static constexpr float shifter = kShifter32, per_turn = kPerQuarterTurnF;
  static constexpr float words[] = {kQuarterTurnF1, kQuarterTurnF2, kQuarterTurnF3};
};

// 0 <= a <= 2^24, without FMA doubles up to 65537 alone; floats up to 10000. The first word takes a
// difference that is exact; of the second the product is exact, so that the sum's error is.
template <class V>
ORBA_INLINE Reduced<V> reduce(V a) {
  using Q = QuarterTurns<V>;
  const V t = mul_add(a, V(Q::per_turn), V(Q::shifter));
  const V n = t - V(Q::shifter);
  if constexpr (kFused) {
    const V rest = neg_mul_add(n, V(Q::words[0]), a);
    const V hi = neg_mul_add(n, V(Q::words[1]), rest);
    const V error = neg_mul_add(n, V(Q::words[1]), rest - hi);
    return {as_bits(t), hi, neg_mul_add(n, V(Q::words[2]), error)};
  } else {
    const V rest = a - n * V(kQuarterTurnShort1);
    const V second = n * V(kQuarterTurnShort2);
    const V hi = rest - second;
    const V error = (rest - hi) - second;
    const V lo = (error - n * V(kQuarterTurnShort3)) - n * V(kQuarterTurnShort4);
    return {as_bits(t), hi, lo};
  }
}

// hi alone, a relative error near 2^-53 but for arguments next to a multiple of pi/2: there the
// error is 2^-83*a/2^24.
ORBA_INLINE Reduced<F64> reduce_short(F64 a) {
  const F64 t = mul_add(a, F64(kPerQuarterTurn), F64(kShifter64));
  const F64 n = t - F64(kShifter64);
  if constexpr (kFused) {
    const F64 rest = neg_mul_add(n, F64(kQuarterTurn1), a);
    return {as_bits(t), neg_mul_add(n, F64(kHalfTurn2 / 2), rest), F64(0.0)};
  } else {
    const F64 rest = (a - n * F64(kHalfTurnShort1 / 2)) - n * F64(kHalfTurnShort2 / 2);
    const F64 hi = (rest - n * F64(kHalfTurnShort3 / 2)) - n * F64(kHalfTurnShort4 / 2);
    return {as_bits(t), hi, F64(0.0)};
  }
}

// The same for floats up to 10000, by FMA.
ORBA_INLINE Reduced<F32> reduce_short(F32 a) {
  const F32 t = mul_add(a, F32(kPerQuarterTurnF), F32(kShifter32));
  const F32 n = t - F32(kShifter32);
  const F32 rest = neg_mul_add(n, F32(kQuarterTurnF2), neg_mul_add(n, F32(kQuarterTurnF1), a));
  return {as_bits(t), neg_mul_add(n, F32(kQuarterTurnF3), rest), F32(0.0f)};
}

#if ORBA_CLASS >= 3
ORBA_INLINE I64 shift_left(I64 a, I64 count) {
#  if ORBA_CLASS == 5
  return _mm512_sllv_epi64(a.v, count.v);
#  else
  return _mm256_sllv_epi64(a.v, count.v);
#  endif
}
#else
// count below 21.
ORBA_INLINE I64 shift_left(I64 a, I64 count) {
  const I64 power = as_bits(as_float(shl<52>(count + I64(int64_t{1023}))) + F64(0x1p52));
  return mul_low_words(a, power) + shl<32>(mul_low_words(shr<32>(a), power));
}
#endif

// The low 64 bits of products.
ORBA_INLINE I64 mul_low(I64 a, I64 b) {
#if ORBA_CLASS == 5
  return _mm512_mullo_epi64(a.v, b.v);
#else
  return mul_low_words(a, b) + shl<32>(mul_low_words(a, shr<32>(b)) + mul_low_words(shr<32>(a), b));
#endif
}

// Three words in a row, the most significant one first, from a byte offset into kReciprocalTurn.
struct Window {
  I64 top, middle, low;
};
ORBA_INLINE Window read_window(I64 offset) {
  const char* bytes = reinterpret_cast<const char*>(kReciprocalTurn);
#if ORBA_CLASS == 5
  alignas(64) int64_t at[8];
  _mm512_store_si512(at, offset.v);
  const auto rows = [&](int i, int j) {
    const __m512d low =
        _mm512_castpd256_pd512(_mm256_loadu_pd(reinterpret_cast<const double*>(bytes + at[i])));
    return _mm512_insertf64x4(low, _mm256_loadu_pd(reinterpret_cast<const double*>(bytes + at[j])),
                              1);
  };
  const __m512d a = rows(0, 2), b = rows(1, 3), c = rows(4, 6), d = rows(5, 7);
  const __m512d even_ab = _mm512_unpacklo_pd(a, b), even_cd = _mm512_unpacklo_pd(c, d);
  const __m512d odd_ab = _mm512_unpackhi_pd(a, b), odd_cd = _mm512_unpackhi_pd(c, d);
  return {as_bits(F64(_mm512_shuffle_f64x2(even_ab, even_cd, 0xdd))),
          as_bits(F64(_mm512_shuffle_f64x2(odd_ab, odd_cd, 0x88))),
          as_bits(F64(_mm512_shuffle_f64x2(even_ab, even_cd, 0x88)))};
#elif ORBA_CLASS == 3
  alignas(32) int64_t at[4];
  _mm256_store_si256(reinterpret_cast<__m256i*>(at), offset.v);
  F64 v[4];
  for (int i = 0; i < 4; ++i) v[i] = load(reinterpret_cast<const double*>(bytes + at[i]));
  transpose(v);
  return {as_bits(v[2]), as_bits(v[1]), as_bits(v[0])};
#else
  alignas(16) int64_t at[2];
  _mm_store_si128(reinterpret_cast<__m128i*>(at), offset.v);
  const auto words = [&](int64_t skip) {
    return F64(_mm_loadh_pd(_mm_load_sd(reinterpret_cast<const double*>(bytes + at[0] + skip)),
                            reinterpret_cast<const double*>(bytes + at[1] + skip)));
  };
  return {as_bits(words(16)), as_bits(words(8)), as_bits(words(0))};
#endif
}

// Any finite |x| as a; below 1 and for NaN some number. The integer significand m times the window of
// 192 bits of 1/(2 pi) that begins just above the last whole turn gives the turn's fraction, modulo
// 1: a tail of 2^-131 is lost of it, and no argument comes closer to a multiple of pi/2 than 2^-60
// (J.-M. Muller, Elementary Functions, 3rd ed., 11.3.2).
ORBA_INLINE Reduced<F64> reduce_huge(F64 a) {
  const I64 bits = as_bits(max(a, F64(1.0)));
  const I64 word = int64_t{0xffffffff};

  // The window begins at a byte: up to seven digits of whole turns are left, and m moves up to match.
  const I64 position = shr<52>(bits) - I64(int64_t{1019});
  const Window w = read_window(I64(int64_t{128}) - shr<3>(position));
  const I64 significand = (bits & I64(int64_t{0xfffffffffffff})) | I64(int64_t{0x10000000000000});
  const I64 m = shift_left(significand, position & I64(int64_t{7}));

  // The product's upper 128 bits, modulo 2^192, in columns of 32. m < 2^60, so sums of a product by
  // its upper word and of a word stay below 2^64.
  const I64 m_high = shr<32>(m);
  const I64 a_high = shr<32>(w.middle), b_high = shr<32>(w.low);
  const I64 below = mul_low_words(m_high, b_high) + shr<32>(mul_low_words(m, b_high)) +
                    shr<32>(mul_low_words(m_high, w.low));
  const I64 p0 = mul_low_words(m, w.middle);
  const I64 p1 = mul_low_words(m_high, w.middle) + shr<32>(p0);
  const I64 p2 = mul_low_words(m, a_high) + (p1 & word);
  const I64 column0 = (p0 & word) + (below & word);
  const I64 column1 = (p2 & word) + shr<32>(below) + shr<32>(column0);
  const I64 above = mul_low_words(m_high, a_high) + shr<32>(p1) + shr<32>(p2) + shr<32>(column1);
  const I64 top = mul_low(m, w.top);

  // To the nearest quarter turn; the rest in units of 2^-64 turns, in pieces that are exact.
  const I64 turns = top + above + I64(int64_t{1} << 61);
  const F64 d3 = as_float((shr<32>(turns) & I64(int64_t{0x3fffffff})) | as_bits(F64(0x1p84))) -
                 F64(0x1p84 + 0x1p61);
  const F64 d2 = as_float((turns & word) | as_bits(F64(0x1p52))) - F64(0x1p52);
  const F64 d1 = as_float((column1 & word) | as_bits(F64(0x1p20))) - F64(0x1p20);
  const F64 d0 = as_float((column0 & word) | as_bits(F64(0x1p-12))) - F64(0x1p-12);
  const Pair<F64> head = fast_two_sum(d3, d2);
  const Pair<F64> sum = fast_two_sum(head.hi, head.lo + d1);
  const Pair<F64> radians = two_product(sum.hi, F64(kTurn1));
  const Pair<F64> r = fast_two_sum(
      radians.hi, radians.lo + mul_add(sum.hi, F64(kTurn2), (sum.lo + d0) * F64(kTurn1)));
  return {shr<62>(turns), r.hi, r.lo};
}

// The same for a that is a float, in quarter turns f instead of radians. Half as many digits do: a float
// comes no closer to a multiple of pi/2 than 2^-31 turns, and a tail of 2^-63 is lost.
struct Fraction {
  F64 f;
  I64 turns;
};
ORBA_INLINE Fraction reduce_huge_single(F64 a) {
  const I64 bits = as_bits(max(a, F64(1.0)));
  const I64 word = int64_t{0xffffffff};
  const I64 position = shr<52>(bits) - I64(int64_t{990});
  const Window w = read_window(I64(int64_t{128}) - shr<3>(position));
  const I64 significand =
      shr<29>((bits & I64(int64_t{0xfffffffffffff})) | I64(int64_t{0x10000000000000}));
  const I64 m = shift_left(significand, position & I64(int64_t{7}));
  const I64 turns = mul_low_words(m, w.top) + shl<32>(mul_low_words(m, shr<32>(w.top))) +
                    shr<32>(mul_low_words(m, shr<32>(w.middle))) + I64(int64_t{1} << 61);
  const F64 high = as_float((shr<32>(turns) & I64(int64_t{0x3fffffff})) | as_bits(F64(0x1p22))) -
                   F64(0x1p22 + 0.5);
  const F64 low = as_float((turns & word) | as_bits(F64(0x1p-10))) - F64(0x1p-10);
  return {high + low, shr<62>(turns)};
}
#if ORBA_CLASS >= 3
ORBA_INLINE Reduced<F32> reduce_huge(F32 a) {
  const Fraction low = reduce_huge_single(widen_low(a)), high = reduce_huge_single(widen_high(a));
  const F64 r0 = low.f * F64(kQuarterTurn1), r1 = high.f * F64(kQuarterTurn1);
  const F32 hi = narrow(r0, r1);
  const F32 lo = narrow(r0 - widen_low(hi), r1 - widen_high(hi));
  const F32 turns = narrow(to_double_52(low.turns), to_double_52(high.turns));
  return {as_bits(turns + F32(kShifter32)), hi, lo};
}
#endif

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
