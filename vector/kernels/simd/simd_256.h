// The vocabulary on class 3: AVX2 with FMA, 256-bit vectors, masks as vectors whose lanes count
// by their top bit.
#pragma once

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

struct M64 {
  __m256d v = _mm256_setzero_pd();
};
struct M32 {
  __m256 v = _mm256_setzero_ps();
};

struct I64 {
  __m256i v;
  I64() = default;
  ORBA_INLINE I64(__m256i x) : v(x) {}
  ORBA_INLINE I64(int64_t x) : v(_mm256_set1_epi64x(x)) {}
};
struct I32 {
  __m256i v;
  I32() = default;
  ORBA_INLINE I32(__m256i x) : v(x) {}
  ORBA_INLINE I32(int32_t x) : v(_mm256_set1_epi32(x)) {}
};
struct F64 {
  using Element = double;
  using Mask = M64;
  using Bits = I64;
  static constexpr int lanes = 4;
  __m256d v;
  F64() = default;
  ORBA_INLINE F64(__m256d x) : v(x) {}
  ORBA_INLINE F64(double x) : v(_mm256_set1_pd(x)) {}
};
struct F32 {
  using Element = float;
  using Mask = M32;
  using Bits = I32;
  static constexpr int lanes = 8;
  __m256 v;
  F32() = default;
  ORBA_INLINE F32(__m256 x) : v(x) {}
  ORBA_INLINE F32(float x) : v(_mm256_set1_ps(x)) {}
};

// Masks.
ORBA_INLINE M64 operator|(M64 a, M64 b) { return {_mm256_or_pd(a.v, b.v)}; }
ORBA_INLINE M64 operator&(M64 a, M64 b) { return {_mm256_and_pd(a.v, b.v)}; }
ORBA_INLINE M64 operator~(M64 a) {
  return {_mm256_xor_pd(a.v, _mm256_castsi256_pd(_mm256_set1_epi64x(-1)))};
}
ORBA_INLINE M32 operator|(M32 a, M32 b) { return {_mm256_or_ps(a.v, b.v)}; }
ORBA_INLINE M32 operator&(M32 a, M32 b) { return {_mm256_and_ps(a.v, b.v)}; }
ORBA_INLINE M32 operator~(M32 a) {
  return {_mm256_xor_ps(a.v, _mm256_castsi256_ps(_mm256_set1_epi32(-1)))};
}
ORBA_INLINE uint32_t bits(M64 m) { return static_cast<uint32_t>(_mm256_movemask_pd(m.v)); }
ORBA_INLINE uint32_t bits(M32 m) { return static_cast<uint32_t>(_mm256_movemask_ps(m.v)); }

// Memory. `live` lanes from the first on take part, the others read as `fill`.
ORBA_INLINE __m256i first_lanes(F64, int live) {
  return _mm256_cmpgt_epi64(_mm256_set1_epi64x(live), _mm256_setr_epi64x(0, 1, 2, 3));
}
ORBA_INLINE __m256i first_lanes(F32, int live) {
  return _mm256_cmpgt_epi32(_mm256_set1_epi32(live), _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7));
}
ORBA_INLINE F64 load(const double* p) { return _mm256_loadu_pd(p); }
ORBA_INLINE F32 load(const float* p) { return _mm256_loadu_ps(p); }
ORBA_INLINE F64 load_partial(const double* p, int live, double fill) {
  const __m256i mask = first_lanes(F64(), live);
  return _mm256_blendv_pd(_mm256_set1_pd(fill), _mm256_maskload_pd(p, mask),
                          _mm256_castsi256_pd(mask));
}
ORBA_INLINE F32 load_partial(const float* p, int live, float fill) {
  const __m256i mask = first_lanes(F32(), live);
  return _mm256_blendv_ps(_mm256_set1_ps(fill), _mm256_maskload_ps(p, mask),
                          _mm256_castsi256_ps(mask));
}
ORBA_INLINE void store(double* p, F64 x) { _mm256_storeu_pd(p, x.v); }
ORBA_INLINE void store(float* p, F32 x) { _mm256_storeu_ps(p, x.v); }
ORBA_INLINE void store_partial(double* p, int live, F64 x) {
  _mm256_maskstore_pd(p, first_lanes(x, live), x.v);
}
ORBA_INLINE void store_partial(float* p, int live, F32 x) {
  _mm256_maskstore_ps(p, first_lanes(x, live), x.v);
}

