#include <gtest/gtest.h>

#include <cmath>

#include "orba_kam.h"
#include "services/threads/thread_count.h"
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

// What is asked of a task, in blocks that end there.
struct Run {
  std::vector<size_t> ends;
  uint64_t estimates = kEverything;
  int32_t threads = 1;
  bool masked = false;
  bool mixed = false;  // 1PASS and FAST in turns
};

// Runs with each method, in both layouts and in all classes or the best one: results are those of
// one block, and arrays that are not needed are not touched.
template <class Real>
void check(Shape shape, WeightShape weight_shape, size_t p, size_t n, const std::vector<Run>& runs,
           bool all_classes = true) {
  const std::vector<Real> weights = make_weights<Real>(weight_shape, n);
  const Data<Real> data = make_data<Real>(shape, p, n);
  Data<Real> fed = data;
  for (auto& x : fed) {  // unread in front of the first weight
    if (weight_shape == WeightShape::kZeros) std::fill_n(x.begin(), 3, Real(NAN));
  }
  std::vector<Real> means = means_of(data, weights);
  if (shape == Shape::kRandom && p < 19) {
    for (size_t j = 0; j < p; ++j) means[j] += Real(0.5) - static_cast<Real>(j);
  }
  for (const uint32_t method : kMethods) {
    const bool user = method == kUserMeanMethod, fast = method == kFastMethod;
    const MomentsReference reference(data, weights, user ? means : std::vector<Real>(), fast);
    const int best = highest_rau_class();
    for (int variant = all_classes ? 0 : 2 * best; variant <= 2 * best + 1; ++variant) {
      const RauClass running(variant / 2);
      for (const Run& run : runs) {
        const bool rows = variant % 2 == 0, in_blocks = run.ends.size() > 1;
        SCOPED_TRACE(testing::Message()
                     << "class " << variant / 2 << (rows ? ", rows" : ", columns") << ", method "
                     << method << ", estimates " << run.estimates << ", " << run.ends.size()
                     << " blocks, " << run.threads << " threads, shape " << static_cast<int>(shape)
                     << ", weights " << static_cast<int>(weight_shape) << ", p " << p);
        const Threads threads(run.threads);
        MomentsTask<Real> task(static_cast<int32_t>(p), rows, static_cast<int32_t>(n % 3));
        if (run.masked) task.mask_some();
        if (user) task.results[kMean] = means;
        if (in_blocks) task.accumulate();
        size_t first = 0;
        uint32_t by = method;
        for (const size_t last : run.ends) {
          task.feed(fed, weights, first, last);
          ASSERT_EQ(task.compute(run.estimates, by), 0);
          task.n = 0;
          ASSERT_EQ(task.compute(run.estimates, by), -4002);
          first = last;
          if (run.mixed && !user) by ^= kOnePassMethod | kFastMethod;
        }
        const uint64_t computed = computed_with(run.estimates, method);
        for (uint32_t r = 0; r < kMomentsResultCount; ++r) {
          if ((computed & kRows[r].estimate) != 0 || (user && r == kMean)) continue;
          EXPECT_EQ(task.results[r], std::vector<Real>(task.results[r].size(), kUntouched))
              << kRows[r].name;
        }
        // Between calls a mean is kept as a number; what its rounding is to a deviation is lost.
        long double loss = run.ends.size() > 10 ? 3 : 1;
        if (in_blocks && shape == Shape::kShifted && !fast) loss = std::abs(means[0]);
        Worst<Real> worst;
        worst.see(task, reference, computed, loss);
        EXPECT_LT(worst.error, 20) << worst.where;
        if (!in_blocks) continue;
        constexpr long double limit = 20 * std::numeric_limits<Real>::epsilon();
        const auto [w, v] = task.accumulated;
        EXPECT_TRUE(std::abs(w / reference.w - 1) < limit && std::abs(v / reference.v - 1) < limit);
      }
    }
  }
}

template <class Real>
class MomentsOf : public testing::Test {};
using Reals = testing::Types<double, float>;
TYPED_TEST_SUITE(MomentsOf, Reals);

