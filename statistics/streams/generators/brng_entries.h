// Entry points of the compiled-in generators.
#pragma once

#include <type_traits>

#include "statistics/frame/dispatch.h"
#include "statistics/streams/brng.h"

namespace orba::statistics {

using InitStreamEntry = std::remove_pointer_t<decltype(BrngProperties::InitStream)>;
using SingleEntry = std::remove_pointer_t<decltype(BrngProperties::sBRng)>;
using DoubleEntry = std::remove_pointer_t<decltype(BrngProperties::dBRng)>;
using IntegerEntry = std::remove_pointer_t<decltype(BrngProperties::iBRng)>;

}  // namespace orba::statistics

// An entry point that exists once, beside those of ORBA_CLASS_KERNELS.
#define ORBA_SHARED_KERNEL(name, ...)                                             \
  extern "C" std::type_identity_t<__VA_ARGS__> orba_##name;                       \
  inline constexpr ::orba::statistics::ByClass<__VA_ARGS__> name##_kernels = [] { \
    ::orba::statistics::ByClass<__VA_ARGS__> all;                                 \
    all.fill(orba_##name);                                                        \
    return all;                                                                   \
  }()

#define ORBA_BLOCKS_CLASS(Name)                                     \
  ORBA_CLASS_KERNELS(Name##_sBRng, orba::statistics::SingleEntry);  \
  ORBA_CLASS_KERNELS(Name##_dBRng, orba::statistics::DoubleEntry);  \
  ORBA_CLASS_KERNELS(Name##_iBRng, orba::statistics::IntegerEntry); \
  ORBA_CLASS_KERNELS(Name##_floors, orba::statistics::FloorsEntry);
#define ORBA_BLOCKS_ONCE(Name)                                                \
  ORBA_SHARED_KERNEL(Name##_sBRng, orba::statistics::SingleEntry);            \
  ORBA_SHARED_KERNEL(Name##_dBRng, orba::statistics::DoubleEntry);            \
  ORBA_SHARED_KERNEL(Name##_iBRng, orba::statistics::IntegerEntry);           \
  inline constexpr ::orba::statistics::ByClass<orba::statistics::FloorsEntry> \
      Name##_floors_kernels = {};

#define ORBA_BRNG(row, Name, size, seeds, zero, word, bits, subs, abilities, uniform, blocks) \
  ORBA_SHARED_KERNEL(Name##_InitStream, orba::statistics::InitStreamEntry);                   \
  ORBA_BLOCKS_##blocks(Name)
#include "statistics/streams/generators/brngs.def"
#undef ORBA_BRNG
