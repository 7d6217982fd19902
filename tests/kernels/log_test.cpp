// What the tests of all kernels don't show of the logarithms: the callouts on arguments that the
// kernels never hand to them, and decimal logarithms of all powers of ten.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string_view>
#include <vector>

// The scalar code as class 1 compiles it: the one without fused operations.
#define ORBA_CLASS 1
#define ORBA_CLASS_NAMESPACE log_test
#include "vector/kernels/explog/log1p_kernel.h"

#include "tests/support/kernel_subjects.h"

namespace orba::test {
namespace {

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

// Positive numbers of all sizes, and many near 1.
std::vector<double> positive_arguments() {
  std::mt19937_64 engine(3);
  std::uniform_real_distribution<double> unit;
  std::vector<double> list = {1,
                              2,
                              10,
                              std::numeric_limits<double>::denorm_min(),
                              std::numeric_limits<double>::min(),
                              std::numeric_limits<double>::max()};
  for (int i = 0; i < 200000; ++i) {
    list.push_back(std::exp2(-1074 + 2098 * unit(engine)));
    list.push_back(0.5 + 1.5 * unit(engine));
    list.push_back(1 + (unit(engine) - 0.5) * std::exp2(-50 * unit(engine)));
  }
  return list;
}

template <class Base>
void check_logarithm(long double (*exact)(long double)) {
  const auto check = [&](auto x) {
    decltype(x) got;
    ASSERT_EQ((log_test::LogCallout<Base, typename log_test::PackOf<decltype(x)>::Pack>::callout(
                  &x, &got)),
              KAM_STATUS_OK);
    ASSERT_LE(error_in_units(got, exact(x)), 0.55) << x;
  };
  for (const double x : positive_arguments()) {
    check(x);
    const float narrow = static_cast<float>(x);
    if (narrow > 0 && std::isfinite(narrow)) check(narrow);
  }
}

TEST(LogCallout, IsAccurateOnAllPositiveNumbers) {
  check_logarithm<log_test::LogNatural>([](long double x) { return std::log(x); });
  check_logarithm<log_test::LogDecimal>([](long double x) { return std::log10(x); });
}

TEST(Log1pCallout, IsAccurateOnAllNumbersAboveMinusOne) {
  const auto check = [](auto x) {
    using Pack = typename log_test::PackOf<decltype(x)>::Pack;
    if (!(x > -1) || std::isinf(x)) return;
    decltype(x) got;
    ASSERT_EQ(log_test::Log1pCallout<Pack>::callout(&x, &got), KAM_STATUS_OK);
    ASSERT_LE(error_in_units(got, std::log1p(static_cast<long double>(x))), 0.55) << x;
    ASSERT_EQ(std::signbit(got), std::signbit(x)) << x;
  };
  for (const double x : positive_arguments()) {
    for (const double y : {x, -x, x - 1}) {
      check(y);
      check(static_cast<float>(y));
    }
  }
  check(0.0);
  check(-0.0);
}

// 10^22 (10^10) is the last power that the type holds exactly; those above are the nearest numbers,
// whose logarithms round to the exponent too.
TEST(Log10, OfPowersOfTenIsExact) {
  for (const Subject& subject : subjects()) {
    if (subject.function != std::string_view("Log10")) continue;
    with_type(subject, [&](auto type) {
      using Type = decltype(type);
      using Real = typename Type::Real;
      std::vector<Real> powers, exponents;
      for (int i = 1; i <= std::numeric_limits<Real>::max_exponent10; ++i) {
        powers.push_back(static_cast<Real>(std::pow(10.0L, i)));
        exponents.push_back(static_cast<Real>(i));
      }
      const int n = static_cast<int>(powers.size());
      for (const Cell& cell : cells(subject)) {
        if (cell.accuracy != KAM_HA) continue;
        for (const int kernel_class : cell.classes) {
          SCOPED_TRACE(subject.name() + " " + cell.name());
          std::vector<Real> got(n);
          const WordsScope words(cell.accuracy);
          call<Type>(subject, subject.kernel(kernel_class, cell.accuracy), n, powers.data(),
                     powers.data(), got.data());
          EXPECT_EQ(got, exponents);
        }
      }
    });
  }
}

}  // namespace
}  // namespace orba::test
