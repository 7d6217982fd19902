// LinearFrac: (a*scalea + shifta) / (b*scaleb + shiftb), each operation rounded in this order, none of
// them fused, by the hardware divider: the same bits on every class, in every lane and slice. Nothing is
// reported.
//
// Single precision, and double precision on classes 2 and 3, keep denormals whatever the mode says.
#include "vector/kernels/contract/kernel.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class V>
struct LinearFrac {
  using In = typename V::Element;
  using Out = In;
  using Flag = NoFlag;
  static constexpr int inputs = 2;
  static constexpr int outputs = 1;
  static constexpr int unroll = 4;
  static constexpr bool keeps_denormals = sizeof(In) == 4 || kClass == 2 || kClass == 3;

  In scalea, shifta, scaleb, shiftb;
  LinearFrac(In sa, In ta, In sb, In tb) : scalea(sa), shifta(ta), scaleb(sb), shiftb(tb) {}

  ORBA_INLINE V eval(V a, V b, NoFlag&) const {
    return (a * V(scalea) + V(shifta)) / (b * V(scaleb) + V(shiftb));
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_KERNEL(linear_fraction, s, LinearFrac, ALL, LinearFrac<F32>)
ORBA_KERNEL(linear_fraction, d, LinearFrac, ALL, LinearFrac<F64>)
