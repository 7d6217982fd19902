// Reference values in multiple precision, and the error of a result in units of the last place.
//
// Every reference for double results, for complex functions and for functions of two inputs comes
// from MPFR with 160 bits. Real functions of one single-precision input have a double-precision
// stand-in beside it: its own error is below 2^-28 of a single-precision unit, it makes exhaustive
// runs possible, a test holds it against MPFR, and the largest errors found with it are measured
// again with MPFR before they count.
#pragma once

#include <mpfr.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string_view>

namespace orba::test {

// How the error of a result is counted, part by part.
enum class Measure {
  kExact,  // the result has the bits of the exact value rounded once
  kUlp,    // units in the last place of the exact value
  // The same, but a part of a complex result that is below 2^-48 of the other one counts as large
  // as that: where terms cancel further, arithmetic on pairs of numbers runs out of digits.
  kUlpOfPair,
};

// One element as the rules for reports see it.
struct Lane {
  double a[2], b[2];
  bool overflow;  // a part of the result is infinite; whether it should be is a matter of its error
  bool underflow;  // the exact result is below the normal numbers
  bool single;
  uint32_t accuracy;
  bool finite_inputs() const {
    return std::isfinite(a[0]) && std::isfinite(a[1]) && std::isfinite(b[0]) && std::isfinite(b[1]);
  }
};

// What the request to flush denormals does to a function.
enum class Denormals {
  kByMode,    // an argument counts as zero of its sign, a result may be one
  kByCaller,  // the same from class 2 on; plain operations of classes 0 and 1 leave it to the caller
  kKept,      // nothing: operations on bits
};

// The C expression whose bits a real function has that rounds more than once.
struct Steps {
  float (*s)(float a, float b);
  double (*d)(double a, double b);
  float operator()(float a, float b) const { return s(a, b); }
  double operator()(double a, double b) const { return d(a, b); }
};

struct Oracle {
  std::string_view function;
  bool complex;
  void (*exact)(mpfr_t* r, mpfr_t* a, mpfr_t* b);  // one number per part; null: by `steps`
  double (*wide)(double);                          // null: MPFR only
  int (*status)(const Lane&);                      // what a kernel has to report
  Denormals denormals = Denormals::kByMode;
  bool (*callout_takes)(const Lane&) = nullptr;  // what a callout may receive; null: everything
  int results = 1;                               // of a real function, each with its own error
  Steps steps = {};
};

// Null when there is none.
const Oracle* find_oracle(std::string_view function, bool complex);
extern const Oracle kOracles[];
extern const int kOracleCount;

// One part of an exact result: head + tail units. The unit is the last place of the exact value's
// binade, and stays the last place of the lowest normal binade below it (the highest above it).
struct Reference {
  double head;      // exact value rounded to double; the largest finite number beyond that
  double tail;      // exact value - head, in units
  double scale[2];  // their product is 1 / unit; one factor could overflow
  double size;      // |exact value|, of the larger part; at least the smallest normal number
};

inline double power_of_two(int exponent) {
  return std::bit_cast<double>(static_cast<uint64_t>(exponent + 1023) << 52);
}

template <class Real>
struct Format {
  using Limits = std::numeric_limits<Real>;
  static constexpr int kMinUnit = Limits::min_exponent - Limits::digits;
  static constexpr int kMaxUnit = Limits::max_exponent - Limits::digits;
};

// Does the exact value round to infinity?
template <class Real>
bool rounds_to_infinity(const Reference& reference) {
  constexpr double kMax = std::numeric_limits<double>::max();
  if (std::isinf(static_cast<Real>(reference.head))) return true;
  return std::abs(reference.head) == kMax && std::copysign(reference.tail, 1.0) >= 0.5 &&
         std::signbit(reference.tail) == std::signbit(reference.head);
}

// The exact value rounded once to the type of the result.
template <class Real>
Real rounded(const Reference& reference) {
  if (rounds_to_infinity<Real>(reference)) {
    return static_cast<Real>(
        std::copysign(std::numeric_limits<double>::infinity(), reference.head));
  }
  return static_cast<Real>(reference.head);
}

// Results or references that are not finite. An infinity is right where the exact value rounds to
// it and stands for the power of two above the largest number elsewhere.
template <class Real>
double special_error(Real got, const Reference& reference) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  if (std::isnan(reference.head)) return std::isnan(got) ? 0.0 : kInfinity;
  if (std::isnan(got)) return kInfinity;
  if (std::isinf(reference.head))
    return static_cast<double>(got) == reference.head ? 0.0 : kInfinity;
  if (!std::isinf(got)) return kInfinity;
  if (rounds_to_infinity<Real>(reference) && std::signbit(got) == std::signbit(reference.head)) {
    return 0.0;
  }
  const double sign = std::copysign(1.0, static_cast<double>(got));
  const double largest = sign * static_cast<double>(std::numeric_limits<Real>::max());
  const double step = sign * power_of_two(Format<Real>::kMaxUnit);
  const auto& [s0, s1] = reference.scale;
  return std::abs((largest - reference.head) * s0 * s1 - reference.tail + step * s0 * s1);
}

// Error of a result in units.
template <class Real>
double ulp_error(Real got, const Reference& reference) {
  const double error = std::abs((static_cast<double>(got) - reference.head) * reference.scale[0] *
                                    reference.scale[1] -
                                reference.tail);
  return std::isfinite(error) ? error : special_error(got, reference);
}

// Error of a result relative to the (larger part of the) exact value.
template <class Real>
double relative_error(double ulps, Real got, const Reference& reference) {
  double difference = ulps / reference.scale[0] / reference.scale[1];
  // A part that is far smaller than the other can be off by more units than a double can hold.
  if (std::isinf(difference) && std::isfinite(got) && std::isfinite(reference.head)) {
    difference = std::abs(static_cast<double>(got) - reference.head);
  }
  return difference / reference.size;
}

// NaN of any payload are equal, zeros of different sign are not.
template <class Real>
bool same_value(Real x, Real y) {
  return (std::isnan(x) && std::isnan(y)) || (x == y && std::signbit(x) == std::signbit(y));
}

// That of a single-precision result, from a value with an error below 2^-28 units.
Reference wide_reference(double value);

// Evaluates one function; holds its MPFR variables, so each thread has its own.
class Evaluator {
 public:
  Evaluator(const Oracle& oracle, Measure measure);
  ~Evaluator();
  Evaluator(const Evaluator&) = delete;
  Evaluator& operator=(const Evaluator&) = delete;

  // References of the result's parts for one element. b is ignored by functions of one input.
  template <class Real>
  void exact(const Real* a, const Real* b, Reference* references);
  // The same by the double-precision stand-in.
  Reference wide(float a) const { return wide_reference(oracle_.wide(static_cast<double>(a))); }

 private:
  const Oracle& oracle_;
  Measure measure_;
  int parts_;
  mpfr_t a_[2], b_[2], r_[2], tail_;
};

}  // namespace orba::test
