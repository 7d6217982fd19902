// A symmetric matrix of order p in the caller's memory, in any of its three storages.
#pragma once

#include <stdint.h>

#include "include/orba_rau.h"

namespace orba::statistics {

enum class MatrixStorage { kFull, kLowerPacked, kUpperPacked };

// Of a storage code, which is read as bits, the upper triangle's first.
inline MatrixStorage matrix_storage(int64_t code) noexcept {
  if ((code & RAU_SS_MATRIX_STORAGE_U_PACKED) != 0) return MatrixStorage::kUpperPacked;
  if ((code & RAU_SS_MATRIX_STORAGE_L_PACKED) != 0) return MatrixStorage::kLowerPacked;
  return MatrixStorage::kFull;
}

template <class Real>
class SymmetricMatrix {
 public:
  SymmetricMatrix(void* data, MatrixStorage storage, int64_t p) noexcept
      : data_(static_cast<Real*>(data)), storage_(storage), p_(p) {}

  Real operator()(int64_t j, int64_t k) const noexcept {
    const int64_t low = j < k ? j : k, high = j < k ? k : j;
    return upper() ? row(low)[high - low] : row(high)[low];
  }

  // Calls visit(j, k, element) for the elements k <= j of selected rows and columns, in the order
  // they are stored in.
  template <class Selects, class Visit>
  void for_each(const Selects& selects, const Visit& visit) const noexcept {
    for (int64_t r = 0; r < p_; ++r) {
      if (!selects(r)) continue;
      Real* const elements = row(r);
      const int64_t first = upper() ? r : 0, last = upper() ? p_ - 1 : r;
      for (int64_t c = first; c <= last; ++c) {
        if (!selects(c)) continue;
        if (upper())
          visit(c, r, elements[c - first]);
        else
          visit(r, c, elements[c]);
      }
    }
  }

  // Sets the same elements, in both triangles where both are stored, to make(j, k).
  template <class Selects, class Make>
  void assign(const Selects& selects, const Make& make) const noexcept {
    for_each(selects, [&](int64_t j, int64_t k, Real& element) {
      element = make(j, k);
      if (storage_ == MatrixStorage::kFull) data_[k * p_ + j] = element;
    });
  }

 private:
  bool upper() const noexcept { return storage_ == MatrixStorage::kUpperPacked; }
  // Where the triangle's row r begins.
  Real* row(int64_t r) const noexcept {
    switch (storage_) {
      case MatrixStorage::kUpperPacked:
        return data_ + (r * p_ - r * (r - 1) / 2);
      case MatrixStorage::kLowerPacked:
        return data_ + r * (r + 1) / 2;
      default:
        return data_ + r * p_;
    }
  }

  Real* data_;
  MatrixStorage storage_;
  int64_t p_;
};

}  // namespace orba::statistics
