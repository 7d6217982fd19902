#include "statistics/frame/entry.h"

#include <stdarg.h>

#include "services/bounded_string.h"
#include "services/parameter_reporter.h"
#include "services/platform/platform.h"

namespace orba::statistics {

int32_t refuse(const char* name, int32_t position, int32_t status) noexcept {
  constexpr size_t kLongestName = 50;
  services::install_default_reporter();
  services::report_parameter(name, &position,
                             static_cast<int32_t>(services::string_length(name, kLongestName)));
  return status;
}

void format_call(char* text, size_t size, const char* format, ...) noexcept {
  va_list arguments;
  va_start(arguments, format);
  services::platform::format_text(text, size, format, arguments);
  va_end(arguments);
}

}  // namespace orba::statistics
