// Memory of a driver for the time of a scope.
#pragma once

#include <stdint.h>

#include "services/memory.h"

namespace orba::statistics {

template <class T>
class Scratch {
 public:
  Scratch() = default;
  // Holds null when there is no room for `count` elements, or when there are none.
  explicit Scratch(int64_t count) noexcept { take(count); }
  ~Scratch() { services::free_memory(data_); }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  // For an object that holds null.
  bool take(int64_t count) noexcept {
    uint64_t size;
    if (count >= 0 && !__builtin_mul_overflow(static_cast<uint64_t>(count), sizeof(T), &size)) {
      data_ = static_cast<T*>(services::allocate(size, 128));
    }
    return data_ != nullptr;
  }

  T* data() const noexcept { return data_; }
  explicit operator bool() const noexcept { return data_ != nullptr; }

 private:
  T* data_ = nullptr;
};

}  // namespace orba::statistics
