// The uniform variates.
#include "statistics/distributions/generate.h"

namespace orba::statistics {

ORBA_VARIATES(Uniform, uniform, standard_or_accurate, (V(Real, a), V(Real, b)), {a >= b, 5})
ORBA_VARIATE(viRngUniform, virnguniform, int32_t, standard_only, (V(int32_t, a), V(int32_t, b)),
             {a >= b, 5})
ORBA_VARIATE(viRngUniformBits, virnguniformbits, uint32_t, standard_only, ())
ORBA_VARIATE(viRngUniformBits32, virnguniformbits32, uint32_t, standard_only, ())
ORBA_VARIATE(viRngUniformBits64, virnguniformbits64, uint64_t, standard_only, ())

}  // namespace orba::statistics
