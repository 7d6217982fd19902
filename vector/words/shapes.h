// Element types and kernel signatures by the names that the function table uses.
#pragma once

#include <stdint.h>

#include "include/orba_kam.h"

namespace orba::vector {

// Type letter of a function's name -> element type, and the real type that matches it.
struct Type_s {
  using Element = float;
  using Real = float;
};
struct Type_d {
  using Element = double;
  using Real = double;
};
struct Type_c {
  using Element = KamComplex8;
  using Real = float;
};
struct Type_z {
  using Element = KamComplex16;
  using Real = double;
};

// Kernel signatures. The count comes first, then arrays and scalars in the order of the export.
template <class T>
using Kernel_1i_1o = void(int32_t, const typename T::Element*, typename T::Element*);
template <class T>
using Kernel_2i_1o = void(int32_t, const typename T::Element*, const typename T::Element*,
                          typename T::Element*);
template <class T>
using Kernel_1i_2o = void(int32_t, const typename T::Element*, typename T::Element*,
                          typename T::Element*);
template <class T>
using Kernel_1i_scalar_1o = void(int32_t, const typename T::Element*, typename T::Element,
                                 typename T::Element*);
template <class T>
using Kernel_complex_to_real = void(int32_t, const typename T::Element*, typename T::Real*);
template <class T>
using Kernel_real_to_complex = void(int32_t, const typename T::Real*, typename T::Element*);
template <class T>
using Kernel_linear_fraction = void(int32_t, const typename T::Element*, const typename T::Element*,
                                    typename T::Element, typename T::Element, typename T::Element,
                                    typename T::Element, typename T::Element*);

}  // namespace orba::vector
