// Sums of w (x - c)^k, k = 1 ... K for K = 1, 2 or 4, over a block of observations, for each
// variable: all that the methods do with observations.
//
// There is one loop, over rows of adjacent numbers with an accumulator for each number of the row.
// Observations that lie variable by variable are cut into rows, and observations of few variables
// are joined into longer ones; either way the accumulators of a variable are added at the end.
#pragma once

#include "vector/kernels/simd/simd.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class Real>
struct VectorOf;
template <>
struct VectorOf<double> {
  using Type = F64;
};
template <>
struct VectorOf<float> {
  using Type = F32;
};

// The first `live` > 0 elements.
template <class V>
ORBA_INLINE V load_live(const typename V::Element* p, int64_t live) {
  return live >= V::lanes ? load(p) : load_partial(p, static_cast<int>(live), 0);
}
template <class V>
ORBA_INLINE void store_live(typename V::Element* p, int64_t live, V x) {
  if (live >= V::lanes)
    store(p, x);
  else
    store_partial(p, static_cast<int>(live), x);
}

enum class Weights {
  kNone,
  kOfRow,     // one for each row
  kOfElement  // one for each number
};

// Adds the powers of one vector to its sums.
template <class V, int K, bool weighted>
ORBA_INLINE void add_powers(V (&s)[K], V d, V w) {
  const V wd = weighted ? w * d : d;
  s[0] = s[0] + wd;
  if constexpr (K == 2) s[1] = mul_add(wd, d, s[1]);
  if constexpr (K == 4) {
    const V square = d * d, weighted_square = weighted ? wd * d : square;
    s[1] = s[1] + weighted_square;
    s[2] = mul_add(weighted_square, d, s[2]);
    s[3] = mul_add(weighted_square, square, s[3]);
  }
}

// Adds `joined` sets of p sums, side by side in each of k rows of slots, pairwise.
template <class Real>
[[gnu::noinline]] void fold_slots(Real* slots, int64_t width, int k, int64_t joined, int64_t p,
                                  Real* sums, int64_t stride) {
  for (; k > 0; --k, slots += width, sums += stride) {
    for (int64_t sets = joined; sets > 1;) {
      const int64_t half = sets / 2;
      sets -= half;
      for (int64_t e = 0; e < half * p; ++e) slots[e] += slots[e + sets * p];
    }
    for (int64_t j = 0; j < p; ++j) sums[j] += slots[j];
  }
}

template <class V, int K, bool centred, Weights weights>
struct PowerSums {
  using Real = typename V::Element;
  static constexpr int kLanes = V::lanes;
  // Vectors of a row summed at once: enough chains of additions to hide their latency, all sums and
  // centres in registers.
  static constexpr int kTile = kClass == 5 || K <= 2 ? 4 : 2;
  static constexpr int kWidth = kTile * kLanes;
  // Rows that are taken tile by tile before the next ones are, so that they stay in the first-level
  // cache. Each group has sums of its own, which keeps rounding errors from growing with all rows.
  static constexpr int64_t kGroupBytes = 16384, kGroupRows = 128;

  static int64_t ahead_of_boundary(const Real* x) {
    const uint64_t misplaced = reinterpret_cast<uint64_t>(x) % sizeof(V);
    return misplaced == 0 ? 0 : static_cast<int64_t>((sizeof(V) - misplaced) / sizeof(Real));
  }

  // `vectors` vectors of each row, the last one with `live` lanes if partial.
  template <int vectors, bool partial>
  static void sum_tile(const Real* x, int64_t leading, int64_t rows, const Real* w,
                       const Real* centre, Real* sums, int64_t stride, int live) {
    const auto load_at = [&](const Real* p, int u) {
      return partial && u == vectors - 1 ? load_partial(p + u * kLanes, live, 0)
                                         : load(p + u * kLanes);
    };
    V s[vectors][K], c[vectors];
    ORBA_UNROLL
    for (int u = 0; u < vectors; ++u) {
      c[u] = centred ? load_at(centre, u) : V(0);
      ORBA_UNROLL
      for (int k = 0; k < K; ++k) s[u][k] = V(0);
    }
    for (int64_t i = 0; i < rows; ++i) {
      const V row_weight = weights == Weights::kOfRow ? V(w[i]) : V(0);
      ORBA_UNROLL
      for (int u = 0; u < vectors; ++u) {
        const V value = load_at(x + i * leading, u);
        add_powers<V, K, weights != Weights::kNone>(
            s[u], centred ? value - c[u] : value,
            weights == Weights::kOfElement ? load_at(w + i * leading, u) : row_weight);
      }
    }
    ORBA_UNROLL
    for (int u = 0; u < vectors; ++u) {
      ORBA_UNROLL
      for (int k = 0; k < K; ++k) {
        Real* to = sums + k * stride + u * kLanes;
        const V sum = load_at(sums + k * stride, u) + s[u][k];
        if (partial && u == vectors - 1)
          store_partial(to, live, sum);
        else
          store(to, sum);
      }
    }
  }

