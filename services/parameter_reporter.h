// Faults in arguments: one process-wide reporter, by default a text on standard output.
#pragma once

#include <stdint.h>

namespace orba::services {

using ParameterReporter = void (*)(const char* name, const int32_t* position, int32_t name_length);

// Reports through the reporter in use. Does nothing when a pointer is null. Positions of 1000 and
// above have texts of their own, positions of 0 or less are internal conditions.
void report_parameter(const char* name, const int32_t* position, int32_t name_length) noexcept;

// Installs the default reporter if none is installed yet.
void install_default_reporter() noexcept;

// Installs `reporter` if the slot is still empty; tells whether it did.
bool install_reporter(ParameterReporter reporter) noexcept;

// The prints of the default reporter.
void default_reporter(const char* name, const int32_t* position, int32_t name_length);

}  // namespace orba::services
