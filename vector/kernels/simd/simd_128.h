// The vocabulary on classes 0 to 2: SSE2, on class 2 SSE4.2, 128-bit vectors, masks as vectors
// whose lanes count by their top bit, no fused multiply-add.
#pragma once

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

struct M64 {
  __m128d v = _mm_setzero_pd();
};
struct M32 {
  __m128 v = _mm_setzero_ps();
};

struct I64 {
  __m128i v;
  I64() = default;
  ORBA_INLINE I64(__m128i x) : v(x) {}
  ORBA_INLINE I64(int64_t x) : v(_mm_set1_epi64x(x)) {}
};
struct I32 {
  __m128i v;
  I32() = default;
  ORBA_INLINE I32(__m128i x) : v(x) {}
  ORBA_INLINE I32(int32_t x) : v(_mm_set1_epi32(x)) {}
};
struct F64 {
  using Element = double;
  using Mask = M64;
  using Bits = I64;
  static constexpr int lanes = 2;
  __m128d v;
  F64() = default;
  ORBA_INLINE F64(__m128d x) : v(x) {}
  ORBA_INLINE F64(double x) : v(_mm_set1_pd(x)) {}
};
struct F32 {
  using Element = float;
  using Mask = M32;
  using Bits = I32;
  static constexpr int lanes = 4;
  __m128 v;
  F32() = default;
  ORBA_INLINE F32(__m128 x) : v(x) {}
  ORBA_INLINE F32(float x) : v(_mm_set1_ps(x)) {}
};

// Masks.
ORBA_INLINE M64 operator|(M64 a, M64 b) { return {_mm_or_pd(a.v, b.v)}; }
ORBA_INLINE M64 operator&(M64 a, M64 b) { return {_mm_and_pd(a.v, b.v)}; }
ORBA_INLINE M64 operator~(M64 a) {
  return {_mm_xor_pd(a.v, _mm_castsi128_pd(_mm_set1_epi64x(-1)))};
}
ORBA_INLINE M32 operator|(M32 a, M32 b) { return {_mm_or_ps(a.v, b.v)}; }
ORBA_INLINE M32 operator&(M32 a, M32 b) { return {_mm_and_ps(a.v, b.v)}; }
ORBA_INLINE M32 operator~(M32 a) { return {_mm_xor_ps(a.v, _mm_castsi128_ps(_mm_set1_epi32(-1)))}; }
ORBA_INLINE uint32_t bits(M64 m) { return static_cast<uint32_t>(_mm_movemask_pd(m.v)); }
ORBA_INLINE uint32_t bits(M32 m) { return static_cast<uint32_t>(_mm_movemask_ps(m.v)); }

// Memory. `live` lanes from the first on take part, the others read as `fill`; partial vectors go
// through a padded block.
ORBA_INLINE F64 load(const double* p) { return _mm_loadu_pd(p); }
ORBA_INLINE F32 load(const float* p) { return _mm_loadu_ps(p); }
ORBA_INLINE void store(double* p, F64 x) { _mm_storeu_pd(p, x.v); }
ORBA_INLINE void store(float* p, F32 x) { _mm_storeu_ps(p, x.v); }
ORBA_INLINE F64 load_partial(const double* p, int live, double fill) {
  return _mm_setr_pd(p[0], live > 1 ? p[1] : fill);
}
ORBA_INLINE F32 load_partial(const float* p, int live, float fill) {
  return _mm_setr_ps(p[0], live > 1 ? p[1] : fill, live > 2 ? p[2] : fill, live > 3 ? p[3] : fill);
}
ORBA_INLINE void store_partial(double* p, int live, F64 x) {
  alignas(16) double block[2];
  _mm_store_pd(block, x.v);
  for (int i = 0; i < live; ++i) p[i] = block[i];
}
ORBA_INLINE void store_partial(float* p, int live, F32 x) {
  alignas(16) float block[4];
  _mm_store_ps(block, x.v);
  for (int i = 0; i < live; ++i) p[i] = block[i];
}

