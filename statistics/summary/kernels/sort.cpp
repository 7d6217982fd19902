// Sorting and selection over integer keys.
//
// Quicksort whose partition sends the upper part through scratch: no exchange, no unpredictable
// branch, vectors compressed by mask where the class can. A pivot is the median of a sample. A
// range that still isn't small after twice the expected number of partitions is sorted by digits,
// so that bad luck or bad intent costs a constant factor and recursion stays below 130 levels.
#include "statistics/summary/kernels/sort_small.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// ---- By digits ----

constexpr int kDigitBits = 8;
constexpr int kDigitValues = 1 << kDigitBits;

// Digits of a key, which count from 0 at the lowest key.
template <class Element>
ORBA_INLINE int digit_of(Key<Element> key, int digit) {
  using Bits = KeyBits<Element>;
  const Bits offset = static_cast<Bits>(key) - static_cast<Bits>(KeyOf<Element>::lowest);
  return static_cast<int>(offset >> (digit * kDigitBits) & (kDigitValues - 1));
}

// Least significant digit first; a digit that all keys share costs no pass.
template <class Element>
void radix_sort_keys(Key<Element>* x, int64_t n, Key<Element>* scratch) {
  constexpr int digits = 8 * sizeof(Element) / kDigitBits;
  if (n < 2) return;
  int64_t counts[digits][kDigitValues] = {};
  for (int64_t i = 0; i < n; ++i) {
    ORBA_UNROLL
    for (int d = 0; d < digits; ++d) ++counts[d][digit_of<Element>(x[i], d)];
  }
  Key<Element>*from = x, *to = scratch;
  for (int d = 0; d < digits; ++d) {
    if (counts[d][digit_of<Element>(x[0], d)] == n) continue;
    int64_t next = 0;
    for (int64_t& count : counts[d]) {
      const int64_t first = next;
      next += count;
      count = first;
    }
    for (int64_t i = 0; i < n; ++i) to[counts[d][digit_of<Element>(from[i], d)]++] = from[i];
    Key<Element>* const swap = from;
    from = to;
    to = swap;
  }
  if (from != x) __builtin_memcpy(x, from, static_cast<size_t>(n) * sizeof(Element));
}

// ---- By partition ----

// Moves the keys up to `bound` to the front and the others behind them; how many came to the front.
#if ORBA_CLASS >= 3
template <class Element>
int64_t partition(Key<Element>* x, int64_t n, Key<Element> bound, Key<Element>* scratch) {
  using L = KeyLanes<Element>;
  constexpr int unroll = 4;
  const auto limit = L::all(bound);
  int64_t low = 0, high = 0, i = 0;
  // Whole vectors are stored: what follows the wanted lanes lies below i + lanes, where everything
  // has been read already.
  for (; i + unroll * L::lanes <= n; i += unroll * L::lanes) {
    typename L::Vector v[unroll];
    ORBA_UNROLL
    for (int u = 0; u < unroll; ++u) v[u] = L::load(x + i + u * L::lanes);
    ORBA_UNROLL
    for (int u = 0; u < unroll; ++u) {
      const uint32_t above = L::above(v[u], limit);
      L::store(x + low, L::compress(v[u], ~above));
      L::store(scratch + high, L::compress(v[u], above));
      high += __builtin_popcount(above);
      low = i + (u + 1) * L::lanes - high;
    }
  }
  for (; i < n; i += L::lanes) {
    const int64_t live = n - i < L::lanes ? n - i : L::lanes;
    const auto v = L::load_partial(x + i, live, limit);
    const uint32_t above = L::above(v, limit);
    const int64_t above_count = __builtin_popcount(above);
    L::store_partial(x + low, live - above_count, L::compress(v, ~above));
    L::store_partial(scratch + high, above_count, L::compress(v, above));
    high += above_count;
    low += live - above_count;
  }
  __builtin_memcpy(x + low, scratch, static_cast<size_t>(high) * sizeof(Element));
  return low;
}
#else
template <class Element>
int64_t partition(Key<Element>* x, int64_t n, Key<Element> bound, Key<Element>* scratch) {
  int64_t low = 0, high = 0;
  for (int64_t i = 0; i < n; ++i) {
    const Key<Element> key = x[i];
    x[low] = key;
    scratch[high] = key;
    high += key > bound;
    low = i + 1 - high;
  }
  __builtin_memcpy(x + low, scratch, static_cast<size_t>(high) * sizeof(Element));
  return low;
}
#endif

// Median of a sample at multiples of the golden ratio, which leave no large gap and fall in step
// with no pattern of the data.
template <class Element>
Key<Element> choose_pivot(const Key<Element>* x, int64_t n) {
  constexpr int most = small_limit<Element> < 64 ? small_limit<Element> : 64;
  const int size = n < 1024 ? most / 4 : most;
  Key<Element> sample[most];
  uint64_t position = 0;  // in units of 2^-64 of the range
  for (int i = 0; i < size; ++i) {
    position += 0x9e3779b97f4a7c15;
    sample[i] = x[static_cast<int64_t>(
        (static_cast<unsigned __int128>(position) * static_cast<uint64_t>(n)) >> 64)];
  }
  sort_small<Element>(sample, size);
  return sample[size / 2];
}

// Parts of a range: keys up to a bound, keys above it.
template <class Element>
struct Split {
  int64_t low_count;
  bool low_is_done;      // its keys are all equal
  Key<Element> minimum;  // no key of the upper part is smaller
};

