// PackM, UnpackM: elements that a mask selects. No element that it leaves out is read or written.
//
//   class 5   a vector at a time: compressed in a register, or expanded, and stored under a mask.
//             (Compressing straight to memory is slow on some processors.)
//   others    the places of the selected elements of a block are listed without a branch and copied as
//             by an index vector: a mask without a pattern would else cost a wrongly predicted branch
//             for every second element.
#include "vector/kernels/packing/elements.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

#if ORBA_CLASS == 5

// Vectors of 32-bit and of 64-bit lanes; a bit for each lane tells which take part.
struct Lanes32 {
  using Set = __mmask16;
  static constexpr int bytes = 4;
  static __m512i load(Set lanes, const void* p) { return _mm512_maskz_loadu_epi32(lanes, p); }
  static void store(void* p, Set lanes, __m512i x) { _mm512_mask_storeu_epi32(p, lanes, x); }
  static __m512i compress(Set lanes, __m512i x) { return _mm512_maskz_compress_epi32(lanes, x); }
  static __m512i expand(Set lanes, __m512i x) { return _mm512_maskz_expand_epi32(lanes, x); }
};
struct Lanes64 {
  using Set = __mmask8;
  static constexpr int bytes = 8;
  static __m512i load(Set lanes, const void* p) { return _mm512_maskz_loadu_epi64(lanes, p); }
  static void store(void* p, Set lanes, __m512i x) { _mm512_mask_storeu_epi64(p, lanes, x); }
  static __m512i compress(Set lanes, __m512i x) { return _mm512_maskz_compress_epi64(lanes, x); }
  static __m512i expand(Set lanes, __m512i x) { return _mm512_maskz_expand_epi64(lanes, x); }
};

// Vectors of elements of a size, and the lanes of those that the next entries of a mask select.
template <int size>
struct Vector;
template <>
struct Vector<4> : Lanes32 {
  static Set selected(__mmask16 entries, const void* mask) {
    const __m512i x = _mm512_maskz_loadu_epi32(entries, mask);
    return _mm512_test_epi32_mask(x, x);
  }
};
template <>
struct Vector<8> : Lanes64 {
  static Set selected(__mmask16 entries, const void* mask) {
    const __m256i x = _mm256_maskz_loadu_epi32(static_cast<__mmask8>(entries), mask);
    return _mm256_test_epi32_mask(x, x);
  }
};
template <>
struct Vector<16> : Lanes64 {
  static Set selected(__mmask16 entries, const void* mask) {
    const __m512i four_times = _mm512_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3);
    const __m512i x =
        _mm512_zextsi128_si512(_mm_maskz_loadu_epi32(static_cast<__mmask8>(entries), mask));
    const __m512i y = _mm512_maskz_permutexvar_epi32(0xffff, four_times, x);
    return _mm512_test_epi64_mask(y, y);
  }
};

template <class Set>
ORBA_INLINE Set first(int64_t count) {
  return static_cast<Set>((1u << count) - 1);
}

// Calls step(i, j, lanes, dense) for each vector: where it begins, in bytes, among all elements and
// among the selected ones, the lanes of its selected elements, and as many lanes from the first one on.
template <int size, class Step>
ORBA_INLINE void for_each_vector(int64_t n, const int32_t* mask, Step step) {
  using V = Vector<size>;
  using Set = typename V::Set;
  constexpr int64_t elements = 64 / size;
  const char* m = reinterpret_cast<const char*>(mask);
  int64_t j = 0;
  for (int64_t i = 0; n > 0; n -= elements, i += 64, m += sizeof(int32_t) * elements) {
    const Set lanes = V::selected(first<__mmask16>(n < elements ? n : elements), m);
    const int found = __builtin_popcount(lanes);
    step(i, j, lanes, first<Set>(found));
    j += found * V::bytes;
  }
}

template <class E>
ORBA_INLINE void pack_mask(int64_t n, const E* a, const int32_t* ma, E* y) {
  using V = Vector<sizeof(E)>;
  const char* from = reinterpret_cast<const char*>(a);
  char* to = reinterpret_cast<char*>(y);
  for_each_vector<sizeof(E)>(n, ma, [=](int64_t i, int64_t j, auto lanes, auto dense) {
    V::store(to + j, dense, V::compress(lanes, V::load(lanes, from + i)));
  });
}
template <class E>
ORBA_INLINE void unpack_mask(int64_t n, const E* a, E* y, const int32_t* my) {
  using V = Vector<sizeof(E)>;
  const char* from = reinterpret_cast<const char*>(a);
  char* to = reinterpret_cast<char*>(y);
  for_each_vector<sizeof(E)>(n, my, [=](int64_t i, int64_t j, auto lanes, auto dense) {
    V::store(to + i, lanes, V::expand(lanes, V::load(dense, from + j)));
  });
}

#else

// Calls step(first, found, places) for each block of elements: the number of selected elements before
// it, of those in it, and their places.
template <class Step>
ORBA_INLINE void for_each_block(int64_t n, const int32_t* mask, Step step) {
  constexpr int64_t size = 128;
  int32_t places[size];
  int64_t first = 0;
  for (int64_t begin = 0; begin < n; begin += size) {
    const int64_t end = n - begin < size ? n : begin + size;
    int64_t found = 0;
    for (int64_t i = begin; i < end; ++i) {
      places[found] = static_cast<int32_t>(i);
      found += fetch(mask, i) != 0;
    }
    step(first, found, places);
    first += found;
  }
}

template <class E>
ORBA_INLINE void pack_mask(int64_t n, const E* a, const int32_t* ma, E* y) {
  for_each_block(n, ma, [=](int64_t first, int64_t found, const int32_t* places) {
    gather(
        found, a, [places](int64_t i) { return places[i]; }, y + first);
  });
}
template <class E>
ORBA_INLINE void unpack_mask(int64_t n, const E* a, E* y, const int32_t* my) {
  for_each_block(n, my, [=](int64_t first, int64_t found, const int32_t* places) {
    scatter(found, a + first, y, [places](int64_t i) { return places[i]; });
  });
}

#endif

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_PACKING_KERNELS(pack_mask, PackM, pack_mask, a, ma, y)
ORBA_PACKING_KERNELS(unpack_mask, UnpackM, unpack_mask, a, y, my)
