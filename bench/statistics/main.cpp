// Measures random streams and summary statistics beside their peers; see timing.h.
#include <gnu/libc-version.h>

#include "bench/statistics/families.h"
#include "bench/statistics/timing.h"
#include "bench/tsc_frequency.h"

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::AddCustomContext("compiler", ORBA_BENCH_COMPILERS);
  benchmark::AddCustomContext("libraries", std::string("glibc ") + gnu_get_libc_version() +
                                               orba::bench::stream_peer_versions() +
                                               orba::bench::summary_peer_versions());
  benchmark::AddCustomContext("tsc_hz", std::to_string(orba::bench::tsc_frequency()));
  orba::bench::add_streams();
  orba::bench::add_summary();
  return benchmark::RunSpecifiedBenchmarks() > 0 ? 0 : 1;
}
