// Div: a/b. KAM_STATUS_SING for a zero divisor, 0/0 too; a denormal divisor goes through the
// callout without a report.
//
//   LA, HA   the divider, correctly rounded. Flags zero and denormal divisors. On the processors
//            measured a refined quotient with the tests that its residual needs (tiny numerators,
//            quotients near overflow, infinities) is slower.
//   EP       on classes 3 and 5 a times the reciprocal of b: the series to e, in double on class 3
//            recip_fast. Flags divisors that are not invertible; any numerator will do.
#include "vector/kernels/arith/recip.h"
#include "vector/kernels/contract/kernel.h"
#include "vector/kernels/contract/scalar.h"

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

template <class V>
struct DivQuotient : DivHardware<V> {
  ORBA_INLINE static V eval(V a, V b, typename V::Mask& flag) {
    flag = flag | not_invertible(b);
    return a * recip_ep(b);
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_KERNEL(2i_1o, d, Div, HA, DivHardware<F64>)
ORBA_SAME_KERNEL(2i_1o, d, Div, LA, HA)
ORBA_KERNEL(2i_1o, s, Div, HA, DivHardware<F32>)
ORBA_SAME_KERNEL(2i_1o, s, Div, LA, HA)
#if ORBA_CLASS >= 3
ORBA_KERNEL(2i_1o, d, Div, EP, DivQuotient<F64>)
ORBA_KERNEL(2i_1o, s, Div, EP, DivQuotient<F32>)
#else
ORBA_SAME_KERNEL(2i_1o, d, Div, EP, HA)
ORBA_SAME_KERNEL(2i_1o, s, Div, EP, HA)
#endif
