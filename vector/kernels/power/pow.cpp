#include "vector/kernels/power/pow_kernel.h"

ORBA_KERNEL(2i_1o, d, Pow, HA, PowHa)
#if ORBA_CLASS == 5
ORBA_KERNEL(2i_1o, d, Pow, LA, PowLa)
#else
ORBA_SAME_KERNEL(2i_1o, d, Pow, LA, HA)
#endif
#if ORBA_CLASS >= 2
ORBA_KERNEL(2i_1o, d, Pow, EP, PowEp)
#else
ORBA_SAME_KERNEL(2i_1o, d, Pow, EP, HA)
#endif
ORBA_KERNEL(2i_1o, s, Pow, HA, PowSingle)
ORBA_SAME_KERNEL(2i_1o, s, Pow, LA, HA)
#if ORBA_CLASS >= 3
ORBA_KERNEL(2i_1o, s, Pow, EP, PowSingleEp)
#else
ORBA_SAME_KERNEL(2i_1o, s, Pow, EP, HA)
#endif
