// Table look-up, one interface on every class: lookup(table, index) for
//
//   Table<E, rows>        constants of a class, rows of one number            a vector
//   PairTable<E, rows>    the same, rows of a head and a tail                 a Pair of vectors
//   E[rows]               data of the library (vector/tables/tables.h)        a vector
//   E[rows][2]            the same in pairs                                   a Pair of vectors
//   E[rows][4], [8]       the same, rows of a polynomial or an expansion      a Row of vectors
//
// With a power of two of rows the index counts modulo that number, so the bits of a shifted sum
// serve as they are; with any other number of rows the index has to lie in the table.
//
// Small tables live in registers: on class 5 up to 32 rows, on class 3 up to 16 rows of floats, and two
// rows of either type. Others are read from memory, on classes 0 to 3 by scalar loads: no slower than a gather
// instruction, and a pair then costs little more than a single number. Rows of several numbers are
// read as they stand and transposed: on classes 0 to 3 two numbers at a time, on class 5 four. Rows
// of plain data start at a multiple of 16 bytes, those of four numbers and more at one of 32 (float:
// 16).
#pragma once

#include "vector/kernels/simd/pair_arithmetic.h"
#include "vector/kernels/simd/simd.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

template <class E, int rows>
struct Table {
  static constexpr bool in_registers =
      kClass == 5 ? rows <= 32 : kClass == 3 && (rows == 2 || (sizeof(E) == 4 && rows <= 16));
  alignas(64) E row[rows];
};

// Rows are given in pairs and kept as the class reads them best.
template <class E, int rows>
struct PairTable {
  static constexpr bool in_registers = Table<E, rows>::in_registers;
  alignas(64) E data[2 * rows];
  constexpr PairTable(const E (&pairs)[rows][2]) : data{} {
    for (int i = 0; i < rows; ++i) {
      data[in_registers ? i : 2 * i] = pairs[i][0];
      data[in_registers ? rows + i : 2 * i + 1] = pairs[i][1];
    }
  }
};

template <class V, int width>
struct Row {
  V word[width];
};

#if ORBA_CLASS == 5

// Two rows over and over: permutations within 128 bits, which go by the second bit of a 64-bit control,
// the two lowest ones of a 32-bit control.
ORBA_INLINE F64 alternating(double a, double b) { return _mm512_setr4_pd(a, b, a, b); }
ORBA_INLINE F32 alternating(float a, float b) { return _mm512_setr4_ps(a, b, a, b); }

template <int rows>
ORBA_INLINE F64 lookup_in_registers(const double* row, I64 index) {
  static_assert(rows == 2 || rows == 8 || rows == 16 || rows == 32);
  if constexpr (rows == 2) {
    return _mm512_maskz_permutevar_pd(0xff, alternating(row[0], row[1]).v, shl<1>(index).v);
  } else if constexpr (rows == 8) {
    return _mm512_maskz_permutexvar_pd(0xff, index.v, _mm512_load_pd(row));
  } else if constexpr (rows == 16) {
    return _mm512_permutex2var_pd(_mm512_load_pd(row), index.v, _mm512_load_pd(row + 8));
  } else {
    const M64 upper = {_mm512_test_epi64_mask(index.v, _mm512_set1_epi64(16))};
    return select(upper, lookup_in_registers<16>(row + 16, index),
                  lookup_in_registers<16>(row, index));
  }
}
template <int rows>
ORBA_INLINE F32 lookup_in_registers(const float* row, I32 index) {
  static_assert(rows == 2 || rows == 16 || rows == 32);
  if constexpr (rows == 2)
    return _mm512_maskz_permutevar_ps(0xffff, alternating(row[0], row[1]).v, index.v);
  else if constexpr (rows == 16)
    return _mm512_maskz_permutexvar_ps(0xffff, index.v, _mm512_load_ps(row));
  else
    return _mm512_permutex2var_ps(_mm512_load_ps(row), index.v, _mm512_load_ps(row + 16));
}

