#include "services/detect/detection.h"

#include "services/messages.h"

namespace orba::services {
namespace {

template <typename... Sets>
constexpr EnableFlags flags_of(Sets... sets) {
  return (flag_of(sets) | ...);
}

using enum InstructionSet;

constexpr int kCodeAvx = 1;

struct RequestRow {
  std::string_view literal;
  int code;
  InstructionSet required;
  EnableFlags flags;
};

constexpr EnableFlags kAvx2Flags = flags_of(sse42, avx, avx2);
constexpr EnableFlags kE1Flags = kAvx2Flags | flags_of(avx512, avx512_vnni);
constexpr EnableFlags kE2Flags = kE1Flags | flag_of(avx512_vaes);

constexpr RequestRow kRequests[] = {
    {"AVX512_E5", 11, amx_fp16, kE2Flags | flags_of(avx512_bf16, avx512_fp16, amx_fp16)},
    {"AVX512_E4", 9, avx512_fp16, kE2Flags | flags_of(avx512_bf16, avx512_fp16)},
    {"AVX512_E3", 8, avx512_bf16, kE1Flags | flag_of(avx512_bf16)},  // E2 is not part of it
    {"AVX512_E2", 7, avx512_vaes, kE2Flags},
    {"AVX512_E1", 6, avx512_vnni, kE1Flags},
    {"AVX512", 4, avx512, kAvx2Flags | flag_of(avx512)},
    {"AVX2_E1", 10, avx_vnni, kAvx2Flags | flag_of(avx_vnni)},
    {"AVX2", 2, avx2, kAvx2Flags},
    {"AVX", kCodeAvx, avx, flags_of(sse42, avx)},
    {"SSE4_2", 0, sse42, flag_of(sse42)},
};

struct BranchRow {
  std::string_view name;
  int branch;
};

constexpr BranchRow kBranches[] = {
    {"AUTO", kBranchAuto}, {"COMPATIBLE", 3},  {"SSE2", 4},    {"SSE3", 4},
    {"SSSE3", 4},          {"SSE4_1", 7},      {"SSE4_2", 8},  {"AVX", 8},
    {"AVX2", 10},          {"AVX512_MIC", 10}, {"AVX512", 12}, {"AVX512_MIC_E1", 10},
    {"AVX512_E1", 14},
};

constexpr int kBranchSsse3 = 6;  // both deprecated: code of an older level takes their place
constexpr int kBranchAvx = 9;
constexpr int kBranchLast = 14;

// Raw level that a branch stands for, -1 when it stands for none.
int target_of_branch(int branch) noexcept {
  switch (branch) {
    case 3:
      return 1;
    case 4:
    case 5:
    case 6:
    case 7:
      return 0;
    case 8:
    case 9:
      return 3;
    case 10:
      return 5;
    case 12:
      return 7;
    case 14:
      return 9;
    default:
      return -1;
  }
}

// The request is weighed against the target as a plain number, although the two are numbered
// differently; only these numbers can win, and only with the set that goes with them.
bool request_wins(int request, int target, const Features& features) noexcept {
  struct Contender {
    int code;
    InstructionSet set;
  };
  constexpr Contender kContenders[] = {
      {3, sse42}, {4, avx}, {5, avx2}, {7, avx512}, {9, avx512_vnni}};
  for (const Contender& contender : kContenders) {
    if (request == contender.code) {
      return request < target && has_instruction_set(features, contender.set);
    }
  }
  return false;
}

const char* describe(int raw_level, bool tuned_vendor) noexcept {
  if (!tuned_vendor) {
    return "processors of any vendor, baseline code";
  }
  switch (raw_level) {
    case 1:
      return "processors with SSE3, code common to all processors";
    case 3:
      return "processors with SSE4.2";
    case 5:
      return "processors with AVX2";
    case 7:
      return "processors with AVX-512";
    case 9:
      return "processors with AVX-512 and VNNI";
    case 10:
      return "processors with AVX-512, VAES and VPCLMULQDQ";
    case 12:
      return "processors with AVX-512 and BF16";
    case 14:
      return "processors with AVX-512 and FP16";
    case 15:
      return "processors with AVX2 and AVX-VNNI";
    case 16:
      return "processors with AVX-512 and AMX-FP16";
    default:
      return "processors with SSE3";
  }
}

}  // namespace

void DetectionReport::add(int message) noexcept { messages[count++] = message; }

void DetectionReport::add_unsupported() noexcept {
  if (!unsupported) {
    unsupported = true;
    add(kMessageUnsupportedProcessor);
    add(kMessageSse3Required);
  }
}

InstructionRequest read_instruction_request(std::string_view value, const Features& features,
                                            DetectionReport& report) noexcept {
  InstructionRequest request;
  for (const RequestRow& row : kRequests) {
    if (value == row.literal) {
      request.code = row.code;
      if (row.code == kCodeAvx) {
        report.add(kMessageAvxDeprecated);
      }
      if (features.tuned_vendor && has_instruction_set(features, row.required)) {
        request.flags = row.flags;
      }
      break;
    }
  }
  return request;
}

int detect_raw_level(const Features& features, EnableFlags flags,
                     DetectionReport& report) noexcept {
  if (!features.tuned_vendor) {
    return 0;
  }
  const auto usable = [&](InstructionSet set) {
    return (flags & flag_of(set)) != 0 && has_instruction_set(features, set);
  };
  if (usable(avx)) {
    if (!has_instruction_set(features, avx2)) return 3;
    if (usable(avx512)) {
      if (usable(amx_fp16)) return 16;
      if (usable(avx512_fp16)) return 14;
      if (usable(avx512_bf16)) return 12;
      if (usable(avx512_vaes)) return 10;
      if (usable(avx512_vnni)) return 9;
      return 7;
    }
    if (usable(avx_vnni)) return 15;
    return (flags & flag_of(avx2)) != 0 ? 5 : 3;
  }
  if (usable(sse42)) return 3;
  if ((features.words[0] & feature_mask({"SSE3", "SSSE3"})) == 0) {
    report.add_unsupported();
  }
  return 0;
}

int fold_level(int raw_level) noexcept {
  switch (raw_level) {
    case 6:
    case 8:
    case 15:
      return 5;
    case 9:
    case 10:
    case 12:
    case 14:
    case 16:
      return 7;
    default:
      return raw_level;
  }
}

bool level_supported(int raw_level) noexcept {
  switch (raw_level) {
    case 2:
    case 4:
    case 6:
    case 8:
    case 11:
    case 13:
      return false;
    default:
      return raw_level >= 0 && raw_level <= 16;
  }
}

int cpu_type_of_level(int level) noexcept {
  return level + (level >= 2 ? 1 : 0) + (level >= 1 ? 1 : 0);
}

Reproducibility read_reproducibility(std::string_view value, const Features& features,
                                     EnableFlags flags, DetectionReport& report) noexcept {
  Reproducibility result;
  if (value.empty()) {
    return result;
  }
  // The name ends at the first of the commas before STRICT. Blanks among them are passed over, but
  // one between the name and that comma belongs to the name.
  constexpr std::string_view kStrict = "STRICT";
  int strict = 0;
  std::string_view name = value;
  if (value.size() > kStrict.size() && value.ends_with(kStrict)) {
    size_t i = value.size() - kStrict.size();
    while (i-- > 0 && (value[i] == ' ' || value[i] == ',')) {
      if (value[i] == ',') {
        name = value.substr(0, i);
        strict = kStrictFlag;
      }
    }
  }
  constexpr std::string_view kPrefix = "BRANCH=";
  if (name.starts_with(kPrefix)) {
    name.remove_prefix(kPrefix.size());
  }
  result.word = kBranchAuto;
  for (const BranchRow& row : kBranches) {
    if (name == row.name) {
      int ceiling = kBranchAuto;
      if (features.tuned_vendor) {
        result.raw_level = detect_raw_level(features, flags, report);
        ceiling = branch_ceiling(result.raw_level, features);
      }
      const int word = row.branch | strict;
      const bool passes = check_branch(word, ceiling, features.tuned_vendor, report) == 0;
      result.word = passes ? word : kBranchAuto | strict;
      break;
    }
  }
  return result;
}

int branch_ceiling(int raw_level, const Features& features) noexcept {
  switch (raw_level) {
    case 2:
      return (features.words[0] & feature_mask({"SSE4_1"})) != 0 ? 7 : 4;
    case 3:
    case 4:
      return 8;
    case 5:
    case 15:
      return 10;
    case 7:
      return 12;
    case 9:
    case 10:
    case 12:
    case 14:
    case 16:
      return 14;
    default:
      return 4;
  }
}

int check_branch(int word, int ceiling, bool tuned_vendor, DetectionReport& report) noexcept {
  constexpr int kUnavailable = -3;
  constexpr int kNoBranch = -2;
  const int branch = word & 0xFFFF;
  if (tuned_vendor) {
    if (branch > ceiling && branch <= kBranchLast) return kUnavailable;
    // Branches under a ceiling whose processors lack them.
    const bool gap = (ceiling == 12 && branch == 11) || (ceiling == 13 && branch == 12) ||
                     (ceiling == 14 && (branch == 11 || branch == 13));
    if (gap) return kUnavailable;
    if (branch == kBranchSsse3) report.add(kMessageSsse3Deprecated);
    if (branch == kBranchAvx) report.add(kMessageAvxDeprecated);
  }
  if ((static_cast<uint32_t>(word) & ~0x1FFFFu) != 0) return kUnavailable;
  if (branch < kBranchAuto || branch > kBranchLast) return kNoBranch;
  return branch <= 3 || tuned_vendor ? 0 : kUnavailable;
}

Decision decide_cpu_type(int branch, const InstructionRequest& request, const Features& features,
                         DetectionReport& report) noexcept {
  const auto decision = [&](int raw_level, bool detected) {
    const int level = fold_level(raw_level);
    return Decision{.cpu_type = cpu_type_of_level(level),
                    .level = level == 1 ? 0 : level,
                    .raw_level = detected ? raw_level : -1,
                    .description = describe(raw_level, features.tuned_vendor)};
  };
  if (branch > kBranchAuto) {
    const int target = target_of_branch(branch);
    const int folded = fold_level(target);
    if (!level_supported(folded)) {
      report.add(kMessageBadReproducibility);
    } else if (!request_wins(request.code, folded, features)) {
      return decision(target, false);
    }
  }
  return decision(detect_raw_level(features, request.flags, report), true);
}

int parse_class_override(std::string_view value) noexcept {
  const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
  if (value.empty() || !is_digit(value[0])) return -1;
  int number = value[0] - '0';
  if (value.size() == 2) {
    if (!is_digit(value[1])) return -1;
    number = number * 10 + (value[1] - '0');
  }
  return number > 9 || number == 8 ? -1 : number;
}

int kam_class_of(int cpu_type) noexcept {
  constexpr int kClasses[] = {0, 1, 0, 0, 0, 2, 2, 3, 4, 5};
  return kClasses[cpu_type];
}

int rau_class_of(int cpu_type) noexcept {
  constexpr int kClasses[] = {0, 1, 0, 0, 0, 2, 2, 3, 3, 4};
  return kClasses[cpu_type];
}

}  // namespace orba::services
