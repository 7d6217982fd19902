#include "dense/dense.h"

#include "services/processor_classes.h"

// The builds' routines are C functions with the build's name in front, orba_c0_dsyr ...
#define ORBA_DENSE_DECLARE(c)                  \
  orba::dense::Syr<double> orba_c##c##_dsyr;   \
  orba::dense::Syr<float> orba_c##c##_ssyr;    \
  orba::dense::Syrk<double> orba_c##c##_dsyrk; \
  orba::dense::Syrk<float> orba_c##c##_ssyrk;  \
  orba::dense::Gemm<double> orba_c##c##_dgemm; \
  orba::dense::Gemm<float> orba_c##c##_sgemm;
#define ORBA_DENSE_ROW(c)                                   \
  {orba_c##c##_dsyr,  orba_c##c##_ssyr,  orba_c##c##_dsyrk, \
   orba_c##c##_ssyrk, orba_c##c##_dgemm, orba_c##c##_sgemm},

extern "C" {
ORBA_BUILDS(ORBA_DENSE_DECLARE)
}

namespace orba::dense {

const DenseRoutines& dense_routines(int statistics_class) noexcept {
  static constexpr DenseRoutines routines[] = {ORBA_BUILDS(ORBA_DENSE_ROW)};
  return routines[statistics_class];
}

}  // namespace orba::dense
