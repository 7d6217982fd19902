// What the library reports about faults in arguments, kept instead of printed.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace orba::test {

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
