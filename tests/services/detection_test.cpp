// Detection on made-up processors: CPUID bits are set here by their published positions, apart from
// the library's own table.
#include "services/detect/detection.h"

#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "services/messages.h"

namespace orba::services {
namespace {

constexpr uint32_t bits(std::initializer_list<int> positions) {
  uint32_t word = 0;
  for (int position : positions) word |= 1u << position;
  return word;
}

// Processors by what each adds to the one before; the operating system saves all they need.
enum Processor { kOld, kSse3, kSse42, kAvx, kAvx2, kAvx512, kVnni, kVaes, kBf16, kFp16, kAmxFp16 };

Snapshot with(Processor processor, const char* vendor = "GenuineIntel") {
  Snapshot s;
  std::string(vendor).copy(s.vendor, 12);
  if (processor >= kSse3) s.basic.ecx |= bits({0});
  if (processor >= kSse42) s.basic.ecx |= bits({1, 9, 19, 20, 23});  // PCLMULQDQ, SSSE3, SSE4.1, ..
  if (processor >= kAvx) s.basic.ecx |= bits({27, 28});              // OSXSAVE, AVX
  if (processor >= kAvx) s.xcr0 = processor >= kAvx512 ? 0xE7 : 0x7;
  if (processor >= kAvx2) s.basic.ecx |= bits({12});                   // FMA
  if (processor >= kAvx2) s.extended.ebx |= bits({3, 5});              // BMI1, AVX2
  if (processor >= kAvx2) s.amd64.ecx |= bits({5});                    // LZCNT
  if (processor >= kAvx512) s.extended.ebx |= bits({16, 17, 30, 31});  // F, DQ, BW, VL
  if (processor >= kVnni) s.extended.ecx |= bits({11});
  if (processor >= kVaes) s.extended.ecx |= bits({9, 10});  // VAES, VPCLMULQDQ
  if (processor >= kBf16) s.extended_1.eax |= bits({5});
  if (processor >= kFp16) s.extended.edx |= bits({23});
  if (processor >= kAmxFp16) s.extended_1.eax |= bits({21});
  return s;
}
Snapshot with_avx_vnni(Processor processor) {
  Snapshot s = with(processor);
  s.extended_1.eax |= bits({4});
  return s;
}
Snapshot with_xcr0(Processor processor, uint64_t xcr0) {
  Snapshot s = with(processor);
  s.xcr0 = xcr0;
  return s;
}
// Of kVaes.
Snapshot without(CpuidLeaf Snapshot::*leaf, uint32_t CpuidLeaf::*reg, int bit) {
  Snapshot s = with(kVaes);
  s.*leaf.*reg &= ~bits({bit});
  return s;
}
constexpr auto kBasic = &Snapshot::basic;
constexpr auto kExtended = &Snapshot::extended;
constexpr auto kEbx = &CpuidLeaf::ebx;
constexpr auto kEcx = &CpuidLeaf::ecx;
constexpr char kStranger[] = "OtherMaker!!";

using Messages = std::vector<int>;
Messages messages_of(const DetectionReport& report) {
  return {report.messages, report.messages + report.count};
}

// The whole road: ORBA_CBWR, then ORBA_ENABLE_INSTRUCTIONS, then the computation.
struct Outcome {
  int word, cpu_type, level, raw_level;
  Messages messages;
  std::string description;
};
Outcome detect(const Snapshot& snapshot, std::string_view cbwr = "", std::string_view enable = "") {
  const Features features = features_of(snapshot);
  DetectionReport report;
  const Reproducibility branch = read_reproducibility(cbwr, features, kInitialFlags, report);
  const InstructionRequest request = read_instruction_request(enable, features, report);
  const Decision d = decide_cpu_type(branch.word & 0xFFFF, request, features, report);
  return {branch.word, d.cpu_type, d.level, d.raw_level, messages_of(report), d.description};
}

TEST(Detection, levels_of_processors) {
  const struct {
    Snapshot snapshot;
    int raw_level, level;
  } cases[] = {
      // clang-format off
      {with(kSse3), 0, 0}, {with(kSse42), 3, 3}, {with(kAvx), 3, 3}, {with(kAvx2), 5, 5},
      {with(kAvx2, "AuthenticAMD"), 5, 5}, {with_avx_vnni(kAvx2), 15, 5}, {with(kAvx512), 7, 7},
      {with(kVnni), 9, 7}, {with(kVaes), 10, 7}, {with(kBf16), 12, 7},
      {with(kBf16, "AuthenticAMD"), 12, 7}, {with(kFp16), 14, 7}, {with_avx_vnni(kAvx512), 7, 7},
      {with(kAmxFp16), 14, 7},  // without a request
      // What the system does not save: anything, the upper halves or the lower ones of YMM, anything
      // of AVX-512, all but the masks, all but the ZMM registers, the YMM registers.
      {without(kBasic, kEcx, 27), 3, 3}, {with_xcr0(kAvx512, 0x3), 3, 3},
      {with_xcr0(kAvx2, 0x5), 3, 3}, {with_xcr0(kFp16, 0x7), 5, 5}, {with_xcr0(kFp16, 0x27), 5, 5},
      {with_xcr0(kFp16, 0xC7), 5, 5}, {with_xcr0(kFp16, 0xE1), 3, 3},
      {with(kAvx512, kStranger), 0, 0}, {with(kOld, kStranger), 0, 0}, {with(kAvx512, ""), 0, 0},
      // A set counts only when all its features are there.
      {without(kBasic, kEcx, 1), 3, 3}, {without(kBasic, kEcx, 12), 3, 3},
      {without(kExtended, kEbx, 3), 3, 3}, {without(kExtended, kEbx, 5), 3, 3},
      {without(&Snapshot::amd64, kEcx, 5), 3, 3}, {without(kExtended, kEbx, 16), 5, 5},
      {without(kExtended, kEbx, 17), 5, 5}, {without(kExtended, kEbx, 30), 5, 5},
      {without(kExtended, kEbx, 31), 5, 5}, {without(kExtended, kEcx, 9), 9, 7},
      {without(kExtended, kEcx, 10), 9, 7}};
  // clang-format on
  for (const auto& c : cases) {
    const Outcome outcome = detect(c.snapshot);
    EXPECT_EQ(std::tuple(outcome.raw_level, outcome.level, outcome.cpu_type, outcome.messages),
              std::tuple(c.raw_level, c.level, c.level == 0 ? 0 : c.level + 2, Messages{}))
        << &c - cases;
  }
  // Too old.
  for (std::string_view cbwr : {"", "COMPATIBLE", "SSE2,STRICT", "nonsense"}) {
    const Outcome outcome = detect(with(kOld), cbwr);
    EXPECT_EQ(outcome.messages, (Messages{kMessageUnsupportedProcessor, kMessageSse3Required}));
    EXPECT_EQ(outcome.cpu_type, cbwr == "COMPATIBLE" ? 2 : 0);
  }
  Snapshot ssse3_only = with(kOld);
  ssse3_only.basic.ecx |= bits({9});
  EXPECT_EQ(detect(ssse3_only).messages, Messages{});
}

TEST(Detection, feature_words) {
  EXPECT_EQ(features_of(with(kFp16, kStranger)).words[0], kGenericFeature);
  EXPECT_EQ(features_of(with(kFp16)).words[0], kGenericFeature | 0x1C060099D2780u);
  EXPECT_EQ(feature_mask({"AVX512F", "AVX512ER", "AVX512PF", "AVX512CD"}), 0x708000000u);
  // AVX-512 rests on the AVX state, which its own bits do not imply.
  EXPECT_EQ(features_of(with_xcr0(kFp16, 0xE1)).words[0],
            kGenericFeature |
                feature_mask({"SSE3", "SSSE3", "SSE4_1", "SSE4_2", "PCLMULQDQ", "BMI", "LZCNT"}));
  std::set<int> taken{0};
  for (const FeatureRow& row : kFeatureRows) EXPECT_TRUE(taken.insert(row.bit).second) << row.name;
}

// What the kernel says of this processor must be in the feature words.
TEST(Detection, features_of_this_processor) {
  const Features features = features_of(take_snapshot());
  if (!features.tuned_vendor) GTEST_SKIP() << "no features are read from this vendor";
  std::set<std::string> flags;
  std::ifstream cpuinfo("/proc/cpuinfo");
  for (std::string line; std::getline(cpuinfo, line) && flags.empty();) {
    if (!line.starts_with("flags")) continue;
    std::istringstream words(line.substr(line.find(':') + 1));
    for (std::string word; words >> word;) flags.insert(word);
  }
  ASSERT_TRUE(flags.contains("sse2"));
  const auto flag_name = [](const std::string& name) {  // where the kernel uses older names
    return name == "sse3" ? "pni" : name == "bmi" ? "bmi1" : name == "lzcnt" ? "abm" : name;
  };
  for (const FeatureRow& row : kFeatureRows) {
    if (!flags.contains(flag_name(row.lower_name))) continue;
    EXPECT_TRUE((features.words[row.bit / 64] >> (row.bit % 64)) & 1) << row.name;
  }
  EXPECT_GE(features.avx_vnni, flags.contains("avx_vnni"));
  EXPECT_GE(features.avx512_bf16, flags.contains("avx512_bf16"));
  EXPECT_GE(features.avx512_fp16, flags.contains("avx512_fp16"));
}

// What is asked for, and the flags left on. With E3 asked for, E2 stays off.
TEST(Detection, enable_requests) {
  constexpr EnableFlags kAll = 0x2FF;
  const Snapshot best = with_avx_vnni(kAmxFp16);
  const struct {
    const char* value;
    Snapshot snapshot;
    int code, raw_level;
    EnableFlags flags;
  } cases[] = {// clang-format off
      {"SSE4_2", best, 0, 3, 0x1}, {"AVX", best, 1, 3, 0x3}, {"AVX2", best, 2, 5, 0x7},
      {"AVX2_E1", best, 10, 15, 0x207}, {"AVX512", best, 4, 7, 0xF},
      {"AVX512_E1", best, 6, 9, 0x1F}, {"AVX512_E2", best, 7, 10, 0x3F},
      {"AVX512_E3", best, 8, 12, 0x5F}, {"AVX512_E4", best, 9, 14, 0xFF},
      {"AVX512_E5", best, 11, 16, 0x1FF}, {"SSE4_2", with(kSse42), 0, 3, 0x1},
      {"AVX", with(kAvx), 1, 3, 0x3},
      // A processor that can't meet them: nothing changes.
      {"SSE4_2", with(kSse3), 0, 0, kAll}, {"AVX", with(kSse42), 1, 3, kAll},
      {"AVX2", with(kAvx), 2, 3, kAll}, {"AVX2", with(kAvx512, kStranger), 2, 0, kAll},
      {"AVX2_E1", with(kAvx512), 10, 7, kAll}, {"AVX512", with_avx_vnni(kAvx2), 4, 15, kAll},
      {"AVX512_E1", with(kAvx512), 6, 7, kAll}, {"AVX512_E2", with(kVnni), 7, 9, kAll},
      {"AVX512_E3", with(kVaes), 8, 10, kAll}, {"AVX512_E4", with(kBf16), 9, 12, kAll},
      {"AVX512_E5", with(kFp16), 11, 14, kAll},
      {"", best, -1, 14, kAll}, {"avx2", best, -1, 14, kAll}, {"AVX2 ", best, -1, 14, kAll},
      {"AVX512_E6", best, -1, 14, kAll}, {"AVX512_E", best, -1, 14, kAll}};
  // clang-format on
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.value << ' ' << &c - cases);
    const Features features = features_of(c.snapshot);
    DetectionReport report;
    const InstructionRequest request = read_instruction_request(c.value, features, report);
    EXPECT_EQ(request.code, c.code);
    EXPECT_EQ(request.flags, c.flags);
    EXPECT_EQ(detect_raw_level(features, request.flags, report), c.raw_level);
    EXPECT_EQ(messages_of(report), c.code == 1 ? Messages{kMessageAvxDeprecated} : Messages{});
  }
}

