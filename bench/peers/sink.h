// How the peers, compiled once per processor class and compiler, hand their loops to the benchmark.
#pragma once

#include "vector/frame/rows.h"

namespace orba::bench {

// Takes one peer of the vector function `function` ("vdExp"). `entry` has the signature of that
// function's kernels.
using PeerSink = void (*)(const char* function, const char* peer, vector::KamKernel entry);

template <class... P>
void hand_over(PeerSink sink, const char* function, const char* peer,
               void (*entry)(int32_t, P...)) {
  sink(function, peer, reinterpret_cast<vector::KamKernel>(entry));
}

}  // namespace orba::bench
