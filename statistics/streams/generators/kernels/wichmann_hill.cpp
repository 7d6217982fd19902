// The Wichmann-Hill generators: four multiplicative generators x(n+1) = a x(n) mod m, the output
// their sum x/m modulo 1. B. A. Wichmann and I. D. Hill, "Generating good pseudo-random numbers",
// Computational Statistics & Data Analysis 51 (2006), has the construction; each of the 273 has
// primes and multipliers of its own.
#include "statistics/streams/generators/kernels/generator.h"
#include "statistics/streams/generators/wichmann_hill_table.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// A step of a component, as integers in doubles. The product is below 2^48 and never a multiple of
// m, so its quotient is 1/m off an integer at least, and the rounding errors of the computed one,
// below 2^-27, do not change the integer part.
ORBA_INLINE F64 multiply(F64 x, F64 a, F64 m, F64 inverse) {
  const F64 product = x * a;
  return neg_mul_add(trunc_small(product * inverse), m, product);
}

// ---- Sinks: put(i, x): outputs i ... i + kLanes - 1, component by component ----

struct QuadrupleSink {
  uint32_t* r;
  static constexpr int kWidth = 4;  // elements of an output
  // Two words to a lane.
  ORBA_INLINE static F64 pairs(F64 low, F64 high) {
    constexpr int64_t two_52 = 0x4330000000000000;
    return as_float((as_bits(low + F64(0x1p52)) ^ I64(two_52)) |
                    shl<32>(as_bits(high + F64(0x1p52))));
  }
  ORBA_INLINE void put(int64_t i, const F64 (&x)[4]) {
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
  double inverse[4];
  FractionSink(Element* result, double low, double high, const uint32_t (&modulus)[4])
      : r(result), s(high - low), a(low) {
    for (int k = 0; k < 4; ++k) inverse[k] = 1.0 / modulus[k];
  }
  ORBA_INLINE void put(int64_t i, const F64 (&x)[4]) {
    F64 sum = x[0] * F64(inverse[0]);
    ORBA_UNROLL
    for (int k = 1; k < 4; ++k) sum = sum + x[k] * F64(inverse[k]);
    store_as(r + i, mul_add(sum - trunc_small(sum), F64(s), F64(a)));
  }
};

struct WichmannHill {
  struct State : StreamState {
    uint32_t x[4];  // the next output, 1 to m - 1
    uint32_t a[4];  // the multipliers, changed by leapfrog
  };
  static_assert(sizeof(State) == 48);

  static const statistics::WichmannHillSet& set_of(const State& state) {
    return statistics::kWichmannHillSets[statistics::resolve_brng(state.brng).sub_generator];
  }

  static uint32_t power(uint64_t base, uint64_t exponent, uint32_t m) {
    const auto multiply = [m](uint64_t x, uint64_t y) { return x * y % m; };
    return static_cast<uint32_t>(ORBA_CLASS_NAMESPACE::power(base, exponent, multiply));
  }

  static void seed(State& state, int32_t n, const uint32_t* words) {
    const statistics::WichmannHillSet& set = set_of(state);
    for (int k = 0; k < 4; ++k) {
      state.x[k] = k < n ? words[k] % set.modulus[k] : 1;
      if (state.x[k] == 0) state.x[k] = 1;
      state.a[k] = set.multiplier[k];
    }
  }
  static void skip_ahead(State& state, uint64_t n) {
    for (int k = 0; k < 4; ++k) {
      const uint32_t m = set_of(state).modulus[k];
      state.x[k] = static_cast<uint32_t>(uint64_t{power(state.a[k], n, m)} * state.x[k] % m);
    }
  }
  static void leapfrog(State& state, uint32_t k, uint32_t nstreams) {
    skip_ahead(state, k);
    for (int j = 0; j < 4; ++j) state.a[j] = power(state.a[j], nstreams, set_of(state).modulus[j]);
  }

  template <class Sink>
  static void generate(State& state, int32_t n, Sink sink) {
    if (n <= 0) return;
    F64 x[4], a[4], m[4], inverse[4];
    for (int k = 0; k < 4; ++k) {
      x[k] = F64(state.x[k]);
      a[k] = F64(state.a[k]);
      m[k] = F64(set_of(state).modulus[k]);
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
      sink.put(i, x);
      ORBA_UNROLL
      for (int k = 0; k < 4; ++k) x[k] = multiply(x[k], a[k], m[k], inverse[k]);
    }
    if (i < n) {
      __typeof__(*sink.r) outputs[kLanes * Sink::kWidth];
      Sink last = sink;
      last.r = outputs;
      last.put(0, x);
      __builtin_memcpy(sink.r + int64_t{i} * Sink::kWidth, outputs,
                       (n - i) * Sink::kWidth * sizeof outputs[0]);
    }
    for (int k = 0; k < 4; ++k) {
      double lanes[kLanes];
      store(lanes, x[k]);
      state.x[k] = static_cast<uint32_t>(static_cast<int32_t>(lanes[n - i]));
    }
  }
};

struct WichmannHillKernels : Generator<WichmannHill> {
  static int32_t single(StreamState* stream, int32_t n, float* r, float a, float b) {
    State& state = state_of(stream);
    WichmannHill::generate(state, n,
                           FractionSink<float>(r, a, b, WichmannHill::set_of(state).modulus));
    return RAU_STATUS_OK;
  }
  static int32_t real(StreamState* stream, int32_t n, double* r, double a, double b) {
    State& state = state_of(stream);
    WichmannHill::generate(state, n,
                           FractionSink<double>(r, a, b, WichmannHill::set_of(state).modulus));
    return RAU_STATUS_OK;
  }
  static int32_t floors(StreamState* stream, int32_t n, int32_t* r, double a, double b) {
    State& state = state_of(stream);
    WichmannHill::generate(state, n,
                           FractionSink<int32_t>(r, a, b, WichmannHill::set_of(state).modulus));
    return RAU_STATUS_OK;
  }
  static int32_t integer(StreamState* stream, int32_t n, void* r) {
    WichmannHill::generate(state_of(stream), n, QuadrupleSink{static_cast<uint32_t*>(r)});
    return RAU_STATUS_OK;
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_BRNG_KERNELS(WichmannHill, WichmannHillKernels)