constexpr int kStrict = 0x10000;

TEST(Detection, cbwr_values) {
  const struct {
    Snapshot snapshot;
    std::vector<std::tuple<const char*, int, int>> values;  // of word and CpuType
  } processors[] = {
      // clang-format off
      {with(kFp16),
       {{"", 1, 9}, {"AUTO", 2, 9}, {"COMPATIBLE", 3, 2}, {"SSE2", 4, 0}, {"SSE3", 4, 0},
        {"SSSE3", 4, 0}, {"SSE4_1", 7, 0}, {"SSE4_2", 8, 5}, {"AVX", 8, 5}, {"AVX2", 10, 7},
        {"AVX512_MIC", 10, 7}, {"AVX512", 12, 9}, {"AVX512_MIC_E1", 10, 7}, {"AVX512_E1", 14, 9},
        {"BRANCH=AVX2,STRICT", 10 | kStrict, 7}, {"BRANCH=", 2, 9}, {"BRANCH=BRANCH=AVX2", 2, 9},
        {"branch=AVX2", 2, 9}, {"avx2", 2, 9}, {"AVX2 ", 2, 9}, {" AVX2", 2, 9},
        {"AVX512_E2", 2, 9}, {"OFF", 2, 9}, {"AVX2,STRICT", 10 | kStrict, 7},
        {"AVX2, STRICT", 10 | kStrict, 7}, {"AVX2, , STRICT", 10 | kStrict, 7},
        {"AVX2 ,STRICT", 2, 9}, {"AVX2 STRICT", 2, 9}, {"AVX2STRICT", 2, 9},
        {"AVX2,STRICT ", 2, 9}, {"AVX2,strict", 2, 9}, {"AVX2,STRICT,STRICT", 2, 9},
        {"AUTO,STRICT", 2 | kStrict, 9}, {"STRICT", 2, 9}, {" STRICT", 2, 9}, {",STRICT", 2, 9}}},
      // Ceilings. Another vendor runs the common branches alone.
      {with(kVnni), {{"AVX512_E1", 14, 9}}},
      {with(kAvx512),
       {{"AVX512_E1", 2, 9}, {"AVX512_E1,STRICT", 2 | kStrict, 9}, {"AVX512", 12, 9}}},
      {with(kAvx2), {{"AVX512", 2, 7}, {"AVX2", 10, 7}}},
      {with_avx_vnni(kAvx2), {{"AVX512", 2, 7}}},
      {with(kAvx), {{"AVX2", 2, 5}, {"AVX2,STRICT", 2 | kStrict, 5}}},
      {with(kSse42), {{"AVX", 8, 5}}},
      {with(kSse3), {{"SSE4_2", 2, 0}, {"SSE4_1", 2, 0}, {"SSE2", 4, 0}, {"COMPATIBLE", 3, 2}}},
      {with(kFp16, kStranger),
       {{"COMPATIBLE", 3, 2}, {"COMPATIBLE,STRICT", 3 | kStrict, 2}, {"AUTO", 2, 0}, {"SSE2", 2, 0},
        {"AVX2,STRICT", 2 | kStrict, 0}}}};
  // clang-format on
  for (const auto& [snapshot, values] : processors) {
    for (const auto& [value, word, cpu_type] : values) {
      const Outcome outcome = detect(snapshot, value);
      EXPECT_EQ(std::tuple(outcome.word, outcome.cpu_type, outcome.messages),
                std::tuple(word, cpu_type, Messages{}))
          << value;
    }
  }
}

