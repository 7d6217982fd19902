// Running extremes: NaN observations count for nothing.
#pragma once

#include <stdint.h>

#include "statistics/frame/dispatch.h"

namespace orba::statistics::summary {

// Lowers `lowest` and raises `highest` to what the n numbers of x hold.
template <class Real>
using ExtremesOfRow = void(const Real* x, int64_t n, Real* lowest, Real* highest);

// The same for each of the p columns of n rows.
template <class Real>
using ExtremesOfColumns = void(const Real* x, int64_t n, int64_t p, Real* lowest, Real* highest);

ORBA_CLASS_KERNELS(ss_d_extremes_of_row, ExtremesOfRow<double>);
ORBA_CLASS_KERNELS(ss_s_extremes_of_row, ExtremesOfRow<float>);
ORBA_CLASS_KERNELS(ss_d_extremes_of_columns, ExtremesOfColumns<double>);
ORBA_CLASS_KERNELS(ss_s_extremes_of_columns, ExtremesOfColumns<float>);

}  // namespace orba::statistics::summary
