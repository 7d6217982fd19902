// Element types and the shapes of vector functions: the one list of signatures, from which exports,
// kernels, threaders, prototypes and tests take their parameters.
#pragma once

#include <stdint.h>

#include "include/orba_kam.h"

namespace orba::vector {

// Type letter of a function's name -> element type, and the real type that matches it. Index is the
// type of increments, masks and indices.
struct Type_s {
  using Element = float;
  using Real = float;
  using Index = int32_t;
};
struct Type_d {
  using Element = double;
  using Real = double;
  using Index = int32_t;
};
struct Type_c {
  using Element = KamComplex8;
  using Real = float;
  using Index = int32_t;
};
struct Type_z {
  using Element = KamComplex16;
  using Real = double;
  using Index = int32_t;
};

}  // namespace orba::vector

// A shape lists what follows the count, in the order of the signature: P(t, kind, type, name) with
// kind `in` or `out` for an array and `scalar` for one value. What goes over threads has threaders in
// vector/frame/threaders.def. tools/function_table.py reads these definitions too.
// clang-format off
#define ORBA_SHAPE_1i_1o(P, t) P(t, in, Element, a) P(t, out, Element, y)
#define ORBA_SHAPE_2i_1o(P, t) P(t, in, Element, a) P(t, in, Element, b) P(t, out, Element, y)
#define ORBA_SHAPE_1i_2o(P, t) P(t, in, Element, a) P(t, out, Element, y) P(t, out, Element, z)
#define ORBA_SHAPE_1i_scalar_1o(P, t) P(t, in, Element, a) P(t, scalar, Element, b) P(t, out, Element, y)
#define ORBA_SHAPE_complex_to_real(P, t) P(t, in, Element, a) P(t, out, Real, y)
#define ORBA_SHAPE_real_to_complex(P, t) P(t, in, Real, a) P(t, out, Element, y)
#define ORBA_SHAPE_linear_fraction(P, t) \
  P(t, in, Element, a) P(t, in, Element, b) P(t, scalar, Element, scalea) P(t, scalar, Element, shifta) \
  P(t, scalar, Element, scaleb) P(t, scalar, Element, shiftb) P(t, out, Element, y)
#define ORBA_SHAPE_pack_increment(P, t) P(t, in, Element, a) P(t, scalar, Index, inca) P(t, out, Element, y)
#define ORBA_SHAPE_pack_mask(P, t) P(t, in, Element, a) P(t, in, Index, ma) P(t, out, Element, y)
#define ORBA_SHAPE_pack_index(P, t) P(t, in, Element, a) P(t, in, Index, ia) P(t, out, Element, y)
#define ORBA_SHAPE_unpack_increment(P, t) P(t, in, Element, a) P(t, out, Element, y) P(t, scalar, Index, incy)
#define ORBA_SHAPE_unpack_mask(P, t) P(t, in, Element, a) P(t, out, Element, y) P(t, in, Index, my)
#define ORBA_SHAPE_unpack_index(P, t) P(t, in, Element, a) P(t, out, Element, y) P(t, in, Index, iy)
// clang-format on

// A shape's lists. Each item begins with a comma, since the count stands before it.
//   ORBA_PARAMETERS     , const double* a, double b, double* y
//   ORBA_ARGUMENTS      , a, b, y
//   ..._BY_ADDRESS      with scalars by address: , const double* b   and   , *b
//   ORBA_STRIDED_...    an increment after every array: , const double* a, int32_t inca ...
#define ORBA_PARAMETERS(shape, t) ORBA_SHAPE_##shape(ORBA_PARAMETER_, t)
#define ORBA_ARGUMENTS(shape, t) ORBA_SHAPE_##shape(ORBA_ARGUMENT_, t)
#define ORBA_PARAMETERS_BY_ADDRESS(shape, t) ORBA_SHAPE_##shape(ORBA_PARAMETER_BY_ADDRESS_, t)
#define ORBA_ARGUMENTS_BY_ADDRESS(shape, t) ORBA_SHAPE_##shape(ORBA_ARGUMENT_BY_ADDRESS_, t)
#define ORBA_STRIDED_PARAMETERS(shape, t) ORBA_SHAPE_##shape(ORBA_STRIDED_PARAMETER_, t)
#define ORBA_STRIDED_ARGUMENTS(shape, t) ORBA_SHAPE_##shape(ORBA_STRIDED_ARGUMENT_, t)
// The type of a function with such parameters.
#define ORBA_SIGNATURE(shape, t) void(int32_t ORBA_PARAMETERS(shape, t))
#define ORBA_STRIDED_SIGNATURE(shape, t) void(int32_t ORBA_STRIDED_PARAMETERS(shape, t))

#define ORBA_KIND_in_(...) const __VA_ARGS__*
#define ORBA_KIND_out_(...) __VA_ARGS__*
#define ORBA_KIND_scalar_(...) __VA_ARGS__
#define ORBA_PARAMETER_(t, kind, type, name) \
  , ORBA_KIND_##kind##_(::orba::vector::Type_##t::type) name
#define ORBA_ARGUMENT_(t, kind, type, name) , name

#define ORBA_BY_ADDRESS_in_(...) const __VA_ARGS__*
#define ORBA_BY_ADDRESS_out_(...) __VA_ARGS__*
#define ORBA_BY_ADDRESS_scalar_(...) const __VA_ARGS__*
#define ORBA_PARAMETER_BY_ADDRESS_(t, kind, type, name) \
  , ORBA_BY_ADDRESS_##kind##_(::orba::vector::Type_##t::type) name
#define ORBA_VALUE_in_
#define ORBA_VALUE_out_
#define ORBA_VALUE_scalar_ *
#define ORBA_ARGUMENT_BY_ADDRESS_(t, kind, type, name) , ORBA_VALUE_##kind##_ name

#define ORBA_INCREMENT_in_(...) , __VA_ARGS__
#define ORBA_INCREMENT_out_(...) , __VA_ARGS__
#define ORBA_INCREMENT_scalar_(...)
#define ORBA_STRIDED_PARAMETER_(t, kind, type, name) \
  ORBA_PARAMETER_(t, kind, type, name) ORBA_INCREMENT_##kind##_(int32_t inc##name)
#define ORBA_STRIDED_ARGUMENT_(t, kind, type, name) , name ORBA_INCREMENT_##kind##_(inc##name)
