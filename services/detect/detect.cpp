#include "services/detect/detect.h"

#include <stddef.h>

#include "services/detect/detection.h"
#include "services/environment.h"
#include "services/messages.h"
#include "services/spin_lock.h"

namespace orba::services {

// None of the words orders other memory: each is a result in itself, so relaxed accesses do.
constinit std::atomic<int> kam_class_word{-1};

namespace {

constexpr auto kRelaxed = std::memory_order_relaxed;

constinit std::atomic<int> rau_cpu_type_word{-1};
constinit std::atomic<int> cpu_type_word{-1};
constinit std::atomic<int> level_word{-1};
constinit std::atomic<int> raw_level_word{-1};
constinit std::atomic<int> reproducibility_word{-1};
constinit std::atomic<const char*> description_word{"Tessel(R) Architecture processors"};

// Guards what follows, the writing of the words above, and the reading of the two controls.
constinit SpinLock detection_lock;
constinit Features features;
constinit InstructionRequest request;

template <size_t Size>
std::string_view environment_value(const char* name, char (&buffer)[Size]) noexcept {
  const int length = read_environment(name, buffer, Size);
  // A value that does not fit counts as none.
  return length > 0 ? std::string_view(buffer, static_cast<size_t>(length)) : std::string_view();
}

// The functions named ..._locked are called under the lock.
void fill_features_locked() noexcept {
  if (features.words[0] == 0) {
    features = features_of(take_snapshot());
  }
}

int reproducibility_locked(DetectionReport& report) noexcept {
  const int known = reproducibility_word.load(kRelaxed);
  if (known != -1) {
    return known;
  }
  char buffer[128];
  const Reproducibility result =
      read_reproducibility(environment_value("ORBA_CBWR", buffer), features, request.flags, report);
  if (result.raw_level != -1) {
    raw_level_word.store(result.raw_level, kRelaxed);
  }
  reproducibility_word.store(result.word, kRelaxed);
  return result.word;
}

void deliver(const DetectionReport& report) noexcept {
  for (int i = 0; i < report.count; ++i) {
    print_message(MessageKind::error, report.messages[i], 0);
  }
  if (report.unsupported) {
    terminate(1);
  }
}

bool decided() noexcept {
  return level_word.load(kRelaxed) != -1 && cpu_type_word.load(kRelaxed) != -1;
}

void decide() noexcept {
  DetectionReport report;
  {
    SpinGuard guard(detection_lock);
    if (decided()) {
      return;
    }
    fill_features_locked();
    // The branch is checked against the processor before a request can narrow it.
    const int branch = reproducibility_locked(report) & 0xFFFF;
    char buffer[30];
    request = read_instruction_request(environment_value("ORBA_ENABLE_INSTRUCTIONS", buffer),
                                       features, report);
    const Decision decision = decide_cpu_type(branch, request, features, report);
    if (decision.raw_level != -1) {
      raw_level_word.store(decision.raw_level, kRelaxed);
    }
    description_word.store(decision.description, kRelaxed);
    level_word.store(decision.level, kRelaxed);
    cpu_type_word.store(decision.cpu_type, kRelaxed);
  }
  deliver(report);
}

constexpr auto kOverrideName = scramble("ORBA_FORCE_KERNELCLASS");

// -1 without an override.
int class_override() noexcept {
  char buffer[32];
  const int length =
      read_scrambled_environment(kOverrideName.data(), kOverrideName.size(), buffer, sizeof buffer);
  return length > 0 ? parse_class_override({buffer, static_cast<size_t>(length)}) : -1;
}

}  // namespace

int cpu_type() noexcept {
  if (!decided()) decide();
  return cpu_type_word.load(kRelaxed);
}

int cpu_level() noexcept {
  if (!decided()) decide();
  return level_word.load(kRelaxed);
}

int raw_level(int detect) noexcept {
  if (detect == 1) {
    DetectionReport report;
    {
      SpinGuard guard(detection_lock);
      fill_features_locked();
      raw_level_word.store(detect_raw_level(features, request.flags, report), kRelaxed);
    }
    deliver(report);
  }
  return raw_level_word.load(kRelaxed);
}

int reproducibility(int what) noexcept {
  if (what != 1 && what != -1) {
    return -2;
  }
  if (reproducibility_word.load(kRelaxed) == -1) {
    DetectionReport report;
    {
      SpinGuard guard(detection_lock);
      fill_features_locked();
      reproducibility_locked(report);
    }
    deliver(report);
  }
  const int word = reproducibility_word.load(kRelaxed);
  return what == 1 ? word & 0xFFFF : word;
}

const char* processor_description() noexcept { return description_word.load(kRelaxed); }

// Unlocked: whoever else decides at the same time stores the same class.
int detect_kam_class() noexcept {
  int number = class_override();
  if (number == -1) number = kam_class_of(cpu_type());
  kam_class_word.store(number, kRelaxed);
  return number;
}

int rau_cpu_type() noexcept {
  int number = rau_cpu_type_word.load(kRelaxed);
  if (number == -1) {
    number = class_override();
    if (number == -1) number = cpu_type();
    rau_cpu_type_word.store(number, kRelaxed);
  }
  return number;
}

int rau_class(int cpu_type) noexcept { return rau_class_of(cpu_type); }

}  // namespace orba::services
