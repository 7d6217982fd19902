// The vector vocabulary of kernel sources: the same small set of types and operations on every
// processor class, each with that class's best instructions.
//
//   F64, F32   vectors of double and float          I64, I32   integers of the same lane count
//   M64, M32   lane masks of the former
//
// A kernel source is compiled once per class and includes nothing of the standard library but
// <stdint.h>. Everything lives in a class-named namespace and, inside it, in an unnamed one: no
// symbol of one class can stand in for another's. Fused operations are fused on classes 3 and 5 and
// two roundings on the others (`mul_add` and kin); where exactness depends on it, test `kFused`.
#pragma once

#include <immintrin.h>
#include <stdint.h>

#define ORBA_INLINE inline __attribute__((always_inline))
#define ORBA_COLD __attribute__((noinline, cold))
#if defined(__clang__)
#  define ORBA_UNROLL _Pragma("clang loop unroll(full)")
#else
#  define ORBA_UNROLL _Pragma("GCC unroll 8")
#endif

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

constexpr int kClass = ORBA_CLASS;
constexpr bool kFused = kClass >= 3;

template <class To, class From>
ORBA_INLINE constexpr To bit_cast(From from) {
  static_assert(sizeof(To) == sizeof(From));
  return __builtin_bit_cast(To, from);
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

#if ORBA_CLASS == 5
#  include "vector/kernels/simd/simd_512.h"
#elif ORBA_CLASS == 3
#  include "vector/kernels/simd/simd_256.h"
#else
#  include "vector/kernels/simd/simd_128.h"
#endif
#include "vector/kernels/simd/common.h"
