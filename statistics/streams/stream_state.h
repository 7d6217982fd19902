// The head of every stream. A generator's state follows it; offsets are part of saved images.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "include/orba_rau.h"

struct StreamExtension;

struct StreamState {
  int32_t brng;                 // the identifier as the caller gave it
  uint8_t marker;               // 1 in a live stream
  uint8_t reserved8;            // 0
  uint16_t reserved16;          // 0
  StreamExtension* extensions;  // head of a list, see extensions.h
};
static_assert(offsetof(StreamState, marker) == 4 && offsetof(StreamState, extensions) == 8 &&
              sizeof(StreamState) == 16);

namespace orba::statistics {

// An identifier taken apart: row of the generator table and sub-generator.
struct BrngIndex {
  int32_t row;
  int32_t sub_generator;
};

// Identifiers from 0x100000 on hold row and sub-generator. Those below are an older numbering: 0 to
// 3, then the 273 Wichmann-Hill generators, Sobol and Niederreiter; row -1 if there is none.
static constexpr BrngIndex resolve_brng(int32_t brng) {
  if (brng >= 0x100000) return {(brng >> 20) - 1, brng & 0xfffff};
  if (brng < 0 || brng > 278) return {-1, 0};
  if (brng < 4) return {brng, 0};
  if (brng <= 276) return {4, brng - 4};
  return {brng - 277 + 5, 0};
}

}  // namespace orba::statistics
