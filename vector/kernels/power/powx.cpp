// Powx: a^b for one b. The exponents 0, 1, 2, 3, 1/2 and -1 have loops of their own, chosen by the bits
// of b; all others share that of Pow. Callouts, and so special results and statuses, are those of Pow.
//
//   square, identity   one product
//   cube               a product of pairs, rounded once; EP: two products
//   root               that of Sqrt; single EP: by the hardware's estimate, 2^-11.4 (class 5: 2^-14)
//   reciprocal         a division; EP on class 5: as Inv, single: the hardware's estimate
//
// The estimates of class 5 are exact at 1, as the result has to be.
#include "vector/kernels/arith/recip.h"
#include "vector/kernels/arith/sqrt_kernel.h"
#include "vector/kernels/power/pow_kernel.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class V>
struct PowxBase {
  using Vector = V;
  using In = typename V::Element;
  using Out = In;
  using Flag = typename V::Mask;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = 4;

  In b;

  In second_argument() const { return b; }
  int32_t callout(const In* a, In* r) const { return pow_callout(a, &b, r); }
};

template <class Pow>
struct PowxGeneral : PowxBase<typename Pow::Vector> {
  using V = typename Pow::Vector;
  static constexpr int unroll = Pow::unroll;
  ORBA_INLINE V eval(V x, typename V::Mask& flag) const { return Pow::eval(x, V(this->b), flag); }
};

template <class V>
struct PowxOne : PowxBase<V> {
  using Flag = NoFlag;
  ORBA_INLINE static V eval(V, NoFlag&) { return V(1); }
};

// Results that are infinite, NaN or below the lowest exponent, but for zeros of zeros.
ORBA_INLINE M64 power_special(F64 x, F64 power, uint32_t lowest = 0x00100000) {
  return outside(as_bits(abs(power)), lowest, 0x7fefffff) & (x != F64(0));
}
ORBA_INLINE M32 power_special(F32 x, F32 power, uint32_t lowest = 0x00800000) {
  return outside(as_bits(abs(power)), lowest, 0x7f7fffff) & (x != F32(0));
}

// The product is one for the sake of denormals: they are flushed on demand.
template <class V>
struct PowxIdentity : PowxBase<V> {
  ORBA_INLINE V eval(V x, typename V::Mask& flag) const {
    const V power = x * V(this->b);
    flag = flag | power_special(x, power);
    return power;
  }
};

template <class V>
struct PowxSquare : PowxBase<V> {
  ORBA_INLINE static V eval(V x, typename V::Mask& flag) {
    const V power = x * x;
    flag = flag | power_special(x, power);
    return power;
  }
};

ORBA_INLINE F64 cube(F64 x) {
  const Pair<F64> square = two_product(x, x);
  const F64 tail = square.lo * x;
  if constexpr (kFused) return mul_add(square.hi, x, tail);
  const Pair<F64> product = two_product(square.hi, x);
  return with_sign_of(x, product.hi + (product.lo + tail));
}
ORBA_INLINE F32 cube(F32 x) {
  const F64 low = widen_low(x), high = widen_high(x);
  return narrow(low * low * low, high * high * high);
}

template <class V, Accuracy accuracy>
struct PowxCube : PowxBase<V> {
  ORBA_INLINE static V eval(V x, typename V::Mask& flag) {
    const V power = accuracy == kEp ? x * x * x : cube(x);
    // From 2^-959 on no tail that counts is denormal.
    if constexpr (sizeof(typename V::Element) == 8)
      flag = flag | power_special(x, power, 0x04000000);
    else
      flag = flag | power_special(x, power);
    return power;
  }
};

// 1 of 1, whatever the estimate.
template <class V>
ORBA_INLINE V one_of_one(V x, V power) {
  return select(x == V(1), V(1), power);
}
ORBA_INLINE Wide<F64> one_of_one(Wide<F64> x, Wide<F64> power) {
  return {one_of_one(x.lo, power.lo), one_of_one(x.hi, power.hi)};
}

template <class Root, Accuracy accuracy>
struct PowxRoot : PowxBase<typename Root::Vector> {
  using Flag = typename Root::Flag;
  static constexpr int unroll = Root::unroll;
  static constexpr bool wide = is_wide<Root>;
  template <class Pack>
  ORBA_INLINE static Pack eval(Pack x, Flag& flag) {
    const Pack power = Root::eval(x, flag);
    return accuracy == kEp && kClass == 3 ? one_of_one(x, power) : power;
  }
};

