// The memory service over the C runtime's aligned allocator. Blocks go straight back to it, so
// there is no cache to release.
#include "services/memory.h"

#include <string.h>

#include <atomic>
#include <bit>
#include <cstdlib>

#include "services/environment.h"
#include "services/spin_lock.h"

namespace orba::services {
namespace {

// A cache line, and the width of the widest vector load.
constexpr uint64_t kMinimumAlignment = 64;

}  // namespace

void* allocate(uint64_t size, int alignment) noexcept { return allocate_plain(size, alignment); }

void* allocate_zeroed(uint64_t count, uint64_t size, int alignment) noexcept {
  uint64_t total;
  if (__builtin_mul_overflow(count, size, &total)) return nullptr;
  void* block = allocate(total, alignment);
  if (block != nullptr) memset(block, 0, total);
  return block;
}

void* allocate_plain(uint64_t size, int alignment) noexcept {
  uint64_t boundary = kMinimumAlignment;
  if (alignment > 64 && std::has_single_bit(static_cast<uint32_t>(alignment))) {
    boundary = static_cast<uint64_t>(alignment);
  }
  // No object is larger than half of the address space.
  if (size == 0 || size > PTRDIFF_MAX - boundary) return nullptr;
  return std::aligned_alloc(boundary, (size + boundary - 1) & ~(boundary - 1));
}

void free_memory(void* block) noexcept { std::free(block); }
void free_plain(void* block) noexcept { std::free(block); }

void release_thread_memory() noexcept {}
void release_all_memory() noexcept {}

bool fast_memory_disabled() noexcept {
  static constinit std::atomic<int> word{-1};
  static constinit SpinLock lock;
  if (word.load(std::memory_order_relaxed) < 0) {
    SpinGuard guard(lock);
    if (word.load(std::memory_order_relaxed) < 0) {
      char value[32];
      const int length = read_environment("ORBA_DISABLE_FAST_MM", value, sizeof value);
      word.store(length != 0, std::memory_order_relaxed);
    }
  }
  return word.load(std::memory_order_relaxed) != 0;
}

}  // namespace orba::services
