// Log1p: ln(1 + a). KAM_STATUS_SING at -1, KAM_STATUS_ERRDOM below.
#include "vector/kernels/explog/log1p_kernel.h"

ORBA_LOG_KERNELS(Log1p, Log1pKernel)
