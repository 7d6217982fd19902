// Floating-point numbers as integers of the same order.
//
// Bits of a number as a signed integer are in order once the magnitude bits of negative numbers are
// turned over. That would put NaN with a set sign bit, such as the default NaN of x86, below
// everything; lowering all keys by their count, with wrap-around, moves them to the top end.
#pragma once

#include <stdint.h>

#include "vector/kernels/simd/simd.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class Element>
struct KeyOf;
template <>
struct KeyOf<double> {
  typedef int64_t Key __attribute__((may_alias));
  typedef uint64_t Bits __attribute__((may_alias));
  static constexpr int64_t lowest = INT64_MIN, highest = INT64_MAX;
  static constexpr uint64_t negative_nans = (uint64_t{1} << 52) - 1;
};
template <>
struct KeyOf<float> {
  typedef int32_t Key __attribute__((may_alias));
  typedef uint32_t Bits __attribute__((may_alias));
  static constexpr int32_t lowest = INT32_MIN, highest = INT32_MAX;
  static constexpr uint32_t negative_nans = (uint32_t{1} << 23) - 1;
};

template <class Element>
using Key = typename KeyOf<Element>::Key;
template <class Element>
using KeyBits = typename KeyOf<Element>::Bits;

// Turns over the magnitude bits of negative numbers; its own inverse.
template <class Element>
ORBA_INLINE KeyBits<Element> turn_negative(KeyBits<Element> a) {
  const Key<Element> sign =
      static_cast<Key<Element>>(a) >> static_cast<int>(8 * sizeof(Element) - 1);
  return a ^ (static_cast<KeyBits<Element>>(sign) >> 1);
}

template <class Element>
void to_keys(Element* x, int64_t n) {
  auto* bits = reinterpret_cast<KeyBits<Element>*>(x);
  for (int64_t i = 0; i < n; ++i)
    bits[i] = turn_negative<Element>(bits[i]) - KeyOf<Element>::negative_nans;
}

template <class Element>
void from_keys(Element* x, int64_t n) {
  auto* bits = reinterpret_cast<KeyBits<Element>*>(x);
  for (int64_t i = 0; i < n; ++i)
    bits[i] = turn_negative<Element>(bits[i] + KeyOf<Element>::negative_nans);
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
