// Measures every kernel of a function, and the callouts behind them, against exact values.
//
// Each is measured twice. With denormals kept every result is held to the limit. With denormals
// flushed the exact value is that of the arguments with denormal ones as zeros of their sign; a
// result is held to the limit too, but where a value within the limit of the exact one is denormal
// a zero (of real functions: of the right sign) is as good, whatever the control state would have
// made of it. Reports are those that the flushed arguments call for.
#pragma once

#include <array>
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

// One kernel at one accuracy on the classes that share it, or the callout of one class, which is
// held to the limits of HA.
struct Measured {
  Cell cell;
  bool callout;
  Outcome kept, flushed;

  std::string name() const { return (callout ? "callout, " : "") + cell.name(); }
};

// Largest error in each slice of a plot's axis (-1 where nothing was sampled): units for HA and LA,
// relative error for EP.
struct Profile {
  std::vector<double> ha, la, ep;

  std::vector<double>& of(uint32_t accuracy) {
    return accuracy == KAM_HA ? ha : accuracy == KAM_LA ? la : ep;
  }
};

struct Measurement {
  int64_t points = 0;  // per kernel
  bool exhaustive = false;
  std::vector<Measured> all;
  Profile whole, zoom;  // of the newest class
};

inline constexpr int kProfileSlices = 240;

// Sampled; `points` random ones on top of the neighbours. The profiles on demand.
Measurement measure(const Subject& subject, const Limits& limits, const Oracle& oracle,
                    int64_t points, bool profile = false);

// At the arguments given (the second where there are two), of a real function.
Measurement measure_at(const Subject& subject, const Limits& limits, const Oracle& oracle,
                       const std::vector<std::array<double, 2>>& arguments);

// Error of a peak that the stand-in has found, by MPFR.
void remeasure(Evaluator& evaluator, Peak& peak, bool relative);

// The classes whose callouts stand for all: the first without fused products and the first with them.
inline constexpr int kCalloutClasses[] = {0, 3};

// The kernel that hands every element to the callout of such a class (callouts.h); null where the
// processor does not run it.
vector::KamKernel callouts_of(const Subject& subject, int kernel_class);

// "a=0x1.8p+0 got=... wanted=..." of a peak.
std::string describe(const Subject& subject, const Peak& peak);
// The arguments alone, in hexadecimal.
std::string arguments(const Subject& subject, const Peak& peak);

}  // namespace orba::test
