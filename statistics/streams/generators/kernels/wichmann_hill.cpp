#include "statistics/streams/generators/wichmann_hill.h"

#include "statistics/streams/generators/kernels/blocks.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// A step of a component, as integers in doubles. The product is below 2^48 and, unless it is 0, no
// multiple of m, so its quotient is 1/m off an integer at least, and the rounding errors of the
// computed one, below 2^-27, do not change the integer part.
ORBA_INLINE F64 multiply(F64 x, F64 a, F64 m, F64 inverse) {
  const F64 product = x * a;
  return neg_mul_add(trunc_small(product * inverse), m, product);
}

// ---- Sinks: put(i, x, inverse): outputs i ... i + kLanes - 1, component by component, and what
// makes fractions of them ----

struct QuadrupleSink {
  uint32_t* r;
  static constexpr int kWidth = 4;  // elements of an output
  // Two words to a lane.
  ORBA_INLINE static F64 pairs(F64 low, F64 high) {
    constexpr int64_t two_52 = 0x4330000000000000;
    return as_float((as_bits(low + F64(0x1p52)) ^ I64(two_52)) |
                    shl<32>(as_bits(high + F64(0x1p52))));
  }
  ORBA_INLINE void put(int64_t i, const F64 (&x)[4], const F64 (&)[4]) {
    F64 v[2];
    interleave(pairs(x[0], x[1]), pairs(x[2], x[3]), v[0], v[1]);
    __builtin_memcpy(r + 4 * i, v, sizeof v);
  }
};

// The sums are not fused on any class, unlike the last step.
template <class Element>
struct FractionSink {
  Element* r;
  static constexpr int kWidth = 1;
  double s, a;
  FractionSink(Element* result, double low, double high) : r(result), s(high - low), a(low) {}
  ORBA_INLINE void put(int64_t i, const F64 (&x)[4], const F64 (&inverse)[4]) {
    F64 sum = x[0] * inverse[0];
    ORBA_UNROLL
    for (int k = 1; k < 4; ++k) sum = sum + x[k] * inverse[k];
    store_as(r + i, mul_add(sum - trunc_small(sum), F64(s), F64(a)));
  }
};

struct WichmannHill {
  using State = statistics::WichmannHillState;

  static uint32_t least_residue(uint32_t x, uint32_t m) { return x < m ? x : x % m; }

  template <class Sink>
  static int32_t generate(State& state, int32_t n, Sink sink) {
    if (n <= 0) return RAU_STATUS_OK;
    const uint32_t* modulus = statistics::wichmann_hill_moduli(state);
    F64 x[4], a[4], m[4], inverse[4];
    for (int k = 0; k < 4; ++k) {
      x[k] = F64(least_residue(state.x[k], modulus[k]));
      a[k] = F64(least_residue(state.a[k], modulus[k]));
      m[k] = F64(modulus[k]);
      inverse[k] = F64(1.0) / m[k];
    }
    // Lane j goes j steps on, by the bits of j; then `a` is the step of a whole vector.
    for (int bit = 1; bit < kLanes; bit *= 2) {
      double moved[kLanes];
      for (int j = 0; j < kLanes; ++j) moved[j] = j & bit ? 1.0 : 0.0;
      const M64 lanes = F64(0.5) < load(moved);
      for (int k = 0; k < 4; ++k) {
        x[k] = select(lanes, multiply(x[k], a[k], m[k], inverse[k]), x[k]);
        a[k] = multiply(a[k], a[k], m[k], inverse[k]);
      }
    }

    int32_t i = 0;
    for (; i <= n - kLanes; i += kLanes) {
      sink.put(i, x, inverse);
      ORBA_UNROLL
      for (int k = 0; k < 4; ++k) x[k] = multiply(x[k], a[k], m[k], inverse[k]);
    }
    if (i < n) {
      __typeof__(*sink.r) outputs[kLanes * Sink::kWidth];
      Sink last = sink;
      last.r = outputs;
      last.put(0, x, inverse);
      __builtin_memcpy(sink.r + int64_t{i} * Sink::kWidth, outputs,
                       (n - i) * Sink::kWidth * sizeof outputs[0]);
    }
    for (int k = 0; k < 4; ++k) {
      double lanes[kLanes];
      store(lanes, x[k]);
      state.x[k] = static_cast<uint32_t>(static_cast<int32_t>(lanes[n - i]));
    }
    return RAU_STATUS_OK;
  }
};

struct WichmannHillBlocks : Blocks<WichmannHill> {
  template <class Element>
  static int32_t fractions(StreamState* stream, int32_t n, Element* r, double a, double b) {
    return WichmannHill::generate(state_of(stream), n, FractionSink<Element>(r, a, b));
  }
  static int32_t single(StreamState* stream, int32_t n, float* r, float a, float b) {
    return fractions(stream, n, r, a, b);
  }
  static int32_t real(StreamState* stream, int32_t n, double* r, double a, double b) {
    return fractions(stream, n, r, a, b);
  }
  static int32_t floors(StreamState* stream, int32_t n, int32_t* r, double a, double b) {
    return fractions(stream, n, r, a, b);
  }
  static int32_t integer(StreamState* stream, int32_t n, void* r) {
    return WichmannHill::generate(state_of(stream), n, QuadrupleSink{static_cast<uint32_t*>(r)});
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_BRNG_BLOCKS(WichmannHill, WichmannHillBlocks)
