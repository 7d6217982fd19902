// Streams of different threads, and the forks of the statistics layer.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <thread>

#include "services/memory.h"
#include "services/threads/thread_count.h"
#include "statistics/frame/threading.h"
#include "statistics/streams/extensions.h"
#include "tests/streams/streams.h"

namespace orba::test {
namespace {

void on_two_threads(auto work) {
  std::thread first(work, 0), second(work, 1);
  first.join();
  second.join();
}

// From the very first call on, when the class is not known yet.
TEST(Threads, StreamsOfTwoThreads) {
  const auto draw = [](int32_t brng, int t) {
    StreamState* handle = nullptr;
    std::string drawn(40000, '\0');
    rauNewStream(&handle, brng, static_cast<uint32_t>(t) + 1);
    viRngUniformBits(0, handle, 2000, reinterpret_cast<uint32_t*>(drawn.data()));
    vdRngUniform(0, handle, 900, reinterpret_cast<double*>(drawn.data() + 32000), -1, 1);
    viRngUniform(0, handle, 200, reinterpret_cast<int32_t*>(drawn.data() + 39200), -50, 50);
    rauDeleteStream(&handle);
    return drawn;
  };
  const std::vector<Subject> all = subjects();
  std::vector<std::string> drawn[2];
  statistics::class_word = -1;
  on_two_threads([&](int t) {
    for (const Subject& subject : all) drawn[t].push_back(draw(subject.brng, t));
  });
  EXPECT_EQ(statistics::running_class(), highest_rau_class());
  for (int t = 0; t < 2; ++t) {
    for (size_t i = 0; i < all.size(); ++i) EXPECT_TRUE(drawn[t][i] == draw(all[i].brng, t));
  }
}

// Copies that share blocks come and go on two threads.
TEST(Threads, SharedBlocks) {
  const auto add = [](StreamState* stream, uint32_t id, uint64_t second_word) {
    const statistics::SharedKey key = statistics::make_shared_key(second_word);
    void* data = services::allocate(8, statistics::kStreamAlignment);
    std::memset(data, static_cast<int>(id), 8);
    statistics::add_extension(*stream, id, &key, data, 8);
  };
  Stream source(RAU_BRNG_MCG59, {1});
  for (uint32_t id = 1; id <= 3; ++id) add(source, id, id);
  Stream sources[] = {source.copy(), source.copy()};
  rauDeleteStream(source.address());
  std::atomic<int> faults{0};
  on_two_threads([&](int t) {
    for (int round = 0; round < 500; ++round) {
      StreamState *copy = nullptr, *again = nullptr;
      rauCopyStream(&copy, sources[t]);
      rauCopyStream(&again, copy);
      rauDeleteStream(&copy);
      for (uint32_t id = 1; id <= 3; ++id) {
        const void* data = statistics::find_extension(*again, id);
        if (data == nullptr || static_cast<const unsigned char*>(data)[7] != id) ++faults;
      }
      add(again, 4, 100 + static_cast<uint64_t>(t));
      rauDeleteStream(&again);
    }
  });
  EXPECT_EQ(faults, 0);
}

// ---- Forks, with three threads at most ----

class Forks : public testing::Test {
  const int32_t old_ = services::set_local_thread_count(3);

 protected:
  ~Forks() override { services::set_local_thread_count(old_); }
};

struct Visit {
  int32_t thread = -1, threads = 0;
  std::atomic<int> times{0};
};

TEST_F(Forks, EveryItemOnceInRunsOfAThread) {
  const auto visit = [](int64_t item, int32_t thread, int32_t threads, void* context) {
    Visit& v = static_cast<Visit*>(context)[item];
    v.thread = thread;
    v.threads = threads;
    ++v.times;
  };
  EXPECT_EQ(orba_rau_serv_thread_count(), 3);
  for (const int32_t allowed : {0, -1, 1, 2, 3, 9}) {
    for (const int64_t nitems : {-1, 0, 1, 2, 3, 100}) {
      SCOPED_TRACE(std::to_string(nitems) + " items, threads: " + std::to_string(allowed));
      std::vector<Visit> visits(static_cast<size_t>(std::max<int64_t>(nitems, 0)) + 1);
      orba_rau_serv_threader_for(nitems, allowed, visits.data(), visit);
      const int32_t team = allowed > 0 ? std::min(allowed, 3) : 3;
      for (int64_t i = 0; i < nitems; ++i) {
        const Visit& v = visits[static_cast<size_t>(i)];
        ASSERT_EQ(v.times, 1) << i;
        ASSERT_TRUE(v.threads <= team && v.thread < v.threads);
        ASSERT_GE(v.thread, visits[static_cast<size_t>(std::max<int64_t>(i, 1)) - 1].thread);
      }
      EXPECT_EQ(visits.back().times, 0);
      EXPECT_TRUE(nitems < 100 || (visits[0].threads == team && visits[99].thread == team - 1));
    }
  }
}

TEST_F(Forks, OrderedPartsAndSections) {
  static std::vector<int64_t> order;
  order.clear();
  orba_rau_serv_threader_for_ordered(200, 0, nullptr, [](int64_t item, int32_t, int32_t, void*) {
    orba_rau_serv_threader_ordered(
        &item, [](void* context) { order.push_back(*static_cast<int64_t*>(context)); });
  });
  EXPECT_TRUE(order.size() == 200 && std::is_sorted(order.begin(), order.end()));

  std::atomic<int> counts[2] = {};
  void (*const sections[])(void*) = {
      [](void* c) { ++static_cast<std::atomic<int>*>(c)[0]; },
      [](void* c) { ++static_cast<std::atomic<int>*>(c)[1]; },
  };
  for (const int32_t threads : {0, 1, 2}) {
    orba_rau_serv_threader_sections(2, threads, counts, sections);
  }
  orba_rau_serv_threader_sections(0, 0, counts, sections);
  for (const auto& count : counts) EXPECT_EQ(count, 3);
}

}  // namespace
}  // namespace orba::test
