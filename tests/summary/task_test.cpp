#include "statistics/summary/task.h"

#include <gtest/gtest.h>
#include <string.h>

#include <array>
#include <set>
#include <utility>
#include <vector>

#include "services/memory.h"
#include "tests/support/failing_allocator.h"

namespace {

using namespace orba;

// Parameters as they are promised: the status for a null address by identifier, and which of them
// are integers.
constexpr int32_t kNullCodes[] = {
    0,     -4001, -4002, -4032, -4044, -4004, -4005, -4006, -4007, -4008, -4009, -4010,
    -4011, -4012, -4013, -4014, -4015, -4016, -4017, -4018, -4044, -4019, -4044, -4020,
    -4022, -4021, -4023, -4024, -4038, -4044, -4035, -4034, -4038, -4037, -4044, -4036,
    -4044, -4043, -4042, -4028, -4027, -4040, -4039, -4041, -4044, -4045, -4046, -4044,
    -4047, -4044, -4049, -4048, -4052, -4053, -4055, -4054, -4056, -4057, -4061, -4062,
    -4071, -4044, -4066, -4065, -4069, -4068, -4070, -4006, -4075, -4076, -4077, -4078,
    -4079, -4080, -4081, -4044, -4082, -4083, -4084, -4044};
const std::set<int32_t> kIntegers = {1,  2,  4,  5,  20, 22, 24, 28, 29, 32, 34, 36, 37, 41,
                                     44, 45, 47, 49, 50, 52, 54, 56, 58, 61, 62, 64, 75, 79};

// Stand-ins for whatever parameters point to.
double cells[100];
float* const floats = reinterpret_cast<float*>(cells);

// A task and the words it consists of.
class TaskTest : public testing::Test {
 protected:
  TaskTest() {
    EXPECT_EQ(raudSSNewTask(&made, &p, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
    task = made;
  }
  ~TaskTest() override { rauSSDeleteTask(&made); }

  using Image = std::array<uintptr_t, sizeof(SsTask) / sizeof(uintptr_t)>;
  Image image() const {
    Image words;
    memcpy(words.data(), task, sizeof words);
    return words;
  }
  // The forms of the entry for the type take turns.
  int32_t edit(char type, int32_t id, int32_t at) {
    auto* address = at != 0 ? &cells[at] : nullptr;
    auto* integers = reinterpret_cast<const int32_t*>(address);
    auto* single = reinterpret_cast<const float*>(address);
    const int form = (type == 'F' ? 0 : 4) + turn++ % 4;
    if (form == 0) return raudSSEditTask(task, id, address);
    if (form == 1) return raudssedittask(&task, &id, address);
    if (form == 2) return rausSSEditTask(task, id, single);
    if (form == 3) return rausssedittask(&task, &id, single);
    return form % 2 == 0 ? rauiSSEditTask(task, id, integers)
                         : rauissedittask(&task, &id, integers);
  }

  // An editor of several parameters sets those of the ids, to their cells, and takes null for
  // "leave it".
  template <class... Address>
  void expect_sets(int32_t (*by_value)(SsTask*, Address...),
                   int32_t (*by_address)(SsTask* const*, Address...), std::vector<int32_t> ids) {
    ASSERT_EQ(ids.size(), sizeof...(Address));
    const auto call = [&]<size_t... I>(bool lower_case, SsTask* to, std::index_sequence<I...>) {
      const auto at = [&](size_t i) -> void* { return ids[i] != 0 ? &cells[ids[i]] : nullptr; };
      return lower_case ? by_address(&to, static_cast<Address>(at(I))...)
                        : by_value(to, static_cast<Address>(at(I))...);
    };
    constexpr auto all = std::index_sequence_for<Address...>();
    const auto edit_all = [&](int32_t shift) {
      for (const int32_t id : ids) {
        EXPECT_TRUE(edit('F', id, id + shift) == 0 || edit('I', id, id + shift) == 0);
      }
      return image();
    };
    for (const bool lower_case : {false, true}) {
      const Image expected = edit_all(0);
      edit_all(1);
      EXPECT_EQ(call(lower_case, task, all), 0);
      EXPECT_EQ(image(), expected) << ids[0];
      const std::vector<int32_t> given = std::exchange(ids, std::vector<int32_t>(ids.size()));
      EXPECT_EQ(call(lower_case, task, all), 0);
      EXPECT_EQ(image(), expected) << given[0];
      ids = given;
      EXPECT_EQ(call(lower_case, nullptr, all), -4031);
    }
  }

  const int32_t p = 4;
  SsTask *made = nullptr, *task;
  int turn = 0;
};

TEST_F(TaskTest, EachParameterHasAFieldOfItsOwn) {
  std::set<size_t> fields;
  for (int32_t id = -2; id < 90; ++id) {
    const Image before = image();
    const char type = id < 1 || id > 79 ? 0 : kIntegers.contains(id) ? 'I' : 'F';
    // A fault of the identifier comes before one of the address.
    for (const char other : {'F', 'I'}) {
      if (other == type) continue;
      EXPECT_EQ(edit(other, id, 0), -3) << id;
      EXPECT_EQ(edit(other, id, 1), -3) << id;
    }
    EXPECT_EQ(image(), before) << id;
    if (type == 0) continue;
    EXPECT_EQ(edit(type, id, 0), kNullCodes[id]) << id;
    EXPECT_EQ(image(), before) << id;
    EXPECT_EQ(edit(type, id, id), 0) << id;
    const Image after = image();
    size_t changed = 0;
    for (size_t i = 0; i < after.size(); ++i) {
      if (after[i] == before[i]) continue;
      ++changed;
      EXPECT_EQ(after[i], reinterpret_cast<uintptr_t>(&cells[id]));
      EXPECT_TRUE(fields.insert(i).second) << id;
    }
    EXPECT_EQ(changed, 1u) << id;
  }
  const int32_t mean = 7;
  EXPECT_EQ(raudssedittask(nullptr, &mean, cells), -4031);
  task = nullptr;
  for (int form = 0; form < 4; ++form) {
    EXPECT_EQ(edit('F', -1, 0), -4031);
    EXPECT_EQ(edit('I', -1, 0), -4031);
  }
}

#define ORBA_EXPECT_SETS(Name, name, ...)                           \
  expect_sets(&raudSSEdit##Name, &raudssedit##name, {__VA_ARGS__}); \
  expect_sets(&rausSSEdit##Name, &rausssedit##name, {__VA_ARGS__})

TEST_F(TaskTest, EditorsSetWhatIsGiven) {
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
    if (c.status != 0) {
      EXPECT_EQ(task, untouched);
    } else {
      EXPECT_EQ(rauSSDeleteTask(&task), 0);
      EXPECT_EQ(task, nullptr);
      EXPECT_EQ(rauSSDeleteTask(&task), -4031);
    }
  }
  EXPECT_EQ(raudSSNewTask(nullptr, &two, nullptr, nullptr, nullptr, nullptr, nullptr), -4031);
  EXPECT_EQ(rauSSDeleteTask(nullptr), -4031);
}

TEST(TaskLife, KeepsAddressesOnly) {
  int32_t p = 2, n = 3, rows = 0x10000, indices[2] = {};
  for (const bool is_double : {false, true}) {
    SsTask* task;
    ASSERT_EQ(is_double ? raudssnewtask(&task, &p, &n, &rows, cells + 1, cells + 2, indices)
                        : rausssnewtask(&task, &p, &n, &rows, floats + 2, floats + 4, indices),
              0);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(task) % 128, 0u);
    SsTask expected = {};
    expected.format_tag = 2;
    expected.is_double = is_double;
    expected.dimension = &p;
    expected.observation_count = &n;
    expected.observation_storage = &rows;
    expected.observations = &cells[1];
    expected.weights = &cells[2];
    expected.indices = indices;
    EXPECT_EQ(memcmp(task, &expected, sizeof expected), 0);
    EXPECT_EQ(raussdeletetask(&task), 0);
  }
}

TEST(TaskLife, Memory) {
  const int32_t p = 1;
  SsTask* task;
  const auto make = [&] {
    task = reinterpret_cast<SsTask*>(cells);
    return raudSSNewTask(&task, &p, nullptr, nullptr, nullptr, nullptr, nullptr);
  };
  EXPECT_EQ(test::fail_each_allocation(-4000, make, [&] { EXPECT_EQ(task, nullptr); }), 1);
  EXPECT_EQ(rauSSDeleteTask(&task), 0);

  const test::FailingAllocator allocator(0);
  ASSERT_EQ(make(), 0);
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
