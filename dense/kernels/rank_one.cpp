// DSYR and SSYR.
#include "dense/kernels/common.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class V, class Real = typename V::Element>
void add_rank_one(Region region, int64_t n, Real alpha, const Real* x, Real* c, int64_t ldc) {
  if (alpha == 0) return;
  for (int64_t j = 0; j < n; ++j) {
    const Rows rows = rows_of_column(region, j, 0, n);
    add_scaled<V>(rows.last - rows.first, alpha * x[j], x + rows.first, c + j * ldc + rows.first);
  }
}

}  // namespace

extern "C" void ORBA_DENSE_NAME(dsyr)(char uplo, int64_t n, double alpha, const double* x,
                                      double* c, int64_t ldc) {
  add_rank_one<F64>(triangle(uplo), n, alpha, x, c, ldc);
}
extern "C" void ORBA_DENSE_NAME(ssyr)(char uplo, int64_t n, float alpha, const float* x, float* c,
                                      int64_t ldc) {
  add_rank_one<F32>(triangle(uplo), n, alpha, x, c, ldc);
}

}  // namespace orba::ORBA_CLASS_NAMESPACE
