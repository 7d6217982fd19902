// Inputs for measuring a function, in batches.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

#include "tests/accuracy/limits.h"
#include "tests/support/kernel_subjects.h"

namespace orba::test {

// Elements of one or two inputs; a complex element is two numbers in a row.
template <class Real>
struct Batch {
  int count = 0;
  std::vector<Real> a, b;
};

inline constexpr int kBatch = 4096;
inline constexpr int kNeighbours = 4000;
inline constexpr int kLanes = 16;  // of a vector, at most

// The order of the reals as an order of integers: neighbours differ by 1, both zeros are 0.
template <class Real>
auto bits_of(Real x) {
  using Bits = std::conditional_t<sizeof(Real) == 8, int64_t, int32_t>;
  const auto bits = std::bit_cast<Bits>(x);
  return bits >= 0 ? bits : static_cast<Bits>(std::numeric_limits<Bits>::min() - bits);
}
template <class Real, class Bits>
Real from_bits(Bits bits) {
  return std::bit_cast<Real>(
      bits >= 0 ? bits : static_cast<Bits>(std::numeric_limits<Bits>::min() - bits));
}

// Calls sink(batch) until the inputs are used up: `points` spread over the row's spans (or random
// pairs), as many as fit around the zoom point, and the neighbours of the row's points. Where the
// second argument is a scalar it stays the same over short arrays.
template <class Real, class Sink>
class Sampler {
 public:
  Sampler(const Limits& limits, const Subject& subject, Sink& sink)
      : Sampler(limits, subject.parts(), subject.operands(), subject.scalars == 1, sink) {}
  Sampler(const Limits& limits, int parts, int operands, bool scalar, Sink& sink)
      : limits_(limits), parts_(parts), operands_(operands), scalar_(scalar), sink_(sink) {
    batch_.a.resize(kBatch * parts);
    batch_.b.resize(kBatch * parts);
  }

  void run(int64_t points) {
    const auto spans = static_cast<int64_t>(limits_.spans.size());
    for (const Span& span : limits_.spans) {
      if (std::isinf(span.low) || std::isinf(span.high)) {
        binades(span, points / spans);
      } else {
        for (int64_t i = 0; i < points / spans; ++i) {
          push(static_cast<Real>(span.low + (span.high - span.low) * unit()));
        }
      }
    }
    if (operands_ == 1) {
      for (const Real x :
           {-Real{0}, Numbers::infinity(), -Numbers::infinity(), Numbers::quiet_NaN()})
        push(x);
    } else {
      push_pairs(points);
    }
    if (const auto& zoom = limits_.plot.zoom) {
      for (int64_t i = 0; i < points / 8; ++i) {
        const double distance = std::exp2(limits_.zoom_low() * unit());
        push(static_cast<Real>(*zoom + (random_bit() ? distance : -distance)));
      }
    }
    for (const double centre : limits_.near) {
      neighbourhood(static_cast<Real>(centre));
      neighbourhood(static_cast<Real>(-centre));
    }
    flush();
  }

 private:
  using Bits = decltype(bits_of(Real{}));
  using enum Pairs;
  using Numbers = std::numeric_limits<Real>;
  static constexpr int kLowExponent = Numbers::min_exponent - Numbers::digits;  // lowest denormal
  static constexpr int kHighExponent = Numbers::max_exponent - 1;

  void next() {
    if (++batch_.count == kBatch) flush();
  }
  void flush() {
    if (batch_.count > 0) sink_(batch_);
    batch_.count = 0;
  }

  void push(Real x) {
    Real* a = &batch_.a[batch_.count * parts_];
    a[0] = x;
    if (parts_ == 2) a[1] = any();
    next();
  }

