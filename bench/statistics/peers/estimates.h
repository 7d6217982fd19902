// What other libraries offer for summary statistics, compiled for one processor class.
#pragma once

#include <cstdint>
#include <span>

namespace orba::bench {

// n observations of p variables, on a 64-byte boundary.
struct Sample {
  const double* x;
  int64_t p, n;
  bool rows;  // each variable contiguous, else each observation

  bool contiguous() const { return rows || p == 1; }
};

struct EstimatePeer {
  const char* estimate;
  const char* name;
  bool rows, columns;  // the layouts it is for; one variable counts as rows
  // out: p * (p + 2) numbers; workspace: n * p numbers.
  void (*run)(const Sample& sample, double* out, double* workspace);
};

struct EstimatePeers {
  std::span<const EstimatePeer> peers;
  const char* versions;
};

EstimatePeers orba_bench_estimates_c3();
EstimatePeers orba_bench_estimates_c5();

}  // namespace orba::bench
