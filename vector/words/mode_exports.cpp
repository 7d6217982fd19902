// The exported mode family.
#include <utility>

#include "include/orba_kam.h"
#include "vector/words/thread_words.h"

#define ORBA_EXPORT extern "C" __attribute__((visibility("default")))
#define ORBA_EXPORT_ALIAS(target) __attribute__((alias(#target), visibility("default")))

namespace {

using orba::vector::thread_words;

uint32_t set_mode(uint32_t request) {
  const uint32_t old = orba::vector::mode();
  thread_words().mode = orba::vector::merge_mode(old, request);
  return old;
}

int32_t set_status(int32_t status) { return std::exchange(thread_words().status, status); }

// The callback's mode bit follows the pointer through the ordinary merge. So clearing it from an
// error field that holds nothing else leaves the field as it is.
KamErrorCallBack set_callback(KamErrorCallBack callback) {
  constexpr uint32_t kBit = KAM_ERRMODE_CALLBACK;
  const uint32_t mode = orba::vector::mode();
  set_mode(callback != nullptr ? mode | kBit : mode & ~kBit);
  return std::exchange(thread_words().callback, callback);
}

}  // namespace

ORBA_EXPORT uint32_t kamSetMode(uint32_t mode) { return set_mode(mode); }
ORBA_EXPORT uint32_t kamsetmode(const uint32_t* mode) { return set_mode(*mode); }
ORBA_EXPORT uint32_t kamGetMode(void) { return orba::vector::mode(); }

ORBA_EXPORT int32_t kamSetErrStatus(int32_t status) { return set_status(status); }
ORBA_EXPORT int32_t kamseterrstatus(const int32_t* status) { return set_status(*status); }
ORBA_EXPORT int32_t kamGetErrStatus(void) { return orba::vector::status(); }
ORBA_EXPORT int32_t kamClearErrStatus(void) { return set_status(KAM_STATUS_OK); }

ORBA_EXPORT KamErrorCallBack kamSetErrorCallBack(KamErrorCallBack callback) {
  return set_callback(callback);
}
ORBA_EXPORT KamErrorCallBack kamGetErrorCallBack(void) { return orba::vector::callback(); }
ORBA_EXPORT KamErrorCallBack kamClearErrorCallBack(void) { return set_callback(nullptr); }

// The lower-case names that take no value by pointer are the same entries.
extern "C" {
uint32_t kamgetmode(void) ORBA_EXPORT_ALIAS(kamGetMode);
int32_t kamgeterrstatus(void) ORBA_EXPORT_ALIAS(kamGetErrStatus);
int32_t kamclearerrstatus(void) ORBA_EXPORT_ALIAS(kamClearErrStatus);
KamErrorCallBack kamseterrorcallback(KamErrorCallBack) ORBA_EXPORT_ALIAS(kamSetErrorCallBack);
KamErrorCallBack kamgeterrorcallback(void) ORBA_EXPORT_ALIAS(kamGetErrorCallBack);
KamErrorCallBack kamclearerrorcallback(void) ORBA_EXPORT_ALIAS(kamClearErrorCallBack);
}
