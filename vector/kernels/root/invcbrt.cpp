// InvCbrt: a^(-1/3). KAM_STATUS_SING at both zeros.
#include "vector/kernels/root/cube_root.h"

ORBA_THIRD_POWER_KERNELS(InvCbrt, -1)
