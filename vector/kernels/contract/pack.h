// A pack is one step's worth of elements of an array: one vector of reals, or two vectors that hold
// as many (re, im) pairs in memory order. PackOf tells the pack of an element type.
#pragma once

#include "vector/kernels/simd/simd.h"
#include "vector/words/shapes.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Fills dead lanes unless a function says otherwise: a value in range for every function.
constexpr double kFiller = 0.75;

template <class V>
struct Pairs {
  using Element = typename V::Element;
  V lo, hi;
};

template <class V>
struct Complex {
  V re, im;
};

template <class V>
ORBA_INLINE Complex<V> split(Pairs<V> p) {
  Complex<V> z;
  deinterleave(p.lo, p.hi, z.re, z.im);
  return z;
}
template <class V>
ORBA_INLINE Pairs<V> join(Complex<V> z) {
  Pairs<V> p;
  interleave(z.re, z.im, p.lo, p.hi);
  return p;
}

// Twice as many doubles in two vectors: a pack for functions that work on the high words of
// doubles, which then fill one vector of 32-bit lanes.
template <class V>
struct Wide {
  V lo, hi;
};

// The high words of a wide pack in one vector, and back into doubles with zero low words. Their
// order is that of the cheapest shuffle; WordMask is a mask of lanes in that order.
struct WordMask {
  M32 v;
};
ORBA_INLINE WordMask operator|(WordMask a, WordMask b) { return {a.v | b.v}; }
ORBA_INLINE bool any(WordMask m) { return any(m.v); }
#if ORBA_CLASS < 3
ORBA_INLINE I32 high_words(Wide<F64> x) {
  return _mm_castps_si128(
      _mm_shuffle_ps(_mm_castpd_ps(x.lo.v), _mm_castpd_ps(x.hi.v), _MM_SHUFFLE(3, 1, 3, 1)));
}
ORBA_INLINE Wide<F64> from_high_words(I32 words) {
  const __m128i zero = _mm_setzero_si128();
  return {_mm_castsi128_pd(_mm_unpacklo_epi32(zero, words.v)),
          _mm_castsi128_pd(_mm_unpackhi_epi32(zero, words.v))};
}
#elif ORBA_CLASS == 3
ORBA_INLINE I32 high_words(Wide<F64> x) {
  return _mm256_castps_si256(_mm256_shuffle_ps(_mm256_castpd_ps(x.lo.v), _mm256_castpd_ps(x.hi.v),
                                               _MM_SHUFFLE(3, 1, 3, 1)));
}
ORBA_INLINE Wide<F64> from_high_words(I32 words) {
  const __m256i zero = _mm256_setzero_si256();
  return {_mm256_castsi256_pd(_mm256_unpacklo_epi32(zero, words.v)),
          _mm256_castsi256_pd(_mm256_unpackhi_epi32(zero, words.v))};
}
#endif

// Flags of pairs in memory order; an element is flagged when either part is.
template <class M>
struct PairMask {
  M lo, hi;
};
template <class M>
ORBA_INLINE PairMask<M> operator|(PairMask<M> a, PairMask<M> b) {
  return {a.lo | b.lo, a.hi | b.hi};
}
template <class M>
ORBA_INLINE bool any(PairMask<M> m) {
  return any(m.lo | m.hi);
}

// Flags of a function that has none: it needs no callout.
struct NoFlag {};
ORBA_INLINE NoFlag operator|(NoFlag, NoFlag) { return {}; }

template <class E>
struct PackOf;
template <>
struct PackOf<float> {
  using Pack = F32;
  using Part = float;
};
template <>
struct PackOf<double> {
  using Pack = F64;
  using Part = double;
};
template <>
struct PackOf<KamComplex8> {
  using Pack = Pairs<F32>;
  using Part = float;
};
template <>
struct PackOf<KamComplex16> {
  using Pack = Pairs<F64>;
  using Part = double;
};

template <class E>
constexpr bool is_complex = !__is_same(E, typename PackOf<E>::Part);

// Elements of a pack, the same for reals and pairs of one precision.
template <class E>
constexpr int pack_size = sizeof(typename PackOf<E>::Part) == 8 ? F64::lanes : F32::lanes;

ORBA_INLINE const float* parts(const KamComplex8* p) { return reinterpret_cast<const float*>(p); }
ORBA_INLINE float* parts(KamComplex8* p) { return reinterpret_cast<float*>(p); }
ORBA_INLINE const double* parts(const KamComplex16* p) {
  return reinterpret_cast<const double*>(p);
}
ORBA_INLINE double* parts(KamComplex16* p) { return reinterpret_cast<double*>(p); }