TYPED_TEST(MomentsOf, Definition) {
  const auto runs = [](size_t n) {
    return std::vector<Run>{{{n}},
                            {{n}, kVectors, 1, true},
                            {{n}, kEverything, 3, true},
                            {{1, 3, n / 3, n}, kEverything, 2},
                            {{n / 2, n}, kEverything, 1, true}};
  };
  for (const Shape shape : {Shape::kRandom, Shape::kShifted, Shape::kFlat, Shape::kScaled}) {
    for (const WeightShape weights :
         {WeightShape::kNone, WeightShape::kEqual, WeightShape::kZeros, WeightShape::kSpanning}) {
      check<TypeParam>(shape, weights, 1, 301, runs(301));
      check<TypeParam>(shape, weights, 3, 60, runs(60));
      check<TypeParam>(shape, weights, 19, 400, runs(400));
    }
  }
  check<TypeParam>(Shape::kShifted, WeightShape::kZeros, 2, 12000, runs(12000));
}

// Each estimate alone, with blocks of one observation, of one with weight, of none with weight; and
// where the methods need the same, with one after the other.
TYPED_TEST(MomentsOf, AnySplitGivesTheResultOfOneBlock) {
  const size_t n = 48;
  std::vector<size_t> ones(n);
  for (size_t i = 0; i < n; ++i) ones[i] = i + 1;
  std::vector<Run> runs;
  for (const Row& row : kRows) {
    for (const auto& ends : {std::vector<size_t>{1, n / 2, n},
                             {3, 6, 20, 24, n},
                             {n / 3, 2 * n / 3, n - 1, n},
                             ones}) {
      runs.push_back({ends, row.estimate});
    }
    if ((row.one_pass ^ row.fast) == 0)
      runs.push_back({{10, 20, 30, n}, row.estimate, 1, true, true});
  }
  for (const WeightShape weights : {WeightShape::kNone, WeightShape::kEqual, WeightShape::kZeros}) {
    check<TypeParam>(Shape::kRandom, weights, 3, n, runs, false);
  }
}

// What is in the range of the type comes out, though sums on the way to it are not; from block to
// block as long as all that a call goes on from is in the range.
TYPED_TEST(MomentsOf, NoSumLeavesTheRange) {
  const size_t n = 40;
  constexpr uint64_t averages = kEverything & ~uint64_t{0x1FE000000};
  const std::vector<Run> in_blocks = {
      {{n}, kEverything, 3}, {{1, 3, n / 3, n}, averages}, {{1, n}, averages}};
  std::vector<Run> alone = {{{n}, kEverything, 1, true}};
  for (const Row& row : kRows) alone.push_back({{n}, row.estimate});
  for (const size_t p : {1, 3}) {
    for (const WeightShape weights :
         {WeightShape::kNone, WeightShape::kEqual, WeightShape::kZeros}) {
      check<TypeParam>(Shape::kLarge, weights, p, n, in_blocks);
      check<TypeParam>(Shape::kSmall, weights, p, n, in_blocks);
    }
    check<TypeParam>(Shape::kRandom, WeightShape::kHeavy, p, n, in_blocks);
    check<TypeParam>(Shape::kLarge, WeightShape::kNone, p, 2000, {{{2000}}});
    for (const Shape shape : {Shape::kRandom, Shape::kFlat, Shape::kLarge, Shape::kSmall,
                              Shape::kTall, Shape::kFine, Shape::kHuge, Shape::kTiny}) {
      for (const WeightShape weights :
           {WeightShape::kNone, WeightShape::kZeros, WeightShape::kHeavy, WeightShape::kLight,
            WeightShape::kFaint}) {
        check<TypeParam>(shape, weights, p, n, alone, false);
      }
    }
  }
}

