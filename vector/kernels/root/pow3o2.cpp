// Pow3o2: a^(3/2). KAM_STATUS_ERRDOM below zero; overflow is silent.
//
// With s the rounded square root and d = a - s^2, which is exact, a^(3/2) = a*s + d*s/2 to a relative
// 2^-105 (single: 2^-47), and only the last addition rounds: half a unit.
//
// class      0, 1            2                         3                         5
// double LA  as HA           as HA                     as HA                     as HA
//        EP  as HA           by s alone                by s alone                from the estimated root
// single HA  in double       in double                 as double                 as double
//        LA  as HA           as HA                     as HA                     as HA
//        EP  as HA           from the estimated root   from the estimated root   from the estimated root
#include "vector/kernels/contract/accuracy.h"
#include "vector/kernels/contract/kernel.h"
#include "vector/kernels/contract/scalar.h"
#include "vector/kernels/simd/exponent.h"
#include "vector/kernels/simd/residual.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// x^(3/2) as a head and a tail of at most a few units.
template <class V>
ORBA_INLINE Pair<V> power_3o2(V x) {
  const V s = sqrt(x);
  const Pair<V> lead = two_product(x, s);
  return {lead.hi, mul_add(V(0.5f) * s, residual(x, s, s), lead.lo)};
}

// From the bits on which the result overflows, and up to the high word below which it is 0.
constexpr uint64_t kOverflowing = 0x6a9965fea53d6e3d;
constexpr uint32_t kVanishing = 0x132ff000;

ORBA_COLD int32_t power_3o2_callout(const double* a, double* r) {
  const double x = *a;
  if (x < 0) {
    *r = (x - x) / (x - x);
    return kErrDom;
  }
  const uint64_t bits = bit_cast<uint64_t>(x);
  if (x == 0) {  // of either sign, a denormal number that counts as zero too
    *r = 0;
  } else if (bits >= kOverflowing || bits >> 32 < kVanishing) {
    *r = opaque(x) * x;  // infinities and NaN too
  } else {
    const int shift = x < pow2(-600) ? 400 : x > pow2(600) ? -400 : 0;
    *r = rounded(power_3o2(x * pow2(shift)), -shift / 2 * 3);
  }
  return kOk;
}

// Arguments of the vector path: no word of a product is denormal, the result finite.
ORBA_INLINE M64 out_of_range(F64 x) {
  return outside(as_bits(x), 0x1a700000, static_cast<uint32_t>(kOverflowing >> 32) - 1);  // 2^-600
}
ORBA_INLINE M32 out_of_range(F32 x) {
  return outside(as_bits(x), 0x21800000, 0x69ffffff);  // [2^-60, 2^85)
}

template <class V, Accuracy accuracy>
struct Pow3o2 {
  using In = typename V::Element;
  using Out = In;
  using Flag = typename V::Mask;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = 4;

  ORBA_INLINE static V eval(V x, Flag& flag) {
    flag = flag | out_of_range(x);
    if constexpr (accuracy == kEp) {
      return short_power(x);
    } else if constexpr (kFused || sizeof(In) == 8) {
      const Pair<V> y = power_3o2(x);
      return y.hi + y.lo;
    } else {
      return narrow(short_power(widen_low(x)), short_power(widen_high(x)));
    }
  }
  static int32_t callout(const double* a, double* r) { return power_3o2_callout(a, r); }
  static int32_t callout(const float* a, float* r) { return narrowed(power_3o2_callout, a, r); }

 private:
  ORBA_INLINE static F32 short_power(F32 x) { return x * (x * approx_rsqrt(x)); }
  ORBA_INLINE static F64 short_power(F64 x) {
#if ORBA_CLASS == 5
    // Off by 2^-14, and after a Newton step by 2^-27.
    const F64 y = approx_rsqrt(x), s = x * y;
    const F64 product = x * s;
    return mul_add(0.5 * product, neg_mul_add(s, y, F64(1)), product);
#else
    return x * sqrt(x);
#endif
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_KERNEL(1i_1o, d, Pow3o2, HA, Pow3o2<F64, kHa>)
ORBA_SAME_KERNEL(1i_1o, d, Pow3o2, LA, HA)
ORBA_KERNEL(1i_1o, s, Pow3o2, HA, Pow3o2<F32, kHa>)
ORBA_SAME_KERNEL(1i_1o, s, Pow3o2, LA, HA)
#if ORBA_CLASS >= 2
ORBA_KERNEL(1i_1o, d, Pow3o2, EP, Pow3o2<F64, kEp>)
ORBA_KERNEL(1i_1o, s, Pow3o2, EP, Pow3o2<F32, kEp>)
#else
ORBA_SAME_KERNEL(1i_1o, d, Pow3o2, EP, HA)
ORBA_SAME_KERNEL(1i_1o, s, Pow3o2, EP, HA)
#endif