ORBA_INLINE F32 load_pack(const float* p) { return load(p); }
ORBA_INLINE F64 load_pack(const double* p) { return load(p); }
ORBA_INLINE void store_pack(float* p, F32 x) { store(p, x); }
ORBA_INLINE void store_pack(double* p, F64 x) { store(p, x); }
template <class E>
ORBA_INLINE typename PackOf<E>::Pack load_pack(const E* p) {
  return {load(parts(p)), load(parts(p) + pack_size<E>)};
}
template <class E, class V>
ORBA_INLINE void store_pack(E* p, Pairs<V> x) {
  store(parts(p), x.lo);
  store(parts(p) + pack_size<E>, x.hi);
}

ORBA_INLINE void store_pack(double* p, Wide<F64> x) {
  store(p, x.lo);
  store(p + F64::lanes, x.hi);
}

// `live` elements, 1 to the size of the pack less one; the parts of the others are `filler`.
ORBA_INLINE F32 load_pack(const float* p, int live, double filler) {
  return load_partial(p, live, static_cast<float>(filler));
}
ORBA_INLINE F64 load_pack(const double* p, int live, double filler) {
  return load_partial(p, live, filler);
}
ORBA_INLINE void store_pack(float* p, int live, F32 x) { store_partial(p, live, x); }
ORBA_INLINE void store_pack(double* p, int live, F64 x) { store_partial(p, live, x); }
template <class Two, class Part>
ORBA_INLINE Two load_two(const Part* p, int live, double fill) {
  constexpr int size = sizeof(Part) == 8 ? F64::lanes : F32::lanes;
  const Part filler = static_cast<Part>(fill);
  Two pack;
  pack.hi = filler;
  if (live < size) {
    pack.lo = load_partial(p, live, filler);
  } else {
    pack.lo = load(p);
    if (live > size) pack.hi = load_partial(p + size, live - size, filler);
  }
  return pack;
}
template <class Two, class Part>
ORBA_INLINE void store_two(Part* p, int live, Two x) {
  constexpr int size = sizeof(Part) == 8 ? F64::lanes : F32::lanes;
  if (live < size) {
    store_partial(p, live, x.lo);
  } else {
    store(p, x.lo);
    if (live > size) store_partial(p + size, live - size, x.hi);
  }
}
template <class E>
ORBA_INLINE typename PackOf<E>::Pack load_pack(const E* p, int live, double filler) {
  return load_two<typename PackOf<E>::Pack>(parts(p), 2 * live, filler);
}
template <class E, class V>
ORBA_INLINE void store_pack(E* p, int live, Pairs<V> x) {
  store_two(parts(p), 2 * live, x);
}
ORBA_INLINE void store_pack(double* p, int live, Wide<F64> x) { store_two(p, live, x); }

// Elements of x where the mask is set, else those of y.
template <class M, class V>
ORBA_INLINE V merge(M m, V x, V y) {
  return select(m, x, y);
}
template <class M, class V>
ORBA_INLINE Pairs<V> merge(M m, Pairs<V> x, Pairs<V> y) {
  const Complex<V> u = split(x), v = split(y);
  return join(Complex<V>{select(m, u.re, v.re), select(m, u.im, v.im)});
}

// Bit i of the result is the flag of element i of the pack.
ORBA_INLINE uint32_t element_bits(M64 m) { return bits(m); }
ORBA_INLINE uint32_t element_bits(M32 m) { return bits(m); }
ORBA_INLINE uint32_t element_bits(WordMask m) {
  const uint32_t b = bits(m.v);
  if constexpr (kClass != 3) return b;
  return (b & 0xc3) | (b & 0x30) >> 2 | (b & 0x0c) << 2;  // words 0 1 4 5 2 3 6 7
}
ORBA_INLINE uint32_t element_bits_of_parts(uint64_t part_bits) {
  uint32_t result = 0;
  for (int i = 0; i < 32; ++i) result |= ((part_bits >> (2 * i)) & 3) != 0 ? 1u << i : 0u;
  return result;
}
ORBA_INLINE uint32_t element_bits(PairMask<M64> m) {
  return element_bits_of_parts(bits(m.lo) | static_cast<uint64_t>(bits(m.hi)) << F64::lanes);
}
ORBA_INLINE uint32_t element_bits(PairMask<M32> m) {
  return element_bits_of_parts(bits(m.lo) | static_cast<uint64_t>(bits(m.hi)) << F32::lanes);
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
