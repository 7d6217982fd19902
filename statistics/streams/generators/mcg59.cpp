#include "statistics/streams/generators/mcg59.h"

#include "statistics/streams/generators/generator.h"

namespace orba::statistics {
namespace {

struct Mcg59 : Multiplicative<Mcg59, Mcg59State> {
  static uint64_t multiply(uint64_t a, uint64_t b) { return (a * b) & kMcg59Mask; }
  static int32_t seed(State& state, int32_t n, const uint32_t* words) {
    uint64_t x = 1;
    if (n == 1) x = words[0];
    if (n >= 2) x = (words[0] | uint64_t{words[1]} << 32) & kMcg59Mask;
    state.x = x != 0 ? x : 1;
    state.a = 302875106592253;
    return RAU_STATUS_OK;
  }
};

}  // namespace
}  // namespace orba::statistics

ORBA_BRNG_INIT(MCG59, orba::statistics::Mcg59)
