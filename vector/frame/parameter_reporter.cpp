#include "vector/frame/parameter_reporter.h"

#include <stddef.h>

#include <algorithm>
#include <atomic>

#include "services/bounded_string.h"
#include "services/messages.h"
#include "services/spin_lock.h"

namespace orba::vector {
namespace {

constinit std::atomic<ParameterReporter> reporter_slot{nullptr};
constinit services::SpinLock reporter_lock;

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
  if (reporter_slot.load(std::memory_order_acquire) != nullptr) return false;
  services::SpinGuard guard(reporter_lock);
  if (reporter_slot.load(std::memory_order_relaxed) != nullptr) return false;
  reporter_slot.store(reporter, std::memory_order_release);
  return true;
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
  services::copy_string(shown, sizeof shown, name,
                        static_cast<size_t>(std::min(name_length, kNameCharacters)));

  constexpr auto kKind = services::MessageKind::error;
  services::print_message(kKind, services::kMessageNewline, 0);
  switch (const int32_t number = *position) {
    case kPositionInsufficientWorkspace:
      services::print_message(kKind, services::kMessageInsufficientWorkspace, 1, shown);
      break;
    case kPositionIncompatibleOptional:
      services::print_message(kKind, services::kMessageIncompatibleOptional, 1, shown);
      break;
    case kPositionNoWorkMemory:
      services::print_message(kKind, services::kMessageNoWorkMemory, 1, shown);
      break;
    case kPositionCoprocessor:
      services::print_message(kKind, services::kMessageCoprocessor, 1, shown);
      break;
    default:
      if (number > 0) {
        services::print_message(kKind, services::kMessageBadParameter, 2, number, shown);
      } else {
        // Negated without a sign: the smallest number has no positive counterpart.
        const auto condition = static_cast<int32_t>(0u - static_cast<uint32_t>(number));
        services::print_message(kKind, services::kMessageInternalCondition, 2, condition, shown);
      }
  }
}

}  // namespace orba::vector
