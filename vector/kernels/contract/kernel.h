// The kernel contract, once for all shapes and classes.
//
// A function is a type F that supplies
//
//   In, Out                        element types of its arrays (float, double, KamComplex8, ...)
//   inputs, outputs                1 or 2 of each
//   unroll                         packs per round of the main loop
//   wide (optional)                true: an eval takes two vectors of doubles, a Wide<F64>
//   Flag                           M64, M32, PairMask of them, WordMask with wide; NoFlag when no lane
//                                  is ever special
//   eval(a [, b], Flag&)           the branch-free computation on one pack, for any input; it ORs
//                                  into Flag the lanes whose result it can't vouch for
//   callout(a [, b], r1 [, r2])    the complete scalar function (pointers in, status out) that
//                                  flagged lanes get instead; absent with NoFlag
//   NoError (optional)             the variant of F that runs when the mode asks for no error
//                                  handling at all
//
// with two outputs eval returns a Results<Pack>. Scalars of a call are members of F.
//
// The contract gives back everything else: floating-point environment, rounds of `unroll` packs
// with one test, callouts in ascending order, reports, masked tails with an ordinary value in dead
// lanes. The computation of an element is the same instruction sequence in a round and in a tail,
// so a result depends on the value and the mode alone.
#pragma once

#include "vector/kernels/contract/environment.h"
#include "vector/kernels/contract/pack.h"
#include "vector/words/kernel_hooks.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class Pack>
struct Results {
  Pack first, second;
};

// Arrays of a call; b stands for a again, and r2 for r1, where the function has only one.
template <class F>
struct Arrays {
  const typename F::In* a;
  const typename F::In* b;
  typename F::Out* r1;
  typename F::Out* r2;
};

template <class F>
constexpr bool has_flags = !__is_same(typename F::Flag, NoFlag);

template <class F>
constexpr bool is_wide = false;
template <class F>
requires(F::wide) constexpr bool is_wide<F> = true;

// Elements of one eval.
template <class F>
constexpr int eval_size = pack_size<typename F::In>*(is_wide<F> ? 2 : 1);

template <class F>
ORBA_INLINE auto load_for(const typename F::In* p) {
  if constexpr (is_wide<F>)
    return Wide<F64>{load(p), load(p + F64::lanes)};
  else
    return load_pack(p);
}
template <class F>
ORBA_INLINE auto load_for(const typename F::In* p, int live) {
  if constexpr (is_wide<F>)
    return load_two<Wide<F64>>(p, live);
  else
    return load_pack(p, live);
}

// `live` is absent for whole packs.
template <class F, class... Live>
ORBA_INLINE auto eval_pack(const F& f, const Arrays<F>& x, int64_t i, typename F::Flag& flag,
                           Live... live) {
  const auto a = load_for<F>(x.a + i, live...);
  if constexpr (F::inputs == 2) {
    const auto b = load_for<F>(x.b + i, live...);
    return f.eval(a, b, flag);
  } else {
    return f.eval(a, flag);
  }
}

template <class F, class Y, class... Live>
ORBA_INLINE void store_results(const Arrays<F>& x, int64_t i, const Y& y, Live... live) {
  if constexpr (F::outputs == 2) {
    store_pack(x.r1 + i, live..., y.first);
    store_pack(x.r2 + i, live..., y.second);
  } else {
    store_pack(x.r1 + i, live..., y);
  }
}

// Whole rounds from `i` on, until `end` or before the first round with a flagged lane, which is
// left untouched.
template <class F>
ORBA_INLINE int64_t rounds(const F& f, const Arrays<F>& x, int64_t i, int64_t end) {
  for (; i < end; i += F::unroll * eval_size<F>) {
    typename F::Flag flag{};
    decltype(eval_pack(f, x, i, flag)) y[F::unroll];
    ORBA_UNROLL
    for (int u = 0; u < F::unroll; ++u) y[u] = eval_pack(f, x, i + u * eval_size<F>, flag);
    if constexpr (has_flags<F>) {
      if (any(flag)) [[unlikely]]
        return i;
    }
    ORBA_UNROLL
    for (int u = 0; u < F::unroll; ++u) store_results(x, i + u * eval_size<F>, y[u]);
  }
  return i;
}

// The main loop of a function with callouts: a leaf, so that constants stay in registers.
template <class F>
__attribute__((noinline)) int64_t run_rounds(const F& f, const Arrays<F>& x, int64_t i,
                                             int64_t end) {
  return rounds(f, x, i, end);
}

