// The generator table: 16 rows compiled in, those of registered generators behind them.
#pragma once

#include <stdint.h>

#include "statistics/frame/dispatch.h"
#include "statistics/streams/brng.h"

namespace orba::statistics {

inline constexpr int32_t kBuiltInBrngs = 16;
inline constexpr int32_t kMaxBrngs = 512;

// Row of an identifier for a class; null when there is no such generator or sub-generator.
const Brng* find_brng(int rau_class, int32_t brng) noexcept;

// Row of a live stream.
const Brng& brng_of(int rau_class, const StreamState& stream) noexcept;

// Appends a row; its identifier, or RAU_ERROR_MEM_FAILURE when the table is full.
int32_t register_brng(const BrngProperties& properties) noexcept;
int32_t registered_brngs() noexcept;

}  // namespace orba::statistics
