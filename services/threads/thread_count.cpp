#include "services/threads/thread_count.h"

#include <omp.h>

#include <atomic>
#include <utility>

#include "services/environment.h"
#include "services/platform/errno_keeper.h"
#include "services/platform/platform.h"
#include "services/platform/topology.h"
#include "services/spin_lock.h"
#include "services/threads/policy.h"

namespace orba::services {
namespace {

struct ThreadWords {
  ThreadSettings settings;
  platform::ProcessorCounts processors;
  float factor = 0.0f;
};
constinit ThreadWords known;
constinit std::atomic<bool> unknown{true};
constinit SpinLock lock;

thread_local constinit int32_t local_count __attribute__((tls_model("initial-exec"))) = 0;

// The processors that this process may use. A runtime that is told to bind its threads
// (OMP_PROC_BIND) has pinned this thread to its first place: the other places count, too.
platform::ProcessorSet usable_processors() noexcept {
  platform::ProcessorSet processors = platform::allowed_processors();
  int members[1024];  // of a place: a thread, a core, a socket
  for (int place = 0; place < omp_get_num_places(); ++place) {
    const int size = omp_get_place_num_procs(place);
    if (size > static_cast<int>(std::size(members))) continue;
    omp_get_place_proc_ids(place, members);
    for (int i = 0; i < size; ++i) {
      const auto processor = static_cast<size_t>(members[i]);
      if (processor < processors.size()) processors[processor] = true;
    }
  }
  return processors;
}

// A function of its own: compilers know the runtime's queries and move them to a function's entry,
// where they would come before errno is saved.
[[gnu::noinline]] ThreadWords gather_words() noexcept {
  ThreadWords words;
  words.settings = read_thread_settings(read_environment);
  words.processors = platform::count_processors(usable_processors());
  words.factor = balance_factor(words.processors);
  return words;
}

// Threads that meet here each do the work, and one of them publishes it: nothing that may wait for
// the loader or the file system is done under the lock.
void find_out() noexcept {
  const platform::ErrnoKeeper keeper;
  const ThreadWords words = gather_words();
  SpinGuard guard(lock);
  if (!unknown.load(std::memory_order_relaxed)) return;
  known = words;
  unknown.store(false, std::memory_order_release);
}

const ThreadWords& thread_words() noexcept {
  if (unknown.load(std::memory_order_acquire)) [[unlikely]]
    find_out();
  return known;
}

constexpr OpenMpQueries kOpenMp = {[] { return omp_in_parallel() != 0; },
                                   [] { return static_cast<int32_t>(omp_get_max_threads()); }};

}  // namespace

void keep_thread_runtime() noexcept {
  platform::keep_loaded(reinterpret_cast<const void*>(&omp_get_max_threads));
}

int32_t thread_count(Domain domain) noexcept {
  if (platform::lost_threads_in_fork()) [[unlikely]]
    return 1;
  if (local_count > 0) return local_count;
  const ThreadWords& words = thread_words();
  return count_threads(domain, words.settings, words.processors.cores, kOpenMp);
}

bool dynamic_threads() noexcept { return thread_words().settings.dynamic != 0; }

int32_t balance_threads(int32_t* threads, int32_t n, float hint) noexcept {
  return *threads = balance(*threads, n, hint, thread_words().factor);
}

int32_t set_local_thread_count(int32_t count) noexcept { return std::exchange(local_count, count); }

int32_t stripe_count() noexcept { return thread_words().settings.stripes; }
int32_t node_count() noexcept { return thread_words().processors.nodes; }
int32_t cores_per_node() noexcept {
  const platform::ProcessorCounts& processors = thread_words().processors;
  return processors.cores / processors.nodes;
}
int32_t logical_processors() noexcept { return thread_words().processors.logical; }

}  // namespace orba::services
