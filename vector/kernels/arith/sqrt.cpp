#include "vector/kernels/arith/sqrt_kernel.h"

#if ORBA_CLASS >= 3
ORBA_KERNEL(1i_1o, d, Sqrt, LA, SqrtSeries64<SqrtDegree::full>)
ORBA_KERNEL(1i_1o, d, Sqrt, EP, SqrtSeries64<SqrtDegree::ep>)
ORBA_KERNEL(1i_1o, s, Sqrt, LA, SqrtSeries32<SqrtDegree::full>)
ORBA_KERNEL(1i_1o, s, Sqrt, EP, SqrtSeries32<SqrtDegree::ep>)
#endif
#if ORBA_CLASS == 5
ORBA_KERNEL(1i_1o, d, Sqrt, HA, SqrtSeries64<SqrtDegree::full_with_residual>)
ORBA_KERNEL(1i_1o, s, Sqrt, HA, SqrtSeries32<SqrtDegree::full_with_residual>)
#else
ORBA_KERNEL(1i_1o, d, Sqrt, HA, SqrtHardware<F64>)
ORBA_KERNEL(1i_1o, s, Sqrt, HA, SqrtHardware<F32>)
#endif
#if ORBA_CLASS < 3
ORBA_SAME_KERNEL(1i_1o, d, Sqrt, LA, HA)
ORBA_SAME_KERNEL(1i_1o, d, Sqrt, EP, HA)
ORBA_SAME_KERNEL(1i_1o, s, Sqrt, LA, HA)
ORBA_SAME_KERNEL(1i_1o, s, Sqrt, EP, HA)
#endif
