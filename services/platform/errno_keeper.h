// Callers of vector functions read errno for errors in the elements. What the library does for
// itself on the way goes on behind errno's back.
#pragma once

#include <errno.h>

namespace orba::services::platform {

class ErrnoKeeper {
 public:
  ErrnoKeeper() noexcept : saved_(errno) {}
  ~ErrnoKeeper() { errno = saved_; }
  ErrnoKeeper(const ErrnoKeeper&) = delete;
  ErrnoKeeper& operator=(const ErrnoKeeper&) = delete;

 private:
  int saved_;
};

}  // namespace orba::services::platform
