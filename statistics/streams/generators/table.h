// The generator table: 16 rows compiled in, those of registered generators behind them.
#pragma once

#include <stdint.h>

#include "statistics/frame/dispatch.h"
#include "statistics/streams/kernel_hooks.h"

namespace orba::statistics {

inline constexpr int32_t kBuiltInBrngs = 16;
inline constexpr int32_t kMaxBrngs = 512;

// Row of an identifier for a class; null when there is no such generator or sub-generator.
const BrngProperties* find_brng(int rau_class, int32_t brng) noexcept;

// Appends a row; its identifier, or RAU_ERROR_MEM_FAILURE when the table is full.
int32_t register_brng(const BrngProperties& properties) noexcept;
int32_t registered_brngs() noexcept;

// Bytes to allocate for a stream of this generator. Copying a stream's state moves NSeeds *
// WordSize bytes, which some generators have no field for.
constexpr int64_t stream_block_size(const BrngProperties& row) {
  constexpr int64_t kHead = sizeof(StreamState);
  const int64_t copied = kHead + int64_t{row.NSeeds} * row.WordSize;
  return copied > row.StreamStateSize ? copied : row.StreamStateSize;
}

}  // namespace orba::statistics
