// Moments of blocks of observations.
#include "statistics/summary/kernels/moments_merge.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

using statistics::MomentsBlock;
using statistics::MomentsMethod;
using statistics::MomentsOrders;
using statistics::MomentsPart;
using statistics::MomentsWork;

// A block whose sums are taken twice passes through the second-level cache in between.
constexpr int64_t kVariablesAtOnce = 512;

template <class Real>
Observed<Real> observed(const MomentsBlock<Real>& block, int64_t first, int64_t last) {
  return {block.x + first * (block.rows ? block.leading : 1),
          block.weights,
          block.leading,
          block.rows,
          block.observations,
          last - first};
}

// Sums of powers 1 ... k around `centre`, null for none, into the work's arrays from 0 on. A third
// power costs little less than a fourth, so there is no loop for it.
template <class V, class Real = typename V::Element>
void sum_powers(const Observed<Real>& o, int k, const typename V::Element* centre,
                const MomentsWork<Real>& work) {
  const auto run = [&]<int K>() {
    for (int i = 0; i < K; ++i) {
      __builtin_memset(work.sums + i * work.stride, 0,
                       static_cast<size_t>(o.variables) * sizeof(Real));
    }
    if (centre != nullptr)
      power_sums<V, K, true>(o, centre, work.sums, work.stride);
    else
      power_sums<V, K, false>(o, centre, work.sums, work.stride);
  };
  if (k <= 1) return run.template operator()<1>();
  if (k == 2) return run.template operator()<2>();
  run.template operator()<4>();
}

// Adds the work's sums of power k to an accumulator.
template <class V, class Real = typename V::Element>
void add_sums(const MomentsWork<Real>& work, int k, int64_t count, Real* to) {
  const Real* from = work.sums + (k - 1) * work.stride;
  for (int64_t j = 0; j < count; j += V::lanes) {
    store_live(to + j, count - j,
               load_live<V>(to + j, count - j) + load_live<V>(from + j, count - j));
  }
}

template <class V, class Real = typename V::Element>
void add_sums_to_raw(const MomentsOrders& orders, int64_t first, int64_t count,
                     const MomentsPart<Real>& part, const MomentsWork<Real>& work) {
  for (int k = 2; k <= orders.raw; ++k) add_sums<V>(work, k, count, part.raw[k - 2] + first);
}

template <class V>
ORBA_INLINE V nan_to_zero(V x) {
  return select(x == x, x, V(0));
}

// The moments of the block alone, from sums around a centre that is its mean but for rounding.
// Where the mean is infinite it stays so, and raw moments with it.
template <class V, class Real = typename V::Element>
ORBA_INLINE Moments<V> block_moments(const MomentsOrders& orders, int powers, V weight, V inverse,
                                     V pivot, V centre, const Real* sums, int64_t stride,
                                     int64_t live, V* residual) {
  Moments<V> m;
  const auto sum = [&](int k) { return load_live<V>(sums + (k - 1) * stride, live); };
  const V s1 = sum(1);
  const V s = nan_to_zero(s1 / weight);
  *residual = s;
  m.mean = (centre - pivot) + s;
  V central[3] = {V(0), V(0), V(0)};
  if (powers >= 2) central[0] = sum(2) - s * s1;
  if (powers >= 3) central[1] = sum(3) - s * (V(3) * sum(2) - V(2) * s * s1);
  if (powers >= 4) {
    central[2] = sum(4) - s * (V(4) * sum(3) - s * (V(6) * sum(2) - V(3) * s * s1));
  }
  for (int k = 0; k < orders.central - 1; ++k) m.central[k] = central[k];
  if (orders.raw >= 2) {
    // E x^k from the moments around the mean, each term at most a few times E |x|^k.
    const V mean = centre + s, square = mean * mean;
    const V c2 = central[0] * inverse, c3 = central[1] * inverse, c4 = central[2] * inverse;
    const auto if_finite = [&](V terms) { return select(mean - mean == V(0), terms, V(0)); };
    m.raw[0] = square + if_finite(c2);
    m.raw[1] = mean * square + if_finite(V(3) * mean * c2 + c3);
    m.raw[2] = square * square + if_finite(V(6) * square * c2 + V(4) * mean * c3 + c4);
  }
  return m;
}

