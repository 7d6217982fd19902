#include "vm/kernels/explog/log_kernel.h"

ORBA_KERNEL_1i_1o(d, Ln, HA, LogKernel<Natural, F64, true>)
ORBA_SAME_KERNEL(vdLn, 1i_1o, d, LA, HA)
ORBA_KERNEL_1i_1o(d, Ln, EP, LogKernel<Natural, F64, false>)
ORBA_KERNEL_1i_1o(s, Ln, HA, LogKernel<Natural, F32, true>)
ORBA_SAME_KERNEL(vsLn, 1i_1o, s, LA, HA)
ORBA_KERNEL_1i_1o(s, Ln, EP, LogKernel<Natural, F32, false>)
