#include "vs/frame/entry.h"

#include <stdarg.h>

#include "serv/bounded_string.h"
#include "serv/platform/platform.h"
#include "vm/frame/parameter_reporter.h"

namespace orba::vs {

int32_t refuse(const char* name, int32_t position, int32_t status) noexcept {
  constexpr size_t kLongestName = 50;
  vm::install_default_reporter();
  vm::report_parameter(name, &position,
                       static_cast<int32_t>(serv::string_length(name, kLongestName)));
  return status;
}

void format_call(char* text, size_t size, const char* format, ...) noexcept {
  va_list arguments;
  va_start(arguments, format);
  serv::platform::format_text(text, size, format, arguments);
  va_end(arguments);
}

}  // namespace orba::vs
