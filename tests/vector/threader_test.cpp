// Threaders with made-up kernels that tell what they were given, and real calls on several threads.
#include "vector/frame/threader.h"

#include <gtest/gtest.h>
#include <omp.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "include/orba_kam.h"
#include "services/threads/thread_count.h"
#include "tests/support/observe.h"
#include "tests/support/process.h"
#include "vector/words/thread_words.h"

namespace orba::vector {
namespace {

using services::Domain;
using services::set_local_thread_count;
using test::in_new_thread;
using test::in_process_with;

// Requests are taken as they stand, whatever the machine has.
constexpr char kFixed[] = "ORBA_DYNAMIC=FALSE ORBA_NUM_THREADS=4";
constexpr float kHint = 1.0f;

// ---- a kernel that keeps its arguments ----

template <class... Args>
struct Recorder {
  using Kernel = void(int32_t, Args...);

  struct Slice {
    int32_t count;
    std::tuple<Args...> args;
    std::thread::id thread;
  };
  static inline std::vector<Slice> slices;
  static inline std::mutex mutex;
  static inline void (*action)(int32_t count, Args... args) = nullptr;  // on the slice's thread

  static void kernel(int32_t count, Args... args) {
    {
      const std::lock_guard lock(mutex);
      slices.push_back({count, {args...}, std::this_thread::get_id()});
    }
    if (action != nullptr) action(count, args...);
  }

  // The slices in the order of their first elements.
  static std::vector<Slice> run(int32_t n, Args... args, void (*then)(int32_t, Args...) = nullptr) {
    slices.clear();
    action = then;
    threader<Kernel>(kernel, n, args..., kHint);
    std::ranges::sort(slices, {}, [](const Slice& slice) { return std::get<0>(slice.args); });
    return slices;
  }
};

using Plain = Recorder<const double*, double*>;

TEST(Threader, Slices) {
  if (!in_process_with(kFixed)) return;
  struct Case {
    int32_t threads, n;
    std::vector<int32_t> counts;
  };
  const Case cases[] = {
      {8, 99, {99}},
      {1, 1000, {1000}},
      {8, 100, {13, 13, 13, 13, 12, 12, 12, 12}},
      {3, 100, {34, 33, 33}},
      {4, 1000, {250, 250, 250, 250}},
      {128, 100, std::vector<int32_t>(100, 1)},  // the other 28 threads have nothing to do
  };
  std::vector<double> a(1000), y(1000);
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.n) + " elements, " + std::to_string(c.threads) + " threads");
    set_local_thread_count(c.threads);
    const auto slices = Plain::run(c.n, a.data(), y.data());
    ASSERT_EQ(slices.size(), c.counts.size());
    int32_t first = 0;
    for (size_t i = 0; i < slices.size(); ++i) {
      EXPECT_EQ(slices[i].count, c.counts[i]);
      EXPECT_EQ(std::get<0>(slices[i].args), a.data() + first);
      EXPECT_EQ(std::get<1>(slices[i].args), y.data() + first);
      first += c.counts[i];
    }
    EXPECT_EQ(first, c.n);
    // Slices run side by side, one to a thread, the first on the caller's.
    std::vector<std::thread::id> threads;
    for (const auto& slice : slices) threads.push_back(slice.thread);
    EXPECT_EQ(threads[0], std::this_thread::get_id());
    std::ranges::sort(threads);
    EXPECT_EQ(std::ranges::adjacent_find(threads), threads.end());
  }
}

// With dynamic adjustment the work decides, by the balance function.
TEST(Threader, WorkDecides) {
  if (!in_process_with("ORBA_DYNAMIC=TRUE")) return;
  std::vector<double> a(1000), y(1000);
  set_local_thread_count(4);
  for (const float hint : {1.0f, 70.0f, 1e9f}) {
    Plain::slices.clear();
    Plain::action = nullptr;
    orba_kam_serv_threader_d_1i_1o(Plain::kernel, 1000, a.data(), y.data(), hint);
    int32_t expected = 4;
    services::balance_threads(&expected, 1000, hint);
    EXPECT_EQ(Plain::slices.size(), static_cast<size_t>(expected)) << hint;
  }
}

// ---- every shape ----

// Increments, told apart from each other and from 1.
constexpr int32_t kIncrements[] = {3, -2, 1};

template <class T>
T scalar(int i) {
  if constexpr (std::is_floating_point_v<T>) {
    return static_cast<T>(i);
  } else {
    return {static_cast<decltype(T::real)>(i), static_cast<decltype(T::imag)>(-i)};
  }
}

