// Sorting of few keys: at most `small_limit`.
//
// With vectors, keys fill the rows of a matrix, one vector a row. A network of exchanges between
// rows sorts every column (K. E. Batcher, Sorting networks and their applications, 1968); then
// neighbouring columns are merged to blocks of 2, 4, ... columns, each block in order row by row.
// The merges are bitonic. Key i of one run meets key i from the end of the other, which is the
// mirrored lane of the mirrored row; rows stay mirrored after an exchange, so that the partners of
// the next one are mirrored again.
#pragma once

#include "statistics/summary/kernels/sort_lanes.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

#if ORBA_CLASS >= 3

template <class Element>
constexpr int small_limit = KeyLanes<Element>::rows* KeyLanes<Element>::lanes;

template <class L>
using Rows = typename L::Vector*;

// Batcher's merge of the two sorted halves of rows from, from + step, ... below from + span.
template <class L, int from, int span, int step>
ORBA_INLINE void merge_rows(Rows<L> v) {
  if constexpr (2 * step < span) {
    merge_rows<L, from, span, 2 * step>(v);
    merge_rows<L, from + step, span, 2 * step>(v);
    ORBA_UNROLL
    for (int r = from + step; r + step < from + span; r += 2 * step) L::sort_two(v[r], v[r + step]);
  } else {
    L::sort_two(v[from], v[from + step]);
  }
}
template <class L, int from, int span>
ORBA_INLINE void sort_columns(Rows<L> v) {
  if constexpr (span > 1) {
    sort_columns<L, from, span / 2>(v);
    sort_columns<L, from + span / 2, span / 2>(v);
    merge_rows<L, from, span, 1>(v);
  }
}

// Sorts the blocks of `width` lanes of one row. They are bitonic, at first with the second half in
// reverse order.
template <class L, int width, bool reversed>
ORBA_INLINE void merge_lanes(typename L::Vector& v) {
  if constexpr (width > 1) {
    typename L::Vector low = v, high;
    if constexpr (reversed)
      high = L::template mirror<width>(v);
    else
      high = L::template swap_halves<width>(v);
    L::sort_two(low, high);
    v = L::template join_halves<width>(low, high);
    merge_lanes<L, width / 2, false>(v);
  }
}

// Sorts the bitonic blocks of rows from ... from + span - 1 and `width` lanes.
template <class L, int from, int span, int width>
ORBA_INLINE void merge_block(Rows<L> v) {
  if constexpr (span > 1) {
    ORBA_UNROLL
    for (int r = 0; r < span / 2; ++r) {
      auto& partner = v[from + span - 1 - r];
      partner = L::template mirror<width>(partner);
      L::sort_two(v[from + r], partner);
    }
    merge_block<L, from, span / 2, width>(v);
    merge_block<L, from + span / 2, span / 2, width>(v);
  } else {
    merge_lanes<L, width, true>(v[from]);
  }
}
template <class L, int rows, int width>
ORBA_INLINE void merge_columns(Rows<L> v) {
  if constexpr (width <= L::lanes) {
    merge_block<L, 0, rows, width>(v);
    merge_columns<L, rows, 2 * width>(v);
  }
}

// rows*lanes/2 < n <= rows*lanes, or rows = 1.
template <class Element, int rows>
void sort_matrix(Key<Element>* x, int n) {
  using L = KeyLanes<Element>;
  typename L::Vector v[rows];
  constexpr int full = rows / 2;
  ORBA_UNROLL
  for (int r = 0; r < full; ++r) v[r] = L::load(x + r * L::lanes);
  ORBA_UNROLL
  for (int r = full; r < rows; ++r) {
    v[r] = L::load_partial(x + r * L::lanes, n - r * L::lanes, L::all(KeyOf<Element>::highest));
  }
  sort_columns<L, 0, rows>(v);
  merge_columns<L, rows, 2>(v);
  ORBA_UNROLL
  for (int r = 0; r < full; ++r) L::store(x + r * L::lanes, v[r]);
  ORBA_UNROLL
  for (int r = full; r < rows; ++r) L::store_partial(x + r * L::lanes, n - r * L::lanes, v[r]);
}

template <class Element, int rows = 1>
ORBA_INLINE void sort_small(Key<Element>* x, int n) {
  if constexpr (rows < KeyLanes<Element>::rows) {
    if (n > rows * KeyLanes<Element>::lanes) return sort_small<Element, 2 * rows>(x, n);
  }
  sort_matrix<Element, rows>(x, n);
}

#else

template <class Element>
constexpr int small_limit = 24;

// By insertion.
template <class Element>
void sort_small(Key<Element>* x, int n) {
  for (int i = 1; i < n; ++i) {
    const Key<Element> key = x[i];
    int at = i;
    for (; at > 0 && key < x[at - 1]; --at) x[at] = x[at - 1];
    x[at] = key;
  }
}

#endif

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
