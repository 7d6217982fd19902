// What holds of every element whatever its error: it does not depend on its neighbours and its place,
// odd functions are odd and even ones even bit for bit, and functions agree with each other.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string_view>

#include "tests/support/kernel_subjects.h"

namespace orba::test {
namespace {

constexpr int kCount = 1200;

// Huge, infinite, NaN, denormal, tiny and ordinary numbers in turns of random length.
template <class Real>
std::vector<Real> mixture() {
  using Numbers = std::numeric_limits<Real>;
  const Real pool[] = {
      Numbers::max(),        Real(1e30),     Real(3e7), Numbers::infinity(), Numbers::quiet_NaN(),
      Numbers::denorm_min(), Numbers::min(), 0};
  std::mt19937 random(3);
  std::vector<Real> x;
  while (x.size() < kCount) {
    const unsigned kind = random() % 16;
    for (int left = 1 << random() % 7; left > 0 && x.size() < kCount; --left) {
      const Real factor = static_cast<Real>(0.5 + static_cast<double>(random()) * 0x1p-33);
      x.push_back((kind < 8 ? pool[kind] : 20) * factor);
    }
  }
  return x;
}

// Results of n elements, those of a second output behind those of the first.
template <class Real>
std::vector<Real> results(const Subject& subject, const Cell& cell, int n, const Real* a,
                          const Real* b) {
  std::vector<Real> y(subject.outputs * subject.parts_out * n);
  const WordsScope words(cell.accuracy | KAM_ERRMODE_IGNORE);
  Real* z = y.data() + (subject.outputs - 1) * subject.parts_out * n;
  subject.invoke(subject.kernel(cell.classes[0], cell.accuracy), n,
                 {{a, b}, {y.data(), z}, kScalars<Real>});
  return y;
}
template <class Real>
std::vector<Real> results(const Subject& subject, const Cell& cell, const std::vector<Real>& x) {
  return results(subject, cell, static_cast<int>(x.size()), x.data(), x.data());
}

const Subject* find_subject(std::string_view function, char type) {
  const auto found = std::ranges::find_if(
      subjects(), [&](const Subject& s) { return s.function == function && s.type == type; });
  return found == subjects().end() ? nullptr : &*found;
}

// Calls action(Type{}, cell) for every cell of a row.
template <class Action>
void for_each_cell(const Subject& subject, Action&& action) {
  for (const Cell& cell : cells(subject)) {
    SCOPED_TRACE(subject.name() + " " + cell.name());
    with_type(subject, [&](auto type) { action(type, cell); });
  }
}

template <class Real>
bool same(Real p, Real q) {
  return std::isnan(p) ? std::isnan(q) : p == q && std::signbit(p) == std::signbit(q);
}

TEST(Elements, DoNotDependOnTheirNeighbours) {
  for (const Subject& subject : subjects()) {
    for_each_cell(subject, [&]<class Type>(Type, const Cell& cell) {
      using Real = typename Type::Real;
      const std::vector<Real> a = mixture<Real>();
      const std::vector<Real> b(a.rbegin(), a.rend());
      const int in = subject.parts_in, out = subject.parts_out, n = kCount / in;
      const std::vector<Real> y = results(subject, cell, n, a.data(), b.data());
      int different = 0;
      for (int i = 0; i < n; ++i) {
        const std::vector<Real> alone = results(subject, cell, 1, &a[i * in], &b[i * in]);
        for (size_t k = 0; k < alone.size(); ++k) {
          different += !same(alone[k], y[k / out * n * out + i * out + k % out]);
        }
      }
      EXPECT_EQ(different, 0);
    });
  }
}

constexpr int kOdd = -1, kEven = 1;
constexpr struct {
  std::string_view function;
  int parity, parity_of_second;
} kSymmetries[] = {
    {"Sin", kOdd, 0},       {"Cos", kEven, 0},    {"SinCos", kOdd, kEven}, {"Tan", kOdd, 0},
    {"Asin", kOdd, 0},      {"Atan", kOdd, 0},    {"Sinh", kOdd, 0},       {"Cosh", kEven, 0},
    {"Tanh", kOdd, 0},      {"Asinh", kOdd, 0},   {"Atanh", kOdd, 0},      {"Cbrt", kOdd, 0},
    {"InvCbrt", kOdd, 0},   {"Pow2o3", kEven, 0}, {"Trunc", kOdd, 0},      {"Round", kOdd, 0},
    {"NearbyInt", kOdd, 0}, {"Rint", kOdd, 0},    {"Modf", kOdd, kOdd},
};

TEST(Elements, OfOddAndEvenFunctions) {
  for (const auto& [function, parity, parity_of_second] : kSymmetries) {
    for (const char type : {'s', 'd'}) {
      const Subject& subject = *find_subject(function, type);
      for_each_cell(subject, [&]<class Type>(Type, const Cell& cell) {
        std::vector<typename Type::Real> x = mixture<typename Type::Real>();
        const auto y = results(subject, cell, x);
        for (auto& a : x) a = -a;
        const auto z = results(subject, cell, x);
        int different = 0;
        for (size_t i = 0; i < y.size(); ++i) {
          const bool odd = (i < x.size() ? parity : parity_of_second) == kOdd;
          different += !same(odd ? -y[i] : y[i], z[i]);
        }
        EXPECT_EQ(different, 0);
      });
    }
  }
}

// Within what errors of the accuracy's limit imply, relative to the results.
TEST(Elements, KeepTheIdentitiesOfTheCircle) {
  for (const char type : {'s', 'd'}) {
    const Subject& subject = *find_subject("SinCos", type);
    for_each_cell(subject, [&]<class Type>(Type, const Cell& cell) {
      using Real = typename Type::Real;
      const std::vector<Real> x = mixture<Real>();
      const auto of = [&](std::string_view function) {
        return results(*find_subject(function, type), cell, x);
      };
      const std::vector<Real> both = of("SinCos"), sine = of("Sin"), cosine = of("Cos"),
                              tangent = of("Tan");
      const double unit = cell.accuracy != KAM_EP ? std::numeric_limits<Real>::epsilon()
                          : sizeof(Real) == 4     ? 0x1p-11
                                                  : 0x1p-26;
      const auto near = [unit](double p, double q, double units) {
        return std::abs(p - q) <= units * unit * std::abs(q);
      };
      for (size_t i = 0; i < x.size(); ++i) {
        if (!std::isfinite(x[i]) || std::abs(x[i]) < 1e-30) continue;
        const double s = both[i], c = both[i + x.size()];
        EXPECT_TRUE(near(s * s + c * c, 1, 3) && near(sine[i], s, 2) && near(cosine[i], c, 2) &&
                    near(tangent[i], s / c, 4))
            << x[i];
      }
    });
  }
}

}  // namespace
}  // namespace orba::test
