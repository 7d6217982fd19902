// The steps of the moments driver that run per processor class, and the fold of a fork's parts.
#pragma once

#include <stdint.h>

#include "statistics/frame/dispatch.h"
#include "statistics/summary/moments_parts.h"

namespace orba::statistics::summary {

// Takes a block into all of the part but its product and weights.
template <class Real>
using AddBlock = void(const MomentsOrders& orders, const MomentsBlock<Real>& block,
                      const MomentsPart<Real>& part, const MomentsWork<Real>& work);

// Merges part b into all of part a but its product and weights; leaves the differences of means.
template <class Real>
using MergeMoments = void(const MomentsOrders& orders, int64_t p, const MomentsPart<Real>& a,
                          const MomentsPart<Real>& b, Real* difference);

// Copies a block, less `centre` (null for none), to `plain` and times the weights to `weighted`,
// where these aren't null. Copies lie as the block does, with p or `observations` as leading
// dimension.
template <class Real>
using CopyBlock = void(const MomentsBlock<Real>& block, const Real* centre, Real* plain,
                       Real* weighted);

// Sums of n weights and of their squares.
template <class Real>
using SumWeights = void(const Real* weights, int64_t n, Real* sum, Real* squares);

ORBA_CLASS_KERNELS(ss_d_add_block, AddBlock<double>);
ORBA_CLASS_KERNELS(ss_s_add_block, AddBlock<float>);
ORBA_CLASS_KERNELS(ss_d_merge_moments, MergeMoments<double>);
ORBA_CLASS_KERNELS(ss_s_merge_moments, MergeMoments<float>);
ORBA_CLASS_KERNELS(ss_d_copy_block, CopyBlock<double>);
ORBA_CLASS_KERNELS(ss_s_copy_block, CopyBlock<float>);
ORBA_CLASS_KERNELS(ss_d_sum_weights, SumWeights<double>);
ORBA_CLASS_KERNELS(ss_s_sum_weights, SumWeights<float>);

// Merges part b into part a, of p variables, with weights and product; a part without weight adds
// nothing. Room for p differences is the caller's.
template <class Real>
void merge_parts(int statistics_class, const MomentsOrders& orders, int64_t p, MomentsPart<Real>* a,
                 const MomentsPart<Real>& b, Real* difference) noexcept;

}  // namespace orba::statistics::summary
