// Scalar complex arithmetic behind the callouts: complete for all inputs, in double.
// Single-precision callouts widen, call, and narrow.
#pragma once

#include "vector/kernels/contract/kernel.h"
#include "vector/kernels/simd/pair_arithmetic.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

using Z = KamComplex16;

ORBA_INLINE bool finite(const Z& z) { return !is_nan_or_inf(z.real) && !is_nan_or_inf(z.imag); }
ORBA_INLINE bool infinite(const Z& z) { return is_inf(z.real) || is_inf(z.imag); }
ORBA_INLINE bool is_nan(double x) { return x != x; }

// k with 2^k <= |x| < 2^(k+1); x finite and not 0.
ORBA_INLINE int exponent_of(double x) {
  const int biased = static_cast<int>(bit_cast<uint64_t>(x) >> 52 & 0x7ff);
  if (biased != 0) return biased - 1023;
  const uint64_t scaled = bit_cast<uint64_t>(x * pow2(64));
  return static_cast<int>(scaled >> 52 & 0x7ff) - 1023 - 64;
}
ORBA_INLINE int exponent_of(const Z& z) {
  const double x = __builtin_fabs(z.real), y = __builtin_fabs(z.imag);
  return exponent_of(x > y ? x : y);
}

// x * 2^k where that is exact, 0 or infinite.
ORBA_INLINE double scaled(double x, int k) {
  const int third = k / 3;
  return x * pow2(third) * pow2(third) * pow2(k - 2 * third);
}

// The value of a pair; a zero keeps the sign that the head has as a sum of products.
ORBA_INLINE double total(Pair<double> x) { return x.lo == 0 ? x.hi : x.hi + x.lo; }
ORBA_INLINE F64 total(Pair<F64> x) {
  return as_float(as_bits(x.hi + x.lo) | (as_bits(x.hi) & I64(INT64_MIN)));
}

// (x.hi + x.lo) * 2^k, rounded once: a result in the denormal range is rounded to its last place
// before it is scaled, by adding and taking off a number whose unit is that place. The head has up
// to 52 places, the rest at most one, of either sign.
ORBA_INLINE double rounded(Pair<double> x, int k) {
  const double sum = total(x);
  if (sum == 0) return sum;
  const int exponent = exponent_of(sum) + k;
  if (k > 0 || exponent >= -1022 || exponent < -1076) return scaled(sum, k);
  const double shifter = pow2(52 - 1074 - k);
  const double head_shifter = __builtin_copysign(shifter, x.hi);
  const double head = (x.hi + head_shifter) - head_shifter;
  const double rest = (x.hi - head) + x.lo;
  return scaled(head + ((rest + 1.5 * shifter) - 1.5 * shifter), k);
}

// z with the larger part in [1, 2); what underflows in the other part is below 2^-1000 of it.
ORBA_INLINE Z scaled_down(const Z& z, int k) {
  const int half = -k / 2;
  return {z.real * pow2(half) * pow2(-k - half), z.imag * pow2(half) * pow2(-k - half)};
}

// n / d of pairs is value - excess*recip, with recip near 1/d.hi. No zero in it has the wrong sign.
template <class V>
struct PartQuotient {
  V value, excess;
};
template <class V>
ORBA_INLINE PartQuotient<V> part_quotient(Pair<V> n, Pair<V> d, V recip) {
  const V q = n.hi * recip;
  const Pair<V> back = two_product(q, d.hi);
  return {q, ((back.hi - n.hi) + back.lo) + (q * d.lo - n.lo)};
}

