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

namespace orba::test {

// Elements of one or two inputs; a complex element is two numbers in a row.
template <class Real>
struct Batch {
  int count = 0;
  std::vector<Real> a, b;
};

inline constexpr int kBatch = 4096;
inline constexpr int kNeighbours = 4000;

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
// pairs), as many as fit around the zoom point, and the neighbours of the row's points.
template <class Real, class Sink>
class Sampler {
 public:
  Sampler(const Limits& limits, int parts, int operands, Sink& sink)
      : limits_(limits), parts_(parts), operands_(operands), sink_(sink) {
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
      for (int64_t i = 0; i < points; ++i) push_pair(static_cast<int>(i % 6));
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

  void push_pair(int kind) {
    Real* a = &batch_.a[batch_.count * parts_];
    Real* b = &batch_.b[batch_.count * parts_];
    const int ea = exponent(kLowExponent, kHighExponent);
    const int edge = random_bit()   ? exponent(Numbers::min_exponent - 4, Numbers::min_exponent + 2)
                     : random_bit() ? exponent(kLowExponent - 2, Numbers::min_exponent)
                                    : exponent(kHighExponent - 2, kHighExponent + 2);
    switch (kind) {
      case 0:  // anything
        for (int part = 0; part < parts_; ++part) a[part] = any(), b[part] = any();
        break;
      case 1:  // ordinary
        element(a, exponent(-4, 4));
        element(b, exponent(-4, 4));
        break;
      case 2:  // product at the edge of the range
        element(a, ea);
        element(b, edge - ea);
        break;
      case 3:  // quotient at the edge of the range
        element(a, ea);
        element(b, ea - edge);
        break;
      case 4:  // sum or difference cancels
        element(a, ea);
        for (int part = 0; part < parts_; ++part) b[part] = close_to(a[part]);
        break;
      default:
        if (parts_ == 1) {  // near each other in size, so that both show in a sum
          element(a, ea);
          element(b, ea + exponent(-Numbers::digits, Numbers::digits));
        } else {  // a part of the complex product cancels
          element(a, exponent(kLowExponent / 2, kHighExponent / 2));
          b[0] = close_to(a[1]);
          b[1] = close_to(a[0]);
        }
    }
    next();
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
  Sink& sink_;
  Batch<Real> batch_;
  std::mt19937_64 random_{20240229};
};

}  // namespace orba::test