template <class V, Accuracy accuracy>
struct PowxReciprocal : PowxBase<V> {
  ORBA_INLINE static V eval(V x, typename V::Mask& flag) {
    flag = flag | not_invertible(x);
    if constexpr (accuracy != kEp || kClass < 5)
      return V(1) / x;
    else if constexpr (sizeof(typename V::Element) == 8)
      return recip_ep(x);
    else
      return approx_recip(x);
  }
};

#if ORBA_CLASS >= 3
struct RootEstimate : SqrtHardware<F32> {
  ORBA_INLINE static F32 eval(F32 x, M32& flag) {
    flag = flag | outside(as_bits(x), kSqrtFloatDomain.low, kSqrtFloatDomain.high);
    return x * approx_rsqrt(x);
  }
};
#endif

// The square roots of a type and accuracy.
template <class V, Accuracy accuracy>
struct RootOf {
  using Type = SqrtHardware<V>;
};
#if ORBA_CLASS >= 3
template <>
struct RootOf<F64, kEp> {
  using Type = SqrtSeries64<SqrtDegree::ep>;
};
template <>
struct RootOf<F32, kEp> {
  using Type = RootEstimate;
};
#endif
#if ORBA_CLASS == 5
template <Accuracy accuracy>
requires(accuracy != kEp) struct RootOf<F64, accuracy> {
  using Type = SqrtSeries64<SqrtDegree::full_with_residual>;
};
#endif

// Constants of a switch, where no comparison meets a signalling NaN or a denormal number.
ORBA_INLINE constexpr uint64_t number_bits(double x) { return bit_cast<uint64_t>(x); }
ORBA_INLINE constexpr uint32_t number_bits(float x) { return bit_cast<uint32_t>(x); }

template <class Pow, Accuracy accuracy, class E>
ORBA_INLINE void run_powx(int32_t n, const E* a, E b, E* y, const char* name) {
  using V = typename Pow::Vector;
  const auto run = [&]<class F>(F f) { run_kernel(n, Arrays<F>{.a = a, .y = y}, name, f); };
  switch (number_bits(b)) {
    case number_bits(E(0)):
    case number_bits(-E(0)):
      return run(PowxOne<V>{{b}});
    case number_bits(E(1)):
      return run(PowxIdentity<V>{{b}});
    case number_bits(E(2)):
      return run(PowxSquare<V>{{b}});
    case number_bits(E(3)):
      return run(PowxCube<V, accuracy>{{b}});
    case number_bits(E(0.5)):
      return run(PowxRoot<typename RootOf<V, accuracy>::Type, accuracy>{{b}});
    case number_bits(E(-1)):
      return run(PowxReciprocal<V, accuracy>{{b}});
    default:
      return run(PowxGeneral<Pow>{{b}});
  }
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

#define ORBA_POWX_KERNEL(t, suffix, accuracy, Pow)      \
  ORBA_KERNEL_ENTRY(1i_scalar_1o, t, Powx, suffix) {    \
    using namespace orba::ORBA_CLASS_NAMESPACE;         \
    run_powx<Pow, accuracy>(n, a, b, y, "v" #t "Powx"); \
  }

ORBA_POWX_KERNEL(d, HA, kHa, PowHa)
#if ORBA_CLASS == 5
ORBA_POWX_KERNEL(d, LA, kLa, PowLa)
#else
ORBA_SAME_KERNEL(1i_scalar_1o, d, Powx, LA, HA)
#endif
#if ORBA_CLASS >= 2
ORBA_POWX_KERNEL(d, EP, kEp, PowEp)
#else
ORBA_SAME_KERNEL(1i_scalar_1o, d, Powx, EP, HA)
#endif
ORBA_POWX_KERNEL(s, HA, kHa, PowSingle)
ORBA_SAME_KERNEL(1i_scalar_1o, s, Powx, LA, HA)
#if ORBA_CLASS >= 3
ORBA_POWX_KERNEL(s, EP, kEp, PowSingleEp)
#else
ORBA_SAME_KERNEL(1i_scalar_1o, s, Powx, EP, HA)
#endif
