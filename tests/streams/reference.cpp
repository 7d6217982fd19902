#include "tests/streams/reference.h"

#include <cstdio>
#include <cstdlib>

#include "include/orba_rau.h"

namespace orba::test {
namespace {

using Seed = std::vector<uint32_t>;

uint32_t word(const Seed& seed, size_t i, uint32_t missing = 1) {
  return i < seed.size() ? seed[i] : missing;
}
template <class T>
T not_zero(T x) {
  return x != 0 ? x : 1;
}

template <class Real>
Real scale(Real u, Real s, Real a, bool fused) {
  return fused ? std::fma(u, s, a) : u * s + a;
}
// Of one word u: u * ((b - a) * unit) + a.
auto scale_word(double unit) {
  return [unit](const Output& u, double a, double b, bool fused) {
    return scale<double>(u[0], (b - a) * unit, a, fused);
  };
}

Reference mcg31m1(const Seed& seed) {
  constexpr uint64_t m = 2147483647;
  return {[x = not_zero(word(seed, 0) % m)]() mutable {
            const auto now = static_cast<uint32_t>(x);
            x = x * 1132489760 % m;
            return Output{now};
          },
          scale_word(1.0 / m)};
}

Reference r250(const Seed& seed) {
  Seed w(seed.begin(), seed.begin() + (seed.size() >= 250 ? 250 : 0));
  if (w.empty()) {
    uint32_t v = not_zero(word(seed, 0));
    while (w.size() < 250) w.push_back(v *= 69069);
    for (uint32_t j = 0, top = 0x80000000, rest = 0xffffffff; j < 32; ++j, top /= 2, rest /= 2) {
      w[3 + 7 * j] = (w[3 + 7 * j] & rest) | top;
    }
  }
  return {[w]() mutable {
            w.push_back(w[w.size() - 250] ^ w[w.size() - 147]);
            return Output{w.back()};
          },
          scale_word(0x1p-32)};
}

Reference mrg32k3a(const Seed& seed) {
  constexpr int64_t m1 = 4294967087, m2 = 4294944443;
  using Window = std::array<int64_t, 3>;
  const auto residue = [&](size_t i, int64_t m) { return word(seed, i) % m; };
  Window x = {residue(0, m1), residue(1, m1), residue(2, m1)};
  Window y = {residue(3, m2), residue(4, m2), residue(5, m2)};
  if (x == Window{}) x[0] = 1;
  if (y == Window{}) y[0] = 1;
  const auto modulo = [](int64_t a, int64_t m) { return (a % m + m) % m; };
  return {[=]() mutable {
            x = {x[1], x[2], modulo(1403580 * x[1] - 810728 * x[0], m1)};
            y = {y[1], y[2], modulo(527612 * y[2] - 1370589 * y[0], m2)};
            return Output{static_cast<uint32_t>(modulo(x[2] - y[2], m1))};
          },
          scale_word(1.0 / m1)};
}

Reference mcg59(const Seed& seed) {
  __extension__ using Wide = unsigned __int128;
  constexpr uint64_t m = uint64_t{1} << 59;
  const auto integer = [](const Output& u) { return static_cast<int64_t>(u[1]) << 32 | u[0]; };
  return {[x = not_zero((word(seed, 0) + (uint64_t{word(seed, 1, 0)} << 32)) % m)]() mutable {
            const Output now = {static_cast<uint32_t>(x), static_cast<uint32_t>(x >> 32)};
            x = static_cast<uint64_t>(static_cast<Wide>(x) * 302875106592253 % m);
            return now;
          },
          [=](const Output& u, double a, double b, bool fused) {
            return scale(static_cast<double>(integer(u)), (b - a) * 0x1p-59, a, fused);
          },
          // In single precision from the integer on.
          [=](const Output& u, float a, float b, bool fused) {
            const double s = (static_cast<double>(b) - static_cast<double>(a)) * 0x1p-59;
            return scale(static_cast<float>(integer(u)), static_cast<float>(s), a, fused);
          }};
}

Reference wichmann_hill(const WichmannHillRow& row, const Seed& seed) {
  Output x;
  for (size_t i = 0; i < 4; ++i) x[i] = not_zero(word(seed, i) % row.modulus[i]);
  return {[=]() mutable {
            const Output now = x;
            for (size_t i = 0; i < 4; ++i) {
              x[i] = static_cast<uint32_t>(uint64_t{x[i]} * row.multiplier[i] % row.modulus[i]);
            }
            return now;
          },
          [=](const Output& u, double a, double b, bool fused) {
            double sum = u[0] * (1.0 / row.modulus[0]);
            for (size_t i = 1; i < 4; ++i) sum = sum + u[i] * (1.0 / row.modulus[i]);
            return scale(sum - std::trunc(sum), b - a, a, fused);
          }};
}

}  // namespace

Reference make_reference(int32_t brng, const Seed& seed) {
  if (brng == RAU_BRNG_MCG31M1) return mcg31m1(seed);
  if (brng == RAU_BRNG_R250) return r250(seed);
  if (brng == RAU_BRNG_MRG32K3A) return mrg32k3a(seed);
  if (brng == RAU_BRNG_MCG59) return mcg59(seed);
  for (const WichmannHillRow& row : kWichmannHillRows) {
    if (brng == RAU_BRNG_WH + row.sub_generator) return wichmann_hill(row, seed);
  }
  std::fprintf(stderr, "no reference of generator 0x%x\n", static_cast<unsigned>(brng));
  std::abort();
}

}  // namespace orba::test
