// What holds between the trigonometric functions, whatever their errors: odd and even bit for bit, the
// same element on all roads, identities.
#include <gtest/gtest.h>

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

// Both results of SinCos, one after the other; of other functions one.
template <class Type, class Real = typename Type::Real>
std::vector<Real> results(const Subject& subject, const Cell& cell, const std::vector<Real>& x) {
  const int n = static_cast<int>(x.size());
  std::vector<Real> y(subject.outputs * x.size());
  const WordsScope words(cell.accuracy | KAM_ERRMODE_IGNORE);
  subject.invoke(subject.kernel(cell.classes[0], cell.accuracy), n,
                 {{x.data(), nullptr}, {y.data(), y.data() + (subject.outputs - 1) * n}, nullptr});
  return y;
}

const Subject& subject_of(std::string_view function, char type) {
  return *std::find_if(subjects().begin(), subjects().end(),
                       [&](const Subject& s) { return s.function == function && s.type == type; });
}

template <class Action>
void for_each_cell(Action&& action) {
  for (const std::string_view function : {"Sin", "Cos", "SinCos", "Tan"}) {
    for (const char type : {'s', 'd'}) {
      const Subject& subject = subject_of(function, type);
      for (const Cell& cell : cells(subject)) {
        SCOPED_TRACE(subject.name() + " " + cell.name());
        with_type(subject, [&]<class Type>(Type t) {
          if constexpr (std::is_arithmetic_v<typename Type::Element>) action(t, subject, cell);
        });
      }
    }
  }
}

template <class Real>
bool same(Real p, Real q) {
  return std::isnan(p) ? std::isnan(q) : p == q && std::signbit(p) == std::signbit(q);
}

TEST(Trigonometry, IsOddOrEvenAndBlindToNeighbours) {
  for_each_cell([]<class Type>(Type, const Subject& subject, const Cell& cell) {
    using Real = typename Type::Real;
    const std::vector<Real> x = mixture<Real>();
    std::vector<Real> opposite;
    for (const Real a : x) opposite.push_back(-a);
    const std::vector<Real> y = results<Type>(subject, cell, x);
    const std::vector<Real> z = results<Type>(subject, cell, opposite);
    for (size_t i = 0; i < y.size(); ++i) {
      const bool even = subject.function[0] == 'C' || i >= x.size();
      EXPECT_TRUE(same(even ? y[i] : -y[i], z[i])) << x[i % x.size()];
    }
    for (size_t i = 0; i < x.size(); ++i) {
      const std::vector<Real> alone = results<Type>(subject, cell, {x[i]});
      EXPECT_TRUE(same(alone[0], y[i]) && same(alone.back(), y[y.size() - x.size() + i])) << x[i];
    }
  });
}

// Within what errors of the accuracy's limit imply, relative to the results.
TEST(Trigonometry, KeepsItsIdentities) {
  for_each_cell([]<class Type>(Type, const Subject& subject, const Cell& cell) {
    if (subject.outputs != 2) return;
    using Real = typename Type::Real;
    const std::vector<Real> x = mixture<Real>();
    const auto of = [&](std::string_view function) {
      return results<Type>(subject_of(function, subject.type), cell, x);
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

}  // namespace
}  // namespace orba::test
