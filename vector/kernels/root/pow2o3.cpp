// Pow2o3: |a|^(2/3), of any argument. No reports.
#include "vector/kernels/root/cube_root.h"

ORBA_THIRD_POWER_KERNELS(Pow2o3, 2)