// Arithmetic.
ORBA_INLINE F64 operator+(F64 a, F64 b) { return _mm256_add_pd(a.v, b.v); }
ORBA_INLINE F64 operator-(F64 a, F64 b) { return _mm256_sub_pd(a.v, b.v); }
ORBA_INLINE F64 operator*(F64 a, F64 b) { return _mm256_mul_pd(a.v, b.v); }
ORBA_INLINE F64 operator/(F64 a, F64 b) { return _mm256_div_pd(a.v, b.v); }
ORBA_INLINE F32 operator+(F32 a, F32 b) { return _mm256_add_ps(a.v, b.v); }
ORBA_INLINE F32 operator-(F32 a, F32 b) { return _mm256_sub_ps(a.v, b.v); }
ORBA_INLINE F32 operator*(F32 a, F32 b) { return _mm256_mul_ps(a.v, b.v); }
ORBA_INLINE F32 operator/(F32 a, F32 b) { return _mm256_div_ps(a.v, b.v); }
ORBA_INLINE F64 mul_add(F64 a, F64 b, F64 c) { return _mm256_fmadd_pd(a.v, b.v, c.v); }
ORBA_INLINE F64 mul_sub(F64 a, F64 b, F64 c) { return _mm256_fmsub_pd(a.v, b.v, c.v); }
ORBA_INLINE F64 neg_mul_add(F64 a, F64 b, F64 c) { return _mm256_fnmadd_pd(a.v, b.v, c.v); }
ORBA_INLINE F32 mul_add(F32 a, F32 b, F32 c) { return _mm256_fmadd_ps(a.v, b.v, c.v); }
ORBA_INLINE F32 mul_sub(F32 a, F32 b, F32 c) { return _mm256_fmsub_ps(a.v, b.v, c.v); }
ORBA_INLINE F32 neg_mul_add(F32 a, F32 b, F32 c) { return _mm256_fnmadd_ps(a.v, b.v, c.v); }
ORBA_INLINE F64 sqrt(F64 a) { return _mm256_sqrt_pd(a.v); }
ORBA_INLINE F32 sqrt(F32 a) { return _mm256_sqrt_ps(a.v); }
ORBA_INLINE F64 min(F64 a, F64 b) { return _mm256_min_pd(a.v, b.v); }
ORBA_INLINE F64 max(F64 a, F64 b) { return _mm256_max_pd(a.v, b.v); }
ORBA_INLINE F32 min(F32 a, F32 b) { return _mm256_min_ps(a.v, b.v); }
ORBA_INLINE F32 max(F32 a, F32 b) { return _mm256_max_ps(a.v, b.v); }

