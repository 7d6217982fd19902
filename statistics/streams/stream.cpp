#include "statistics/streams/stream.h"

#include <string.h>

#include <algorithm>

#include "services/memory.h"
#include "statistics/streams/extensions.h"
#include "statistics/streams/generators/table.h"

namespace orba::statistics {
namespace {

const Brng* row_of(const StreamState& stream) noexcept {
  return find_brng(running_class(), stream.brng);
}

// Bytes of a stream's block. A registered generator may state less than the head takes.
size_t block_size(const Brng& row) noexcept {
  return std::max(static_cast<size_t>(row.StreamStateSize), sizeof(StreamState));
}

StreamState* allocate_stream(const Brng& row) noexcept {
  const size_t size = block_size(row);
  auto* block = static_cast<StreamState*>(services::allocate(size, kStreamAlignment));
  if (block != nullptr) memset(static_cast<void*>(block), 0, size);
  return block;
}

// Row of a generator whose streams are made from seeds; null if there is none.
const Brng* find_seeded(int32_t brng) noexcept {
  const Brng* row = find_brng(running_class(), brng);
  return row != nullptr && (row->abilities & kSeeded) != 0 ? row : nullptr;
}

}  // namespace

bool can_be_made(int32_t brng) noexcept { return find_seeded(brng) != nullptr; }

int32_t new_stream(StreamState** stream, int32_t brng, int32_t n, const uint32_t* params) noexcept {
  const Brng* row = find_seeded(brng);
  if (row == nullptr) return RAU_ERROR_INVALID_BRNG_INDEX;
  StreamState* made = allocate_stream(*row);
  if (made == nullptr) return RAU_ERROR_MEM_FAILURE;
  made->brng = brng;
  made->marker = 1;
  *stream = made;
  return row->InitStream(kSeedStream, made, n, params);
}

int32_t delete_stream(StreamState** stream) noexcept {
  remove_all_extensions(**stream);
  services::free_memory(*stream);
  *stream = nullptr;
  return RAU_STATUS_OK;
}

int32_t copy_stream(StreamState** copy, const StreamState* source) noexcept {
  const Brng* row = row_of(*source);
  if (row == nullptr) return RAU_ERROR_INVALID_BRNG_INDEX;
  StreamState* made = allocate_stream(*row);
  if (made == nullptr) return RAU_ERROR_MEM_FAILURE;
  memcpy(static_cast<void*>(made), source, block_size(*row));
  made->extensions = nullptr;
  const int32_t status = copy_extensions(*made, *source);
  if (status != RAU_STATUS_OK) {
    services::free_memory(made);
    return status;
  }
  *copy = made;
  return RAU_STATUS_OK;
}

int32_t copy_stream_state(StreamState* dest, const StreamState* source) noexcept {
  if (dest == source) return RAU_STATUS_OK;
  const Brng *from = row_of(*source), *to = row_of(*dest);
  if (from == nullptr || to == nullptr) return RAU_ERROR_INVALID_BRNG_INDEX;
  // What a row calls a seed can be more than the state; and streams of two generators are not
  // refused.
  const size_t seed = static_cast<size_t>(from->NSeeds) * static_cast<size_t>(from->WordSize);
  const size_t room = std::min(block_size(*from), block_size(*to)) - sizeof(StreamState);
  memcpy(static_cast<void*>(dest + 1), source + 1, std::min(seed, room));
  remove_all_extensions(*dest);
  return copy_extensions(*dest, *source);
}

int32_t leapfrog_stream(StreamState* stream, int32_t k, int32_t nstreams) noexcept {
  if (nstreams < 0) return RAU_ERROR_LEAPFROG_NSTREAMS_TOO_BIG;
  return row_of(*stream)->InitStream(kLeapfrogStream, stream, nstreams, &k);
}

int32_t skip_ahead_stream(StreamState* stream, int64_t nskip) noexcept {
  return row_of(*stream)->InitStream(kSkipStream, stream, 2, &nskip);
}

int32_t stream_size(const StreamState* stream) noexcept {
  constexpr int64_t kImageHead = 24;  // in place of the head in memory
  return static_cast<int32_t>(row_of(*stream)->StreamStateSize - int64_t{sizeof(StreamState)} +
                              kImageHead + extension_image_size(*stream));
}

int32_t register_checked_brng(const BrngProperties* properties) noexcept {
  if (properties == nullptr) return RAU_ERROR_NULL_PTR;
  const BrngProperties& row = *properties;
  if (row.StreamStateSize < 0) return RAU_ERROR_BAD_STREAM_STATE_SIZE;
  if (row.WordSize != 4 && row.WordSize != 8 && row.WordSize != 16) {
    return RAU_ERROR_BAD_WORD_SIZE;
  }
  if (row.NSeeds < 1) return RAU_ERROR_BAD_NSEEDS;
  if (row.NBits < 1) return RAU_ERROR_BAD_NBITS;
  if (row.InitStream == nullptr || row.sBRng == nullptr || row.dBRng == nullptr ||
      row.iBRng == nullptr) {
    return RAU_ERROR_NULL_PTR;
  }
  return register_brng(row);
}

int32_t brng_properties(int32_t brng, BrngProperties* properties) noexcept {
  const Brng* row = find_brng(running_class(), brng);
  if (row == nullptr) return RAU_ERROR_INVALID_BRNG_INDEX;
  if (properties == nullptr) return RAU_ERROR_NULL_PTR;
  *properties = *row;
  return RAU_STATUS_OK;
}

}  // namespace orba::statistics
