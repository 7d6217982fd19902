// Vectors of keys, as sorting uses them, on the classes whose instructions can partition a vector.
//
//   load_partial, store_partial   `live` lanes take part: none below 1, all above the lane count
//   sort_two(a, b)                the smaller keys to a, the larger ones to b
//   mirror<k>(v)                  lanes in reverse order within every block of k
//   swap_halves<k>(v)             the halves of every block of k exchanged; k below the lane count
//   join_halves<k>(a, b)          of every block of k, the first half from a, the second from b
//   above(v, b)                   bit mask of the lanes with v > b
//   compress(v, mask)             lanes of the mask moved to the front, in order; bits beyond the
//                                 lanes don't count
#pragma once

#include "statistics/summary/kernels/sort_keys.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class Element>
struct KeyLanes;

// Mask of the lanes in the second half of their block of k.
template <int k>
constexpr uint32_t second_halves(int lanes) {
  uint32_t mask = 0;
  for (int i = 0; i < lanes; ++i) mask |= (i % k >= k / 2 ? 1u : 0u) << i;
  return mask;
}

#if ORBA_CLASS == 5

// Operations are spelled with a mask of all lanes: g++ 12 warns of the undefined operand in its own
// forms without one. Both compile to the same instruction.

template <>
struct KeyLanes<double> {
  using Vector = __m512i;
  static constexpr int lanes = 8;
  // Rows of the largest sorting network.
  static constexpr int rows = 16;
  static constexpr __mmask8 every = 0xff;
  static constexpr __mmask16 every_word = 0xffff;

  ORBA_INLINE static Vector all(int64_t x) { return _mm512_set1_epi64(x); }
  ORBA_INLINE static Vector load(const Key<double>* p) { return _mm512_loadu_si512(p); }
  ORBA_INLINE static void store(Key<double>* p, Vector v) { _mm512_storeu_si512(p, v); }
  ORBA_INLINE static __mmask8 first(int64_t live) {
    return _mm512_cmpgt_epi64_mask(all(live), _mm512_setr_epi64(0, 1, 2, 3, 4, 5, 6, 7));
  }
  ORBA_INLINE static Vector load_partial(const Key<double>* p, int64_t live, Vector fill) {
    return _mm512_mask_loadu_epi64(fill, first(live), p);
  }
  ORBA_INLINE static void store_partial(Key<double>* p, int64_t live, Vector v) {
    _mm512_mask_storeu_epi64(p, first(live), v);
  }
  ORBA_INLINE static void sort_two(Vector& a, Vector& b) {
    const Vector low = _mm512_maskz_min_epi64(every, a, b);
    b = _mm512_maskz_max_epi64(every, a, b);
    a = low;
  }
  template <int k>
  ORBA_INLINE static Vector mirror(Vector v) {
    if constexpr (k == 2)
      return _mm512_maskz_shuffle_epi32(every_word, v, _MM_PERM_BADC);
    else if constexpr (k == 4)
      return _mm512_maskz_permutex_epi64(every, v, 0x1b);
    else
      return _mm512_maskz_permutexvar_epi64(every, _mm512_setr_epi64(7, 6, 5, 4, 3, 2, 1, 0), v);
  }
  template <int k>
  ORBA_INLINE static Vector swap_halves(Vector v) {
    if constexpr (k == 2)
      return mirror<2>(v);
    else
      return _mm512_maskz_permutex_epi64(every, v, 0x4e);
  }
  template <int k>
  ORBA_INLINE static Vector join_halves(Vector a, Vector b) {
    return _mm512_mask_blend_epi64(second_halves<k>(lanes), a, b);
  }
  ORBA_INLINE static uint32_t above(Vector v, Vector bound) {
    return _mm512_cmpgt_epi64_mask(v, bound);
  }
  ORBA_INLINE static Vector compress(Vector v, uint32_t mask) {
    return _mm512_maskz_compress_epi64(static_cast<__mmask8>(mask), v);
  }
};

template <>
struct KeyLanes<float> {
  using Vector = __m512i;
  static constexpr int lanes = 16;
  static constexpr int rows = 16;
  static constexpr __mmask16 every = 0xffff;
  static constexpr __mmask8 every_pair = 0xff;