// Two sets of data of equal number through one task in turns: with arrays of their own, where one
// is the other's mirror image, or changing places in the same arrays. What the task carries for one
// of them is not taken for the other; where lower sums are nowhere else a result is honestly lost.
TYPED_TEST(MomentsOf, ArraysThatChange) {
  using Real = TypeParam;
  const size_t p = 2, n = 90;
  for (const bool swapped : {false, true}) {
    Data<Real> data[2] = {make_data<Real>(Shape::kRandom, p, n), Data<Real>(p)};
    for (size_t j = 0; j < p; ++j) {
      for (Real& value : data[0][j]) {
        value = std::exp(value);
        data[1][j].push_back(swapped ? Real(-1.25) * value : -value);
      }
    }
    for (const uint32_t method : kMethods) {
      for (const Row& row : kRows) {
        SCOPED_TRACE(testing::Message() << row.name << ", method " << method << swapped);
        const bool user = method == kUserMeanMethod;
        MomentsTask<Real> task(p, true), other(p, true);
        MomentsTask<Real>* const sets[] = {&task, &other};
        const std::vector<Real> means[2] = {{1, 2}, {-1, -2}};
        for (const size_t i : {0, 1}) {
          if (user) sets[i]->results[kMean] = means[i];
        }
        for (size_t block = 0; block < 6; ++block) {
          const size_t which = block % 2, first = block / 2 * n / 3;
          for (uint32_t r = 0; r < kMomentsResultCount; ++r) {
            auto &x = task.results[r], &y = other.results[r];
            if (swapped && block > 0) std::swap_ranges(x.begin(), x.end(), y.begin());
            task.edit(kRows[r].id, swapped || which == 0 ? x.data() : y.data());
          }
          if (swapped && block > 0) std::swap(task.accumulated, other.accumulated);
          task.edit(RAU_SS_ED_ACCUM_WEIGHT, sets[swapped ? 0 : which]->accumulated.data());
          task.feed(data[which], {}, first, first + n / 3);
          ASSERT_EQ(task.compute(row.estimate, method), 0);
        }
        for (const size_t which : {0, 1}) {
          // The second set was the last.
          const MomentsTask<Real>& set = swapped ? *sets[1 - which] : *sets[which];
          const uint32_t r = static_cast<uint32_t>(&row - kRows);
          if (method == kOnePassMethod && (r == kCentralSum3 || r == kCentralSum4)) {
            EXPECT_TRUE(std::isnan(set.results[r][0]));
            continue;
          }
          const MomentsReference reference(data[which], std::vector<Real>(),
                                           user ? means[which] : std::vector<Real>(), true);
          Worst<Real> worst;
          worst.see(set, reference, computed_with(row.estimate, method));
          EXPECT_LT(worst.error, 20) << worst.where;
        }
      }
    }
  }
}

// Covariances are around the means of the last call, whatever those of earlier ones were; central
// sums are, block by block, around the means of their call.
TYPED_TEST(MomentsOf, RefinedMeans) {
  using Real = TypeParam;
  const size_t p = 3, n = 500;
  const Data<Real> data = make_data<Real>(Shape::kShifted, p, n);
  const std::vector<Real> best = means_of<Real>(data, {});
  for (const Real last_off : {Real(0), Real(0.25)}) {
    MomentsTask<Real> task(p, last_off == 0);
    task.accumulate();
    size_t first = 0;
    std::vector<long double> sums(p);
    for (const size_t end : {size_t{1}, size_t{100}, size_t{180}, n}) {
      std::vector<Real>& means = task.results[kMean];
      for (size_t j = 0; j < p; ++j) {
        means[j] = best[j] + (end == n ? last_off : Real(2) - Real(0.01) * static_cast<Real>(end));
        for (size_t i = first; i < end; ++i) {
          const long double d = static_cast<long double>(data[j][i]) - means[j];
          sums[j] += d * d;
        }
      }
      const std::vector<Real> before = means;
      task.feed(data, {}, first, end);
      ASSERT_EQ(task.compute(RAU_SS_COV | RAU_SS_2C_SUM | RAU_SS_SUM, kUserMeanMethod), 0);
      EXPECT_EQ(means, before);
      first = end;
    }
    for (size_t j = 0; j < p; ++j) {
      EXPECT_NEAR(static_cast<double>(task.results[kCentralSum2][j] / sums[j]), 1,
                  20 * std::numeric_limits<Real>::epsilon());
    }
    const MomentsReference reference(data, std::vector<Real>(), task.results[kMean], false);
    Worst<Real> worst;
    // Means differ by up to 2 deviations from one call to the next, and cancel again.
    worst.see(task, reference, RAU_SS_COV | RAU_SS_SUM, 4);
    EXPECT_LT(worst.error, 20) << worst.where;
  }
}