// Masked forms, here and above, have a defined source operand: no false dependence of gathers, and
// no warning of g++ 12 about the undefined one inside its own intrinsics.
ORBA_INLINE F64 lookup_in_memory(const double* row, I64 index) {
  return _mm512_mask_i64gather_pd(_mm512_setzero_pd(), 0xff, index.v, row, 8);
}
ORBA_INLINE F32 lookup_in_memory(const float* row, I32 index) {
  return _mm512_mask_i32gather_ps(_mm512_setzero_ps(), 0xffff, index.v, row, 4);
}
template <class E, class I>
ORBA_INLINE auto lookup_pairs(const E* row, I index) {
  const auto hi = lookup_in_memory(row, index + index);
  return Pair<decltype(hi + hi)>{hi, lookup_in_memory(row + 1, index + index)};
}

// Four numbers from each row on. Rows are loaded so that two steps of shuffles bring them in order:
// doubles 0 and 2 in one vector, 1 and 3 in the next, 4 and 6, 5 and 7; floats 0, 4, 8 and 12, ...
template <int width>
ORBA_INLINE void lookup_four(const double* table, I64 index, F64* word) {
  alignas(64) int64_t i[8];
  _mm512_store_si512(i, index.v);
  const auto rows = [&](int j, int k) {
    return _mm512_maskz_insertf64x4(0xff,
                                    _mm512_castpd256_pd512(_mm256_load_pd(table + width * i[j])),
                                    _mm256_load_pd(table + width * i[k]), 1);
  };
  const __m512d a = rows(0, 2), b = rows(1, 3), c = rows(4, 6), d = rows(5, 7);
  const __m512d low_ab = _mm512_maskz_unpacklo_pd(0xff, a, b),
                low_cd = _mm512_maskz_unpacklo_pd(0xff, c, d);
  const __m512d high_ab = _mm512_maskz_unpackhi_pd(0xff, a, b),
                high_cd = _mm512_maskz_unpackhi_pd(0xff, c, d);
  word[0] = _mm512_maskz_shuffle_f64x2(0xff, low_ab, low_cd, 0x88);
  word[1] = _mm512_maskz_shuffle_f64x2(0xff, high_ab, high_cd, 0x88);
  word[2] = _mm512_maskz_shuffle_f64x2(0xff, low_ab, low_cd, 0xdd);
  word[3] = _mm512_maskz_shuffle_f64x2(0xff, high_ab, high_cd, 0xdd);
}
template <int width>
ORBA_INLINE void lookup_four(const float* table, I32 index, F32* word) {
  alignas(64) int32_t i[16];
  _mm512_store_si512(i, index.v);
  const auto rows = [&](int j) {
    __m512 v = _mm512_castps128_ps512(_mm_load_ps(table + width * i[j]));
    v = _mm512_maskz_insertf32x4(0xffff, v, _mm_load_ps(table + width * i[j + 4]), 1);
    v = _mm512_maskz_insertf32x4(0xffff, v, _mm_load_ps(table + width * i[j + 8]), 2);
    return _mm512_maskz_insertf32x4(0xffff, v, _mm_load_ps(table + width * i[j + 12]), 3);
  };
  const __m512 a = rows(0), b = rows(1), c = rows(2), d = rows(3);
  const __m512 low_ab = _mm512_maskz_unpacklo_ps(0xffff, a, b),
               low_cd = _mm512_maskz_unpacklo_ps(0xffff, c, d);
  const __m512 high_ab = _mm512_maskz_unpackhi_ps(0xffff, a, b),
               high_cd = _mm512_maskz_unpackhi_ps(0xffff, c, d);
  word[0] = _mm512_maskz_shuffle_ps(0xffff, low_ab, low_cd, _MM_SHUFFLE(1, 0, 1, 0));
  word[1] = _mm512_maskz_shuffle_ps(0xffff, low_ab, low_cd, _MM_SHUFFLE(3, 2, 3, 2));
  word[2] = _mm512_maskz_shuffle_ps(0xffff, high_ab, high_cd, _MM_SHUFFLE(1, 0, 1, 0));
  word[3] = _mm512_maskz_shuffle_ps(0xffff, high_ab, high_cd, _MM_SHUFFLE(3, 2, 3, 2));
}

#else

#  if ORBA_CLASS == 3

