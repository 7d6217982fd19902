// What the routines share: arguments, triangles, updates of a column.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "vector/kernels/simd/simd.h"

#define ORBA_DENSE_NAME_(class_name, routine) orba_##class_name##_##routine
#define ORBA_DENSE_NAME_EXPANDED(class_name, routine) ORBA_DENSE_NAME_(class_name, routine)
#define ORBA_DENSE_NAME(routine) ORBA_DENSE_NAME_EXPANDED(ORBA_CLASS_NAMESPACE, routine)

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

ORBA_INLINE int64_t smaller(int64_t a, int64_t b) { return a < b ? a : b; }
ORBA_INLINE int64_t larger(int64_t a, int64_t b) { return a > b ? a : b; }

ORBA_INLINE bool is_letter(char given, char lower) { return (given | 0x20) == lower; }

// The part of a matrix that a routine works on.
enum class Region { whole, upper, lower };
ORBA_INLINE Region triangle(char uplo) {
  return is_letter(uplo, 'u') ? Region::upper : Region::lower;
}

// Rows [first, last) of column j of a region in the matrix whose rows are counted from row `top`
// on and that has `rows` of them.
struct Rows {
  int64_t first, last;
};
ORBA_INLINE Rows rows_of_column(Region region, int64_t j, int64_t top, int64_t rows) {
  const int64_t diagonal = j - top;
  return {region == Region::lower ? larger(diagonal, 0) : 0,
          region == Region::upper ? smaller(diagonal + 1, rows) : rows};
}

// y := alpha x + y.
template <class V>
ORBA_INLINE void add_scaled(int64_t n, typename V::Element alpha, const typename V::Element* x,
                            typename V::Element* y) {
  int64_t i = 0;
  for (; i + V::lanes <= n; i += V::lanes) {
    store(y + i, mul_add(V(alpha), load(x + i), load(y + i)));
  }
  if (i < n) {
    const int live = static_cast<int>(n - i);
    store_partial(y + i, live,
                  mul_add(V(alpha), load_partial(x + i, live, 0), load_partial(y + i, live, 0)));
  }
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
