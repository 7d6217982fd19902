#include "statistics/summary/task.h"

#include <gtest/gtest.h>
#include <string.h>

#include <array>
#include <initializer_list>
#include <set>
#include <utility>
#include <vector>

#include "services/memory.h"
#include "tests/support/failing_allocator.h"

namespace {

using namespace orba;

// Parameters as they are promised: identifier, floating or integer, status for a null address.
struct Promise {
  int32_t id;
  char type;
  int32_t null_code;
};
constexpr Promise kPromises[] = {
    {1, 'I', -4001},  {2, 'I', -4002},  {3, 'F', -4032},  {4, 'I', -4044},  {5, 'I', -4004},
    {6, 'F', -4005},  {7, 'F', -4006},  {8, 'F', -4007},  {9, 'F', -4008},  {10, 'F', -4009},
    {11, 'F', -4010}, {12, 'F', -4011}, {13, 'F', -4012}, {14, 'F', -4013}, {15, 'F', -4014},
    {16, 'F', -4015}, {17, 'F', -4016}, {18, 'F', -4017}, {19, 'F', -4018}, {20, 'I', -4044},
    {21, 'F', -4019}, {22, 'I', -4044}, {23, 'F', -4020}, {24, 'I', -4022}, {25, 'F', -4021},
    {26, 'F', -4023}, {27, 'F', -4024}, {28, 'I', -4038}, {29, 'I', -4044}, {30, 'F', -4035},
    {31, 'F', -4034}, {32, 'I', -4038}, {33, 'F', -4037}, {34, 'I', -4044}, {35, 'F', -4036},
    {36, 'I', -4044}, {37, 'I', -4043}, {38, 'F', -4042}, {39, 'F', -4028}, {40, 'F', -4027},
    {41, 'I', -4040}, {42, 'F', -4039}, {43, 'F', -4041}, {44, 'I', -4044}, {45, 'I', -4045},
    {46, 'F', -4046}, {47, 'I', -4044}, {48, 'F', -4047}, {49, 'I', -4044}, {50, 'I', -4049},
    {51, 'F', -4048}, {52, 'I', -4052}, {53, 'F', -4053}, {54, 'I', -4055}, {55, 'F', -4054},
    {56, 'I', -4056}, {57, 'F', -4057}, {58, 'I', -4061}, {59, 'F', -4062}, {60, 'F', -4071},
    {61, 'I', -4044}, {62, 'I', -4066}, {63, 'F', -4065}, {64, 'I', -4069}, {65, 'F', -4068},
    {66, 'F', -4070}, {67, 'F', -4006}, {68, 'F', -4075}, {69, 'F', -4076}, {70, 'F', -4077},
    {71, 'F', -4078}, {72, 'F', -4079}, {73, 'F', -4080}, {74, 'F', -4081}, {75, 'I', -4044},
    {76, 'F', -4082}, {77, 'F', -4083}, {78, 'F', -4084}, {79, 'I', -4044}};

// Stand-ins for whatever parameters point to.
double cells[100];
template <class T>
T* cell(int32_t id) {
  return reinterpret_cast<T*>(&cells[id]);
}

class TaskTest : public testing::Test {
 protected:
  TaskTest() {
    EXPECT_EQ(raudSSNewTask(&task, &p, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
  }
  ~TaskTest() override { rauSSDeleteTask(&task); }

  using Image = std::array<uintptr_t, sizeof(SsTask) / sizeof(uintptr_t)>;
  Image image() const {
    Image words;
    memcpy(words.data(), task, sizeof words);
    return words;
  }
  int32_t edit(const Promise& promise, const double* address) {
    if (promise.type == 'F') return raudSSEditTask(task, promise.id, address);
    return rauiSSEditTask(task, promise.id, reinterpret_cast<const int32_t*>(address));
  }

  const int32_t p = 4;
  SsTask* task = nullptr;
};

TEST_F(TaskTest, EachParameterHasAFieldOfItsOwn) {
  std::set<size_t> fields;
  for (const Promise& promise : kPromises) {
    const Image before = image();
    EXPECT_EQ(edit(promise, nullptr), promise.null_code) << promise.id;
    EXPECT_EQ(image(), before) << promise.id;
    EXPECT_EQ(edit(promise, cell<double>(promise.id)), 0) << promise.id;
    EXPECT_EQ(edit(promise, nullptr), promise.null_code) << promise.id;
    const Image after = image();
    int changed = 0;
    for (size_t i = 0; i < after.size(); ++i) {
      if (after[i] == before[i]) continue;
      ++changed;
      EXPECT_EQ(after[i], reinterpret_cast<uintptr_t>(cell<double>(promise.id)));
      EXPECT_TRUE(fields.insert(i).second) << promise.id;
    }
    EXPECT_EQ(changed, 1) << promise.id;
  }
}

TEST_F(TaskTest, RefusedIdentifiers) {
  const Image before = image();
  for (int32_t id = -2; id < 90; ++id) {
    char type = 0;
    for (const Promise& promise : kPromises) {
      if (promise.id == id) type = promise.type;
    }
    // A fault of the identifier comes before one of the address.
    if (type != 'F') {
      EXPECT_EQ(raudSSEditTask(task, id, nullptr), -3) << id;
      EXPECT_EQ(rausSSEditTask(task, id, cell<float>(1)), -3) << id;
    }
    if (type != 'I') {
      EXPECT_EQ(rauiSSEditTask(task, id, cell<int32_t>(1)), -3) << id;
    }
  }
  EXPECT_EQ(image(), before);
  EXPECT_EQ(raudSSEditTask(nullptr, -1, nullptr), -4031);
  EXPECT_EQ(rausSSEditTask(nullptr, 3, nullptr), -4031);
  EXPECT_EQ(rauiSSEditTask(nullptr, 1, nullptr), -4031);
}

TEST_F(TaskTest, FormsByAddress) {
  const int32_t mean = 7, storage = 79;
  EXPECT_EQ(raudssedittask(&task, &mean, cell<double>(7)), 0);
  EXPECT_EQ(task->mean, &cells[7]);
  EXPECT_EQ(rausssedittask(&task, &mean, cell<float>(8)), 0);
  EXPECT_EQ(task->mean, &cells[8]);
  EXPECT_EQ(rauissedittask(&task, &storage, cell<int32_t>(9)), 0);
  EXPECT_EQ(task->sorted_observations_storage, &cells[9]);
  SsTask* const none = nullptr;
  EXPECT_EQ(raudssedittask(&none, &mean, cell<double>(7)), -4031);
  EXPECT_EQ(raudssedittask(nullptr, &mean, cell<double>(7)), -4031);
}

// ---- Editors of several parameters ----

template <class... Address>
struct Editor {
  int32_t (*by_value)(SsTask*, Address...);
  int32_t (*by_address)(SsTask* const*, Address...);

  // An id of 0 stands for a null address.
  int32_t set(SsTask* task, const std::vector<int32_t>& ids, bool lower_case) const {
    return set(task, ids, lower_case, std::index_sequence_for<Address...>());
  }
  template <size_t... I>
  int32_t set(SsTask* task, const std::vector<int32_t>& ids, bool lower_case,
              std::index_sequence<I...>) const {
    const auto address = [&](size_t i) -> void* { return ids[i] != 0 ? &cells[ids[i]] : nullptr; };
    return lower_case ? by_address(&task, static_cast<Address>(address(I))...)
                      : by_value(task, static_cast<Address>(address(I))...);
  }
};

template <class... Address>
void expect_sets(int32_t (*by_value)(SsTask*, Address...),
                 int32_t (*by_address)(SsTask* const*, Address...),
                 const std::vector<int32_t>& ids) {
  const Editor<Address...> editor = {by_value, by_address};
  const std::vector<int32_t> none(ids.size());
  const int32_t p = 1;
  ASSERT_EQ(ids.size(), sizeof...(Address));
  for (const bool lower_case : {false, true}) {
    SsTask *task = nullptr, *expected = nullptr;
    ASSERT_EQ(raudSSNewTask(&task, &p, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
    ASSERT_EQ(raudSSNewTask(&expected, &p, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
    const auto same = [&] { return memcmp(task, expected, sizeof *task) == 0; };
    EXPECT_EQ(editor.set(task, none, lower_case), 0);
    EXPECT_TRUE(same());
    EXPECT_EQ(editor.set(task, ids, lower_case), 0);
    for (const int32_t id : ids) {
      if (raudSSEditTask(expected, id, &cells[id]) != 0) {
        EXPECT_EQ(rauiSSEditTask(expected, id, cell<int32_t>(id)), 0);
      }
    }
    EXPECT_TRUE(same()) << ids[0];
    EXPECT_EQ(editor.set(task, none, lower_case), 0);
    EXPECT_TRUE(same()) << ids[0];
    EXPECT_EQ(editor.set(nullptr, ids, lower_case), -4031);
    rauSSDeleteTask(&task);
    rauSSDeleteTask(&expected);
  }
}

#define ORBA_EXPECT_SETS(Name, name, ...)                           \
  expect_sets(&raudSSEdit##Name, &raudssedit##name, {__VA_ARGS__}); \
  expect_sets(&rausSSEdit##Name, &rausssedit##name, {__VA_ARGS__})

TEST(TaskEditors, SetWhatIsGiven) {
  ORBA_EXPECT_SETS(Moments, moments, 7, 8, 9, 10, 11, 12, 13);
  ORBA_EXPECT_SETS(CovCor, covcor, 7, 19, 20, 21, 22);
  ORBA_EXPECT_SETS(PartialCovCor, partialcovcor, 45, 19, 20, 21, 22, 46, 47, 48, 49);
  ORBA_EXPECT_SETS(Quantiles, quantiles, 24, 25, 26, 27, 44);
  ORBA_EXPECT_SETS(StreamQuantiles, streamquantiles, 64, 65, 66, 62, 63);
  ORBA_EXPECT_SETS(PooledCovariance, pooledcovariance, 28, 30, 31, 32, 33, 35);
  ORBA_EXPECT_SETS(RobustCovariance, robustcovariance, 36, 37, 38, 39, 40);
  ORBA_EXPECT_SETS(OutliersDetection, outliersdetection, 41, 42, 43);
  ORBA_EXPECT_SETS(MissingValues, missingvalues, 50, 51, 52, 53, 58, 59, 54, 55, 56, 57);
  ORBA_EXPECT_SETS(CorParameterization, corparameterization, 21, 22, 60, 61);
}

// ---- Life ----

TEST(TaskLife, ChecksInOrder) {
  const int32_t zero = 0, two = 2, rows = 0x10000, cols = 0x20000, both = 0x30000;
  const double* x = cells;
  const struct {
    const int32_t *p, *n, *storage;
    const double* x;
    int32_t status;
  } cases[] = {{nullptr, nullptr, nullptr, x, -4001},
               {&zero, nullptr, nullptr, x, -4001},
               {&two, nullptr, nullptr, x, -4044},
               {&two, nullptr, &both, x, -4003},
               {&two, nullptr, &zero, x, -4003},
               {&two, nullptr, &rows, x, -4002},
               {&two, &zero, &cols, x, -4002},
               {&two, &two, &cols, x, 0},
               {&two, &two, &rows, x, 0},
               {&two, nullptr, nullptr, nullptr, 0},
               {&two, &zero, &both, nullptr, 0}};
  for (const auto& c : cases) {
    SsTask* const untouched = reinterpret_cast<SsTask*>(cells);
    SsTask* task = untouched;
    EXPECT_EQ(raudSSNewTask(&task, c.p, c.n, c.storage, c.x, nullptr, nullptr), c.status);
    if (c.status == 0) {
      EXPECT_EQ(rauSSDeleteTask(&task), 0);
      EXPECT_EQ(task, nullptr);
    } else {
      EXPECT_EQ(task, untouched);
    }
  }
  EXPECT_EQ(raudSSNewTask(nullptr, &two, nullptr, nullptr, nullptr, nullptr, nullptr), -4031);
}

TEST(TaskLife, KeepsAddressesOnly) {
  int32_t p = 2, n = 3, rows = 0x10000, indices[2] = {};
  SsTask* task;
  ASSERT_EQ(rausssnewtask(&task, &p, &n, &rows, cell<float>(1), cell<float>(2), indices), 0);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(task) % 128, 0u);
  SsTask expected = {};
  expected.format_tag = 2;
  expected.dimension = &p;
  expected.observation_count = &n;
  expected.observation_storage = &rows;
  expected.observations = &cells[1];
  expected.weights = &cells[2];
  expected.indices = indices;
  EXPECT_EQ(memcmp(task, &expected, sizeof expected), 0);
  EXPECT_EQ(raussdeletetask(&task), 0);

  ASSERT_EQ(raudssnewtask(&task, &p, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(task->is_double, 1);
  EXPECT_EQ(rauSSDeleteTask(&task), 0);
  EXPECT_EQ(rauSSDeleteTask(&task), -4031);
  EXPECT_EQ(rauSSDeleteTask(nullptr), -4031);
}

TEST(TaskLife, IntegersOf64Bits) {
  const int64_t below_one = -(int64_t{1} << 40), p = (int64_t{1} << 40) + 1, n = int64_t{1} << 32;
  const int64_t rows = RAU_SS_MATRIX_STORAGE_ROWS, none = rows + n;
  SsTask* task;
  const auto make = [&](const void* dimension, const void* count, const void* storage) {
    return statistics::new_task(&task, dimension, count, storage, cells, nullptr, nullptr, true, 1);
  };
  EXPECT_EQ(make(&below_one, &n, &rows), -4001);
  EXPECT_EQ(make(&p, &below_one, &rows), -4002);
  EXPECT_EQ(make(&p, &n, &none), -4003);
  ASSERT_EQ(make(&p, &n, &rows), 0);
  EXPECT_EQ(task->integer(task->dimension), p);
  EXPECT_EQ(task->integer(&rows, 0), rows);
  EXPECT_EQ(statistics::delete_task(&task), 0);
}

TEST(TaskLife, LackOfMemory) {
  const int32_t p = 1;
  SsTask* task;
  const auto make = [&] {
    task = reinterpret_cast<SsTask*>(cells);
    return raudSSNewTask(&task, &p, nullptr, nullptr, nullptr, nullptr, nullptr);
  };
  const auto check = [&] { EXPECT_EQ(task, nullptr); };
  EXPECT_EQ(test::fail_each_allocation(-4000, make, check), 1);
  EXPECT_EQ(rauSSDeleteTask(&task), 0);
}

TEST(TaskLife, DeletionFreesAllThatIsTheTasks) {
  const test::FailingAllocator allocator(0);
  const int32_t p = 1;
  SsTask* task;
  ASSERT_EQ(raudSSNewTask(&task, &p, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
  task->saved_mean = services::allocate(8, 128);
  task->stream_quantile_state = services::allocate(8, 128);
  task->release_hooks[0] = [](SsTask& old) noexcept {
    services::free_memory(old.stream_quantile_state);
  };
  task->release_count = 1;
  EXPECT_EQ(allocator.live_blocks(), 3);
  EXPECT_EQ(rauSSDeleteTask(&task), 0);
  EXPECT_EQ(allocator.live_blocks(), 0);
}

}  // namespace
