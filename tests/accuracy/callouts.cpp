#include "tests/accuracy/measure.h"

#define ORBA_CALLOUT_NAME(c, t, Name) orba_callouts_##c##_v##t##Name##_HA
#define ORBA_DECLARE(t, Name, shape)                                                   \
  orba::vector::Kernel_##shape<orba::vector::Type_##t> ORBA_CALLOUT_NAME(c0, t, Name), \
      ORBA_CALLOUT_NAME(c1, t, Name), ORBA_CALLOUT_NAME(c2, t, Name),                  \
      ORBA_CALLOUT_NAME(c3, t, Name), ORBA_CALLOUT_NAME(c5, t, Name);
extern "C" {
#define ORBA_KAM_FUNCTION(Name, name, shape, types) \
  ORBA_KAM_TYPES(types)                             \
  (ORBA_DECLARE, Name, shape)
#include "vector/functions.def"
#undef ORBA_KAM_FUNCTION
}

namespace orba::test {

vector::KamKernel callouts_of(const Subject& subject, int kernel_class) {
  const std::string name = subject.name();
#define ORBA_CALLOUT(c, t, Name) reinterpret_cast<vector::KamKernel>(ORBA_CALLOUT_NAME(c, t, Name))
#define ORBA_CHOOSE(t, Name, ...)                                    \
  if (name == "v" #t #Name) {                                        \
    const vector::KamKernel kernels[] = {ORBA_CALLOUT(c0, t, Name),  \
                                         ORBA_CALLOUT(c1, t, Name),  \
                                         ORBA_CALLOUT(c2, t, Name),  \
                                         ORBA_CALLOUT(c3, t, Name),  \
                                         nullptr,                    \
                                         ORBA_CALLOUT(c5, t, Name)}; \
    return kernels[kernel_class];                                    \
  }
#define ORBA_KAM_FUNCTION(Name, name, shape, types) \
  ORBA_KAM_TYPES(types)                             \
  (ORBA_CHOOSE, Name)
#include "vector/functions.def"
#undef ORBA_KAM_FUNCTION
  return nullptr;
}

}  // namespace orba::test