// A pivot above the known minimum goes to the upper part and becomes its minimum. When it comes up
// again there, the keys equal to it are split off as a part that is done: every distinct key costs
// at most two partitions, however often it occurs.
template <class Element>
Split<Element> split(Key<Element>* x, int64_t n, Key<Element> minimum, Key<Element>* scratch) {
  const Key<Element> pivot = choose_pivot<Element>(x, n);
  const bool again = pivot == minimum;
  const Key<Element> bound = again ? pivot : static_cast<Key<Element>>(pivot - 1);
  const int64_t low_count = partition<Element>(x, n, bound, scratch);
  const bool has_upper = low_count < n;
  return {low_count, again, has_upper ? static_cast<Key<Element>>(bound + 1) : bound};
}

inline int allowed_partitions(int64_t n) {
  return 2 * (64 - __builtin_clzll(static_cast<uint64_t>(n)));
}

// From this length on, ranges are faster by digits where the class has no vector partition.
template <class Element>
constexpr int64_t radix_from = ORBA_CLASS >= 3        ? INT64_MAX
                               : sizeof(Element) == 8 ? 256
                                                      : 64;

template <class Element>
void sort_range(Key<Element>* x, int64_t n, Key<Element> minimum, int partitions,
                Key<Element>* scratch) {
  while (n > small_limit<Element>) {
    if (partitions-- == 0 || n >= radix_from<Element>)
      return radix_sort_keys<Element>(x, n, scratch);
    const Split<Element> part = split<Element>(x, n, minimum, scratch);
    if (!part.low_is_done) {
      sort_range<Element>(x, part.low_count, minimum, partitions, scratch);
    }
    x += part.low_count;
    n -= part.low_count;
    minimum = part.minimum;
  }
  if (n > 1) sort_small<Element>(x, static_cast<int>(n));
}

// `origin` is the rank of x[0].
template <class Element>
void select_in_range(Key<Element>* x, int64_t n, int64_t origin, const int64_t* ranks,
                     int64_t count, Key<Element> minimum, int partitions, Key<Element>* scratch) {
  while (n > small_limit<Element>) {
    if (count == 0) return;
    if (partitions-- == 0) return radix_sort_keys<Element>(x, n, scratch);
    const Split<Element> part = split<Element>(x, n, minimum, scratch);
    int64_t low_ranks = 0, end = count;  // by bisection
    while (low_ranks < end) {
      const int64_t middle = low_ranks + (end - low_ranks) / 2;
      if (ranks[middle] < origin + part.low_count)
        low_ranks = middle + 1;
      else
        end = middle;
    }
    if (!part.low_is_done) {
      select_in_range<Element>(x, part.low_count, origin, ranks, low_ranks, minimum, partitions,
                               scratch);
    }
    x += part.low_count;
    n -= part.low_count;
    origin += part.low_count;
    ranks += low_ranks;
    count -= low_ranks;
    minimum = part.minimum;
  }
  if (n > 1 && count > 0) sort_small<Element>(x, static_cast<int>(n));
}

// ---- Entries ----

template <class Element>
ORBA_INLINE Key<Element>* keys_in(Element* x) {
  return reinterpret_cast<Key<Element>*>(x);
}

template <class Element>
ORBA_INLINE void sort(Element* x, int64_t n, Element* scratch) {
  if (n < 2) return;
  to_keys(x, n);
  sort_range<Element>(keys_in(x), n, KeyOf<Element>::lowest, allowed_partitions(n),
                      keys_in(scratch));
  from_keys(x, n);
}

template <class Element>
ORBA_INLINE void radix_sort(Element* x, int64_t n, Element* scratch) {
  to_keys(x, n);
  radix_sort_keys<Element>(keys_in(x), n, keys_in(scratch));
  from_keys(x, n);
}

template <class Element>
ORBA_INLINE void order_statistics_at(Element* x, int64_t n, const int64_t* ranks, int64_t count,
                                     Element* scratch) {
  if (n < 2 || count == 0) return;
  to_keys(x, n);
  select_in_range<Element>(keys_in(x), n, 0, ranks, count, KeyOf<Element>::lowest,
                           allowed_partitions(n), keys_in(scratch));
  from_keys(x, n);
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

#define ORBA_SORT_NAME_(class_name, t, name) orba_##class_name##_ss_##t##_##name
#define ORBA_SORT_NAME_EXPANDED(class_name, t, name) ORBA_SORT_NAME_(class_name, t, name)
#define ORBA_SORT_NAME(t, name) ORBA_SORT_NAME_EXPANDED(ORBA_CLASS_NAMESPACE, t, name)
#define ORBA_SORT_ENTRIES(t, Element)                                                        \
  extern "C" void ORBA_SORT_NAME(t, sort)(Element * x, int64_t n, Element * scratch) {       \
    orba::ORBA_CLASS_NAMESPACE::sort(x, n, scratch);                                         \
  }                                                                                          \
  extern "C" void ORBA_SORT_NAME(t, radix_sort)(Element * x, int64_t n, Element * scratch) { \
    orba::ORBA_CLASS_NAMESPACE::radix_sort(x, n, scratch);                                   \
  }                                                                                          \
  extern "C" void ORBA_SORT_NAME(t, order_statistics_at)(                                    \
      Element * x, int64_t n, const int64_t* ranks, int64_t count, Element* scratch) {       \
    orba::ORBA_CLASS_NAMESPACE::order_statistics_at(x, n, ranks, count, scratch);            \
  }

ORBA_SORT_ENTRIES(d, double)
ORBA_SORT_ENTRIES(s, float)
