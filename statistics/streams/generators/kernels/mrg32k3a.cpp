// Values are integers in doubles. From residues between 0 and m, as from residues of up to m/2 in
// magnitude, both sums stay below 2^53: a step is exact, fused or not and in any rounding mode.
#include "statistics/streams/generators/mrg32k3a.h"

#include "statistics/streams/generators/kernels/blocks.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

using namespace statistics::mrg32k3a;

// The polynomials of jumps by first, first + step, ..., as vectors; every coefficient is split into
// 16-bit halves, whose products with a value are exact.
template <int count>
struct Jumps {
  double high[3][count], low[3][count];
};
template <class Recurrence, int count, int first, int step>
constexpr Jumps<count> make_jumps() {
  Jumps<count> result{};
  Polynomial p = kOne;
  for (int n = 0; n <= first + (count - 1) * step; ++n, p = times_t<Recurrence>(p)) {
    if (n < first || (n - first) % step != 0) continue;
    for (int j = 0; j < 3; ++j) {
      result.high[j][(n - first) / step] = static_cast<double>(p.c[j] >> 16);
      result.low[j][(n - first) / step] = static_cast<double>(p.c[j] & 0xffff);
    }
  }
  return result;
}
template <class Recurrence, int count, int first, int step>
constexpr Jumps<count> kJumps = make_jumps<Recurrence, count, first, step>();

// ---- Vectors ----

// Whether residues are from 0 to m - 1, or up to m/2 in magnitude.
constexpr bool kLeastResidues = kClass == 5;

// Residue of an integer below 2^53 in magnitude.
template <class Recurrence>
ORBA_INLINE F64 reduce(F64 p) {
  constexpr double inverse = 1.0 / Recurrence::m;
#if ORBA_CLASS == 5
  // The quotient rounded down. By the error of the inverse (2^-53.6 too large for x, 2^-53.1 too
  // small for y) and a quotient from -b to a, the product is off by 0.26/m downwards and 0.61/m
  // upwards at most: with the bias it falls short of no multiple and reaches none too early.
  const F64 quotient = floor_mul_add(p, F64(inverse), F64(0x1.4p-34));
#else
  const F64 quotient = round_small(p * F64(inverse));
#endif
  return neg_mul_add(quotient, F64(Recurrence::m), p);
}

// A residue above -m as one from 0 on.
ORBA_INLINE F64 wrap(F64 p, uint32_t m) { return select(p < F64(0.0), p + F64(m), p); }

ORBA_INLINE F64 output(F64 x, F64 y) {
  if constexpr (kLeastResidues) return wrap(x - y, X::m);
  return wrap(wrap(x, X::m) - wrap(y, Y::m), X::m);
}

// Three successive values of a component, oldest first: one component of a stream, or of many.
template <class Recurrence>
struct Window {
  F64 w[3];

  ORBA_INLINE F64 step() {
    const F64 next = reduce<Recurrence>(
        mul_sub(F64(Recurrence::a), w[Recurrence::lag], F64(Recurrence::b) * w[0]));
    w[0] = w[1];
    w[1] = w[2];
    return w[2] = next;
  }

  // The values that jumps k ... k + kLanes - 1 of a table lead to.
  template <int count>
  ORBA_INLINE F64 jump(const Jumps<count>& table, int k) const {
    const auto combine = [&](const double(&c)[3][count]) {
      return mul_add(load(&c[2][k]), w[2], mul_add(load(&c[1][k]), w[1], load(&c[0][k]) * w[0]));
    };
    const F64 high = reduce<Recurrence>(combine(table.high));
    return reduce<Recurrence>(mul_add(high, F64(0x1p16), combine(table.low)));
  }
};

struct Mrg32k3a {
  using State = statistics::Mrg32k3aState;

  static constexpr double kUnit = 1.0 / X::m;

  static constexpr int kGroup = 3;               // vectors that step side by side
  static constexpr int kRuns = kGroup * kLanes;  // runs of a long block
  static constexpr int kRun = 32;                // outputs of a run
  static constexpr int kShort = 16;              // outputs of a short block

  // A component in scalars.
  using Component = double[3];
  template <class Recurrence>
  ORBA_INLINE static Window<Recurrence> broadcast(const Component& w) {
    return {{F64(w[0]), F64(w[1]), F64(w[2])}};
  }
  ORBA_INLINE static void enter(Component& w, const uint32_t (&words)[3]) {
    for (int j = 0; j < 3; ++j) w[j] = words[j];
  }
  ORBA_INLINE static void leave(const Component& w, uint32_t (&words)[3], uint32_t m) {
    for (int j = 0; j < 3; ++j) {
      const int64_t value = static_cast<int64_t>(w[j]);
      words[j] = static_cast<uint32_t>(value < 0 ? value + m : value);
    }
  }

