// The rules of processor detection. Everything here is a pure function of a processor's features
// and of values that the environment gave; detect.cpp keeps the process's words and does the
// printing.
//
// Detection finds a raw level (0, 3, 5, 7, 9, 10, 12, 14, 15, 16: the finest distinction), folds it
// to a level that has code of its own (0 SSE3, 3 SSE4.2, 5 AVX2, 7 AVX-512), and numbers that as a
// CpuType, from which each layer takes its kernel class.
#pragma once

#include <stdint.h>

#include <string_view>

#include "services/detect/features.h"

namespace orba::services {

// What a step of detection has to tell the user. The printing waits until the lock is released: a
// thread that holds the output stream may be waiting for that lock.
struct DetectionReport {
  int messages[5] = {};  // numbers of the message catalog, in order
  int count = 0;
  bool unsupported = false;  // the process can't go on

  void add(int message) noexcept;
  void add_unsupported() noexcept;
};

// Enable flags: one bit per instruction set that detection may use.
using EnableFlags = uint32_t;
constexpr EnableFlags flag_of(InstructionSet set) {
  return EnableFlags{1} << static_cast<int>(set);
}
inline constexpr EnableFlags kInitialFlags = 0x3FF & ~flag_of(InstructionSet::amx_fp16);

// ORBA_ENABLE_INSTRUCTIONS. The code stays as asked for even when the processor can't meet it and
// the flags are left alone.
struct InstructionRequest {
  int code = -1;
  EnableFlags flags = kInitialFlags;
};
InstructionRequest read_instruction_request(std::string_view value, const Features& features,
                                            DetectionReport& report) noexcept;

// Raw level, or 0 with a report when the processor is below the minimum.
int detect_raw_level(const Features& features, EnableFlags flags, DetectionReport& report) noexcept;

// Folding also takes the raw levels that detection never yields.
int fold_level(int raw_level) noexcept;
bool level_supported(int raw_level) noexcept;
int cpu_type_of_level(int level) noexcept;

// ORBA_CBWR. The word is a branch, with the strict flag on top.
inline constexpr int kBranchOff = 1;
inline constexpr int kBranchAuto = 2;
inline constexpr int kStrictFlag = 0x10000;
struct Reproducibility {
  int word = kBranchOff;
  int raw_level = -1;  // as detected for the check, -1 when nothing was
};
Reproducibility read_reproducibility(std::string_view value, const Features& features,
                                     EnableFlags flags, DetectionReport& report) noexcept;

// The highest branch that a processor of this raw level runs.
int branch_ceiling(int raw_level, const Features& features) noexcept;

// 0 when the processor can run the branch of `word`, -3 when it can't, -2 for no branch at all.
int check_branch(int word, int ceiling, bool tuned_vendor, DetectionReport& report) noexcept;

// The outcome: a branch of its own right, or what the processor and the request give.
struct Decision {
  int cpu_type;
  int level;
  int raw_level;            // as detected, -1 when the branch decided
  const char* description;  // of the instruction set in use
};
Decision decide_cpu_type(int branch, const InstructionRequest& request, const Features& features,
                         DetectionReport& report) noexcept;

// Value of ORBA_FORCE_KERNELCLASS: 0 to 7 or 9, -1 for no override.
int parse_class_override(std::string_view value) noexcept;

// Kernel class of a CpuType in the vector layer and in the statistics layer.
int kam_class_of(int cpu_type) noexcept;
int rau_class_of(int cpu_type) noexcept;

}  // namespace orba::services
