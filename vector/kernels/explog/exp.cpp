// Exp: e^a. KAM_STATUS_OVERFLOW above 709.78 (single precision: 88.72), KAM_STATUS_UNDERFLOW where
// the result is denormal or zero; infinities and NaN are not reported.
//
//   full      row of the table as head*(1 + tail), p = e^r - 1 + tail, head + head*p: the last
//             rounding, and from p with 16 rows about 2^-6 of that again
//   short     one-word reduction, no tail, a polynomial just good enough for half precision
//   no table  the polynomial alone, |r| <= ln2/2 (single precision only)
//
// class       0, 1      2                    3                    5
// double HA   full 64   full 64              full 64              full 16, degree 7
// double LA   as HA     as HA                as HA                full 16, degree 6
// double EP   as HA     short 64, degree 2   short 64, degree 2   short 16, degree 3
// single HA   full 64   full 64              full 8               full 16
// single LA   as HA     as HA                as HA                as HA
// single EP   as HA     no table, degree 3   no table, degree 3   short 16, degree 1
//
// Tables of 16 rows live in registers on class 5, those of 8 rows on class 3. LA keeps the tail:
// without it the rounding of a row and that of the result add up to a whole unit, and it costs one
// addition and one more look-up of the same row.
#include "vector/kernels/explog/exp_kernel.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Lanes for the callout: |x| above 707.703 on class 5, from 708.396 (by the high word) on the
// others, above 87.3365 in single precision; NaN too. The results of all other lanes are normal.
ORBA_INLINE M64 special(F64 x) {
  if constexpr (kClass == 5) return not_le(abs(x), F64(0x1.61da04cbafe44p9));
  return high_above(as_bits(abs(x)), 0x4086232a);
}
ORBA_INLINE M32 special(F32 x) { return as_bits(abs(x)) > I32(0x42aeac4f); }

// (e^r - 1 - r)/r^2. Error of e^r: below 2^-56 (16 rows) and 2^-59 (64 rows), in single precision
// 2^-31 (8 rows), 2^-29 (16 rows) and 2^-37 (64 rows).
template <int rows>
ORBA_INLINE F64 exp_series(F64 r, F64 r2) {
  if constexpr (rows == 16)
    return in_pairs(r, r2, 0x1.6c182626ab616p-10, 0x1.11123b32a6307p-7, 0x1.55555554bebcap-5,
                    0x1.555555548ee1cp-3, 0.5);
  else
    return in_pairs(r, r2, 0x1.111126bce841ap-7, 0x1.555573d5de153p-5, 0x1.55555555543b6p-3,
                    0x1.fffffffffdba9p-2);
}
template <int rows>
ORBA_INLINE F32 exp_series(F32 r, F32 r2) {
  if constexpr (rows == 8)
    return in_pairs(r, r2, 0x1.5343p-5f, 0x1.555c7ap-3f, 0x1.00000ep-1f);
  else if constexpr (rows == 16)
    return in_pairs(r, r2, 0x1.555764p-3f, 0x1.00022p-1f);
  else
    return in_pairs(r, r2, 0x1.555576p-3f, 0x1.000022p-1f);
}

// e^r - 1. Error below 2^-29 (16 rows) and 2^-27 (64 rows), in single precision 2^-12.
template <int rows>
ORBA_INLINE F64 short_expm1(F64 r) {
  if constexpr (rows == 16)
    return r * horner(r, 0x1.55583d10f745p-3, 0x1.00022086813ebp-1, 0x1.fffffff971a45p-1);
  else
    return r * horner(r, 0x1.00002914ab18ep-1, 0x1.00003d9b76892p0);
}
template <int rows>
ORBA_INLINE F32 short_expm1(F32 r) {
  static_assert(rows == 16);
  return r;
}

template <class V>
struct ExpBase {
  using Vector = V;
  using In = typename V::Element;
  using Out = In;
  using Flag = typename V::Mask;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = 4;

  static int32_t callout(const In* a, In* r) { return exp_callout(a, r); }
};

template <class V, int rows, V (*series)(V, V) = exp_series<rows>>
struct ExpFull : ExpBase<V> {
  ORBA_INLINE static V eval(V x, typename V::Mask& flag) {
    flag = flag | special(x);
    const Quotient<V, rows> k(x);
    const V r = k.rounded_remainder(x);
    const Pair<V> row = lookup(kExp2Pairs<V, rows>, k.bits());
    const V r2 = r * r;
    return k.times_power(row.hi, mul_add(r2, series(r, r2), row.lo) + r);
  }
};

