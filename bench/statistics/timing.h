// Registration of what the statistics benchmarks measure.
//
//   vdRngUniform/MRG32k3a/class:4/n:1000        on a class of the statistics layer
//   vdRngUniform/MRG32k3a/peer:gsl_cmrg/n:1000  a peer
//   covariance/FAST/rows/p:20/threads:2/n:...   on the best class and two threads; else it is one
//
// Counter: ticks, of the time-stamp counter, of the fastest batch of calls (other load on the
// machine slows some batches, hardly ever all), per element.
#pragma once

#include <benchmark/benchmark.h>
#include <x86intrin.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>

#include "services/detect/detect.h"
#include "services/threads/thread_count.h"
#include "statistics/frame/dispatch.h"

namespace orba::bench {

inline int best_class() { return services::rau_class(services::rau_cpu_type()); }

// Measures call(), which handles n elements; `batch` calls are timed as one, several times even if
// one takes longer than the whole measurement should.
inline void measure(benchmark::State& state, int64_t n, const std::function<void()>& call) {
  constexpr int64_t kBatch = 20000;  // elements
  constexpr int kAtLeast = 3;        // batches
  const int64_t batch = std::max<int64_t>(1, kBatch / n);
  uint64_t fastest = UINT64_MAX;
  while (state.KeepRunningBatch(kAtLeast * batch)) {
    for (int repeat = 0; repeat < kAtLeast; ++repeat) {
      const uint64_t begin = __rdtsc();
      for (int64_t i = 0; i < batch; ++i) {
        call();
        benchmark::ClobberMemory();
      }
      fastest = std::min<uint64_t>(fastest, __rdtsc() - begin);
    }
  }
  state.counters["ticks"] = static_cast<double>(fastest) / static_cast<double>(batch * n);
}

// `prepare` runs before the measurement and gives the call.
using Prepare = std::function<std::function<void()>()>;

inline void add(const std::string& what, const std::string& by, int64_t n, const Prepare& prepare,
                int rau_class = -1, int threads = 1) {
  benchmark::RegisterBenchmark(
      (what + "/" + by + "/n:" + std::to_string(n)).c_str(), [=](benchmark::State& state) {
        statistics::class_word.store(rau_class >= 0 ? rau_class : best_class());
        services::set_local_thread_count(threads);
        measure(state, n, prepare());
      });
}

inline void add_peer(const std::string& what, const std::string& peer, int64_t n,
                     const Prepare& prepare) {
  add(what, "peer:" + peer, n, prepare);
}

// The library's own, on every class that this machine has and that is a build of its own.
inline void add_classes(const std::string& what, int64_t n, const Prepare& prepare) {
  for (const int rau_class : {0, 2, 3, 4}) {
    if (rau_class > best_class()) continue;
    add(what, "class:" + std::to_string(rau_class), n, prepare, rau_class);
  }
}

}  // namespace orba::bench
