// MCG31m1: x(n+1) = 1132489760 x(n) mod 2^31 - 1, output x(n). The multiplier is from P. L'Ecuyer,
// "Tables of linear congruential generators of different sizes and good lattice structure",
// Mathematics of Computation 68 (1999).
#include "statistics/streams/generators/kernels/generator.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

struct Mcg31m1 : Multiplicative<Mcg31m1, uint32_t> {
  struct State : StreamState {
    uint32_t x;  // the next output, 1 to 2^31 - 2
    uint32_t a;  // the multiplier, changed by leapfrog
  };
  static_assert(sizeof(State) == 24);

  static constexpr uint32_t kModulus = 0x7fffffff;
  static constexpr double kUnit = 1.0 / kModulus;

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

  static void seed(State& state, int32_t n, const uint32_t* words) {
    state.x = n > 0 ? words[0] % kModulus : 1;
    if (state.x == 0) state.x = 1;
    state.a = 1132489760;
  }

  template <class Sink>
  static void generate(State& state, int32_t n, Sink sink) {
    constexpr int kVectors = 4, kGroup = kVectors * kLanes;
    uint32_t x = state.x;
    int32_t i = 0;
    if (n >= kGroup) {
      // The next kGroup outputs; each step multiplies all by a^kGroup.
      uint64_t first[kLanes];
      uint32_t step = 1;
      for (uint64_t& lane : first) {
        lane = x;
        x = multiply(x, state.a);
        step = multiply(step, state.a);
      }
      const I64 one_vector(int64_t{step});
      const I64 a(int64_t{power(step, kVectors)});
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
      x = multiply(x, state.a);
    }
    state.x = x;
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_BRNG_KERNELS(MCG31m1, Generator<Mcg31m1>)
