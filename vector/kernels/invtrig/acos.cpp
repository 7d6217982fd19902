// Acos: KAM_STATUS_ERRDOM outside [-1, 1].
#include "vector/kernels/invtrig/asin_kernel.h"

ORBA_ARC_KERNELS(Acos, Arc::kCosine)
