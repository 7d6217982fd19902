// Sqrt: KAM_STATUS_ERRDOM below zero; -0 gives -0.
//
// y = seed of 1/sqrt(a), t = a*y, e = 1 - t*y; then sqrt(a) = t*(1 - e)^(-1/2) = t + t*w(e), w the
// head of the binomial series. HA adds the step r + (a - r^2)*y/2 on the exact residual: 0.5 ULP
// and 2^-13 of one. Without FMA (classes 0 to 2) the hardware root is both exact and faster.
#pragma once

#include "vector/kernels/arith/arith_coefficients.h"
#include "vector/kernels/arith/seed_tables.h"
#include "vector/kernels/arith/seeds.h"
#include "vector/kernels/contract/kernel.h"
#include "vector/kernels/contract/scalar.h"
#include "vector/kernels/simd/pair_arithmetic.h"
#include "vector/kernels/simd/polynomial.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

ORBA_COLD int32_t sqrt_callout(const double* a, double* r) {
  double x = *a;
  if (is_nan_or_inf(x)) {
    const bool minus_infinity = x < 0;
    *r = minus_infinity ? x - x : x + x;
    return minus_infinity ? kErrDom : kOk;
  }
  if (x == 0) {
    *r = x + x;  // a denormal number that counts as zero too
    return kOk;
  }
  if (x < 0) {
    *r = (x - x) / (x - x);
    return kErrDom;
  }

  int exponent_adjust = 0;
  if (bit_cast<uint64_t>(x) < 0x0010000000000000) {
    x *= pow2(200);
    exponent_adjust = 100;
  }
  const uint64_t bits = bit_cast<uint64_t>(x);
  const int exponent = static_cast<int>(bits >> 52) - 1023;
  const int parity = exponent & 1;
  // m in [1, 4), x = m * 2^(exponent - parity)
  const double m = bit_cast<double>((bits & 0x000fffffffffffff) | (uint64_t{0x3ff} + parity) << 52);
  const double seed = kSqrtSeed[((bits >> 44) & 255) + 256 * parity];

  // Goldschmidt: g -> sqrt(m), h -> 1/(2 sqrt(m)); the error 2^-8 of the seed is squared each time.
  double g = m * seed;
  double h = 0.5 * seed;
  for (int i = 0; i < 3; ++i) {
    const double t = mul_add(-h, g, 0.5);
    g = mul_add(g, t, g);
    h = mul_add(h, t, h);
  }
  // One step on m - g^2, exact in this order: the heads have 26 bits, and g is within an ULP.
  const double g_head = head(g), g_tail = g - g_head;
  double residual = m - g_head * g_head;
  residual = residual - 2 * (g_head * g_tail);
  residual = residual - g_tail * g_tail;
  g = mul_add(residual, h, g);
  *r = g * pow2((exponent - parity) / 2 - exponent_adjust);
  return kOk;
}

// Arguments between these powers of two take the vector path. A residual of HA that is denormal
// there, and may be flushed, is that of a correctly rounded root.
struct SqrtDomain {
  uint32_t low, high;  // of the high word
};
constexpr SqrtDomain kSqrtDomain = {0x00100000, 0x7fcfffff};               // [2^-1022, 2^1022)
constexpr SqrtDomain kSqrtResidualDomain = {0x03500000, 0x7fcfffff};       // [2^-970, 2^1022)
constexpr SqrtDomain kSqrtFloatDomain = {0x00800000, 0x7f7fffff};          // all normal numbers
constexpr SqrtDomain kSqrtFloatResidualDomain = {0x0c800000, 0x7f7fffff};  // from 2^-102 on

template <class V>
struct SqrtHardware {
  using Vector = V;
  using In = typename V::Element;
  using Out = In;
  using Flag = typename V::Mask;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = 4;
  ORBA_INLINE static F64 eval(F64 x, M64& flag) {
    flag = flag | outside(as_bits(x), kSqrtDomain.low, kSqrtDomain.high);
    return sqrt(x);
  }
  ORBA_INLINE static F32 eval(F32 x, M32& flag) {
    flag = flag | outside(as_bits(x), kSqrtFloatDomain.low, kSqrtFloatDomain.high);
    return sqrt(x);
  }
  static int32_t callout(const double* a, double* r) { return sqrt_callout(a, r); }
  static int32_t callout(const float* a, float* r) { return narrowed(sqrt_callout, a, r); }
};

#if ORBA_CLASS >= 3

enum class SqrtDegree { ep, full, full_with_residual };

// (1 - e)^(-1/2) - 1, see invsqrt.cpp for the intervals and rests.
template <SqrtDegree degree>
ORBA_INLINE F64 sqrt_correction(F64 e) {
  if constexpr (degree == SqrtDegree::ep) {
    if constexpr (kClass == 5) return 0.5 * e;
    return e * horner(e, kInvSqrtShortSeries);
  }
  return e * horner(e, kInvSqrtSeries);
}
template <SqrtDegree degree>
ORBA_INLINE F32 sqrt_correction(F32 e) {
  if constexpr (degree == SqrtDegree::ep || kClass == 5) return 0.5f * e;
  return e * mul_add(F32(0.375f), e, F32(0.5f));
}

// sqrt(x) from the seed y of 1/sqrt(x).
template <SqrtDegree degree, class V>
ORBA_INLINE V sqrt_series(V x, V y) {
  const V t = x * y;
  const V e = neg_mul_add(t, y, V(1));
  const V r = mul_add(t, sqrt_correction<degree>(e), t);
  if constexpr (degree != SqrtDegree::full_with_residual) return r;
  return mul_add(neg_mul_add(r, r, x), V(typename V::Element(0.5)) * y, r);
}

template <SqrtDegree degree>
struct SqrtSeries64 : SqrtHardware<F64> {
  static constexpr SqrtDomain domain =
      degree == SqrtDegree::full_with_residual ? kSqrtResidualDomain : kSqrtDomain;
#  if ORBA_CLASS == 5
  ORBA_INLINE static F64 eval(F64 x, M64& flag) {
    flag = flag | outside(as_bits(x), domain.low, domain.high);
    return sqrt_series<degree>(x, approx_rsqrt(x));
  }
#  else
  using Flag = WordMask;
  static constexpr bool wide = true;
  static constexpr int unroll = 1;
  ORBA_INLINE static Wide<F64> eval(Wide<F64> x, WordMask& flag) {
    const I32 high = high_words(x);
    flag = flag | WordMask{outside(high, domain.low, domain.high)};
    const Wide<F64> y = rsqrt_seed(high);
    return {sqrt_series<degree>(x.lo, y.lo), sqrt_series<degree>(x.hi, y.hi)};
  }
#  endif
};

template <SqrtDegree degree>
struct SqrtSeries32 : SqrtHardware<F32> {
  static constexpr SqrtDomain domain =
      degree == SqrtDegree::full_with_residual ? kSqrtFloatResidualDomain : kSqrtFloatDomain;
  ORBA_INLINE static F32 eval(F32 x, M32& flag) {
    flag = flag | outside(as_bits(x), domain.low, domain.high);
    return sqrt_series<degree>(x, approx_rsqrt(x));
  }
};

#endif

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
