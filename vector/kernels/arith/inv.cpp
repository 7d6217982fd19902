// Inv: 1/a. KAM_STATUS_SING at both zeros.
//
//   hardware  the divider: correctly rounded. Flags zero and denormal arguments.
//   refined   y0 = seed, e = 1 - a*y0, y = y0 + y0*(e + e^2 + ...): the geometric series, cut where
//             its rest lies below the last bit wanted. Flags arguments outside the range whose
//             reciprocals, and all intermediate values, are normal.
//
//   fast      see recip_fast. Flags as refined.
//
// class      0, 1, 2     3                                5
// HA         hardware    hardware                         refined to e^2, then on the residual of
//                                                         that: 0.5 ULP and 2^-28 of one
// LA         as HA       as HA; single: refined to e^2    as HA; single: refined to e
// EP         as HA       fast; single: refined to e       refined to e
//
// With seeds good to 2^-11.4 (class 3) and 2^-14 (class 5) the series ends at 2^-34 and 2^-28 of
// the result for e^2 and e in single on class 3, 2^-28 for e on class 5.
#include "vector/kernels/arith/recip.h"
#include "vector/kernels/contract/kernel.h"
#include "vector/kernels/contract/scalar.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class V>
struct InvBase {
  using In = typename V::Element;
  using Out = In;
  using Flag = typename V::Mask;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = 4;

  static int32_t callout(const In* a, In* r) {
    const In x = *a;
    *r = In(1) / x;
    return x == In(0) ? kSing : kOk;
  }
};

template <class V>
struct InvHardware : InvBase<V> {
  ORBA_INLINE static V eval(V x, typename V::Mask& flag) {
    flag = flag | zero_or_denormal(x);
    return V(1) / x;
  }
};

template <class V>
struct InvEp : InvBase<V> {
  ORBA_INLINE static V eval(V x, typename V::Mask& flag) {
    flag = flag | not_invertible(x);
    return recip_ep(x);
  }
};

// Single precision to e^2.
struct InvSeries : InvBase<F32> {
  ORBA_INLINE static F32 eval(F32 x, M32& flag) {
    flag = flag | not_invertible(x);
    return recip_series<2>(x, recip_seed(x));
  }
};

#if ORBA_CLASS == 5
// The series to degree 2, then one step on the residual of that.
struct InvTwoSteps : InvBase<F64> {
  ORBA_INLINE static F64 eval(F64 x, M64& flag) {
    flag = flag | not_invertible(x);
    return recip_series<1>(x, recip_series<2>(x, recip_seed(x)));
  }
};
#endif

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

#if ORBA_CLASS == 5
ORBA_KERNEL(1i_1o, d, Inv, HA, InvTwoSteps)
#else
ORBA_KERNEL(1i_1o, d, Inv, HA, InvHardware<F64>)
#endif
ORBA_SAME_KERNEL(1i_1o, d, Inv, LA, HA)
#if ORBA_CLASS >= 3
ORBA_KERNEL(1i_1o, d, Inv, EP, InvEp<F64>)
ORBA_KERNEL(1i_1o, s, Inv, EP, InvEp<F32>)
#else
ORBA_SAME_KERNEL(1i_1o, d, Inv, EP, HA)
ORBA_SAME_KERNEL(1i_1o, s, Inv, EP, HA)
#endif
#if ORBA_CLASS == 5
ORBA_KERNEL(1i_1o, s, Inv, HA, InvSeries)
ORBA_SAME_KERNEL(1i_1o, s, Inv, LA, EP)
#elif ORBA_CLASS == 3
ORBA_KERNEL(1i_1o, s, Inv, HA, InvHardware<F32>)
ORBA_KERNEL(1i_1o, s, Inv, LA, InvSeries)
#else
ORBA_KERNEL(1i_1o, s, Inv, HA, InvHardware<F32>)
ORBA_SAME_KERNEL(1i_1o, s, Inv, LA, HA)
#endif
