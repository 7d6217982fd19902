// Normal positive numbers taken apart: a = significand(a) * 2^exponent(a), the significand in [1,
// 2).
#pragma once

#include "vector/kernels/simd/simd.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

constexpr int64_t kExponentField64 = 0x7ff0000000000000, kOne64 = 0x3ff0000000000000;
constexpr int32_t kExponentField32 = 0x7f800000, kOne32 = 0x3f800000;

#if ORBA_CLASS == 3
ORBA_INLINE F32 to_float(I32 a) { return _mm256_cvtepi32_ps(a.v); }
#elif ORBA_CLASS < 3
ORBA_INLINE F32 to_float(I32 a) { return _mm_cvtepi32_ps(a.v); }
#endif

// The exponent as a floating-point value, times kExponentUnit.
template <class V>
constexpr typename V::Element kExponentUnit = 1;

#if ORBA_CLASS == 5
ORBA_INLINE F64 exponent(F64 a) { return _mm512_maskz_getexp_pd(0xff, a.v); }
ORBA_INLINE F32 exponent(F32 a) { return _mm512_maskz_getexp_ps(0xffff, a.v); }
ORBA_INLINE F64 significand(F64 a) {
  return _mm512_maskz_getmant_pd(0xff, a.v, _MM_MANT_NORM_1_2, _MM_MANT_SIGN_zero);
}
ORBA_INLINE F32 significand(F32 a) {
  return _mm512_maskz_getmant_ps(0xffff, a.v, _MM_MANT_NORM_1_2, _MM_MANT_SIGN_zero);
}
#else
// The biased exponent, put below the leading bit of 2^52, becomes a summand of that number.
ORBA_INLINE F64 exponent(F64 a) {
  constexpr int64_t two_52 = 0x4330000000000000;
  return as_float(shr<52>(as_bits(a)) | I64(two_52)) - F64(0x1p52 + 1023);
}
// An exponent field converts as it stands.
template <>
constexpr float kExponentUnit<F32> = 0x1p23f;
ORBA_INLINE F32 exponent(F32 a) {
  return to_float((as_bits(a) & I32(kExponentField32)) - I32(kOne32));
}

ORBA_INLINE F64 significand(F64 a) {
  return as_float((as_bits(a) & I64(~kExponentField64)) | I64(kOne64));
}
ORBA_INLINE F32 significand(F32 a) {
  return as_float(as_bits(a) - ((as_bits(a) & I32(kExponentField32)) - I32(kOne32)));
}
#endif

// a * 2^-exponent(b) for results that are normal.
ORBA_INLINE F64 without_exponent(F64 a, F64 b) {
  return as_float(as_bits(a) - ((as_bits(b) & I64(kExponentField64)) - I64(kOne64)));
}
ORBA_INLINE F32 without_exponent(F32 a, F32 b) {
  return as_float(as_bits(a) - ((as_bits(b) & I32(kExponentField32)) - I32(kOne32)));
}

// Lanes that are not normal, finite and positive.
#if ORBA_CLASS == 5
ORBA_INLINE M64 not_positive_normal(F64 a) { return {_mm512_fpclass_pd_mask(a.v, 0xff)}; }
ORBA_INLINE M32 not_positive_normal(F32 a) { return {_mm512_fpclass_ps_mask(a.v, 0xff)}; }
#else
ORBA_INLINE M64 not_positive_normal(F64 a) { return outside(as_bits(a), 0x00100000, 0x7fefffff); }
ORBA_INLINE M32 not_positive_normal(F32 a) { return outside(as_bits(a), 0x00800000, 0x7f7fffff); }
#endif

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
