// What code that is built for one processor class may call of the streams.
#pragma once

#include "statistics/streams/stream_state.h"

namespace orba::statistics {

// Row of a stream's generator as the kernels of a build call it.
const BrngProperties& brng_of(int build, const StreamState& stream) noexcept;

// A built-in generator's block of the floors of numbers in [a, b); null for a registered one.
using FloorsEntry = int32_t (*)(StreamState* stream, int32_t n, int32_t* r, double a, double b);
FloorsEntry floors_of(int build, const StreamState& stream) noexcept;

}  // namespace orba::statistics