  ORBA_INLINE static Vector all(int32_t x) { return _mm512_set1_epi32(x); }
  ORBA_INLINE static Vector load(const Key<float>* p) { return _mm512_loadu_si512(p); }
  ORBA_INLINE static void store(Key<float>* p, Vector v) { _mm512_storeu_si512(p, v); }
  ORBA_INLINE static __mmask16 first(int64_t live) {
    return _mm512_cmpgt_epi32_mask(
        all(static_cast<int32_t>(live)),
        _mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
  }
  ORBA_INLINE static Vector load_partial(const Key<float>* p, int64_t live, Vector fill) {
    return _mm512_mask_loadu_epi32(fill, first(live), p);
  }
  ORBA_INLINE static void store_partial(Key<float>* p, int64_t live, Vector v) {
    _mm512_mask_storeu_epi32(p, first(live), v);
  }
  ORBA_INLINE static void sort_two(Vector& a, Vector& b) {
    const Vector low = _mm512_maskz_min_epi32(every, a, b);
    b = _mm512_maskz_max_epi32(every, a, b);
    a = low;
  }
  template <int k>
  ORBA_INLINE static Vector mirror(Vector v) {
    if constexpr (k == 2)
      return _mm512_maskz_shuffle_epi32(every, v, _MM_PERM_CDAB);
    else if constexpr (k == 4)
      return _mm512_maskz_shuffle_epi32(every, v, _MM_PERM_ABCD);
    else if constexpr (k == 8)
      return _mm512_maskz_permutexvar_epi32(
          every, _mm512_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0, 15, 14, 13, 12, 11, 10, 9, 8), v);
    else
      return _mm512_maskz_permutexvar_epi32(
          every, _mm512_setr_epi32(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0), v);
  }
  template <int k>
  ORBA_INLINE static Vector swap_halves(Vector v) {
    if constexpr (k == 2)
      return mirror<2>(v);
    else if constexpr (k == 4)
      return _mm512_maskz_shuffle_epi32(every, v, _MM_PERM_BADC);
    else
      return _mm512_maskz_permutex_epi64(every_pair, v, 0x4e);
  }
  template <int k>
  ORBA_INLINE static Vector join_halves(Vector a, Vector b) {
    return _mm512_mask_blend_epi32(second_halves<k>(lanes), a, b);
  }
  ORBA_INLINE static uint32_t above(Vector v, Vector bound) {
    return _mm512_cmpgt_epi32_mask(v, bound);
  }
  ORBA_INLINE static Vector compress(Vector v, uint32_t mask) {
    return _mm512_maskz_compress_epi32(static_cast<__mmask16>(mask), v);
  }
};

#elif ORBA_CLASS == 3

// For every mask of `lanes` lanes, the permutation of 32-bit words that moves those lanes to the
// front, in order.
template <int lanes>
struct CompressTable {
  static constexpr int words = 8 / lanes;  // of a lane
  uint8_t row[1 << lanes][8];
  constexpr CompressTable() : row() {
    for (int mask = 0; mask < 1 << lanes; ++mask) {
      int at = 0;
      for (int lane = 0; lane < lanes; ++lane) {
        if ((mask >> lane & 1) == 0) continue;
        for (int word = 0; word < words; ++word)
          row[mask][at++] = static_cast<uint8_t>(lane * words + word);
      }
    }
  }
};
template <int lanes>
constexpr CompressTable<lanes> compress_table{};

template <int lanes>
ORBA_INLINE __m256i compress_lanes(__m256i v, uint32_t mask) {
  const auto* row =
      reinterpret_cast<const __m128i*>(compress_table<lanes>.row[mask & ((1u << lanes) - 1)]);
  return _mm256_permutevar8x32_epi32(v, _mm256_cvtepu8_epi32(_mm_loadl_epi64(row)));
}

template <>
struct KeyLanes<double> {
  using Vector = __m256i;
  static constexpr int lanes = 4;
  static constexpr int rows = 16;

