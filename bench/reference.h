// Exact values in quadruple precision, and the distance of a computed value from one in ULP.
#pragma once

#include <cmath>
#include <complex>
#include <limits>

#include "include/orba_kam.h"

// Of libquadmath, whose header not every compiler finds.
extern "C" {
__float128 expq(__float128);
__float128 expm1q(__float128);
__float128 logq(__float128);
__float128 log10q(__float128);
__float128 log1pq(__float128);
__float128 sqrtq(__float128);
__float128 cbrtq(__float128);
__float128 sinq(__float128);
__float128 cosq(__float128);
__float128 tanq(__float128);
__float128 asinq(__float128);
__float128 acosq(__float128);
__float128 atanq(__float128);
__float128 atan2q(__float128, __float128);
__float128 sinhq(__float128);
__float128 coshq(__float128);
__float128 tanhq(__float128);
__float128 asinhq(__float128);
__float128 acoshq(__float128);
__float128 atanhq(__float128);
__float128 floorq(__float128);
__float128 ceilq(__float128);
__float128 truncq(__float128);
__float128 roundq(__float128);
__float128 rintq(__float128);
__float128 powq(__float128, __float128);
}

namespace orba::bench {
namespace exact {

using Real = __float128;
using Complex = std::complex<__float128>;

inline Real abs(Real x) { return x < 0 ? -x : x; }
inline Real sqrt(Real x) { return sqrtq(x); }
inline Real cbrt(Real x) { return cbrtq(x); }
inline Real exp(Real x) { return expq(x); }
inline Real expm1(Real x) { return expm1q(x); }
inline Real log(Real x) { return logq(x); }
inline Real log10(Real x) { return log10q(x); }
inline Real log1p(Real x) { return log1pq(x); }
inline Real sin(Real x) { return sinq(x); }
inline Real cos(Real x) { return cosq(x); }
inline Real tan(Real x) { return tanq(x); }
inline Real asin(Real x) { return asinq(x); }
inline Real acos(Real x) { return acosq(x); }
inline Real atan(Real x) { return atanq(x); }
inline Real atan2(Real y, Real x) { return atan2q(y, x); }
inline Real sinh(Real x) { return sinhq(x); }
inline Real cosh(Real x) { return coshq(x); }
inline Real tanh(Real x) { return tanhq(x); }
inline Real asinh(Real x) { return asinhq(x); }
inline Real acosh(Real x) { return acoshq(x); }
inline Real atanh(Real x) { return atanhq(x); }
inline Real floor(Real x) { return floorq(x); }
inline Real ceil(Real x) { return ceilq(x); }
inline Real trunc(Real x) { return truncq(x); }
inline Real round(Real x) { return roundq(x); }
inline Real rint(Real x) { return rintq(x); }
inline Real pow(Real x, Real y) { return powq(x, y); }

inline Real widen(double x) { return x; }
inline Complex widen(KamComplex8 x) { return {x.real, x.imag}; }
inline Complex widen(KamComplex16 x) { return {x.real, x.imag}; }

// A case per function: the interval of its arguments and its exact value.
// What a case may name as its special argument.
template <class T>
constexpr T kNone = std::numeric_limits<T>::quiet_NaN();
template <class T>
constexpr T kDenormal = 1000 * std::numeric_limits<T>::denorm_min();
template <class T>
constexpr T kInfinity = std::numeric_limits<T>::infinity();
// An argument that ordinary reductions can't take.
template <class T>
constexpr T kHuge = sizeof(T) == sizeof(float) ? T(1e30f) : T(1e200);
// An argument of the exponential whose result is denormal.
template <class T>
constexpr T kUnderflowing = sizeof(T) == sizeof(float) ? T(-90) : T(-720);

#define ORBA_BENCH_CASE(Name, low, high, value, special_argument)                             \
  struct Case_##Name {                                                                        \
    static constexpr double kLow = low;                                                       \
    static constexpr double kHigh = high;                                                     \
    static constexpr bool kHasSpecial = special_argument<double> == special_argument<double>; \
    template <class T>                                                                        \
    static T special(T) {                                                                     \
      return special_argument<T>;                                                             \
    }                                                                                         \
    template <class Q>                                                                        \
    static auto at(Q a, [[maybe_unused]] Q b) {                                               \
      return value;                                                                           \
    }                                                                                         \
  };
#include "bench/cases.def"
#undef ORBA_BENCH_CASE

}  // namespace exact

// An exact value, as sums of two doubles, beside the unit in the last place of its magnitude in the
// format T.
struct ExactValue {
  double part[2] = {0, 0};
  double rest[2] = {0, 0};
  double ulp = 0;

  template <class T>
  static ExactValue of(exact::Real x, T) {
    ExactValue value;
    value.set(0, x);
    value.set_ulp<T>(std::abs(value.part[0]));
    return value;
  }
  template <class T>
  static ExactValue of(exact::Complex x, T) {
    ExactValue value;
    value.set(0, x.real());
    value.set(1, x.imag());
    value.set_ulp<decltype(T::real)>(std::hypot(value.part[0], value.part[1]));
    return value;
  }

  double distance(double real, double imag = 0) const {
    const double d0 = (real - part[0]) - rest[0];
    const double d1 = (imag - part[1]) - rest[1];
    return std::hypot(d0, d1) / ulp;
  }
  double distance(KamComplex8 y) const { return distance(y.real, y.imag); }
  double distance(KamComplex16 y) const { return distance(y.real, y.imag); }

 private:
  void set(int i, exact::Real x) {
    part[i] = static_cast<double>(x);
    rest[i] = static_cast<double>(x - part[i]);
  }
  template <class T>
  void set_ulp(double magnitude) {
    using Format = std::numeric_limits<T>;
    const int exponent = magnitude == 0 ? Format::min_exponent : std::ilogb(magnitude) + 1;
    ulp = std::ldexp(1.0, std::max(exponent, Format::min_exponent) - Format::digits);
  }
};

}  // namespace orba::bench
