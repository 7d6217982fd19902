// Forks of both kinds: a process that forks between its long calls, and threads of a long call
// that must compute as their caller would.
#include <fenv.h>
#include <gtest/gtest.h>
#include <omp.h>
#include <xmmintrin.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <thread>
#include <vector>

#include "include/orba_kam.h"
#include "services/detect/detect.h"
#include "services/memory.h"
#include "services/platform/platform.h"
#include "services/threads/thread_count.h"
#include "statistics/frame/threading.h"
#include "statistics/streams/extensions.h"
#include "tests/support/process.h"

namespace {

using orba::services::set_local_thread_count;
using orba::test::in_child;
using orba::test::in_process_with;

constexpr char kFixed[] = "ORBA_DYNAMIC=FALSE ORBA_NUM_THREADS=4";
constexpr int32_t kLength = 1000;
constexpr int64_t kItems = 40;

void third(int64_t item, int32_t, int32_t, void* results) {
  volatile double three = 3;
  volatile long double x87_three = 3;
  auto* r = static_cast<double*>(results) + 3 * item;
  r[0] = static_cast<double>(item + 1) / three;
  r[1] = static_cast<double>(static_cast<long double>(item + 1) / x87_three);
  volatile double tiny = std::numeric_limits<double>::min();
  r[2] = tiny * 0.5 * static_cast<double>(item + 1);
}
void third_in_order(int64_t item, int32_t thread, int32_t threads, void* results) {
  third(item, thread, threads, results);
  orba_rau_serv_threader_ordered(results, [](void* all) { static_cast<double*>(all)[0] += 1; });
}
template <int item>
void section(void* results) {
  third(item, 0, 1, results);
}

// The results of a long vector call and of each fork of the statistics layer, in bits.
std::vector<uint64_t> long_calls() {
  std::vector<double> a(kLength), b(kLength), all(2 * kLength + 9 * kItems);
  for (size_t i = 0; i < kLength; ++i) {
    a[i] = 0x1p-1022 + 0x1p-1074 * static_cast<double>(i);
    b[i] = i % 2 ? -0x1p-1022 : 0x1p-1019 / 3;
  }
  vdAdd(kLength, a.data(), b.data(), all.data());
  vdMul(kLength, a.data(), b.data(), all.data() + kLength);
  double* forks = all.data() + 2 * kLength;
  orba_rau_serv_threader_for(kItems, 0, forks, third);
  orba_rau_serv_threader_for_ordered(kItems, 0, forks + 3 * kItems, third_in_order);
  void (*const sections[])(void*) = {section<0>, section<1>, section<2>, section<3>};
  orba_rau_serv_threader_sections(4, 0, forks + 6 * kItems, sections);
  std::vector<uint64_t> bits(all.size());
  memcpy(bits.data(), all.data(), bits.size() * sizeof(uint64_t));
  return bits;
}

// ---- a forked process ----

TEST(ForkedProcess, LongCallsOfChildrenAndGrandchildren) {
  if (!in_process_with(kFixed)) return;
  const std::vector<uint64_t> expected = long_calls();
  const auto one_thread = [&] {
    set_local_thread_count(3);  // no request brings threads back
    return long_calls() == expected && orba_rau_serv_thread_count() == 1;
  };
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(in_child([&] {
                if (!one_thread()) return 1;
                return in_child([&] { return one_thread() ? 7 : 2; });
              }),
              7);
    EXPECT_EQ(orba_rau_serv_thread_count(), 4);  // the parent goes on as it did
    EXPECT_EQ(long_calls(), expected);
  }
  // By a thread of the program that has forked threads of its own.
  std::thread([&] {
    EXPECT_EQ(long_calls(), expected);
    EXPECT_EQ(in_child([&] { return one_thread() ? 7 : 1; }), 7);
  }).join();
}

// A program that turns into a daemon before it computes loses nothing.
TEST(ForkedProcess, ChildOfASingleThreadHasThreads) {
  if (!in_process_with(kFixed)) return;
  EXPECT_EQ(in_child([] {
              long_calls();
              int threads = 0;
              orba_rau_serv_threader_for(kItems, 0, &threads,
                                         [](int64_t, int32_t, int32_t team, void* seen) {
                                           *static_cast<int*>(seen) = team;
                                         });
              return threads;
            }),
            4);
}