// Two sums over a block that is in the cache by the second: around the pivot for its mean, then
// around that.
template <class V, class Real = typename V::Element>
void add_block_merged(const MomentsOrders& orders, const MomentsBlock<Real>& block, int64_t first,
                      int64_t last, const MomentsPart<Real>& part, const MomentsWork<Real>& work) {
  const Observed<Real> o = observed(block, first, last);
  const int64_t count = last - first;
  const int powers = orders.raw > orders.central ? orders.raw : orders.central;
  const statistics::Merger<V, Real> merge(part.weight, block.weight);
  const V weight(block.weight), inverse(block.weight != 0 ? 1 / block.weight : 0);

  sum_powers<V>(o, 1, block.pivot + first, work);
  Real* centre = work.centre + first;
  for (int64_t j = 0; j < count; j += V::lanes) {
    const V sum = load_live<V>(work.sums + j, count - j);
    store_live(centre + j, count - j,
               mul_add(sum, inverse, load_live<V>(block.pivot + first + j, count - j)));
  }
  sum_powers<V>(o, powers, centre, work);
  for (int64_t j = 0; j < count; j += V::lanes) {
    const int64_t live = count - j;
    V residual;
    const Moments<V> from = block_moments<V>(
        orders, powers, weight, inverse, load_live<V>(block.pivot + first + j, live),
        load_live<V>(centre + j, live), work.sums + j, work.stride, live, &residual);
    Moments<V> to = load_moments<V>(part, orders, first + j, live);
    const V difference = merge(orders, to, from);
    store_moments(part, orders, first + j, live, to);
    store_live(work.residual + first + j, live, residual);
    store_live(work.difference + first + j, live, difference);
  }
}

template <class V, class Real = typename V::Element>
void add_block(const MomentsOrders& orders, const MomentsBlock<Real>& block,
               const MomentsPart<Real>& part, const MomentsWork<Real>& work) {
  for (int64_t first = block.first; first < block.last; first += kVariablesAtOnce) {
    int64_t last = first + kVariablesAtOnce;
    last = last < block.last ? last : block.last;
    if (orders.method == MomentsMethod::kOnePass) {
      add_block_merged<V>(orders, block, first, last, part, work);
      continue;
    }
    const Observed<Real> o = observed(block, first, last);
    const int64_t count = last - first;
    if (orders.method == MomentsMethod::kFast) {
      sum_powers<V>(o, orders.raw, nullptr, work);
      add_sums<V>(work, 1, count, part.mean + first);
      add_sums_to_raw<V>(orders, first, count, part, work);
      continue;
    }
    if (orders.raw >= 2) {
      sum_powers<V>(o, orders.raw, nullptr, work);
      add_sums_to_raw<V>(orders, first, count, part, work);
    }
    sum_powers<V>(o, orders.central, block.pivot + first, work);
    add_sums<V>(work, 1, count, part.mean + first);
    for (int k = 2; k <= orders.central; ++k) {
      add_sums<V>(work, k, count, part.central[k - 2] + first);
    }
  }
}

template <class V, class Real = typename V::Element>
void merge_moments(const MomentsOrders& orders, int64_t p, const MomentsPart<Real>& a,
                   const MomentsPart<Real>& b, Real* difference) {
  const statistics::Merger<V, Real> merge(a.weight, b.weight);
  for (int64_t j = 0; j < p; j += V::lanes) {
    Moments<V> to = load_moments<V>(a, orders, j, p - j);
    const V d = merge(orders, to, load_moments<V>(b, orders, j, p - j));
    store_moments(a, orders, j, p - j, to);
    store_live(difference + j, p - j, d);
  }
}

