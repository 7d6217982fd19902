// Starting values of reciprocals and reciprocal square roots, for normal arguments whose result is
// normal too. Relative error at most 2^-11.4 on classes 0 to 3, 2^-14 on class 5.
#pragma once

#include "vm/kernels/simd/simd.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Keeps the leading bits of a, so that a product with another short number is exact.
ORBA_INLINE F64 shortened(F64 a, int64_t mask) { return as_float(as_bits(a) & I64(mask)); }
ORBA_INLINE F32 shortened(F32 a, int32_t mask) { return as_float(as_bits(a) & I32(mask)); }

ORBA_INLINE F32 recip_seed(F32 x) { return approx_recip(x); }

// At most 12 significant bits, so that the square is exact.
ORBA_INLINE F32 rsqrt_seed(F32 x) { return shortened(approx_rsqrt(x), static_cast<int32_t>(0xfffff000)); }

#if ORBA_CLASS == 5

ORBA_INLINE F64 recip_seed(F64 x) { return approx_recip(x); }

// At most 21 significant bits.
ORBA_INLINE F64 rsqrt_seed(F64 x) {
  return shortened(approx_rsqrt(x), static_cast<int64_t>(0xffffffff00000000));
}

#else

// The hardware knows the single-precision approximations only. The high word of a double holds sign,
// exponent and 20 bits of the significand; those bits become a float of known exponent, the
// approximation comes back into a high word, and the exponent is put right by integers. The low
// words compute along and are cleared: the seeds have at most 21 significant bits.

ORBA_INLINE F64 recip_seed(F64 x) {
  const I32 high = as_words(as_bits(x));
  const I32 significand = (shl<3>(high) & I32(0x007fffff)) | I32(0x3f800000);  // in [1, 2)
  const I32 approx = as_bits(approx_recip(as_float(significand)));
  // 0x77f00000 is (2 * 0x3ff << 20) less the exponent that 1.0f leaves after the shift; the
  // subtraction takes sign and exponent of x off it.
  const I32 result = shr<3>(approx) + I32(0x77f00000) - (high & I32(static_cast<int32_t>(0xfff00000)));
  return as_float(as_dwords(result) & I64(static_cast<int64_t>(0xffffffff00000000)));
}

ORBA_INLINE F64 rsqrt_seed(F64 x) {
  const I32 high = as_words(as_bits(x));
  // The lowest exponent bit stays with the significand: a float in [1/2, 2).
  const I32 significand = (shl<3>(high) & I32(0x00ffffff)) | I32(0x3f000000);
  const I32 approx = as_bits(approx_rsqrt(as_float(significand)));
  const I32 result = shr<3>(approx) + I32(0x57f00000) - shr<1>(high & I32(0x7fe00000));
  return as_float(as_dwords(result) & I64(static_cast<int64_t>(0xffffffff00000000)));
}

#endif

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