  // Every binade of the span, denormal ones too, gets an equal share.
  void binades(const Span& span, int64_t points) {
    struct Binade {
      int exponent;
      Real sign;
    };
    std::vector<Binade> all;
    for (int e = kLowExponent; e <= kHighExponent; ++e) {
      const double inner = std::ldexp(1.0, e), outer = 2 * inner;
      if (span.low < outer && inner <= span.high) all.push_back({e, 1});
      if (-outer < span.high && span.low <= -inner) all.push_back({e, -1});
    }
    const auto count = static_cast<int64_t>(all.size());
    for (int64_t i = 0; i < points; ++i) {
      const auto [exponent, sign] = all[i * count / points];
      const auto x = static_cast<double>(std::copysign(number(exponent), sign));
      push(static_cast<Real>(std::clamp(x, span.low, span.high)));
    }
  }

  void neighbourhood(Real centre) {
    const Bits first = bits_of(centre);
    const Bits end = bits_of(Numbers::infinity());
    for (int step = -kNeighbours; step <= kNeighbours; ++step) {
      if (std::abs(static_cast<double>(first) + step) > static_cast<double>(end)) continue;
      const Real x = from_bits<Real>(static_cast<Bits>(first + step));
      if (operands_ == 2 && std::isinf(x)) continue;
      Real* a = &batch_.a[batch_.count * parts_];
      Real* b = &batch_.b[batch_.count * parts_];
      Real* tried = operands_ == 2 ? b : a;
      if (operands_ == 2) element(a, exponent(-8, 8));
      tried[0] = x;
      const bool scaled = x != 0 && std::isfinite(x);  // else there is no exponent to be near to
      if (parts_ == 2) tried[1] = number(exponent(-8, 8) + (scaled ? std::ilogb(x) : 0));
      next();
    }
  }

  void push_pairs(int64_t points) {
    std::vector<Pairs> kinds = limits_.pairs;
    if (kinds.empty()) kinds = {kAny, kOrdinary, kProduct, kQuotient, kSum};
    if (limits_.pairs.empty()) kinds.push_back(parts_ == 2 ? kParts : kNear);
    for (int64_t i = 0, turn = 0; i < points; ++i, ++turn) {
      Real* a = &batch_.a[batch_.count * parts_];
      Real* b = &batch_.b[batch_.count * parts_];
      push_pair(kinds[turn % kinds.size()], a, b);
      if (!scalar_) continue;
      const Real base = a[0], power = b[0];
      for (int more = exponent(0, 6 * kLanes); more > 0; --more, ++i) {
        batch_.a[batch_.count] = base_like(base);
        batch_.b[batch_.count] = power;
        next();
      }
    }
  }

  void push_pair(Pairs kind, Real* a, Real* b) {
    const int ea = exponent(kLowExponent, kHighExponent);
    const int edge = random_bit()   ? exponent(Numbers::min_exponent - 4, Numbers::min_exponent + 2)
                     : random_bit() ? exponent(kLowExponent - 2, Numbers::min_exponent)
                                    : exponent(kHighExponent - 2, kHighExponent + 2);
    switch (kind) {
      case kAny:
        for (int part = 0; part < parts_; ++part) a[part] = any(), b[part] = any();
        break;
      case kOrdinary:
        element(a, exponent(-4, 4));
        element(b, exponent(-4, 4));
        break;
      case kProduct:
        element(a, ea);
        element(b, edge - ea);
        break;
      case kQuotient:
        element(a, ea);
        element(b, ea - edge);
        break;
      case kSum:
        element(a, ea);
        for (int part = 0; part < parts_; ++part) b[part] = close_to(a[part]);
        break;
      case kNear:
        element(a, ea);
        element(b, ea + exponent(-Numbers::digits, Numbers::digits));
        break;
      case kParts:
        element(a, exponent(kLowExponent / 2, kHighExponent / 2));
        b[0] = close_to(a[1]);
        b[1] = close_to(a[0]);
        break;
      case kPower:
        a[0] = any();
        b[0] = power_of(a[0], (kLowExponent - 8) + unit() * (kHighExponent - kLowExponent + 16));
        break;
      case kPowerEdge:
        a[0] = random_bit() ? any() : number(exponent(-8, 8));
        b[0] = power_of(a[0], edge + unit());
        break;
      case kPowerNearOne: {
        const double distance = std::exp2(-1 - unit() * Numbers::digits);
        a[0] = static_cast<Real>(random_bit() ? 1 + distance : 1 - distance);
        b[0] =
            power_of(a[0], random_bit() ? edge + unit()
                                        : kLowExponent + unit() * (kHighExponent - kLowExponent));
        break;
      }
      case kPowerSimple: {
        constexpr double simple[] = {0, 1, 2, 3, 0.5, 1.0 / 3, 1.5, 0.25};
        a[0] = random_bit() ? any() : number(exponent(-20, 20));
        b[0] = static_cast<Real>(random_bit() ? simple[random_() % std::size(simple)]
                                              : static_cast<double>(random_() % 64));
        if (random_bit()) b[0] = -b[0];
        break;
      }
    }
    next();
  }

