#include "tests/streams/reference.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "include/orba_rau.h"

namespace orba::test {
namespace {

double scale(double u, double s, double a, bool fused) {
  return fused ? std::fma(u, s, a) : u * s + a;
}

// Generators of one word u: u * ((b - a) * c) + a.
class OneWord : public Reference {
 public:
  explicit OneWord(double unit) : unit_(unit) {}
  double real(const Output& u, double a, double b, bool fused) const override {
    return scale(u[0], (b - a) * unit_, a, fused);
  }

 private:
  double unit_;
};

class Mcg31m1 : public OneWord {
 public:
  explicit Mcg31m1(const std::vector<uint32_t>& seed)
      : OneWord(1.0 / kModulus), x_(seed.empty() ? 1 : seed[0] % kModulus) {
    if (x_ == 0) x_ = 1;
  }
  Output next() override {
    const auto now = static_cast<uint32_t>(x_);
    x_ = x_ * 1132489760 % kModulus;
    return {now};
  }

 private:
  static constexpr uint64_t kModulus = 2147483647;
  uint64_t x_;
};

class R250 : public OneWord {
 public:
  explicit R250(const std::vector<uint32_t>& seed) : OneWord(0x1p-32) {
    if (seed.size() >= 250) {
      w_.assign(seed.begin(), seed.begin() + 250);
      return;
    }
    uint32_t v = seed.empty() || seed[0] == 0 ? 1 : seed[0];
    while (w_.size() < 250) w_.push_back(v *= 69069);
    for (uint32_t j = 0, top = 0x80000000, rest = 0xffffffff; j < 32; ++j, top /= 2, rest /= 2) {
      w_[3 + 7 * j] = (w_[3 + 7 * j] & rest) | top;
    }
  }
  Output next() override {
    w_.push_back(w_[w_.size() - 250] ^ w_[w_.size() - 147]);
    return {w_.back()};
  }

 private:
  std::vector<uint32_t> w_;
};

class Mrg32k3a : public OneWord {
 public:
  explicit Mrg32k3a(const std::vector<uint32_t>& seed) : OneWord(1.0 / kModulus1) {
    for (size_t i = 0; i < 6; ++i) {
      const int64_t word = i < seed.size() ? seed[i] : 1;
      (i < 3 ? x_[i] : y_[i - 3]) = word % (i < 3 ? kModulus1 : kModulus2);
    }
    if (x_ == std::array<int64_t, 3>{}) x_[0] = 1;
    if (y_ == std::array<int64_t, 3>{}) y_[0] = 1;
  }
  Output next() override {
    x_ = {x_[1], x_[2], modulo(1403580 * x_[1] - 810728 * x_[0], kModulus1)};
    y_ = {y_[1], y_[2], modulo(527612 * y_[2] - 1370589 * y_[0], kModulus2)};
    const int64_t difference = x_[2] - y_[2];
    return {static_cast<uint32_t>(difference < 0 ? difference + kModulus1 : difference)};
  }

 private:
  static constexpr int64_t kModulus1 = 4294967087, kModulus2 = 4294944443;
  static int64_t modulo(int64_t a, int64_t m) { return (a % m + m) % m; }
  std::array<int64_t, 3> x_, y_;
};

class Mcg59 : public Reference {
 public:
  explicit Mcg59(const std::vector<uint32_t>& seed) {
    if (!seed.empty()) x_ = seed[0];
    if (seed.size() >= 2) x_ = (x_ + (uint64_t{seed[1]} << 32)) % kModulus;
    if (x_ == 0) x_ = 1;
  }
  Output next() override {
    const Output now = {static_cast<uint32_t>(x_), static_cast<uint32_t>(x_ >> 32)};
    x_ = static_cast<uint64_t>(static_cast<Wide>(x_) * 302875106592253 % kModulus);
    return now;
  }
  double real(const Output& u, double a, double b, bool fused) const override {
    return scale(static_cast<double>(integer(u)), (b - a) * 0x1p-59, a, fused);
  }
  // In single precision from the integer on.
  float single(const Output& u, float a, float b, bool fused) const override {
    const auto s = static_cast<float>((static_cast<double>(b) - static_cast<double>(a)) * 0x1p-59);
    const auto x = static_cast<float>(integer(u));
    return fused ? std::fma(x, s, a) : x * s + a;
  }

 private:
  __extension__ using Wide = unsigned __int128;
  static constexpr uint64_t kModulus = uint64_t{1} << 59;
  static int64_t integer(const Output& u) { return static_cast<int64_t>(u[1]) << 32 | u[0]; }
  uint64_t x_ = 1;
};

class WichmannHill : public Reference {
 public:
  WichmannHill(const WichmannHillRow& row, const std::vector<uint32_t>& seed) : row_(row) {
    for (size_t i = 0; i < 4; ++i) {
      x_[i] = i < seed.size() ? seed[i] % row.modulus[i] : 1;
      if (x_[i] == 0) x_[i] = 1;
    }
  }
  Output next() override {
    const Output now = x_;
    for (size_t i = 0; i < 4; ++i) {
      x_[i] = static_cast<uint32_t>(uint64_t{x_[i]} * row_.multiplier[i] % row_.modulus[i]);
    }
    return now;
  }
  double real(const Output& u, double a, double b, bool fused) const override {
    double sum = u[0] * (1.0 / row_.modulus[0]);
    for (size_t i = 1; i < 4; ++i) sum = sum + u[i] * (1.0 / row_.modulus[i]);
    return scale(sum - std::trunc(sum), b - a, a, fused);
  }

 private:
  const WichmannHillRow& row_;
  Output x_;
};

}  // namespace

float Reference::single(const Output& u, float a, float b, bool fused) const {
  return static_cast<float>(real(u, a, b, fused));
}

const std::array<WichmannHillRow, 4>& wichmann_hill_rows() {
  static constexpr std::array<WichmannHillRow, 4> rows = {{
      {0, {16770647, 16770643, 16770623, 16770617}, {125, 117, 127, 126}},
      {1, {16770311, 16770283, 16770263, 16770209}, {127, 126, 125, 123}},
      {2, {16769807, 16769771, 16769749, 16769663}, {125, 119, 123, 126}},
      {272, {16766363, 16766359, 16766327, 16766231}, {126, 127, 125, 124}},
  }};
  return rows;
}

std::unique_ptr<Reference> make_reference(int32_t brng, const std::vector<uint32_t>& seed) {
  switch (brng) {
    case RAU_BRNG_MCG31M1:
      return std::make_unique<Mcg31m1>(seed);
    case RAU_BRNG_R250:
      return std::make_unique<R250>(seed);
    case RAU_BRNG_MRG32K3A:
      return std::make_unique<Mrg32k3a>(seed);
    case RAU_BRNG_MCG59:
      return std::make_unique<Mcg59>(seed);
    default:
      for (const WichmannHillRow& row : wichmann_hill_rows()) {
        if (brng == RAU_BRNG_WH + row.sub_generator) {
          return std::make_unique<WichmannHill>(row, seed);
        }
      }
      std::fprintf(stderr, "no reference of generator 0x%x\n", static_cast<unsigned>(brng));
      std::abort();
  }
}

}  // namespace orba::test
