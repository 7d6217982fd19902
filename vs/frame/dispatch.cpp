#include "vs/frame/dispatch.h"

#include "serv/detect/detect.h"

namespace orba::vs {

constinit std::atomic<int> class_word{-1};

// Unlocked: whoever else decides at the same time stores the same class.
int detect_class() noexcept {
  const int found = serv::rau_class(serv::rau_cpu_type());
  class_word.store(found, std::memory_order_relaxed);
  return found;
}

}  // namespace orba::vs
