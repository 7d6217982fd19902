// The vocabulary on class 5: AVX-512 F/DQ/BW/VL, 512-bit vectors, opmask registers.
#pragma once

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

struct M64 {
  __mmask8 v = 0;
};
struct M32 {
  __mmask16 v = 0;
};

struct I64 {
  __m512i v;
  I64() = default;
  ORBA_INLINE I64(__m512i x) : v(x) {}
  ORBA_INLINE I64(int64_t x) : v(_mm512_set1_epi64(x)) {}
};
struct I32 {
  __m512i v;
  I32() = default;
  ORBA_INLINE I32(__m512i x) : v(x) {}
  ORBA_INLINE I32(int32_t x) : v(_mm512_set1_epi32(x)) {}
};
struct F64 {
  using Element = double;
  using Mask = M64;
  using Bits = I64;
  static constexpr int lanes = 8;
  __m512d v;
  F64() = default;
  ORBA_INLINE F64(__m512d x) : v(x) {}
  ORBA_INLINE F64(double x) : v(_mm512_set1_pd(x)) {}
};
struct F32 {
  using Element = float;
  using Mask = M32;
  using Bits = I32;
  static constexpr int lanes = 16;
  __m512 v;
  F32() = default;
  ORBA_INLINE F32(__m512 x) : v(x) {}
  ORBA_INLINE F32(float x) : v(_mm512_set1_ps(x)) {}
};

// Masks.
ORBA_INLINE M64 operator|(M64 a, M64 b) { return {static_cast<__mmask8>(a.v | b.v)}; }
ORBA_INLINE M64 operator&(M64 a, M64 b) { return {static_cast<__mmask8>(a.v & b.v)}; }
ORBA_INLINE M64 operator~(M64 a) { return {static_cast<__mmask8>(~a.v)}; }
ORBA_INLINE M32 operator|(M32 a, M32 b) { return {static_cast<__mmask16>(a.v | b.v)}; }
ORBA_INLINE M32 operator&(M32 a, M32 b) { return {static_cast<__mmask16>(a.v & b.v)}; }
ORBA_INLINE M32 operator~(M32 a) { return {static_cast<__mmask16>(~a.v)}; }
ORBA_INLINE uint32_t bits(M64 m) { return m.v; }
ORBA_INLINE uint32_t bits(M32 m) { return m.v; }

// Memory. `live` lanes from the first on take part, the others read as `fill`.
ORBA_INLINE __mmask8 first_lanes(F64, int live) {
  return static_cast<__mmask8>(0xffu >> (8 - live));
}
ORBA_INLINE __mmask16 first_lanes(F32, int live) {
  return static_cast<__mmask16>(0xffffu >> (16 - live));
}
ORBA_INLINE F64 load(const double* p) { return _mm512_loadu_pd(p); }
ORBA_INLINE F32 load(const float* p) { return _mm512_loadu_ps(p); }
ORBA_INLINE F64 load_partial(const double* p, int live, double fill) {
  return _mm512_mask_loadu_pd(_mm512_set1_pd(fill), first_lanes(F64(), live), p);
}
ORBA_INLINE F32 load_partial(const float* p, int live, float fill) {
  return _mm512_mask_loadu_ps(_mm512_set1_ps(fill), first_lanes(F32(), live), p);
}
ORBA_INLINE void store(double* p, F64 x) { _mm512_storeu_pd(p, x.v); }
ORBA_INLINE void store(float* p, F32 x) { _mm512_storeu_ps(p, x.v); }
ORBA_INLINE void store_partial(double* p, int live, F64 x) {
  _mm512_mask_storeu_pd(p, first_lanes(x, live), x.v);
}
ORBA_INLINE void store_partial(float* p, int live, F32 x) {
  _mm512_mask_storeu_ps(p, first_lanes(x, live), x.v);
}

