// Sorting and selection of numbers.
//
// One total order serves all functions, types and classes: numbers ascending, -0 before +0, then
// all NaN, of which those with a clear sign bit come first and the others after them. No two bit
// patterns are equal in it, so the sorted array is one and the same on every class and by either
// method, to the last bit. Elements are moved as bits: a signalling NaN stays one, no
// floating-point flag is raised.
//
// `x` holds n >= 0 elements, `scratch` room for n more, both without any alignment beyond the
// element's; they must not overlap. What is left in `scratch` is of no use. Nothing is allocated.
#pragma once

#include <stdint.h>

#include "statistics/frame/dispatch.h"

namespace orba::statistics::summary {

// Ascending. n*log(n) steps, whatever the data.
template <class Element>
using Sort = void(Element* x, int64_t n, Element* scratch);

// Permutes x so that x[k] is what sorting would put there, for each k of the ascending list `ranks`
// (0 <= k < n, repetitions allowed). In between, elements lie on the right side of each such k and
// otherwise in no promised order. Never more steps than a sort, and few ranks take a few passes.
template <class Element>
using OrderStatisticsAt = void(Element* x, int64_t n, const int64_t* ranks, int64_t count,
                               Element* scratch);

ORBA_CLASS_KERNELS(ss_d_sort, Sort<double>);
ORBA_CLASS_KERNELS(ss_s_sort, Sort<float>);
// As `sort`, by least significant digits: a fixed number of passes. Classes 3 and 4 sort faster by
// `sort`, the others take this method inside `sort` where it is the faster one.
ORBA_CLASS_KERNELS(ss_d_radix_sort, Sort<double>);
ORBA_CLASS_KERNELS(ss_s_radix_sort, Sort<float>);
ORBA_CLASS_KERNELS(ss_d_order_statistics_at, OrderStatisticsAt<double>);
ORBA_CLASS_KERNELS(ss_s_order_statistics_at, OrderStatisticsAt<float>);

}  // namespace orba::statistics::summary
