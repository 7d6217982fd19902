// Measures every kernel of a function against exact values.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/accuracy/limits.h"
#include "tests/support/kernel_subjects.h"

namespace orba::test {

// The largest error seen, and where.
struct Peak {
  double error = 0;
  double a[2] = {}, b[2] = {}, got[2] = {}, wanted[2] = {};
};

struct Outcome {
  Peak ulp;       // units in the last place
  Peak relative;  // relative error
  int64_t wrong_reports = 0;
  std::string first_wrong_report;

  const Peak& peak(uint32_t accuracy) const { return accuracy == KAM_EP ? relative : ulp; }
};

// Largest error in each slice of the plot's axis (-1 where nothing was sampled): units for HA and
// LA, relative error for EP.
struct Profile {
  std::vector<double> ha, la, ep;
};

struct Plan {
  int64_t points;
  bool exhaustive = false;  // all bit patterns, single precision of one input, newest class
  bool profile = false;
};

struct Measurement {
  int64_t points = 0;  // per kernel
  bool exhaustive = false;
  Outcome outcome[vector::kRowSlots];  // of the live classes' slots
  Profile profile;                     // of the newest class

  const Outcome& at(int kernel_class, uint32_t accuracy) const {
    return outcome[vector::row_index(kernel_class, accuracy)];
  }
};

inline constexpr int kProfileSlices = 240;

Measurement measure(const Subject& subject, const Limits& limits, const Oracle& oracle,
                    const Plan& plan);

// "a=0x1.8p+0 got=... wanted=..." of a peak.
std::string describe(const Subject& subject, const Peak& peak);
// The arguments alone, in hexadecimal.
std::string arguments(const Subject& subject, const Peak& peak);

}  // namespace orba::test
