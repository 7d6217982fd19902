// Log10: decimal logarithm. KAM_STATUS_SING at both zeros, KAM_STATUS_ERRDOM below.
#include "vm/kernels/explog/log_kernel.h"

ORBA_KERNEL_1i_1o(d, Log10, HA, LogKernel<Decimal, F64, kHa>)
    ORBA_KERNEL_1i_1o(d, Log10, EP, LogKernel<Decimal, F64, kEp>)
        ORBA_KERNEL_1i_1o(s, Log10, HA, LogKernel<Decimal, F32, kHa>)
#if ORBA_CLASS >= 3
            ORBA_KERNEL_1i_1o(d, Log10, LA, LogKernel<Decimal, F64, kLa>)
                ORBA_KERNEL_1i_1o(s, Log10, LA, LogKernel<Decimal, F32, kLa>)
                    ORBA_KERNEL_1i_1o(s, Log10, EP, LogKernel<Decimal, F32, kEp>)
#else
            ORBA_SAME_KERNEL(vdLog10, 1i_1o, d, LA, HA) ORBA_SAME_KERNEL(vsLog10, 1i_1o, s, LA, HA)
                ORBA_SAME_KERNEL(vsLog10, 1i_1o, s, EP, HA)
#endif
