#include "tests/support/failing_allocator.h"

#include <stddef.h>

#include <mutex>
#include <unordered_set>

extern "C" {
void* __real_aligned_alloc(size_t alignment, size_t size);
void __real_free(void* block);
void* __wrap_aligned_alloc(size_t alignment, size_t size);
void __wrap_free(void* block);
}

namespace {

std::mutex mutex;
bool active, reached;
int64_t failing, allocations;
std::unordered_set<void*> blocks;

}  // namespace

void* __wrap_aligned_alloc(size_t alignment, size_t size) {
  const std::lock_guard lock(mutex);
  if (active && ++allocations == failing) {
    reached = true;
    return nullptr;
  }
  void* block = __real_aligned_alloc(alignment, size);
  if (active && block != nullptr) blocks.insert(block);
  return block;
}

void __wrap_free(void* block) {
  const std::lock_guard lock(mutex);
  blocks.erase(block);
  __real_free(block);
}

namespace orba::test {

FailingAllocator::FailingAllocator(int64_t number) {
  const std::lock_guard lock(mutex);
  active = true;
  reached = false;
  failing = number;
  allocations = 0;
  blocks.clear();
}

FailingAllocator::~FailingAllocator() {
  const std::lock_guard lock(mutex);
  active = false;
}

bool FailingAllocator::failed() const {
  const std::lock_guard lock(mutex);
  return reached;
}

int64_t FailingAllocator::live_blocks() const {
  const std::lock_guard lock(mutex);
  return static_cast<int64_t>(blocks.size());
}

}  // namespace orba::test
