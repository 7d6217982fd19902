// The generators once more, one output after the other in exact arithmetic.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace orba::test {

// One raw output; words that a generator doesn't have are 0.
using Output = std::array<uint32_t, 4>;

class Reference {
 public:
  virtual ~Reference() = default;
  virtual Output next() = 0;
  // The variate of an output in [a, b), the last sum fused or not.
  virtual double real(const Output& u, double a, double b, bool fused) const = 0;
  virtual float single(const Output& u, float a, float b, bool fused) const;
};

// A generator without a reference stops the test program: it has to be written first.
std::unique_ptr<Reference> make_reference(int32_t brng, const std::vector<uint32_t>& seed);

// Moduli and multipliers of some Wichmann-Hill generators.
struct WichmannHillRow {
  int32_t sub_generator;
  std::array<uint32_t, 4> modulus, multiplier;
};
const std::array<WichmannHillRow, 4>& wichmann_hill_rows();

}  // namespace orba::test
