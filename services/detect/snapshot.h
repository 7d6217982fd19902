// What detection knows of a processor: raw CPUID registers and the state the system enabled.
#pragma once

#include <stdint.h>

namespace orba::services {

struct CpuidLeaf {
  uint32_t eax = 0;
  uint32_t ebx = 0;
  uint32_t ecx = 0;
  uint32_t edx = 0;
};

// Leaves that a processor does not report are zero, as is XCR0 without OSXSAVE.
struct Snapshot {
  char vendor[13] = {};  // twelve characters of leaf 0 and a NUL
  CpuidLeaf basic;       // leaf 1
  CpuidLeaf extended;    // leaf 7, subleaf 0
  CpuidLeaf extended_1;  // leaf 7, subleaf 1
  CpuidLeaf xsave;       // leaf 0xD, subleaf 1
  CpuidLeaf trace;       // leaf 0x14, subleaf 0
  CpuidLeaf amd64;       // leaf 0x80000001
  CpuidLeaf capacity;    // leaf 0x80000008
  uint64_t xcr0 = 0;
};

inline constexpr uint32_t kCpuidOsxsave = 1u << 27;  // of basic.ecx: XGETBV may be used

// Reads the processor that runs the caller.
Snapshot take_snapshot() noexcept;

}  // namespace orba::services
