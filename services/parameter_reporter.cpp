#include "services/parameter_reporter.h"

#include <stddef.h>

#include <algorithm>
#include <atomic>

#include "services/bounded_string.h"
#include "services/messages.h"

namespace orba::services {
namespace {

constinit std::atomic<ParameterReporter> reporter_slot{nullptr};

// Positions that stand for a condition instead of an argument's number.
enum SpecialPosition : int32_t {
  kPositionInsufficientWorkspace = 1000,
  kPositionIncompatibleOptional = 1001,
  kPositionNoWorkMemory = 1102,
  kPositionCoprocessor = 1225,
};

constexpr int32_t kNameCharacters = 20;  // shown of a function's name

}  // namespace

bool install_reporter(ParameterReporter reporter) noexcept {
  ParameterReporter none = nullptr;
  return reporter_slot.compare_exchange_strong(none, reporter, std::memory_order_acq_rel);
}

void install_default_reporter() noexcept { install_reporter(default_reporter); }

void report_parameter(const char* name, const int32_t* position, int32_t name_length) noexcept {
  if (name == nullptr || position == nullptr) return;
  const ParameterReporter reporter = reporter_slot.load(std::memory_order_acquire);
  (reporter != nullptr ? reporter : default_reporter)(name, position, name_length);
}

void default_reporter(const char* name, const int32_t* position, int32_t name_length) {
  if (name_length < 0) return;
  char shown[kNameCharacters + 2];
  copy_string(shown, sizeof shown, name,
              static_cast<size_t>(std::min(name_length, kNameCharacters)));

  constexpr auto kKind = MessageKind::error;
  print_message(kKind, kMessageNewline, 0);
  switch (const int32_t number = *position) {
    case kPositionInsufficientWorkspace:
      print_message(kKind, kMessageInsufficientWorkspace, 1, shown);
      break;
    case kPositionIncompatibleOptional:
      print_message(kKind, kMessageIncompatibleOptional, 1, shown);
      break;
    case kPositionNoWorkMemory:
      print_message(kKind, kMessageNoWorkMemory, 1, shown);
      break;
    case kPositionCoprocessor:
      print_message(kKind, kMessageCoprocessor, 1, shown);
      break;
    default:
      if (number > 0) {
        print_message(kKind, kMessageBadParameter, 2, number, shown);
      } else {
        // Negated without a sign: the smallest number has no positive counterpart.
        const auto condition = static_cast<int32_t>(0u - static_cast<uint32_t>(number));
        print_message(kKind, kMessageInternalCondition, 2, condition, shown);
      }
  }
}

}  // namespace orba::services