template <class T>
bool same(const T& a, const T& b) {
  return memcmp(&a, &b, sizeof a) == 0;
}

template <class Kernel>
struct ShapeCheck;

template <class... Args>
struct ShapeCheck<void(int32_t, Args...)> {
  static constexpr int32_t kCount = 1003;
  static constexpr size_t kArguments = sizeof...(Args);
  using Tuple = std::tuple<Args...>;
  template <size_t i>
  using Argument = std::tuple_element_t<i, Tuple>;

  // Each array starts in the middle of a region that holds any increment's elements.
  std::array<std::vector<char>, kArguments> arrays;
  Tuple whole;

  template <size_t i>
  void make_argument(int& increments) {
    using T = Argument<i>;
    if constexpr (std::is_pointer_v<T>) {
      constexpr size_t kReach = 3 * kCount * sizeof(*T{});
      arrays[i].resize(2 * kReach);
      std::get<i>(whole) = reinterpret_cast<T>(arrays[i].data() + kReach);
    } else if constexpr (std::is_same_v<T, int32_t>) {
      std::get<i>(whole) = kIncrements[increments++];
    } else {
      std::get<i>(whole) = scalar<T>(static_cast<int>(i));
    }
  }

  template <size_t i>
  void check_argument(const Tuple& args, int32_t first) {
    const auto given = std::get<i>(args);
    const auto original = std::get<i>(whole);
    if constexpr (std::is_pointer_v<Argument<i>>) {
      int32_t increment = 1;
      if constexpr (i + 1 < kArguments) {
        if constexpr (std::is_same_v<Argument<i + 1>, int32_t>) increment = std::get<i + 1>(whole);
      }
      const auto moved =
          reinterpret_cast<const char*>(given) - reinterpret_cast<const char*>(original);
      EXPECT_EQ(moved, static_cast<ptrdiff_t>(sizeof *given) * increment * first)
          << "argument " << i;
    } else {
      EXPECT_TRUE(same(given, original)) << "argument " << i;
    }
  }

  void run() {
    using Recorded = Recorder<Args...>;
    [&]<size_t... i>(std::index_sequence<i...>) {
      int increments = 0;
      (make_argument<i>(increments), ...);
      for (const int32_t n : {99, kCount}) {
        const auto slices = Recorded::run(n, std::get<i>(whole)...);
        ASSERT_EQ(slices.size(), n == 99 ? 1u : 4u);
        int32_t first = 0;
        for (const auto& slice : slices) {
          (check_argument<i>(slice.args, first), ...);
          first += slice.count;
        }
        EXPECT_EQ(first, n);
      }
    }
    (std::index_sequence_for<Args...>{});
  }
};

// Size of the element type that a threader's name begins with.
size_t element_size(char letter) { return letter == 's' ? 4 : letter == 'z' ? 16 : 8; }