// Two rows as on class 5.
template <int rows>
ORBA_INLINE F64 lookup_in_registers(const double* row, I64 index) {
  static_assert(rows == 2);
  return _mm256_permutevar_pd(_mm256_setr_pd(row[0], row[1], row[0], row[1]), shl<1>(index).v);
}
template <int rows>
ORBA_INLINE F32 lookup_in_registers(const float* row, I32 index) {
  static_assert(rows == 2 || rows == 8 || rows == 16);
  if constexpr (rows == 2) {
    const float a = row[0], b = row[1];
    return _mm256_permutevar_ps(_mm256_setr_ps(a, b, a, b, a, b, a, b), index.v);
  }
  const __m256 low = _mm256_permutevar8x32_ps(_mm256_load_ps(row), index.v);
  if constexpr (rows == 8) return low;
  const __m256 high = _mm256_permutevar8x32_ps(_mm256_load_ps(row + 8), index.v);
  return _mm256_blendv_ps(low, high, _mm256_castsi256_ps(_mm256_slli_epi32(index.v, 28)));
}

#  endif

// Indices as scalars, from vectors of 128 bits.
struct Indices2 {
  uint32_t i0, i1;
};
struct Indices4 {
  uint32_t i0, i1, i2, i3;
};
ORBA_INLINE Indices2 indices64(__m128i index) {
#  if ORBA_CLASS >= 2
  return {static_cast<uint32_t>(_mm_cvtsi128_si32(index)),
          static_cast<uint32_t>(_mm_extract_epi32(index, 2))};
#  else
  return {static_cast<uint32_t>(_mm_cvtsi128_si32(index)),
          static_cast<uint32_t>(_mm_extract_epi16(index, 4))};
#  endif
}
ORBA_INLINE Indices4 indices32(__m128i index) {
  const uint64_t low = static_cast<uint64_t>(_mm_cvtsi128_si64(index));
#  if ORBA_CLASS >= 2
  const uint64_t high = static_cast<uint64_t>(_mm_extract_epi64(index, 1));
#  else
  const uint64_t high = static_cast<uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(index, index)));
#  endif
  return {static_cast<uint32_t>(low), static_cast<uint32_t>(low >> 32), static_cast<uint32_t>(high),
          static_cast<uint32_t>(high >> 32)};
}

ORBA_INLINE __m128d load_rows(const double* row, __m128i index) {
  const Indices2 i = indices64(index);
  return _mm_loadh_pd(_mm_load_sd(row + i.i0), row + i.i1);
}
ORBA_INLINE __m128 load_rows(const float* row, Indices4 i) {
  return _mm_movelh_ps(_mm_unpacklo_ps(_mm_load_ss(row + i.i0), _mm_load_ss(row + i.i1)),
                       _mm_unpacklo_ps(_mm_load_ss(row + i.i2), _mm_load_ss(row + i.i3)));
}
// Rows of two floats as one 64-bit piece each: (hi0, lo0, hi1, lo1). Indices of pairs count
// numbers, not rows.
ORBA_INLINE __m128 load_row_pairs(const float* row, uint32_t i, uint32_t j) {
  const __m128 first = _mm_castpd_ps(_mm_load_sd(reinterpret_cast<const double*>(row + i)));
  return _mm_loadh_pi(first, reinterpret_cast<const __m64*>(row + j));
}

#  if ORBA_CLASS == 3

ORBA_INLINE F64 lookup_in_memory(const double* row, I64 index) {
  return _mm256_set_m128d(load_rows(row, _mm256_extracti128_si256(index.v, 1)),
                          load_rows(row, _mm256_castsi256_si128(index.v)));
}
ORBA_INLINE F32 lookup_in_memory(const float* row, I32 index) {
  return _mm256_set_m128(load_rows(row, indices32(_mm256_extracti128_si256(index.v, 1))),
                         load_rows(row, indices32(_mm256_castsi256_si128(index.v))));
}
ORBA_INLINE Pair<F64> load_pairs(const double* row, I64 index) {
  const Indices2 low = indices64(_mm256_castsi256_si128(index.v));
  const Indices2 high = indices64(_mm256_extracti128_si256(index.v, 1));
  const __m256d even = _mm256_set_m128d(_mm_load_pd(row + high.i0), _mm_load_pd(row + low.i0));
  const __m256d odd = _mm256_set_m128d(_mm_load_pd(row + high.i1), _mm_load_pd(row + low.i1));
  return {_mm256_unpacklo_pd(even, odd), _mm256_unpackhi_pd(even, odd)};
}
ORBA_INLINE Pair<F32> load_pairs(const float* row, I32 index) {
  const Indices4 low = indices32(_mm256_castsi256_si128(index.v));
  const Indices4 high = indices32(_mm256_extracti128_si256(index.v, 1));
  const __m256 a =
      _mm256_set_m128(load_row_pairs(row, high.i0, high.i1), load_row_pairs(row, low.i0, low.i1));
  const __m256 b =
      _mm256_set_m128(load_row_pairs(row, high.i2, high.i3), load_row_pairs(row, low.i2, low.i3));
  return {_mm256_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0)),
          _mm256_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1))};
}

