// From raw CPUID registers to named features and the instruction sets that the levels ask for.
#pragma once

#include <stdint.h>

#include <initializer_list>
#include <string_view>

#include "services/detect/snapshot.h"

namespace orba::services {

// Register state that the operating system must save before a feature can be used.
enum class FeatureState : uint8_t { none, avx, avx512 };

struct FeatureRow {
  const char* name;
  const char* lower_name;
  CpuidLeaf Snapshot::*leaf;  // where CPUID reports it
  uint32_t CpuidLeaf::*reg;
  uint8_t reg_bit;
  uint8_t bit;  // 0 to 63 in the first feature word, 64 to 127 in the second
  FeatureState state;
};

// clang-format off
inline constexpr FeatureRow kFeatureRows[] = {
    {"SSE3", "sse3", &Snapshot::basic, &CpuidLeaf::ecx, 0, 7, FeatureState::none},
    {"SSSE3", "ssse3", &Snapshot::basic, &CpuidLeaf::ecx, 9, 8, FeatureState::none},
    {"SSE4_1", "sse4_1", &Snapshot::basic, &CpuidLeaf::ecx, 19, 9, FeatureState::none},
    {"SSE4_2", "sse4_2", &Snapshot::basic, &CpuidLeaf::ecx, 20, 10, FeatureState::none},
    {"PCLMULQDQ", "pclmulqdq", &Snapshot::basic, &CpuidLeaf::ecx, 1, 13, FeatureState::none},
    {"AVX", "avx", &Snapshot::basic, &CpuidLeaf::ecx, 28, 16, FeatureState::avx},
    {"FMA", "fma", &Snapshot::basic, &CpuidLeaf::ecx, 12, 18, FeatureState::avx},
    {"BMI", "bmi", &Snapshot::extended, &CpuidLeaf::ebx, 3, 19, FeatureState::none},
    {"LZCNT", "lzcnt", &Snapshot::amd64, &CpuidLeaf::ecx, 5, 20, FeatureState::none},
    {"AVX2", "avx2", &Snapshot::extended, &CpuidLeaf::ebx, 5, 23, FeatureState::avx},
    {"AVX512DQ", "avx512dq", &Snapshot::extended, &CpuidLeaf::ebx, 17, 24, FeatureState::avx512},
    {"AVX512F", "avx512f", &Snapshot::extended, &CpuidLeaf::ebx, 16, 27, FeatureState::avx512},
    {"AVX512ER", "avx512er", &Snapshot::extended, &CpuidLeaf::ebx, 27, 32, FeatureState::avx512},
    {"AVX512PF", "avx512pf", &Snapshot::extended, &CpuidLeaf::ebx, 26, 33, FeatureState::avx512},
    {"AVX512CD", "avx512cd", &Snapshot::extended, &CpuidLeaf::ebx, 28, 34, FeatureState::avx512},
    {"AVX512BW", "avx512bw", &Snapshot::extended, &CpuidLeaf::ebx, 30, 37, FeatureState::avx512},
    {"AVX512VL", "avx512vl", &Snapshot::extended, &CpuidLeaf::ebx, 31, 38, FeatureState::avx512},
    {"VAES", "vaes", &Snapshot::extended, &CpuidLeaf::ecx, 9, 46, FeatureState::avx},
    {"VPCLMULQDQ", "vpclmulqdq", &Snapshot::extended, &CpuidLeaf::ecx, 10, 47, FeatureState::avx},
    {"AVX512_VNNI", "avx512_vnni", &Snapshot::extended, &CpuidLeaf::ecx, 11, 48, FeatureState::avx512},
    // No level asks for these.
    {"POPCNT", "popcnt", &Snapshot::basic, &CpuidLeaf::ecx, 23, 64, FeatureState::none},
    {"AES", "aes", &Snapshot::basic, &CpuidLeaf::ecx, 25, 65, FeatureState::none},
    {"RDRAND", "rdrand", &Snapshot::basic, &CpuidLeaf::ecx, 30, 66, FeatureState::none},
    {"RDSEED", "rdseed", &Snapshot::extended, &CpuidLeaf::ebx, 18, 67, FeatureState::none},
    {"XSAVEC", "xsavec", &Snapshot::xsave, &CpuidLeaf::eax, 1, 68, FeatureState::none},
    {"PTWRITE", "ptwrite", &Snapshot::trace, &CpuidLeaf::ebx, 4, 69, FeatureState::none},
    {"WBNOINVD", "wbnoinvd", &Snapshot::capacity, &CpuidLeaf::ebx, 9, 70, FeatureState::none},
};
// clang-format on

// Set on every processor, so that a filled first word is never zero.
inline constexpr uint64_t kGenericFeature = 1;

struct Features {
  bool tuned_vendor = false;  // of a vendor that the levels above 0 are tuned for
  uint64_t words[2] = {};     // by kFeatureRows; zero until filled
  bool avx_vnni = false;      // these four straight from their CPUID bits
  bool avx512_bf16 = false;
  bool avx512_fp16 = false;
  bool amx_fp16 = false;
};

// A processor of another vendor gets the generic feature alone.
Features features_of(const Snapshot& snapshot) noexcept;

// First-word mask of features by name; an unknown name does not compile.
consteval uint64_t feature_mask(std::initializer_list<std::string_view> names) {
  uint64_t mask = 0;
  for (const std::string_view name : names) {
    const FeatureRow* row = kFeatureRows;
    while (row->name != name) ++row;
    mask |= uint64_t{1} << row->bit;
  }
  return mask;
}

// What the levels are made of. The numbers are bit positions of the enable flags too.
enum class InstructionSet : uint8_t {
  sse42,
  avx,
  avx2,
  avx512,
  avx512_vnni,  // known to users as AVX512_E1, and so on
  avx512_vaes,  // E2
  avx512_bf16,  // E3
  avx512_fp16,  // E4
  amx_fp16,     // E5
  avx_vnni,     // AVX2_E1
};

bool has_instruction_set(const Features& features, InstructionSet set) noexcept;

}  // namespace orba::services
