#include "services/detect/snapshot.h"

#include <cpuid.h>
#include <string.h>

namespace orba::services {
namespace {

// Past the last leaf some processors answer with the data of another one, so the count is asked
// first (the compiler's helper does it).
CpuidLeaf read_leaf(uint32_t leaf, uint32_t subleaf) noexcept {
  CpuidLeaf result;
  if (!__get_cpuid_count(leaf, subleaf, &result.eax, &result.ebx, &result.ecx, &result.edx)) {
    return {};
  }
  return result;
}

uint64_t read_xcr0() noexcept {
  uint32_t low, high;
  __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return (uint64_t{high} << 32) | low;
}

}  // namespace

Snapshot take_snapshot() noexcept {
  Snapshot snapshot;
  const CpuidLeaf identity = read_leaf(0, 0);
  memcpy(snapshot.vendor, &identity.ebx, 4);
  memcpy(snapshot.vendor + 4, &identity.edx, 4);
  memcpy(snapshot.vendor + 8, &identity.ecx, 4);

  snapshot.basic = read_leaf(1, 0);
  snapshot.extended = read_leaf(7, 0);
  if (snapshot.extended.eax >= 1) {  // the last subleaf of leaf 7
    snapshot.extended_1 = read_leaf(7, 1);
  }
  snapshot.xsave = read_leaf(0xD, 1);
  snapshot.trace = read_leaf(0x14, 0);
  snapshot.amd64 = read_leaf(0x80000001, 0);
  snapshot.capacity = read_leaf(0x80000008, 0);
  if (snapshot.basic.ecx & kCpuidOsxsave) {
    snapshot.xcr0 = read_xcr0();
  }
  return snapshot;
}

}  // namespace orba::services
