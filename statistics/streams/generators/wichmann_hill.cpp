#include "statistics/streams/generators/wichmann_hill.h"

#include "statistics/streams/generators/generator.h"
#include "statistics/streams/generators/wichmann_hill_table.h"

namespace orba::statistics {
namespace {

const WichmannHillSet& set_of(const StreamState& stream) {
  return kWichmannHillSets[resolve_brng(stream.brng).sub_generator];
}

uint32_t multiply(uint32_t a, uint32_t b, uint32_t m) {
  return static_cast<uint32_t>(uint64_t{a} * b % m);
}
uint32_t power_of(uint32_t base, uint64_t exponent, uint32_t m) {
  return power(base, exponent, [m](uint32_t x, uint32_t y) { return multiply(x, y, m); });
}

struct WichmannHill {
  using State = WichmannHillState;

  static int32_t seed(State& state, int32_t n, const uint32_t* words) {
    const WichmannHillSet& set = set_of(state);
    for (int k = 0; k < 4; ++k) {
      state.x[k] = k < n ? words[k] % set.modulus[k] : 1;
      if (state.x[k] == 0) state.x[k] = 1;
      state.a[k] = set.multiplier[k];
    }
    return RAU_STATUS_OK;
  }
  static int32_t skip_ahead(State& state, uint64_t n) {
    for (int k = 0; k < 4; ++k) {
      const uint32_t m = set_of(state).modulus[k];
      state.x[k] = multiply(power_of(state.a[k], n, m), state.x[k], m);
    }
    return RAU_STATUS_OK;
  }
  static int32_t leapfrog(State& state, uint32_t k, uint32_t nstreams) {
    skip_ahead(state, k);
    for (int j = 0; j < 4; ++j) {
      state.a[j] = power_of(state.a[j], nstreams, set_of(state).modulus[j]);
    }
    return RAU_STATUS_OK;
  }
};

}  // namespace

const uint32_t* wichmann_hill_moduli(const StreamState& stream) noexcept {
  return set_of(stream).modulus;
}

}  // namespace orba::statistics

ORBA_BRNG_INIT(WichmannHill, orba::statistics::WichmannHill)
