#include "statistics/streams/generators/mcg31m1.h"

#include "statistics/streams/generators/generator.h"

namespace orba::statistics {
namespace {

struct Mcg31m1 : Multiplicative<Mcg31m1, Mcg31m1State> {
  static uint32_t multiply(uint32_t a, uint32_t b) {
    return static_cast<uint32_t>(uint64_t{a} * b % kMcg31m1Modulus);
  }
  static int32_t seed(State& state, int32_t n, const uint32_t* words) {
    state.x = n > 0 ? words[0] % kMcg31m1Modulus : 1;
    if (state.x == 0) state.x = 1;
    state.a = 1132489760;
    return RAU_STATUS_OK;
  }
};

}  // namespace
}  // namespace orba::statistics

ORBA_BRNG_INIT(MCG31m1, orba::statistics::Mcg31m1)