// Nearest integer, ties to even, as a floating-point value.
ORBA_INLINE F64 round(F64 a) {
  return _mm256_round_pd(a.v, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
}
ORBA_INLINE F32 round(F32 a) {
  return _mm256_round_ps(a.v, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
}

// Bits.
ORBA_INLINE I64 as_bits(F64 a) { return _mm256_castpd_si256(a.v); }
ORBA_INLINE I32 as_bits(F32 a) { return _mm256_castps_si256(a.v); }
ORBA_INLINE F64 as_float(I64 a) { return _mm256_castsi256_pd(a.v); }
ORBA_INLINE F32 as_float(I32 a) { return _mm256_castsi256_ps(a.v); }
ORBA_INLINE I64 operator+(I64 a, I64 b) { return _mm256_add_epi64(a.v, b.v); }
ORBA_INLINE I64 operator-(I64 a, I64 b) { return _mm256_sub_epi64(a.v, b.v); }
ORBA_INLINE I64 operator&(I64 a, I64 b) { return _mm256_and_si256(a.v, b.v); }
ORBA_INLINE I64 operator|(I64 a, I64 b) { return _mm256_or_si256(a.v, b.v); }
ORBA_INLINE I64 operator^(I64 a, I64 b) { return _mm256_xor_si256(a.v, b.v); }
ORBA_INLINE I32 operator+(I32 a, I32 b) { return _mm256_add_epi32(a.v, b.v); }
ORBA_INLINE I32 operator-(I32 a, I32 b) { return _mm256_sub_epi32(a.v, b.v); }
ORBA_INLINE I32 operator&(I32 a, I32 b) { return _mm256_and_si256(a.v, b.v); }
ORBA_INLINE I32 operator|(I32 a, I32 b) { return _mm256_or_si256(a.v, b.v); }
ORBA_INLINE I32 operator^(I32 a, I32 b) { return _mm256_xor_si256(a.v, b.v); }
// The larger of every two 32-bit words, as signed numbers.
ORBA_INLINE I64 max_words(I64 a, I64 b) { return _mm256_max_epi32(a.v, b.v); }
ORBA_INLINE I32 max_words(I32 a, I32 b) { return _mm256_max_epi32(a.v, b.v); }
template <int k>
ORBA_INLINE I64 shl(I64 a) {
  return _mm256_slli_epi64(a.v, k);
}
template <int k>
ORBA_INLINE I64 shr(I64 a) {
  return _mm256_srli_epi64(a.v, k);
}
template <int k>
ORBA_INLINE I32 shl(I32 a) {
  return _mm256_slli_epi32(a.v, k);
}
template <int k>
ORBA_INLINE I32 shr(I32 a) {
  return _mm256_srli_epi32(a.v, k);
}

// Comparisons. `!=` holds for unordered lanes, as does `not_le`; the others do not.
ORBA_INLINE M64 operator<(F64 a, F64 b) { return {_mm256_cmp_pd(a.v, b.v, _CMP_LT_OQ)}; }
ORBA_INLINE M64 operator<=(F64 a, F64 b) { return {_mm256_cmp_pd(a.v, b.v, _CMP_LE_OQ)}; }
ORBA_INLINE M64 operator>(F64 a, F64 b) { return b < a; }
ORBA_INLINE M64 operator>=(F64 a, F64 b) { return b <= a; }
ORBA_INLINE M64 operator==(F64 a, F64 b) { return {_mm256_cmp_pd(a.v, b.v, _CMP_EQ_OQ)}; }
ORBA_INLINE M64 operator!=(F64 a, F64 b) { return {_mm256_cmp_pd(a.v, b.v, _CMP_NEQ_UQ)}; }
ORBA_INLINE M64 not_le(F64 a, F64 b) { return {_mm256_cmp_pd(a.v, b.v, _CMP_NLE_UQ)}; }
ORBA_INLINE M32 operator<(F32 a, F32 b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_LT_OQ)}; }
ORBA_INLINE M32 operator<=(F32 a, F32 b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_LE_OQ)}; }
ORBA_INLINE M32 operator>(F32 a, F32 b) { return b < a; }
ORBA_INLINE M32 operator>=(F32 a, F32 b) { return b <= a; }
ORBA_INLINE M32 operator==(F32 a, F32 b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_EQ_OQ)}; }
ORBA_INLINE M32 operator!=(F32 a, F32 b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_NEQ_UQ)}; }
ORBA_INLINE M32 not_le(F32 a, F32 b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_NLE_UQ)}; }
// The bound is hidden from the optimiser: g++ turns a > constant into a >= constant + 1, which
// costs a minimum more.
ORBA_INLINE M32 operator>(I32 a, I32 b) {
  asm("" : "+x"(b.v));
  return {_mm256_castsi256_ps(_mm256_cmpgt_epi32(a.v, b.v))};
}
ORBA_INLINE M64 operator==(I64 a, I64 b) {
  return {_mm256_castsi256_pd(_mm256_cmpeq_epi64(a.v, b.v))};
}
ORBA_INLINE M32 operator==(I32 a, I32 b) {
  return {_mm256_castsi256_ps(_mm256_cmpeq_epi32(a.v, b.v))};
}

