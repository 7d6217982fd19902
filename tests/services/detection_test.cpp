// Detection on made-up processors: CPUID bits are set here by their published positions, apart from
// the library's own table.
#include "services/detect/detection.h"

#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "services/messages.h"

namespace orba::services {
namespace {

constexpr uint32_t bits(std::initializer_list<int> positions) {
  uint32_t word = 0;
  for (int position : positions) word |= 1u << position;
  return word;
}

// Processors by what they add to the one before; each has the operating system save all it needs.
Snapshot without_sse3(const char* vendor = "GenuineIntel") {
  Snapshot s;
  std::string(vendor).copy(s.vendor, 12);
  return s;
}
Snapshot with_sse3(const char* vendor = "GenuineIntel") {
  Snapshot s = without_sse3(vendor);
  s.basic.ecx |= bits({0});
  return s;
}
Snapshot with_sse42(const char* vendor = "GenuineIntel") {
  Snapshot s = with_sse3(vendor);
  s.basic.ecx |= bits({1, 9, 19, 20, 23});  // PCLMULQDQ, SSSE3, SSE4.1, SSE4.2, POPCNT
  return s;
}
Snapshot with_avx(const char* vendor = "GenuineIntel") {
  Snapshot s = with_sse42(vendor);
  s.basic.ecx |= bits({27, 28});  // OSXSAVE, AVX
  s.xcr0 = 0x7;
  return s;
}
Snapshot with_avx2(const char* vendor = "GenuineIntel") {
  Snapshot s = with_avx(vendor);
  s.basic.ecx |= bits({12});       // FMA
  s.extended.ebx |= bits({3, 5});  // BMI1, AVX2
  s.amd64.ecx |= bits({5});        // LZCNT
  return s;
}
Snapshot with_avx512(const char* vendor = "GenuineIntel") {
  Snapshot s = with_avx2(vendor);
  s.extended.ebx |= bits({16, 17, 30, 31});  // F, DQ, BW, VL
  s.xcr0 = 0xE7;
  return s;
}
Snapshot with_vnni(const char* vendor = "GenuineIntel") {
  Snapshot s = with_avx512(vendor);
  s.extended.ecx |= bits({11});
  return s;
}
Snapshot with_vaes(const char* vendor = "GenuineIntel") {
  Snapshot s = with_vnni(vendor);
  s.extended.ecx |= bits({9, 10});  // VAES, VPCLMULQDQ
  return s;
}
Snapshot with_bf16(const char* vendor = "GenuineIntel") {
  Snapshot s = with_vaes(vendor);
  s.extended_1.eax |= bits({5});
  return s;
}
Snapshot with_fp16(const char* vendor = "GenuineIntel") {
  Snapshot s = with_bf16(vendor);
  s.extended.edx |= bits({23});
  return s;
}
Snapshot with_amx_fp16(const char* vendor = "GenuineIntel") {
  Snapshot s = with_fp16(vendor);
  s.extended_1.eax |= bits({21});
  return s;
}
Snapshot with_avx_vnni(Snapshot s) {
  s.extended_1.eax |= bits({4});
  return s;
}
Snapshot with_xcr0(Snapshot s, uint64_t xcr0) {
  s.xcr0 = xcr0;
  return s;
}
Snapshot without_osxsave(Snapshot s) {
  s.basic.ecx &= ~bits({27});
  return s;
}

std::vector<int> messages_of(const DetectionReport& report) {
  return {report.messages, report.messages + report.count};
}
using Messages = std::vector<int>;

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

struct ProcessorCase {
  const char* name;
  Snapshot snapshot;
  int raw_level, level, cpu_type, kam_class, rau_class;
};

const ProcessorCase kProcessors[] = {
    {"SSE3", with_sse3(), 0, 0, 0, 0, 0},
    {"SSE4.2", with_sse42(), 3, 3, 5, 2, 2},
    {"AVX", with_avx(), 3, 3, 5, 2, 2},
    {"AVX2", with_avx2(), 5, 5, 7, 3, 3},
    {"AVX2, other maker", with_avx2("AuthenticAMD"), 5, 5, 7, 3, 3},
    {"AVX2 and AVX-VNNI", with_avx_vnni(with_avx2()), 15, 5, 7, 3, 3},
    {"AVX-512", with_avx512(), 7, 7, 9, 5, 4},
    {"VNNI", with_vnni(), 9, 7, 9, 5, 4},
    {"VAES", with_vaes(), 10, 7, 9, 5, 4},
    {"BF16", with_bf16(), 12, 7, 9, 5, 4},
    {"BF16, other maker", with_bf16("AuthenticAMD"), 12, 7, 9, 5, 4},
    {"FP16", with_fp16(), 14, 7, 9, 5, 4},
    {"AMX-FP16 without a request", with_amx_fp16(), 14, 7, 9, 5, 4},
    {"AVX-512 and AVX-VNNI", with_avx_vnni(with_avx512()), 7, 7, 9, 5, 4},
    {"no AVX state", with_xcr0(with_avx512(), 0x3), 3, 3, 5, 2, 2},
    {"YMM state without XMM", with_xcr0(with_avx2(), 0x5), 3, 3, 5, 2, 2},
    {"no OSXSAVE", without_osxsave(with_avx512()), 3, 3, 5, 2, 2},
    {"no AVX-512 state", with_xcr0(with_fp16(), 0x7), 5, 5, 7, 3, 3},
    {"mask state alone", with_xcr0(with_fp16(), 0x27), 5, 5, 7, 3, 3},
    {"ZMM state without masks", with_xcr0(with_fp16(), 0xC7), 5, 5, 7, 3, 3},
    {"ZMM state without AVX", with_xcr0(with_fp16(), 0xE1), 3, 3, 5, 2, 2},
    {"unknown vendor", with_avx512("OtherMaker!!"), 0, 0, 0, 0, 0},
    {"unknown vendor, no SSE3", without_sse3("OtherMaker!!"), 0, 0, 0, 0, 0},
    {"no vendor", with_avx512(""), 0, 0, 0, 0, 0},
};

TEST(Detection, levels_of_processors) {
  for (const ProcessorCase& c : kProcessors) {
    SCOPED_TRACE(c.name);
    const Outcome outcome = detect(c.snapshot);
    EXPECT_EQ(outcome.raw_level, c.raw_level);
    EXPECT_EQ(outcome.level, c.level);
    EXPECT_EQ(outcome.cpu_type, c.cpu_type);
    EXPECT_EQ(kam_class_of(outcome.cpu_type), c.kam_class);
    EXPECT_EQ(rau_class_of(outcome.cpu_type), c.rau_class);
    EXPECT_EQ(outcome.messages, Messages{});
  }
}

// A set counts only when all its features are there.
TEST(Detection, incomplete_sets) {
  struct Case {
    uint32_t CpuidLeaf::*reg;
    CpuidLeaf Snapshot::*leaf;
    int bit, raw_level;
  };
  for (const Case& c : {Case{&CpuidLeaf::ecx, &Snapshot::basic, 1, 3},         // PCLMULQDQ
                        Case{&CpuidLeaf::ecx, &Snapshot::basic, 12, 3},        // FMA
                        Case{&CpuidLeaf::ebx, &Snapshot::extended, 3, 3},      // BMI1
                        Case{&CpuidLeaf::ebx, &Snapshot::extended, 5, 3},      // AVX2
                        Case{&CpuidLeaf::ecx, &Snapshot::amd64, 5, 3},         // LZCNT
                        Case{&CpuidLeaf::ebx, &Snapshot::extended, 16, 5},     // AVX512F
                        Case{&CpuidLeaf::ebx, &Snapshot::extended, 17, 5},     // DQ
                        Case{&CpuidLeaf::ebx, &Snapshot::extended, 30, 5},     // BW
                        Case{&CpuidLeaf::ebx, &Snapshot::extended, 31, 5},     // VL
                        Case{&CpuidLeaf::ecx, &Snapshot::extended, 9, 9},      // VAES
                        Case{&CpuidLeaf::ecx, &Snapshot::extended, 10, 9}}) {  // VPCLMULQDQ
    Snapshot s = with_vaes();
    s.*c.leaf.*c.reg &= ~bits({c.bit});
    EXPECT_EQ(detect(s).raw_level, c.raw_level) << "bit " << c.bit;
  }
}

TEST(Detection, too_old_processor) {
  for (std::string_view cbwr : {"", "COMPATIBLE", "SSE2,STRICT", "nonsense"}) {
    const Outcome outcome = detect(without_sse3(), cbwr);
    EXPECT_EQ(outcome.messages, (Messages{kMessageUnsupportedProcessor, kMessageSse3Required}));
    EXPECT_EQ(outcome.cpu_type, cbwr == "COMPATIBLE" ? 2 : 0);
  }
  Snapshot ssse3_only = without_sse3();
  ssse3_only.basic.ecx |= bits({9});
  EXPECT_EQ(detect(ssse3_only).messages, Messages{});
}

TEST(Detection, feature_words) {
  EXPECT_EQ(features_of(with_fp16("OtherMaker!!")).words[0], kGenericFeature);
  EXPECT_EQ(feature_mask({"SSE3", "SSSE3", "SSE4_1", "SSE4_2"}), 0x780u);
  EXPECT_EQ(feature_mask({"PCLMULQDQ", "FMA", "BMI", "LZCNT", "AVX2"}), 0x9C2000u);
  EXPECT_EQ(feature_mask({"AVX512F", "AVX512DQ", "AVX512BW", "AVX512VL"}), 0x6009000000u);
  EXPECT_EQ(feature_mask({"AVX512F", "VAES", "VPCLMULQDQ"}), 0xC00008000000u);
  EXPECT_EQ(feature_mask({"AVX512_VNNI"}), 0x1000000000000u);
  EXPECT_EQ(feature_mask({"AVX512F", "AVX512ER", "AVX512PF", "AVX512CD"}), 0x708000000u);
  EXPECT_EQ(feature_mask({"AVX"}), 0x10000u);
  // AVX-512 rests on the AVX state, which its own bits do not imply.
  EXPECT_EQ(features_of(with_xcr0(with_fp16(), 0xE1)).words[0],
            kGenericFeature |
                feature_mask({"SSE3", "SSSE3", "SSE4_1", "SSE4_2", "PCLMULQDQ", "BMI", "LZCNT"}));
  std::set<int> taken{0};
  for (const FeatureRow& row : kFeatureRows) {
    EXPECT_TRUE(taken.insert(row.bit).second) << row.name;
  }
}

// What the kernel says of this processor must be in the feature words.
TEST(Detection, features_of_this_processor) {
  const Features features = features_of(take_snapshot());
  if (!features.tuned_vendor) GTEST_SKIP() << "no features are read from this vendor";
  std::set<std::string> flags;
  std::ifstream cpuinfo("/proc/cpuinfo");
  for (std::string line; std::getline(cpuinfo, line) && flags.empty();) {
    if (line.starts_with("flags")) {
      std::istringstream words(line.substr(line.find(':') + 1));
      for (std::string word; words >> word;) flags.insert(word);
    }
  }
  ASSERT_TRUE(flags.contains("sse2"));
  const auto flag_name = [](const std::string& name) {  // where the kernel uses older names
    return name == "sse3" ? "pni" : name == "bmi" ? "bmi1" : name == "lzcnt" ? "abm" : name;
  };
  for (const FeatureRow& row : kFeatureRows) {
    if (flags.contains(flag_name(row.lower_name))) {
      EXPECT_TRUE((features.words[row.bit / 64] >> (row.bit % 64)) & 1) << row.name;
    }
  }
  EXPECT_GE(features.avx_vnni, flags.contains("avx_vnni"));
  EXPECT_GE(features.avx512_bf16, flags.contains("avx512_bf16"));
  EXPECT_GE(features.avx512_fp16, flags.contains("avx512_fp16"));
}

TEST(Detection, enable_requests) {
  struct Case {
    const char* value;
    Snapshot snapshot;
    int code, raw_level;
    bool met;
    Messages messages;
  };
  const Snapshot best = with_avx_vnni(with_amx_fp16());
  const std::string too_long(29, 'A');
  const Case cases[] = {
      // Met.
      {"SSE4_2", best, 0, 3, true, {}},
      {"AVX", best, 1, 3, true, {kMessageAvxDeprecated}},
      {"AVX2", best, 2, 5, true, {}},
      {"AVX2_E1", best, 10, 15, true, {}},
      {"AVX512", best, 4, 7, true, {}},
      {"AVX512_E1", best, 6, 9, true, {}},
      {"AVX512_E2", best, 7, 10, true, {}},
      {"AVX512_E3", best, 8, 12, true, {}},
      {"AVX512_E4", best, 9, 14, true, {}},
      {"AVX512_E5", best, 11, 16, true, {}},
      {"SSE4_2", with_sse42(), 0, 3, true, {}},
      {"AVX", with_avx(), 1, 3, true, {kMessageAvxDeprecated}},
      // Not met: nothing changes.
      {"SSE4_2", with_sse3(), 0, 0, false, {}},
      {"AVX", with_sse42(), 1, 3, false, {kMessageAvxDeprecated}},
      {"AVX2", with_avx(), 2, 3, false, {}},
      {"AVX2_E1", with_avx2(), 10, 5, false, {}},
      {"AVX2_E1", with_avx512(), 10, 7, false, {}},
      {"AVX512", with_avx2(), 4, 5, false, {}},
      {"AVX512", with_avx_vnni(with_avx2()), 4, 15, false, {}},
      {"AVX512_E1", with_avx512(), 6, 7, false, {}},
      {"AVX512_E2", with_vnni(), 7, 9, false, {}},
      {"AVX512_E3", with_vaes(), 8, 10, false, {}},
      {"AVX512_E4", with_bf16(), 9, 12, false, {}},
      {"AVX512_E5", with_fp16(), 11, 14, false, {}},
      // Another vendor.
      {"AVX2", with_avx512("OtherMaker!!"), 2, 0, false, {}},
      // No requests at all.
      {"", best, -1, 14, false, {}},
      {"avx2", best, -1, 14, false, {}},
      {"AVX2 ", best, -1, 14, false, {}},
      {"AVX512_E6", best, -1, 14, false, {}},
      {"AVX512_E", best, -1, 14, false, {}},
      {too_long.c_str(), best, -1, 14, false, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.value);
    const Features features = features_of(c.snapshot);
    DetectionReport report;
    const InstructionRequest request = read_instruction_request(c.value, features, report);
    EXPECT_EQ(request.code, c.code);
    EXPECT_EQ(request.flags != kInitialFlags, c.met);
    EXPECT_EQ(detect_raw_level(features, request.flags, report), c.raw_level);
    EXPECT_EQ(messages_of(report), c.messages);
  }
}

// With E3 asked for, E2 stays off: a processor with FP16 and VAES but no BF16 can't show E2's
// level.
TEST(Detection, request_flags) {
  const auto flags = [](const char* value) {
    DetectionReport report;
    return read_instruction_request(value, features_of(with_amx_fp16()), report).flags;
  };
  EXPECT_EQ(flags("SSE4_2"), 0x1u);
  EXPECT_EQ(flags("AVX"), 0x3u);
  EXPECT_EQ(flags("AVX2"), 0x7u);
  EXPECT_EQ(flags("AVX512"), 0xFu);
  EXPECT_EQ(flags("AVX512_E1"), 0x1Fu);
  EXPECT_EQ(flags("AVX512_E2"), 0x3Fu);
  EXPECT_EQ(flags("AVX512_E3"), 0x5Fu);
  EXPECT_EQ(flags("AVX512_E4"), 0xFFu);
  EXPECT_EQ(flags("AVX512_E5"), 0x1FFu);
  EXPECT_EQ(flags(""), 0x2FFu);
}

// Over every processor and request: a request never raises the class.
TEST(Detection, requests_only_lower) {
  for (const ProcessorCase& c : kProcessors) {
    for (const char* value : {"SSE4_2", "AVX", "AVX2", "AVX2_E1", "AVX512", "AVX512_E1",
                              "AVX512_E2", "AVX512_E3", "AVX512_E4", "AVX512_E5"}) {
      EXPECT_LE(detect(c.snapshot, "", value).cpu_type, c.cpu_type) << c.name << ' ' << value;
    }
  }
}

TEST(Detection, cbwr_values) {
  struct Case {
    const char* value;
    Snapshot snapshot;
    int word, cpu_type;
  };
  const Snapshot best = with_fp16();
  const Snapshot other = with_fp16("OtherMaker!!");
  constexpr int kStrict = 0x10000;
  const Case cases[] = {
      {"", best, 1, 9},
      {"AUTO", best, 2, 9},
      {"COMPATIBLE", best, 3, 2},
      {"SSE2", best, 4, 0},
      {"SSE3", best, 4, 0},
      {"SSSE3", best, 4, 0},
      {"SSE4_1", best, 7, 0},
      {"SSE4_2", best, 8, 5},
      {"AVX", best, 8, 5},
      {"AVX2", best, 10, 7},
      {"AVX512_MIC", best, 10, 7},
      {"AVX512", best, 12, 9},
      {"AVX512_MIC_E1", best, 10, 7},
      {"AVX512_E1", best, 14, 9},
      // Forms of the value.
      {"BRANCH=AVX2", best, 10, 7},
      {"BRANCH=AVX2,STRICT", best, 10 | kStrict, 7},
      {"BRANCH=", best, 2, 9},
      {"BRANCH=BRANCH=AVX2", best, 2, 9},
      {"branch=AVX2", best, 2, 9},
      {"avx2", best, 2, 9},
      {"AVX2 ", best, 2, 9},
      {" AVX2", best, 2, 9},
      {"AVX512_E2", best, 2, 9},
      {"OFF", best, 2, 9},
      {"AVX2,STRICT", best, 10 | kStrict, 7},
      {"AVX2, STRICT", best, 10 | kStrict, 7},
      {"AVX2,,STRICT", best, 10 | kStrict, 7},
      {"AVX2, , STRICT", best, 10 | kStrict, 7},
      {"AVX2 ,STRICT", best, 2, 9},
      {"AVX2 STRICT", best, 2, 9},
      {"AVX2STRICT", best, 2, 9},
      {"AVX2,STRICT ", best, 2, 9},
      {"AVX2,strict", best, 2, 9},
      {"AVX2,STRICT,STRICT", best, 2, 9},
      {"AUTO,STRICT", best, 2 | kStrict, 9},
      {"STRICT", best, 2, 9},
      {" STRICT", best, 2, 9},
      {",STRICT", best, 2, 9},
      // Ceilings.
      {"AVX512_E1", with_vnni(), 14, 9},
      {"AVX512_E1", with_avx512(), 2, 9},
      {"AVX512_E1,STRICT", with_avx512(), 2 | kStrict, 9},
      {"AVX512", with_avx512(), 12, 9},
      {"AVX512", with_avx2(), 2, 7},
      {"AVX512", with_avx_vnni(with_avx2()), 2, 7},
      {"AVX2", with_avx2(), 10, 7},
      {"AVX2", with_avx(), 2, 5},
      {"AVX2,STRICT", with_avx(), 2 | kStrict, 5},
      {"AVX", with_sse42(), 8, 5},
      {"SSE4_2", with_sse3(), 2, 0},
      {"SSE4_1", with_sse3(), 2, 0},
      {"SSE2", with_sse3(), 4, 0},
      {"COMPATIBLE", with_sse3(), 3, 2},
      // Another vendor runs the common branches alone.
      {"COMPATIBLE", other, 3, 2},
      {"COMPATIBLE,STRICT", other, 3 | kStrict, 2},
      {"AUTO", other, 2, 0},
      {"SSE2", other, 2, 0},
      {"AVX2,STRICT", other, 2 | kStrict, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.value);
    const Outcome outcome = detect(c.snapshot, c.value);
    EXPECT_EQ(outcome.word, c.word);
    EXPECT_EQ(outcome.cpu_type, c.cpu_type);
    EXPECT_EQ(outcome.messages, Messages{});
  }
}

TEST(Detection, branch_check) {
  struct Case {
    int word, ceiling;
    bool tuned;
    int status;
    Messages messages;
  };
  const Case cases[] = {
      {0, 14, true, -2, {}},
      {1, 14, true, -2, {}},
      {15, 14, true, -2, {}},
      {0xFFFF, 14, true, -2, {}},
      {0x20002, 14, true, -3, {}},
      {-1, 14, true, -3, {}},
      {0x1000A, 14, true, 0, {}},
      {0x2000F, 2, false, -3, {}},
      {2, 2, false, 0, {}},
      {3, 2, false, 0, {}},
      {4, 2, false, -3, {}},
      {6, 2, false, -3, {}},
      {15, 2, false, -2, {}},
      {6, 4, true, -3, {}},
      {6, 8, true, 0, {kMessageSsse3Deprecated}},
      {9, 8, true, -3, {}},
      {9, 10, true, 0, {kMessageAvxDeprecated}},
      {5, 8, true, 0, {}},
      {11, 12, true, -3, {}},
      {12, 12, true, 0, {}},
      {13, 12, true, -3, {}},
      {12, 13, true, -3, {}},
      {11, 14, true, -3, {}},
      {12, 14, true, 0, {}},
      {13, 14, true, -3, {}},
      {14, 14, true, 0, {}},
      {14, 12, true, -3, {}},
  };
  for (const Case& c : cases) {
    DetectionReport report;
    EXPECT_EQ(check_branch(c.word, c.ceiling, c.tuned, report), c.status)
        << c.word << " at " << c.ceiling;
    EXPECT_EQ(messages_of(report), c.messages) << c.word << " at " << c.ceiling;
  }
}

TEST(Detection, level_tables) {
  constexpr int kFolded[17] = {0, 1, 2, 3, 4, 5, 5, 7, 5, 7, 7, 11, 7, 13, 7, 5, 7};
  constexpr int kCeiling[17] = {4, 4, 7, 8, 8, 10, 4, 12, 4, 14, 14, 4, 14, 4, 14, 10, 14};
  constexpr int kTypes[8] = {0, 2, 4, 5, 6, 7, 8, 9};
  const std::set<int> empty{2, 4, 6, 8, 11, 13};
  const Features sse42 = features_of(with_sse42());
  for (int level = 0; level < 17; ++level) {
    EXPECT_EQ(fold_level(level), kFolded[level]) << level;
    EXPECT_EQ(branch_ceiling(level, sse42), kCeiling[level]) << level;
    EXPECT_EQ(level_supported(level), !empty.contains(level)) << level;
  }
  EXPECT_EQ(branch_ceiling(2, features_of(with_sse3())), 4);
  EXPECT_FALSE(level_supported(-1));
  EXPECT_FALSE(level_supported(17));
  for (int level = 0; level < 8; ++level) EXPECT_EQ(cpu_type_of_level(level), kTypes[level]);

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
  struct Case {
    const char *cbwr, *enable;
    Snapshot snapshot;
    int word, cpu_type, raw_level;  // raw level -1: the branch decided
    Messages messages;
  };
  const Snapshot best = with_fp16();
  const Case cases[] = {
      {"AVX2", "SSE4_2", best, 10, 7, -1, {}},
      {"AVX2", "AVX2", best, 10, 7, -1, {}},
      {"SSE4_2", "AVX512", best, 8, 5, -1, {}},
      {"AVX2", "AVX512", best, 10, 9, 7, {}},
      {"AVX2", "AVX512", with_avx2(), 10, 7, 5, {}},
      {"AVX512", "AVX512", best, 12, 9, 7, {}},
      {"AVX512_E1", "AVX512_E2", best, 14, 9, -1, {}},
      {"AVX2", "AVX", best, 10, 7, -1, {kMessageAvxDeprecated}},
      {"COMPATIBLE", "AVX2", best, 3, 2, -1, {}},
      {"AUTO", "AVX2", best, 2, 7, 5, {}},
      // The check sees the whole processor, the fall-back the request.
      {"AVX512", "AVX2", best, 12, 9, -1, {}},
      {"AVX512", "SSE4_2", with_avx2(), 2, 5, 3, {}},
      {"nonsense", "AVX2", best, 2, 7, 5, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.cbwr) + " with " + c.enable);
    const Outcome outcome = detect(c.snapshot, c.cbwr, c.enable);
    EXPECT_EQ(outcome.word, c.word);
    EXPECT_EQ(outcome.cpu_type, c.cpu_type);
    EXPECT_EQ(outcome.raw_level, c.raw_level);
    EXPECT_EQ(outcome.messages, c.messages);
  }
}

// Branches that no name gives, and requests that no literal gives.
TEST(Detection, decision_outside_the_names) {
  const Features features = features_of(with_fp16());
  for (int branch : {11, 13, 15}) {
    DetectionReport report;
    EXPECT_EQ(decide_cpu_type(branch, {}, features, report).cpu_type, 9);
    EXPECT_EQ(messages_of(report), Messages{kMessageBadReproducibility});
  }
  const auto type = [](int branch, int code, const Snapshot& s) {
    DetectionReport report;
    return decide_cpu_type(branch, {.code = code}, features_of(s), report).cpu_type;
  };
  EXPECT_EQ(type(10, 3, with_fp16()), 9);
  EXPECT_EQ(type(12, 5, with_avx512()), 9);
  EXPECT_EQ(type(8, 3, with_fp16()), 5);
  EXPECT_EQ(type(10, 2, with_fp16()), 7);
  EXPECT_EQ(type(14, 9, with_avx2()), 9);  // 9 is not below the folded target
}

TEST(Detection, levels_for_the_branches) {
  EXPECT_EQ(detect(with_fp16(), "COMPATIBLE").level, 0);  // level 1 is kept as 0
  EXPECT_EQ(detect(with_fp16(), "SSE4_1").level, 0);
  EXPECT_EQ(detect(with_fp16(), "AVX512_E1").level, 7);
  EXPECT_NE(detect(with_fp16(), "AVX2").description, detect(with_fp16()).description);
  EXPECT_EQ(detect(with_fp16(), "AVX2").description, detect(with_avx2()).description);
}

TEST(Detection, class_override) {
  struct Case {
    const char* value;
    int number;
  };
  for (const Case& c : {Case{"", -1}, {"0", 0},    {"4", 4},
                        {"5", 5},     {"7", 7},    {"8", -1},
                        {"9", 9},     {"03", 3},   {"08", -1},
                        {"09", 9},    {"10", -1},  {"12", -1},
                        {"7x", -1},   {"7 ", -1},  {"123", 1},
                        {"3xyz", 3},  {"800", -1}, {"x7", -1},
                        {" 7", -1},   {"-1", -1},  {"5 is fine here", 5}}) {
    EXPECT_EQ(parse_class_override(c.value), c.number) << '"' << c.value << '"';
  }
}

}  // namespace
}  // namespace orba::services
