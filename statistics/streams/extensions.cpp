#include "statistics/streams/extensions.h"

#include <string.h>
#include <x86intrin.h>

#include "services/memory.h"
#include "services/spin_lock.h"

namespace orba::statistics {
namespace {

constexpr SharedKey kPrivate = {};

// The blocks that streams share. A program has few of them (quasi-random tables), so a linear
// search does.
class SharedObjectTable {
 public:
  // Takes a share in the block of `key`; null if the table doesn't know it.
  void* share(const SharedKey& key) noexcept {
    services::SpinGuard guard(lock_);
    Entry* entry = find(key);
    if (entry == nullptr) return nullptr;
    ++entry->refcount;
    return entry->data;
  }

  // The block of `key` with one share more; an unknown key enters with `data`. Null when the table
  // is full: known or not, the key is then not shared any further.
  void* share_or_enter(const SharedKey& key, void* data) noexcept {
    services::SpinGuard guard(lock_);
    if (count_ >= kCapacity) return nullptr;
    if (Entry* entry = find(key)) {
      ++entry->refcount;
      return entry->data;
    }
    entries_[count_++] = {key, 1, data};
    return data;
  }

  // Gives a share back. True when the block is the caller's to free: the last share, or a block
  // that the table doesn't know.
  bool release(const SharedKey& key) noexcept {
    services::SpinGuard guard(lock_);
    Entry* entry = find(key);
    if (entry == nullptr) return true;
    if (--entry->refcount > 0) return false;
    *entry = entries_[--count_];
    return true;
  }

  bool holds(const SharedKey& key) noexcept {
    services::SpinGuard guard(lock_);
    return find(key) != nullptr;
  }

 private:
  struct Entry {
    SharedKey key;
    uint32_t refcount;
    void* data;
  };
  static constexpr int32_t kCapacity = 127;

  Entry* find(const SharedKey& key) noexcept {
    for (int32_t i = 0; i < count_; ++i) {
      if (entries_[i].key == key) return &entries_[i];
    }
    return nullptr;
  }

  services::SpinLock lock_;
  int32_t count_ = 0;
  Entry entries_[kCapacity] = {};
};

constinit SharedObjectTable shared_objects;

void link(StreamState& stream, StreamExtension* record) noexcept {
  record->next = stream.extensions;
  stream.extensions = record;
}

void destroy(StreamExtension* record) noexcept {
  if (record->key == kPrivate || shared_objects.release(record->key)) {
    services::free_memory(record->data);
  }
  services::free_memory(record);
}

// A copy of one record in `dest`.
int32_t copy_record(StreamState& dest, const StreamExtension& record) noexcept {
  auto* copy =
      static_cast<StreamExtension*>(services::allocate(sizeof(StreamExtension), kStreamAlignment));
  if (copy == nullptr) return RAU_ERROR_MEM_FAILURE;
  *copy = record;
  copy->data = record.key == kPrivate ? nullptr : shared_objects.share(record.key);
  if (copy->data == nullptr) {
    copy->key = kPrivate;
    if (record.size > 0) {
      copy->data = services::allocate(record.size, kStreamAlignment);
      if (copy->data == nullptr) {
        services::free_memory(copy);
        return RAU_ERROR_MEM_FAILURE;
      }
      memcpy(copy->data, record.data, record.size);
    }
  }
  link(dest, copy);
  return RAU_STATUS_OK;
}

}  // namespace

int32_t add_extension(StreamState& stream, uint32_t id, const SharedKey* key, void* data,
                      uint32_t size) noexcept {
  auto* record =
      static_cast<StreamExtension*>(services::allocate(sizeof(StreamExtension), kStreamAlignment));
  if (record == nullptr) return RAU_ERROR_MEM_FAILURE;
  *record = {id, size, data, nullptr, key != nullptr ? *key : kPrivate};
  if (record->key != kPrivate) {
    if (void* block = shared_objects.share_or_enter(record->key, data)) {
      record->data = block;
    } else {
      record->key = kPrivate;
    }
  }
  link(stream, record);
  return RAU_STATUS_OK;
}

void* find_extension(const StreamState& stream, uint32_t id) noexcept {
  for (const StreamExtension* record = stream.extensions; record != nullptr;
       record = record->next) {
    if (record->id == id) return record->data;
  }
  return nullptr;
}

void remove_extension(StreamState& stream, uint32_t id) noexcept {
  for (StreamExtension** link = &stream.extensions; *link != nullptr;) {
    StreamExtension* record = *link;
    if (record->id == id) {
      *link = record->next;
      destroy(record);
    } else {
      link = &record->next;
    }
  }
}

void remove_all_extensions(StreamState& stream) noexcept {
  while (StreamExtension* record = stream.extensions) {
    stream.extensions = record->next;
    destroy(record);
  }
}

int32_t copy_extensions(StreamState& dest, const StreamState& source) noexcept {
  for (const StreamExtension* record = source.extensions; record != nullptr;
       record = record->next) {
    if (copy_record(dest, *record) != RAU_STATUS_OK) {
      remove_all_extensions(dest);
      return RAU_ERROR_MEM_FAILURE;
    }
  }
  return RAU_STATUS_OK;
}

int64_t extension_image_size(const StreamState& stream) noexcept {
  constexpr int64_t kRecordHead = 24;
  int64_t size = 0;
  for (const StreamExtension* record = stream.extensions; record != nullptr;
       record = record->next) {
    size += kRecordHead + record->size;
  }
  return size;
}

SharedKey make_shared_key(uint64_t second) noexcept {
  SharedKey key = {{__rdtsc(), second}};
  while (key != kPrivate && shared_objects.holds(key)) key.words[0] = __rdtsc();
  return key;
}

}  // namespace orba::statistics
