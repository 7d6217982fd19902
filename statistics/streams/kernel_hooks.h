// What the kernels of the statistics layer may call outside their class: tables and services that
// exist once. The check of the objects reads the names from here.
#pragma once

#include <stdint.h>

#include "statistics/streams/stream_state.h"

namespace orba::statistics {

// Moduli of a stream's Wichmann-Hill generator, four of them.
const uint32_t* wichmann_hill_moduli(const StreamState& stream) noexcept;

}  // namespace orba::statistics
