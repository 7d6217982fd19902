// The table of limits: what each function promises, and where it is looked at most closely.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "include/orba_kam.h"
#include "tests/accuracy/oracle.h"

namespace orba::test {

// Arguments between two numbers. Spans with an infinite end are sampled binade by binade, denormal
// ones too, each with an equal share near both of its ends and inside; others evenly.
struct Span {
  double low, high;
};

// Horizontal axis of the plot of errors.
enum class Axis { kNone, kArgument, kArgumentBinade, kResultBinade };

// Kinds of random pairs of arguments.
enum class Pairs {
  kAny,           // exponents of their own
  kOrdinary,      // around 1
  kProduct,       // at the edge of the range: the product,
  kQuotient,      // the quotient
  kNear,          // near each other in size, so that both show in a sum
  kSum,           // cancels: the sum or the difference,
  kParts,         // a part of the complex product
  kPower,         // a^b: within the range and a little beyond,
  kPowerEdge,     // at its ends,
  kPowerNearOne,  // the same of a near 1,
  kPowerSimple    // b a small integer or fraction
};

struct Limits {
  std::string_view function;
  char type;
  Measure measure;
  double ha, la;            // units in the last place
  double ep;                // relative error, of a complex result against its larger part
  int points;               // random ones in the tests, in thousands
  std::vector<Span> spans;  // of the arguments of functions of one input
  // Points, of either sign, whose neighbours are all tried: 4000 on each side. For functions of
  // two inputs they are values of the second input.
  std::vector<double> near;
  struct Plot {
    Axis axis;
    double low, high;
    // A second panel shows the errors by the distance from here, on either side.
    std::optional<double> zoom = {};
  } plot;
  // Of the arguments of functions of two inputs: these kinds by turns, without any those for arithmetic.
  std::vector<Pairs> pairs = {};

  // The shortest distance from the zoom point that shows, as a power of two.
  double zoom_low() const { return *plot.zoom == 0 ? -64 : type == 's' ? -24 : -53; }

  double limit(uint32_t accuracy) const {
    return accuracy == KAM_HA ? ha : accuracy == KAM_LA ? la : ep;
  }
};

const std::vector<Limits>& limits_table();
// Null when there is none.
const Limits* find_limits(std::string_view function, char type);

}  // namespace orba::test
