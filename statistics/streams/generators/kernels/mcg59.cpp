#include "statistics/streams/generators/mcg59.h"

#include "statistics/streams/generators/kernels/blocks.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

constexpr uint64_t kMask = statistics::kMcg59Mask;

// A block of 2 kLanes states.
#if ORBA_CLASS == 5
struct Block {
  I64 x[2];

  ORBA_INLINE explicit Block(const uint64_t* first) : x{load(first), load(first + kLanes)} {}
  ORBA_INLINE void multiply(uint64_t a) {
    const I64 a_lanes(static_cast<int64_t>(a)), mask(static_cast<int64_t>(kMask));
    for (I64& v : x) v = I64(_mm512_mullo_epi64(v.v, a_lanes.v)) & mask;
  }
  ORBA_INLINE I64 integers(int part) const { return x[part]; }
  ORBA_INLINE F64 doubles(int part) const { return _mm512_cvtepi64_pd(x[part].v); }
  ORBA_INLINE F32 floats() const {
    const __m512 low = _mm512_castps256_ps512(_mm512_cvtepi64_ps(x[0].v));
    return _mm512_insertf32x8(low, _mm512_cvtepi64_ps(x[1].v), 1);
  }
};
#else
// Without 64-bit products the words of a state are kept apart: the high one is a sum of 32-bit
// products, and either becomes a double by an exponent beside it. A state stands at the upper end
// of the two words, so that the modulus needs no mask.
struct Block {
  I64 low[2];  // the low word of a state in the low word of a lane, anything above it
  I32 high;    // in the order of high_words

  ORBA_INLINE explicit Block(const uint64_t* first)
      : low{shl<5>(load(first)), shl<5>(load(first + kLanes))}, high(high_words(low[0], low[1])) {}
  ORBA_INLINE I32 low_words() const { return ORBA_CLASS_NAMESPACE::low_words(low[0], low[1]); }
  ORBA_INLINE void multiply(uint64_t a) {
    const I64 a_lanes(static_cast<int64_t>(a));
    const I32 a_low(static_cast<int32_t>(a)), a_high(static_cast<int32_t>(a >> 32));
    const I32 cross = mul_low(high, a_low) + mul_low(low_words(), a_high);
    for (I64& v : low) v = mul_low_words(v, a_lanes);
    high = cross + high_words(low[0], low[1]);
  }
  ORBA_INLINE static I64 join(I32 low, I32 high, int part) {
    return part == 0 ? join_first(low, high) : join_second(low, high);
  }
  ORBA_INLINE I64 integers(int part) const { return shr<5>(join(low_words(), high, part)); }
  // The high word at 2^79, the low one at 2^47: their sum is the only rounding.
  ORBA_INLINE F64 doubles(I64 low_part, int part) const {
    const F64 above = as_float(join(high, I32(0x44e00000), part)) - F64(0x1p79 + 0x1p47);
    return above + as_float(low_part);
  }
  ORBA_INLINE F64 doubles(int part) const {
    return doubles(with_high_word(low[part], 0x42e00000), part);
  }
  // By way of a double, which must not round: from 2^31 on, the six lowest bits join into the one
  // above them, beyond the last of a float, so that the state stays on its side of any tie.
  ORBA_INLINE F32 floats() const {
    const I32 words = low_words(), six_bits(63 << 5);
    const I32 joined = (words | ((words & six_bits) + six_bits)) & I32(~(63 << 5));
    const I32 exact = select(shr<4>(high) == I32(0), words, joined);
    const I32 at_47(0x42e00000);
    return narrow(doubles(join(exact, at_47, 0), 0), doubles(join(exact, at_47, 1), 1));
  }
};
#endif

struct Mcg59 {
  using State = statistics::Mcg59State;

  static constexpr double kUnit = 0x1p-59;

  static uint64_t multiply(uint64_t a, uint64_t b) { return (a * b) & kMask; }

