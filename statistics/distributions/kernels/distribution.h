// Names of the distribution kernels, and what they share: the numbers that they are made of.
#pragma once

#include "statistics/streams/brng.h"
#include "vector/kernels/contract/scalar.h"
#include "vector/kernels/simd/simd.h"

// The C name of a kernel: orba_c3_vdRngUniform.
#define ORBA_RNG_PASTE_(build, Name) orba_##build##_##Name
#define ORBA_RNG_PASTE(build, Name) ORBA_RNG_PASTE_(build, Name)
#define ORBA_RNG_KERNEL(Name) ORBA_RNG_PASTE(ORBA_CLASS_NAMESPACE, Name)

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

using statistics::Source;

// n uniform numbers in [a, b), or n raw outputs, by the blocks of this class. A negative status ends
// a kernel at once: nothing is taken back.
ORBA_INLINE int32_t draw(Source from, int32_t n, double* r, double a, double b) {
  return from.row->dBRng(from.stream, n, r, a, b);
}
ORBA_INLINE int32_t draw(Source from, int32_t n, float* r, float a, float b) {
  return from.row->sBRng(from.stream, n, r, a, b);
}
ORBA_INLINE int32_t draw_outputs(Source from, int32_t n, void* r) {
  return from.row->iBRng(from.stream, n, r);
}

// Calls step(first, count) for runs of at most `length` of n elements, until a status is negative.
template <class Step>
ORBA_INLINE int32_t in_runs(int64_t n, int32_t length, Step step) {
  for (int64_t first = 0; first < n; first += length) {
    const int64_t left = n - first;
    const int32_t status = step(first, left < length ? static_cast<int32_t>(left) : length);
    if (status < 0) return status;
  }
  return RAU_STATUS_OK;
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
