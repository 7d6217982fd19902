// Kernels of plain hardware operations: no flags, no callout, the same at all accuracies.
//
// Classes 2 to 5 run the common contract. Classes 0 and 1 have a form of their own: when the count
// is at least 8 and the destination is aligned to its element, a scalar head brings the destination
// to 16 bytes and the loop stores aligned; otherwise a plain scalar loop. Their entry only masks
// the exceptions: they neither read the flush-to-zero field nor change it.
#pragma once

#include "vector/kernels/contract/kernel.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// A plain operation Op supplies `inputs`, and apply(a [, b]) for vectors and for scalars alike.
template <class Op, class E>
struct Plain {
  using In = E;
  using Out = E;
  using Flag = NoFlag;
  static constexpr int inputs = Op::inputs;
  static constexpr int outputs = 1;
  static constexpr int unroll = 4;
  template <class V>
  ORBA_INLINE static V eval(V a, NoFlag&) {
    return Op::apply(a);
  }
  template <class V>
  ORBA_INLINE static V eval(V a, V b, NoFlag&) {
    return Op::apply(a, b);
  }
};

#if ORBA_CLASS <= 1

ORBA_INLINE F64 load_aligned(const double* p) { return _mm_load_pd(p); }
ORBA_INLINE F32 load_aligned(const float* p) { return _mm_load_ps(p); }
ORBA_INLINE void store_aligned(double* p, F64 x) { _mm_store_pd(p, x.v); }
ORBA_INLINE void store_aligned(float* p, F32 x) { _mm_store_ps(p, x.v); }
// A pair of half-register loads: cheaper than an unaligned load on the processors of these classes.
ORBA_INLINE F64 load_halves(const double* p) { return _mm_loadh_pd(_mm_load_sd(p), p + 1); }
ORBA_INLINE F32 load_halves(const float* p) {
  __m128 x = _mm_castpd_ps(_mm_load_sd(reinterpret_cast<const double*>(p)));
  return _mm_loadh_pi(x, reinterpret_cast<const __m64*>(p + 2));
}

template <class Op, class E>
ORBA_INLINE void apply_one(const E* a, const E* b, E* r, int64_t i) {
  if constexpr (Op::inputs == 2)
    r[i] = Op::apply(a[i], b[i]);
  else
    r[i] = Op::apply(a[i]);
}

template <class Op, bool a_aligned, bool b_aligned, class E>
ORBA_INLINE int64_t aligned_loop(const E* a, const E* b, E* r, int64_t i, int64_t n) {
  constexpr int size = pack_size<E>;
  constexpr int packs = 4;
  const auto load_a = [&](int64_t j) {
    return a_aligned ? load_aligned(a + j) : load_halves(a + j);
  };
  const auto load_b = [&](int64_t j) {
    return b_aligned ? load_aligned(b + j) : load_halves(b + j);
  };
  for (; i + packs * size <= n; i += packs * size) {
    decltype(load_a(0)) y[packs];
    ORBA_UNROLL
    for (int u = 0; u < packs; ++u) {
      if constexpr (Op::inputs == 2)
        y[u] = Op::apply(load_a(i + u * size), load_b(i + u * size));
      else
        y[u] = Op::apply(load_a(i + u * size));
    }
    ORBA_UNROLL
    for (int u = 0; u < packs; ++u) store_aligned(r + i + u * size, y[u]);
  }
  return i;
}

template <class Op, class E>
ORBA_INLINE void run_plain(int32_t n, const E* a, const E* b, E* r) {
  constexpr uint32_t exception_masks = 0x1f80;
  const uint32_t mxcsr = _mm_getcsr();
  const bool masked = (mxcsr & exception_masks) == exception_masks;
  if (!masked) _mm_setcsr(mxcsr | exception_masks);
  asm volatile("" : : : "memory");

  const auto misalignment = [](const E* p) { return reinterpret_cast<uintptr_t>(p) % 16; };
  int64_t i = 0;
  if (n >= 8 && misalignment(r) % sizeof(E) == 0) {
    for (; misalignment(r + i) != 0; ++i) apply_one<Op>(a, b, r, i);
    const bool a_aligned = misalignment(a + i) == 0;
    const bool b_aligned = misalignment(b + i) == 0;
    if (a_aligned && b_aligned)
      i = aligned_loop<Op, true, true>(a, b, r, i, n);
    else if (a_aligned)
      i = aligned_loop<Op, true, false>(a, b, r, i, n);
    else if (b_aligned)
      i = aligned_loop<Op, false, true>(a, b, r, i, n);
    else
      i = aligned_loop<Op, false, false>(a, b, r, i, n);
  }
  for (; i < n; ++i) apply_one<Op>(a, b, r, i);

  asm volatile("" : : : "memory");
  if (!masked) _mm_setcsr(mxcsr | (_mm_getcsr() & 0x3f));
}

#else

template <class Op, class E>
ORBA_INLINE void run_plain(int32_t n, const E* a, const E* b, E* r) {
  run_kernel(n, Arrays<Plain<Op, E>>{a, b, r, r}, "");
}

#endif

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

#define ORBA_PLAIN_KERNEL(shape, t, Name, Op)                                          \
  ORBA_KERNEL_ENTRY(shape, t, Name, ALL) {                                             \
    using namespace orba::ORBA_CLASS_NAMESPACE;                                        \
    const Arrays<Plain<Op, orba::vector::Type_##t::Element>> x = {ORBA_ARRAYS(shape)}; \
    run_plain<Op>(n, x.a, x.b, x.y);                                                   \
  }
