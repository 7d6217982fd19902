// The generators once more, one output after the other in exact arithmetic.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <vector>

namespace orba::test {

// One raw output; words that a generator doesn't have are 0.
using Output = std::array<uint32_t, 4>;

struct Reference {
  std::function<Output()> next;
  // The variate of an output in [a, b), the last sum fused or not.
  std::function<double(const Output& u, double a, double b, bool fused)> real;
  // Of generators that are not in double precision throughout.
  std::function<float(const Output& u, float a, float b, bool fused)> own_single = nullptr;

  float single(const Output& u, float a, float b, bool fused) const {
    return own_single ? own_single(u, a, b, fused) : static_cast<float>(real(u, a, b, fused));
  }
};

// A generator without a reference stops the test program: it has to be written first.
Reference make_reference(int32_t brng, const std::vector<uint32_t>& seed);

// Moduli and multipliers of some Wichmann-Hill generators.
struct WichmannHillRow {
  int32_t sub_generator;
  std::array<uint32_t, 4> modulus, multiplier;
};
inline constexpr std::array<WichmannHillRow, 4> kWichmannHillRows = {{
    {0, {16770647, 16770643, 16770623, 16770617}, {125, 117, 127, 126}},
    {1, {16770311, 16770283, 16770263, 16770209}, {127, 126, 125, 123}},
    {2, {16769807, 16769771, 16769749, 16769663}, {125, 119, 123, 126}},
    {272, {16766363, 16766359, 16766327, 16766231}, {126, 127, 125, 124}},
}};

}  // namespace orba::test
