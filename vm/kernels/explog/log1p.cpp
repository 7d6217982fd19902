// Log1p: ln(1 + a). KAM_STATUS_SING at -1, KAM_STATUS_ERRDOM below.
#include "vm/kernels/explog/log1p_kernel.h"

ORBA_KERNEL_1i_1o(d, Log1p, HA, Log1pKernel<F64, kHa>)
    ORBA_KERNEL_1i_1o(d, Log1p, EP, Log1pKernel<F64, kEp>)
        ORBA_KERNEL_1i_1o(s, Log1p, HA, Log1pKernel<F32, kHa>)
#if ORBA_CLASS >= 3
            ORBA_KERNEL_1i_1o(d, Log1p, LA, Log1pKernel<F64, kLa>)
                ORBA_KERNEL_1i_1o(s, Log1p, LA, Log1pKernel<F32, kLa>)
                    ORBA_KERNEL_1i_1o(s, Log1p, EP, Log1pKernel<F32, kEp>)
#else
            ORBA_SAME_KERNEL(vdLog1p, 1i_1o, d, LA, HA) ORBA_SAME_KERNEL(vsLog1p, 1i_1o, s, LA, HA)
                ORBA_SAME_KERNEL(vsLog1p, 1i_1o, s, EP, HA)
#endif
