// A generator of the tests' own, which gives what a test tells it to; and what the library reports
// about faults in arguments, kept instead of printed.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "include/orba_rau.h"

namespace orba::test {

struct Script {
  std::vector<double> reals = {0.5};        // in turn; scaled to no interval
  int32_t calls_until_failure = INT32_MAX;  // of the drawing entries; then -77
  std::vector<int32_t> requests;            // lengths that the drawing entries were asked for
};

// The script of every stream of the generator, and its identifier.
Script& script();
int32_t scripted_brng();

// A record of a generator that does nothing but succeed.
BrngProperties idle_properties();

struct Report {
  std::string name;
  int32_t position;
  bool operator==(const Report&) const = default;
};
inline std::ostream& operator<<(std::ostream& stream, const Report& report) {
  return stream << report.name << ", argument " << report.position;
}

// The reports that this thread's calls made since the last take.
std::vector<Report> take_reports();

}  // namespace orba::test
