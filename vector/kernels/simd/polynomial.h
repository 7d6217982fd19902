// Polynomials in vectors and single numbers. Coefficients are arrays, from the lowest degree up, as
// tools/coefficients/ writes them.
#pragma once

#include "vector/kernels/simd/scalar.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Horner's rule: one operation after the other, none to spare.
template <class V, class C, int n>
ORBA_INLINE V horner(V x, const C (&c)[n]) {
  V sum(c[n - 1]);
  ORBA_UNROLL
  for (int i = n - 2; i >= 0; --i) sum = mul_add(sum, x, V(c[i]));
  return sum;
}

// A polynomial in z = x*x of linear pieces: half the latency, as many operations once z is there.
template <class V, class C, int n>
ORBA_INLINE V in_pairs(V x, V z, const C (&c)[n]) {
  V sum(c[n - 1]);
  if constexpr (n % 2 == 0) sum = mul_add(sum, x, V(c[n - 2]));
  ORBA_UNROLL
  for (int i = n - 3 + n % 2; i >= 1; i -= 2)
    sum = mul_add(sum, z, mul_add(V(c[i]), x, V(c[i - 1])));
  return sum;
}

// Even and odd degrees in two chains in z = x*x, from coefficient `first` on: half the latency and
// one operation more.
template <int first, class V, class C, int n>
ORBA_INLINE V even_odd(V x, V z, const C (&c)[n]) {
  constexpr int last = n - 1, last_even = last - (last - first) % 2,
                last_odd = last - (last - first + 1) % 2;
  V even(c[last_even]), odd(c[last_odd]);
  ORBA_UNROLL
  for (int i = last_even - 2; i >= first; i -= 2) even = mul_add(even, z, V(c[i]));
  ORBA_UNROLL
  for (int i = last_odd - 2; i >= first; i -= 2) odd = mul_add(odd, z, V(c[i]));
  return mul_add(odd, x, even);
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
