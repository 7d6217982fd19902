#include "statistics/frame/threading.h"

#include <omp.h>

#include <algorithm>

#include "services/threads/float_state.h"
#include "services/threads/thread_count.h"

namespace {

// Team to ask for. A fork of one item, or inside another one, is a plain call.
int32_t team_size(int64_t nitems, int32_t nthreads) noexcept {
  int32_t threads = orba_rau_serv_thread_count();
  if (nthreads > 0) threads = std::min(threads, nthreads);
  return static_cast<int32_t>(std::clamp<int64_t>(threads, 1, std::max<int64_t>(nitems, 1)));
}

// Runs `share` on every thread of a team; a loop in it is shared out among them.
template <class Share>
void fork(int32_t threads, Share share) noexcept {
  orba::services::RegionFloatState float_state;
#pragma omp parallel num_threads(threads)
  {
    const orba::services::ThreadFloatState as_the_caller(float_state);
    share();
  }
}

}  // namespace

int32_t orba_rau_serv_thread_count() noexcept {
  return orba::services::thread_count(orba::services::Domain::kam);
}

void orba_rau_serv_threader_for(int64_t nitems, int32_t nthreads, void* context,
                                orba::statistics::ForkBody body) noexcept {
  const int32_t threads = team_size(nitems, nthreads);
  if (threads == 1) {
    for (int64_t item = 0; item < nitems; ++item) body(item, 0, 1, context);
    return;
  }
  fork(threads, [=] {
#pragma omp for schedule(static) nowait
    for (int64_t item = 0; item < nitems; ++item) {
      body(item, omp_get_thread_num(), omp_get_num_threads(), context);
    }
  });
}

void orba_rau_serv_threader_for_ordered(int64_t nitems, int32_t nthreads, void* context,
                                        orba::statistics::ForkBody body) noexcept {
  fork(team_size(nitems, nthreads), [=] {
#pragma omp for ordered schedule(static) nowait
    for (int64_t item = 0; item < nitems; ++item) {
      body(item, omp_get_thread_num(), omp_get_num_threads(), context);
    }
  });
}

void orba_rau_serv_threader_ordered(void* context, void (*part)(void* context)) noexcept {
#pragma omp ordered
  part(context);
}

void orba_rau_serv_threader_sections(int32_t nsections, int32_t nthreads, void* context,
                                     void (*const* sections)(void* context)) noexcept {
  fork(team_size(nsections, nthreads), [=] {
#pragma omp for schedule(static, 1) nowait
    for (int32_t i = 0; i < nsections; ++i) sections[i](context);
  });
}
