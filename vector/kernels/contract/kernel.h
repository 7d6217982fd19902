// The kernel contract, once for all shapes and classes.
//
// A function is a type F that supplies
//
//   In, Out                        element types of its arrays (float, double, KamComplex8, ...); they
//                                  may differ, but not in precision
//   inputs, outputs                1 or 2 arrays of each
//   unroll                         packs per round of the main loop
//   wide (optional)                true: an eval takes two vectors of doubles, a Wide<F64>
//   Flag                           M64, M32, PairMask of them, WordMask with wide; NoFlag when no lane
//                                  is ever special
//   eval(a [, b], Flag&)           the branch-free computation on one pack, for any input; it ORs
//                                  into Flag the lanes whose result it can't vouch for
//   confirm(a [, b], y, Flag&)     (optional) a closer look at a pack with a flag, for an eval whose
//                                  test is cheap but not sharp: it takes back the flags of lanes of
//                                  which the result y holds after all
//   eval_rare(a [, b], Flag&)      (optional) a second vector road for lanes that eval has flagged, such
//                                  as huge arguments; it sets Flag to the lanes that it can't vouch for
//                                  either. It runs out of line, in whole rounds on flagged lanes that
//                                  are gathered from all packs
//   callout(a [, b], r1 [, r2])    the complete scalar function (pointers in, status out) that the
//                                  lanes still flagged get instead; absent with NoFlag. One that never
//                                  reports returns nothing, as it must where In and Out differ
//   filler (optional)              what dead lanes hold instead of kFiller
//   keeps_denormals (optional)     true: the request of the mode to flush them does not apply
//   second_argument() (optional)   what reports give as the second argument of a real function with
//                                  one array: its scalar
//   NoError (optional)             the variant of F that runs when the mode asks for no error
//                                  handling at all; it is made from F, as NoError{f}
//
// all of them static or members: the scalars of a call make F, in their order, by its constructor.
// With two outputs eval returns a Results<Pack>.
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
template <class M, class Pack>
ORBA_INLINE Results<Pack> merge(M m, Results<Pack> x, Results<Pack> y) {
  return {merge(m, x.first, y.first), merge(m, x.second, y.second)};
}

// Arrays of a call, by the names that the shapes give them.
template <class F>
struct Arrays {
  const typename F::In* a;
  const typename F::In* b = a;
  typename F::Out* y;
  typename F::Out* z = y;
};

template <class F>
constexpr bool has_flags = !__is_same(typename F::Flag, NoFlag);

template <class F>
constexpr bool is_wide = false;
template <class F>
requires(F::wide) constexpr bool is_wide<F> = true;

template <class F>
constexpr double filler_of = kFiller;
template <class F>
requires requires { F::filler; }
constexpr double filler_of<F> = F::filler;

template <class F>
constexpr bool keeps_denormals = false;
template <class F>
requires(F::keeps_denormals) constexpr bool keeps_denormals<F> = true;

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
    return load_two<Wide<F64>>(p, live, filler_of<F>);
  else
    return load_pack(p, live, filler_of<F>);
}

// One evaluation, on the rare road or not; `live` is absent for whole packs.
template <bool rare = false, class F, class... Live>
ORBA_INLINE auto eval_pack(const F& f, const Arrays<F>& x, int64_t i, typename F::Flag& flag,
                           Live... live) {
  const auto a = load_for<F>(x.a + i, live...);
  if constexpr (F::inputs == 2) {
    const auto b = load_for<F>(x.b + i, live...);
    if constexpr (rare)
      return f.eval_rare(a, b, flag);
    else
      return f.eval(a, b, flag);
  } else if constexpr (rare) {
    return f.eval_rare(a, flag);
  } else {
    return f.eval(a, flag);
  }
}

template <class F>
constexpr bool has_rare_road = requires(F f, typename F::Flag flag, const typename F::In* p) {
  f.eval_rare(load_for<F>(p), flag);
}
|| requires(F f, typename F::Flag flag, const typename F::In* p) {
  f.eval_rare(load_for<F>(p), load_for<F>(p), flag);
};

