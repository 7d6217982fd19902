// Threaders with made-up kernels that tell what they were given, and real calls on several threads.
#include "vector/frame/threader.h"

#include <gtest/gtest.h>
#include <math.h>
#include <omp.h>
#include <stdlib.h>
#include <string.h>
#include <xmmintrin.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>
#include <numeric>
#include <set>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "services/threads/thread_count.h"
#include "tests/support/observe.h"
#include "tests/support/process.h"
#include "vector/words/thread_words.h"

namespace orba::vector {
namespace {

using services::set_local_thread_count;
using test::in_process_with;

// Requests are taken as they stand, whatever the machine has.
constexpr char kFixed[] = "ORBA_DYNAMIC=FALSE ORBA_NUM_THREADS=4";

// ---- a kernel that keeps its arguments ----

template <class... Args>
struct Recorder {
  using Kernel = void(int32_t, Args...);

  struct Slice {
    int32_t count;
    std::tuple<Args...> args;
    std::thread::id thread;
    KamThreadWords words;
  };
  static inline std::vector<Slice> slices;
  static inline std::mutex mutex;
  static inline Kernel* action = nullptr;  // on the slice's thread

  static void kernel(int32_t count, Args... args) {
    {
      const std::lock_guard lock(mutex);
      slices.push_back({count, {args...}, std::this_thread::get_id(), thread_words()});
    }
    if (action != nullptr) action(count, args...);
  }

