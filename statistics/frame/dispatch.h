// Kernels of the statistics layer exist in five builds, one per class 0 to 4 (class 4 is the
// build c5). One of them runs, decided at the first call of the process.
#pragma once

#include <array>
#include <atomic>
#include <type_traits>

namespace orba::statistics {

inline constexpr int kClassCount = 5;
inline constexpr std::array<int, kClassCount> kBuildOfClass = {0, 1, 2, 3, 5};

template <class Kernel>
using ByClass = std::array<Kernel*, kClassCount>;

// ORBA_CLASS_KERNELS(vdRngUniform, Signature): `vdRngUniform_kernels`, what the sources of the
// builds define as orba_c0_vdRngUniform, orba_c1_vdRngUniform ...
#define ORBA_CLASS_KERNELS(name, ...)                                                          \
  extern "C" std::type_identity_t<__VA_ARGS__> orba_c0_##name, orba_c1_##name, orba_c2_##name, \
      orba_c3_##name, orba_c5_##name;                                                          \
  inline constexpr ::orba::statistics::ByClass<__VA_ARGS__> name##_kernels = {                 \
      orba_c0_##name, orba_c1_##name, orba_c2_##name, orba_c3_##name, orba_c5_##name}

extern std::atomic<int> class_word;
int detect_class() noexcept;

// Class of this process.
inline int running_class() noexcept {
  const int word = class_word.load(std::memory_order_relaxed);
  return word >= 0 ? word : detect_class();
}

}  // namespace orba::statistics
