// Which processor-specific variant runs: decided once per process.
#pragma once

#include <atomic>

namespace orba::services {

// CpuType 0 to 9 of this process and its level word; the first call detects.
int cpu_type() noexcept;
int cpu_level() noexcept;

// 0 reads the raw-level word without work (-1 when unset); 1 detects the raw level, unfolded.
int raw_level(int detect) noexcept;

// Reproducibility branch of ORBA_CBWR: 1 the branch (low 16 bits), -1 the word with the strict flag
// 0x10000; any other argument gives -2.
int reproducibility(int what) noexcept;

// A description of the instruction set in use, for the trace header.
const char* processor_description() noexcept;

// KernelClass of the vector layer, 0 to 5 (or the override's number as it stands).
int detect_kam_class() noexcept;
extern std::atomic<int> kam_class_word;
inline int kam_class() noexcept {
  const int word = kam_class_word.load(std::memory_order_relaxed);
  return word != -1 ? word : detect_kam_class();
}

// The statistics layer's word holds CpuType itself (or the override's number), its map gives
// KernelClass 0 to 4.
int rau_cpu_type() noexcept;
int rau_class(int cpu_type) noexcept;

}  // namespace orba::services