// a * b. Finite parts: both factors are brought near 1, each part is a sum of two products in pair
// arithmetic, rounded once; infinite and NaN parts as C99, Annex G.5.1. A product overflows where
// it is infinite as a Part.
template <class Part>
ORBA_COLD Z multiply(const Z& a, const Z& b) {
  if (finite(a) && finite(b)) {
    const bool zero = (a.real == 0 && a.imag == 0) || (b.real == 0 && b.imag == 0);
    if (zero) return {a.real * b.real - a.imag * b.imag, a.real * b.imag + a.imag * b.real};
    const int ka = exponent_of(a), kb = exponent_of(b);
    const Z x = scaled_down(a, ka), y = scaled_down(b, kb);
    const Pair<double> re = sum_of_products(x.real, y.real, -x.imag, y.imag);
    const Pair<double> im = sum_of_products(x.real, y.imag, x.imag, y.real);
    return {rounded(re, ka + kb), rounded(im, ka + kb)};
  }
  Z x = a, y = b;
  Z r{x.real * y.real - x.imag * y.imag, x.real * y.imag + x.imag * y.real};
  if (!is_nan(r.real) || !is_nan(r.imag)) return r;
  const auto box = [](double& part) { part = __builtin_copysign(is_inf(part) ? 1.0 : 0.0, part); };
  const auto zero_nan = [](double& part) {
    if (is_nan(part)) part = __builtin_copysign(0.0, part);
  };
  bool recover = false;
  if (infinite(x)) {
    box(x.real), box(x.imag);
    zero_nan(y.real), zero_nan(y.imag);
    recover = true;
  }
  if (infinite(y)) {
    box(y.real), box(y.imag);
    zero_nan(x.real), zero_nan(x.imag);
    recover = true;
  }
  const auto overflows = [](double p) { return is_inf(static_cast<double>(static_cast<Part>(p))); };
  if (!recover && (overflows(x.real * y.real) || overflows(x.imag * y.imag) ||
                   overflows(x.real * y.imag) || overflows(x.imag * y.real))) {
    zero_nan(x.real), zero_nan(x.imag);
    zero_nan(y.real), zero_nan(y.imag);
    recover = true;
  }
  if (!recover) return r;
  const double infinity = __builtin_inf();
  return {infinity * (x.real * y.real - x.imag * y.imag),
          infinity * (x.real * y.imag + x.imag * y.real)};
}

// a / b. A zero divisor multiplies the parts of a by infinity; a divisor with one zero part divides
// by the other, a zero part of the result keeping the sign of the formula; otherwise
// a*conj(b)/|b|^2 in pair arithmetic on numbers near 1. Infinite and NaN parts as C99, Annex G.5.1.
ORBA_COLD Z divide(const Z& a, const Z& b) {
  const double infinity = __builtin_inf();
  if (b.real == 0 && b.imag == 0) return {a.real * infinity, a.imag * infinity};
  if (finite(a) && finite(b)) {
    if (b.real == 0 || b.imag == 0 || (a.real == 0 && a.imag == 0)) {
      const bool real = b.imag == 0;
      const double re = real ? a.real / b.real : a.imag / b.imag;
      const double im = real ? a.imag / b.real : -a.real / b.imag;
      return {(real ? a.real : a.imag) == 0 ? a.real * b.real + a.imag * b.imag : re,
              (real ? a.imag : a.real) == 0 ? a.imag * b.real - a.real * b.imag : im};
    }
    const int ka = exponent_of(a), kb = exponent_of(b);
    const Z x = scaled_down(a, ka), y = scaled_down(b, kb);
    const Pair<double> d = sum_of_products(y.real, y.real, y.imag, y.imag);
    const double recip = 1.0 / d.hi;
    const auto re = part_quotient(sum_of_products(x.real, y.real, x.imag, y.imag), d, recip);
    const auto im = part_quotient(sum_of_products(x.imag, y.real, -x.real, y.imag), d, recip);
    return {rounded({re.value, -re.excess * recip}, ka - kb),
            rounded({im.value, -im.excess * recip}, ka - kb)};
  }
  if (infinite(a) && finite(b)) {
    const double x = __builtin_copysign(is_inf(a.real) ? 1.0 : 0.0, a.real);
    const double y = __builtin_copysign(is_inf(a.imag) ? 1.0 : 0.0, a.imag);
    return {infinity * (x * b.real + y * b.imag), infinity * (y * b.real - x * b.imag)};
  }
  if (infinite(b) && finite(a)) {
    const double u = __builtin_copysign(is_inf(b.real) ? 1.0 : 0.0, b.real);
    const double v = __builtin_copysign(is_inf(b.imag) ? 1.0 : 0.0, b.imag);
    return {0.0 * (a.real * u + a.imag * v), 0.0 * (a.imag * u - a.real * v)};
  }
  const double nan = (a.real + a.imag) + (b.real + b.imag);
  const double result = is_nan(nan) ? nan : infinity - infinity;
  return {result, result};
}

// Finite arguments that gave an infinite part.
ORBA_INLINE int32_t overflow_status(bool finite_arguments, bool infinite_result) {
  return finite_arguments && infinite_result ? kOverflow : kOk;
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