// A row of a block: `count` numbers with one weight and centre each, or one for all.
template <class V>
ORBA_INLINE void copy_row(const typename V::Element* x, int64_t count,
                          const typename V::Element* centres, typename V::Element centre,
                          const typename V::Element* weights, typename V::Element weight,
                          typename V::Element* plain, typename V::Element* weighted) {
  for (int64_t i = 0; i < count; i += V::lanes) {
    const int64_t live = count - i;
    const V value = load_live<V>(x + i, live) -
                    (centres != nullptr ? load_live<V>(centres + i, live) : V(centre));
    if (plain != nullptr) store_live(plain + i, live, value);
    if (weighted != nullptr) {
      store_live(weighted + i, live,
                 value * (weights != nullptr ? load_live<V>(weights + i, live) : V(weight)));
    }
  }
}

template <class V, class Real = typename V::Element>
void copy_block(const MomentsBlock<Real>& block, const Real* centre, Real* plain, Real* weighted) {
  const int64_t p = block.last - block.first, n = block.observations;
  const auto at = [](Real* to, int64_t offset) { return to != nullptr ? to + offset : nullptr; };
  if (block.rows) {
    for (int64_t j = 0; j < p; ++j) {
      copy_row<V>(block.x + j * block.leading, n, nullptr, centre != nullptr ? centre[j] : Real(0),
                  block.weights, Real(0), at(plain, j * n), at(weighted, j * n));
    }
  } else {
    for (int64_t i = 0; i < n; ++i) {
      copy_row<V>(block.x + i * block.leading, p, centre, Real(0), nullptr,
                  weighted != nullptr ? block.weights[i] : Real(0), at(plain, i * p),
                  at(weighted, i * p));
    }
  }
}

template <class V, class Real = typename V::Element>
void sum_weights(const Real* weights, int64_t n, Real* sum, Real* squares) {
  const Observed<Real> o = {weights, nullptr, n, true, n, 1};
  Real sums[2] = {0, 0};
  power_sums<V, 2, false>(o, nullptr, sums, 1);
  *sum = sums[0];
  *squares = sums[1];
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

#define ORBA_MOMENTS_NAME_(class_name, t, name) orba_##class_name##_ss_##t##_##name
#define ORBA_MOMENTS_NAME_EXPANDED(class_name, t, name) ORBA_MOMENTS_NAME_(class_name, t, name)
#define ORBA_MOMENTS_NAME(t, name) ORBA_MOMENTS_NAME_EXPANDED(ORBA_CLASS_NAMESPACE, t, name)
#define ORBA_MOMENTS_ENTRIES(t, Real, V)                                                           \
  extern "C" void ORBA_MOMENTS_NAME(t, add_block)(                                                 \
      const MomentsOrders& orders, const MomentsBlock<Real>& block, const MomentsPart<Real>& part, \
      const MomentsWork<Real>& work) {                                                             \
    add_block<V>(orders, block, part, work);                                                       \
  }                                                                                                \
  extern "C" void ORBA_MOMENTS_NAME(t, merge_moments)(                                             \
      const MomentsOrders& orders, int64_t p, const MomentsPart<Real>& a,                          \
      const MomentsPart<Real>& b, Real* difference) {                                              \
    merge_moments<V>(orders, p, a, b, difference);                                                 \
  }                                                                                                \
  extern "C" void ORBA_MOMENTS_NAME(t, copy_block)(                                                \
      const MomentsBlock<Real>& block, const Real* centre, Real* plain, Real* weighted) {          \
    copy_block<V>(block, centre, plain, weighted);                                                 \
  }                                                                                                \
  extern "C" void ORBA_MOMENTS_NAME(t, sum_weights)(const Real* weights, int64_t n, Real* sum,     \
                                                    Real* squares) {                               \
    sum_weights<V>(weights, n, sum, squares);                                                      \
  }

namespace orba::ORBA_CLASS_NAMESPACE {
ORBA_MOMENTS_ENTRIES(d, double, F64)
ORBA_MOMENTS_ENTRIES(s, float, F32)
}  // namespace orba::ORBA_CLASS_NAMESPACE
