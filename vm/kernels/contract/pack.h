// A pack is one step's worth of elements of an array: one vector of reals, or two vectors that hold
// as many (re, im) pairs in memory order. PackOf tells the pack of an element type.
#pragma once

#include "vm/frame/shapes.h"
#include "vm/kernels/simd/simd.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Fills dead lanes: a value in range for every function.
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

template <class E> struct PackOf;
template <> struct PackOf<float> { using Pack = F32; using Part = float; };
template <> struct PackOf<double> { using Pack = F64; using Part = double; };
template <> struct PackOf<KamComplex8> { using Pack = Pairs<F32>; using Part = float; };
template <> struct PackOf<KamComplex16> { using Pack = Pairs<F64>; using Part = double; };

// Elements of a pack, the same for reals and pairs of one precision.
template <class E>
constexpr int pack_size = sizeof(typename PackOf<E>::Part) == 8 ? F64::lanes : F32::lanes;

ORBA_INLINE const float* parts(const KamComplex8* p) { return reinterpret_cast<const float*>(p); }
ORBA_INLINE float* parts(KamComplex8* p) { return reinterpret_cast<float*>(p); }
ORBA_INLINE const double* parts(const KamComplex16* p) { return reinterpret_cast<const double*>(p); }
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

// `live` elements, 1 to the size of the pack less one.
ORBA_INLINE F32 load_pack(const float* p, int live) { return load_partial(p, live, static_cast<float>(kFiller)); }
ORBA_INLINE F64 load_pack(const double* p, int live) { return load_partial(p, live, kFiller); }
ORBA_INLINE void store_pack(float* p, int live, F32 x) { store_partial(p, live, x); }
ORBA_INLINE void store_pack(double* p, int live, F64 x) { store_partial(p, live, x); }
template <class E>
ORBA_INLINE typename PackOf<E>::Pack load_pack(const E* p, int live) {
  using Part = typename PackOf<E>::Part;
  constexpr int size = pack_size<E>;
  const Part* q = parts(p);
  typename PackOf<E>::Pack pack;
  if (2 * live >= size) {
    pack.lo = load(q);
    pack.hi = static_cast<Part>(kFiller);
    if (2 * live > size) pack.hi = load_partial(q + size, 2 * live - size, static_cast<Part>(kFiller));
  } else {
    pack.lo = load_partial(q, 2 * live, static_cast<Part>(kFiller));
    pack.hi = static_cast<Part>(kFiller);
  }
  return pack;
}
template <class E, class V>
ORBA_INLINE void store_pack(E* p, int live, Pairs<V> x) {
  constexpr int size = pack_size<E>;
  auto* q = parts(p);
  if (2 * live >= size) {
    store(q, x.lo);
    if (2 * live > size) store_partial(q + size, 2 * live - size, x.hi);
  } else {
    store_partial(q, 2 * live, x.lo);
  }
}

// Bit i of the result is the flag of element i of the pack.
ORBA_INLINE uint32_t element_bits(M64 m) { return bits(m); }
ORBA_INLINE uint32_t element_bits(M32 m) { return bits(m); }
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
