#include "tests/accuracy/measure.h"
#include "vector/function_table.h"

// The kernels that tests/accuracy/callouts.h makes, at HA where accuracies differ.
#define ORBA_CALLOUTS_per_accuracy(c, row) orba_callouts_c##c##_##row##_HA
#define ORBA_CALLOUTS_per_class(c, row) orba_callouts_c##c##_##row##_ALL
#define ORBA_CALLOUTS_single(c, row) orba_callouts_c0_##row##_ALL

#define ORBA_DECLARE_ONE(c, row, kernels) extern "C" void ORBA_CALLOUTS_##kernels(c, row)();
#define ORBA_DECLARE(t, Name, kernels)     \
  ORBA_DECLARE_ONE(0, v##t##Name, kernels) \
  ORBA_DECLARE_ONE(3, v##t##Name, kernels)
#define ORBA_KAM_FUNCTION(Name, name, shape, types, kernels, call) \
  ORBA_KAM_TYPES(types)                                            \
  (ORBA_DECLARE, Name, kernels)
#include "vector/functions.def"
#undef ORBA_KAM_FUNCTION

namespace orba::test {

vector::KamKernel callouts_of(const Subject& subject, int kernel_class) {
  if (kernel_class > services::kam_class()) return nullptr;
  const std::string name = subject.name();
#define ORBA_CHOOSE(t, Name, kernels)                                     \
  if (name == "v" #t #Name) {                                             \
    if (kernel_class == 0) return ORBA_CALLOUTS_##kernels(0, v##t##Name); \
    return ORBA_CALLOUTS_##kernels(3, v##t##Name);                        \
  }
#define ORBA_KAM_FUNCTION(Name, name, shape, types, kernels, call) \
  ORBA_KAM_TYPES(types)                                            \
  (ORBA_CHOOSE, Name, kernels)
#include "vector/functions.def"
#undef ORBA_KAM_FUNCTION
  return nullptr;
}

}  // namespace orba::test