template <class F>
constexpr bool has_confirm = requires(F f, typename F::Flag flag, const typename F::In* p) {
  f.confirm(load_for<F>(p), load_for<F>(p), load_for<F>(p), flag);
};

// The flags that remain after the closer look at an evaluation, if there is one.
template <class F, class Y, class... Live>
ORBA_INLINE void confirm_pack(const F& f, const Arrays<F>& x, int64_t i, const Y& y,
                              typename F::Flag& flag, Live... live) {
  if constexpr (has_confirm<F>)
    f.confirm(load_for<F>(x.a + i, live...), load_for<F>(x.b + i, live...), y, flag);
}

// Out of line, so that the road's registers and constants are no burden on the callouts' loop.
template <class F, class... Live>
__attribute__((noinline)) auto eval_rare_pack(const F& f, const Arrays<F>& x, int64_t i,
                                              typename F::Flag& flag, Live... live) {
  return eval_pack<true>(f, x, i, flag, live...);
}

template <class F, class Y, class... Live>
ORBA_INLINE void store_results(const Arrays<F>& x, int64_t i, const Y& y, Live... live) {
  if constexpr (F::outputs == 2) {
    store_pack(x.y + i, live..., y.first);
    store_pack(x.z + i, live..., y.second);
  } else {
    store_pack(x.y + i, live..., y);
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
      if (any(flag)) [[unlikely]] {
        if constexpr (!has_confirm<F>) return i;
        static_assert(!has_confirm<F> || F::unroll == 1);
        confirm_pack(f, x, i, y[0], flag);
        if (any(flag)) return i;
      }
    }
    ORBA_UNROLL
    for (int u = 0; u < F::unroll; ++u) store_results(x, i + u * eval_size<F>, y[u]);
  }
  return i;
}

// The main loop of a function with callouts: a leaf, so that constants stay in registers.
template <class F>
__attribute__((noinline)) int64_t run_rounds(const F f, const Arrays<F>& x, int64_t i,
                                             int64_t end) {
  return rounds(f, x, i, end);
}

// What the callouts of one pack work on.
template <class F>
struct Scratch {
  static constexpr int size = eval_size<F>;
  alignas(64) typename F::In a[size];
  alignas(64) typename F::In b[F::inputs == 2 ? size : 1];
  alignas(64) typename F::Out y[size];
  alignas(64) typename F::Out z[F::outputs == 2 ? size : 1];
};

template <class E>
ORBA_INLINE void report(int32_t code, int32_t i, const E* a, const E* b, E* r1, E* r2,
                        const char* name) {
  if constexpr (is_complex<E>)
    vector::element_error_complex(code, i, parts(a), parts(b), parts(r1), parts(r2), name);
  else
    vector::element_error(code, i, a, b, r1, r2, name);
}

template <class F>
ORBA_INLINE auto call_out(const F& f, Scratch<F>& s, int lane) {
  if constexpr (F::inputs == 2)
    return f.callout(&s.a[lane], &s.b[lane], &s.y[lane]);
  else if constexpr (F::outputs == 2)
    return f.callout(&s.a[lane], &s.y[lane], &s.z[lane]);
  else
    return f.callout(&s.a[lane], &s.y[lane]);
}

