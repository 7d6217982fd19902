// Kernels of the statistics layer exist once per build; a class is an index into the list of builds.
// One of them runs, decided at the first call of the process.
#pragma once

#include <array>
#include <atomic>
#include <type_traits>

#include "services/processor_classes.h"

namespace orba::statistics {

using services::kBuildCount;

template <class Kernel>
using ByClass = std::array<Kernel*, kBuildCount>;

// ORBA_CLASS_KERNELS(vdRngUniform, Signature): `vdRngUniform_kernels`, what the sources of the
// builds define as orba_c0_vdRngUniform, orba_c1_vdRngUniform ...
#define ORBA_CLASS_KERNELS(name, ...)                                          \
  ORBA_BUILDS(ORBA_DECLARE_CLASS_KERNEL_, name, __VA_ARGS__)                   \
  inline constexpr ::orba::statistics::ByClass<__VA_ARGS__> name##_kernels = { \
      ORBA_BUILDS(ORBA_LIST_CLASS_KERNEL_, name)}
#define ORBA_DECLARE_CLASS_KERNEL_(c, name, ...) \
  extern "C" std::type_identity_t<__VA_ARGS__> orba_c##c##_##name;
#define ORBA_LIST_CLASS_KERNEL_(c, name) orba_c##c##_##name,

extern std::atomic<int> class_word;
int detect_class() noexcept;

// Class of this process.
inline int running_class() noexcept {
  const int word = class_word.load(std::memory_order_relaxed);
  return word >= 0 ? word : detect_class();
}

}  // namespace orba::statistics