  ORBA_INLINE static Vector all(int64_t x) { return _mm256_set1_epi64x(x); }
  ORBA_INLINE static Vector load(const Key<double>* p) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
  }
  ORBA_INLINE static void store(Key<double>* p, Vector v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v);
  }
  ORBA_INLINE static Vector first(int64_t live) {
    return _mm256_cmpgt_epi64(all(live), _mm256_setr_epi64x(0, 1, 2, 3));
  }
  ORBA_INLINE static Vector load_partial(const Key<double>* p, int64_t live, Vector fill) {
    const Vector m = first(live);
    const Vector v = _mm256_maskload_epi64(reinterpret_cast<const long long*>(p), m);
    return _mm256_blendv_epi8(fill, v, m);
  }
  ORBA_INLINE static void store_partial(Key<double>* p, int64_t live, Vector v) {
    _mm256_maskstore_epi64(reinterpret_cast<long long*>(p), first(live), v);
  }
  ORBA_INLINE static void sort_two(Vector& a, Vector& b) {
    const Vector swap = _mm256_cmpgt_epi64(a, b);
    const Vector low = _mm256_blendv_epi8(a, b, swap);
    b = _mm256_blendv_epi8(b, a, swap);
    a = low;
  }
  template <int k>
  ORBA_INLINE static Vector mirror(Vector v) {
    if constexpr (k == 2)
      return _mm256_shuffle_epi32(v, 0x4e);
    else
      return _mm256_permute4x64_epi64(v, 0x1b);
  }
  template <int k>
  ORBA_INLINE static Vector swap_halves(Vector v) {
    return mirror<2>(v);
  }
  template <int k>
  ORBA_INLINE static Vector join_halves(Vector a, Vector b) {
    constexpr auto second = static_cast<int>(second_halves<2 * k>(2 * lanes));
    return _mm256_blend_epi32(a, b, second);
  }
  ORBA_INLINE static uint32_t above(Vector v, Vector bound) {
    return static_cast<uint32_t>(
        _mm256_movemask_pd(_mm256_castsi256_pd(_mm256_cmpgt_epi64(v, bound))));
  }
  ORBA_INLINE static Vector compress(Vector v, uint32_t mask) {
    return compress_lanes<lanes>(v, mask);
  }
};

template <>
struct KeyLanes<float> {
  using Vector = __m256i;
  static constexpr int lanes = 8;
  static constexpr int rows = 16;

  ORBA_INLINE static Vector all(int32_t x) { return _mm256_set1_epi32(x); }
  ORBA_INLINE static Vector load(const Key<float>* p) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
  }
  ORBA_INLINE static void store(Key<float>* p, Vector v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v);
  }
  ORBA_INLINE static Vector first(int64_t live) {
    return _mm256_cmpgt_epi32(all(static_cast<int32_t>(live)),
                              _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7));
  }
  ORBA_INLINE static Vector load_partial(const Key<float>* p, int64_t live, Vector fill) {
    const Vector m = first(live);
    return _mm256_blendv_epi8(fill, _mm256_maskload_epi32(p, m), m);
  }
  ORBA_INLINE static void store_partial(Key<float>* p, int64_t live, Vector v) {
    _mm256_maskstore_epi32(p, first(live), v);
  }
  ORBA_INLINE static void sort_two(Vector& a, Vector& b) {
    const Vector low = _mm256_min_epi32(a, b);
    b = _mm256_max_epi32(a, b);
    a = low;
  }
  template <int k>
  ORBA_INLINE static Vector mirror(Vector v) {
    if constexpr (k == 2)
      return _mm256_shuffle_epi32(v, 0xb1);
    else if constexpr (k == 4)
      return _mm256_shuffle_epi32(v, 0x1b);
    else
      return _mm256_permutevar8x32_epi32(v, _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0));
  }
  template <int k>
  ORBA_INLINE static Vector swap_halves(Vector v) {
    if constexpr (k == 2)
      return mirror<2>(v);
    else
      return _mm256_shuffle_epi32(v, 0x4e);
  }
  template <int k>
  ORBA_INLINE static Vector join_halves(Vector a, Vector b) {
    constexpr auto second = static_cast<int>(second_halves<k>(lanes));
    return _mm256_blend_epi32(a, b, second);
  }
  ORBA_INLINE static uint32_t above(Vector v, Vector bound) {
    return static_cast<uint32_t>(
        _mm256_movemask_ps(_mm256_castsi256_ps(_mm256_cmpgt_epi32(v, bound))));
  }
  ORBA_INLINE static Vector compress(Vector v, uint32_t mask) {
    return compress_lanes<lanes>(v, mask);
  }
};

#endif

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
