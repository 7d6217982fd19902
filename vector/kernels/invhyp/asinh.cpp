// Asinh: any argument.
#include "vector/kernels/invhyp/invhyp.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// a^2 + 1; far above 2^53 (2^24) the tail no longer matters.
template <class V>
ORBA_INLINE Pair<V> square_and_one(V a) {
  if constexpr (kFused) {
    const V w = mul_add(a, a, V(1));
    return {w, mul_sub(a, a, w - V(1))};
  }
  const Pair<V> square = two_product(a, a);
  const Pair<V> w = log1p_sum(square.hi);
  return {w.hi, w.lo + square.lo};
}

struct Asinh {
  static constexpr bool unbounded = true;
  template <class V>
  ORBA_INLINE static typename V::Mask special(V x, V most) {
    return not_le(abs(x), most);
  }
  template <class Data, Accuracy accuracy, class V>
  ORBA_INLINE static V eval(V x) {
    const V a = abs(x);
    if constexpr (accuracy == kEp) {
      // (a + sqrt(a^2 + 1))^2 = 1 + 2a*(a + sqrt(a^2 + 1))
      const V y = (a + a) * (a + sqrt(mul_add(a, a, V(1))));
      typename V::Mask unused;
      return with_sign_of(x, V(0.5f) * short_log1p<Data>(y, unused));
    }
    return with_sign_of(x, log_of_sum_with_root<Data, accuracy, 1>(a, square_and_one(a)));
  }
  static int32_t callout(double x, double* r) {
    *r = x + x;
    return kOk;
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_INVHYP_KERNELS(Asinh)