// Whatever the other threads do in the library at that moment, the child finds it usable.
TEST(ForkedProcess, WhileOthersHoldLocks) {
  if (!in_process_with(kFixed)) return;
  namespace platform = orba::services::platform;
  namespace statistics = orba::statistics;
  StreamState stream{};
  for (uint64_t i = 1; i <= 120; ++i) {  // a table that takes time to search
    const statistics::SharedKey key = {{i, i}};
    statistics::add_extension(stream, 1, &key, orba::services::allocate(8, 64), 8);
  }
  const auto use_locks = [] {
    statistics::make_shared_key(1);
    platform::private_heap_free(platform::private_heap_allocate(64));
  };
  std::atomic<bool> done{false};
  std::thread other([&] {
    while (!done) use_locks();
  });
  for (int round = 0; round < 100 && !HasFailure(); ++round) {
    EXPECT_EQ(in_child([&] {
                for (int i = 0; i < 10; ++i) use_locks();
                return 7;
              }),
              7);
  }
  done = true;
  other.join();
  statistics::remove_all_extensions(stream);
}

// ---- the caller's floating-point state ----

struct FloatControl {
  unsigned sse;
  unsigned short x87;
  bool operator==(const FloatControl&) const = default;
};

FloatControl float_control() {
  FloatControl control{_mm_getcsr() & 0xFFC0, 0};
  asm volatile("fnstcw %0" : "=m"(control.x87));
  return control;
}
void set_float_control(FloatControl control) {
  _mm_setcsr((_mm_getcsr() & 0x3F) | control.sse);
  asm volatile("fldcw %0" : : "m"(control.x87));
}

// Of each of the runtime's threads.
template <class Question>
auto ask_workers(Question question) {
  std::vector<decltype(question())> answers(4);
#pragma omp parallel num_threads(4)
  answers[static_cast<size_t>(omp_get_thread_num())] = question();
  return answers;
}
int raised() { return fetestexcept(FE_ALL_EXCEPT); }

TEST(FloatingPointState, ThreadsComputeAsTheCaller) {
  if (!in_process_with(kFixed)) return;
  orba::services::kam_class_word = 0;  // whose arithmetic leaves the caller's control alone
  const FloatControl usual = float_control();
  const std::vector<FloatControl> workers = ask_workers(float_control);
  std::vector<std::vector<uint64_t>> seen;
  for (const FloatControl control :
       {usual, FloatControl{0x3F80, 0x077F}, FloatControl{0x5F80, 0x0B7F},
        FloatControl{0x9FC0, 0x007F}, FloatControl{0x1FC0, 0x027F}, FloatControl{0x9F80, 0x0F7F}}) {
    set_float_control(control);
    set_local_thread_count(1);
    const std::vector<uint64_t> alone = long_calls();
    set_local_thread_count(4);
    const std::vector<uint64_t> together = long_calls();
    const FloatControl after = float_control();
    set_float_control(usual);
    EXPECT_TRUE(together == alone) << std::hex << control.sse << ' ' << control.x87;
    EXPECT_EQ(after, control);
    EXPECT_EQ(std::ranges::count(seen, alone), 0);  // or the setting proves nothing
    seen.push_back(alone);
    EXPECT_EQ(ask_workers(float_control), workers);
  }
}

// Exceptions that any thread raised are the caller's, as from a call on one thread; those that the
// caller had raised before stay.
TEST(FloatingPointState, RaisedExceptionsComeBack) {
  if (!in_process_with(kFixed)) return;
  std::vector<double> a(kLength, 2.0), y(kLength);
  a.back() = 0.0;
  kamSetMode(KAM_ERRMODE_EXCEPT);
  feclearexcept(FE_ALL_EXCEPT);
  const std::vector<int> before = ask_workers(raised);
  const auto raise_last = [](int64_t item, int32_t, int32_t, void*) {
    volatile double large = std::numeric_limits<double>::max();
    if (item == kItems - 1) large = large * 2;
  };
  for (const int32_t threads : {1, 4}) {
    set_local_thread_count(threads);
    feclearexcept(FE_ALL_EXCEPT);
    feraiseexcept(FE_INVALID);
    vdInv(kLength, a.data(), y.data());
    EXPECT_EQ(fetestexcept(FE_ALL_EXCEPT) & ~FE_INEXACT, FE_INVALID | FE_DIVBYZERO) << threads;
    orba_rau_serv_threader_for(kItems, 0, nullptr, raise_last);
    EXPECT_EQ(fetestexcept(FE_ALL_EXCEPT) & ~FE_INEXACT, FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW)
        << threads;
  }
  feclearexcept(FE_ALL_EXCEPT);
  EXPECT_EQ(ask_workers(raised), before);  // each has its own state again
}

}  // namespace
