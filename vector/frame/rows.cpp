// The kernel rows, filled from the kernels' names and the cost hints.
#include "vector/frame/rows.h"

#include "vector/frame/define_functions.h"

#define ORBA_KAM_FUNCTION ORBA_DECLARE_KERNELS
#include "vector/functions.def"
#undef ORBA_KAM_FUNCTION

namespace orba::vector {
namespace {

#define ORBA_COST_HINTS(row, ...) \
  constexpr std::array<float, kRowSlots> hints_##row = {__VA_ARGS__};
#include "vector/frame/cost_hints.def"
#undef ORBA_COST_HINTS

}  // namespace

#define ORBA_KAM_FUNCTION ORBA_DEFINE_ROWS
#include "vector/functions.def"
#undef ORBA_KAM_FUNCTION

}  // namespace orba::vector
