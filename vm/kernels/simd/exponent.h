// Binary exponents of normal positive numbers as floating-point values.
#pragma once

#include "vm/kernels/simd/simd.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// floor(log2(a)).
#if ORBA_CLASS == 5
ORBA_INLINE F64 exponent(F64 a) { return _mm512_maskz_getexp_pd(0xff, a.v); }
ORBA_INLINE F32 exponent(F32 a) { return _mm512_maskz_getexp_ps(0xffff, a.v); }
#else
// The biased exponent, put below the leading bit of 2^52, becomes a summand of that number.
ORBA_INLINE F64 exponent(F64 a) {
  constexpr int64_t two_52 = 0x4330000000000000;
  return as_float(shr<52>(as_bits(a)) | I64(two_52)) - F64(0x1p52 + 1023);
}
ORBA_INLINE F32 exponent(F32 a) {
  constexpr int32_t two_23 = 0x4b000000;
  return as_float(shr<23>(as_bits(a)) | I32(two_23)) - F32(0x1p23f + 127);
}
#endif

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
