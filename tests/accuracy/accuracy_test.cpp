// Every kernel of every function against its limits, special values, and the measuring itself.
//
// ORBA_ACCURACY_POINTS sets the number of random points per function and type; the neighbours of
// the named points come on top. scripts/update_accuracy runs the dense measurement.

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>

#include "tests/accuracy/limits.h"
#include "tests/accuracy/measure.h"
#include "tests/accuracy/oracle.h"
#include "tests/accuracy/sampling.h"

namespace orba::test {
namespace {

int64_t default_points() {
  const char* text = std::getenv("ORBA_ACCURACY_POINTS");
  return text != nullptr ? std::atoll(text) : 1 << 20;
}

class Kernels : public testing::TestWithParam<Subject> {};

TEST_P(Kernels, StayWithinLimits) {
  const Subject& subject = GetParam();
  const Limits* limits = find_limits(subject.function, subject.type);
  ASSERT_NE(limits, nullptr) << subject.name() << " has no row in limits.def";
  const Oracle* oracle = find_oracle(subject.function, subject.complex());
  ASSERT_NE(oracle, nullptr) << subject.name() << " has no oracle";
  const Measurement measured = measure(subject, *limits, *oracle, {.points = default_points()});
  for (const Cell& cell : cells(subject)) {
    const Outcome& outcome = measured.at(cell.classes[0], cell.accuracy);
    const Peak& peak = outcome.peak(cell.accuracy);
    EXPECT_LE(peak.error, limits->limit(cell.accuracy))
        << cell.name() << ": " << describe(subject, peak);
    EXPECT_EQ(outcome.wrong_reports, 0) << cell.name() << ": " << outcome.first_wrong_report;
  }
}

constexpr unsigned kHaLa = 1U << KAM_HA | 1U << KAM_LA;
constexpr unsigned kAll = kHaLa | 1U << KAM_EP;

// Stands for a part of a result that may be anything.
template <class Real>
constexpr Real kAny = static_cast<Real>(0x1.fadep+9);

template <class Real>
struct Special {
  std::string_view function, types;
  unsigned accuracies;
  Real a[2], b[2], r[2];
  int status;
};

template <class Real>
std::vector<Special<Real>> special_values() {
  using Numbers = std::numeric_limits<Real>;
  constexpr Real zero = 0, inf = Numbers::infinity(), most = Numbers::max();
  constexpr Real normal = Numbers::min(), denormal = Numbers::denorm_min();
  constexpr Real nan = Numbers::quiet_NaN();
  constexpr Real any = kAny<Real>;
  return {
#define ORBA_REAL(x) static_cast<Real>(x)
#define ORBA_SPECIAL(function, types, accuracies, a, b, r, status) \
  {#function, types, accuracies, {ORBA_REAL(a), 0}, {ORBA_REAL(b), 0}, {ORBA_REAL(r), any}, status},
#define ORBA_SPECIAL_COMPLEX(function, accuracies, are, aim, bre, bim, rre, rim, status) \
  {#function,                                                                            \
   "cz",                                                                                 \
   accuracies,                                                                           \
   {ORBA_REAL(are), ORBA_REAL(aim)},                                                     \
   {ORBA_REAL(bre), ORBA_REAL(bim)},                                                     \
   {ORBA_REAL(rre), ORBA_REAL(rim)},                                                     \
   status},
#include "tests/accuracy/special_values.def"
  };
}

// One special element among n - 1 ordinary ones.
template <class Type, class Real = typename Type::Real>
void expect_special(const Subject& subject, const Cell& cell, const Special<Real>& special, int n,
                    int at) {
  const int parts = subject.parts();
  std::vector<Real> a(n * parts, Real{1.25}), b(a), r(a);
  std::copy_n(special.a, parts, &a[at * parts]);
  std::copy_n(special.b, parts, &b[at * parts]);
  const WordsScope words(cell.accuracy | KAM_ERRMODE_IGNORE);
  call<Type>(subject, subject.kernel(cell.classes[0], cell.accuracy), n, a.data(), b.data(),
             r.data());
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
  EXPECT_TRUE(right) << cell.name() << " n=" << n << ": " << describe(subject, shown);
  EXPECT_EQ(vector::status(), special.status)
      << cell.name() << " n=" << n << ": " << describe(subject, shown);
}

// Alone (the tail) and in the middle of a long array (the main loop).
TEST_P(Kernels, TreatSpecialValuesAsTold) {
  const Subject& subject = GetParam();
  with_type(subject, [&]<class Type>(Type) {
    int tried = 0;
    for (const auto& special : special_values<typename Type::Real>()) {
      const bool applies = special.function == subject.function &&
                           special.types.find(subject.type) != std::string_view::npos;
      if (!applies) continue;
      ++tried;
      for (const Cell& cell : cells(subject)) {
        if ((special.accuracies >> cell.accuracy & 1) == 0) continue;
        expect_special<Type>(subject, cell, special, 1, 0);
        expect_special<Type>(subject, cell, special, 150, 77);
      }
    }
    EXPECT_GT(tried, 0) << subject.name() << " has no special values";
  });
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
    Sampler<float, decltype(compare)> sampler(everything, 1, 1, compare);
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
