// The kernel rows, filled from the kernels' names (see vector/kernels/contract/kernel.h) and the
// cost hints. A row without kernels does not link, a row without hints does not compile.
#include "vector/frame/rows.h"

#define ORBA_CLASS_KERNELS(c, t, Name, shape)                                      \
  orba::vector::Kernel_##shape<orba::vector::Type_##t> orba_##c##_v##t##Name##_LA; \
  orba::vector::Kernel_##shape<orba::vector::Type_##t> orba_##c##_v##t##Name##_HA; \
  orba::vector::Kernel_##shape<orba::vector::Type_##t> orba_##c##_v##t##Name##_EP;
#define ORBA_DECLARE_KERNELS(t, Name, shape) \
  ORBA_CLASS_KERNELS(c0, t, Name, shape)     \
  ORBA_CLASS_KERNELS(c1, t, Name, shape)     \
  ORBA_CLASS_KERNELS(c2, t, Name, shape)     \
  ORBA_CLASS_KERNELS(c3, t, Name, shape)     \
  ORBA_CLASS_KERNELS(c5, t, Name, shape)

extern "C" {
#define ORBA_KAM_FUNCTION(Name, name, shape, types) \
  ORBA_KAM_TYPES(types)                             \
  (ORBA_DECLARE_KERNELS, Name, shape)
#include "vector/functions.def"
#undef ORBA_KAM_FUNCTION
}

namespace orba::vector {
namespace {

#define ORBA_COST_HINTS(row, ...) \
  constexpr std::array<float, kRowSlots> hints_##row = {__VA_ARGS__};
#include "vector/frame/cost_hints.def"
#undef ORBA_COST_HINTS

}  // namespace

#define ORBA_SLOT(c, row, accuracy) reinterpret_cast<KamKernel>(orba_##c##_##row##_##accuracy)
#define ORBA_SLOTS(row, accuracy) \
  ORBA_SLOT(c0, row, accuracy)    \
  , ORBA_SLOT(c1, row, accuracy)  \
  , ORBA_SLOT(c2, row, accuracy)  \
  , ORBA_SLOT(c3, row, accuracy)  \
  , reinterpret_cast<KamKernel>(kEmptyClassKernel), ORBA_SLOT(c5, row, accuracy)
#define ORBA_DEFINE_ROW(t, Name)                                                            \
  const KamKernelRow row_v##t##Name = {                                                     \
      {ORBA_SLOTS(v##t##Name, LA), ORBA_SLOTS(v##t##Name, HA), ORBA_SLOTS(v##t##Name, EP)}, \
      hints_v##t##Name};
#define ORBA_KAM_FUNCTION(Name, name, shape, types) \
  ORBA_KAM_TYPES(types)                             \
  (ORBA_DEFINE_ROW, Name)
#include "vector/functions.def"
#undef ORBA_KAM_FUNCTION

}  // namespace orba::vector
