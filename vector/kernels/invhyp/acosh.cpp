// Acosh: KAM_STATUS_ERRDOM below 1.
#include "vector/kernels/invhyp/invhyp.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

struct Acosh {
  static constexpr bool unbounded = true;
  template <class V>
  ORBA_INLINE static typename V::Mask special(V x, V most) {
    return not_le(V(1), x) | not_le(x, most);
  }
  template <class Data, Accuracy accuracy, class V>
  ORBA_INLINE static V eval(V x) {
    x = max(x, V(1));  // no root of a negative number
    const V t = x - V(1);
    if constexpr (accuracy == kEp) {
      const V y = t + sqrt(kFused ? mul_sub(x, x, V(1)) : t * (x + V(1)));
      typename V::Mask unused;
      return short_log1p<Data>(y, unused);
    }
    // (x - 1)*(x + 1), the first factor exact
    const Pair<V> u = log1p_sum(x);
    Pair<V> w = two_product(t, u.hi);
    w.lo = mul_add(t, u.lo, w.lo);
    return log_of_sum_with_root<Data, accuracy, -1>(x, w);
  }
  static int32_t callout(double x, double* r) {
    if (x >= 1 || x != x) {
      *r = x + x;
      return kOk;
    }
    *r = (x - x) / (x - x);
    return kErrDom;
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_INVHYP_KERNELS(Acosh)
