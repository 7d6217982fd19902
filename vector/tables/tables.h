// Tables too large for registers: plain data, once in the library, read by the kernels of all
// classes. The names declared here are the only data that kernels may refer to outside their class
// (tests/build/check_objects.py). Their sources are written by tools/tables/.
#pragma once

namespace orba::vector {

#pragma GCC visibility push(hidden)

// 2^(j/64), tools/tables/exp_tables.cpp.
alignas(64) extern const double kExp2Pairs64[64][2];
alignas(64) extern const double kExp2Heads64[64];
alignas(64) extern const float kExp2Pairs64F[64][2];
alignas(64) extern const float kExp2Heads64F[64];

// Reciprocals and their logarithms, tools/tables/log_tables.cpp.
alignas(64) extern const double kLnRows256[256][2];
alignas(64) extern const double kLog10Rows256[256][2];
alignas(64) extern const double kLnRows128[128][4];

#pragma GCC visibility pop

}  // namespace orba::vector
