// What the tests of all kernels don't show of Exp: the path of its own that calls without error
// handling take past plain overflow and underflow, and the callout on arguments that the kernels
// never hand to it.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>
#include <vector>

// The scalar code as class 1 compiles it: the one without fused operations.
#define ORBA_CLASS 1
#define ORBA_CLASS_NAMESPACE exp_test
#include "vector/kernels/explog/exp_kernel.h"

#include "tests/support/kernel_subjects.h"

namespace orba::test {
namespace {

template <class Real>
struct Thresholds;
template <>
struct Thresholds<double> {
  static constexpr double values[] = {707.70327135170419, 708.39599609375,   708.3964185322641,
                                      709.782712893384,   745.1332191019411, 800};
};
template <>
struct Thresholds<float> {
  static constexpr float values[] = {87.33654f, 88.72283f, 103.97208f, 200};
};

// Ordinary arguments, and both sides of every bound with neighbours.
template <class Real>
std::vector<Real> arguments() {
  using Numbers = std::numeric_limits<Real>;
  std::vector<Real> list = {0,
                            Numbers::infinity(),
                            -Numbers::infinity(),
                            Numbers::quiet_NaN(),
                            Numbers::max(),
                            -Numbers::max(),
                            Numbers::denorm_min()};
  for (const Real bound : Thresholds<Real>::values) {
    for (Real x : {bound, -bound}) {
      for (int step = 0; step < 3; ++step) x = std::nextafter(x, Real{0});
      for (int step = 0; step < 7; ++step) {
        list.push_back(x);
        list.push_back(static_cast<Real>(list.size()) / 7);
        x = std::nextafter(x, 10 * x);
      }
    }
  }
  for (int i = 0; i < 1000; ++i) list.push_back(static_cast<Real>(-760 + 1.5 * i));
  return list;
}

TEST(ExpWithoutErrorHandling, GivesTheSameResultsAndNoStatus) {
  for (const Subject& subject : subjects()) {
    if (subject.function != std::string_view("Exp")) continue;
    with_type(subject, [&](auto type) {
      using Type = decltype(type);
      using Real = typename Type::Real;
      const std::vector<Real> a = arguments<Real>();
      const int n = static_cast<int>(a.size());
      for (const Cell& cell : cells(subject)) {
        for (const int kernel_class : cell.classes) {
          SCOPED_TRACE(subject.name() + " " + cell.name());
          const vector::KamKernel kernel = subject.kernel(kernel_class, cell.accuracy);
          std::vector<Real> ordinary(n), quiet(n);
          {
            const WordsScope words(cell.accuracy | KAM_ERRMODE_IGNORE);
            call<Type>(subject, kernel, n, a.data(), a.data(), ordinary.data());
            EXPECT_NE(vector::status(), KAM_STATUS_OK);
          }
          {
            const WordsScope words(cell.accuracy | KAM_ERRMODE_NOERR);
            call<Type>(subject, kernel, n, a.data(), a.data(), quiet.data());
            EXPECT_EQ(vector::status(), KAM_STATUS_OK);
          }
          for (int i = 0; i < n; ++i) {
            const bool same = std::isnan(a[i]) ? std::isnan(quiet[i]) && std::isnan(ordinary[i])
                                               : quiet[i] == ordinary[i];
            ASSERT_TRUE(same) << a[i] << ": " << quiet[i] << " instead of " << ordinary[i];
          }
        }
      }
    });
  }
}

// Distance in units of the last place, at least the denormals' unit.
template <class Real>
double error_in_units(Real got, long double exact) {
  using Numbers = std::numeric_limits<Real>;
  int exponent;
  std::frexp(exact, &exponent);
  exponent = std::max(exponent, Numbers::min_exponent);
  return static_cast<double>(
      std::ldexp(std::abs(static_cast<long double>(got) - exact), Numbers::digits - exponent));
}

TEST(ExpCallout, IsCompleteAndAccurate) {
  const auto check = [](auto x) {
    using Real = decltype(x);
    const long double exact = std::exp(static_cast<long double>(x));
    Real got;
    const int32_t status = exp_test::exp_callout(&x, &got);
    using Bounds = exp_test::ExpBounds<Real>;
    const int32_t expected = x > Bounds::overflow   ? KAM_STATUS_OVERFLOW
                             : x < Bounds::denormal ? KAM_STATUS_UNDERFLOW
                                                    : KAM_STATUS_OK;
    ASSERT_EQ(status, expected) << x;
    if (x > Bounds::overflow) {
      ASSERT_EQ(got, std::numeric_limits<Real>::infinity()) << x;
    } else {
      ASSERT_LE(error_in_units(got, exact), 0.55) << x;
    }
  };
  for (double x = -760; x < 720; x += 0.00317) {
    check(x);
    check(static_cast<float>(x));
    check(static_cast<float>(x / 6));
  }
  for (double x = 3; x > 1e-310; x *= 0.77) {
    for (const double y : {x, -x}) {
      check(y);
      check(static_cast<float>(y));
    }
  }
}

}  // namespace
}  // namespace orba::test
