// How a table of functions becomes kernel rows and exported functions: rows.cpp and exports.cpp, and
// tests with tables of their own. Each name below is a definition of ORBA_KAM_FUNCTION:
//
//   ORBA_DECLARE_KERNELS   the kernels by their names (vector/kernels/contract/kernel.h)
//   ORBA_DEFINE_ROWS       row_vdAdd ...; its cost hints are hints_vdAdd, a lean function has none.
//                          A row without kernels does not link, one without hints does not compile
//   ORBA_DEFINE_FORMS      the four forms of each function
#pragma once

#include <type_traits>

#include "vector/frame/call.h"

// The kernel of a slot, by what the row says that its classes and accuracies share.
#define ORBA_KERNEL_per_accuracy(c, row, accuracy) orba_c##c##_##row##_##accuracy
#define ORBA_KERNEL_per_class(c, row, accuracy) orba_c##c##_##row##_ALL
#define ORBA_KERNEL_single(c, row, accuracy) orba_c0_##row##_ALL

#define ORBA_DECLARE_KERNEL_(c, row, kernels, ...)                                \
  extern "C" std::type_identity_t<__VA_ARGS__> ORBA_KERNEL_##kernels(c, row, LA), \
      ORBA_KERNEL_##kernels(c, row, HA), ORBA_KERNEL_##kernels(c, row, EP);
#define ORBA_DECLARE_KERNELS_(t, Name, shape, kernels) \
  ORBA_BUILDS(ORBA_DECLARE_KERNEL_, v##t##Name, kernels, ORBA_SIGNATURE(shape, t))
#define ORBA_DECLARE_KERNELS(Name, name, shape, types, kernels, call) \
  ORBA_KAM_TYPES(types)                                               \
  (ORBA_DECLARE_KERNELS_, Name, shape, kernels)

#define ORBA_SLOT_(c, row, kernels, accuracy) \
  reinterpret_cast<orba::vector::KamKernel>(ORBA_KERNEL_##kernels(c, row, accuracy)),
#define ORBA_EMPTY_SLOT_(c, row, kernels, accuracy) \
  reinterpret_cast<orba::vector::KamKernel>(orba::vector::kEmptyClassKernel),
#define ORBA_SLOTS_(row, kernels, accuracy) \
  ORBA_CLASSES(ORBA_SLOT_, ORBA_EMPTY_SLOT_, row, kernels, accuracy)
#define ORBA_HINTS_threaded(row) hints_##row
#define ORBA_HINTS_warning(row) hints_##row
#define ORBA_HINTS_lean(row) \
  {}
#define ORBA_DEFINE_ROW_(t, Name, kernels, call)                                 \
  const KamKernelRow row_v##t##Name = {                                          \
      {ORBA_SLOTS_(v##t##Name, kernels, LA) ORBA_SLOTS_(v##t##Name, kernels, HA) \
           ORBA_SLOTS_(v##t##Name, kernels, EP)},                                \
      ORBA_HINTS_##call(v##t##Name)};
#define ORBA_DEFINE_ROWS(Name, name, shape, types, kernels, call) \
  ORBA_KAM_TYPES(types)                                           \
  (ORBA_DEFINE_ROW_, Name, kernels, call)

#define ORBA_EXPORT_ extern "C" __attribute__((visibility("default")))
#define ORBA_FRAME_(frame, shape, t, call) \
  orba::vector::frame<ORBA_SIGNATURE(shape, t), orba::vector::CallKind::call>
#define ORBA_ROW_(t, Name) orba::vector::row_v##t##Name, "v" #t #Name
#define ORBA_DEFINE_FORMS_(t, Name, name, shape, call)                                  \
  ORBA_EXPORT_ void v##t##Name(int32_t n ORBA_PARAMETERS(shape, t)) {                   \
    ORBA_FRAME_(vector_call, shape, t, call)                                            \
    (ORBA_ROW_(t, Name), n ORBA_ARGUMENTS(shape, t));                                   \
  }                                                                                     \
  ORBA_EXPORT_ void vm##t##Name(int32_t n ORBA_PARAMETERS(shape, t), uint32_t mode) {   \
    ORBA_FRAME_(vector_call_with_mode, shape, t, call)                                  \
    (mode, ORBA_ROW_(t, Name), n ORBA_ARGUMENTS(shape, t));                             \
  }                                                                                     \
  ORBA_EXPORT_ void v##t##name(const int32_t* n ORBA_PARAMETERS_BY_ADDRESS(shape, t)) { \
    ORBA_FRAME_(vector_call, shape, t, call)                                            \
    (ORBA_ROW_(t, Name), *n ORBA_ARGUMENTS_BY_ADDRESS(shape, t));                       \
  }                                                                                     \
  ORBA_EXPORT_ void vm##t##name(const int32_t* n ORBA_PARAMETERS_BY_ADDRESS(shape, t),  \
                                const uint32_t* mode) {                                 \
    ORBA_FRAME_(vector_call_with_mode, shape, t, call)                                  \
    (mode, ORBA_ROW_(t, Name), *n ORBA_ARGUMENTS_BY_ADDRESS(shape, t));                 \
  }
#define ORBA_DEFINE_FORMS(Name, name, shape, types, kernels, call) \
  ORBA_KAM_TYPES(types)                                            \
  (ORBA_DEFINE_FORMS_, Name, name, shape, call)