  // b for a^b near 2^e: mostly an integer where a is negative, sometimes where it is not.
  Real power_of(Real a, double e) {
    const double log = std::log2(std::abs(static_cast<double>(a)));
    const double b = log != 0 ? e / log : e;
    const bool whole = (random_() & 7) != 0 ? std::signbit(a) : random_bit();
    return static_cast<Real>(whole ? std::round(b) : b);
  }
  // A number whose powers are at most a little larger or smaller than those of a.
  Real base_like(Real a) {
    const double share = 1.02 * unit() - (random_bit() ? 1 : 0);
    const auto x = static_cast<Real>(std::exp(share * std::log(std::abs(static_cast<double>(a)))));
    return std::isfinite(x) ? std::copysign(x, a) : a;
  }

  // A complex number whose parts are mostly near each other in size.
  void element(Real* x, int e) {
    x[0] = number(e);
    if (parts_ == 2) {
      x[1] = number(e + ((random_() & 3) != 0 ? exponent(-3, 3) : exponent(-60, 0)));
      if (random_bit()) std::swap(x[0], x[1]);
    }
  }
  double unit() { return static_cast<double>(random_() >> 11) * 0x1p-53; }
  bool random_bit() { return (random_() & 1) != 0; }
  int exponent(int low, int high) {
    return low + static_cast<int>(random_() % static_cast<uint64_t>(high - low + 1));
  }
  // Of either sign, in the binade of 2^e: at either end (the distance in units has any size) or
  // inside.
  Real number(int e) {
    e = std::clamp(e, kLowExponent, kHighExponent);
    double significand = 1 + unit();
    if (const int bits = std::min(e - kLowExponent, Numbers::digits - 1);
        bits > 0 && random_bit()) {
      const auto distance = static_cast<double>(random_() >> (64 - exponent(1, bits)));
      significand = std::ldexp(distance, -bits);
      significand = random_bit() ? 1 + significand : 2 - std::ldexp(1.0, -bits) - significand;
    }
    const Real x = std::min(static_cast<Real>(std::ldexp(significand, e)), Numbers::max());
    return random_bit() ? -x : x;
  }
  Real any() { return number(exponent(kLowExponent, kHighExponent)); }
  Real close_to(Real x) {
    // Wraps around on purpose: any image that is a finite number will do.
    const uint64_t distance = random_() >> (64 - exponent(1, Numbers::digits));
    const uint64_t image = static_cast<uint64_t>(bits_of(x));
    const Real y =
        from_bits<Real>(static_cast<Bits>(random_bit() ? image + distance : image - distance));
    if (!std::isfinite(y)) return x;
    return random_bit() ? -y : y;
  }

  const Limits& limits_;
  const int parts_, operands_;
  const bool scalar_;
  Sink& sink_;
  Batch<Real> batch_;
  std::mt19937_64 random_{20240229};
};

}  // namespace orba::test
