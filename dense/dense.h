// The few dense linear algebra routines that the statistics layer needs, per processor class, so
// that results depend on the class alone and no BLAS is needed at run time.
//
// Names, operations and arguments are those of the BLAS: matrices are column-major with a leading
// dimension, `uplo` is 'u' or 'l' (which triangle of C is read and written), `trans` is 'n', 't' or
// 'c', either case. beta = 0 means that C is not read. Vectors are contiguous. Arguments are
// trusted; a size of 0 is fine.
//
// No routine allocates. Those that repack their operands take a workspace from the caller:
// `kWorkspaceBytes` on a 64-byte boundary, one per thread, contents without meaning between calls.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace orba::dense {

// Two packed blocks (dense/kernels/product.cpp).
inline constexpr size_t kWorkspaceBytes = 2 * 192 * 192 * sizeof(double);

// C := alpha x x^T + C, a triangle of the n x n matrix C.
template <class Real>
using Syr = void(char uplo, int64_t n, Real alpha, const Real* x, Real* c, int64_t ldc);

// C := alpha op(A) op(A)^T + beta C, a triangle of the n x n matrix C; op(A) is n x k: A for trans
// 'n', its transpose else.
template <class Real>
using Syrk = void(char uplo, char trans, int64_t n, int64_t k, Real alpha, const Real* a,
                  int64_t lda, Real beta, Real* c, int64_t ldc, void* workspace);

// C := alpha op(A) op(B) + beta C; C is m x n, op(A) is m x k, op(B) is k x n.
template <class Real>
using Gemm = void(char trans_a, char trans_b, int64_t m, int64_t n, int64_t k, Real alpha,
                  const Real* a, int64_t lda, const Real* b, int64_t ldb, Real beta, Real* c,
                  int64_t ldc, void* workspace);

struct DenseRoutines {
  Syr<double>* dsyr;
  Syr<float>* ssyr;
  Syrk<double>* dsyrk;
  Syrk<float>* ssyrk;
  Gemm<double>* dgemm;
  Gemm<float>* sgemm;
};

// Of a class of the statistics layer, 0 to 4.
const DenseRoutines& dense_routines(int statistics_class) noexcept;

}  // namespace orba::dense
