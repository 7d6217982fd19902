// Div: a/b. KAM_STATUS_SING for a zero divisor, 0/0 too; a denormal divisor goes through the callout
// without a report.
//
//   hardware  the divider. Flags zero and denormal divisors.
//   quotient  q = a*y with y the reciprocal of b by the series.
//   refined   the quotient, then q + (a - b*q)*y: the residual is exact, 0.5 ULP and 2^-28 of one.
//
// The residual step needs a finite quotient and a numerator whose last bits are not lost in the
// product b*q. An infinite or NaN numerator keeps its plain quotient, which is right; lanes where a
// finite numerator makes a quotient near overflow, and tiny numerators, are flagged. The sign of a
// zero quotient is that of a*y.
#include "vm/kernels/arith/recip.h"
#include "vm/kernels/contract/kernel.h"
#include "vm/kernels/contract/scalar.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class V>
struct DivHardware {
  using In = typename V::Element;
  using Out = In;
  using Flag = typename V::Mask;
  static constexpr int inputs = 2;
  static constexpr int outputs = 1;
  static constexpr int unroll = 4;

  ORBA_INLINE static V eval(V a, V b, Flag& flag) {
    flag = flag | zero_or_denormal(b);
    return a / b;
  }

  static int32_t callout(const In* a, const In* b, In* r) {
    const In divisor = *b;
    *r = *a / divisor;
    return divisor == In(0) ? kSing : kOk;
  }
};

template <class V, int degree>
struct DivQuotient : DivHardware<V> {
  ORBA_INLINE static V eval(V a, V b, typename V::Mask& flag) {
    flag = flag | not_invertible(b);
    return a * recip_series<degree>(b, recip_seed(b));
  }
};

#if ORBA_CLASS >= 3

// Quotients from here on may round to infinity or have been cut by it; numerators below `tiny` lose
// bits of the residual.
ORBA_INLINE F64 large_quotient(F64) { return pow2(1023); }
ORBA_INLINE F32 large_quotient(F32) { return pow2f(127); }
ORBA_INLINE F64 tiny_numerator(F64) { return pow2(-1017); }
ORBA_INLINE F32 tiny_numerator(F32) { return pow2f(-121); }

template <class V, int degree>
struct DivRefined : DivHardware<V> {
  ORBA_INLINE static V eval(V a, V b, typename V::Mask& flag) {
    const V y = recip_series<degree>(b, recip_seed(b));
    const V q = a * y;
    const V size = abs(a);
    const auto large = not_less(abs(q), large_quotient(q));
    const auto finite = size < V(typename V::Element(__builtin_inf()));
    const auto tiny = (size < tiny_numerator(a)) & (a != V(0));
    flag = flag | not_invertible(b) | (large & finite) | tiny;
    const V refined = mul_add(neg_mul_add(b, q, a), y, q);
    return select(large, q, copy_sign(refined, q));
  }

 private:
  template <class W>
  ORBA_INLINE static auto not_less(W x, W bound) {
    return ~(x < bound);
  }
};

#endif

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

#if ORBA_CLASS == 5
ORBA_KERNEL_2i_1o(d, Div, HA, DivRefined<F64, 2>)
ORBA_KERNEL_2i_1o(d, Div, LA, DivHardware<F64>)
ORBA_KERNEL_2i_1o(d, Div, EP, DivQuotient<F64, 1>)
ORBA_KERNEL_2i_1o(s, Div, HA, DivRefined<F32, 1>)
ORBA_KERNEL_2i_1o(s, Div, LA, DivHardware<F32>)
ORBA_KERNEL_2i_1o(s, Div, EP, DivQuotient<F32, 1>)
#elif ORBA_CLASS == 3
ORBA_KERNEL_2i_1o(d, Div, HA, DivHardware<F64>)
ORBA_SAME_KERNEL(vdDiv, 2i_1o, d, LA, HA)
ORBA_KERNEL_2i_1o(d, Div, EP, DivQuotient<F64, 2>)
ORBA_KERNEL_2i_1o(s, Div, HA, DivHardware<F32>)
ORBA_KERNEL_2i_1o(s, Div, LA, DivRefined<F32, 1>)
ORBA_KERNEL_2i_1o(s, Div, EP, DivQuotient<F32, 1>)
#else
ORBA_KERNEL_2i_1o(d, Div, HA, DivHardware<F64>)
ORBA_SAME_KERNEL(vdDiv, 2i_1o, d, LA, HA)
ORBA_SAME_KERNEL(vdDiv, 2i_1o, d, EP, HA)
ORBA_KERNEL_2i_1o(s, Div, HA, DivHardware<F32>)
ORBA_SAME_KERNEL(vsDiv, 2i_1o, s, LA, HA)
ORBA_SAME_KERNEL(vsDiv, 2i_1o, s, EP, HA)
#endif
