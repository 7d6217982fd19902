// PackV, UnpackV: elements by an index vector. One by one: see increment.cpp.
#include "vector/kernels/packing/elements.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class E>
ORBA_INLINE void pack_index(int64_t n, const E* a, const int32_t* ia, E* y) {
  gather(
      n, a, [ia](int64_t i) { return fetch_index(ia, i); }, y);
}
template <class E>
ORBA_INLINE void unpack_index(int64_t n, const E* a, E* y, const int32_t* iy) {
  scatter(n, a, y, [iy](int64_t i) { return fetch_index(iy, i); });
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_PACKING_KERNELS(pack_index, PackV, pack_index, a, ia, y)
ORBA_PACKING_KERNELS(unpack_index, UnpackV, unpack_index, a, y, iy)
