// Pair arithmetic: a value as the sum of a head and a tail, for vectors and for scalars alike.
#pragma once

#include "vector/kernels/contract/scalar.h"
#include "vector/kernels/simd/simd.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class V>
struct Pair {
  V hi, lo;
};

// hi + lo = a + b exactly (D. E. Knuth, TAOCP 2, 4.2.2).
template <class V>
ORBA_INLINE Pair<V> two_sum(V a, V b) {
  const V s = a + b;
  const V t = s - a;
  return {s, (a - (s - t)) + (b - t)};
}

// The same for |a| >= |b| or a = 0 (Dekker).
template <class V>
ORBA_INLINE Pair<V> fast_two_sum(V a, V b) {
  const V s = a + b;
  return {s, b - (s - a)};
}

// The head of a: at most 26 (12) significant bits, so that products of heads and tails are exact
// (T. J. Dekker, Numer. Math. 18, 1971). |a| below 2^996 (2^115).
ORBA_INLINE double splitter(double) { return 134217729.0; }
ORBA_INLINE F64 splitter(F64) { return 134217729.0; }
ORBA_INLINE F32 splitter(F32) { return 4097.0f; }
template <class V>
ORBA_INLINE V head(V a) {
  const V scaled = a * splitter(a);
  return scaled - (scaled - a);
}

// hi + lo = a*b exactly, barring underflow and overflow.
template <class V>
ORBA_INLINE Pair<V> two_product(V a, V b) {
  const V p = a * b;
  if constexpr (kFused) return {p, mul_sub(a, b, p)};
  const V ah = head(a), al = a - ah;
  const V bh = head(b), bl = b - bh;
  return {p, ((ah * bh - p) + ah * bl + al * bh) + al * bl};
}

// a*b + c*d as a pair: relative error near 2^-105 of the larger product.
template <class V>
ORBA_INLINE Pair<V> sum_of_products(V a, V b, V c, V d) {
  const Pair<V> p = two_product(a, b);
  const Pair<V> q = two_product(c, d);
  const Pair<V> s = two_sum(p.hi, q.hi);
  return {s.hi, s.lo + (p.lo + q.lo)};
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
