// The four words that steer the vector layer on each thread: mode, status, callback, base pointer.
#pragma once

#include <stdint.h>

#include "include/orba_kam.h"
#include "services/platform/platform.h"

namespace orba::vector {

// Layout of the per-thread block, in this order. Kernels read the mode at its head by themselves.
struct KamThreadWords {
  uint32_t mode;  // 0 until the thread's first read of the mode
  int32_t status;
  KamErrorCallBack callback;
  const void* base;  // first argument array of the forked call in progress, else null
};

// Out of line: makes the block on a thread's first touch, or gives the static words when the code
// is linked into the executable.
KamThreadWords* make_thread_words() noexcept;

inline KamThreadWords& thread_words() noexcept {
  void* slot = services::platform::thread_slot;
  return *static_cast<KamThreadWords*>(slot != nullptr ? slot : make_thread_words());
}

uint32_t initialise_mode(KamThreadWords& words) noexcept;

// The mode word, read from the environment on a thread's first use.
inline uint32_t mode() noexcept {
  KamThreadWords& words = thread_words();
  return words.mode != 0 ? words.mode : initialise_mode(words);
}

inline int32_t status() noexcept { return thread_words().status; }
inline void set_status(int32_t value) noexcept { thread_words().status = value; }
inline KamErrorCallBack callback() noexcept { return thread_words().callback; }

// Field-wise merge of `request` into `old`: a group of zero keeps what is there.
uint32_t merge_mode(uint32_t old, uint32_t request) noexcept;

// Merges into the thread's mode and returns the old word.
uint32_t set_mode(uint32_t request) noexcept;

// Returns the old pointer. The callback's mode bit follows the pointer through the ordinary merge,
// so clearing it from an error field that holds nothing else leaves the field as it is.
KamErrorCallBack set_callback(KamErrorCallBack callback) noexcept;

// Value of a mode string ("KAM_HA,KAM_ERRMODE_ERRNO"); false when it is malformed.
bool parse_mode(const char* text, uint32_t* value) noexcept;

}  // namespace orba::vector
