// Running extremes of rows and columns, in one pass.
//
// In every comparison the new value comes first: of two operands that have no order the second one,
// the running extreme, stays.
#include "vector/kernels/simd/simd.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class Element>
struct VectorOf;
template <>
struct VectorOf<double> {
  using Type = F64;
};
template <>
struct VectorOf<float> {
  using Type = F32;
};

template <class Element>
ORBA_INLINE Element lower(Element x, Element lowest) {
  return x < lowest ? x : lowest;
}
template <class Element>
ORBA_INLINE Element higher(Element x, Element highest) {
  return x > highest ? x : highest;
}

template <class Element>
void extremes_of_row(const Element* x, int64_t n, Element* lowest, Element* highest) {
  using V = typename VectorOf<Element>::Type;
  constexpr int chains = 4, round = chains * V::lanes;  // enough to hide the latency of min
  Element low = *lowest, high = *highest;
  int64_t i = 0;
  if (n >= round) {
    V lows[chains], highs[chains];
    ORBA_UNROLL for (int k = 0; k < chains; ++k) {
      lows[k] = V(low);
      highs[k] = V(high);
    }
    for (; i + round <= n; i += round) {
      ORBA_UNROLL for (int k = 0; k < chains; ++k) {
        const V v = load(x + i + k * V::lanes);
        lows[k] = min(v, lows[k]);
        highs[k] = max(v, highs[k]);
      }
    }
    Element rest_low[round], rest_high[round];
    for (int k = 0; k < chains; ++k) {
      store(rest_low + k * V::lanes, lows[k]);
      store(rest_high + k * V::lanes, highs[k]);
    }
    for (int k = 0; k < round; ++k) {
      low = lower(rest_low[k], low);
      high = higher(rest_high[k], high);
    }
  }
  for (; i < n; ++i) {
    low = lower(x[i], low);
    high = higher(x[i], high);
  }
  *lowest = low;
  *highest = high;
}

// Takes `rows` rows of `width` numbers at once, so that the running extremes move through the cache
// once for all of them.
template <int rows, class Element>
ORBA_INLINE void take_rows(const Element* x, int64_t width, Element* lowest, Element* highest) {
  using V = typename VectorOf<Element>::Type;
  if (width < V::lanes) {
    for (int row = 0; row < rows; ++row) {
      for (int64_t j = 0; j < width; ++j) {
        lowest[j] = lower(x[row * width + j], lowest[j]);
        highest[j] = higher(x[row * width + j], highest[j]);
      }
    }
    return;
  }
  const auto take_columns = [&](int64_t j) {
    V low = load(lowest + j), high = load(highest + j);
    ORBA_UNROLL for (int row = 0; row < rows; ++row) {
      const V v = load(x + row * width + j);
      low = min(v, low);
      high = max(v, high);
    }
    store(lowest + j, low);
    store(highest + j, high);
  };
  int64_t j = 0;
  for (; j + V::lanes <= width; j += V::lanes) take_columns(j);
  if (j < width) take_columns(width - V::lanes);  // what is taken twice changes nothing
}

template <class Element>
void extremes_of_wide_rows(const Element* x, int64_t n, int64_t width, Element* lowest,
                           Element* highest) {
  constexpr int at_once = 8;
  int64_t i = 0;
  for (; i + at_once <= n; i += at_once) {
    take_rows<at_once>(x + i * width, width, lowest, highest);
  }
  for (; i < n; ++i) take_rows<1>(x + i * width, width, lowest, highest);
}

template <class Element>
void extremes_of_columns(const Element* x, int64_t n, int64_t p, Element* lowest,
                         Element* highest) {
  // Short rows: as many as a vector has lanes count as one long row, a whole number of vectors.
  constexpr int64_t longest = 512, joined = VectorOf<Element>::Type::lanes;
  int64_t done = 0;
  if (p * joined <= longest) {
    Element low[longest], high[longest];
    for (int64_t k = 0; k < joined; ++k) {
      for (int64_t j = 0; j < p; ++j) {
        low[k * p + j] = lowest[j];
        high[k * p + j] = highest[j];
      }
    }
    extremes_of_wide_rows(x, n / joined, p * joined, low, high);
    done = n / joined * joined;
    for (int64_t k = 0; k < joined; ++k) {
      for (int64_t j = 0; j < p; ++j) {
        lowest[j] = lower(low[k * p + j], lowest[j]);
        highest[j] = higher(high[k * p + j], highest[j]);
      }
    }
  }
  extremes_of_wide_rows(x + done * p, n - done, p, lowest, highest);
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

#define ORBA_EXTREMES_NAME_(build, t, name) orba_##build##_ss_##t##_extremes_of_##name
#define ORBA_EXTREMES_NAME_EXPANDED(build, t, name) ORBA_EXTREMES_NAME_(build, t, name)
#define ORBA_EXTREMES_NAME(t, name) ORBA_EXTREMES_NAME_EXPANDED(ORBA_CLASS_NAMESPACE, t, name)
#define ORBA_EXTREMES(t, Element)                                                          \
  extern "C" void ORBA_EXTREMES_NAME(t, row)(const Element* x, int64_t n, Element* lowest, \
                                             Element* highest) {                           \
    orba::ORBA_CLASS_NAMESPACE::extremes_of_row(x, n, lowest, highest);                    \
  }                                                                                        \
  extern "C" void ORBA_EXTREMES_NAME(t, columns)(const Element* x, int64_t n, int64_t p,   \
                                                 Element* lowest, Element* highest) {      \
    orba::ORBA_CLASS_NAMESPACE::extremes_of_columns(x, n, p, lowest, highest);             \
  }

ORBA_EXTREMES(d, double)
ORBA_EXTREMES(s, float)
