// Integer lanes as generators use them: products, conversion to floating point, loads and stores.
#pragma once

#include "vector/kernels/simd/simd.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

#if ORBA_CLASS == 5
ORBA_INLINE I64 load(const uint64_t* p) { return _mm512_loadu_si512(p); }
ORBA_INLINE I32 load(const uint32_t* p) { return _mm512_loadu_si512(p); }
ORBA_INLINE void store(uint64_t* p, I64 a) { _mm512_storeu_si512(p, a.v); }
ORBA_INLINE void store(uint32_t* p, I32 a) { _mm512_storeu_si512(p, a.v); }
// 64-bit products of the low 32-bit word of every 64-bit lane.
ORBA_INLINE I64 mul_low_words(I64 a, I64 b) { return _mm512_mul_epu32(a.v, b.v); }
// Stores the low 32-bit word of every 64-bit lane.
ORBA_INLINE void store_low_words(uint32_t* p, I64 a) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_cvtepi64_epi32(a.v));
}
// Stores the lanes rounded to float.
ORBA_INLINE void store_narrow(float* p, F64 a) { _mm256_storeu_ps(p, _mm512_cvtpd_ps(a.v)); }
// Stores the floors of lanes within the range of the result.
ORBA_INLINE void store_floor(int32_t* p, F64 a) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p),
                      _mm512_cvt_roundpd_epi32(a.v, _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC));
}
// Lanes in 0 to 2^52 - 1 as doubles.
ORBA_INLINE F64 to_double_52(I64 a) { return _mm512_cvtepu64_pd(a.v); }
// Halves of a vector of unsigned 32-bit words as doubles.
ORBA_INLINE F64 to_double_low(I32 a) { return _mm512_cvtepu32_pd(_mm512_castsi512_si256(a.v)); }
ORBA_INLINE F64 to_double_high(I32 a) {
  return _mm512_cvtepu32_pd(_mm512_extracti64x4_epi64(a.v, 1));
}
// Low words of the products of 32-bit lanes.
ORBA_INLINE I32 mul_low(I32 a, I32 b) { return _mm512_mullo_epi32(a.v, b.v); }
// The low and the high words of two vectors, in an order that the joins undo.
ORBA_INLINE I32 low_words(I64 a, I64 b) {
  return as_bits(F32(_mm512_shuffle_ps(as_float(I32(a.v)).v, as_float(I32(b.v)).v, 0x88)));
}
ORBA_INLINE I32 high_words(I64 a, I64 b) {
  return as_bits(F32(_mm512_shuffle_ps(as_float(I32(a.v)).v, as_float(I32(b.v)).v, 0xdd)));
}
ORBA_INLINE I64 join_first(I32 low, I32 high) { return _mm512_unpacklo_epi32(low.v, high.v); }
ORBA_INLINE I64 join_second(I32 low, I32 high) { return _mm512_unpackhi_epi32(low.v, high.v); }
// The integer part of a double and the nearest integer, off a middle by 2^-22 at most, in any
// rounding mode and for |a| < 2^30.
ORBA_INLINE F64 trunc_small(F64 a) {
  return _mm512_roundscale_pd(a.v, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
}
ORBA_INLINE F64 round_small(F64 a) { return round(a); }
// floor(a*b + c), the sum rounded down; on this class alone.
ORBA_INLINE F64 floor_mul_add(F64 a, F64 b, F64 c) {
  constexpr int down = _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC;
  return _mm512_roundscale_pd(_mm512_fmadd_round_pd(a.v, b.v, c.v, down), down);
}
// Exchanges rows and columns.
ORBA_INLINE void transpose(F64 (&v)[8]) {
  F64 w[8];
  ORBA_UNROLL
  for (int i = 0; i < 8; i += 2) {
    w[i] = _mm512_unpacklo_pd(v[i].v, v[i + 1].v);
    w[i + 1] = _mm512_unpackhi_pd(v[i].v, v[i + 1].v);
  }
  ORBA_UNROLL
  for (int i = 0; i < 2; ++i) {
    const __m512d low_02 = _mm512_shuffle_f64x2(w[i].v, w[i + 2].v, 0x88);
    const __m512d low_13 = _mm512_shuffle_f64x2(w[i].v, w[i + 2].v, 0xdd);
    const __m512d high_02 = _mm512_shuffle_f64x2(w[i + 4].v, w[i + 6].v, 0x88);
    const __m512d high_13 = _mm512_shuffle_f64x2(w[i + 4].v, w[i + 6].v, 0xdd);
    v[i] = _mm512_shuffle_f64x2(low_02, high_02, 0x88);
    v[i + 2] = _mm512_shuffle_f64x2(low_13, high_13, 0x88);
    v[i + 4] = _mm512_shuffle_f64x2(low_02, high_02, 0xdd);
    v[i + 6] = _mm512_shuffle_f64x2(low_13, high_13, 0xdd);
  }
}
#else
#  if ORBA_CLASS == 3
ORBA_INLINE __m256i load_vector(const void* p) {
  return _mm256_loadu_si256(static_cast<const __m256i*>(p));
}
ORBA_INLINE void store_vector(void* p, __m256i a) {
  _mm256_storeu_si256(static_cast<__m256i*>(p), a);
}
ORBA_INLINE I64 mul_low_words(I64 a, I64 b) { return _mm256_mul_epu32(a.v, b.v); }
ORBA_INLINE void store_low_words(uint32_t* p, I64 a) {
  const __m256i packed =
      _mm256_permutevar8x32_epi32(a.v, _mm256_setr_epi32(0, 2, 4, 6, 0, 0, 0, 0));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(packed));
}
ORBA_INLINE void store_narrow(float* p, F64 a) { _mm_storeu_ps(p, _mm256_cvtpd_ps(a.v)); }
ORBA_INLINE void store_floor(int32_t* p, F64 a) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_cvttpd_epi32(_mm256_floor_pd(a.v)));
}
// The low word of every 64-bit lane below another one.
ORBA_INLINE I64 with_high_word(I64 a, int32_t high) {
  return _mm256_blend_epi32(a.v, _mm256_set1_epi32(high), 0xaa);
}
ORBA_INLINE F64 trunc_small(F64 a) {
  return _mm256_round_pd(a.v, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
}
ORBA_INLINE void transpose(F64 (&v)[4]) {
  const __m256d even_01 = _mm256_unpacklo_pd(v[0].v, v[1].v);
  const __m256d odd_01 = _mm256_unpackhi_pd(v[0].v, v[1].v);
  const __m256d even_23 = _mm256_unpacklo_pd(v[2].v, v[3].v);
  const __m256d odd_23 = _mm256_unpackhi_pd(v[2].v, v[3].v);
  v[0] = _mm256_permute2f128_pd(even_01, even_23, 0x20);
  v[1] = _mm256_permute2f128_pd(odd_01, odd_23, 0x20);
  v[2] = _mm256_permute2f128_pd(even_01, even_23, 0x31);
  v[3] = _mm256_permute2f128_pd(odd_01, odd_23, 0x31);
}
#  else
ORBA_INLINE __m128i load_vector(const void* p) {
  return _mm_loadu_si128(static_cast<const __m128i*>(p));
}
ORBA_INLINE void store_vector(void* p, __m128i a) { _mm_storeu_si128(static_cast<__m128i*>(p), a); }
ORBA_INLINE I64 mul_low_words(I64 a, I64 b) { return _mm_mul_epu32(a.v, b.v); }
ORBA_INLINE void store_low_words(uint32_t* p, I64 a) {
  const __m128i packed = _mm_shuffle_epi32(a.v, _MM_SHUFFLE(2, 0, 2, 0));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(p), packed);
}
ORBA_INLINE void store_narrow(float* p, F64 a) {
  _mm_storel_pi(reinterpret_cast<__m64*>(p), _mm_cvtpd_ps(a.v));
}
ORBA_INLINE void store_floor(int32_t* p, F64 a) {
  // A number that truncation has raised is a negative one with a fraction.
  const __m128d whole = _mm_cvtepi32_pd(_mm_cvttpd_epi32(a.v));
  const __m128d one_less = _mm_and_pd(_mm_cmpgt_pd(whole, a.v), _mm_set1_pd(1.0));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_cvttpd_epi32(_mm_sub_pd(whole, one_less)));
}
ORBA_INLINE I64 with_high_word(I64 a, int32_t high) {
  return (a & I64(int64_t{0xffffffff})) |
         I64(static_cast<int64_t>(static_cast<uint64_t>(high) << 32));
}
ORBA_INLINE F64 trunc_small(F64 a) {
#    if ORBA_CLASS == 2
  return _mm_round_pd(a.v, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
#    else
  return _mm_cvtepi32_pd(_mm_cvttpd_epi32(a.v));
#    endif
}
ORBA_INLINE void transpose(F64 (&v)[2]) { interleave(v[0], v[1], v[0], v[1]); }
#  endif
ORBA_INLINE F64 round_small(F64 a) {
#  if ORBA_CLASS >= 2
  return round(a);
#  else
  return trunc_small(a + F64(0x1p30 + 0.5)) - F64(0x1p30);
#  endif
}
ORBA_INLINE I64 load(const uint64_t* p) { return load_vector(p); }
ORBA_INLINE I32 load(const uint32_t* p) { return load_vector(p); }
ORBA_INLINE void store(uint64_t* p, I64 a) { store_vector(p, a.v); }
ORBA_INLINE void store(uint32_t* p, I32 a) { store_vector(p, a.v); }
ORBA_INLINE F64 to_double_52(I64 a) {
  constexpr int64_t two_52 = 0x4330000000000000;
  return as_float(a | I64(two_52)) - F64(0x1p52);
}
#  if ORBA_CLASS == 3
ORBA_INLINE F64 to_double_low(I32 a) {
  return to_double_52(_mm256_cvtepu32_epi64(_mm256_castsi256_si128(a.v)));
}
ORBA_INLINE F64 to_double_high(I32 a) {
  return to_double_52(_mm256_cvtepu32_epi64(_mm256_extracti128_si256(a.v, 1)));
}
ORBA_INLINE I32 mul_low(I32 a, I32 b) { return _mm256_mullo_epi32(a.v, b.v); }
ORBA_INLINE I32 low_words(I64 a, I64 b) {
  return as_bits(F32(_mm256_shuffle_ps(as_float(I32(a.v)).v, as_float(I32(b.v)).v, 0x88)));
}
ORBA_INLINE I32 high_words(I64 a, I64 b) {
  return as_bits(F32(_mm256_shuffle_ps(as_float(I32(a.v)).v, as_float(I32(b.v)).v, 0xdd)));
}
ORBA_INLINE I64 join_first(I32 low, I32 high) { return _mm256_unpacklo_epi32(low.v, high.v); }
ORBA_INLINE I64 join_second(I32 low, I32 high) { return _mm256_unpackhi_epi32(low.v, high.v); }
#  else
ORBA_INLINE I32 low_words(I64 a, I64 b) {
  return as_bits(F32(_mm_shuffle_ps(as_float(I32(a.v)).v, as_float(I32(b.v)).v, 0x88)));
}
ORBA_INLINE I32 high_words(I64 a, I64 b) {
  return as_bits(F32(_mm_shuffle_ps(as_float(I32(a.v)).v, as_float(I32(b.v)).v, 0xdd)));
}
ORBA_INLINE I64 join_first(I32 low, I32 high) { return _mm_unpacklo_epi32(low.v, high.v); }
ORBA_INLINE I64 join_second(I32 low, I32 high) { return _mm_unpackhi_epi32(low.v, high.v); }
ORBA_INLINE F64 to_double_low(I32 a) {
  return as_float(join_first(a, I32(0x43300000))) - F64(0x1p52);
}
ORBA_INLINE F64 to_double_high(I32 a) {
  return as_float(join_second(a, I32(0x43300000))) - F64(0x1p52);
}
#    if ORBA_CLASS == 2
ORBA_INLINE I32 mul_low(I32 a, I32 b) { return _mm_mullo_epi32(a.v, b.v); }
#    else
ORBA_INLINE I32 mul_low(I32 a, I32 b) {
  const I64 even = mul_low_words(I64(a.v), I64(b.v));
  const I64 odd = mul_low_words(shr<32>(I64(a.v)), shr<32>(I64(b.v)));
  return ((even & I64(int64_t{0xffffffff})) | shl<32>(odd)).v;
}
#    endif
#  endif
#endif

// Stores lanes as numbers of the element type: themselves, rounded to float, their floors.
ORBA_INLINE void store_as(double* p, F64 a) { store(p, a); }
ORBA_INLINE void store_as(float* p, F64 a) { store_narrow(p, a); }
ORBA_INLINE void store_as(int32_t* p, F64 a) { store_floor(p, a); }

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
