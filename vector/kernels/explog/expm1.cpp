// Expm1: e^a - 1. KAM_STATUS_OVERFLOW above 709.78 (single precision: 88.72).
//
//   full    With 2^(k/rows) = S*(1 + tail), S the row's head scaled, and r = r1 + r2, r1 the exact
//   part:
//
//             e^x - 1 = (S - 1) + r1 + (S - 1)*r1 + S*(e^r - 1 - r1 + tail*e^r)
//
//           S - 1 and its sum with r1 are exact pairs. In row 0 of 2^0 they are 0 and x itself;
//           next to it S - 1 is twice as large as r1 at least, so that nothing but the last
//           rounding touches the leading terms, and the others are smaller than the result by about
//           3/rows.
//   short   S*(e^r - 1) + (S - 1), the polynomial relatively good to half precision
//
// class       0, 1      2          3          5
// double HA   full 64   full 64    full 64    full 16
// double LA   as HA     as HA      as HA      as HA
// double EP   as HA     short 64   short 64   short 16
// single HA   full 64   full 64    full 16    full 16
// single LA   as HA     as HA      as HA      as HA
// single EP   as HA     short 64   short 8    short 16
#include "vector/kernels/explog/exp_kernel.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Lanes for the callout: |x| above 707.703 (single precision: 86.6434), NaN too.
ORBA_INLINE M64 special(F64 x) { return not_le(abs(x), F64(0x1.61da04cbafe43p9)); }
ORBA_INLINE M32 special(F32 x) { return as_bits(abs(x)) > I32(0x42ad496b); }

// (e^r - 1)/r. Relative error below 2^-32 (16 rows) and 2^-29 (64 rows), in single precision 2^-14
// (16 rows and more) and 2^-12 (8 rows).
template <int rows>
ORBA_INLINE F64 short_series(F64 r) {
  if constexpr (rows == 16)
    return horner(r, 0x1.555555552965bp-5, 0x1.5557632a4d4bbp-3, 0x1.00000001a5e7cp-1,
                  0x1.fffffffe05bb2p-1);
  else
    return horner(r, 0x1.555555554a854p-3, 0x1.00001ecf7e10dp-1, 0x1.0000000002f77p0);
}
template <int rows>
ORBA_INLINE F32 short_series(F32 r) {
  if constexpr (rows == 8)
    return horner(r, 0x1.fffffcp-2f, 0x1.000a44p0f);
  else
    return horner(r, 0x1.000002p-1f, 0x1.000292p0f);
}

// The result has the argument's sign, at -0 too.
template <class V>
ORBA_INLINE V with_sign_of(V x, V y) {
  return as_float(as_bits(y) | (as_bits(x) & as_bits(negate(V(0)))));
}

template <class V>
struct Expm1Base {
  using In = typename V::Element;
  using Out = In;
  using Flag = typename V::Mask;
  static constexpr int inputs = 1;
  static constexpr int outputs = 1;
  static constexpr int unroll = 4;

  // At the arguments that get here the 1 is far below the last place of e^x, or e^x far below that
  // of 1.
  static int32_t callout(const In* a, In* r) {
    if (*a < 0) {
      *r = -1;
      return kOk;
    }
    return exp_callout(a, r);
  }
};

template <class V, int rows>
struct Expm1Full : Expm1Base<V> {
  ORBA_INLINE static V eval(V x, typename V::Mask& flag) {
    flag = flag | special(x);
    const Quotient<V, rows> k(x);
    const Pair<V> remainder = k.remainder(x);
    const V r1 = remainder.hi;
    const V r = r1 + remainder.lo;
    const V r2 = r * r;
    const Pair<V> row = lookup(kExp2Pairs<V, rows>, k.bits());
    const V scale = k.power(row.hi);
    const Pair<V> head = two_sum(scale, V(-1));
    const Pair<V> leading = fast_two_sum(head.hi, r1);
    const V small =
        mul_add(r2, expm1_series<rows>(r, r2), mul_add(row.lo, r, remainder.lo)) + row.lo;
    const V rest = mul_add(scale, small, mul_add(head.hi, r1, leading.lo)) + head.lo;
    return with_sign_of(x, leading.hi + rest);
  }
};

template <class V, int rows>
struct Expm1Short : Expm1Base<V> {
  ORBA_INLINE static V eval(V x, typename V::Mask& flag) {
    flag = flag | special(x);
    const Quotient<V, rows> k(x);
    const V r = k.short_remainder(x);
    const V scale = k.power(lookup(kExp2Heads<V, rows>, k.bits()));
    return with_sign_of(x, mul_add(scale, r * short_series<rows>(r), scale - V(1)));
  }
};

// Rows of the tables.
constexpr int kRows64 = kClass == 5 ? 16 : 64;
constexpr int kRows32 = kClass >= 3 ? 16 : 64;
constexpr int kRowsShort32 = kClass == 3 ? 8 : kRows32;

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

ORBA_KERNEL(1i_1o, d, Expm1, HA, Expm1Full<F64, kRows64>)
ORBA_SAME_KERNEL(1i_1o, d, Expm1, LA, HA)
ORBA_KERNEL(1i_1o, s, Expm1, HA, Expm1Full<F32, kRows32>)
ORBA_SAME_KERNEL(1i_1o, s, Expm1, LA, HA)
#if ORBA_CLASS >= 2
ORBA_KERNEL(1i_1o, d, Expm1, EP, Expm1Short<F64, kRows64>)
ORBA_KERNEL(1i_1o, s, Expm1, EP, Expm1Short<F32, kRowsShort32>)
#else
ORBA_SAME_KERNEL(1i_1o, d, Expm1, EP, HA)
ORBA_SAME_KERNEL(1i_1o, s, Expm1, EP, HA)
#endif
