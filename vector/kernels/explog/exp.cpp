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

template <class V, int rows, const auto& series>
struct ExpFull : ExpBase<V> {
  ORBA_INLINE static V eval(V x, typename V::Mask& flag) {
    flag = flag | exp_special(x);
    const ExpQuotient<V, rows> k(x);
    return exp_full<series>(k, k.rounded_remainder(x));
  }
};

// The series is that of (e^r - 1)/r.
template <class V, int rows, const auto& series>
struct ExpShort : ExpBase<V> {
  ORBA_INLINE static V eval(V x, typename V::Mask& flag) {
    flag = flag | exp_special(x);
    const ExpQuotient<V, rows> k(x);
    const V r = k.short_remainder(x);
    return k.times_power(k.row_head(), r * horner(r, series));
  }
};

// The result is normal, so its significand can take the exponent in one addition.
struct ExpNoTable : ExpBase<F32> {
  ORBA_INLINE static F32 eval(F32 x, M32& flag) {
    flag = flag | exp_special(x);
    const ExpQuotient<F32, 1> k(x);
    return k.power(horner(k.short_remainder(x), kExpNoTableSeriesF));
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
ORBA_KERNEL(1i_1o, d, Exp, HA, Exp<ExpFull<F64, 16, kExpm1Series16>>)
ORBA_KERNEL(1i_1o, d, Exp, LA, Exp<ExpFull<F64, 16, kExpSeries16>>)
ORBA_KERNEL(1i_1o, d, Exp, EP, Exp<ExpShort<F64, 16, kExpShortSeries16>>)
ORBA_KERNEL(1i_1o, s, Exp, HA, Exp<ExpFull<F32, 16, kExpSeries16F>>)
ORBA_KERNEL(1i_1o, s, Exp, EP, Exp<ExpShort<F32, 16, kExpShortSeries16F>>)
#elif ORBA_CLASS == 3
ORBA_KERNEL(1i_1o, d, Exp, HA, Exp<ExpFull<F64, 64, kExpSeries64>>)
ORBA_SAME_KERNEL(1i_1o, d, Exp, LA, HA)
ORBA_KERNEL(1i_1o, d, Exp, EP, Exp<ExpShort<F64, 64, kExpShortSeries64>>)
ORBA_KERNEL(1i_1o, s, Exp, HA, Exp<ExpFull<F32, 8, kExpSeries8F>>)
ORBA_KERNEL(1i_1o, s, Exp, EP, Exp<ExpNoTable>)
#elif ORBA_CLASS == 2
ORBA_KERNEL(1i_1o, d, Exp, HA, Exp<ExpFull<F64, 64, kExpSeries64>>)
ORBA_SAME_KERNEL(1i_1o, d, Exp, LA, HA)
ORBA_KERNEL(1i_1o, d, Exp, EP, Exp<ExpShort<F64, 64, kExpShortSeries64>>)
ORBA_KERNEL(1i_1o, s, Exp, HA, Exp<ExpFull<F32, 64, kExpSeries64F>>)
ORBA_KERNEL(1i_1o, s, Exp, EP, Exp<ExpNoTable>)
#else
// Class 0 in double precision has no path of its own for calls without error handling.
#  if ORBA_CLASS == 1
ORBA_KERNEL(1i_1o, d, Exp, HA, Exp<ExpFull<F64, 64, kExpSeries64>>)
#  else
ORBA_KERNEL(1i_1o, d, Exp, HA, ExpFull<F64, 64, kExpSeries64>)
#  endif
ORBA_SAME_KERNEL(1i_1o, d, Exp, LA, HA)
ORBA_SAME_KERNEL(1i_1o, d, Exp, EP, HA)
ORBA_KERNEL(1i_1o, s, Exp, HA, Exp<ExpFull<F32, 64, kExpSeries64F>>)
ORBA_SAME_KERNEL(1i_1o, s, Exp, EP, HA)
#endif
ORBA_SAME_KERNEL(1i_1o, s, Exp, LA, HA)
