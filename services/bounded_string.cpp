#include "services/bounded_string.h"

#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <atomic>

namespace orba::services {
namespace {

constinit std::atomic<ConstraintHandler> string_handler{nullptr};
constinit std::atomic<ConstraintHandler> bytes_handler{nullptr};

int report(const std::atomic<ConstraintHandler>& slot, const char* message, int code) noexcept {
  if (const ConstraintHandler handler = slot.load(std::memory_order_acquire)) {
    handler(message, code);
  }
  return code;
}

bool overlap(const void* a, size_t a_size, const void* b, size_t b_size) noexcept {
  const auto a_start = reinterpret_cast<uintptr_t>(a);
  const auto b_start = reinterpret_cast<uintptr_t>(b);
  return a_start < b_start + b_size && b_start < a_start + a_size;
}

// What the handler is told by the two routines that write strings.
struct StringFaultTexts {
  const char* dest_null;
  const char* size_zero;
  const char* size_too_large;
  const char* source_null;
  const char* count_too_large;
  const char* unterminated;
  const char* overlap;
  const char* no_space;
};
constexpr StringFaultTexts kCopyTexts = {
    "strncpy_s: dest is null",        "strncpy_s: dmax is 0",
    "strncpy_s: dmax exceeds max",    "strncpy_s: src is null",
    "strncpy_s: slen exceeds max",    "strncpy_s: dest unterminated",
    "strncpy_s: overlapping objects", "strncpy_s: not enough space for src"};
constexpr StringFaultTexts kConcatenateTexts = {
    "strncat_s: dest is null",        "strncat_s: dmax is 0",
    "strncat_s: dmax exceeds max",    "strncat_s: src is null",
    "strncat_s: slen exceeds max",    "strncat_s: dest unterminated",
    "strncat_s: overlapping objects", "strncat_s: not enough space for src"};

// Writes the source behind what `dest` holds; a copy is an appending to an emptied destination.
int write_string(char* dest, size_t size, const char* source, size_t count, bool append,
                 const StringFaultTexts& texts) noexcept {
  if (dest == nullptr) return report(string_handler, texts.dest_null, kStringNull);
  if (size == 0) return report(string_handler, texts.size_zero, kStringZeroSize);
  const auto fault = [dest](const char* message, int code) {
    *dest = '\0';
    return report(string_handler, message, code);
  };
  if (size > kBoundedStringLimit) return fault(texts.size_too_large, kStringTooLong);
  if (source == nullptr) return fault(texts.source_null, kStringNull);
  if (count > kBoundedStringLimit) return fault(texts.count_too_large, kStringTooLong);

  const size_t used = append ? strnlen(dest, size) : 0;
  if (used == size) return fault(texts.unterminated, kStringUnterminated);
  const size_t room = size - used;  // with the NUL
  const size_t length = strnlen(source, std::min(count, room));
  if (overlap(dest, used + std::min(length + 1, room), source, length)) {
    return fault(texts.overlap, kStringOverlap);
  }
  if (length == room) return fault(texts.no_space, kStringNoSpace);
  memcpy(dest + used, source, length);
  dest[used + length] = '\0';
  return 0;
}

}  // namespace

int copy_string(char* dest, size_t size, const char* source, size_t count) noexcept {
  return write_string(dest, size, source, count, false, kCopyTexts);
}

int concatenate_string(char* dest, size_t size, const char* source, size_t count) noexcept {
  return write_string(dest, size, source, count, true, kConcatenateTexts);
}

size_t string_length(const char* text, size_t limit) noexcept {
  if (text == nullptr) {
    report(string_handler, "strnlen_s: str is null", kStringNull);
    return 0;
  }
  if (limit == 0) {
    report(string_handler, "strnlen_s: smax is 0", kStringZeroSize);
    return 0;
  }
  if (limit > kBoundedStringLimit) {
    report(string_handler, "strnlen_s: smax exceeds max", kStringTooLong);
    return 0;
  }
  return strnlen(text, limit);
}

int copy_bytes(void* dest, size_t size, const void* source, size_t count) noexcept {
  if (dest == nullptr) return report(bytes_handler, "memcpy_s: dest is NULL", kStringNull);
  if (size == 0) return report(bytes_handler, "memcpy_s: dmax is 0", kStringZeroSize);
  const auto fault = [dest](const char* message, int code) {
    *static_cast<unsigned char*>(dest) = 0;
    return report(bytes_handler, message, code);
  };
  if (size > kBoundedStringLimit) return fault("memcpy_s: dmax exceeds max", kStringTooLong);
  if (source == nullptr) return fault("memcpy_s: src is NULL", kStringNull);
  if (count == 0) return fault("memcpy_s: smax is 0", kStringZeroSize);
  if (count > size) return fault("memcpy_s: smax exceeds dmax", kStringTooLong);
  if (overlap(dest, count, source, count)) {
    return fault("memcpy_s: overlap undefined", kStringOverlap);
  }
  memcpy(dest, source, count);
  return 0;
}

void set_string_constraint_handler(ConstraintHandler handler) noexcept {
  string_handler.store(handler, std::memory_order_release);
}

void set_bytes_constraint_handler(ConstraintHandler handler) noexcept {
  bytes_handler.store(handler, std::memory_order_release);
}

}  // namespace orba::services