template <class V, int rows>
struct ExpShort : ExpBase<V> {
  ORBA_INLINE static V eval(V x, typename V::Mask& flag) {
    flag = flag | special(x);
    const Quotient<V, rows> k(x);
    const V p = short_expm1<rows>(k.short_remainder(x));
    return k.times_power(lookup(kExp2Heads<V, rows>, k.bits()), p);
  }
};

// Error of the polynomial below 2^-13. The result is normal, so its significand can take the
// exponent in one addition.
struct ExpNoTable : ExpBase<F32> {
  ORBA_INLINE static F32 eval(F32 x, M32& flag) {
    flag = flag | special(x);
    const Quotient<F32, 1> k(x);
    const F32 r = k.short_remainder(x);
    return k.power(horner(r, 0x1.583fep-3f, 0x1.02227p-1f, 0x1.fff968p-1f, 1.0f));
  }
};

// Without error handling a plain overflow or underflow needs no callout: denormal results,
// infinities below zero and NaN still do.
template <class F>
struct ExpNoError : F {
  using V = typename F::Vector;
  using Bounds = ExpBounds<typename F::In>;
  ORBA_INLINE static V eval(V x, typename F::Flag& flag) {
    typename F::Flag beyond{};
    const V y = F::eval(x, beyond);
    const auto above = x > V(Bounds::overflow), below = x < V(Bounds::lowest);
    flag = flag | (beyond & ~(above | below));
    return select(above, V(static_cast<typename F::In>(__builtin_inf())), select(below, V(0), y));
  }
};

template <class F>
struct Exp : F {
  using NoError = ExpNoError<F>;
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

#if ORBA_CLASS == 5
ORBA_KERNEL(1i_1o, d, Exp, HA, Exp<ExpFull<F64, 16, expm1_series<16>>>)
ORBA_KERNEL(1i_1o, d, Exp, LA, Exp<ExpFull<F64, 16>>)
ORBA_KERNEL(1i_1o, d, Exp, EP, Exp<ExpShort<F64, 16>>)
ORBA_KERNEL(1i_1o, s, Exp, HA, Exp<ExpFull<F32, 16>>)
ORBA_KERNEL(1i_1o, s, Exp, EP, Exp<ExpShort<F32, 16>>)
#elif ORBA_CLASS == 3
ORBA_KERNEL(1i_1o, d, Exp, HA, Exp<ExpFull<F64, 64>>)
ORBA_SAME_KERNEL(1i_1o, d, Exp, LA, HA)
ORBA_KERNEL(1i_1o, d, Exp, EP, Exp<ExpShort<F64, 64>>)
ORBA_KERNEL(1i_1o, s, Exp, HA, Exp<ExpFull<F32, 8>>)
ORBA_KERNEL(1i_1o, s, Exp, EP, Exp<ExpNoTable>)
#elif ORBA_CLASS == 2
ORBA_KERNEL(1i_1o, d, Exp, HA, Exp<ExpFull<F64, 64>>)
ORBA_SAME_KERNEL(1i_1o, d, Exp, LA, HA)
ORBA_KERNEL(1i_1o, d, Exp, EP, Exp<ExpShort<F64, 64>>)
ORBA_KERNEL(1i_1o, s, Exp, HA, Exp<ExpFull<F32, 64>>)
ORBA_KERNEL(1i_1o, s, Exp, EP, Exp<ExpNoTable>)
#else
// Class 0 in double precision has no path of its own for calls without error handling.
#  if ORBA_CLASS == 1
ORBA_KERNEL(1i_1o, d, Exp, HA, Exp<ExpFull<F64, 64>>)
#  else
ORBA_KERNEL(1i_1o, d, Exp, HA, ExpFull<F64, 64>)
#  endif
ORBA_SAME_KERNEL(1i_1o, d, Exp, LA, HA)
ORBA_SAME_KERNEL(1i_1o, d, Exp, EP, HA)
ORBA_KERNEL(1i_1o, s, Exp, HA, Exp<ExpFull<F32, 64>>)
ORBA_SAME_KERNEL(1i_1o, s, Exp, EP, HA)
#endif
ORBA_SAME_KERNEL(1i_1o, s, Exp, LA, HA)