#  else

ORBA_INLINE F64 lookup_in_memory(const double* row, I64 index) { return load_rows(row, index.v); }
ORBA_INLINE F32 lookup_in_memory(const float* row, I32 index) {
  return load_rows(row, indices32(index.v));
}
ORBA_INLINE Pair<F64> load_pairs(const double* row, I64 index) {
  const Indices2 i = indices64(index.v);
  const __m128d first = _mm_load_pd(row + i.i0), second = _mm_load_pd(row + i.i1);
  return {_mm_unpacklo_pd(first, second), _mm_unpackhi_pd(first, second)};
}
ORBA_INLINE Pair<F32> load_pairs(const float* row, I32 index) {
  const Indices4 i = indices32(index.v);
  const __m128 a = load_row_pairs(row, i.i0, i.i1), b = load_row_pairs(row, i.i2, i.i3);
  return {_mm_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0)),
          _mm_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1))};
}

#  endif

template <class E, class I>
ORBA_INLINE auto lookup_pairs(const E* row, I index) {
  return load_pairs(row, index + index);
}
template <int width, class E, class V>
ORBA_INLINE void lookup_four(const E* table, typename V::Bits index, V* word) {
  constexpr int log2_width = width == 4 ? 2 : 3;
  const typename V::Bits first = shl<log2_width>(index);
  const Pair<V> low = load_pairs(table, first), high = load_pairs(table + 2, first);
  word[0] = low.hi, word[1] = low.lo, word[2] = high.hi, word[3] = high.lo;
}

#endif

// The vector of a type of element, and an index that counts modulo a power of two.
template <class E>
struct VectorOfElement {
  using Type = F64;
};
template <>
struct VectorOfElement<float> {
  using Type = F32;
};
template <class E>
using VectorOf = typename VectorOfElement<E>::Type;
template <class E>
using IndexOf = typename VectorOf<E>::Bits;
template <int rows, class I>
ORBA_INLINE I wrapped(I index) {
  if constexpr ((rows & (rows - 1)) == 0) return index & I(rows - 1);
  return index;
}

template <class E, int rows>
ORBA_INLINE VectorOf<E> lookup(const E (&table)[rows], IndexOf<E> index) {
  return lookup_in_memory(table, wrapped<rows>(index));
}
template <class E, int rows>
ORBA_INLINE Pair<VectorOf<E>> lookup(const E (&table)[rows][2], IndexOf<E> index) {
  return lookup_pairs(table[0], wrapped<rows>(index));
}
template <class E, int rows, int width>
requires(width == 4 ||
         width == 8) ORBA_INLINE Row<VectorOf<E>, width> lookup(const E (&table)[rows][width],
                                                                IndexOf<E> index) {
  index = wrapped<rows>(index);
  Row<VectorOf<E>, width> row;
  ORBA_UNROLL
  for (int i = 0; i < width; i += 4) lookup_four<width>(table[0] + i, index, row.word + i);
  return row;
}

template <class E, int rows>
ORBA_INLINE VectorOf<E> lookup(const Table<E, rows>& table, IndexOf<E> index) {
  if constexpr (Table<E, rows>::in_registers)
    return lookup_in_registers<rows>(table.row, index);
  else
    return lookup(table.row, index);
}
template <class E, int rows>
ORBA_INLINE Pair<VectorOf<E>> lookup(const PairTable<E, rows>& table, IndexOf<E> index) {
  if constexpr (PairTable<E, rows>::in_registers)
    return {lookup_in_registers<rows>(table.data, index),
            lookup_in_registers<rows>(table.data + rows, index)};
  else
    return lookup_pairs(table.data, wrapped<rows>(index));
}

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
