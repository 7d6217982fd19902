// Starting values of reciprocals and reciprocal square roots, for normal arguments whose result is
// normal too. Relative error at most 2^-11.4 on classes 0 to 3, 2^-14 on class 5.
#pragma once

#include "vector/kernels/contract/pack.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Keeps the leading bits of a, so that a product with another short number is exact.
ORBA_INLINE F64 shortened(F64 a, int64_t mask) { return as_float(as_bits(a) & I64(mask)); }
ORBA_INLINE F32 shortened(F32 a, int32_t mask) { return as_float(as_bits(a) & I32(mask)); }

ORBA_INLINE F32 recip_seed(F32 x) { return approx_recip(x); }

// At most 12 significant bits, so that the square is exact.
ORBA_INLINE F32 rsqrt_seed(F32 x) {
  return shortened(approx_rsqrt(x), static_cast<int32_t>(0xfffff000));
}

#if ORBA_CLASS == 5

ORBA_INLINE F64 recip_seed(F64 x) { return approx_recip(x); }

// At most 21 significant bits.
ORBA_INLINE F64 rsqrt_seed(F64 x) {
  return shortened(approx_rsqrt(x), static_cast<int64_t>(0xffffffff00000000));
}

#else

// The hardware knows the single-precision approximation only. The high word of a double holds sign,
// exponent and 20 bits of the significand. Those bits and the lowest exponent bit become a float in
// [1/2, 2), the approximation comes back into a high word, and the rest of the exponent is put
// right by integers. The seeds have at most 21 significant bits.
ORBA_INLINE Wide<F64> rsqrt_seed(I32 high) {
  const I32 significand = (shl<3>(high) & I32(0x00ffffff)) | I32(0x3f000000);
  const I32 approx = shr<3>(as_bits(approx_rsqrt(as_float(significand))));
  return from_high_words(approx + I32(0x57f00000) - shr<1>(high & I32(0x7fe00000)));
}

#endif

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
