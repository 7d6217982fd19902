// Sinh: the hyperbolic sine. KAM_STATUS_OVERFLOW where it is above the finite numbers.
#include "vector/kernels/hyperbolic/sinh_cosh_kernel.h"

ORBA_SINH_OR_COSH(d, Sinh, F64)
ORBA_SINH_OR_COSH(s, Sinh, F32)
