#pragma once

#include "tests/accuracy/measure.h"

namespace orba::test {

// All arguments of a single-precision function of one input that has a stand-in: raises the peaks
// of the kernels of classes 3 and 5, denormals kept, and compares the numbers of reports with each
// status. On all cores.
bool has_exhaustive(const Subject& subject, const Limits& limits, const Oracle& oracle);
void measure_exhaustively(const Subject& subject, const Limits& limits, const Oracle& oracle,
                          Measurement& measurement);

}  // namespace orba::test
