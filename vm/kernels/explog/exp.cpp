#include "vm/kernels/explog/exp_kernel.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Beyond these bounds the callout takes over: 707.703 on class 5, 708.396 (by the high word) on the
// others, 87.3365 in single precision; NaN lies beyond all of them.
ORBA_INLINE M64 special(F64 x) {
  if constexpr (kClass == 5) return not_le(abs(x), F64(707.70327135170419));
  return high_above(as_bits(abs(x)), 0x4086232a);
}
ORBA_INLINE M32 special(F32 x) { return as_bits(abs(x)) > I32(0x42aeac4f); }

template <class V>
struct ExpBase {
  using In = typename V::Element;
  using Out = In;
  using Flag = typename V::Mask;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = 4;
  static int32_t callout(const In* a, In* r) { return exp_callout(a, r); }
};

template <int rows, int v>
ORBA_INLINE F64 exp_series(F64 r) {
  if constexpr (rows == 16) {
    if constexpr (v == 0) return expm1_series<16>(r);
    return polynomial(r, 0x1.6c182626ab616p-10, 0x1.11123b32a6307p-7, 0x1.55555554bebcap-5,
                      0x1.555555548ee1cp-3, 0.5);
  } else {
    return polynomial(r, 0x1.111126bce841ap-7, 0x1.555573d5de153p-5, 0x1.55555555543b6p-3,
                      0x1.fffffffffdba9p-2);
  }
}
template <int rows, int v>
ORBA_INLINE F32 exp_series(F32 r) {
  if constexpr (rows == 16)
    return polynomial(r, 0x1.555764p-3f, 0x1.00022p-1f);
  else if constexpr (rows == 8)
    return polynomial(r, 0x1.5343p-5f, 0x1.555c7ap-3f, 0x1.00000ep-1f);
  else
    return polynomial(r, 0x1.555576p-3f, 0x1.000022p-1f);
}

template <class V, int rows, int v = 0>
struct ExpFull : ExpBase<V> {
  ORBA_INLINE static V eval(V x, typename V::Mask& flag) {
    flag = flag | special(x);
    const Quotient<V, rows> k(x);
    const Pair<V> d = k.remainder(x);
    const V r = d.hi + d.lo;
    const auto row = lookup(kExp2Pairs<V, rows>, k.bits());
    const V p = mul_add(r * r, exp_series<rows, v>(r), row.lo) + r;
    return k.times_power(row.hi, p);
  }
};
template <class V, int rows>
struct ExpHead : ExpBase<V> {
  ORBA_INLINE static V eval(V x, typename V::Mask& flag) {
    flag = flag | special(x);
    const Quotient<V, rows> k(x);
    const Pair<V> d = k.remainder(x);
    const V r = d.hi + d.lo;
    const V p = mul_add(r * r, exp_series<rows, 1>(r), r);
    return k.times_power(lookup(kExp2Heads<V, rows>, k.bits()), p);
  }
};
struct ExpNoTable : ExpBase<F32> {
  ORBA_INLINE static F32 eval(F32 x, M32& flag) {
    flag = flag | special(x);
    const Quotient<F32, 1> k(x);
    const Pair<F32> d = k.remainder(x);
    const F32 r = d.hi + d.lo;
    const F32 y = polynomial(r, 0x1.6d5858p-10f,0x1.123e4cp-7f,0x1.5554dep-5f, 0x1.55548ap-3f,0.5f,1.0f,1.0f);
    return k.power(y);
  }
};

template <class V, int rows>
struct ExpEp : ExpBase<V> {
  ORBA_INLINE static V eval(V x, typename V::Mask& flag) {
    flag = flag | special(x);
    const Quotient<V, rows> k(x);
    const V r = k.short_remainder(x);
    return k.times_power(lookup(kExp2Heads<V, rows>, k.bits()), series(r));
  }

 private:
  ORBA_INLINE static F64 series(F64 r) {
    if constexpr (rows == 16)
      return r * polynomial(r, 0x1.55583d10f745p-3, 0x1.00022086813ebp-1, 0x1.fffffff971a45p-1);
    else
      return r * polynomial(r, 0x1.00002914ab18ep-1, 0x1.00003d9b76892p0);
  }
  ORBA_INLINE static F32 series(F32 r) { return r; }
};
struct ExpEpNoTable : ExpBase<F32> {
  ORBA_INLINE static F32 eval(F32 x, M32& flag) {
    flag = flag | special(x);
    const Quotient<F32, 1> k(x);
    const F32 r = k.short_remainder(x);
    return k.power(polynomial(r, 0x1.583fep-3f, 0x1.02227p-1f, 0x1.fff968p-1f, 1.0f));
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
#if ORBA_CLASS==5
ORBA_KERNEL_1i_1o(d, Exp, HA, ExpFull<F64,16>)
ORBA_KERNEL_1i_1o(d, Exp, LA, ExpFull<F64,16,1>)
ORBA_KERNEL_1i_1o(d, Exp, EP, ExpEp<F64,16>)
ORBA_KERNEL_1i_1o(s, Exp, HA, ExpFull<F32,16>)
ORBA_KERNEL_1i_1o(s, Exp, LA, ExpHead<F32,16>)
ORBA_KERNEL_1i_1o(s, Exp, EP, ExpEp<F32,16>)
ORBA_KERNEL_1i_1o(d, ExpH, LA, ExpHead<F64,16>)
#elif ORBA_CLASS==3
ORBA_KERNEL_1i_1o(d, Exp, HA, ExpFull<F64,64>)
ORBA_KERNEL_1i_1o(d, Exp, LA, ExpHead<F64,64>)
ORBA_KERNEL_1i_1o(d, Exp, EP, ExpEp<F64,64>)
ORBA_KERNEL_1i_1o(s, Exp, HA, ExpFull<F32,8>)
ORBA_KERNEL_1i_1o(s, Exp, LA, ExpNoTable)
ORBA_KERNEL_1i_1o(s, Exp, EP, ExpEpNoTable)
#else
ORBA_KERNEL_1i_1o(d, Exp, HA, ExpFull<F64,64>)
ORBA_KERNEL_1i_1o(d, Exp, LA, ExpFull<F64,64>)
ORBA_KERNEL_1i_1o(d, Exp, EP, ExpEp<F64,64>)
ORBA_KERNEL_1i_1o(s, Exp, HA, ExpFull<F32,64>)
ORBA_KERNEL_1i_1o(s, Exp, LA, ExpFull<F32,64>)
ORBA_KERNEL_1i_1o(s, Exp, EP, ExpEpNoTable)
#endif
