// Vocabulary that follows from the per-class operations.
#pragma once

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

ORBA_INLINE bool any(M64 m) { return bits(m) != 0; }
ORBA_INLINE bool any(M32 m) { return bits(m) != 0; }

ORBA_INLINE F64 abs(F64 a) { return as_float(as_bits(a) & I64(INT64_MAX)); }
ORBA_INLINE F32 abs(F32 a) { return as_float(as_bits(a) & I32(INT32_MAX)); }
ORBA_INLINE F64 negate(F64 a) { return as_float(as_bits(a) ^ I64(INT64_MIN)); }
ORBA_INLINE F32 negate(F32 a) { return as_float(as_bits(a) ^ I32(INT32_MIN)); }

// y with the sign bit of x set too: the sign of a result that may have lost that of a zero.
#if ORBA_CLASS == 5
ORBA_INLINE F64 with_sign_of(F64 x, F64 y) {
  constexpr int or_of_and = 0xf8;  // a | (b & c)
  return as_float(
      I64(_mm512_ternarylogic_epi64(as_bits(y).v, as_bits(x).v, I64(INT64_MIN).v, or_of_and)));
}
ORBA_INLINE F32 with_sign_of(F32 x, F32 y) {
  constexpr int or_of_and = 0xf8;
  return as_float(
      I32(_mm512_ternarylogic_epi32(as_bits(y).v, as_bits(x).v, I32(INT32_MIN).v, or_of_and)));
}
#else
template <class V>
ORBA_INLINE V with_sign_of(V x, V y) {
  return as_float(as_bits(y) | (as_bits(x) & as_bits(V(-0.0f))));
}
#endif

ORBA_INLINE double first_lane(F64 x) { return x.v[0]; }

// Lanes whose high word (single precision: whole word), as an unsigned number, lies outside
// [lo, hi]: one subtraction and one signed compare, and NaN, infinity and both signs of zero fall
// on the outside of any range of normal numbers.
ORBA_INLINE M64 outside(I64 a, uint32_t lo, uint32_t hi) {
  const uint64_t bias = static_cast<uint64_t>(lo ^ 0x80000000u) << 32;
  return high_above(a - I64(static_cast<int64_t>(bias)),
                    static_cast<int32_t>((hi - lo) ^ 0x80000000u));
}
ORBA_INLINE M32 outside(I32 a, uint32_t lo, uint32_t hi) {
  return (a - I32(static_cast<int32_t>(lo ^ 0x80000000u))) >
         I32(static_cast<int32_t>((hi - lo) ^ 0x80000000u));
}
// The same for one of two numbers or both.
ORBA_INLINE M64 outside(I64 a, I64 b, uint32_t lo, uint32_t hi) {
#if ORBA_CLASS < 2
  return outside(a, lo, hi) | outside(b, lo, hi);
#else
  const I64 bias(static_cast<int64_t>(static_cast<uint64_t>(lo ^ 0x80000000u) << 32));
  return high_above(max_words(a - bias, b - bias), static_cast<int32_t>((hi - lo) ^ 0x80000000u));
#endif
}
ORBA_INLINE M32 outside(I32 a, I32 b, uint32_t lo, uint32_t hi) {
#if ORBA_CLASS < 2
  return outside(a, lo, hi) | outside(b, lo, hi);
#else
  const I32 bias(static_cast<int32_t>(lo ^ 0x80000000u));
  return max_words(a - bias, b - bias) > I32(static_cast<int32_t>((hi - lo) ^ 0x80000000u));
#endif
}

// Powers of two in hexadecimal constants read best; these build them from an exponent.
constexpr double pow2(int e) {
  return __builtin_bit_cast(double, static_cast<uint64_t>(e + 1023) << 52);
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