// Callouts for the lanes in `flagged`, in ascending order; `places` says which elements they are. A
// reported element is in the result arrays while its error is handled and is read back afterwards,
// which is how a callback replaces it.
template <class F, class Places>
ORBA_COLD void run_callouts(const F& f, const Arrays<F>& x, Places places, uint32_t flagged,
                            Scratch<F>& s, FloatEnvironment& environment,
                            [[maybe_unused]] const char* name) {
  while (flagged != 0) {
    const int lane = __builtin_ctz(flagged);
    const int64_t place = places(lane);
    flagged &= flagged - 1;
    environment.before_callout();
    if constexpr (__is_same(decltype(call_out(f, s, lane)), void)) {
      call_out(f, s, lane);
    } else {
      static_assert(__is_same(typename F::In, typename F::Out));
      const int32_t code = call_out(f, s, lane);
      if (code == 0) continue;
      x.y[place] = s.y[lane];
      if constexpr (F::outputs == 2) x.z[place] = s.z[lane];
      if constexpr (requires { f.second_argument(); }) {
        const typename F::In second = f.second_argument();
        vector::element_error_strided(code, static_cast<int32_t>(place), x.a, 1, &second, 0, x.y, 1,
                                      x.z, 1, name);
      } else {
        report(code, static_cast<int32_t>(place), x.a, x.b, x.y, x.z, name);
      }
      s.y[lane] = x.y[place];
      if constexpr (F::outputs == 2) s.z[lane] = x.z[place];
    }
  }
}

