// The tests' own functions: their table, and what the frame makes of it.
#pragma once

#include "tests/support/kernel_subjects.h"

namespace orba::vector {
#define ORBA_KAM_FUNCTION ORBA_DECLARE_ROWS
#include "tests/kernels/functions/functions.def"
#undef ORBA_KAM_FUNCTION
}  // namespace orba::vector

namespace orba::test {

inline const std::vector<Subject>& test_subjects() {
  static const std::vector<Subject> list = without_lean({
#define ORBA_KAM_FUNCTION ORBA_SUBJECTS
#include "tests/kernels/functions/functions.def"
#undef ORBA_KAM_FUNCTION
  });
  return list;
}

}  // namespace orba::test
