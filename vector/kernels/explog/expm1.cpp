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
ORBA_INLINE M64 expm1_special(F64 x) { return not_le(abs(x), F64(0x1.61da04cbafe43p9)); }
ORBA_INLINE M32 expm1_special(F32 x) { return as_bits(abs(x)) > I32(0x42ad496b); }

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

// The series is that of (e^r - 1 - r)/r^2.
template <class V, int rows, const auto& series>
struct Expm1Full : Expm1Base<V> {
  ORBA_INLINE static V eval(V x, typename V::Mask& flag) {
    flag = flag | expm1_special(x);
    const ExpQuotient<V, rows> k(x);
    const Pair<V> remainder = k.remainder(x);
    const V r1 = remainder.hi;
    const V r = r1 + remainder.lo;
    const V r2 = r * r;
    const Pair<V> row = k.row();
    const V scale = k.power(row.hi);
    const Pair<V> head = two_sum(scale, V(-1));
    const Pair<V> leading = fast_two_sum(head.hi, r1);
    const V small = mul_add(r2, in_pairs(r, r2, series), mul_add(row.lo, r, remainder.lo)) + row.lo;
    const V rest = mul_add(scale, small, mul_add(head.hi, r1, leading.lo)) + head.lo;
    return with_sign_of(x, leading.hi + rest);
  }
};

// The series is that of (e^r - 1)/r.
template <class V, int rows, const auto& series>
struct Expm1Short : Expm1Base<V> {
  ORBA_INLINE static V eval(V x, typename V::Mask& flag) {
    flag = flag | expm1_special(x);
    const ExpQuotient<V, rows> k(x);
    const V r = k.short_remainder(x);
    const V scale = k.power(k.row_head());
    return with_sign_of(x, mul_add(scale, r * horner(r, series), scale - V(1)));
  }
};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE

#if ORBA_CLASS == 5
ORBA_KERNEL(1i_1o, d, Expm1, HA, Expm1Full<F64, 16, kExpm1Series16>)
ORBA_KERNEL(1i_1o, d, Expm1, EP, Expm1Short<F64, 16, kExpm1ShortSeries16>)
ORBA_KERNEL(1i_1o, s, Expm1, HA, Expm1Full<F32, 16, kExpm1Series16F>)
ORBA_KERNEL(1i_1o, s, Expm1, EP, Expm1Short<F32, 16, kExpm1ShortSeries16F>)
#elif ORBA_CLASS == 3
ORBA_KERNEL(1i_1o, d, Expm1, HA, Expm1Full<F64, 64, kExpm1Series64>)
ORBA_KERNEL(1i_1o, d, Expm1, EP, Expm1Short<F64, 64, kExpm1ShortSeries64>)
ORBA_KERNEL(1i_1o, s, Expm1, HA, Expm1Full<F32, 16, kExpm1Series16F>)
ORBA_KERNEL(1i_1o, s, Expm1, EP, Expm1Short<F32, 8, kExpm1ShortSeries8F>)
#elif ORBA_CLASS == 2
ORBA_KERNEL(1i_1o, d, Expm1, HA, Expm1Full<F64, 64, kExpm1Series64>)
ORBA_KERNEL(1i_1o, d, Expm1, EP, Expm1Short<F64, 64, kExpm1ShortSeries64>)
ORBA_KERNEL(1i_1o, s, Expm1, HA, Expm1Full<F32, 64, kExpm1Series64F>)
ORBA_KERNEL(1i_1o, s, Expm1, EP, Expm1Short<F32, 64, kExpm1ShortSeries16F>)
#else
ORBA_KERNEL(1i_1o, d, Expm1, HA, Expm1Full<F64, 64, kExpm1Series64>)
ORBA_SAME_KERNEL(1i_1o, d, Expm1, EP, HA)
ORBA_KERNEL(1i_1o, s, Expm1, HA, Expm1Full<F32, 64, kExpm1Series64F>)
ORBA_SAME_KERNEL(1i_1o, s, Expm1, EP, HA)
#endif
ORBA_SAME_KERNEL(1i_1o, d, Expm1, LA, HA)
ORBA_SAME_KERNEL(1i_1o, s, Expm1, LA, HA)
