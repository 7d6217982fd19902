// Modf: whole part and fraction, both with the sign of the argument; exact at every accuracy, without
// the inexact exception on classes 2 and later. The fraction of an infinity is a zero; NaN has NaN
// parts.
#include "vector/kernels/rounding/whole_numbers.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class V>
struct Modf {
  using In = typename V::Element;
  using Out = In;
  using Flag = NoFlag;
  static constexpr int inputs = 1;
  static constexpr int outputs = 2;
  static constexpr int unroll = 4;

  ORBA_INLINE static Results<V> eval(V x, NoFlag&) {
    const V whole = to_whole<kToZero | kSilent>(x);
    return {whole, with_sign_of(x, rest(x, whole))};
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_KERNEL(1i_2o, s, Modf, ALL, Modf<F32>)
ORBA_KERNEL(1i_2o, d, Modf, ALL, Modf<F64>)
