#include "vm/kernels/explog/log_kernel.h"

ORBA_KERNEL_1i_1o(d, Log10, HA, LogKernel<Decimal, F64, true>)
ORBA_SAME_KERNEL(vdLog10, 1i_1o, d, LA, HA)
ORBA_KERNEL_1i_1o(d, Log10, EP, LogKernel<Decimal, F64, false>)
ORBA_KERNEL_1i_1o(s, Log10, HA, LogKernel<Decimal, F32, true>)
ORBA_SAME_KERNEL(vsLog10, 1i_1o, s, LA, HA)
ORBA_KERNEL_1i_1o(s, Log10, EP, LogKernel<Decimal, F32, false>)
