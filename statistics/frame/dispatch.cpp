#include "statistics/frame/dispatch.h"

#include "services/detect/detect.h"

namespace orba::statistics {

constinit std::atomic<int> class_word{-1};

// Unlocked: whoever else decides at the same time stores the same class.
int detect_class() noexcept {
  const int found = services::rau_class(services::rau_cpu_type());
  class_word.store(found, std::memory_order_relaxed);
  return found;
}

}  // namespace orba::statistics
