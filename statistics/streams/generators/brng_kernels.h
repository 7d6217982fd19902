// Entry points of the compiled-in generators, per class.
#pragma once

#include <type_traits>

#include "statistics/frame/dispatch.h"
#include "statistics/streams/stream_state.h"

namespace orba::statistics {

using InitStreamKernel = std::remove_pointer_t<decltype(BrngProperties::InitStream)>;
using SingleKernel = std::remove_pointer_t<decltype(BrngProperties::sBRng)>;
using DoubleKernel = std::remove_pointer_t<decltype(BrngProperties::dBRng)>;
using FloorsKernel = int32_t(StreamState* stream, int32_t n, int32_t* r, double a, double b);
using IntegerKernel = std::remove_pointer_t<decltype(BrngProperties::iBRng)>;

}  // namespace orba::statistics

#define ORBA_BRNG(row, Name, size, seeds, zero, word, bits, subs)            \
  ORBA_CLASS_KERNELS(Name##_InitStream, orba::statistics::InitStreamKernel); \
  ORBA_CLASS_KERNELS(Name##_sBRng, orba::statistics::SingleKernel);          \
  ORBA_CLASS_KERNELS(Name##_dBRng, orba::statistics::DoubleKernel);          \
  ORBA_CLASS_KERNELS(Name##_floors, orba::statistics::FloorsKernel);         \
  ORBA_CLASS_KERNELS(Name##_iBRng, orba::statistics::IntegerKernel);
#include "statistics/streams/generators/brngs.def"
#undef ORBA_BRNG
