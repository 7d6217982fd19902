// Cos: the cosine of an angle in radians.
#include "vector/kernels/trig/sin_cos_kernel.h"

ORBA_SIN_COS_KERNELS(Cos, true)
