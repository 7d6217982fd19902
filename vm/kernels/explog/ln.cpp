// Ln: natural logarithm. KAM_STATUS_SING at both zeros, KAM_STATUS_ERRDOM below.
#include "vm/kernels/explog/log_kernel.h"

ORBA_KERNEL_1i_1o(d, Ln, HA, LogKernel<Natural, F64, kHa>)
    ORBA_KERNEL_1i_1o(d, Ln, EP, LogKernel<Natural, F64, kEp>)
        ORBA_KERNEL_1i_1o(s, Ln, HA, LogKernel<Natural, F32, kHa>)
#if ORBA_CLASS >= 3
            ORBA_KERNEL_1i_1o(d, Ln, LA, LogKernel<Natural, F64, kLa>)
                ORBA_KERNEL_1i_1o(s, Ln, LA, LogKernel<Natural, F32, kLa>)
                    ORBA_KERNEL_1i_1o(s, Ln, EP, LogKernel<Natural, F32, kEp>)
#else
            ORBA_SAME_KERNEL(vdLn, 1i_1o, d, LA, HA) ORBA_SAME_KERNEL(vsLn, 1i_1o, s, LA, HA)
                ORBA_SAME_KERNEL(vsLn, 1i_1o, s, EP, HA)
#endif
