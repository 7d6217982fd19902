// Elements as bits: arrays of any alignment, copies that leave signalling NaNs and the floating-point
// state as they are.
#pragma once

#include "vector/kernels/contract/kernel.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <int size>
struct BitsOf;
template <>
struct BitsOf<4> {
  using Type = uint32_t;
};
template <>
struct BitsOf<8> {
  using Type = uint64_t;
};
template <>
struct BitsOf<16> {
  struct Type {
    __m128i bits;
  };
};

template <class E>
using Bits = typename BitsOf<sizeof(E)>::Type;

template <class E>
ORBA_INLINE Bits<E> fetch(const E* p, int64_t i) {
  Bits<E> x;
  __builtin_memcpy(&x, reinterpret_cast<const char*>(p) + i * int64_t{sizeof(E)}, sizeof x);
  return x;
}
template <class E>
ORBA_INLINE void put(E* p, int64_t i, Bits<E> x) {
  __builtin_memcpy(reinterpret_cast<char*>(p) + i * int64_t{sizeof(E)}, &x, sizeof x);
}
ORBA_INLINE int64_t fetch_index(const int32_t* p, int64_t i) {
  return static_cast<int32_t>(fetch(p, i));
}

// 16 bytes of elements, the first one at p[place(i)].
template <class E, class Place>
ORBA_INLINE __m128i fetch_16_bytes(const E* p, Place place, int64_t i) {
  const auto at = [=](int k) {
    return reinterpret_cast<const char*>(p) + place(i + k) * int64_t{sizeof(E)};
  };
  if constexpr (sizeof(E) == 4) {
    const auto lane = [=](int k) {
      return _mm_cvtsi32_si128(static_cast<int32_t>(fetch(p, place(i + k))));
    };
    return _mm_unpacklo_epi64(_mm_unpacklo_epi32(lane(0), lane(1)),
                              _mm_unpacklo_epi32(lane(2), lane(3)));
  } else if constexpr (sizeof(E) == 8) {
    const __m128i low = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(at(0)));
    return _mm_castps_si128(
        _mm_loadh_pi(_mm_castsi128_ps(low), reinterpret_cast<const __m64*>(at(1))));
  } else {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at(0)));
  }
}

// y[i] = a[place(i)] for i = 0 ... n - 1.
template <class E, class Place>
ORBA_INLINE void gather(int64_t n, const E* a, Place place, E* y) {
  constexpr int64_t step = 16 / sizeof(E);
  int64_t i = 0;
  for (; i + 2 * step <= n; i += 2 * step) {
    const __m128i x0 = fetch_16_bytes(a, place, i);
    const __m128i x1 = fetch_16_bytes(a, place, i + step);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(y + i), x0);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(y + i + step), x1);
  }
  for (; i < n; ++i) put(y, i, fetch(a, place(i)));
}

// y[place(i)] = a[i] for i = 0 ... n - 1, in this order.
template <class E, class Place>
ORBA_INLINE void scatter(int64_t n, const E* a, E* y, Place place) {
  constexpr int step = 4;
  int64_t i = 0;
  for (; i + step <= n; i += step) {
    Bits<E> x[step];
    int64_t at[step];
    ORBA_UNROLL
    for (int u = 0; u < step; ++u) x[u] = fetch(a, i + u), at[u] = place(i + u);
    ORBA_UNROLL
    for (int u = 0; u < step; ++u) put(y, at[u], x[u]);
  }
  for (; i < n; ++i) put(y, place(i), fetch(a, i));
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

#define ORBA_PACKING_KERNEL(shape, t, Name, function, ...) \
  ORBA_KERNEL_ENTRY(shape, t, Name, ALL) { orba::ORBA_CLASS_NAMESPACE::function(n, __VA_ARGS__); }
#define ORBA_PACKING_KERNELS(shape, Name, function, ...)     \
  ORBA_PACKING_KERNEL(shape, s, Name, function, __VA_ARGS__) \
  ORBA_PACKING_KERNEL(shape, d, Name, function, __VA_ARGS__) \
  ORBA_PACKING_KERNEL(shape, c, Name, function, __VA_ARGS__) \
  ORBA_PACKING_KERNEL(shape, z, Name, function, __VA_ARGS__)
