// PackI, UnpackI: elements at equal distances. One by one: on the processors measured gathers and
// scatters are slower than the loads and stores that they stand for.
#include "vector/kernels/packing/elements.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Distances are counted in 64 bits.
template <class E>
ORBA_INLINE void pack_increment(int64_t n, const E* a, int64_t inca, E* y) {
  if (inca == 1) {
    __builtin_memmove(y, a, n * sizeof(E));
    return;
  }
  gather(
      n, a, [inca](int64_t i) { return i * inca; }, y);
}
template <class E>
ORBA_INLINE void unpack_increment(int64_t n, const E* a, E* y, int64_t incy) {
  if (incy == 1) {
    __builtin_memmove(y, a, n * sizeof(E));
    return;
  }
  scatter(n, a, y, [incy](int64_t i) { return i * incy; });
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_PACKING_KERNELS(pack_increment, PackI, pack_increment, a, inca, y)
ORBA_PACKING_KERNELS(unpack_increment, UnpackI, unpack_increment, a, y, incy)