// What a task keeps for itself is not taken for another type's or dimension's: there is room anew.
TEST(Moments, UserMeansOfAnotherTypeAndDimension) {
  MomentsTask<float> task(10, true);
  MomentsTask<double> wide(10, true);
  task.accumulate();
  task.results[kMean].assign(10, 1);
  wide.results[kMean].assign(10, 1);
  task.feed(Data<float>(10, std::vector<float>(40, 1.5f)), {}, 0, 40);
  wide.feed(Data<double>(10, std::vector<double>(40, 1.5)), {}, 0, 40);
  const auto allocations = [&](auto compute) {
    return fail_each_allocation(RAU_SS_ERROR_MEM_FAILURE, compute, [] {});
  };
  for (const int32_t p : {1, 10}) {
    task.p = p;
    task.accumulated = {};
    EXPECT_EQ(allocations([&] { return task.compute(RAU_SS_COV, kUserMeanMethod); }), 2);
  }
  for (const auto field : {&SsTask::observations, &SsTask::mean, &SsTask::covariance}) {
    task.handle->*field = wide.handle->*field;
  }
  task.handle->accumulated_weight = wide.accumulated.data();
  for (const int64_t expected : {2, 1}) {
    const auto call = [&] { return raudSSCompute(task.handle, RAU_SS_COV, kUserMeanMethod); };
    EXPECT_EQ(allocations(call), expected);
  }
  EXPECT_EQ(wide.results[kCovariance][99], 20.0 / 79);
}

TYPED_TEST(MomentsOf, Conversions) {
  using Real = TypeParam;
  const size_t p = 4, n = 50;
  uint64_t sums = 0;
  for (const Row& row : kRows) sums |= row.conversion == kNever ? row.estimate : 0;
  const uint64_t converted = kEverything & ~sums;
  for (const WeightShape shape : {WeightShape::kNone, WeightShape::kZeros, WeightShape::kHeavy}) {
    const Data<Real> data = make_data<Real>(Shape::kRandom, p, n);
    const std::vector<Real> weights = make_weights<Real>(shape, n);
    const MomentsReference reference(data, weights, {}, false);
    MomentsTask<Real> task(p, true, shape == WeightShape::kNone ? 0 : 1);
    if (shape != WeightShape::kNone) task.accumulate();
    if (shape == WeightShape::kZeros) task.mask_some();
    task.feed(data, weights, 0, n);
    ASSERT_EQ(task.compute(sums, kOnePassMethod), 0);
    for (uint32_t r = 0; r < kMomentsResultCount; ++r) {  // only sums are needed from here on
      if ((kRows[r].estimate & sums) == 0) {
        std::fill(task.results[r].begin(), task.results[r].end(), Real(kUntouched));
      }
    }
    task.x.assign(task.x.size(), std::numeric_limits<Real>::quiet_NaN());
    ASSERT_EQ(task.compute(converted & kVectors, RAU_SS_METHOD_SUM_TO_MOM), 0);
    ASSERT_EQ(task.compute(converted & kMatrices, RAU_SS_METHOD_CP_TO_COVCOR), 0);
    Worst<Real> worst;
    worst.see(task, reference, kEverything);  // the sums are still there
    EXPECT_LT(worst.error, 20) << worst.where;
  }
}