// What the callouts of one pack work on.
template <class F>
struct Scratch {
  static constexpr int size = eval_size<F>;
  alignas(64) typename F::In a[size];
  alignas(64) typename F::In b[F::inputs == 2 ? size : 1];
  alignas(64) typename F::Out r1[size];
  alignas(64) typename F::Out r2[F::outputs == 2 ? size : 1];
};

ORBA_INLINE void report(int32_t code, int32_t i, const double* a, const double* b, double* r1,
                        double* r2, const char* name) {
  vector::element_error(code, i, a, b, r1, r2, name);
}
ORBA_INLINE void report(int32_t code, int32_t i, const float* a, const float* b, float* r1,
                        float* r2, const char* name) {
  vector::element_error(code, i, a, b, r1, r2, name);
}
template <class E>
ORBA_INLINE void report(int32_t code, int32_t i, const E* a, const E* b, E* r1, E* r2,
                        const char* name) {
  vector::element_error_complex(code, i, parts(a), parts(b), parts(r1), parts(r2), name);
}

// Callouts for the lanes in `flagged`, in ascending order. A reported element is in `r` while its
// error is handled and is read back afterwards, which is how a callback replaces it.
template <class F>
ORBA_COLD void run_callouts(const Arrays<F>& x, int64_t i, uint32_t flagged, Scratch<F>& s,
                            FloatEnvironment& environment, const char* name) {
  while (flagged != 0) {
    const int lane = __builtin_ctz(flagged);
    flagged &= flagged - 1;
    environment.before_callout();
    int32_t code;
    if constexpr (F::inputs == 2)
      code = F::callout(&s.a[lane], &s.b[lane], &s.r1[lane]);
    else if constexpr (F::outputs == 2)
      code = F::callout(&s.a[lane], &s.r1[lane], &s.r2[lane]);
    else
      code = F::callout(&s.a[lane], &s.r1[lane]);
    if (code == 0) continue;
    x.r1[i + lane] = s.r1[lane];
    if constexpr (F::outputs == 2) x.r2[i + lane] = s.r2[lane];
    report(code, static_cast<int32_t>(i + lane), x.a, x.b, x.r1, x.r2, name);
    s.r1[lane] = x.r1[i + lane];
    if constexpr (F::outputs == 2) s.r2[lane] = x.r2[i + lane];
  }
}

// One eval with its callouts; `live` is absent for a whole pack.
template <class F, class... Live>
ORBA_INLINE void run_pack(const F& f, const Arrays<F>& x, int64_t i, FloatEnvironment& environment,
                          const char* name, Live... live) {
  typename F::Flag flag{};
  const auto y = eval_pack(f, x, i, flag, live...);
  if constexpr (has_flags<F>) {
    const int count = (eval_size<F> + ... + (live - eval_size<F>));
    const uint32_t flagged = element_bits(flag) & ((2u << (count - 1)) - 1);
    if (flagged != 0) [[unlikely]] {
      Scratch<F> s;
      for (int lane = 0; lane < count; ++lane) {
        s.a[lane] = x.a[i + lane];
        if constexpr (F::inputs == 2) s.b[lane] = x.b[i + lane];
      }
      store_results(Arrays<F>{s.a, s.b, s.r1, s.r2}, 0, y);
      run_callouts<F>(x, i, flagged, s, environment, name);
      for (int lane = 0; lane < count; ++lane) {
        x.r1[i + lane] = s.r1[lane];
        if constexpr (F::outputs == 2) x.r2[i + lane] = s.r2[lane];
      }
      return;
    }
  }
  store_results(x, i, y, live...);
}

// Elements i to end - 1 pack by pack: tails, and rounds that hold flagged lanes.
template <class F>
ORBA_INLINE void packs(const F& f, const Arrays<F>& x, int64_t i, int64_t end,
                       FloatEnvironment& environment, const char* name) {
  constexpr int size = eval_size<F>;
  for (; i + size <= end; i += size) run_pack(f, x, i, environment, name);
  if (i < end) run_pack(f, x, i, environment, name, static_cast<int>(end - i));
}
template <class F>
__attribute__((noinline)) void run_packs(const F& f, const Arrays<F>& x, int64_t i, int64_t end,
                                         FloatEnvironment& environment, const char* name) {
  packs(f, x, i, end, environment, name);
}

