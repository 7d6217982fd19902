// The machine's processors, and the module that must stay: what thread counts ask of the operating
// system.
#pragma once

#include <stdint.h>

#include <bitset>

namespace orba::services::platform {

// 1 <= nodes <= cores <= logical.
struct ProcessorCounts {
  int32_t logical = 1;  // hardware threads
  int32_t cores = 1;
  int32_t nodes = 1;  // of memory
};

// Logical processors by the system's numbers.
using ProcessorSet = std::bitset<8192>;

// Those that the system lets the calling thread run on: a container or a batch system may have
// given the process a part of the machine. Empty when the system doesn't tell.
ProcessorSet allowed_processors() noexcept;

// Counts of the machine as far as it consists of these processors; all 1 for an empty set.
ProcessorCounts count_processors(const ProcessorSet& processors) noexcept;
// The same by another description of the machine than /sys/devices/system.
ProcessorCounts count_processors(const ProcessorSet& processors, const char* directory) noexcept;

// Keeps the module that holds this code loaded until the process ends.
void keep_loaded(const void* code) noexcept;

}  // namespace orba::services::platform
