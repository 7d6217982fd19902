#include "dense/dense.h"

// The builds' routines are C functions with the build's name in front, orba_c0_dsyr ...
#define ORBA_DENSE_DECLARE(c)                 \
  orba::dense::Syr<double> orba_##c##_dsyr;   \
  orba::dense::Syr<float> orba_##c##_ssyr;    \
  orba::dense::Syrk<double> orba_##c##_dsyrk; \
  orba::dense::Syrk<float> orba_##c##_ssyrk;  \
  orba::dense::Gemm<double> orba_##c##_dgemm; \
  orba::dense::Gemm<float> orba_##c##_sgemm;
#define ORBA_DENSE_ROW(c)                                                                   \
  {                                                                                         \
    orba_##c##_dsyr, orba_##c##_ssyr, orba_##c##_dsyrk, orba_##c##_ssyrk, orba_##c##_dgemm, \
        orba_##c##_sgemm                                                                    \
  }

extern "C" {
ORBA_DENSE_DECLARE(c0)
ORBA_DENSE_DECLARE(c1)
ORBA_DENSE_DECLARE(c2)
ORBA_DENSE_DECLARE(c3)
ORBA_DENSE_DECLARE(c5)
}

namespace orba::dense {

const DenseRoutines& dense_routines(int statistics_class) noexcept {
  static constexpr DenseRoutines routines[] = {ORBA_DENSE_ROW(c0), ORBA_DENSE_ROW(c1),
                                               ORBA_DENSE_ROW(c2), ORBA_DENSE_ROW(c3),
                                               ORBA_DENSE_ROW(c5)};
  return routines[statistics_class];
}

}  // namespace orba::dense