// Lanes whose high 32 bits, as signed numbers, are above `limit`. Blends and `bits` look at the top
// bit of a lane alone, so the low halves may stay as they are.
ORBA_INLINE M64 high_above(I64 a, int32_t limit) {
  return {_mm256_castps_pd((I32(a.v) > I32(limit)).v)};
}

ORBA_INLINE F64 select(M64 m, F64 a, F64 b) { return _mm256_blendv_pd(b.v, a.v, m.v); }
ORBA_INLINE F32 select(M32 m, F32 a, F32 b) { return _mm256_blendv_ps(b.v, a.v, m.v); }
ORBA_INLINE I64 select(M64 m, I64 a, I64 b) { return as_bits(select(m, as_float(a), as_float(b))); }
ORBA_INLINE I32 select(M32 m, I32 a, I32 b) { return as_bits(select(m, as_float(a), as_float(b))); }

// Approximate reciprocal and reciprocal square root, relative error 1.5 * 2^-12.
ORBA_INLINE F32 approx_recip(F32 a) { return _mm256_rcp_ps(a.v); }
ORBA_INLINE F32 approx_rsqrt(F32 a) { return _mm256_rsqrt_ps(a.v); }

// (re, im) pairs in memory order, two vectors, to vectors of real and of imaginary parts and back.
ORBA_INLINE void deinterleave(F64 lo, F64 hi, F64& re, F64& im) {
  const __m256d a = _mm256_permute2f128_pd(lo.v, hi.v, 0x20);
  const __m256d b = _mm256_permute2f128_pd(lo.v, hi.v, 0x31);
  re = _mm256_unpacklo_pd(a, b);
  im = _mm256_unpackhi_pd(a, b);
}
ORBA_INLINE void interleave(F64 re, F64 im, F64& lo, F64& hi) {
  const __m256d a = _mm256_unpacklo_pd(re.v, im.v);
  const __m256d b = _mm256_unpackhi_pd(re.v, im.v);
  lo = _mm256_permute2f128_pd(a, b, 0x20);
  hi = _mm256_permute2f128_pd(a, b, 0x31);
}
ORBA_INLINE void deinterleave(F32 lo, F32 hi, F32& re, F32& im) {
  const __m256 a = _mm256_permute2f128_ps(lo.v, hi.v, 0x20);
  const __m256 b = _mm256_permute2f128_ps(lo.v, hi.v, 0x31);
  re = _mm256_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0));
  im = _mm256_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1));
}
ORBA_INLINE void interleave(F32 re, F32 im, F32& lo, F32& hi) {
  const __m256 a = _mm256_unpacklo_ps(re.v, im.v);
  const __m256 b = _mm256_unpackhi_ps(re.v, im.v);
  lo = _mm256_permute2f128_ps(a, b, 0x20);
  hi = _mm256_permute2f128_ps(a, b, 0x31);
}

// Halves of a float vector as doubles, and doubles narrowed into one float vector.
ORBA_INLINE F64 widen_low(F32 a) { return _mm256_cvtps_pd(_mm256_castps256_ps128(a.v)); }
ORBA_INLINE F64 widen_high(F32 a) { return _mm256_cvtps_pd(_mm256_extractf128_ps(a.v, 1)); }
ORBA_INLINE F32 narrow(F64 lo, F64 hi) {
  return _mm256_set_m128(_mm256_cvtpd_ps(hi.v), _mm256_cvtpd_ps(lo.v));
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
