#include "vm/frame/parameter_reporter.h"

#include <stddef.h>

#include <algorithm>
#include <atomic>

#include "serv/bounded_string.h"
#include "serv/messages.h"
#include "serv/spin_lock.h"

namespace orba::vm {
namespace {

constinit std::atomic<ParameterReporter> reporter_slot{nullptr};
constinit serv::SpinLock reporter_lock;

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
  serv::SpinGuard guard(reporter_lock);
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
  serv::copy_string(shown, sizeof shown, name,
                    static_cast<size_t>(std::min(name_length, kNameCharacters)));

  constexpr auto kKind = serv::MessageKind::error;
  serv::print_message(kKind, serv::kMessageNewline, 0);
  switch (const int32_t number = *position) {
    case kPositionInsufficientWorkspace:
      serv::print_message(kKind, serv::kMessageInsufficientWorkspace, 1, shown);
      break;
    case kPositionIncompatibleOptional:
      serv::print_message(kKind, serv::kMessageIncompatibleOptional, 1, shown);
      break;
    case kPositionNoWorkMemory:
      serv::print_message(kKind, serv::kMessageNoWorkMemory, 1, shown);
      break;
    case kPositionCoprocessor:
      serv::print_message(kKind, serv::kMessageCoprocessor, 1, shown);
      break;
    default:
      if (number > 0) {
        serv::print_message(kKind, serv::kMessageBadParameter, 2, number, shown);
      } else {
        // Negated without a sign: the smallest number has no positive counterpart.
        const auto condition = static_cast<int32_t>(0u - static_cast<uint32_t>(number));
        serv::print_message(kKind, serv::kMessageInternalCondition, 2, condition, shown);
      }
  }
}

}  // namespace orba::vm