TEST(Threader, EveryShape) {
  if (!in_process_with(kFixed)) return;
  int threaders = 0;
#define ORBA_UNWRAP(...) __VA_ARGS__
#define ORBA_THREADER(name, parameters, arguments)                                        \
  {                                                                                       \
    SCOPED_TRACE(#name);                                                                  \
    using Kernel = void(int32_t, ORBA_UNWRAP parameters);                                 \
    EXPECT_EQ(threader<Kernel>, &orba_kam_serv_threader_##name);                          \
    ShapeCheck<Kernel> check;                                                             \
    EXPECT_EQ(sizeof(*std::get<0>(check.whole)), element_size(#name[0]));                 \
    EXPECT_EQ(std::string(#name).find('I') != std::string::npos,                          \
              (std::is_same_v<int32_t, std::tuple_element_t<1, decltype(check.whole)>>)); \
    check.run();                                                                          \
    ++threaders;                                                                          \
  }
#include "vector/frame/threaders.def"
#undef ORBA_THREADER
  EXPECT_EQ(threaders, 44);
}

// ---- the words of the threads ----

int first_callback(KamErrorContext*) { return 0; }

struct Seen {
  uint32_t mode;
  int32_t status;
  KamErrorCallBack callback;
  const void* base;
};
std::vector<Seen> seen;
std::mutex seen_mutex;

void see(int32_t, const double*, double*) {
  const std::lock_guard lock(seen_mutex);
  seen.push_back({mode(), status(), callback(), thread_words().base});
}

TEST(Threader, WorkersFollowTheCaller) {
  if (!in_process_with(kFixed)) return;
  const double a[400] = {};
  double y[400];
  const struct {
    uint32_t mode;
    KamErrorCallBack callback;
  } settings[] = {
      {KAM_EP | KAM_ERRMODE_CALLBACK | KAM_DENORMALS_FLUSH | KAM_TRAP_OVERFLOW, first_callback},
      {KAM_LA | KAM_ERRMODE_IGNORE | KAM_DENORMALS_KEEP, nullptr},  // clears the workers', too
      {KAM_HA | KAM_ERRMODE_STDERR, first_callback},  // mode without the bit, callback set
  };
  for (const auto& setting : settings) {
    kamSetErrorCallBack(setting.callback);
    kamSetMode(setting.mode);
    const uint32_t mode = kamGetMode();
    kamSetErrStatus(7);
    seen.clear();
    Plain::run(400, a, y, see);
    ASSERT_EQ(seen.size(), 4u);
    for (const Seen& worker : seen) {
      EXPECT_EQ(worker.mode, mode);
      EXPECT_EQ(worker.callback, setting.callback);
      EXPECT_EQ(worker.status, KAM_STATUS_OK);
      EXPECT_EQ(worker.base, a);
    }
    EXPECT_EQ(kamGetMode(), mode);
    EXPECT_EQ(kamGetErrorCallBack(), setting.callback);
    EXPECT_EQ(thread_words().base, nullptr);
  }
}

// The element at a slice's start says which error the slice meets; none at 0.
void fail_as_told(int32_t, const double* a, double*) {
  if (*a != 0) set_status(static_cast<int32_t>(*a));
}

TEST(Threader, StatusOfAFork) {
  if (!in_process_with(kFixed)) return;
  double y[400];
  for (const std::array<int, 4>& errors : {std::array{0, 0, 0, 0},
                                           {3, 0, 0, 0},
                                           {0, 0, 1, 0},
                                           {0, 4, 0, 4},
                                           {2, 1, 0, 0},
                                           {0, 1, 2, 3}}) {
    double a[400] = {};
    for (size_t i = 0; i < 4; ++i) a[100 * i] = errors[i];
    for (int repeat = 0; repeat < 20; ++repeat) {
      kamSetErrStatus(7);
      Plain::run(400, a, y, fail_as_told);
      const int32_t left = kamGetErrStatus();
      if (std::ranges::max(errors) == 0) {
        EXPECT_EQ(left, KAM_STATUS_OK);
      } else {
        EXPECT_NE(left, KAM_STATUS_OK);
        EXPECT_NE(std::ranges::find(errors, left), errors.end()) << left;
      }
    }
  }
}

TEST(Threader, StatusOfASerialCall) {
  double a[100] = {};
  double y[100];
  kamSetErrStatus(7);
  Plain::run(99, a, y, fail_as_told);
  set_local_thread_count(1);
  Plain::run(100, a, y, fail_as_told);
  EXPECT_EQ(kamGetErrStatus(), 7);
  a[0] = KAM_STATUS_SING;
  Plain::run(99, a, y, fail_as_told);
  EXPECT_EQ(kamGetErrStatus(), KAM_STATUS_SING);
  set_local_thread_count(0);
  kamClearErrStatus();
}

// ---- nesting ----

size_t slices_inside_a_region(bool& whole) {
  const double a[400] = {};
  double y[400];
  size_t slices = 0;
#pragma omp parallel num_threads(2)
  {
    // One at a time: the recorder is common to all.
#pragma omp critical
    {
      kamSetErrStatus(7);
      const auto recorded = Plain::run(400, a, y);
      slices = recorded.size();
      whole = recorded[0].count == 400 && kamGetErrStatus() == 7;
    }
  }
  return slices;
}

TEST(Threader, InsideARegionOfTheCaller) {
  if (!in_process_with("ORBA_NUM_THREADS=4")) return;
  bool serial = false;
  EXPECT_EQ(slices_inside_a_region(serial), 1u);
  EXPECT_TRUE(serial);
}

// As the runtime allows: by default the inner region has one thread, which goes the way of a fork.
TEST(Threader, InsideARegionWithFixedThreads) {
  if (!in_process_with(kFixed)) return;
  bool serial = true;
  EXPECT_EQ(slices_inside_a_region(serial), 1u);
  EXPECT_FALSE(serial);
  omp_set_max_active_levels(2);
  EXPECT_EQ(slices_inside_a_region(serial), 4u);
}

// ---- no service call for short vectors ----

// The first query of thread counts reads the environment for good.
bool asks_for_thread_counts(int32_t n) {
  double a[100] = {}, y[100];
  vdAbs(n, a, y);
  setenv("ORBA_NUM_THREADS", "13", 1);
  return services::thread_count(Domain::kam) != 13;
}

TEST(Threader, ShortVectorsAskNothing) {
  if (!in_process_with(kFixed)) return;
  EXPECT_FALSE(asks_for_thread_counts(99));
}

TEST(Threader, LongVectorsAsk) {
  if (!in_process_with(kFixed)) return;
  EXPECT_TRUE(asks_for_thread_counts(100));
}

// ---- real calls ----

std::vector<double> numbers(int32_t n) {
  std::vector<double> values(static_cast<size_t>(n));
  uint64_t state = 1;
  for (double& value : values) {
    state = state * 6364136223846793005u + 1442695040888963407u;
    value = static_cast<double>(state >> 11) * 0x1p-40 + 0x1p-20;
  }
  return values;
}

std::vector<int32_t> error_indexes;
std::mutex error_mutex;

int note_index(KamErrorContext* context) {
  const std::lock_guard lock(error_mutex);
  error_indexes.push_back(context->index);
  context->r1 = 42;
  return 0;
}

// An error tells its place in the whole array, in every type's own element size.
TEST(ThreadedCall, ErrorsTellTheIndex) {
  if (!in_process_with(kFixed)) return;
  constexpr int32_t n = 20000;
  const std::vector<int32_t> zeros = {0, 4999, 5000, 12345, n - 1};
  kamSetErrorCallBack(note_index);
  const auto check = [&](auto element, auto call, int32_t status) {
    using T = decltype(element);
    for (const uint32_t accuracy : {KAM_LA, KAM_HA, KAM_EP}) {
      std::vector<T> a(n, T{4}), y(n);
      for (const int32_t i : zeros) a[static_cast<size_t>(i)] = T{0};
      error_indexes.clear();
      call(n, a.data(), y.data(), accuracy | KAM_ERRMODE_CALLBACK);
      std::ranges::sort(error_indexes);
      EXPECT_EQ(error_indexes, zeros);
      EXPECT_EQ(kamClearErrStatus(), status);
      for (const int32_t i : zeros) EXPECT_EQ(y[static_cast<size_t>(i)], T{42});
    }
  };
  check(1.0, vmdInv, KAM_STATUS_SING);
  check(1.0f, vmsInv, KAM_STATUS_SING);
  check(1.0, vmdInvSqrt, KAM_STATUS_SING);

  // A complex element fails by overflow.
  std::vector<KamComplex16> big(n, {1.0, 1.0}), product(n);
  for (const int32_t i : zeros) big[static_cast<size_t>(i)] = {1e300, 0.0};
  error_indexes.clear();
  vmzMul(n, big.data(), big.data(), product.data(), KAM_HA | KAM_ERRMODE_CALLBACK);
  std::ranges::sort(error_indexes);
  EXPECT_EQ(error_indexes, zeros);
  EXPECT_EQ(kamClearErrStatus(), KAM_STATUS_OVERFLOW);
}

// A callback may call the library in its turn: short and long vectors, with errors of their own.
thread_local int depth = 0;
std::atomic<int> faults{0};

int call_the_library(KamErrorContext* context) {
  faults += kamGetErrStatus() != context->code;
  if (depth == 1) {
    faults += context->index != 1 || context->code != KAM_STATUS_ERRDOM;
    return 1;
  }
  note_index(context);
  ++depth;
  const double negative[400] = {4, -1};
  double y[400];
  std::fill(std::begin(y), std::end(y), 1.0);
  vdAbs(400, y, y);
  vdSqrt(2, negative, y);
  --depth;
  return 0;
}

TEST(ThreadedCall, CallbacksMayCallTheLibrary) {
  if (!in_process_with(kFixed)) return;
  const std::vector<int32_t> zeros = {0, 99, 250, 251, 300, 999};
  std::vector<double> a(1000, 2.0), y(1000);
  for (const int32_t i : zeros) a[static_cast<size_t>(i)] = 0;
  kamSetErrorCallBack(call_the_library);
  kamSetMode(KAM_ERRMODE_CALLBACK);
  for (const int32_t threads : {1, 2, 4}) {
    set_local_thread_count(threads);
    error_indexes.clear();
    kamClearErrStatus();
    vdInv(1000, a.data(), y.data());
    std::ranges::sort(error_indexes);
    EXPECT_EQ(error_indexes, zeros);
    EXPECT_EQ(faults, 0);
    EXPECT_EQ(kamGetErrStatus(), KAM_STATUS_ERRDOM);  // of the last call on the thread
    for (const int32_t i : zeros) EXPECT_EQ(y[static_cast<size_t>(i)], 42);
  }
  // A long call without errors leaves the status at 0.
  kamSetErrorCallBack([](KamErrorContext*) {
    double ones[400] = {};
    vdAbs(400, ones, ones);
    return 0;
  });
  vdInv(1, a.data(), y.data());
  EXPECT_EQ(kamGetErrStatus(), KAM_STATUS_OK);
}

// Bit for bit what one thread computes, also in place.
TEST(ThreadedCall, EqualsSerialCall) {
  if (!in_process_with(kFixed)) return;
  constexpr int32_t n = 100003;
  const std::vector<double> a = numbers(2 * n), b = numbers(4 * n);
  using Call = void (*)(int32_t n, const double* a, const double* b, double* y);
  // The arrays serve every type: n elements of up to 16 bytes.
  constexpr struct {
    const char* name;
    Call call;
  } calls[] = {
      {"vdSqrt", [](int32_t m, const double* x, const double*, double* y) { vdSqrt(m, x, y); }},
      {"vdInvSqrt",
       [](int32_t m, const double* x, const double*, double* y) { vdInvSqrt(m, x, y); }},
      {"vdDiv", [](int32_t m, const double* x, const double* z, double* y) { vdDiv(m, x, z, y); }},
      {"vzMul", [](int32_t m, const double* x, const double* z, double* y) {
         vzMul(m, reinterpret_cast<const KamComplex16*>(x),
               reinterpret_cast<const KamComplex16*>(z), reinterpret_cast<KamComplex16*>(y));
       }}};
  for (const uint32_t accuracy : {KAM_LA, KAM_HA, KAM_EP}) {
    kamSetMode(accuracy);
    for (const auto& [name, call] : calls) {
      std::vector<double> serial(2 * n), threaded(2 * n), in_place = a;
      set_local_thread_count(1);
      call(n, a.data(), b.data(), serial.data());
      for (const int32_t threads : {2, 3, 8}) {
        set_local_thread_count(threads);
        call(n, a.data(), b.data(), threaded.data());
        EXPECT_EQ(memcmp(threaded.data(), serial.data(), 2 * n * sizeof(double)), 0)
            << name << ' ' << threads;
      }
      call(n, in_place.data(), b.data(), in_place.data());
      const size_t bytes = (name[1] == 'z' ? 2 : 1) * n * sizeof(double);
      EXPECT_EQ(memcmp(in_place.data(), serial.data(), bytes), 0) << name;
    }
  }
}

int accept_error(KamErrorContext*) { return 1; }

// Application threads with modes and callbacks of their own fork at the same time.
TEST(ThreadedCall, ManyApplicationThreads) {
  if (!in_process_with(kFixed)) return;
  constexpr int kThreads = 8;
  constexpr int32_t n = 5000;
  const std::vector<double> a = numbers(n);
  std::vector<double> expected(n);
  set_local_thread_count(1);
  vmdInvSqrt(n, a.data(), expected.data(), KAM_HA);
  set_local_thread_count(0);

  std::atomic<int> right{0};
  std::vector<std::thread> threads;
  for (int id = 0; id < kThreads; ++id) {
    threads.emplace_back([&, id] {
      const bool fails = id % 2 == 1;
      std::vector<double> x = a, y(n);
      if (fails) x[static_cast<size_t>(n - 1 - id)] = 0;
      kamSetMode(KAM_HA | (fails ? KAM_ERRMODE_CALLBACK : KAM_ERRMODE_IGNORE));
      if (fails) kamSetErrorCallBack(accept_error);
      bool good = true;
      for (int round = 0; round < 50; ++round) {
        vdInvSqrt(n, x.data(), y.data());
        good &= kamClearErrStatus() == (fails ? KAM_STATUS_SING : KAM_STATUS_OK);
        for (size_t i = 0; i < n; ++i) good &= x[i] == 0 || y[i] == expected[i];
      }
      right += good;
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(right, kThreads);
}

}  // namespace
}  // namespace orba::vector
