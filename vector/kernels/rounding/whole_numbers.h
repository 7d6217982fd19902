// Whole numbers next to a number, and what is left between the two. Nothing here raises an exception
// but the inexact one, and that one only where a direction is not silent.
#pragma once

#include "vector/kernels/contract/kernel.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Directions of to_whole, as the rounding instructions take them. To nearest: ties to even, since that
// is the rounding mode in a kernel. A silent rounding does not raise the inexact exception.
enum Direction { kDown = 1, kUp = 2, kToZero = 3, kToNearest = 4, kSilent = 8 };

// x where the mask is set, else +0.
#if ORBA_CLASS == 5
ORBA_INLINE F64 where(M64 m, F64 x) { return _mm512_maskz_mov_pd(m.v, x.v); }
ORBA_INLINE F32 where(M32 m, F32 x) { return _mm512_maskz_mov_ps(m.v, x.v); }
#else
template <class V>
ORBA_INLINE V where(typename V::Mask m, V x) {
  return as_float(as_bits(V(m.v)) & as_bits(x));
}
#endif

// The whole number next to x in a direction, with the sign of x.
#if ORBA_CLASS == 5
template <int direction>
ORBA_INLINE F64 to_whole(F64 x) {
  return _mm512_roundscale_pd(x.v, direction);
}
template <int direction>
ORBA_INLINE F32 to_whole(F32 x) {
  return _mm512_roundscale_ps(x.v, direction);
}
#elif ORBA_CLASS == 3
template <int direction>
ORBA_INLINE F64 to_whole(F64 x) {
  return _mm256_round_pd(x.v, direction);
}
template <int direction>
ORBA_INLINE F32 to_whole(F32 x) {
  return _mm256_round_ps(x.v, direction);
}
#elif ORBA_CLASS == 2
template <int direction>
ORBA_INLINE F64 to_whole(F64 x) {
  return _mm_round_pd(x.v, direction);
}
template <int direction>
ORBA_INLINE F32 to_whole(F32 x) {
  return _mm_round_ps(x.v, direction);
}
#else
// Numbers from 2^52 (2^23) on, infinities and NaN, given |x|.
ORBA_INLINE M64 has_no_fraction(F64 magnitude) {
  return high_above(as_bits(magnitude), 0x432fffff);
}
ORBA_INLINE M32 has_no_fraction(F32 magnitude) { return as_bits(magnitude) > I32(0x4affffff); }

// A sum with 2^52 (2^23) has no room for a fraction; what lies on the wrong side of x is one off.
template <int direction, class V>
ORBA_INLINE V to_whole(V x) {
  using E = typename V::Element;
  const V shifter(static_cast<E>(sizeof(E) == 8 ? 0x1p52 : 0x1p23)), one(E(1));
  const auto whole = has_no_fraction(abs(x));
  const V magnitude = where(~whole, abs(x));
  V y = (magnitude + shifter) - shifter;
  if constexpr ((direction & ~kSilent) == kToZero) {
    y = y - where(y > magnitude, one);
  } else if constexpr (direction == kDown || direction == kUp) {
    const V bounded = with_sign_of(x, magnitude);
    y = with_sign_of(x, y);
    y = direction == kDown ? y - where(y > bounded, one) : y + where(y < bounded, one);
  }
  return select(whole, x, with_sign_of(x, y));
}
#endif

// x - whole; 0 for infinities.
#if ORBA_CLASS == 5
ORBA_INLINE F64 rest(F64 x, F64 whole) { return _mm512_maskz_sub_pd((x != whole).v, x.v, whole.v); }
ORBA_INLINE F32 rest(F32 x, F32 whole) { return _mm512_maskz_sub_ps((x != whole).v, x.v, whole.v); }
#else
template <class V>
ORBA_INLINE V rest(V x, V whole) {
  const auto differs = x != whole;
  return where(differs, x) - where(differs, whole);
}
#endif

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
