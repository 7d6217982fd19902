// The exported mode family.
#include <utility>

#include "include/orba_kam.h"
#include "vector/words/thread_words.h"

#define ORBA_EXPORT extern "C" __attribute__((visibility("default")))
#define ORBA_EXPORT_ALIAS(target) __attribute__((alias(#target), visibility("default")))

namespace {

using orba::vector::set_callback;
using orba::vector::set_mode;

int32_t exchange_status(int32_t status) {
  return std::exchange(orba::vector::thread_words().status, status);
}

}  // namespace

ORBA_EXPORT uint32_t kamSetMode(uint32_t mode) { return set_mode(mode); }
ORBA_EXPORT uint32_t kamsetmode(const uint32_t* mode) { return set_mode(*mode); }
ORBA_EXPORT uint32_t kamGetMode(void) { return orba::vector::mode(); }

ORBA_EXPORT int32_t kamSetErrStatus(int32_t status) { return exchange_status(status); }
ORBA_EXPORT int32_t kamseterrstatus(const int32_t* status) { return exchange_status(*status); }
ORBA_EXPORT int32_t kamGetErrStatus(void) { return orba::vector::status(); }
ORBA_EXPORT int32_t kamClearErrStatus(void) { return exchange_status(KAM_STATUS_OK); }

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