template <class F>
ORBA_INLINE void run_function(const F& f, const Arrays<F>& x, int64_t n,
                              FloatEnvironment& environment, const char* name) {
  constexpr uint32_t round = F::unroll * eval_size<F>;
  const int64_t whole = n - static_cast<uint32_t>(n) % round;
  if constexpr (!has_flags<F>) {
    packs(f, x, rounds(f, x, 0, whole), n, environment, name);
  } else {
    int64_t i = 0;
    while (i < whole) {
      i = run_rounds(f, x, i, whole);
      if (i == whole) break;
      run_packs(f, x, i, i + round, environment, name);
      i += round;
    }
    if (i < n) run_packs(f, x, i, n, environment, name);
  }
}

// The mode word of this thread, which heads the thread's words: one load off the thread register
// once they are there and set.
ORBA_INLINE uint32_t read_mode() {
  const void* words = services::platform::thread_slot;
  const uint32_t mode = words != nullptr ? *static_cast<const uint32_t*>(words) : 0;
  return mode != 0 ? mode : vector::kernel_mode();
}

// A whole kernel call.
template <class F>
ORBA_INLINE void run_kernel(int32_t n, const Arrays<F>& x, const char* name, const F& f = F{}) {
  const uint32_t mode = read_mode();
  FloatEnvironment environment(mode);
  if constexpr (requires { typename F::NoError; }) {
    if ((mode & KAM_ERRMODE_MASK) == KAM_ERRMODE_NOERR) {
      using N = typename F::NoError;
      return run_function(N{}, Arrays<N>{x.a, x.b, x.r1, x.r2}, n, environment, name);
    }
  }
  run_function(f, x, n, environment, name);
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

// Kernel entries. The kernel of a row, an accuracy and a class has a C name of its own, such as
// orba_c3_vdAdd_LA; vector/frame/rows.cpp fills the row from these names. A kernel source ends with
// one line per row and accuracy: ORBA_KERNEL_... for a kernel, ORBA_SAME_KERNEL where an accuracy
// shares the kernel of another one.
#define ORBA_KERNEL_NAME_(class_name, row, accuracy) orba_##class_name##_##row##_##accuracy
#define ORBA_KERNEL_NAME_EXPANDED(class_name, row, accuracy) \
  ORBA_KERNEL_NAME_(class_name, row, accuracy)
#define ORBA_KERNEL_NAME(row, accuracy) \
  ORBA_KERNEL_NAME_EXPANDED(ORBA_CLASS_NAMESPACE, row, accuracy)
#define ORBA_STRING_(x) #x
#define ORBA_STRING(x) ORBA_STRING_(x)

#define ORBA_KERNEL_1i_1o(t, Name, accuracy, ...)                                                \
  extern "C" void ORBA_KERNEL_NAME(v##t##Name, accuracy)(                                        \
      int32_t n, const orba::vector::Type_##t::Element* a, orba::vector::Type_##t::Element* r) { \
    using namespace orba::ORBA_CLASS_NAMESPACE;                                                  \
    run_kernel<__VA_ARGS__>(n, {a, a, r, r}, "v" #t #Name);                                      \
  }
#define ORBA_KERNEL_2i_1o(t, Name, accuracy, ...)                                     \
  extern "C" void ORBA_KERNEL_NAME(v##t##Name, accuracy)(                             \
      int32_t n, const orba::vector::Type_##t::Element* a,                            \
      const orba::vector::Type_##t::Element* b, orba::vector::Type_##t::Element* r) { \
    using namespace orba::ORBA_CLASS_NAMESPACE;                                       \
    run_kernel<__VA_ARGS__>(n, {a, b, r, r}, "v" #t #Name);                           \
  }
#define ORBA_KERNEL_1i_2o(t, Name, accuracy, ...)                                               \
  extern "C" void ORBA_KERNEL_NAME(v##t##Name, accuracy)(                                       \
      int32_t n, const orba::vector::Type_##t::Element* a, orba::vector::Type_##t::Element* r1, \
      orba::vector::Type_##t::Element* r2) {                                                    \
    using namespace orba::ORBA_CLASS_NAMESPACE;                                                 \
    run_kernel<__VA_ARGS__>(n, {a, a, r1, r2}, "v" #t #Name);                                   \
  }
#define ORBA_SAME_KERNEL(row, shape, t, accuracy, same_as)                                        \
  extern "C" orba::vector::Kernel_##shape<orba::vector::Type_##t> ORBA_KERNEL_NAME(row, accuracy) \
      __attribute__((alias(ORBA_STRING(ORBA_KERNEL_NAME(row, same_as)))));