  // The slices in the order of their first elements.
  static std::vector<Slice> run(int32_t n, Args... args, float hint, Kernel* then = nullptr) {
    slices.clear();
    action = then;
    threader<Kernel>(kernel, n, args..., hint);
    std::ranges::sort(slices, {}, [](const Slice& slice) { return std::get<0>(slice.args); });
    return slices;
  }
};

using Plain = Recorder<const double*, double*>;
const double a[1000] = {};
double y[1000];

// Side by side, one to a thread, the first on the caller's.
TEST(Threader, Slices) {
  if (!in_process_with(kFixed)) return;
  const std::pair<int32_t, std::vector<int32_t>> cases[] = {
      // threads, and lengths of slices
      {8, {99}},
      {1, {1000}},
      {8, {13, 13, 13, 13, 12, 12, 12, 12}},
      {3, {34, 33, 33}},
      {128, std::vector<int32_t>(100, 1)}};  // the other 28 have nothing to do
  for (const auto& [request, counts] : cases) {
    SCOPED_TRACE(request);
    set_local_thread_count(request);
    const auto slices = Plain::run(std::reduce(counts.begin(), counts.end()), a, y, 1.0f);
    ASSERT_EQ(slices.size(), counts.size());
    EXPECT_EQ(slices[0].thread, std::this_thread::get_id());
    std::set<std::thread::id> threads;
    for (size_t i = 0, first = 0; i < slices.size(); first += slices[i++].count) {
      EXPECT_EQ(slices[i].args, std::tuple(a + first, y + first));
      EXPECT_EQ(slices[i].count, counts[i]);
      EXPECT_TRUE(threads.insert(slices[i].thread).second);
    }
  }
}

// With dynamic adjustment the work decides, by the balance function.
TEST(Threader, WorkDecides) {
  if (!in_process_with("ORBA_DYNAMIC=TRUE")) return;
  set_local_thread_count(4);
  for (const float hint : {1.0f, 70.0f, 1e9f}) {
    int32_t expected = 4;
    services::balance_threads(&expected, 1000, hint);
    EXPECT_EQ(Plain::run(1000, a, y, hint).size(), static_cast<size_t>(expected)) << hint;
  }
}

// The first query of thread counts reads the environment for good.
TEST(Threader, ShortVectorsDoNotAskForThreads) {
  if (!in_process_with(kFixed)) return;
  vdAbs(99, a, y);
  setenv("ORBA_NUM_THREADS", "2", 1);
  vdAbs(100, a, y);
  setenv("ORBA_NUM_THREADS", "3", 1);
  EXPECT_EQ(services::thread_count(services::Domain::kam), 2);
}

// ---- every shape ----

template <class... Args>
void check_shape(const std::string& name, void (*)(int32_t, Args...)) {
  SCOPED_TRACE(name);
  using Tuple = std::tuple<Args...>;
  // What the name says of the first array.
  EXPECT_EQ(sizeof(*std::get<0>(Tuple())), name[0] == 's' ? 4u : name[0] == 'z' ? 16u : 8u);
  EXPECT_EQ(name.find('I') != name.npos, (std::is_same_v<int32_t, std::tuple_element_t<1, Tuple>>));
  // Arrays are addresses that nobody follows; increments differ from each other and from 1.
  Tuple whole;
  int32_t number = 0, increments = 0;
  std::vector<int64_t> steps;  // in bytes, of the arrays
  const auto make = [&]<class T>(T& argument) {
    ++number;
    if constexpr (std::is_pointer_v<T>) {
      argument = reinterpret_cast<T>(static_cast<uintptr_t>(number) << 40);
      steps.push_back(sizeof *argument);
    } else if constexpr (std::is_same_v<T, int32_t>) {
      argument = std::array{3, -2, 5}[static_cast<size_t>(increments++)];
      steps.back() *= argument;
    } else {
      memset(&argument, number, sizeof argument);
    }
  };
  std::apply([&](auto&... argument) { (make(argument), ...); }, whole);
  for (const int32_t n : {99, 1003}) {
    const auto slices =
        std::apply([&](auto... args) { return Recorder<Args...>::run(n, args..., 1.0f); }, whole);
    EXPECT_EQ(slices.size(), n == 99 ? 1u : 4u);
    int32_t first = 0;
    for (const auto& slice : slices) {
      size_t array = 0;
      const auto moved = [&]<class T>(T argument) {
        if constexpr (std::is_pointer_v<T>) {
          argument =
              reinterpret_cast<T>(reinterpret_cast<intptr_t>(argument) + steps[array++] * first);
        }
        return argument;
      };
      const auto expected =
          std::apply([&](auto... args) { return std::tuple{moved(args)...}; }, whole);
      const auto same = [](const auto& one, const auto& two) {
        return memcmp(&one, &two, sizeof one) == 0;
      };
      [&]<size_t... i>(std::index_sequence<i...>) {
        EXPECT_TRUE((same(std::get<i>(slice.args), std::get<i>(expected)) && ...));
      }
      (std::index_sequence_for<Args...>{});
      first += slice.count;
    }
    EXPECT_EQ(first, n);
  }
}

TEST(Threader, EveryShape) {
  if (!in_process_with(kFixed)) return;
  int threaders = 0;
#define ORBA_UNWRAP(...) __VA_ARGS__
#define ORBA_THREADER(name, parameters, arguments)               \
  {                                                              \
    using Kernel = void(int32_t ORBA_UNWRAP parameters);         \
    EXPECT_EQ(threader<Kernel>, &orba_kam_serv_threader_##name); \
    check_shape(#name, static_cast<Kernel*>(nullptr));           \
    ++threaders;                                                 \
  }
#include "vector/frame/threaders.def"
#undef ORBA_THREADER
  EXPECT_EQ(threaders, 44);
}

// ---- the words of the threads ----

int some_callback(KamErrorContext*) { return 0; }

TEST(Threader, WorkersFollowTheCaller) {
  if (!in_process_with(kFixed)) return;
  const std::pair<uint32_t, KamErrorCallBack> settings[] = {
      {KAM_EP | KAM_ERRMODE_CALLBACK | KAM_DENORMALS_FLUSH | KAM_TRAP_OVERFLOW, some_callback},
      {KAM_LA | KAM_ERRMODE_IGNORE | KAM_DENORMALS_KEEP, nullptr},  // clears the workers', too
      {KAM_HA | KAM_ERRMODE_STDERR, some_callback}};  // mode without the bit, callback set
  for (const auto& [request, callback] : settings) {
    kamSetErrorCallBack(callback);
    kamSetMode(request);
    const uint32_t mode = kamGetMode();
    kamSetErrStatus(7);
    const auto slices = Plain::run(400, a, y, 1.0f);
    EXPECT_EQ(slices.size(), 4u);
    for (const auto& [count, args, thread, words] : slices) {
      EXPECT_EQ(std::tie(words.mode, words.callback), std::tie(mode, callback));
      EXPECT_EQ(words.status, KAM_STATUS_OK);
      EXPECT_EQ(words.base, a);
    }
    EXPECT_EQ(kamGetMode(), mode);
    EXPECT_EQ(kamGetErrorCallBack(), callback);
    // No thread is left with the place of an array that may be gone.
    const void* bases[4];
#pragma omp parallel num_threads(4)
    bases[omp_get_thread_num()] = thread_words().base;
    for (const void* base : bases) EXPECT_EQ(base, nullptr);
  }
}

// The element at a slice's start says which error the slice meets; none at 0.
void fail_as_told(int32_t, const double* x, double*) {
  if (*x != 0) set_status(static_cast<int32_t>(*x));
}

TEST(Threader, StatusOfAFork) {
  if (!in_process_with(kFixed)) return;
  for (const std::array<int, 4>& errors :
       {std::array{0, 0, 0, 0}, {3, 0, 0, 0}, {0, 0, 1, 0}, {0, 4, 0, 4}, {0, 1, 2, 3}}) {
    double x[400] = {};
    for (size_t i = 0; i < 4; ++i) x[100 * i] = errors[i];
    for (int repeat = 0; repeat < 20; ++repeat) {
      kamSetErrStatus(7);
      Plain::run(400, x, y, 1.0f, fail_as_told);
      const int32_t left = kamGetErrStatus();
      EXPECT_NE(std::ranges::find(errors, left), errors.end()) << left;
      EXPECT_EQ(left == KAM_STATUS_OK, std::ranges::max(errors) == 0);
    }
  }
  // A call on one thread touches it only for an error.
  double x[100] = {};
  kamSetErrStatus(7);
  Plain::run(99, x, y, 1.0f, fail_as_told);
  set_local_thread_count(1);
  Plain::run(100, x, y, 1.0f, fail_as_told);
  EXPECT_EQ(kamGetErrStatus(), 7);
  x[0] = KAM_STATUS_SING;
  Plain::run(99, x, y, 1.0f, fail_as_told);
  EXPECT_EQ(kamGetErrStatus(), KAM_STATUS_SING);
}

// ---- nesting ----

// Slices of a call inside a region of the caller's, and the status that was 7 before.
void expect_inside_a_region(size_t slices, int32_t status) {
#pragma omp parallel num_threads(2)
#pragma omp critical  // the recorder is common to all
  {
    kamSetErrStatus(7);
    EXPECT_EQ(Plain::run(400, a, y, 1.0f).size(), slices);
    EXPECT_EQ(kamGetErrStatus(), status);
  }
}

TEST(Threader, InsideARegionOfTheCaller) {
  if (!in_process_with("ORBA_NUM_THREADS=4")) return;
  expect_inside_a_region(1, 7);
}

// As the runtime allows: by default the inner region has one thread, which goes the way of a fork.
TEST(Threader, InsideARegionWithFixedThreads) {
  if (!in_process_with(kFixed)) return;
  expect_inside_a_region(1, 0);
  omp_set_max_active_levels(2);
  expect_inside_a_region(4, 0);
}

// ---- real calls ----

// A callback may call the library in its turn: short and long vectors, with errors of their own.
std::vector<int32_t> error_indexes;
std::mutex error_mutex;
thread_local int depth = 0;
std::atomic<int> faults{0};

int call_the_library(KamErrorContext* context) {
  faults += kamGetErrStatus() != context->code;
  faults += (_mm_getcsr() & 0xFFC0) != 0x1F80;  // whatever the caller's control
  if (depth == 1) {
    faults += context->index != 1 || context->code != KAM_STATUS_ERRDOM;
    return 1;
  }
  {
    const std::lock_guard lock(error_mutex);
    error_indexes.push_back(context->index);
  }
  context->r1 = 42;
  ++depth;
  const double negative[400] = {4, -1};
  double r[400];
  vdAbs(400, negative, r);
  vdSqrt(2, negative, r);
  --depth;
  return 0;
}

TEST(ThreadedCall, CallbacksMayCallTheLibrary) {
  if (!in_process_with(kFixed)) return;
  const std::vector<int32_t> zeros = {0, 99, 250, 251, 300, 999};
  std::vector<double> x(1000, 2.0);
  for (const int32_t i : zeros) x[static_cast<size_t>(i)] = 0;
  kamSetErrorCallBack(call_the_library);
  kamSetMode(KAM_ERRMODE_CALLBACK);
  for (const int32_t threads : {1, 2, 4}) {
    set_local_thread_count(threads);
    error_indexes.clear();
    _MM_SET_ROUNDING_MODE(_MM_ROUND_UP);
    vdInv(1000, x.data(), y);
    EXPECT_EQ(_MM_GET_ROUNDING_MODE(), _MM_ROUND_UP);
    _MM_SET_ROUNDING_MODE(_MM_ROUND_NEAREST);
    std::ranges::sort(error_indexes);
    EXPECT_EQ(error_indexes, zeros);
    EXPECT_EQ(faults, 0);
    EXPECT_EQ(kamGetErrStatus(), KAM_STATUS_ERRDOM);  // of the last call on the thread
    for (const int32_t i : zeros) EXPECT_EQ(y[i], 42);
  }
  // A long call without errors leaves the status at 0.
  kamSetErrorCallBack([](KamErrorContext*) {
    double r[400];
    vdAbs(400, a, r);
    return 0;
  });
  vdInv(1, x.data(), y);
  EXPECT_EQ(kamGetErrStatus(), KAM_STATUS_OK);
}

// The warning of a call whose accuracy is not that of the mode is gone when the call has forked, and
// slices do not show in its results.
TEST(ThreadedCall, AccuracyWarningsAreThoseOfSerialCalls) {
  if (!in_process_with(kFixed)) return;
  constexpr int n = 1003, few = 99;
  std::vector<double> p(n), q(n), slices(n), r(n);
  for (size_t i = 0; i < n; ++i) p[i] = sqrt(static_cast<double>(i)), q[i] = 1 / (p[i] + 0.3);
  for (const uint32_t accuracy : {KAM_LA, KAM_HA, KAM_EP}) {
    kamSetMode(accuracy);
    for (int i = 0; i < n; i += few) {
      kamClearErrStatus();
      vdLinearFrac(std::min(few, n - i), &p[i], &q[i], 1.1, 0.1, -0.7, 0.3, &slices[i]);
      EXPECT_EQ(kamGetErrStatus(), accuracy == KAM_EP ? KAM_STATUS_OK : KAM_STATUS_ACCURACYWARNING);
    }
    vdLinearFrac(n, p.data(), q.data(), 1.1, 0.1, -0.7, 0.3, r.data());
    EXPECT_EQ(kamGetErrStatus(), KAM_STATUS_OK);
    EXPECT_EQ(r, slices);
  }
}

// Application threads with modes and callbacks of their own fork at the same time.
TEST(ThreadedCall, ManyApplicationThreads) {
  if (!in_process_with(kFixed)) return;
  constexpr size_t n = 5000;
  std::vector<double> x(n), expected(n);
  std::iota(x.begin(), x.end(), 1.0);
  set_local_thread_count(1);
  vmdInvSqrt(n, x.data(), expected.data(), KAM_HA);

  test::on_threads(8, [&](int id) {
    const bool fails = id % 2 == 1;
    std::vector<double> mine = x, wanted = expected, r(n);
    if (fails) {
      mine[n - 1 - static_cast<size_t>(id)] = 0;
      wanted[n - 1 - static_cast<size_t>(id)] = HUGE_VAL;
      kamSetErrorCallBack([](KamErrorContext*) { return 1; });
    }
    kamSetMode(KAM_HA | (fails ? KAM_ERRMODE_CALLBACK : KAM_ERRMODE_IGNORE));
    bool good = true;
    for (int round = 0; round < 50; ++round) {
      vdInvSqrt(n, mine.data(), r.data());
      good &= kamClearErrStatus() == (fails ? KAM_STATUS_SING : KAM_STATUS_OK) && r == wanted;
    }
    EXPECT_TRUE(good) << id;
  });
}

}  // namespace
}  // namespace orba::vector
