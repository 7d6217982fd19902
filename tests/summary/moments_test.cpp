#include <gtest/gtest.h>

#include <cmath>

#include "orba_kam.h"
#include "tests/summary/moments_task.h"
#include "tests/support/failing_allocator.h"

namespace {

using namespace orba::test;

// Threads of this process's calls while it lives.
struct Threads {
  explicit Threads(int32_t count) : old(orba::services::set_local_thread_count(count)) {}
  ~Threads() { orba::services::set_local_thread_count(old); }
  int32_t old;
};

// Everything at once, in one block and in blocks, on one thread and on several, in all classes and
// both layouts.
template <class Real>
void check_everything(Shape shape, WeightShape weight_shape, size_t p, size_t n,
                      bool in_blocks = true) {
  constexpr long double limit = 20;
  const Data<Real> data = make_data<Real>(shape, p, n);
  const std::vector<Real> weights = make_weights<Real>(weight_shape, n);
  const std::vector<Real> means = means_of(data, weights);
  constexpr long double epsilon = std::numeric_limits<Real>::epsilon();
  for (const uint32_t method : kMethods) {
    const bool user = method == kUserMeanMethod, fast = method == kFastMethod;
    const MomentsReference reference(data, weights, user ? means : std::vector<Real>(), fast);
    // Between calls a mean is kept as a number; what its rounding is to a deviation is lost.
    const long double far =
        shape == Shape::kShifted && !fast ? std::abs(static_cast<long double>(means[0])) : 1;
    const struct {
      std::vector<size_t> ends;
      int32_t threads;
      bool masked;
      uint64_t estimates;
      long double loss;
    } runs[] = {
        {{n}, 1, false, kEverything, 1},         {{n}, 1, true, kVectors, 1},
        {{n}, 3, true, kEverything, 1},          {{1, 3, n / 3, n}, 2, false, kEverything, far},
        {{n / 2, n}, 1, true, kEverything, far},
    };
    for (int variant = 0; variant <= 2 * highest_rau_class() + 1; ++variant) {
      const RauClass running(variant / 2);
      const bool rows = variant % 2 == 0;
      for (const auto& run : runs) {
        if (run.ends.size() > 1 && !in_blocks) continue;
        SCOPED_TRACE(testing::Message()
                     << "class " << variant / 2 << (rows ? ", rows" : ", columns") << ", method "
                     << method << ", " << run.ends.size() << " blocks, " << run.threads
                     << " threads, shape " << static_cast<int>(shape) << ", weights "
                     << static_cast<int>(weight_shape) << ", p " << p << ", n " << n);
        const Threads threads(run.threads);
        MomentsTask<Real> task(static_cast<int32_t>(p), rows, static_cast<int32_t>(n % 3));
        if (run.masked) task.mask_some();
        if (user) task.results[kMean] = means;
        if (run.ends.size() > 1) task.accumulate();
        size_t first = 0;
        for (const size_t last : run.ends) {
          task.feed(data, weights, first, last);
          ASSERT_EQ(task.compute(run.estimates, method), 0);
          first = last;
        }
        Worst<Real> worst;
        worst.see(task, reference, user ? run.estimates & ~RAU_SS_MEAN : run.estimates, run.loss);
        EXPECT_LT(worst.error, limit) << worst.where;
        if (run.ends.size() > 1) {
          EXPECT_LT(std::abs(task.accumulated[0] / reference.w - 1), limit * epsilon);
          EXPECT_LT(std::abs(task.accumulated[1] / reference.v - 1), limit * epsilon);
        }
      }
    }
  }
}

template <class Real>
class MomentsOf : public testing::Test {};
using Reals = testing::Types<double, float>;
TYPED_TEST_SUITE(MomentsOf, Reals);

TYPED_TEST(MomentsOf, Definition) {
  for (const Shape shape : {Shape::kRandom, Shape::kShifted, Shape::kConstant, Shape::kScaled}) {
    for (const WeightShape weights :
         {WeightShape::kNone, WeightShape::kEqual, WeightShape::kZeros, WeightShape::kSpanning}) {
      check_everything<TypeParam>(shape, weights, 1, 301);
      check_everything<TypeParam>(shape, weights, 3, 60);
      check_everything<TypeParam>(shape, weights, 19, 400);
    }
  }
  check_everything<TypeParam>(Shape::kShifted, WeightShape::kZeros, 2, 12000);
}

// What is in the range of the type comes out, though sums on the way to it are not; from block to
// block as long as all that a call goes on from is in the range.
TYPED_TEST(MomentsOf, NoSumLeavesTheRange) {
  for (const WeightShape weights : {WeightShape::kNone, WeightShape::kZeros}) {
    for (const size_t p : {1, 3}) {
      check_everything<TypeParam>(Shape::kLarge, weights, p, 60);
      check_everything<TypeParam>(Shape::kSmall, weights, p, 60);
      check_everything<TypeParam>(Shape::kLarge, weights, p, 2000);
      check_everything<TypeParam>(Shape::kHuge, weights, p, 60, false);
      check_everything<TypeParam>(Shape::kMinute, weights, p, 60, false);
    }
  }
  for (const Shape shape : {Shape::kRandom, Shape::kConstant, Shape::kHuge, Shape::kMinute}) {
    check_everything<TypeParam>(shape, WeightShape::kHeavy, 3, 40, shape == Shape::kRandom);
    check_everything<TypeParam>(shape, WeightShape::kLight, 3, 40, false);
  }
}

// ---- Accuracy ----

// The stored numbers themselves are off by 2e-9 of a deviation of 0.1, which leaves 8.2 digits.
TEST(Moments, OnePassOnSmallDeviationsFarFromZero) {
  for (const bool rows : {true, false}) {
    for (const size_t block : {size_t{1001}, size_t{100}, size_t{7}}) {
      Data<double> data(1, std::vector<double>(1001));
      for (size_t i = 0; i < 1001; ++i) {
        data[0][i] = i == 0 ? 10000000.2 : i % 2 == 1 ? 10000000.1 : 10000000.3;
      }
      MomentsTask<double> task(1, rows);
      task.accumulate();
      for (size_t i = 0; i < 1001; i += block) {
        task.feed(data, {}, i, std::min(i + block, size_t{1001}));
        ASSERT_EQ(task.compute(RAU_SS_MEAN | RAU_SS_2C_MOM, kOnePassMethod), 0);
      }
      EXPECT_NEAR(task.results[kMean][0], 10000000.2, 1e-8);
      const double deviation = std::sqrt(task.results[kCentralMoment2][0]);
      EXPECT_GE(-std::log10(std::abs(deviation - 0.1) / 0.1), 8.0) << "block " << block;
    }
  }
}

// ---- Conversions ----

TYPED_TEST(MomentsOf, Conversions) {
  using Real = TypeParam;
  const size_t p = 4, n = 90;
  constexpr uint64_t sums = RAU_SS_SUM | RAU_SS_2R_SUM | RAU_SS_3R_SUM | RAU_SS_4R_SUM |
                            RAU_SS_2C_SUM | RAU_SS_3C_SUM | RAU_SS_4C_SUM | RAU_SS_CP;
  constexpr uint64_t converted = kEverything & ~sums;
  const Data<Real> data = make_data<Real>(Shape::kRandom, p, n);
  for (const WeightShape shape : {WeightShape::kNone, WeightShape::kZeros}) {
    const std::vector<Real> weights = make_weights<Real>(shape, n);
    const MomentsReference reference(data, weights, {}, false);
    for (const bool masked : {false, true}) {
      MomentsTask<Real> task(static_cast<int32_t>(p), masked, masked ? 1 : 0);
      if (shape != WeightShape::kNone) task.accumulate();
      if (masked) task.mask_some();
      task.feed(data, weights, 0, n);
      ASSERT_EQ(task.compute(sums, kOnePassMethod), 0);
      for (uint32_t r = 0; r < kMomentsResultCount; ++r) {  // only sums are needed from here on
        if ((kRows[r].estimate & converted) != 0) {
          std::fill(task.results[r].begin(), task.results[r].end(), Real(kUntouched));
        }
      }
      const auto kept = task.results;
      task.x.assign(task.x.size(), std::numeric_limits<Real>::quiet_NaN());
      ASSERT_EQ(task.compute(converted & kVectors, RAU_SS_METHOD_SUM_TO_MOM), 0);
      ASSERT_EQ(task.compute(converted & kMatrices, RAU_SS_METHOD_CP_TO_COVCOR), 0);
      Worst<Real> worst;
      worst.see(task, reference, converted);
      EXPECT_LT(worst.error, 20) << worst.where;
      for (uint32_t r = 0; r < kMomentsResultCount; ++r) {
        if ((kRows[r].estimate & sums) == 0) continue;
        EXPECT_EQ(task.results[r], kept[r]) << kRows[r].name;
      }
    }
  }
}

// ---- Special values and weights ----

TEST(Moments, OneObservation) {
  for (const uint32_t method : {kOnePassMethod, kFastMethod}) {
    MomentsTask<double> task(2, true);
    task.feed({{3}, {4}}, {}, 0, 1);
    ASSERT_EQ(task.compute(kEverything, method), 0);
    EXPECT_EQ(task.results[kMean][1], 4);
    EXPECT_EQ(task.results[kRawMoment4][0], 81);
    EXPECT_TRUE(std::isnan(task.results[kCentralMoment2][0]));
    EXPECT_EQ(task.results[kCrossProduct][1], 0);
  }
}

TEST(Moments, InfinityAndNan) {
  const double inf = std::numeric_limits<double>::infinity();
  for (const uint32_t method : {kOnePassMethod, kFastMethod}) {
    for (const bool rows : {true, false}) {
      MomentsTask<double> task(3, rows);
      task.accumulate();
      Data<double> data(3, std::vector<double>(100, 1));
      data[0][40] = inf;
      data[1][99] = -std::numeric_limits<double>::quiet_NaN();
      task.feed(data, {}, 0, 60);
      ASSERT_EQ(task.compute(kVectors, method), 0);
      task.feed(data, {}, 60, 100);
      ASSERT_EQ(task.compute(kVectors, method), 0);
      for (const MomentsResult result : {kMean, kRawMoment2, kRawMoment3, kRawSum4}) {
        EXPECT_EQ(task.results[result][0], inf) << kRows[result].name;
        EXPECT_TRUE(std::isnan(task.results[result][1])) << kRows[result].name;
      }
      EXPECT_TRUE(std::isnan(task.results[kCentralSum2][0]));
      EXPECT_EQ(task.results[kMean][2], 1);
      EXPECT_EQ(task.results[kCentralSum2][2], 0);
    }
  }
}

// A variable without variance has undefined correlations; they become defined with it. The mode of
// the vector functions is the thread's again after a call.
TEST(Moments, CorrelationsOfAVariableThatWasConstant) {
  const uint32_t mode = kamSetMode(KAM_LA | KAM_DENORMALS_FLUSH | KAM_ERRMODE_IGNORE);
  const uint32_t wanted = kamGetMode();
  Data<double> data = make_data<double>(Shape::kRandom, 2, 100);
  std::fill_n(data[1].begin(), 50, 0.1);
  const MomentsReference reference(data, std::vector<double>(), {}, false);
  MomentsTask<double> task(2, true);
  task.accumulate();
  task.feed(data, {}, 0, 50);
  ASSERT_EQ(task.compute(RAU_SS_COR, kOnePassMethod), 0);
  EXPECT_TRUE(std::isnan(task.get(kCorrelation, 1, 0)));
  EXPECT_EQ(task.get(kCorrelation, 1, 1), 0);
  task.feed(data, {}, 50, 100);
  ASSERT_EQ(task.compute(RAU_SS_COR, kOnePassMethod), 0);
  Worst<double> worst;
  worst.see(task, reference, RAU_SS_COR);
  EXPECT_LT(worst.error, 20) << worst.where;
  EXPECT_EQ(kamGetMode(), wanted);
  kamClearErrStatus();
  kamSetMode(mode);
}

// ---- Lack of memory ----

TYPED_TEST(MomentsOf, OutOfMemory) {
  using Real = TypeParam;
  const Threads threads(3);
  const Data<Real> data = make_data<Real>(Shape::kRandom, 20, 200);
  const std::vector<Real> weights = make_weights<Real>(WeightShape::kZeros, 200);
  for (const uint32_t method :
       {kOnePassMethod, kFastMethod, kUserMeanMethod, uint32_t{RAU_SS_METHOD_CP_TO_COVCOR}}) {
    MomentsTask<Real> task(20, false);
    task.accumulate();
    task.feed(data, weights, 0, 100);
    const uint64_t estimates = method == RAU_SS_METHOD_CP_TO_COVCOR
                                   ? RAU_SS_COR
                                   : RAU_SS_COV | RAU_SS_COR | RAU_SS_CP | RAU_SS_3C_MOM;
    const auto before = task.results;
    const int64_t allocations = fail_each_allocation(
        RAU_SS_ERROR_MEM_FAILURE, [&] { return task.compute(estimates, method); },
        [&] {
          EXPECT_EQ(task.results, before);
          EXPECT_EQ(task.accumulated, (std::array<Real, 2>{0, 0}));
        });
    EXPECT_GE(allocations, method == kOnePassMethod || method == kUserMeanMethod ? 2 : 1);
  }
}

}  // namespace
