// Names of the distribution kernels, and what they share.
#pragma once

#include "statistics/streams/kernel_hooks.h"
#include "vector/kernels/contract/scalar.h"
#include "vector/kernels/simd/simd.h"

// The C name of a kernel: orba_c3_vdRngUniform.
#define ORBA_RNG_PASTE_(build, Name) orba_##build##_##Name
#define ORBA_RNG_PASTE(build, Name) ORBA_RNG_PASTE_(build, Name)
#define ORBA_RNG_KERNEL(Name) ORBA_RNG_PASTE(ORBA_CLASS_NAMESPACE, Name)