TEST(Detection, branch_check) {
  const struct {
    int word, ceiling, status, message;
  } cases[] = {{1, 14, -2, 0},
               // clang-format off
               {15, 14, -2, 0}, {0xFFFF, 14, -2, 0}, {0x20002, 14, -3, 0}, {-1, 14, -3, 0},
               {0x1000A, 14, 0, 0}, {6, 4, -3, 0}, {5, 8, 0, 0}, {6, 8, 0, kMessageSsse3Deprecated},
               {9, 8, -3, 0}, {9, 10, 0, kMessageAvxDeprecated}, {11, 12, -3, 0}, {12, 12, 0, 0},
               {13, 12, -3, 0}, {12, 13, -3, 0}, {11, 14, -3, 0}, {12, 14, 0, 0}, {13, 14, -3, 0},
               {14, 14, 0, 0}, {14, 12, -3, 0},
               // another vendor's processors have the ceiling 2
               {0x2000F, 2, -3, 0}, {2, 2, 0, 0}, {3, 2, 0, 0}, {4, 2, -3, 0}, {15, 2, -2, 0}};
  // clang-format on
  for (const auto& c : cases) {
    DetectionReport report;
    EXPECT_EQ(check_branch(c.word, c.ceiling, c.ceiling > 2, report), c.status)
        << c.word << " at " << c.ceiling;
    EXPECT_EQ(messages_of(report), c.message != 0 ? Messages{c.message} : Messages{}) << c.word;
  }
}

