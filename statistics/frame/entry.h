// What every exported entry of the statistics layer is made of: its two forms, the report of a
// fault, the trace.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "services/timer.h"
#include "services/verbose.h"

namespace orba::statistics {

// Reports a fault in argument `position` of the entry `name` and hands `status` on.
int32_t refuse(const char* name, int32_t position, int32_t status) noexcept;

// Text of a traced call, cut at `size`, by the rules of the C locale.
void format_call(char* text, size_t size, const char* format, ...) noexcept;

// Makes the call; with tracing on, also writes its line: the format is the entry's own and begins
// with its name.
template <class Call, class... Args>
[[gnu::noinline]] int32_t trace(Call call, const char* format, const char* name,
                                Args... args) noexcept {
  const double start = services::timer_seconds();
  const int32_t status = call();
  const double seconds = services::timer_seconds() - start;
  char text[256];
  format_call(text, sizeof text, format, name, args...);
  constexpr int kInterface32 = 1;  // 32-bit integers
  services::emit_verbose(kInterface32, text, seconds);
  return status;
}

template <class Call, class... Args>
inline int32_t traced(Call call, const char* format, const char* name, Args... args) noexcept {
  if (services::verbose_level() != 0) [[unlikely]]
    return trace(call, format, name, args...);
  return call();
}

}  // namespace orba::statistics

// ---- An entry in its two forms ----
//
//   ORBA_ENTRY(rauNewStream, raunewstream, P(StreamState**, stream), V(int32_t, brng)) { body }
//
// defines both exported functions; the form in lower case takes by address what is marked V (a
// scalar) or H (a handle; a null address counts as a null handle), and P alike in both.
#define ORBA_BY_VALUE_P(type, name) type name
#define ORBA_BY_VALUE_V(type, name) type name
#define ORBA_BY_VALUE_H(type, name) type name
#define ORBA_BY_ADDRESS_P(type, name) type name
#define ORBA_BY_ADDRESS_V(type, name) type const* name
#define ORBA_BY_ADDRESS_H(type, name) type const* name
#define ORBA_NAME_P(type, name) name
#define ORBA_NAME_V(type, name) name
#define ORBA_NAME_H(type, name) name
#define ORBA_POINTEE_P(type, name) name
#define ORBA_POINTEE_V(type, name) *name
#define ORBA_POINTEE_H(type, name) (name != nullptr ? *name : nullptr)

// Applies a prefix to each argument of a list: ORBA_EACH(ORBA_NAME_, P(a, b), V(c, d)) gives
// ORBA_NAME_P(a, b), ORBA_NAME_V(c, d).
#define ORBA_AGAIN2(...) ORBA_AGAIN1(ORBA_AGAIN1(ORBA_AGAIN1(__VA_ARGS__)))
#define ORBA_AGAIN1(...) ORBA_AGAIN0(ORBA_AGAIN0(ORBA_AGAIN0(__VA_ARGS__)))
#define ORBA_AGAIN0(...) __VA_ARGS__
#define ORBA_EACH(prefix, ...) __VA_OPT__(ORBA_AGAIN2(ORBA_EACH_STEP(prefix, __VA_ARGS__)))
#define ORBA_EACH_STEP(prefix, argument, ...) \
  prefix##argument __VA_OPT__(, ORBA_EACH_LATER ORBA_PARENTHESES(prefix, __VA_ARGS__))
#define ORBA_EACH_LATER() ORBA_EACH_STEP
#define ORBA_PARENTHESES ()

#define ORBA_EXPORTED extern "C" __attribute__((visibility("default")))
#define ORBA_ENTRY(Name, name, ...)                                      \
  static int32_t Name##_entry(ORBA_EACH(ORBA_BY_VALUE_, __VA_ARGS__));   \
  ORBA_EXPORTED int32_t Name(ORBA_EACH(ORBA_BY_VALUE_, __VA_ARGS__)) {   \
    return Name##_entry(ORBA_EACH(ORBA_NAME_, __VA_ARGS__));             \
  }                                                                      \
  ORBA_EXPORTED int32_t name(ORBA_EACH(ORBA_BY_ADDRESS_, __VA_ARGS__)) { \
    return Name##_entry(ORBA_EACH(ORBA_POINTEE_, __VA_ARGS__));          \
  }                                                                      \
  static int32_t Name##_entry(ORBA_EACH(ORBA_BY_VALUE_, __VA_ARGS__))
