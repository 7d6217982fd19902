#include "vector/words/thread_words.h"

#include <string.h>

#include <utility>

#include "services/environment.h"
#include "services/module.h"
#include "services/spin_lock.h"

namespace orba::vector {
namespace {

// The words of a thread when the code is linked into the executable.
thread_local constinit KamThreadWords static_words __attribute__((tls_model("initial-exec"))) = {};

constexpr uint32_t kDefaultAccuracy = KAM_HA;
constexpr uint32_t kDefaultMode = kDefaultAccuracy | KAM_ERRMODE_DEFAULT;

constexpr auto kModeVariable = services::scramble("ORBA_KAMMODE");
constinit services::SpinLock mode_variable_lock;

struct ModeKeyword {
  const char* text;
  uint32_t bits;
};
// The spelling of "DOUBLE_CONSISTEN" is the one that mode strings have always used.
constexpr ModeKeyword kModeKeywords[] = {
    {"LA", KAM_LA},
    {"HA", KAM_HA},
    {"EP", KAM_EP},
    {"DEFAULT_PRECISION", 0},
    {"FLOAT_CONSISTENT", 0x10},
    {"DOUBLE_CONSISTEN", 0x20},
    {"RESTORE", 0x30},
    {"ERRMODE_IGNORE", KAM_ERRMODE_IGNORE},
    {"ERRMODE_ERRNO", KAM_ERRMODE_ERRNO},
    {"ERRMODE_STDERR", KAM_ERRMODE_STDERR},
    {"ERRMODE_EXCEPT", KAM_ERRMODE_EXCEPT},
    {"ERRMODE_CALLBACK", KAM_ERRMODE_CALLBACK},
    {"ERRMODE_NOERR", KAM_ERRMODE_NOERR},
    {"ERRMODE_DEFAULT", KAM_ERRMODE_DEFAULT},
    {"TRAP_INVALID", KAM_TRAP_INVALID},
    {"TRAP_DIVBYZERO", KAM_TRAP_DIVBYZERO},
    {"TRAP_OVERFLOW", KAM_TRAP_OVERFLOW},
    {"TRAP_UNDERFLOW", KAM_TRAP_UNDERFLOW},
};

// Steps over `word` when `text` starts with it.
bool skip(const char*& text, const char* word) noexcept {
  const size_t length = strlen(word);
  if (strncmp(text, word, length) != 0) return false;
  text += length;
  return true;
}

bool parse_keyword(const char*& text, uint32_t& bits) noexcept {
  for (const ModeKeyword& keyword : kModeKeywords) {
    if (skip(text, keyword.text)) {
      bits |= keyword.bits;
      return true;
    }
  }
  return false;
}

// Bits 16 and 17 are kept for callers that store a setting of their own there.
constexpr uint32_t kReservedMask = 0x30000;
constexpr uint32_t kModeGroups[] = {KAM_ACCURACY_MASK, KAM_ERRMODE_MASK, KAM_DENORMALS_MASK,
                                    KAM_TRAP_MASK, kReservedMask};

}  // namespace

KamThreadWords* make_thread_words() noexcept {
  if (services::platform::loaded_as_module()) {
    void* block = services::make_thread_block(sizeof(KamThreadWords));
    if (block != nullptr) return static_cast<KamThreadWords*>(block);
    return &static_words;  // an exit handler chose to go on without memory
  }
  services::platform::thread_slot = &static_words;
  return &static_words;
}

uint32_t initialise_mode(KamThreadWords& words) noexcept {
  char text[256];
  int length;
  {
    services::SpinGuard guard(mode_variable_lock);
    length = services::read_scrambled_environment(
        kModeVariable.data(), static_cast<int>(kModeVariable.size()), text, sizeof text);
  }
  uint32_t value = kDefaultMode;
  if (length > 0 && parse_mode(text, &value)) {
    if ((value & KAM_ACCURACY_MASK) == 0) value |= kDefaultAccuracy;
    if ((value & KAM_ERRMODE_MASK) == 0) value |= KAM_ERRMODE_DEFAULT;
  }
  words.mode = value;
  return value;
}

uint32_t merge_mode(uint32_t old, uint32_t request) noexcept {
  for (const uint32_t group : kModeGroups) {
    if ((request & group) != 0) old = (old & ~group) | (request & group);
  }
  return old;
}

uint32_t set_mode(uint32_t request) noexcept {
  const uint32_t old = mode();
  thread_words().mode = merge_mode(old, request);
  return old;
}

KamErrorCallBack set_callback(KamErrorCallBack callback) noexcept {
  constexpr uint32_t kBit = KAM_ERRMODE_CALLBACK;
  const uint32_t old = mode();
  set_mode(callback != nullptr ? old | kBit : old & ~kBit);
  return std::exchange(thread_words().callback, callback);
}

bool parse_mode(const char* text, uint32_t* value) noexcept {
  uint32_t bits = 0;
  do {
    if (!skip(text, "KAM_") || !parse_keyword(text, bits)) return false;
  } while (skip(text, ","));
  if (*text != '\0') return false;
  *value = bits;
  return true;
}

}  // namespace orba::vector
