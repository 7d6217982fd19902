// Life of a stream and what can be done to it as a whole. Statuses are those of orba_rau.h.
#pragma once

#include <stdint.h>

#include "statistics/streams/stream_state.h"

namespace orba::statistics {

// Whether new_stream knows the generator and makes its streams.
bool can_be_made(int32_t brng) noexcept;
// 0 for a live stream.
inline int32_t check_stream(const StreamState* stream) noexcept {
  if (stream == nullptr) return RAU_ERROR_NULL_PTR;
  return stream->marker == 1 ? RAU_STATUS_OK : RAU_ERROR_BAD_STREAM;
}

int32_t new_stream(StreamState** stream, int32_t brng, int32_t n, const uint32_t* params) noexcept;
int32_t delete_stream(StreamState** stream) noexcept;
int32_t copy_stream(StreamState** copy, const StreamState* source) noexcept;
int32_t copy_stream_state(StreamState* dest, const StreamState* source) noexcept;
int32_t leapfrog_stream(StreamState* stream, int32_t k, int32_t nstreams) noexcept;
int32_t skip_ahead_stream(StreamState* stream, int64_t nskip) noexcept;
int32_t stream_size(const StreamState* stream) noexcept;
int32_t register_checked_brng(const BrngProperties* properties) noexcept;
int32_t brng_properties(int32_t brng, BrngProperties* properties) noexcept;

}  // namespace orba::statistics
