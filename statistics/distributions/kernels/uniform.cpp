// Uniform variates: the generator's own blocks, scaled by it.
#include "statistics/distributions/kernels/distribution.h"
#include "vector/kernels/simd/integers.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

constexpr int32_t kIntegerChunk = 1024;  // doubles on the stack
constexpr int32_t kBitsChunk = 2048;     // 64-bit outputs on the stack

const BrngProperties& row_of(const StreamState* stream) {
  return statistics::brng_of(kClass, *stream);
}

// min(b, max(a, x)): a + (b - a) u can leave the interval by a rounding.
template <class Real>
void keep_within(int32_t n, Real* r, Real a, Real b) {
  for (int32_t i = 0; i < n; ++i) {
    const Real x = r[i] > a ? r[i] : a;
    r[i] = x < b ? x : b;
  }
}

template <class Real>
int32_t uniform(int32_t method, StreamState* stream, int32_t n, Real* r, Real a, Real b) {
  const BrngProperties& row = row_of(stream);
  int32_t status;
  if constexpr (sizeof(Real) == sizeof(double)) {
    status = row.dBRng(stream, n, r, a, b);
  } else {
    status = row.sBRng(stream, n, r, a, b);
  }
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

int32_t uniform_integers(StreamState* stream, int32_t n, int32_t* r, int32_t a, int32_t b) {
  if (const auto floors = statistics::floors_of(kClass, *stream)) return floors(stream, n, r, a, b);
  double buffer[kIntegerChunk];
  for (int32_t done = 0; done < n; done += kIntegerChunk) {
    const int32_t count = n - done < kIntegerChunk ? n - done : kIntegerChunk;
    const int32_t status = uniform<double>(RAU_METHOD_STD, stream, count, buffer, a, b);
    if (status < 0) return status;
    floor_to_integers(count, buffer, r + done);
  }
  return RAU_STATUS_OK;
}

enum class Bits { kNone, kWords, kUpperHalves };

// Which generators give words that are uniform in all bits, and where in an output these are.
Bits bits_of(const StreamState* stream) {
  switch (statistics::resolve_brng(stream->brng).row) {
    case 3:  // MCG59
      return Bits::kUpperHalves;
    case 7:   // MT19937
    case 8:   // MT2203
    case 12:  // SFMT19937
    case 13:  // non-deterministic
    case 14:  // ARS-5
    case 15:  // Philox4x32-10
      return Bits::kWords;
    default:
      return Bits::kNone;
  }
}

// n words of 32 uniform bits; n may be above 2^31 - 1.
int32_t uniform_words(StreamState* stream, int64_t n, uint32_t* r) {
  const Bits bits = bits_of(stream);
  if (bits == Bits::kNone) return RAU_ERROR_NO_NUMBER_BITS;
  const BrngProperties& row = row_of(stream);
  if (bits == Bits::kWords) {
    constexpr int64_t kLargest = 1 << 30;
    for (int64_t done = 0; done < n; done += kLargest) {
      const int64_t count = n - done < kLargest ? n - done : kLargest;
      const int32_t status = row.iBRng(stream, static_cast<int32_t>(count), r + done);
      if (status < 0) return status;
    }
    return RAU_STATUS_OK;
  }
  uint64_t buffer[kBitsChunk];
  for (int64_t done = 0; done < n; done += kBitsChunk) {
    const int64_t count = n - done < kBitsChunk ? n - done : kBitsChunk;
    const int32_t status = row.iBRng(stream, static_cast<int32_t>(count), buffer);
    if (status < 0) return status;
    // The upper 32 of the 59 bits.
    for (int64_t i = 0; i < count; ++i) r[done + i] = static_cast<uint32_t>(buffer[i] >> 27);
  }
  return RAU_STATUS_OK;
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

using namespace orba::ORBA_CLASS_NAMESPACE;

extern "C" int32_t ORBA_RNG_KERNEL(vdRngUniform)(int32_t method, StreamState* stream, int32_t n,
                                                 double* r, double a, double b) {
  return uniform(method, stream, n, r, a, b);
}
extern "C" int32_t ORBA_RNG_KERNEL(vsRngUniform)(int32_t method, StreamState* stream, int32_t n,
                                                 float* r, float a, float b) {
  return uniform(method, stream, n, r, a, b);
}
extern "C" int32_t ORBA_RNG_KERNEL(viRngUniform)(int32_t, StreamState* stream, int32_t n,
                                                 int32_t* r, int32_t a, int32_t b) {
  return uniform_integers(stream, n, r, a, b);
}
extern "C" int32_t ORBA_RNG_KERNEL(viRngUniformBits)(int32_t, StreamState* stream, int32_t n,
                                                     uint32_t* r) {
  return row_of(stream).iBRng(stream, n, r);
}
extern "C" int32_t ORBA_RNG_KERNEL(viRngUniformBits32)(int32_t, StreamState* stream, int32_t n,
                                                       uint32_t* r) {
  return uniform_words(stream, n, r);
}
extern "C" int32_t ORBA_RNG_KERNEL(viRngUniformBits64)(int32_t, StreamState* stream, int32_t n,
                                                       uint64_t* r) {
  return uniform_words(stream, 2 * int64_t{n}, reinterpret_cast<uint32_t*>(r));
}
