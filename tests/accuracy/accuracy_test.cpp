// Every kernel of every function against its limits, special values, and the measuring itself.
//
// ORBA_ACCURACY_SCALE multiplies the numbers of random points; the neighbours of the named points
// come on top. scripts/update_accuracy runs the dense measurement.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>

#include "tests/accuracy/limits.h"
#include "tests/accuracy/measure.h"
#include "tests/accuracy/oracle.h"
#include "tests/accuracy/sampling.h"
#include "tests/accuracy/special_values.h"

namespace orba::test {
namespace {

double scale() {
  const char* text = std::getenv("ORBA_ACCURACY_SCALE");
  return text != nullptr ? std::atof(text) : 1;
}

class Kernels : public testing::TestWithParam<Subject> {};

void expect_within(const Limits& limits, const Subject& subject, const Measurement& measurement) {
  for (const Measured& measured : measurement.all) {
    const uint32_t accuracy = measured.cell.accuracy;
    for (const Outcome* outcome : {&measured.kept, &measured.flushed}) {
      const std::string name =
          measured.name() + (outcome == &measured.kept ? "" : ", denormals flushed");
      const Peak& peak = outcome->peak(accuracy);
      EXPECT_LE(peak.error, limits.limit(accuracy)) << name << ": " << describe(subject, peak);
      EXPECT_EQ(outcome->wrong_reports, 0) << name << ": " << outcome->first_wrong_report;
    }
  }
}

TEST_P(Kernels, StayWithinLimits) {
  const Subject& subject = GetParam();
  const Limits* limits = find_limits(subject.function, subject.type);
  ASSERT_NE(limits, nullptr) << subject.name() << " has no row in limits.def";
  const Oracle* oracle = find_oracle(subject.function, subject.complex());
  ASSERT_NE(oracle, nullptr) << subject.name() << " has no oracle";
  const auto points = static_cast<int64_t>(1000 * limits->points * scale());
  expect_within(*limits, subject, measure(subject, *limits, *oracle, points));
}

// The name in FUNCTION-f64.txt or FUNCTION-f32.txt of a published list of arguments that are hard to
// round.
std::string list_of_hard_cases(const Subject& subject) {
  const std::string_view name = subject.function;
  std::string stem(name == "Ln" ? "log" : name == "InvSqrt" ? "rsqrt" : name);
  std::ranges::transform(stem, stem.begin(), [](unsigned char c) { return std::tolower(c); });
  return stem + (subject.type == 'd' ? "-f64.txt" : "-f32.txt");
}

// The lists (a line per case, its arguments in hexadecimal) are not part of the project.
TEST(HardCases, StayWithinLimits) {
  const std::filesystem::path folder = ORBA_HARD_CASES;
  if (!std::filesystem::is_directory(folder))
    GTEST_SKIP() << "no lists of hard cases at " << folder;
  int lists = 0;
  for (const Subject& subject : subjects()) {
    std::ifstream list(folder / list_of_hard_cases(subject));
    if (subject.complex() || !list) continue;
    ++lists;
    std::vector<std::array<double, 2>> arguments;
    for (std::string line; std::getline(list, line);) {
      char* rest = nullptr;
      const double a = std::strtod(line.c_str(), &rest);  // of a comment nothing
      if (rest != line.c_str()) arguments.push_back({a, std::strtod(rest, nullptr)});
    }
    EXPECT_GT(arguments.size(), 100u) << subject.name();
    const Limits* limits = find_limits(subject.function, subject.type);
    const Oracle* oracle = find_oracle(subject.function, false);
    expect_within(*limits, subject, measure_at(subject, *limits, *oracle, arguments));
  }
  EXPECT_GT(lists, 0);
}

// Everything that has to give the special values: the kernels, and the callouts that take any
// argument at HA.
template <class Action>
void for_each_contender(const Subject& subject, Action&& action) {
  for (const Cell& cell : cells(subject)) {
    action(cell.accuracy, subject.kernel(cell.classes[0], cell.accuracy), cell.name());
  }
  if (find_oracle(subject.function, subject.complex())->callout_takes != nullptr) return;
  for (const int kernel_class : kCalloutClasses) {
    const vector::KamKernel callouts = callouts_of(subject, kernel_class);
    if (callouts != nullptr)
      action(KAM_HA, callouts, "callout, class " + std::to_string(kernel_class));
  }
}

// One special element among n - 1 ordinary ones.
template <class Type, class Real = typename Type::Real>
void expect_special(const Subject& subject, uint32_t accuracy, vector::KamKernel kernel,
                    const std::string& name, const Special<Real>& special, int n, int at) {
  const int parts = subject.parts();
  const Real ordinary = subject.function == std::string_view("Acosh") ? Real{1.5} : Real{0.75};
  std::vector<Real> a(n * parts, ordinary), b(a), r(a);
  if (subject.scalars == 1) {
    std::fill(a.begin(), a.end(), Real{1});  // an ordinary argument to any scalar
    for (int i = 0; i < n; ++i) std::copy_n(special.b, parts, &b[i * parts]);
  }
  std::copy_n(special.a, parts, &a[at * parts]);
  std::copy_n(special.b, parts, &b[at * parts]);
  const WordsScope words(accuracy | KAM_ERRMODE_IGNORE);
  call<Type>(subject, kernel, n, a.data(), b.data(), r.data());
  Peak shown;
  bool right = true;
  for (int part = 0; part < parts; ++part) {
    const Real got = r[at * parts + part];
    right = right && (special.r[part] == kAny<Real> || same_value(got, special.r[part]));
    shown.a[part] = static_cast<double>(special.a[part]);
    shown.b[part] = static_cast<double>(special.b[part]);
    shown.got[part] = static_cast<double>(got);
    shown.wanted[part] = static_cast<double>(special.r[part]);
  }
  EXPECT_TRUE(right) << name << " n=" << n << ": " << describe(subject, shown);
  EXPECT_EQ(vector::status(), special.status)
      << name << " n=" << n << ": " << describe(subject, shown);
}

// Alone (the tail) and in the middle of a long array (the main loop).
TEST_P(Kernels, TreatSpecialValuesAsTold) {
  const Subject& subject = GetParam();
  with_type(subject, [&]<class Type>(Type) {
    int tried = 0;
    for (const auto& special : special_values<typename Type::Real>()) {
      for_each_contender(subject, [&](uint32_t accuracy, auto kernel, const std::string& name) {
        if (!special.applies(subject, accuracy)) return;
        ++tried;
        expect_special<Type>(subject, accuracy, kernel, name, special, 1, 0);
        expect_special<Type>(subject, accuracy, kernel, name, special, 150, 77);
      });
    }
    EXPECT_GT(tried, 0) << subject.name() << " has no special values";
  });
}

// Every combination of special parts: NaN, infinities and exact zeros with their signs are the same
// on all roads through a kernel, of all classes and accuracies. (No pair of parts has products that
// underflow and cancel beside a normal part: the sign of that zero is anyone's.)
TEST_P(Kernels, AgreeOnSpecialParts) {
  const Subject& subject = GetParam();
  with_type(subject, [&]<class Type>(Type) {
    using Real = typename Type::Real;
    using Numbers = std::numeric_limits<Real>;
    const Real pool[] = {0,
                         -Real{0},
                         1,
                         -2,
                         Numbers::infinity(),
                         -Numbers::infinity(),
                         Numbers::quiet_NaN(),
                         Numbers::max(),
                         -Numbers::max(),
                         Numbers::min(),
                         -Numbers::denorm_min()};
    const int parts = subject.parts(), numbers = parts * subject.operands();
    constexpr int kSize = static_cast<int>(std::size(pool));
    int n = 1;
    for (int i = 0; i < numbers; ++i) n *= kSize;
    std::vector<Real> a, b, want(n * parts), r(n * parts);
    for (int i = 0; i < n; ++i) {
      for (int part = 0, digits = i; part < numbers; ++part, digits /= kSize) {
        (part < parts ? a : b).push_back(pool[digits % kSize]);
      }
    }
    b.resize(a.size());
    Evaluator evaluator(*find_oracle(subject.function, subject.complex()), Measure::kUlp);
    const WordsScope words(KAM_ERRMODE_IGNORE);
    call<Type>(subject, subject.kernel(0, KAM_HA), n, a.data(), b.data(), want.data());
    for_each_contender(subject, [&](uint32_t, auto kernel, const std::string& name) {
      call<Type>(subject, kernel, n, a.data(), b.data(), r.data());
      for (int i = 0; i < n * parts; ++i) {
        bool same = same_value(r[i], want[i]);
        if (!same && std::isfinite(want[i]) && !std::isnan(r[i])) {  // rounded in another way?
          Reference exact[2];
          evaluator.exact(&a[i - i % parts], &b[i - i % parts], exact);
          same = exact[i % parts].head != 0 || exact[i % parts].tail != 0;
        }
        Peak shown;
        for (int part = 0; part < parts; ++part) {
          const int at = i - i % parts + part;
          shown.a[part] = static_cast<double>(a[at]), shown.b[part] = static_cast<double>(b[at]);
          shown.got[part] = static_cast<double>(r[at]);
          shown.wanted[part] = static_cast<double>(want[at]);
        }
        ASSERT_TRUE(same) << name << ": " << describe(subject, shown);
      }
    });
  });
}

template <class Real>
struct ExactCases {
  std::vector<Real> a, b, results;
  void add(double x, double y, double result) {
    a.push_back(static_cast<Real>(x));
    b.push_back(static_cast<Real>(y));
    results.push_back(static_cast<Real>(result));
  }
};

// Arguments whose exact results the type holds, of functions that are not exact by themselves.
template <class Real>
ExactCases<Real> exact_cases(std::string_view function) {
  using Numbers = std::numeric_limits<Real>;
  constexpr int kRoots = 1 << Numbers::digits / 3;  // whose cubes the type holds
  constexpr int kLowest = Numbers::min_exponent - Numbers::digits;
  ExactCases<Real> cases;
  if (function == "Log10") {
    // 10^22 (10^10) is the last power that the type holds exactly; those above are the nearest numbers,
    // whose logarithms round to the exponent too.
    for (int i = 1; i <= Numbers::max_exponent10; ++i)
      cases.add(static_cast<double>(std::pow(10.0L, i)), 0, i);
  } else if (function == "InvCbrt") {
    for (int k = kLowest / 3; 3 * k < Numbers::max_exponent; ++k)
      cases.add(std::ldexp(-1.0, 3 * k), 0, std::ldexp(-1.0, -k));
  } else if (function == "Hypot") {
    for (int m = 2; m < 1000; ++m) {
      const int n = 1 + m * 7 % (m - 1),
                k = kLowest + m * 41 % (Numbers::max_exponent - 22 - kLowest);
      cases.add(std::ldexp(m * m - n * n, k), std::ldexp(-2 * m * n, k),
                std::ldexp(m * m + n * n, k));
    }
  } else {
    for (int i = 1; i < kRoots; ++i) {
      const int k = kLowest / 6 + i % ((Numbers::max_exponent - kLowest) / 6);
      const double x = i, square = x * x, cube = square * x;
      if (function == "Cbrt") cases.add(std::ldexp(-cube, 3 * k), 0, std::ldexp(-x, k));
      if (function == "Pow2o3") cases.add(std::ldexp(-cube, 3 * k), 0, std::ldexp(square, 2 * k));
      if (function == "Pow3o2") cases.add(std::ldexp(square, 2 * k), 0, std::ldexp(cube, 3 * k));
    }
  }
  return cases;
}

TEST(ExactResults, AreGivenAtHighAccuracy) {
  for (const Subject& subject : subjects()) {
    if (subject.complex()) continue;
    with_type(subject, [&]<class Type>(Type) {
      const auto& [a, b, results] = exact_cases<typename Type::Real>(subject.function);
      for_each_contender(subject, [&](uint32_t accuracy, auto kernel, const std::string& name) {
        if (accuracy != KAM_HA || a.empty()) return;
        std::vector<typename Type::Real> got(a.size());
        call<Type>(subject, kernel, static_cast<int>(a.size()), a.data(), b.data(), got.data());
        EXPECT_EQ(got, results) << subject.name() << " " << name;
      });
    });
  }
}

// Powers that the type holds: those of 2 down to the smallest, and small ones of small integers.
TEST(Pow, OfIntegersIsExact) {
  for (const Subject& subject : subjects()) {
    const std::string_view name = subject.function;
    if (subject.complex() || (name != "Pow" && name != "Powx")) continue;
    with_type(subject, [&]<class Type>(Type) {
      using Real = typename Type::Real;
      using Numbers = std::numeric_limits<Real>;
      std::vector<Real> bases, exponents, powers;
      const auto add = [&](int base, int exponent, double power) {
        bases.push_back(static_cast<Real>(base));
        exponents.push_back(static_cast<Real>(exponent));
        powers.push_back(static_cast<Real>(power));
      };
      for (int k = Numbers::min_exponent - Numbers::digits; k < Numbers::max_exponent; ++k)
        add(2, k, std::ldexp(1.0, k));
      for (int base = -1000; base <= 1000; ++base) {
        double power = 1;
        for (int k = 1; std::abs(power *= base) < 0x1p53 && k < 64; ++k) {
          if (static_cast<double>(static_cast<Real>(power)) == power) add(base, k, power);
        }
      }
      for_each_contender(
          subject, [&](uint32_t accuracy, auto kernel, const std::string& contender) {
            if (accuracy != KAM_HA) return;
            std::vector<Real> got(powers.size());
            call<Type>(subject, kernel, static_cast<int>(powers.size()), bases.data(),
                       exponents.data(), got.data());
            for (size_t i = 0; i < powers.size(); ++i) {
              ASSERT_EQ(got[i], powers[i]) << subject.name() << " " << contender << ": " << bases[i]
                                           << " to the power of " << exponents[i];
            }
          });
    });
  }
}

INSTANTIATE_TEST_SUITE_P(All, Kernels, testing::ValuesIn(subjects()),
                         [](const auto& subject) { return subject.param.name(); });

TEST(LimitsTable, HasARowForEveryFunctionAndNoOther) {
  std::multiset<std::string> functions, rows;
  for (const Subject& subject : subjects()) functions.insert(subject.name());
  for (const Limits& limits : limits_table()) {
    rows.insert(std::string("v") + limits.type + std::string(limits.function));
  }
  EXPECT_EQ(functions, rows);
}

// The double-precision stand-ins stay below 2^-20 of a single-precision unit.
TEST(OracleTable, StandInsAgreeWithMultiplePrecision) {
  constexpr double kInf = std::numeric_limits<double>::infinity();
  const Limits everything{"",
                          's',
                          Measure::kUlp,
                          0,
                          0,
                          0,
                          0,
                          {{-kInf, kInf}, {-110, 110}, {0.5, 2}},
                          {0, 0x1p-126, 1, 88.7228, 103.972},
                          {}};
  for (int i = 0; i < kOracleCount; ++i) {
    const Oracle& oracle = kOracles[i];
    if (oracle.wide == nullptr) continue;
    Evaluator evaluator(oracle, Measure::kUlp);
    double worst = 0;
    float where = 0;
    auto compare = [&](const Batch<float>& batch) {
      for (int k = 0; k < batch.count; ++k) {
        const float x = batch.a[k];
        const float unused = 0;
        Reference exact;
        evaluator.exact(&x, &unused, &exact);
        const Reference wide = evaluator.wide(x);
        if (same_value(exact.head, wide.head)) continue;
        // Results beyond single precision only have to be beyond it in both.
        if (std::isinf(static_cast<float>(exact.head)) &&
            std::isinf(static_cast<float>(wide.head))) {
          continue;
        }
        const double error = std::abs(wide.head - exact.head) * exact.scale[0] * exact.scale[1];
        if (!(error <= worst)) worst = error, where = x;
      }
    };
    Sampler<float, decltype(compare)> sampler(everything, 1, 1, false, compare);
    sampler.run(30000);
    EXPECT_LE(worst, 0x1p-20) << oracle.function << " at " << where;
  }
}

// The yardstick: known distances between a result and an exact value.
TEST(UlpError, MeasuresKnownDistances) {
  const Oracle& inverse = *find_oracle("Inv", false);
  Evaluator evaluator(inverse, Measure::kUlp);
  const auto error = [&](double argument, double got) {
    const double unused = 0;
    Reference reference;
    evaluator.exact(&argument, &unused, &reference);
    return ulp_error(got, reference);
  };
  constexpr double kMost = std::numeric_limits<double>::max();
  constexpr double kInf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(error(2, 0.5), 0);
  EXPECT_EQ(error(2, 0.5 + 0x1p-53), 1);
  EXPECT_EQ(error(2, 0.5 - 0x1p-54), 0.5);        // half as far apart below a power of two
  EXPECT_NEAR(error(3, 1.0 / 3), 1.0 / 3, 1e-9);  // 1/3 = 0.0101...: the cut rest is a third
  EXPECT_NEAR(error(3, std::nextafter(1.0 / 3, 1)), 2.0 / 3, 1e-9);
  EXPECT_EQ(error(0x1p1023, 0x1p-1023), 0);
  EXPECT_EQ(error(0x1p1023, 0x1p-1023 + 0x1p-1074), 1);  // denormal
  EXPECT_EQ(error(0x1p-1074, kInf), 0);
  EXPECT_GT(error(0x1p-1074, kMost), 1e10);
  EXPECT_EQ(error(0x1p-1023, kInf), 0x1p52);  // infinity counts as 2^1024
  EXPECT_EQ(error(0, kInf), 0);
  EXPECT_EQ(error(0, -kInf), kInf);
  EXPECT_EQ(error(1, std::nan("")), kInf);
}

}  // namespace
}  // namespace orba::test
