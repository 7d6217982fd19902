// Pair arithmetic: a value as the unevaluated sum of a head and a tail, |lo| at most half a unit of
// hi, for vectors and for single numbers. u is 2^-53 (single precision: 2^-24). Bounds are relative
// and hold where nothing overflows or underflows (M. Joldes, J.-M. Muller, V. Popescu, ACM TOMS 44,
// 2017; J.-M. Muller, L. Rideau, ACM TOMS 48, 2022); without FMA the same plus a u^2 or two.
#pragma once

#include "vector/kernels/simd/scalar.h"

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

// a*b + c*d as a pair: error near u^2 of the larger product. The tail is not brought below half a
// unit of the head.
template <class V>
ORBA_INLINE Pair<V> sum_of_products(V a, V b, V c, V d) {
  const Pair<V> p = two_product(a, b);
  const Pair<V> q = two_product(c, d);
  const Pair<V> s = two_sum(p.hi, q.hi);
  return {s.hi, s.lo + (p.lo + q.lo)};
}

// Sums: error 2 u^2 with a number, 3 u^2 with a pair.
template <class V>
ORBA_INLINE Pair<V> operator+(Pair<V> a, V b) {
  const Pair<V> s = two_sum(a.hi, b);
  return fast_two_sum(s.hi, a.lo + s.lo);
}
template <class V>
ORBA_INLINE Pair<V> operator+(Pair<V> a, Pair<V> b) {
  const Pair<V> s = two_sum(a.hi, b.hi), t = two_sum(a.lo, b.lo);
  const Pair<V> v = fast_two_sum(s.hi, s.lo + t.hi);
  return fast_two_sum(v.hi, t.lo + v.lo);
}

// Products: error 2 u^2 with a number, 5 u^2 with a pair.
template <class V>
ORBA_INLINE Pair<V> operator*(Pair<V> a, V b) {
  const Pair<V> p = two_product(a.hi, b);
  return fast_two_sum(p.hi, mul_add(a.lo, b, p.lo));
}
template <class V>
ORBA_INLINE Pair<V> operator*(Pair<V> a, Pair<V> b) {
  const Pair<V> p = two_product(a.hi, b.hi);
  return fast_two_sum(p.hi, p.lo + mul_add(a.hi, b.lo, a.lo * b.hi));
}

// n / d of pairs, with recip near 1/d.hi: one step on the residual.
template <class V>
ORBA_INLINE Pair<V> quotient(Pair<V> n, Pair<V> d, V recip) {
  const V q = n.hi * recip;
  V residual;
  if constexpr (kFused) {
    residual = neg_mul_add(q, d.lo, neg_mul_add(q, d.hi, n.hi) + n.lo);
  } else {
    const Pair<V> back = two_product(q, d.hi);
    residual = ((n.hi - back.hi) - back.lo) + (n.lo - q * d.lo);
  }
  return {q, residual * recip};
}

// Square root of a positive pair: one step on the residual, which is exact (S. Boldo, M. Daumas,
// ARITH 16, 2003). Error 25/8 u^2 (V. Lefèvre, N. Louvet, J.-M. Muller et al., ACM TOMS 49, 2023).
template <class V>
ORBA_INLINE Pair<V> sqrt(Pair<V> a) {
  const V s = sqrt(a.hi);
  const Pair<V> square = two_product(s, s);
  const V residual = ((a.hi - square.hi) - square.lo) + a.lo;
  return fast_two_sum(s, residual / (s + s));
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