  // Less than a tile.
  static void sum_tail(const Real* x, int64_t leading, int64_t rows, const Real* w,
                       const Real* centre, Real* sums, int64_t stride, int64_t width) {
    const int vectors = static_cast<int>((width + kLanes - 1) / kLanes);
    const int live = static_cast<int>(width - (vectors - 1) * kLanes);
    switch (vectors) {
      case 1:
        return sum_tile<1, true>(x, leading, rows, w, centre, sums, stride, live);
      case 2:
        return sum_tile<2, true>(x, leading, rows, w, centre, sums, stride, live);
      case 3:
        if constexpr (kTile > 2)
          return sum_tile<3, true>(x, leading, rows, w, centre, sums, stride, live);
        break;
      case 4:
        if constexpr (kTile > 2)
          return sum_tile<4, true>(x, leading, rows, w, centre, sums, stride, live);
        break;
      default:
        break;
    }
  }

  // Adds to sums[k*stride + j], j < width, over rows of `width` numbers that start `leading` apart.
  [[gnu::noinline]] static void sum_rows(const Real* x, int64_t leading, int64_t rows,
                                         int64_t width, const Real* w, const Real* centre,
                                         Real* sums, int64_t stride) {
    int64_t group = kGroupBytes / (width * static_cast<int64_t>(sizeof(Real)));
    group = group < 8 ? 8 : group > kGroupRows ? kGroupRows : group;
    for (int64_t i = 0; i < rows; i += group) {
      const int64_t count = rows - i < group ? rows - i : group;
      const Real* of_group = weights == Weights::kNone    ? nullptr
                             : weights == Weights::kOfRow ? w + i
                                                          : w + i * leading;
      int64_t j = 0;
      for (; width - j >= kWidth; j += kWidth) {
        sum_tile<kTile, false>(x + i * leading + j, leading, count, of_group,
                               centred ? centre + j : nullptr, sums + j, stride, 0);
      }
      if (j < width) {
        sum_tail(x + i * leading + j, leading, count, of_group, centred ? centre + j : nullptr,
                 sums + j, stride, width - j);
      }
    }
  }

  // The same for p <= kWidth adjacent variables of n observations; weights of elements only with
  // p = 1, where they are those of observations.
  static void sum_joined(const Real* x, int64_t p, int64_t n, const Real* w, const Real* centre,
                         Real* sums, int64_t stride) {
    const int64_t joined = kWidth / p, width = joined * p;
    Real slots[K][kWidth] = {}, centres[kWidth];
    if constexpr (centred) {
      for (int64_t e = 0; e < width; e += p) {
        for (int64_t j = 0; j < p; ++j) centres[e + j] = centre[j];
      }
    }
    const auto take = [&](int64_t rows, int64_t count) {
      if (rows * count == 0) return;
      sum_rows(x, count, rows, count, w, centres, &slots[0][0], kWidth);
      x += rows * count;
      if constexpr (weights != Weights::kNone) w += rows * count;
    };
    int64_t numbers = n * p;
    if (p == 1) {  // loads of whole vectors that don't straddle cache lines
      const int64_t head = ahead_of_boundary(x) < n ? ahead_of_boundary(x) : n;
      take(1, head);
      numbers -= head;
    }
    take(numbers / width, width);
    take(1, numbers % width);
    fold_slots<Real>(&slots[0][0], kWidth, K, joined, p, sums, stride);
  }
};

// Where the observations lie, from the first variable that counts on.
template <class Real>
struct Observed {
  const Real* x;
  const Real* weights;
  int64_t leading;
  bool rows;
  int64_t observations, variables;
};

template <class V, int K, bool centred, class Real = typename V::Element>
void power_sums(const Observed<Real>& o, const typename V::Element* centre, Real* sums,
                int64_t stride) {
  if (o.rows || (o.variables == 1 && o.leading == 1)) {
    for (int64_t j = 0; j < o.variables; ++j) {
      const Real* x = o.x + j * o.leading;
      const Real* c = centred ? centre + j : nullptr;
      if (o.weights != nullptr) {
        PowerSums<V, K, centred, Weights::kOfElement>::sum_joined(x, 1, o.observations, o.weights,
                                                                  c, sums + j, stride);
      } else {
        PowerSums<V, K, centred, Weights::kNone>::sum_joined(x, 1, o.observations, nullptr, c,
                                                             sums + j, stride);
      }
    }
    return;
  }
  using Plain = PowerSums<V, K, centred, Weights::kNone>;
  if (o.weights != nullptr) {
    PowerSums<V, K, centred, Weights::kOfRow>::sum_rows(o.x, o.leading, o.observations, o.variables,
                                                        o.weights, centre, sums, stride);
  } else if (o.variables == o.leading && o.variables <= Plain::kWidth) {
    Plain::sum_joined(o.x, o.variables, o.observations, nullptr, centre, sums, stride);
  } else {
    Plain::sum_rows(o.x, o.leading, o.observations, o.variables, nullptr, centre, sums, stride);
  }
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