// Arithmetic.
ORBA_INLINE F64 operator+(F64 a, F64 b) { return _mm_add_pd(a.v, b.v); }
ORBA_INLINE F64 operator-(F64 a, F64 b) { return _mm_sub_pd(a.v, b.v); }
ORBA_INLINE F64 operator*(F64 a, F64 b) { return _mm_mul_pd(a.v, b.v); }
ORBA_INLINE F64 operator/(F64 a, F64 b) { return _mm_div_pd(a.v, b.v); }
ORBA_INLINE F32 operator+(F32 a, F32 b) { return _mm_add_ps(a.v, b.v); }
ORBA_INLINE F32 operator-(F32 a, F32 b) { return _mm_sub_ps(a.v, b.v); }
ORBA_INLINE F32 operator*(F32 a, F32 b) { return _mm_mul_ps(a.v, b.v); }
ORBA_INLINE F32 operator/(F32 a, F32 b) { return _mm_div_ps(a.v, b.v); }
ORBA_INLINE F64 mul_add(F64 a, F64 b, F64 c) { return a * b + c; }
ORBA_INLINE F64 mul_sub(F64 a, F64 b, F64 c) { return a * b - c; }
ORBA_INLINE F64 neg_mul_add(F64 a, F64 b, F64 c) { return c - a * b; }
ORBA_INLINE F32 mul_add(F32 a, F32 b, F32 c) { return a * b + c; }
ORBA_INLINE F32 mul_sub(F32 a, F32 b, F32 c) { return a * b - c; }
ORBA_INLINE F32 neg_mul_add(F32 a, F32 b, F32 c) { return c - a * b; }
ORBA_INLINE F64 sqrt(F64 a) { return _mm_sqrt_pd(a.v); }
ORBA_INLINE F32 sqrt(F32 a) { return _mm_sqrt_ps(a.v); }
ORBA_INLINE F64 min(F64 a, F64 b) { return _mm_min_pd(a.v, b.v); }
ORBA_INLINE F64 max(F64 a, F64 b) { return _mm_max_pd(a.v, b.v); }
ORBA_INLINE F32 min(F32 a, F32 b) { return _mm_min_ps(a.v, b.v); }
ORBA_INLINE F32 max(F32 a, F32 b) { return _mm_max_ps(a.v, b.v); }

