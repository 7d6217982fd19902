// InvSqrt: 1/sqrt(a). KAM_STATUS_SING at both zeros (infinity by the sign of zero),
// KAM_STATUS_ERRDOM below zero.
//
// y0 is a short seed, so that y0^2 is exact and e = 1 - a*y0^2 carries one rounding of its own
// size; then y = y0 + y0*w(e) with w the head of the binomial series of (1 - e)^(-1/2) - 1. The
// only error near the size of a unit is the last rounding: 0.5 ULP and 2^-10 of one. LA shares the
// kernel: without the cut, e = 1 - (a*y0)*y0 costs one operation less and up to 1.01 ULP.
//
// Without FMA (classes 0 to 2) the seed is refined once and cut to 17 bits; with the head of a cut
// to 19 bits both a_head*y0^2 and its difference from 1 are exact, and the tail's product is small.
// In single precision the same with 12-bit halves.
#include "vector/kernels/arith/arith_coefficients.h"
#include "vector/kernels/arith/seed_tables.h"
#include "vector/kernels/arith/seeds.h"
#include "vector/kernels/contract/kernel.h"
#include "vector/kernels/contract/scalar.h"
#include "vector/kernels/simd/pair_arithmetic.h"
#include "vector/kernels/simd/polynomial.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

ORBA_COLD int32_t inv_sqrt_callout(const double* a, double* r) {
  double x = *a;
  if (is_nan_or_inf(x)) {
    if (x > 0) {
      *r = 0.0 / x;
      return kOk;
    }
    *r = x / x;
    return is_inf(x) ? kErrDom : kOk;
  }
  if (x == 0) {
    *r = 1.0 / x;
    return kSing;
  }
  if (x < 0) {
    *r = (x - x) / (x - x);
    return kErrDom;
  }

  int exponent_adjust = 0;
  if (bit_cast<uint64_t>(x) < 0x0010000000000000) {
    x *= pow2(60);
    exponent_adjust = 30;
  }
  const uint64_t bits = bit_cast<uint64_t>(x);
  const int exponent = static_cast<int>(bits >> 52) - 1023;
  const int parity = exponent & 1;
  // m in [1, 4), x = m * 2^(exponent - parity)
  const double m = bit_cast<double>((bits & 0x000fffffffffffff) | (uint64_t{0x3ff} + parity) << 52);
  const double seed = kInvSqrtSeed[((bits >> 47) & 31) + 32 * parity];

  // |e| < 2^-5.9. The square of the seed has 26 bits, so its products with the halves of m are
  // exact.
  const double square = seed * seed;
  const double m_head = head(m);
  const double e = (1.0 - m_head * square) - (m - m_head) * square;

  // (1 - e)^(-1/2) - 1 by the binomial series; the rest, from e^10 on, is below 2^-61.
  double p = 12155.0 / 65536;
  p = mul_add(p, e, 6435.0 / 32768);
  p = mul_add(p, e, 429.0 / 2048);
  p = mul_add(p, e, 231.0 / 1024);
  p = mul_add(p, e, 63.0 / 256);
  p = mul_add(p, e, 35.0 / 128);
  p = mul_add(p, e, 5.0 / 16);
  p = mul_add(p, e, 3.0 / 8);
  const double w = mul_add(e * e, p, 0.5 * e);
  const double y = mul_add(seed, w, seed);
  *r = y * pow2(exponent_adjust - (exponent - parity) / 2);
  return kOk;
}

// Arguments between these powers of two take the vector path. LA and HA leave room for the
// residual; at the upper end the square of the seed, near 1/a, stays normal, which flush-to-zero
// needs. Without FMA the tails of a and of that square, down to 2^-23 of them in single precision,
// have to be normal too.
struct Domain {
  uint32_t low, high;  // of the high word
};
constexpr Domain kFullDomain = {0x03500000, 0x7fbfffff};  // [2^-970, 2^1021)
constexpr Domain kEpDomain = {0x00300000, 0x7fbfffff};    // [2^-1020, 2^1021)
#if ORBA_CLASS >= 3
constexpr Domain kFloatFullDomain = {0x00800000, 0x7dffffff};  // [2^-126, 2^125)
#else
constexpr Domain kFloatFullDomain = {0x0c800000, 0x71ffffff};  // [2^-102, 2^101)
#endif
constexpr Domain kFloatEpDomain = {0x00800000, 0x7f7fffff};  // all normal numbers

#if ORBA_CLASS >= 3

// 1 - x*y^2 for a short y, to half a unit of itself.
template <class V>
ORBA_INLINE V residual(V x, V y) {
  return neg_mul_add(x, y * y, V(1));
}
ORBA_INLINE F64 short_seed(F64, F64 seed) { return seed; }

#else

