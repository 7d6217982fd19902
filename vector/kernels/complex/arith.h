// Scalar complex arithmetic behind the callouts: complete for all inputs, in double.
// Single-precision callouts widen, call, and narrow.
#pragma once

#include "vector/kernels/contract/kernel.h"
#include "vector/kernels/contract/scalar.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

using Z = KamComplex16;

ORBA_INLINE bool finite(const Z& z) { return !is_nan_or_inf(z.real) && !is_nan_or_inf(z.imag); }
ORBA_INLINE bool infinite(const Z& z) { return is_inf(z.real) || is_inf(z.imag); }
ORBA_INLINE bool is_nan(double x) { return x != x; }

// The value of a pair; a zero keeps the sign that the head has as a sum of products.
ORBA_INLINE F64 total(Pair<F64> x) {
  return as_float(as_bits(x.hi + x.lo) | (as_bits(x.hi) & I64(INT64_MIN)));
}

// A finite value*2^exponent, the value of moderate size.
struct ScaledPair {
  Pair<double> value;
  int exponent;
};

// x*u + y*v of any finite numbers, with the sign of the exact sum. The larger product is brought near
// 1. From 2^-300 on downwards the other one only decides how the sum rounds.
ORBA_INLINE ScaledPair scaled_sum_of_products(double x, double u, double y, double v) {
  constexpr int kZero = -10000;
  const auto exponent = [](double p, double q) {
    return p == 0 || q == 0 ? kZero : exponent_of(p) + exponent_of(q);
  };
  const auto mantissa = [](double p) { return p == 0 ? p : scaled(p, -exponent_of(p)); };
  const int first = exponent(x, u), second = exponent(y, v),
            larger = first > second ? first : second;
  if (larger == kZero) return {{x * u + y * v, 0}, 0};
  const auto weight = [larger](int k) { return pow2(k < larger - 300 ? -300 : k - larger); };
  return {sum_of_products(mantissa(x) * weight(first), mantissa(u), mantissa(y) * weight(second),
                          mantissa(v)),
          larger};
}

// Rounded once; what becomes zero keeps its sign. Quotients reach exponents of +-4200, where the result
// has long been infinity or zero.
ORBA_INLINE double rounded(ScaledPair x) {
  constexpr int kMost = 2500;
  const int k = x.exponent < -kMost ? -kMost : x.exponent > kMost ? kMost : x.exponent;
  return __builtin_copysign(rounded(x.value, k), total(x.value));
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

// a * b. Finite parts: sums of two products in pair arithmetic, rounded once; infinite and NaN parts
// as C99, Annex G.5.1. A product overflows where it is infinite as a Part.
template <class Part>
ORBA_COLD Z multiply(const Z& a, const Z& b) {
  if (finite(a) && finite(b)) {
    return {rounded(scaled_sum_of_products(a.real, b.real, -a.imag, b.imag)),
            rounded(scaled_sum_of_products(a.real, b.imag, a.imag, b.real))};
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
// a*conj(b)/|b|^2 in pair arithmetic. Infinite and NaN parts as C99, Annex G.5.1.
ORBA_COLD Z divide(const Z& a, const Z& b) {
  const double infinity = __builtin_inf();
  if (b.real == 0 && b.imag == 0) return {a.real * infinity, a.imag * infinity};
  if (finite(a) && finite(b)) {
    if (b.real == 0 || b.imag == 0) {
      const bool real = b.imag == 0;
      const double re = real ? a.real / b.real : a.imag / b.imag;
      const double im = real ? a.imag / b.real : -a.real / b.imag;
      return {(real ? a.real : a.imag) == 0 ? a.real * b.real + a.imag * b.imag : re,
              (real ? a.imag : a.real) == 0 ? a.imag * b.real - a.real * b.imag : im};
    }
    const ScaledPair d = scaled_sum_of_products(b.real, b.real, b.imag, b.imag);
    const double recip = 1.0 / d.value.hi;
    const auto over_d = [&](ScaledPair n) {
      const auto q = part_quotient(n.value, d.value, recip);
      return rounded({{q.value, -q.excess * recip}, n.exponent - d.exponent});
    };
    return {over_d(scaled_sum_of_products(a.real, b.real, a.imag, b.imag)),
            over_d(scaled_sum_of_products(a.imag, b.real, -a.real, b.imag))};
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
