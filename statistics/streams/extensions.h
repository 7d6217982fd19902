// Data that distributions and some generators attach to a stream.
//
// A record belongs to its stream. Its data block belongs to the record, unless it has a key: then
// the block is shared by all records of that key, in whatever stream, and counted in one
// process-wide table. Copies of a stream copy private blocks and share keyed ones.
#pragma once

#include <stdint.h>

#include "statistics/streams/stream_state.h"

namespace orba::statistics {

struct SharedKey {
  uint64_t words[2];
  bool operator==(const SharedKey&) const = default;
};

enum ExtensionId : uint32_t {
  kExtensionBoxMuller2Single = 1,
  kExtensionBoxMuller2Double = 2,
  kExtensionPoisson = 3,
  kExtensionNegativeBinomial = 4,
  kExtensionBinomial = 5,
  kExtensionHypergeometric = 6,
  kExtensionGammaDouble = 7,
  kExtensionGammaSingle = 8,
  kExtensionSobol = 9,
  kExtensionNiederreiterUser = 10,
  kExtensionSobolUser = 13,
};

// Alignment of streams, records and data blocks: two cache lines.
inline constexpr int kStreamAlignment = 128;

// Attaches `data` (from services::allocate, now the record's) at the head of the stream's list.
// With a key that the table knows, the record takes the table's block and the caller keeps its own.
// With a full table the record is private. 0 or RAU_ERROR_MEM_FAILURE.
int32_t add_extension(StreamState& stream, uint32_t id, const SharedKey* key, void* data,
                      uint32_t size) noexcept;

// Data of the first record of this id, or null.
void* find_extension(const StreamState& stream, uint32_t id) noexcept;

// Frees all records of this id, or all there are.
void remove_extension(StreamState& stream, uint32_t id) noexcept;
void remove_all_extensions(StreamState& stream) noexcept;

// Gives `dest`, whose list is empty, copies of all records of `source`, in reverse order. On
// RAU_ERROR_MEM_FAILURE the list is empty again.
int32_t copy_extensions(StreamState& dest, const StreamState& source) noexcept;

// Bytes that the stream's records take in its saved image.
int64_t extension_image_size(const StreamState& stream) noexcept;

// A key that the table doesn't hold: time stamp and `second`.
SharedKey make_shared_key(uint64_t second) noexcept;

}  // namespace orba::statistics

// One record of the list.
struct StreamExtension {
  uint32_t id;
  uint32_t size;  // bytes of data
  void* data;
  StreamExtension* next;
  orba::statistics::SharedKey key;  // zero: private
};