  // Every lane runs through kRun outputs of its own, kLanes at a time, which are then exchanged
  // into memory order.
  template <class Sink>
  ORBA_INLINE static void long_block(Component& x, Component& y, Sink sink, int64_t i) {
    Window<X> xs[kGroup];
    Window<Y> ys[kGroup];
    const auto first_x = broadcast<X>(x);
    const auto first_y = broadcast<Y>(y);
    ORBA_UNROLL
    for (int k = 0; k < kGroup; ++k) {
      xs[k].w[0] = first_x.jump(kJumps<X, kRuns, 0, kRun>, k * kLanes);
      xs[k].w[1] = first_x.jump(kJumps<X, kRuns, 1, kRun>, k * kLanes);
      xs[k].w[2] = first_x.jump(kJumps<X, kRuns, 2, kRun>, k * kLanes);
      ys[k].w[0] = first_y.jump(kJumps<Y, kRuns, 0, kRun>, k * kLanes);
      ys[k].w[1] = first_y.jump(kJumps<Y, kRuns, 1, kRun>, k * kLanes);
      ys[k].w[2] = first_y.jump(kJumps<Y, kRuns, 2, kRun>, k * kLanes);
    }
    for (int n = 0; n < kRun; n += kLanes) {
      F64 z[kGroup][kLanes];
      ORBA_UNROLL
      for (int t = 0; t < kLanes; ++t) {
        ORBA_UNROLL
        for (int k = 0; k < kGroup; ++k) {
          const F64 xn = xs[k].step();
          z[k][t] = output(xn, ys[k].step());
        }
      }
      ORBA_UNROLL
      for (int k = 0; k < kGroup; ++k) {
        transpose(z[k]);
        ORBA_UNROLL
        for (int t = 0; t < kLanes; ++t) sink.put(i + (k * kLanes + t) * kRun + n, z[k][t]);
      }
    }
    double lanes[kLanes];
    for (int j = 0; j < 3; ++j) {
      store(lanes, xs[kGroup - 1].w[j]);
      x[j] = lanes[kLanes - 1];
      store(lanes, ys[kGroup - 1].w[j]);
      y[j] = lanes[kLanes - 1];
    }
  }

  // kShort outputs, each straight from the state; `count` of them are taken.
  template <class Sink>
  ORBA_INLINE static void short_block(Component& x, Component& y, Sink sink, int count) {
    double xs[3 + kShort], ys[3 + kShort];
    const auto first_x = broadcast<X>(x);
    const auto first_y = broadcast<Y>(y);
    for (int j = 0; j < 3; ++j) {
      xs[j] = x[j];
      ys[j] = y[j];
    }
    for (int k = 0; k < kShort; k += kLanes) {
      const F64 xn = first_x.jump(kJumps<X, kShort, 3, 1>, k);
      const F64 yn = first_y.jump(kJumps<Y, kShort, 3, 1>, k);
      store(xs + 3 + k, xn);
      store(ys + 3 + k, yn);
      sink.put(k, output(xn, yn));
    }
    for (int j = 0; j < 3; ++j) {
      x[j] = xs[count + j];
      y[j] = ys[count + j];
    }
  }

  template <class Sink>
  static int32_t generate(State& state, int32_t n, Sink sink) {
    Component x, y;
    enter(x, state.x);
    enter(y, state.y);
    int32_t i = 0;
    for (; i <= n - kRuns * kRun; i += kRuns * kRun) long_block(x, y, sink, i);
    while (i < n) {
      // The last ones go through a buffer.
      __typeof__(*sink.r) outputs[kShort];
      const int count = n - i < kShort ? n - i : kShort;
      Sink to = sink;
      to.r = count < kShort ? outputs : sink.r + i;
      short_block(x, y, to, count);
      if (count < kShort) __builtin_memcpy(sink.r + i, outputs, count * sizeof outputs[0]);
      i += count;
    }
    leave(x, state.x, X::m);
    leave(y, state.y, Y::m);
    return RAU_STATUS_OK;
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_BRNG_BLOCKS(MRG32k3a, Blocks<Mrg32k3a>)
