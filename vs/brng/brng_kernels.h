// Entry points of the compiled-in generators, per class.
#pragma once

#include <type_traits>

#include "vs/brng/stream_state.h"
#include "vs/frame/dispatch.h"

namespace orba::vs {

using InitStreamKernel = std::remove_pointer_t<decltype(BrngProperties::InitStream)>;
using SingleKernel = std::remove_pointer_t<decltype(BrngProperties::sBRng)>;
using DoubleKernel = std::remove_pointer_t<decltype(BrngProperties::dBRng)>;
using FloorsKernel = int32_t(StreamState* stream, int32_t n, int32_t* r, double a, double b);
using IntegerKernel = std::remove_pointer_t<decltype(BrngProperties::iBRng)>;

}  // namespace orba::vs

#define ORBA_BRNG(row, Name, size, seeds, zero, word, bits, subs)    \
  ORBA_CLASS_KERNELS(Name##_InitStream, orba::vs::InitStreamKernel); \
  ORBA_CLASS_KERNELS(Name##_sBRng, orba::vs::SingleKernel);          \
  ORBA_CLASS_KERNELS(Name##_dBRng, orba::vs::DoubleKernel);          \
  ORBA_CLASS_KERNELS(Name##_floors, orba::vs::FloorsKernel);         \
  ORBA_CLASS_KERNELS(Name##_iBRng, orba::vs::IntegerKernel);
#include "vs/brng/brngs.def"
#undef ORBA_BRNG
