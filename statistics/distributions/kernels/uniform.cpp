// Uniform variates: the generator's own blocks, scaled by it.
#include "statistics/distributions/kernels/distribution.h"
#include "vector/kernels/simd/integers.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// min(b, max(a, x)): a + (b - a) u can leave the interval by a rounding. What is no number stays.
template <class Real>
void keep_within(int32_t n, Real* r, Real a, Real b) {
  for (int32_t i = 0; i < n; ++i) {
    const Real x = a > r[i] ? a : r[i];
    r[i] = b < x ? b : x;
  }
}

template <class Real>
int32_t uniform(Source source, int32_t method, int32_t n, Real* r, Real a, Real b) {
  const int32_t status = draw(source, n, r, a, b);
  if (status >= 0 && (method & RAU_METHOD_ACCURATE) != 0) keep_within(n, r, a, b);
  return status;
}

void floor_to_integers(int32_t n, const double* x, int32_t* r) {
  int32_t i = 0;
  for (; i <= n - F64::lanes; i += F64::lanes) store_floor(r + i, load(x + i));
  if (i < n) {
    double last[F64::lanes] = {};
    int32_t floors[F64::lanes];
    __builtin_memcpy(last, x + i, (n - i) * sizeof *x);
    store_floor(floors, load(last));
    __builtin_memcpy(r + i, floors, (n - i) * sizeof *r);
  }
}

[[gnu::noinline]] int32_t floors_of_doubles(Source source, int32_t n, int32_t* r, double a,
                                            double b) {
  double buffer[1024];
  return in_runs(n, 1024, [&](int64_t first, int32_t count) {
    const int32_t status = draw(source, count, buffer, a, b);
    if (status >= 0) floor_to_integers(count, buffer, r + first);
    return status;
  });
}

int32_t uniform_integers(Source source, int32_t n, int32_t* r, int32_t a, int32_t b) {
  const auto floors = source.row->floors;
  return floors != nullptr ? floors(source.stream, n, r, a, b)
                           : floors_of_doubles(source, n, r, a, b);
}

[[gnu::noinline]] int32_t whole_words(Source source, int64_t n, uint32_t* r) {
  return in_runs(n, 1 << 30, [&](int64_t first, int32_t count) {
    return draw_outputs(source, count, r + first);
  });
}

[[gnu::noinline]] int32_t upper_words(Source source, int64_t n, uint32_t* r) {
  uint64_t buffer[2048];
  const int below = source.row->NBits - 32;
  return in_runs(n, 2048, [&](int64_t first, int32_t count) {
    const int32_t status = draw_outputs(source, count, buffer);
    if (status < 0) return status;
    for (int32_t i = 0; i < count; ++i) r[first + i] = static_cast<uint32_t>(buffer[i] >> below);
    return status;
  });
}

// n words of 32 uniform bits; n may be above 2^31 - 1.
int32_t uniform_words(Source source, int64_t n, uint32_t* r) {
  switch (source.row->uniform_bits) {
    case statistics::UniformBits::kWords:
      return whole_words(source, n, r);
    case statistics::UniformBits::kUpperWords:
      return upper_words(source, n, r);
    default:
      return RAU_ERROR_NO_NUMBER_BITS;
  }
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

using namespace orba::ORBA_CLASS_NAMESPACE;

extern "C" int32_t ORBA_RNG_KERNEL(vdRngUniform)(Source source, int32_t method, int32_t n,
                                                 double* r, double a, double b) {
  return uniform(source, method, n, r, a, b);
}
extern "C" int32_t ORBA_RNG_KERNEL(vsRngUniform)(Source source, int32_t method, int32_t n, float* r,
                                                 float a, float b) {
  return uniform(source, method, n, r, a, b);
}
extern "C" int32_t ORBA_RNG_KERNEL(viRngUniform)(Source source, int32_t, int32_t n, int32_t* r,
                                                 int32_t a, int32_t b) {
  return uniform_integers(source, n, r, a, b);
}
extern "C" int32_t ORBA_RNG_KERNEL(viRngUniformBits)(Source source, int32_t, int32_t n,
                                                     uint32_t* r) {
  return draw_outputs(source, n, r);
}
extern "C" int32_t ORBA_RNG_KERNEL(viRngUniformBits32)(Source source, int32_t, int32_t n,
                                                       uint32_t* r) {
  return uniform_words(source, n, r);
}
extern "C" int32_t ORBA_RNG_KERNEL(viRngUniformBits64)(Source source, int32_t, int32_t n,
                                                       uint64_t* r) {
  return uniform_words(source, 2 * int64_t{n}, reinterpret_cast<uint32_t*>(r));
}