  template <class Sink>
  static int32_t generate(State& state, int32_t n, Sink sink) {
    constexpr int kBlock = 2 * kLanes;
    uint64_t x = state.x & kMask;
    int32_t i = 0;
    if (n >= 2 * kBlock) {
      // Two blocks at a time, as a product takes long.
      uint64_t first[kBlock] = {x};
      uint64_t step = state.a;
      for (int known = 1; known < kBlock; known *= 2) {
        for (int k = 0; k < known; ++k) first[known + k] = multiply(first[k], step);
        step = multiply(step, step);
      }
      Block even(first), odd = even;
      odd.multiply(step);
      step = multiply(step, step);
      for (; i <= n - 2 * kBlock; i += 2 * kBlock) {
        sink.put(i, even);
        even.multiply(step);
        sink.put(i + kBlock, odd);
        odd.multiply(step);
      }
      if (i <= n - kBlock) {
        sink.put(i, even);
        even = odd;
        i += kBlock;
      }
      uint64_t next[kLanes];
      store(next, even.integers(0));
      x = next[0];
    }
    for (; i < n; ++i) {
      sink.put_one(i, x);
      x = multiply(x, state.a);
    }
    state.x = x;
    return RAU_STATUS_OK;
  }
};

struct IntegerSink {
  uint64_t* r;
  ORBA_INLINE void put(int64_t i, const Block& block) {
    for (int part = 0; part < 2; ++part) store(r + i + part * kLanes, block.integers(part));
  }
  // The caller's array is one of 32-bit words.
  ORBA_INLINE void put_one(int64_t i, uint64_t u) { __builtin_memcpy(r + i, &u, sizeof u); }
};

// Outputs are wider than a significand: each is rounded once, to the precision of the result.
template <class Element>
struct DoubleSink {
  Element* r;
  double s, a;
  ORBA_INLINE void put(int64_t i, const Block& block) {
    for (int part = 0; part < 2; ++part) {
      store_as(r + i + part * kLanes, mul_add(block.doubles(part), F64(s), F64(a)));
    }
  }
  ORBA_INLINE void put_one(int64_t i, uint64_t u) {
    put_as(r + i, mul_add(static_cast<double>(static_cast<int64_t>(u)), s, a));
  }
};

// Unlike other generators this one computes floats in single precision.
struct FloatSink {
  float* r;
  float s, a;
  ORBA_INLINE void put(int64_t i, const Block& block) {
    store(r + i, mul_add(block.floats(), F32(s), F32(a)));
  }
  ORBA_INLINE void put_one(int64_t i, uint64_t u) {
    const float x = static_cast<float>(static_cast<int64_t>(u));
    if constexpr (kFused) {
      r[i] = __builtin_fmaf(x, s, a);
    } else {
      r[i] = x * s + a;
    }
  }
};

struct Mcg59Blocks : Blocks<Mcg59> {
  static int32_t single(StreamState* stream, int32_t n, float* r, float a, float b) {
    const double s = (static_cast<double>(b) - a) * Mcg59::kUnit;
    return Mcg59::generate(state_of(stream), n, FloatSink{r, static_cast<float>(s), a});
  }
  static int32_t real(StreamState* stream, int32_t n, double* r, double a, double b) {
    return Mcg59::generate(state_of(stream), n, DoubleSink<double>{r, (b - a) * Mcg59::kUnit, a});
  }
  static int32_t floors(StreamState* stream, int32_t n, int32_t* r, double a, double b) {
    return Mcg59::generate(state_of(stream), n, DoubleSink<int32_t>{r, (b - a) * Mcg59::kUnit, a});
  }
  static int32_t integer(StreamState* stream, int32_t n, void* r) {
    return Mcg59::generate(state_of(stream), n, IntegerSink{static_cast<uint64_t*>(r)});
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_BRNG_BLOCKS(MCG59, Mcg59Blocks)
