#include "services/detect/features.h"

#include <algorithm>
#include <iterator>

namespace orba::services {
namespace {

// CPUID vendor strings of the processors that the kernels are tuned and tested on.
constexpr std::string_view kTunedVendors[] = {"GenuineIntel", "AuthenticAMD"};

bool state_enabled(const Snapshot& snapshot, FeatureState state) noexcept {
  constexpr uint64_t kAvxState = 0x6;      // XMM and the upper halves of YMM
  constexpr uint64_t kAvx512State = 0xE0;  // mask registers, upper halves of ZMM, ZMM16 to ZMM31
  uint64_t needed = 0;
  switch (state) {
    case FeatureState::none:
      return true;
    case FeatureState::avx:
      needed = kAvxState;
      break;
    case FeatureState::avx512:
      needed = kAvxState | kAvx512State;
      break;
  }
  return (snapshot.basic.ecx & kCpuidOsxsave) != 0 && (snapshot.xcr0 & needed) == needed;
}

bool has_features(const Features& features, uint64_t mask) noexcept {
  return (features.words[0] & mask) == mask;
}

}  // namespace

Features features_of(const Snapshot& snapshot) noexcept {
  Features features;
  features.words[0] = kGenericFeature;
  features.tuned_vendor = std::ranges::find(kTunedVendors, std::string_view(snapshot.vendor)) !=
                          std::end(kTunedVendors);
  if (!features.tuned_vendor) {
    return features;
  }
  for (const FeatureRow& row : kFeatureRows) {
    const uint32_t reg = snapshot.*row.leaf.*row.reg;
    if (((reg >> row.reg_bit) & 1) != 0 && state_enabled(snapshot, row.state)) {
      features.words[row.bit / 64] |= uint64_t{1} << (row.bit % 64);
    }
  }
  const auto bit = [](uint32_t reg, int position) { return ((reg >> position) & 1) != 0; };
  features.avx_vnni = bit(snapshot.extended_1.eax, 4);
  features.avx512_bf16 = bit(snapshot.extended_1.eax, 5);
  features.avx512_fp16 = bit(snapshot.extended.edx, 23);
  features.amx_fp16 = bit(snapshot.extended_1.eax, 21);
  return features;
}

bool has_instruction_set(const Features& features, InstructionSet set) noexcept {
  switch (set) {
    case InstructionSet::sse42:
      return has_features(features, feature_mask({"SSE4_2"}));
    case InstructionSet::avx:
      return has_features(features, feature_mask({"AVX"}));
    case InstructionSet::avx2:
      return has_features(features, feature_mask({"PCLMULQDQ", "FMA", "BMI", "LZCNT", "AVX2"}));
    case InstructionSet::avx512:
      return has_features(features, feature_mask({"AVX512F", "AVX512DQ", "AVX512BW", "AVX512VL"}));
    case InstructionSet::avx512_vnni:
      return has_features(features, feature_mask({"AVX512_VNNI"}));
    case InstructionSet::avx512_vaes:
      return has_features(features, feature_mask({"AVX512F", "VAES", "VPCLMULQDQ"}));
    case InstructionSet::avx512_bf16:
      return features.avx512_bf16;
    case InstructionSet::avx512_fp16:
      return features.avx512_fp16;
    case InstructionSet::amx_fp16:
      return features.amx_fp16;
    case InstructionSet::avx_vnni:
      return features.avx_vnni;
  }
  return false;
}

}  // namespace orba::services