// Arithmetic.
ORBA_INLINE F64 operator+(F64 a, F64 b) { return _mm512_add_pd(a.v, b.v); }
ORBA_INLINE F64 operator-(F64 a, F64 b) { return _mm512_sub_pd(a.v, b.v); }
ORBA_INLINE F64 operator*(F64 a, F64 b) { return _mm512_mul_pd(a.v, b.v); }
ORBA_INLINE F64 operator/(F64 a, F64 b) { return _mm512_div_pd(a.v, b.v); }
ORBA_INLINE F32 operator+(F32 a, F32 b) { return _mm512_add_ps(a.v, b.v); }
ORBA_INLINE F32 operator-(F32 a, F32 b) { return _mm512_sub_ps(a.v, b.v); }
ORBA_INLINE F32 operator*(F32 a, F32 b) { return _mm512_mul_ps(a.v, b.v); }
ORBA_INLINE F32 operator/(F32 a, F32 b) { return _mm512_div_ps(a.v, b.v); }
ORBA_INLINE F64 mul_add(F64 a, F64 b, F64 c) { return _mm512_fmadd_pd(a.v, b.v, c.v); }
ORBA_INLINE F64 mul_sub(F64 a, F64 b, F64 c) { return _mm512_fmsub_pd(a.v, b.v, c.v); }
ORBA_INLINE F64 neg_mul_add(F64 a, F64 b, F64 c) { return _mm512_fnmadd_pd(a.v, b.v, c.v); }
ORBA_INLINE F32 mul_add(F32 a, F32 b, F32 c) { return _mm512_fmadd_ps(a.v, b.v, c.v); }
ORBA_INLINE F32 mul_sub(F32 a, F32 b, F32 c) { return _mm512_fmsub_ps(a.v, b.v, c.v); }
ORBA_INLINE F32 neg_mul_add(F32 a, F32 b, F32 c) { return _mm512_fnmadd_ps(a.v, b.v, c.v); }
ORBA_INLINE F64 sqrt(F64 a) { return _mm512_sqrt_pd(a.v); }
ORBA_INLINE F32 sqrt(F32 a) { return _mm512_sqrt_ps(a.v); }
ORBA_INLINE F64 min(F64 a, F64 b) { return _mm512_min_pd(a.v, b.v); }
ORBA_INLINE F64 max(F64 a, F64 b) { return _mm512_max_pd(a.v, b.v); }
ORBA_INLINE F32 min(F32 a, F32 b) { return _mm512_min_ps(a.v, b.v); }
ORBA_INLINE F32 max(F32 a, F32 b) { return _mm512_max_ps(a.v, b.v); }

