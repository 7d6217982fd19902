// A function of one object for all classes: a/b, a zero divisor is reported.
#include "vector/kernels/contract/kernel.h"
#include "vector/kernels/contract/scalar.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class V>
struct Shared {
  using In = typename V::Element;
  using Out = In;
  using Flag = typename V::Mask;
  static constexpr int inputs = 2;
  static constexpr int outputs = 1;
  static constexpr int unroll = 2;
  ORBA_INLINE static V eval(V a, V b, Flag& flag) {
    flag = flag | (b == V(0));
    return a / b;
  }
  static int32_t callout(const In* a, const In* b, In* r) {
    *r = *a / *b;
    return kSing;
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_KERNEL(2i_1o, s, TestShared, ALL, Shared<F32>)
ORBA_KERNEL(2i_1o, d, TestShared, ALL, Shared<F64>)
