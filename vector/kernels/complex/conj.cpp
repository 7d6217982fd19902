// Complex Conj: flips the sign bit of the imaginary part, of NaN too. Nothing is reported.
#include "vector/kernels/contract/kernel.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Sign bits of the odd lanes.
alignas(64) constexpr float kOddSigns32[16] = {0.0f, -0.0f, 0.0f, -0.0f, 0.0f, -0.0f, 0.0f, -0.0f,
                                               0.0f, -0.0f, 0.0f, -0.0f, 0.0f, -0.0f, 0.0f, -0.0f};
alignas(64) constexpr double kOddSigns64[8] = {0.0, -0.0, 0.0, -0.0, 0.0, -0.0, 0.0, -0.0};
ORBA_INLINE F32 flip_odd(F32 x) { return as_float(as_bits(x) ^ as_bits(load(kOddSigns32))); }
ORBA_INLINE F64 flip_odd(F64 x) { return as_float(as_bits(x) ^ as_bits(load(kOddSigns64))); }

template <class E>
struct Conj {
  using In = E;
  using Out = E;
  using Flag = NoFlag;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = 2;
  template <class V>
  ORBA_INLINE static Pairs<V> eval(Pairs<V> a, NoFlag&) {
    return {flip_odd(a.lo), flip_odd(a.hi)};
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_KERNEL(1i_1o, c, Conj, ALL, Conj<KamComplex8>)
ORBA_KERNEL(1i_1o, z, Conj, ALL, Conj<KamComplex16>)