ORBA_INLINE F64 short_seed(F64 x, F64 seed) {
#  if ORBA_CLASS == 1
  const F64 y = F64(1) / sqrt(x);
  (void)seed;
#  else
  const F64 y = seed * (1.5 - (0.5 * x) * (seed * seed));
#  endif
  return shortened(y, static_cast<int64_t>(0xfffffff000000000));  // 17 bits
}
ORBA_INLINE F64 residual(F64 x, F64 y) {
  const F64 square = y * y;
  const F64 x_head = shortened(x, static_cast<int64_t>(0xfffffffc00000000));  // 19 bits
  return (1.0 - x_head * square) - (x - x_head) * square;
}
ORBA_INLINE F32 residual(F32 x, F32 y) {
  constexpr int32_t head_mask = static_cast<int32_t>(0xfffff000);  // 12 bits
  const F32 square = y * y;
  const F32 square_head = shortened(square, head_mask), square_tail = square - square_head;
  const F32 x_head = shortened(x, head_mask), x_tail = x - x_head;
  return ((1.0f - x_head * square_head) - (x_head * square_tail + x_tail * square_head)) -
         x_tail * square_tail;
}

#endif

// y*(1 - e)^(-1/2) from the seed y. Double, |e| < 2^-10.3 (class 5: 2^-12.9): degree 4 of the
// binomial series, fitted to the interval; the rest is below 2^-55. From the refined seed, |e| <
// 2^-15, degree 3 does. Single, |e| < 2^-9.6: degree 2, rest below 2^-30.
struct Full {
  static constexpr Domain domain = kFullDomain, float_domain = kFloatFullDomain;
  ORBA_INLINE static F64 refine(F64 x, F64 seed) {
    const F64 y = short_seed(x, seed);
    const F64 e = residual(x, y);
    if constexpr (!kFused) return y + y * (e * (0.5 + e * (0.375 + e * 0.3125)));
    return mul_add(y, e * horner(e, kInvSqrtSeries), y);
  }
  ORBA_INLINE static F32 refine(F32 x) {
    const F32 y = rsqrt_seed(x);
    const F32 e = residual(x, y);
    return mul_add(y * e, mul_add(F32(0.375f), e, F32(0.5f)), y);
  }
};

// Double to e^2 (to e with the better seed of class 5), single one Newton step.
struct Ep {
  static constexpr Domain domain = kEpDomain, float_domain = kFloatEpDomain;
  ORBA_INLINE static F64 refine(F64 x, F64 y) {
    const F64 e = neg_mul_add(x, y * y, F64(1));
    if constexpr (kClass == 5) return mul_add(0.5 * y, e, y);
    return mul_add(y, e * horner(e, kInvSqrtShortSeries), y);
  }
  ORBA_INLINE static F32 refine(F32 x) {
    const F32 y = approx_rsqrt(x);
    return (-0.5f * y) * mul_add(x * y, y, F32(-3.0f));
  }
};

template <class Method>
struct InvSqrt64 {
  using In = double;
  using Out = double;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
#if ORBA_CLASS == 5
  using Flag = M64;
  static constexpr int unroll = 4;
  ORBA_INLINE static F64 eval(F64 x, M64& flag) {
    flag = flag | outside(as_bits(x), Method::domain.low, Method::domain.high);
    return Method::refine(x, rsqrt_seed(x));
  }
#else
  using Flag = WordMask;
  static constexpr bool wide = true;
  static constexpr int unroll = 1;
  ORBA_INLINE static Wide<F64> eval(Wide<F64> x, WordMask& flag) {
    const I32 high = high_words(x);
    flag = flag | WordMask{outside(high, Method::domain.low, Method::domain.high)};
    const Wide<F64> seed = rsqrt_seed(high);
    return {Method::refine(x.lo, seed.lo), Method::refine(x.hi, seed.hi)};
  }
#endif
  static int32_t callout(const double* a, double* r) { return inv_sqrt_callout(a, r); }
};

template <class Method>
struct InvSqrt32 {
  using In = float;
  using Out = float;
  using Flag = M32;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = kClass < 3 ? 2 : 4;
  ORBA_INLINE static F32 eval(F32 x, M32& flag) {
    flag = flag | outside(as_bits(x), Method::float_domain.low, Method::float_domain.high);
    return Method::refine(x);
  }
  static int32_t callout(const float* a, float* r) { return narrowed(inv_sqrt_callout, a, r); }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_KERNEL(1i_1o, d, InvSqrt, HA, InvSqrt64<Full>)
ORBA_SAME_KERNEL(1i_1o, d, InvSqrt, LA, HA)
ORBA_KERNEL(1i_1o, s, InvSqrt, HA, InvSqrt32<Full>)
ORBA_SAME_KERNEL(1i_1o, s, InvSqrt, LA, HA)
#if ORBA_CLASS >= 2
ORBA_KERNEL(1i_1o, d, InvSqrt, EP, InvSqrt64<Ep>)
ORBA_KERNEL(1i_1o, s, InvSqrt, EP, InvSqrt32<Ep>)
#else
ORBA_SAME_KERNEL(1i_1o, d, InvSqrt, EP, HA)
ORBA_SAME_KERNEL(1i_1o, s, InvSqrt, EP, HA)
#endif
