// The kernel rows: for each function and element type, 18 kernels and 18 cost hints.
#pragma once

#include <stdint.h>

#include <array>

#include "services/processor_classes.h"
#include "vector/function_table.h"
#include "vector/words/shapes.h"

namespace orba::vector {

using services::kClassCount;
inline constexpr int kRowSlots = 3 * kClassCount;

// Any kernel; the shape tells the signature to call it by.
using KamKernel = void (*)();

// Slots in the order [LA: classes 0..5][HA: classes 0..5][EP: classes 0..5]. Class 4 is empty: its
// kernel cell is a poison value, its hint 1111.0.
struct KamKernelRow {
  std::array<KamKernel, kRowSlots> kernel;
  std::array<float, kRowSlots> hint;
};
inline constexpr uint64_t kEmptyClassKernel = 0xBAAAAAAAAAAAADB3;

// Slot of a class under a mode word. Not range-checked: accuracies other than LA, HA and EP run off
// the row.
inline int row_index(int kernel_class, uint32_t mode) {
  return kernel_class + static_cast<int>(mode & KAM_ACCURACY_MASK) * kClassCount - kClassCount;
}

// One row per function and type: row_vdAdd, ...
#define ORBA_DECLARE_ROW_(t, Name) extern const KamKernelRow row_v##t##Name;
#define ORBA_DECLARE_ROWS(Name, name, shape, types, kernels, call) \
  ORBA_KAM_TYPES(types)                                            \
  (ORBA_DECLARE_ROW_, Name)
#define ORBA_KAM_FUNCTION ORBA_DECLARE_ROWS
#include "vector/functions.def"
#undef ORBA_KAM_FUNCTION

}  // namespace orba::vector
