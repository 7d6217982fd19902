// Memory of a driver for the time of a scope.
#pragma once

#include <stdint.h>

#include "services/memory.h"

namespace orba::statistics {

template <class T>
class Scratch {
 public:
  // Holds null when there is no room for `count` elements, or when there are none.
  explicit Scratch(int64_t count) noexcept {
    uint64_t size;
    if (count < 0 || __builtin_mul_overflow(static_cast<uint64_t>(count), sizeof(T), &size)) return;
    data_ = static_cast<T*>(services::allocate(size, 128));
  }
  ~Scratch() { services::free_memory(data_); }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  T* data() const noexcept { return data_; }
  explicit operator bool() const noexcept { return data_ != nullptr; }

 private:
  T* data_ = nullptr;
};

}  // namespace orba::statistics
