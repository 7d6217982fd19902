// The mathematics that families share, on every live class: the stated error bounds against MPFR.

#include <gtest/gtest.h>
#include <mpfr.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "tests/kernels/probe/math_probe.h"
#include "tests/support/kernel_subjects.h"

namespace orba {
#define ORBA_PROBE(c)                      \
  namespace c {                            \
  extern const test::MathProbe math_probe; \
  }
ORBA_PROBE(c0) ORBA_PROBE(c1) ORBA_PROBE(c2) ORBA_PROBE(c3) ORBA_PROBE(c5)
#undef ORBA_PROBE
}  // namespace orba

namespace orba::test {
namespace {

const MathProbe& probe(int kernel_class) {
  const MathProbe* const probes[] = {&c0::math_probe, &c1::math_probe, &c2::math_probe,
                                     &c3::math_probe, nullptr,         &c5::math_probe};
  return *probes[kernel_class];
}

class Exact {
 public:
  Exact() { mpfr_init2(v_, 300); }
  explicit Exact(Words w) : Exact() {
    mpfr_set_d(v_, w.hi, MPFR_RNDN);
    mpfr_add_d(v_, v_, w.lo, MPFR_RNDN);
  }
  ~Exact() { mpfr_clear(v_); }
  Exact(const Exact&) = delete;
  Exact& operator=(const Exact&) = delete;
  mpfr_ptr get() { return v_; }

  // log2 of the relative error of a pair.
  double error_of(Words got) {
    if (mpfr_zero_p(v_)) return got.hi == 0 && got.lo == 0 ? -1000 : 1000;
    Exact difference(got);
    mpfr_sub(difference.get(), difference.get(), v_, MPFR_RNDN);
    mpfr_div(difference.get(), difference.get(), v_, MPFR_RNDN);
    const double error = std::abs(mpfr_get_d(difference.get(), MPFR_RNDA));
    return std::isnan(error) ? 1000 : std::log2(error);
  }

 private:
  mpfr_t v_;
};

TEST(PairArithmetic, StaysWithinItsBounds) {
  std::mt19937_64 engine(11);
  std::uniform_real_distribution<double> unit;
  // Bounds in u^2 with FMA and without.
  constexpr struct {
    PairOperation operation;
    int (*exact)(mpfr_ptr, mpfr_srcptr, mpfr_srcptr, mpfr_rnd_t);
    double fused, unfused;
    bool second_is_number, positive;
  } kOperations[] = {
      {kPlusNumber, mpfr_add, 2, 2, true, false},  {kPlus, mpfr_add, 3, 3, false, false},
      {kTimesNumber, mpfr_mul, 2, 3, true, false}, {kTimes, mpfr_mul, 5, 7, false, false},
      {kQuotient, mpfr_div, 10, 10, false, false}, {kSqrt, nullptr, 25.0 / 8, 5, false, true},
  };
  constexpr int n = 4096;
  for (const Carrier carrier : {kNumber, kVectorOfDouble, kVectorOfFloat}) {
    const bool single = carrier == kVectorOfFloat;
    const double u = single ? 0x1p-24 : 0x1p-53;
    const auto number = [&](double x) { return single ? double{static_cast<float>(x)} : x; };
    const auto with_tail = [&](double hi) {
      return Words{hi, number(hi * (unit(engine) - 0.5) * u)};
    };
    const auto words = [&] {
      const double sign = (engine() & 1) != 0 ? 1 : -1;
      return with_tail(
          number(sign * std::ldexp(1 + unit(engine), static_cast<int>(engine() % 5) - 2)));
    };
    for (const auto& operation : kOperations) {
      std::vector<Words> a(n), b(n), r(n);
      for (int i = 0; i < n; ++i) {
        a[i] = words();
        if (operation.positive && a[i].hi < 0) a[i] = {-a[i].hi, -a[i].lo};
        b[i] = i % 2 == 0 ? with_tail(-a[i].hi) : words();  // half of the sums cancel
        if (operation.second_is_number) b[i].lo = 0;
      }
      for (const int kernel_class : live_classes()) {
        probe(kernel_class).pairs(operation.operation, carrier, n, a.data(), b.data(), r.data());
        double worst = -1000;
        for (int i = 0; i < n; ++i) {
          Exact x(a[i]), y(b[i]);
          if (operation.exact != nullptr)
            operation.exact(x.get(), x.get(), y.get(), MPFR_RNDN);
          else
            mpfr_sqrt(x.get(), x.get(), MPFR_RNDN);
          worst = std::max(worst, x.error_of(r[i]));
        }
        const double bound = kernel_class >= 3 ? operation.fused : operation.unfused;
        EXPECT_LE(worst, std::log2(bound * u * u))
            << "operation " << operation.operation << " carrier " << carrier << " class "
            << kernel_class;
      }
    }
  }
}

TEST(LogarithmAsPair, HasTwelveBitsMoreThanADouble) {
  std::mt19937_64 engine(12);
  std::uniform_real_distribution<double> unit;
  std::vector<double> list = {1, 0x1p-1074, 0x1p-1022, 0x1.fffffffffffffp1023};
  for (int i = 0; i < 15000; ++i) {
    list.push_back(std::exp2(-1074 + 2098 * unit(engine)));
    list.push_back(0.99 + unit(engine) / 50);
    list.push_back(1 + (unit(engine) - 0.5) * std::exp2(-50 * unit(engine)));
  }
  for (const int kernel_class : live_classes()) {
    double worst = -1000, where = 0;
    for (const double x : list) {
      Exact exact({x, 0});
      mpfr_log(exact.get(), exact.get(), MPFR_RNDN);
      const double error = exact.error_of(probe(kernel_class).log(x));
      if (error > worst) worst = error, where = x;
    }
    EXPECT_LE(worst, -65) << where << " class " << kernel_class;
  }
}

TEST(ExponentialOfPair, HasFiveBitsMoreThanADouble) {
  std::mt19937_64 engine(13);
  std::uniform_real_distribution<double> unit;
  for (const int kernel_class : live_classes()) {
    double worst = -1000, where = 0;
    for (int i = 0; i < 10000; ++i) {
      const double hi = 1300 * unit(engine) - 650;
      const Words x = {hi, hi * (unit(engine) - 0.5) * 0x1p-50};
      Exact exact(x);
      mpfr_exp(exact.get(), exact.get(), MPFR_RNDN);
      const double error = exact.error_of(probe(kernel_class).exp(x));
      if (error > worst) worst = error, where = hi;
    }
    EXPECT_LE(worst, -58) << where << " class " << kernel_class;
  }
}

TEST(LookUp, ReadsRowsOfSeveralNumbers) {
  for (const int kernel_class : live_classes()) {
    EXPECT_EQ(probe(kernel_class).wrong_lookups(), 0) << "class " << kernel_class;
  }
}

}  // namespace
}  // namespace orba::test