// Beside those that detection yields.
TEST(Detection, ceilings_and_classes) {
  EXPECT_EQ(fold_level(6), 5);
  EXPECT_EQ(fold_level(8), 5);
  EXPECT_EQ(branch_ceiling(1, features_of(with(kSse42))), 4);
  EXPECT_EQ(branch_ceiling(2, features_of(with(kSse42))), 7);
  EXPECT_EQ(branch_ceiling(2, features_of(with(kSse3))), 4);
  EXPECT_EQ(branch_ceiling(4, features_of(with(kSse42))), 8);
  constexpr int kKam[10] = {0, 1, 0, 0, 0, 2, 2, 3, 4, 5};
  constexpr int kRau[10] = {0, 1, 0, 0, 0, 2, 2, 3, 3, 4};
  for (int type = 0; type < 10; ++type) {
    EXPECT_EQ(kam_class_of(type), kKam[type]);
    EXPECT_EQ(rau_class_of(type), kRau[type]);
  }
}

// The two controls together. The branch wins over a narrower request, except that AVX512 (code 4)
// lies below the levels of AVX2 and AVX512 as a number.
TEST(Detection, branch_against_request) {
  const struct {
    const char *cbwr, *enable;
    Processor processor;
    int word, cpu_type, raw_level;  // raw level -1: the branch decided
  } cases[] = {{"AVX2", "SSE4_2", kFp16, 10, 7, -1},
               // clang-format off
               {"AVX2", "AVX2", kFp16, 10, 7, -1}, {"SSE4_2", "AVX512", kFp16, 8, 5, -1},
               {"AVX2", "AVX512", kFp16, 10, 9, 7}, {"AVX2", "AVX512", kAvx2, 10, 7, 5},
               {"AVX512", "AVX512", kFp16, 12, 9, 7}, {"AVX512_E1", "AVX512_E2", kFp16, 14, 9, -1},
               {"AVX2", "AVX", kFp16, 10, 7, -1}, {"COMPATIBLE", "AVX2", kFp16, 3, 2, -1},
               {"AUTO", "AVX2", kFp16, 2, 7, 5},
               // clang-format on
               // The check sees the whole processor, the fall-back the request.
               {"AVX512", "AVX2", kFp16, 12, 9, -1},
               {"AVX512", "SSE4_2", kAvx2, 2, 5, 3},
               {"nonsense", "AVX2", kFp16, 2, 7, 5}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.cbwr << " with " << c.enable);
    const Outcome outcome = detect(with(c.processor), c.cbwr, c.enable);
    EXPECT_EQ(std::tuple(outcome.word, outcome.cpu_type, outcome.raw_level),
              std::tuple(c.word, c.cpu_type, c.raw_level));
    EXPECT_EQ(outcome.messages.size(), std::string(c.enable) == "AVX");
  }
  // Branches that no name gives, and requests that no literal gives.
  for (int branch : {11, 13, 15}) {
    DetectionReport report;
    EXPECT_EQ(decide_cpu_type(branch, {}, features_of(with(kFp16)), report).cpu_type, 9);
    EXPECT_EQ(messages_of(report), Messages{kMessageBadReproducibility});
  }
  const auto type = [](int branch, int code, Processor processor) {
    DetectionReport report;
    return decide_cpu_type(branch, {.code = code}, features_of(with(processor)), report).cpu_type;
  };
  EXPECT_EQ(type(10, 3, kFp16), 9);
  EXPECT_EQ(type(12, 5, kAvx512), 9);
  EXPECT_EQ(type(8, 3, kFp16), 5);
  EXPECT_EQ(type(14, 9, kAvx2), 9);                       // 9 is not below the folded target
  EXPECT_EQ(detect(with(kFp16), "COMPATIBLE").level, 0);  // level 1 is kept as 0
  EXPECT_EQ(detect(with(kFp16), "SSE4_1").level, 0);
  EXPECT_EQ(detect(with(kFp16), "AVX512_E1").level, 7);
  EXPECT_NE(detect(with(kFp16), "AVX2").description, detect(with(kFp16)).description);
  EXPECT_EQ(detect(with(kFp16), "AVX2").description, detect(with(kAvx2)).description);
}

TEST(Detection, class_override) {
  // clang-format off
  const std::pair<const char*, int> cases[] = {
      {"", -1}, {"0", 0}, {"5", 5}, {"7", 7}, {"8", -1}, {"9", 9}, {"03", 3}, {"08", -1}, {"12", -1},
      {"7x", -1}, {"123", 1}, {"3xyz", 3}, {"800", -1}, {"x7", -1}, {" 7", -1}};
  // clang-format on
  for (const auto& [value, number] : cases) EXPECT_EQ(parse_class_override(value), number) << value;
}

}  // namespace
}  // namespace orba::services