// Nearest integer, ties to even, as a floating-point value.
ORBA_INLINE F64 round(F64 a) {
  return _mm512_roundscale_pd(a.v, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
}
ORBA_INLINE F32 round(F32 a) {
  return _mm512_roundscale_ps(a.v, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
}

// Bits.
ORBA_INLINE I64 as_bits(F64 a) { return _mm512_castpd_si512(a.v); }
ORBA_INLINE I32 as_bits(F32 a) { return _mm512_castps_si512(a.v); }
ORBA_INLINE F64 as_float(I64 a) { return _mm512_castsi512_pd(a.v); }
ORBA_INLINE F32 as_float(I32 a) { return _mm512_castsi512_ps(a.v); }
ORBA_INLINE I64 operator+(I64 a, I64 b) { return _mm512_add_epi64(a.v, b.v); }
ORBA_INLINE I64 operator-(I64 a, I64 b) { return _mm512_sub_epi64(a.v, b.v); }
ORBA_INLINE I64 operator&(I64 a, I64 b) { return _mm512_and_si512(a.v, b.v); }
ORBA_INLINE I64 operator|(I64 a, I64 b) { return _mm512_or_si512(a.v, b.v); }
ORBA_INLINE I64 operator^(I64 a, I64 b) { return _mm512_xor_si512(a.v, b.v); }
ORBA_INLINE I32 operator+(I32 a, I32 b) { return _mm512_add_epi32(a.v, b.v); }
ORBA_INLINE I32 operator-(I32 a, I32 b) { return _mm512_sub_epi32(a.v, b.v); }
ORBA_INLINE I32 operator&(I32 a, I32 b) { return _mm512_and_si512(a.v, b.v); }
ORBA_INLINE I32 operator|(I32 a, I32 b) { return _mm512_or_si512(a.v, b.v); }
ORBA_INLINE I32 operator^(I32 a, I32 b) { return _mm512_xor_si512(a.v, b.v); }
// The larger of every two 32-bit words, as signed numbers.
ORBA_INLINE I64 max_words(I64 a, I64 b) { return _mm512_max_epi32(a.v, b.v); }
ORBA_INLINE I32 max_words(I32 a, I32 b) { return _mm512_max_epi32(a.v, b.v); }
// Masked forms have a defined source operand: g++ 12 warns of the undefined one inside its own
// unmasked intrinsics.
template <int k>
ORBA_INLINE I64 shl(I64 a) {
  return _mm512_maskz_slli_epi64(0xff, a.v, k);
}
template <int k>
ORBA_INLINE I64 shr(I64 a) {
  return _mm512_maskz_srli_epi64(0xff, a.v, k);
}
template <int k>
ORBA_INLINE I32 shl(I32 a) {
  return _mm512_maskz_slli_epi32(0xffff, a.v, k);
}
template <int k>
ORBA_INLINE I32 shr(I32 a) {
  return _mm512_maskz_srli_epi32(0xffff, a.v, k);
}

// Comparisons. `!=` holds for unordered lanes, the others do not; `not_in` is the test of a range
// that NaN fails: true unless lo <= x <= hi.
ORBA_INLINE M64 operator<(F64 a, F64 b) { return {_mm512_cmp_pd_mask(a.v, b.v, _CMP_LT_OQ)}; }
ORBA_INLINE M64 operator<=(F64 a, F64 b) { return {_mm512_cmp_pd_mask(a.v, b.v, _CMP_LE_OQ)}; }
ORBA_INLINE M64 operator>(F64 a, F64 b) { return b < a; }
ORBA_INLINE M64 operator>=(F64 a, F64 b) { return b <= a; }
ORBA_INLINE M64 operator==(F64 a, F64 b) { return {_mm512_cmp_pd_mask(a.v, b.v, _CMP_EQ_OQ)}; }
ORBA_INLINE M64 operator!=(F64 a, F64 b) { return {_mm512_cmp_pd_mask(a.v, b.v, _CMP_NEQ_UQ)}; }
ORBA_INLINE M64 not_le(F64 a, F64 b) { return {_mm512_cmp_pd_mask(a.v, b.v, _CMP_NLE_UQ)}; }
ORBA_INLINE M32 operator<(F32 a, F32 b) { return {_mm512_cmp_ps_mask(a.v, b.v, _CMP_LT_OQ)}; }
ORBA_INLINE M32 operator<=(F32 a, F32 b) { return {_mm512_cmp_ps_mask(a.v, b.v, _CMP_LE_OQ)}; }
ORBA_INLINE M32 operator>(F32 a, F32 b) { return b < a; }
ORBA_INLINE M32 operator>=(F32 a, F32 b) { return b <= a; }
ORBA_INLINE M32 operator==(F32 a, F32 b) { return {_mm512_cmp_ps_mask(a.v, b.v, _CMP_EQ_OQ)}; }
ORBA_INLINE M32 operator!=(F32 a, F32 b) { return {_mm512_cmp_ps_mask(a.v, b.v, _CMP_NEQ_UQ)}; }
ORBA_INLINE M32 not_le(F32 a, F32 b) { return {_mm512_cmp_ps_mask(a.v, b.v, _CMP_NLE_UQ)}; }
ORBA_INLINE M32 operator>(I32 a, I32 b) { return {_mm512_cmpgt_epi32_mask(a.v, b.v)}; }
ORBA_INLINE M64 operator==(I64 a, I64 b) { return {_mm512_cmpeq_epi64_mask(a.v, b.v)}; }
ORBA_INLINE M32 operator==(I32 a, I32 b) { return {_mm512_cmpeq_epi32_mask(a.v, b.v)}; }

// Lanes whose high 32 bits, as signed numbers, are above `limit`.
ORBA_INLINE M64 high_above(I64 a, int32_t limit) {
  const int64_t bound = static_cast<int64_t>(
      (static_cast<uint64_t>(static_cast<uint32_t>(limit)) << 32) | 0xffffffffu);
  return {_mm512_cmpgt_epi64_mask(a.v, _mm512_set1_epi64(bound))};
}

ORBA_INLINE F64 select(M64 m, F64 a, F64 b) { return _mm512_mask_blend_pd(m.v, b.v, a.v); }
ORBA_INLINE F32 select(M32 m, F32 a, F32 b) { return _mm512_mask_blend_ps(m.v, b.v, a.v); }
ORBA_INLINE I64 select(M64 m, I64 a, I64 b) { return _mm512_mask_blend_epi64(m.v, b.v, a.v); }
ORBA_INLINE I32 select(M32 m, I32 a, I32 b) { return _mm512_mask_blend_epi32(m.v, b.v, a.v); }

// Approximate reciprocal and reciprocal square root of every 32-bit lane, relative error 2^-14.
ORBA_INLINE F32 approx_recip(F32 a) { return _mm512_rcp14_ps(a.v); }
ORBA_INLINE F32 approx_rsqrt(F32 a) { return _mm512_rsqrt14_ps(a.v); }
ORBA_INLINE F64 approx_recip(F64 a) { return _mm512_rcp14_pd(a.v); }
ORBA_INLINE F64 approx_rsqrt(F64 a) { return _mm512_rsqrt14_pd(a.v); }

// (re, im) pairs in memory order, two vectors, to vectors of real and of imaginary parts and back.
ORBA_INLINE void deinterleave(F64 lo, F64 hi, F64& re, F64& im) {
  re = _mm512_permutex2var_pd(lo.v, _mm512_setr_epi64(0, 2, 4, 6, 8, 10, 12, 14), hi.v);
  im = _mm512_permutex2var_pd(lo.v, _mm512_setr_epi64(1, 3, 5, 7, 9, 11, 13, 15), hi.v);
}
ORBA_INLINE void interleave(F64 re, F64 im, F64& lo, F64& hi) {
  lo = _mm512_permutex2var_pd(re.v, _mm512_setr_epi64(0, 8, 1, 9, 2, 10, 3, 11), im.v);
  hi = _mm512_permutex2var_pd(re.v, _mm512_setr_epi64(4, 12, 5, 13, 6, 14, 7, 15), im.v);
}
ORBA_INLINE void deinterleave(F32 lo, F32 hi, F32& re, F32& im) {
  const __m512i even = _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
  re = _mm512_permutex2var_ps(lo.v, even, hi.v);
  im = _mm512_permutex2var_ps(lo.v, _mm512_add_epi32(even, _mm512_set1_epi32(1)), hi.v);
}
ORBA_INLINE void interleave(F32 re, F32 im, F32& lo, F32& hi) {
  const __m512i low = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
  lo = _mm512_permutex2var_ps(re.v, low, im.v);
  hi = _mm512_permutex2var_ps(re.v, _mm512_add_epi32(low, _mm512_set1_epi32(8)), im.v);
}

// Halves of a float vector as doubles, and doubles narrowed into one float vector.
ORBA_INLINE F64 widen_low(F32 a) { return _mm512_cvtps_pd(_mm512_castps512_ps256(a.v)); }
ORBA_INLINE F64 widen_high(F32 a) { return _mm512_cvtps_pd(_mm512_extractf32x8_ps(a.v, 1)); }
ORBA_INLINE F32 narrow(F64 lo, F64 hi) {
  return _mm512_insertf32x8(_mm512_castps256_ps512(_mm512_cvtpd_ps(lo.v)), _mm512_cvtpd_ps(hi.v),
                            1);
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
