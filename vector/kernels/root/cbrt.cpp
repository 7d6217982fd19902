// Cbrt: a^(1/3), of any argument. No reports.
#include "vector/kernels/root/cube_root.h"

ORBA_THIRD_POWER_KERNELS(Cbrt, 1)