// One eval with its callouts; `live` is absent for a whole pack.
template <class F, class... Live>
ORBA_INLINE void run_pack(const F& f, const Arrays<F>& x, int64_t i, FloatEnvironment& environment,
                          const char* name, Live... live) {
  typename F::Flag flag{};
  auto y = eval_pack(f, x, i, flag, live...);
  if constexpr (has_flags<F>) {
    const int count = (eval_size<F> + ... + (live - eval_size<F>));
    if (has_confirm<F> && any(flag)) confirm_pack(f, x, i, y, flag, live...);
    uint32_t flagged = element_bits(flag) & ((2u << (count - 1)) - 1);
    if constexpr (has_rare_road<F>) {
      if (flagged != 0) [[unlikely]] {
        typename F::Flag left{};
        y = merge(flag, eval_rare_pack(f, x, i, left, live...), y);
        flagged &= element_bits(left);
      }
    }
    if (flagged != 0) [[unlikely]] {
      Scratch<F> s;
      for (int lane = 0; lane < count; ++lane) {
        s.a[lane] = x.a[i + lane];
        if constexpr (F::inputs == 2) s.b[lane] = x.b[i + lane];
      }
      store_results(Arrays<F>{s.a, s.b, s.y, s.z}, 0, y);
      run_callouts(
          f, x, [i](int lane) { return i + lane; }, flagged, s, environment, name);
      for (int lane = 0; lane < count; ++lane) {
        x.y[i + lane] = s.y[lane];
        if constexpr (F::outputs == 2) x.z[i + lane] = s.z[lane];
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

// Lanes for the rare road, gathered from many packs.
template <class F>
struct RareLanes {
  static constexpr int size = eval_size<F>, round = F::unroll * size, capacity = 4 * round + 64;
  alignas(64) typename F::In a[capacity + size];
  alignas(64) typename F::In b[F::inputs == 2 ? capacity + size : 1];
  int64_t place[capacity];
  int count = 0;
  bool full() const { return count > capacity - round; }
};

// Whole rounds from `i` on, until `end`, until the lanes gathered fill their room, or before the first
// round with nothing but flagged lanes, which is left untouched.
template <class F>
__attribute__((noinline)) int64_t run_gathering_rounds(const F& f, const Arrays<F>& x, int64_t i,
                                                       int64_t end, RareLanes<F>& rare) {
  constexpr int size = eval_size<F>;
  for (; i < end && !rare.full(); i += F::unroll * size) {
    typename F::Flag flag[F::unroll]{};
    decltype(eval_pack(f, x, i, flag[0])) y[F::unroll];
    ORBA_UNROLL
    for (int u = 0; u < F::unroll; ++u) y[u] = eval_pack(f, x, i + u * size, flag[u]);
    typename F::Flag one{};
    ORBA_UNROLL
    for (int u = 0; u < F::unroll; ++u) one = one | flag[u];
    if (any(one)) [[unlikely]] {
      uint64_t flagged = 0;
      ORBA_UNROLL
      for (int u = 0; u < F::unroll; ++u)
        flagged |= static_cast<uint64_t>(element_bits(flag[u])) << u * size;
      if (flagged == ~uint64_t{0} >> (64 - F::unroll * size)) return i;
      for (; flagged != 0; flagged &= flagged - 1) {
        const int64_t place = i + __builtin_ctzll(flagged);
        rare.a[rare.count] = x.a[place];
        if constexpr (F::inputs == 2) rare.b[rare.count] = x.b[place];
        rare.place[rare.count++] = place;
      }
    }
    ORBA_UNROLL
    for (int u = 0; u < F::unroll; ++u) store_results(x, i + u * size, y[u]);
  }
  return i;
}

// Whole rounds from `i` on with nothing but flagged lanes, as long as the rare road needs no callout.
template <class F>
__attribute__((noinline)) int64_t run_rare_rounds(const F& f, const Arrays<F>& x, int64_t i,
                                                  int64_t end) {
  constexpr int size = eval_size<F>;
  for (; i < end; i += F::unroll * size) {
    typename F::Flag left{};
    for (int u = 0; u < F::unroll; ++u) {
      typename F::Flag flag{};
      eval_pack(f, x, i + u * size, flag);  // nothing of it is needed but the flag
      if (element_bits(flag) != (2u << (size - 1)) - 1) return i;
    }
    decltype(eval_pack<true>(f, x, i, left)) y[F::unroll];
    for (int u = 0; u < F::unroll; ++u) y[u] = eval_pack<true>(f, x, i + u * size, left);
    if (any(left)) return i;
    for (int u = 0; u < F::unroll; ++u) store_results(x, i + u * size, y[u]);
  }
  return i;
}

// The rare road and the callouts for the lanes gathered.
template <class F>
ORBA_COLD void run_rare_lanes(const F& f, const Arrays<F>& x, RareLanes<F>& rare,
                              FloatEnvironment& environment, const char* name) {
  constexpr int size = eval_size<F>;
  for (int i = rare.count; i % size != 0; ++i) {
    rare.a[i] = rare.a[0];  // whatever the rare road takes
    if constexpr (F::inputs == 2) rare.b[i] = rare.b[0];
  }
  Scratch<F> s;
  for (int i = 0; i < rare.count; i += size) {
    const int count = rare.count - i < size ? rare.count - i : size;
    const int64_t* places = rare.place + i;
    typename F::Flag left{};
    const Arrays<F> block = {rare.a + i, rare.b + (F::inputs == 2 ? i : 0), s.y, s.z};
    store_results(block, 0, eval_pack<true>(f, block, 0, left));
    const uint32_t flagged = element_bits(left) & ((2u << (count - 1)) - 1);
    if (flagged != 0) [[unlikely]] {
      __builtin_memcpy(s.a, rare.a + i, sizeof s.a);
      if constexpr (F::inputs == 2) __builtin_memcpy(s.b, rare.b + i, sizeof s.b);
      run_callouts(
          f, x, [places](int lane) { return places[lane]; }, flagged, s, environment, name);
    }
    for (int lane = 0; lane < count; ++lane) {
      x.y[places[lane]] = s.y[lane];
      if constexpr (F::outputs == 2) x.z[places[lane]] = s.z[lane];
    }
  }
  rare.count = 0;
}

// The whole rounds of a function with a rare road. A round with nothing but flagged lanes, one of
// which may need a callout, ends what is gathered, so that callouts come in ascending order.
template <class F>
ORBA_INLINE void run_rounds_and_rare(const F& f, const Arrays<F>& x, int64_t whole,
                                     FloatEnvironment& environment, const char* name) {
  constexpr int round = F::unroll * eval_size<F>;
  RareLanes<F> rare;
  for (int64_t i = 0; i < whole;) {
    i = run_gathering_rounds(f, x, i, whole, rare);
    if (rare.count != 0) run_rare_lanes(f, x, rare, environment, name);
    if (i == whole) break;
    const int64_t rest = run_rare_rounds(f, x, i, whole);
    if (rest == i) {
      run_packs(f, x, i, i + round, environment, name);
      i += round;
    } else {
      i = rest;
    }
  }
}

template <class F>
ORBA_INLINE void run_function(const F& f, const Arrays<F>& x, int64_t n,
                              FloatEnvironment& environment, const char* name) {
  constexpr uint32_t round = F::unroll * eval_size<F>;
  const int64_t whole = n - static_cast<uint32_t>(n) % round;
  if constexpr (!has_flags<F>) {
    packs(f, x, rounds(f, x, 0, whole), n, environment, name);
  } else if constexpr (has_rare_road<F>) {
    if (whole != 0) run_rounds_and_rare(f, x, whole, environment, name);
    if (whole != n) run_packs(f, x, whole, n, environment, name);
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
  FloatEnvironment environment(keeps_denormals<F> ? uint32_t{KAM_DENORMALS_KEEP} : mode);
  if constexpr (requires { typename F::NoError; }) {
    if ((mode & KAM_ERRMODE_MASK) == KAM_ERRMODE_NOERR) {
      using N = typename F::NoError;
      return run_function(N{f}, Arrays<N>{x.a, x.b, x.y, x.z}, n, environment, name);
    }
  }
  run_function(f, x, n, environment, name);
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

// Kernel entries. The kernel of a row, an accuracy and a class has a C name of its own, such as
// orba_c3_vdAdd_LA; the frame fills the row from these names. A kernel source ends with one line per
// row and accuracy:
//   ORBA_KERNEL       the kernel that runs a function, given by its type
//   ORBA_SAME_KERNEL  for an accuracy that shares the kernel of another
//   ORBA_KERNEL_ENTRY        the head of an entry whose body follows in braces, with the shape's parameters
// The accuracy is ALL where the row of the function table says that there is only one kernel.
#define ORBA_KERNEL_ENTRY(shape, t, Name, accuracy) \
  extern "C" void ORBA_KERNEL_NAME(v##t##Name, accuracy)(int32_t n ORBA_PARAMETERS(shape, t))
#define ORBA_KERNEL(shape, t, Name, accuracy, ...)                    \
  ORBA_KERNEL_ENTRY(shape, t, Name, accuracy) {                       \
    using namespace orba::ORBA_CLASS_NAMESPACE;                       \
    using Function = __VA_ARGS__;                                     \
    run_kernel(n, Arrays<Function>{ORBA_ARRAYS(shape)}, "v" #t #Name, \
               Function{ORBA_SCALARS(shape)});                        \
  }
#define ORBA_SAME_KERNEL(shape, t, Name, accuracy, same_as) \
  ORBA_KERNEL_ENTRY(shape, t, Name, accuracy)               \
  __attribute__((alias(ORBA_STRING(ORBA_KERNEL_NAME(v##t##Name, same_as)))));

#define ORBA_KERNEL_NAME_(class_name, row, accuracy) orba_##class_name##_##row##_##accuracy
#define ORBA_KERNEL_NAME_EXPANDED(class_name, row, accuracy) \
  ORBA_KERNEL_NAME_(class_name, row, accuracy)
#define ORBA_KERNEL_NAME(row, accuracy) \
  ORBA_KERNEL_NAME_EXPANDED(ORBA_CLASS_NAMESPACE, row, accuracy)
#define ORBA_STRING_(x) #x
#define ORBA_STRING(x) ORBA_STRING_(x)

// Initialisers of the arrays and of the scalars of a shape.
#define ORBA_ARRAYS(shape) ORBA_SHAPE_##shape(ORBA_ARRAY_, )
#define ORBA_ARRAY_(t, kind, type, name) ORBA_ARRAY_##kind##_(name)
#define ORBA_ARRAY_in_(name) .name = name,
#define ORBA_ARRAY_out_(name) .name = name,
#define ORBA_ARRAY_scalar_(name)
#define ORBA_SCALARS(shape) ORBA_SHAPE_##shape(ORBA_SCALAR_, )
#define ORBA_SCALAR_(t, kind, type, name) ORBA_SCALAR_##kind##_(name)
#define ORBA_SCALAR_in_(name)
#define ORBA_SCALAR_out_(name)
#define ORBA_SCALAR_scalar_(name) name,
