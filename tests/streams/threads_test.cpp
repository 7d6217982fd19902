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

void on_threads(int count, auto work) {
  std::vector<std::thread> threads;
  for (int t = 0; t < count; ++t) threads.emplace_back(work, t);
  for (std::thread& thread : threads) thread.join();
}

struct Drawn {
  Words words;
  std::vector<double> doubles;
  std::vector<int32_t> integers = std::vector<int32_t>(2000);
};

Drawn draw(int32_t brng, uint32_t seed) {
  Stream stream(brng, {seed});
  Drawn drawn;
  drawn.words.resize(2000 * stream.output_words());
  drawn.doubles.resize(2000);
  viRngUniformBits(0, stream, 2000, drawn.words.data());
  vdRngUniform(0, stream, 2000, drawn.doubles.data(), -1, 1);
  viRngUniform(0, stream, 2000, drawn.integers.data(), -50, 50);
  return drawn;
}

// From the very first call on, when the class is not known yet.
TEST(Threads, StreamsOfTwoThreads) {
  statistics::class_word = -1;
  std::vector<int32_t> brngs;
  for (const Subject& subject : subjects()) {
    if (subject.rau_class == 0) brngs.push_back(subject.brng);
  }
  std::vector<Drawn> drawn[2];
  on_threads(2, [&](int t) {
    for (const int32_t brng : brngs) drawn[t].push_back(draw(brng, static_cast<uint32_t>(t) + 1));
  });
  EXPECT_EQ(statistics::running_class(), highest_rau_class());
  for (uint32_t t = 0; t < 2; ++t) {
    for (size_t i = 0; i < brngs.size(); ++i) {
      const Drawn alone = draw(brngs[i], t + 1);
      EXPECT_TRUE(same(drawn[t][i].words, alone.words));
      EXPECT_TRUE(same(drawn[t][i].doubles, alone.doubles));
      EXPECT_TRUE(same(drawn[t][i].integers, alone.integers));
    }
  }
}

// Copies that share blocks come and go on two threads.
TEST(Threads, SharedBlocks) {
  Stream source(RAU_BRNG_MCG59, {1});
  for (uint32_t id = 1; id <= 3; ++id) {
    const statistics::SharedKey key = statistics::make_shared_key(id);
    void* data = services::allocate(8, statistics::kStreamAlignment);
    std::memset(data, static_cast<int>(id), 8);
    statistics::add_extension(*static_cast<StreamState*>(source), id, &key, data, 8);
  }
  Stream sources[] = {source.copy(), source.copy()};
  rauDeleteStream(source.address());
  std::atomic<int> faults{0};
  on_threads(2, [&](int t) {
    for (int round = 0; round < 500; ++round) {
      StreamState *copy = nullptr, *again = nullptr;
      rauCopyStream(&copy, sources[t]);
      rauCopyStream(&again, copy);
      rauDeleteStream(&copy);
      for (uint32_t id = 1; id <= 3; ++id) {
        const auto* data =
            static_cast<const unsigned char*>(statistics::find_extension(*again, id));
        if (data == nullptr || data[7] != id) ++faults;
      }
      const statistics::SharedKey key = statistics::make_shared_key(100 + static_cast<uint64_t>(t));
      statistics::add_extension(*again, 4, &key,
                                services::allocate(8, statistics::kStreamAlignment), 8);
      rauDeleteStream(&again);
    }
  });
  EXPECT_EQ(faults, 0);
}

// ---- Forks ----

class ThreadCount {
 public:
  explicit ThreadCount(int32_t count) : old_(services::set_local_thread_count(count)) {}
  ~ThreadCount() { services::set_local_thread_count(old_); }

 private:
  int32_t old_;
};

struct Visit {
  int32_t thread = -1, threads = 0;
  std::atomic<int> times{0};
};

void visit(int64_t item, int32_t thread, int32_t threads, void* context) {
  Visit& v = static_cast<Visit*>(context)[item];
  v.thread = thread;
  v.threads = threads;
  ++v.times;
}

TEST(Forks, EveryItemOnceInRunsOfAThread) {
  const ThreadCount three(3);
  EXPECT_EQ(orba_rau_serv_thread_count(), 3);
  for (const int32_t allowed : {0, -1, 1, 2, 3, 9}) {
    for (const int64_t nitems : {-1, 0, 1, 2, 3, 100}) {
      SCOPED_TRACE(testing::Message() << nitems << " items, " << allowed << " threads");
      std::vector<Visit> visits(static_cast<size_t>(std::max<int64_t>(nitems, 0)) + 1);
      orba_rau_serv_threader_for(nitems, allowed, visits.data(), visit);
      const int32_t team = allowed > 0 ? std::min(allowed, 3) : 3;
      for (int64_t i = 0; i < nitems; ++i) {
        const Visit& v = visits[static_cast<size_t>(i)];
        ASSERT_EQ(v.times, 1) << i;
        ASSERT_LE(v.threads, team);
        ASSERT_LT(v.thread, v.threads);
        ASSERT_GE(v.thread, visits[static_cast<size_t>(std::max<int64_t>(i, 1)) - 1].thread);
      }
      EXPECT_EQ(visits.back().times, 0);
      if (nitems == 100) {
        EXPECT_EQ(visits[0].threads, team);
        EXPECT_EQ(visits[99].thread, team - 1);
      }
    }
  }
}

TEST(Forks, OrderedParts) {
  const ThreadCount three(3);
  static std::vector<int64_t> order;
  order.clear();
  orba_rau_serv_threader_for_ordered(200, 0, nullptr, [](int64_t item, int32_t, int32_t, void*) {
    orba_rau_serv_threader_ordered(
        &item, [](void* context) { order.push_back(*static_cast<int64_t*>(context)); });
  });
  ASSERT_EQ(order.size(), 200);
  for (int64_t i = 0; i < 200; ++i) EXPECT_EQ(order[static_cast<size_t>(i)], i);
}

TEST(Forks, SectionsRunOnceEach) {
  const ThreadCount three(3);
  std::atomic<int> counts[3] = {};
  void (*const sections[])(void*) = {
      [](void* c) { ++static_cast<std::atomic<int>*>(c)[0]; },
      [](void* c) { ++static_cast<std::atomic<int>*>(c)[1]; },
      [](void* c) { ++static_cast<std::atomic<int>*>(c)[2]; },
  };
  for (const int32_t threads : {0, 1, 2}) {
    orba_rau_serv_threader_sections(3, threads, counts, sections);
  }
  for (const auto& count : counts) EXPECT_EQ(count, 3);
  orba_rau_serv_threader_sections(0, 0, counts, sections);
  EXPECT_EQ(counts[0], 3);
}

}  // namespace
}  // namespace orba::test
