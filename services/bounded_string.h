// String and byte routines that never write past the destination. Each fault empties the
// destination (its first byte becomes 0, if it has one), goes to the constraint handler when one is
// set, and gives a code other than 0.
#pragma once

#include <stddef.h>

namespace orba::services {

// No size or count of these routines may be larger.
inline constexpr size_t kBoundedStringLimit = 4096;

enum BoundedStringFault : int {
  kStringNull = 400,
  kStringZeroSize = 401,
  kStringTooLong = 403,
  kStringOverlap = 404,
  kStringNoSpace = 406,
  kStringUnterminated = 407,
};

// Copies, or appends to the string in `dest`, the string at `source`, at most `count` characters of
// it. A count of 0 copies nothing.
int copy_string(char* dest, size_t size, const char* source, size_t count) noexcept;
int concatenate_string(char* dest, size_t size, const char* source, size_t count) noexcept;

// Length of a string that ends within `limit` bytes, otherwise `limit`; 0 after a fault.
size_t string_length(const char* text, size_t limit) noexcept;

// Copies `count` bytes; a count of 0 is a fault.
int copy_bytes(void* dest, size_t size, const void* source, size_t count) noexcept;

// The message names routine and fault ("strncpy_s: dest is null"). Both slots start empty.
using ConstraintHandler = void (*)(const char* message, int code);
void set_string_constraint_handler(ConstraintHandler handler) noexcept;
void set_bytes_constraint_handler(ConstraintHandler handler) noexcept;

}  // namespace orba::services