TEST(Moments, InfinityNanAndOneObservation) {
  const double inf = std::numeric_limits<double>::infinity();
  for (const uint32_t variant : {0, 1, 2, 3}) {
    const uint32_t method = kMethods[variant / 2];
    MomentsTask<double> task(3, variant % 2 == 0);
    task.accumulate();
    Data<double> data(3, std::vector<double>(100, 1));
    data[0][40] = inf;
    data[1][99] = -std::numeric_limits<double>::quiet_NaN();
    task.feed(data, {}, 0, 1);
    ASSERT_EQ(task.compute(kEverything, method), 0);
    EXPECT_TRUE(task.results[kMean][1] == 1 && task.results[kRawMoment4][0] == 1);
    EXPECT_TRUE(std::isnan(task.results[kCentralMoment2][0]));
    EXPECT_EQ(task.results[kCrossProduct][1], 0);
    for (const size_t first : {1, 60}) {
      task.feed(data, {}, first, first == 1 ? 60 : 100);
      ASSERT_EQ(task.compute(kVectors, method), 0);
    }
    for (const MomentsResult result : {kMean, kRawMoment2, kRawMoment3, kRawSum4}) {
      EXPECT_EQ(task.results[result][0], inf) << kRows[result].name;
      EXPECT_TRUE(std::isnan(task.results[result][1])) << kRows[result].name;
    }
    EXPECT_TRUE(std::isnan(task.results[kCentralSum2][0]));
    EXPECT_TRUE(task.results[kMean][2] == 1 && task.results[kCentralSum2][2] == 0);
  }
}

// A variable without variance has undefined correlations; they become defined with it. The mode of
// the vector functions is the thread's again after a call.
TEST(Moments, CorrelationsOfAVariableThatWasConstant) {
  const uint32_t mode = kamSetMode(KAM_LA | KAM_DENORMALS_FLUSH | KAM_ERRMODE_IGNORE);
  const uint32_t wanted = kamGetMode();
  Data<double> data = make_data<double>(Shape::kRandom, 2, 100);
  std::fill_n(data[1].begin(), 50, 0.1);
  MomentsTask<double> task(2, true);
  task.accumulate();
  for (const size_t first : {0, 50}) {
    task.feed(data, {}, first, first + 50);
    ASSERT_EQ(task.compute(RAU_SS_COR, kOnePassMethod), 0);
    EXPECT_EQ(std::isnan(task.get(kCorrelation, 1, 0)), first == 0);
    EXPECT_EQ(task.get(kCorrelation, 1, 1) == 0, first == 0);
  }
  Worst<double> worst;
  worst.see(task, {data, std::vector<double>(), std::vector<double>(), false}, RAU_SS_COR);
  EXPECT_LT(worst.error, 20) << worst.where;
  EXPECT_EQ(kamGetMode(), wanted);
  kamClearErrStatus();
  kamSetMode(mode);
}

// With huge numbers there are three more: vectors, choice and product of the sweep in a wider type.
TYPED_TEST(MomentsOf, OutOfMemory) {
  using Real = TypeParam;
  const Threads threads(3);
  const uint32_t conversion = RAU_SS_METHOD_CP_TO_COVCOR;
  const uint64_t estimates = RAU_SS_COV | RAU_SS_COR | RAU_SS_CP | RAU_SS_3C_MOM;
  for (const Shape shape : {Shape::kRandom, Shape::kHuge}) {
    for (const uint32_t method : {kOnePassMethod, kFastMethod, kUserMeanMethod, conversion}) {
      MomentsTask<Real> task(20, false);
      task.accumulate();
      task.feed(make_data<Real>(shape, 20, 200), make_weights<Real>(WeightShape::kZeros, 200), 0,
                100);
      const auto before = task.results;
      const uint64_t asked = method == conversion ? RAU_SS_COR : estimates;
      const int64_t carried = method == kOnePassMethod || method == kUserMeanMethod,
                    wide = shape == Shape::kHuge && method != conversion ? 3 : 0;
      const auto call = [&] { return task.compute(asked, method); };
      const auto unchanged = [&] {
        EXPECT_TRUE(task.results == before && task.accumulated == (std::array<Real, 2>{0, 0}));
      };
      EXPECT_EQ(fail_each_allocation(RAU_SS_ERROR_MEM_FAILURE, call, unchanged),
                1 + carried + wide);
    }
  }
}

}  // namespace
