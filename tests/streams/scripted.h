// A generator of the tests' own: it gives what a test tells it to.
#pragma once

#include <cstdint>
#include <vector>

#include "include/orba_rau.h"

namespace orba::test {

struct Script {
  std::vector<double> reals = {0.5};        // in turn; scaled to no interval
  std::vector<uint32_t> words = {1};        // in turn
  int32_t calls_until_failure = INT32_MAX;  // of the drawing entries
  int32_t failure = -77;
  int32_t seeding = 0;  // what InitStream answers
  int32_t moving = 0;
  std::vector<int32_t> requests;  // lengths that the drawing entries were asked for
};

// The script of every stream of the generator.
Script& script();

// Identifier of the generator, which is registered at the first call.
int32_t scripted_brng();

// A record of a generator that does nothing but succeed.
BrngProperties idle_properties();

}  // namespace orba::test
