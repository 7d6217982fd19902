// Measures random streams and summary statistics beside their peers; see timing.h.
#include <gnu/libc-version.h>

#include <chrono>

#include "bench/statistics/families.h"
#include "bench/statistics/timing.h"

namespace {

// Ticks of the time-stamp counter per second.
double tsc_frequency() {
  using Clock = std::chrono::steady_clock;
  const auto begin = Clock::now();
  const uint64_t first = __rdtsc();
  while (Clock::now() - begin < std::chrono::milliseconds(50)) {
  }
  const uint64_t ticks = __rdtsc() - first;
  return static_cast<double>(ticks) / std::chrono::duration<double>(Clock::now() - begin).count();
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::AddCustomContext("compiler", ORBA_BENCH_COMPILERS);
  benchmark::AddCustomContext("libraries", std::string("glibc ") + gnu_get_libc_version() +
                                               orba::bench::stream_peer_versions() +
                                               orba::bench::summary_peer_versions());
  benchmark::AddCustomContext("tsc_hz", std::to_string(tsc_frequency()));
  orba::bench::add_streams();
  orba::bench::add_summary();
  return benchmark::RunSpecifiedBenchmarks() > 0 ? 0 : 1;
}
