#include "statistics/streams/generators/mcg31m1.h"

#include "statistics/streams/generators/kernels/blocks.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

struct Mcg31m1 {
  using State = statistics::Mcg31m1State;

  static constexpr uint32_t kModulus = statistics::kMcg31m1Modulus;
  static constexpr double kUnit = 1.0 / kModulus;

  static uint32_t least_residue(uint32_t x) { return x < kModulus ? x : x % kModulus; }

  // Reduction of a product of two residues: 2^31 is 1, so the halves add up, and a sum of the
  // modulus or above loses it through its own carry.
  static uint32_t multiply(uint32_t a, uint32_t b) {
    const uint64_t product = uint64_t{a} * b;
    const uint64_t sum = (product & kModulus) + (product >> 31);
    return static_cast<uint32_t>((sum + ((sum + 1) >> 31)) & kModulus);
  }
  ORBA_INLINE static I64 multiply(I64 a, I64 b) {
    const I64 mask(int64_t{kModulus});
    const I64 product = mul_low_words(a, b);
    const I64 sum = (product & mask) + shr<31>(product);
    return (sum + shr<31>(sum + I64(int64_t{1}))) & mask;
  }

  template <class Sink>
  static int32_t generate(State& state, int32_t n, Sink sink) {
    constexpr int kVectors = 4, kGroup = kVectors * kLanes;
    uint32_t x = least_residue(state.x);
    const uint32_t multiplier = least_residue(state.a);
    int32_t i = 0;
    if (n >= kGroup) {
      // The next kGroup outputs; each step multiplies all by a^kGroup.
      uint64_t first[kLanes];
      uint32_t step = 1;
      for (uint64_t& lane : first) {
        lane = x;
        x = multiply(x, multiplier);
        step = multiply(step, multiplier);
      }
      const I64 one_vector(int64_t{step});
      for (int known = 1; known < kVectors; known *= 2) step = multiply(step, step);
      const I64 a(int64_t{step});
      I64 v[kVectors];
      v[0] = load(first);
      ORBA_UNROLL
      for (int k = 1; k < kVectors; ++k) v[k] = multiply(v[k - 1], one_vector);
      for (; i <= n - kGroup; i += kGroup) {
        ORBA_UNROLL
        for (int k = 0; k < kVectors; ++k) {
          sink.put(i + k * kLanes, v[k]);
          v[k] = multiply(v[k], a);
        }
      }
      int k = 0;
      for (; i <= n - kLanes; i += kLanes) sink.put(i, v[k++]);
      store(first, v[k]);
      x = static_cast<uint32_t>(first[0]);
    }
    for (; i < n; ++i) {
      sink.put_one(i, x);
      x = multiply(x, multiplier);
    }
    state.x = x;
    return RAU_STATUS_OK;
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_BRNG_BLOCKS(MCG31m1, Blocks<Mcg31m1>)