// Nearest integer, ties to even, as a floating-point value; before SSE4.1 by an added constant,
// which holds for |a| below 2^51 (2^22).
ORBA_INLINE F64 round(F64 a) {
#if ORBA_CLASS >= 2
  return _mm_round_pd(a.v, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
#else
  return (a + F64(0x1.8p52)) - F64(0x1.8p52);
#endif
}
ORBA_INLINE F32 round(F32 a) {
#if ORBA_CLASS >= 2
  return _mm_round_ps(a.v, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
#else
  return (a + F32(0x1.8p23f)) - F32(0x1.8p23f);
#endif
}

// Bits.
ORBA_INLINE I64 as_bits(F64 a) { return _mm_castpd_si128(a.v); }
ORBA_INLINE I32 as_bits(F32 a) { return _mm_castps_si128(a.v); }
ORBA_INLINE F64 as_float(I64 a) { return _mm_castsi128_pd(a.v); }
ORBA_INLINE F32 as_float(I32 a) { return _mm_castsi128_ps(a.v); }
ORBA_INLINE I64 operator+(I64 a, I64 b) { return _mm_add_epi64(a.v, b.v); }
ORBA_INLINE I64 operator-(I64 a, I64 b) { return _mm_sub_epi64(a.v, b.v); }
ORBA_INLINE I64 operator&(I64 a, I64 b) { return _mm_and_si128(a.v, b.v); }
ORBA_INLINE I64 operator|(I64 a, I64 b) { return _mm_or_si128(a.v, b.v); }
ORBA_INLINE I64 operator^(I64 a, I64 b) { return _mm_xor_si128(a.v, b.v); }
ORBA_INLINE I32 operator+(I32 a, I32 b) { return _mm_add_epi32(a.v, b.v); }
ORBA_INLINE I32 operator-(I32 a, I32 b) { return _mm_sub_epi32(a.v, b.v); }
ORBA_INLINE I32 operator&(I32 a, I32 b) { return _mm_and_si128(a.v, b.v); }
ORBA_INLINE I32 operator|(I32 a, I32 b) { return _mm_or_si128(a.v, b.v); }
ORBA_INLINE I32 operator^(I32 a, I32 b) { return _mm_xor_si128(a.v, b.v); }
#if ORBA_CLASS >= 2
// The larger of every two 32-bit words, as signed numbers.
ORBA_INLINE I64 max_words(I64 a, I64 b) { return _mm_max_epi32(a.v, b.v); }
ORBA_INLINE I32 max_words(I32 a, I32 b) { return _mm_max_epi32(a.v, b.v); }
#endif
template <int k>
ORBA_INLINE I64 shl(I64 a) {
  return _mm_slli_epi64(a.v, k);
}
template <int k>
ORBA_INLINE I64 shr(I64 a) {
  return _mm_srli_epi64(a.v, k);
}
template <int k>
ORBA_INLINE I32 shl(I32 a) {
  return _mm_slli_epi32(a.v, k);
}
template <int k>
ORBA_INLINE I32 shr(I32 a) {
  return _mm_srli_epi32(a.v, k);
}

// Comparisons. `!=` holds for unordered lanes, as does `not_le`; the others do not.
ORBA_INLINE M64 operator<(F64 a, F64 b) { return {_mm_cmplt_pd(a.v, b.v)}; }
ORBA_INLINE M64 operator<=(F64 a, F64 b) { return {_mm_cmple_pd(a.v, b.v)}; }
ORBA_INLINE M64 operator>(F64 a, F64 b) { return b < a; }
ORBA_INLINE M64 operator>=(F64 a, F64 b) { return b <= a; }
ORBA_INLINE M64 operator==(F64 a, F64 b) { return {_mm_cmpeq_pd(a.v, b.v)}; }
ORBA_INLINE M64 operator!=(F64 a, F64 b) { return {_mm_cmpneq_pd(a.v, b.v)}; }
ORBA_INLINE M64 not_le(F64 a, F64 b) { return {_mm_cmpnle_pd(a.v, b.v)}; }
ORBA_INLINE M32 operator<(F32 a, F32 b) { return {_mm_cmplt_ps(a.v, b.v)}; }
ORBA_INLINE M32 operator<=(F32 a, F32 b) { return {_mm_cmple_ps(a.v, b.v)}; }
ORBA_INLINE M32 operator>(F32 a, F32 b) { return b < a; }
ORBA_INLINE M32 operator>=(F32 a, F32 b) { return b <= a; }
ORBA_INLINE M32 operator==(F32 a, F32 b) { return {_mm_cmpeq_ps(a.v, b.v)}; }
ORBA_INLINE M32 operator!=(F32 a, F32 b) { return {_mm_cmpneq_ps(a.v, b.v)}; }
ORBA_INLINE M32 not_le(F32 a, F32 b) { return {_mm_cmpnle_ps(a.v, b.v)}; }
// The bound is hidden from the optimiser: g++ turns a > constant into a >= constant + 1, which
// costs a minimum more.
ORBA_INLINE M32 operator>(I32 a, I32 b) {
  asm("" : "+x"(b.v));
  return {_mm_castsi128_ps(_mm_cmpgt_epi32(a.v, b.v))};
}
ORBA_INLINE M64 operator==(I64 a, I64 b) {
  const __m128i equal = _mm_cmpeq_epi32(a.v, b.v);
  return {
      _mm_castsi128_pd(_mm_and_si128(equal, _mm_shuffle_epi32(equal, _MM_SHUFFLE(2, 3, 0, 1))))};
}
ORBA_INLINE M32 operator==(I32 a, I32 b) { return {_mm_castsi128_ps(_mm_cmpeq_epi32(a.v, b.v))}; }

// Lanes whose high 32 bits, as signed numbers, are above `limit`. Before SSE4.1 a blend is three
// bit operations and needs whole lanes; later blends, and `bits`, look at the top bit of a lane
// alone.
#if ORBA_CLASS >= 2
ORBA_INLINE M64 high_above(I64 a, int32_t limit) {
  return {_mm_castps_pd((I32(a.v) > I32(limit)).v)};
}
ORBA_INLINE F64 select(M64 m, F64 a, F64 b) { return _mm_blendv_pd(b.v, a.v, m.v); }
ORBA_INLINE F32 select(M32 m, F32 a, F32 b) { return _mm_blendv_ps(b.v, a.v, m.v); }
#else
ORBA_INLINE M64 high_above(I64 a, int32_t limit) {
  const __m128i above = _mm_castps_si128((I32(a.v) > I32(limit)).v);
  return {_mm_castsi128_pd(_mm_shuffle_epi32(above, _MM_SHUFFLE(3, 3, 1, 1)))};
}
ORBA_INLINE F64 select(M64 m, F64 a, F64 b) {
  return _mm_or_pd(_mm_and_pd(m.v, a.v), _mm_andnot_pd(m.v, b.v));
}
ORBA_INLINE F32 select(M32 m, F32 a, F32 b) {
  return _mm_or_ps(_mm_and_ps(m.v, a.v), _mm_andnot_ps(m.v, b.v));
}
#endif
ORBA_INLINE I64 select(M64 m, I64 a, I64 b) { return as_bits(select(m, as_float(a), as_float(b))); }
ORBA_INLINE I32 select(M32 m, I32 a, I32 b) { return as_bits(select(m, as_float(a), as_float(b))); }

// Approximate reciprocal and reciprocal square root, relative error 1.5 * 2^-12.
ORBA_INLINE F32 approx_recip(F32 a) { return _mm_rcp_ps(a.v); }
ORBA_INLINE F32 approx_rsqrt(F32 a) { return _mm_rsqrt_ps(a.v); }

// (re, im) pairs in memory order, two vectors, to vectors of real and of imaginary parts and back.
ORBA_INLINE void deinterleave(F64 lo, F64 hi, F64& re, F64& im) {
  re = _mm_unpacklo_pd(lo.v, hi.v);
  im = _mm_unpackhi_pd(lo.v, hi.v);
}
ORBA_INLINE void interleave(F64 re, F64 im, F64& lo, F64& hi) {
  lo = _mm_unpacklo_pd(re.v, im.v);
  hi = _mm_unpackhi_pd(re.v, im.v);
}
ORBA_INLINE void deinterleave(F32 lo, F32 hi, F32& re, F32& im) {
  re = _mm_shuffle_ps(lo.v, hi.v, _MM_SHUFFLE(2, 0, 2, 0));
  im = _mm_shuffle_ps(lo.v, hi.v, _MM_SHUFFLE(3, 1, 3, 1));
}
ORBA_INLINE void interleave(F32 re, F32 im, F32& lo, F32& hi) {
  lo = _mm_unpacklo_ps(re.v, im.v);
  hi = _mm_unpackhi_ps(re.v, im.v);
}

// Halves of a float vector as doubles, and doubles narrowed into one float vector.
ORBA_INLINE F64 widen_low(F32 a) { return _mm_cvtps_pd(a.v); }
ORBA_INLINE F64 widen_high(F32 a) { return _mm_cvtps_pd(_mm_movehl_ps(a.v, a.v)); }
ORBA_INLINE F32 narrow(F64 lo, F64 hi) {
  return _mm_movelh_ps(_mm_cvtpd_ps(lo.v), _mm_cvtpd_ps(hi.v));
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
