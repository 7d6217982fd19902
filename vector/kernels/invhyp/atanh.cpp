// Atanh: KAM_STATUS_SING at -1 and 1, KAM_STATUS_ERRDOM outside.
//
// Half the logarithm of 1 + y = (1 + a)/(1 - a), a = |x|, with y = 2a/(1 - a). What the quotient lacks, its
// residual tells: rest/(1 - a) of y, rest/(1 + a) of the logarithm.
#include "vector/kernels/invhyp/invhyp.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

struct Atanh {
  static constexpr bool unbounded = false;
  template <class V>
  ORBA_INLINE static typename V::Mask special(V x, V) {
    return ~(abs(x) < V(1));
  }
  template <class Data, Accuracy accuracy, class V>
  ORBA_INLINE static V eval(V x) {
    const V a = abs(x);
    const V n = a + a;
    const Pair<V> d = fast_two_sum(V(1), negate(a));
    const V y = n / d.hi;
    typename V::Mask unused;
    if constexpr (accuracy == kEp) {
      return with_sign_of(x, V(0.5f) * short_log1p<Data>(y, unused));
    } else {
      const V rest = neg_mul_add(y, d.lo, residual(n, y, d.hi));
      const V log = log_of_sum<Data, accuracy>(
          log1p_sum(y), unused, [&](V lo) { return add_quotient(lo, rest, V(1) + a); });
      return with_sign_of(x, V(0.5f) * log);
    }
  }
  static int32_t callout(double x, double* r) {
    const double a = __builtin_fabs(x);
    if (a == 1) {
      *r = x / (a - a);
      return kSing;
    }
    *r = (x - x) / (x - x);  // NaN, of x where it is one
    return x != x ? kOk : kErrDom;
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_INVHYP_KERNELS(Atanh)
