// The exported entries of streams. Some report under another entry's name: those names are what
// users have been told.
#include "statistics/frame/entry.h"
#include "statistics/streams/generators/table.h"
#include "statistics/streams/stream.h"

namespace {

using namespace orba::statistics;

int32_t report_if_unknown_brng(const char* name, int32_t status) {
  return status == RAU_ERROR_INVALID_BRNG_INDEX ? refuse(name, 2, status) : status;
}

// Guards of ours, which give way to every stated check: null addresses.
int32_t guard_new_stream(const char* name, const void* stream, int32_t brng, int32_t n,
                         const void* params) {
  if (!can_be_made(brng)) return RAU_STATUS_OK;
  if (stream == nullptr) return refuse(name, 1, RAU_ERROR_NULL_PTR);
  return n > 0 && params == nullptr ? refuse(name, 4, RAU_ERROR_BADARGS) : RAU_STATUS_OK;
}

int32_t report_if_negative(const char* name, int32_t status) {
  return status < 0 ? refuse(name, 1, status) : status;
}

}  // namespace

ORBA_ENTRY(rauNewStream, raunewstream, P(StreamState**, stream), V(int32_t, brng),
           V(uint32_t, seed)) {
  constexpr const char* kName = "rauNewStream";
  if (brng < 0) return refuse(kName, 2, RAU_ERROR_INVALID_BRNG_INDEX);
  if (const int32_t bad = guard_new_stream(kName, stream, brng, 1, &seed)) return bad;
  const auto make = [&] { return new_stream(stream, brng, 1, &seed); };
  return report_if_unknown_brng(
      kName, traced(make, "%s(%p,%d,%d)", kName, static_cast<void*>(stream), brng, seed));
}

ORBA_ENTRY(rauNewStreamEx, raunewstreamex, P(StreamState**, stream), V(int32_t, brng),
           V(int32_t, n), P(const uint32_t*, params)) {
  constexpr const char* kReportedName = "rauNewStream";
  if (brng < 0) return refuse(kReportedName, 2, RAU_ERROR_INVALID_BRNG_INDEX);
  if (const int32_t bad = guard_new_stream(kReportedName, stream, brng, n, params)) return bad;
  const auto make = [&] { return new_stream(stream, brng, n, params); };
  return report_if_unknown_brng(
      kReportedName, traced(make, "%s(%p,%d,%d,%p)", "rauNewStreamEx", static_cast<void*>(stream),
                            brng, n, static_cast<const void*>(params)));
}

ORBA_ENTRY(rauDeleteStream, raudeletestream, P(StreamState**, stream)) {
  constexpr const char* kName = "rauDeleteStream";
  if (stream == nullptr) return refuse(kName, 1, RAU_ERROR_NULL_PTR);
  if (const int32_t bad = check_stream(*stream)) return refuse(kName, 1, bad);
  const auto free = [&] { return delete_stream(stream); };
  return report_if_negative(kName, traced(free, "%s(%p)", kName, static_cast<void*>(stream)));
}

ORBA_ENTRY(rauCopyStream, raucopystream, P(StreamState**, newstream),
           H(const StreamState*, source)) {
  constexpr const char* kName = "rauCopyStream";
  if (const int32_t bad = check_stream(source)) return refuse(kName, 2, bad);
  if (newstream == nullptr) return refuse(kName, 1, RAU_ERROR_NULL_PTR);
  const auto copy = [&] { return copy_stream(newstream, source); };
  return report_if_unknown_brng(kName,
                                traced(copy, "%s(%p,%p)", kName, static_cast<void*>(newstream),
                                       static_cast<const void*>(source)));
}

ORBA_ENTRY(rauCopyStreamState, raucopystreamstate, H(StreamState*, dest),
           H(const StreamState*, source)) {
  constexpr const char* kName = "rauCopyStreamState";
  if (const int32_t bad = check_stream(dest)) return refuse(kName, 1, bad);
  if (const int32_t bad = check_stream(source)) return refuse(kName, 2, bad);
  const auto copy = [&] { return copy_stream_state(dest, source); };
  const int32_t status =
      traced(copy, "%s(%p,%p)", kName, static_cast<void*>(dest), static_cast<const void*>(source));
  if (status >= 0) return status;
  return refuse(kName, status < -10 ? 1 : 2, status);
}

ORBA_ENTRY(rauLeapfrogStream, rauleapfrogstream, H(StreamState*, stream), V(int32_t, k),
           V(int32_t, nstreams)) {
  constexpr const char* kName = "rauLeapfrogStream";
  if (const int32_t bad = check_stream(stream)) return refuse(kName, 1, bad);
  const auto leap = [&] { return leapfrog_stream(stream, k, nstreams); };
  return report_if_negative(
      kName, traced(leap, "%s(%p,%d,%d)", kName, static_cast<void*>(stream), k, nstreams));
}

ORBA_ENTRY(rauSkipAheadStream, rauskipaheadstream, H(StreamState*, stream), V(int64_t, nskip)) {
  constexpr const char* kName = "rauSkipAheadStream";
  if (const int32_t bad = check_stream(stream)) return refuse(kName, 1, bad);
  const auto skip = [&] { return skip_ahead_stream(stream, nskip); };
  return report_if_negative(kName, traced(skip, "%s(%p,%lli)", kName, static_cast<void*>(stream),
                                          static_cast<long long>(nskip)));
}

ORBA_ENTRY(rauGetStreamStateBrng, raugetstreamstatebrng, H(const StreamState*, stream)) {
  constexpr const char* kName = "rauGetStreamStateBrng";
  if (const int32_t bad = check_stream(stream)) return refuse(kName, 1, bad);
  const auto read = [&] { return stream->brng; };
  return report_if_negative(kName, traced(read, "%s(%p)", kName, static_cast<const void*>(stream)));
}

ORBA_ENTRY(rauGetStreamSize, raugetstreamsize, H(const StreamState*, stream)) {
  if (const int32_t bad = check_stream(stream)) return refuse("rauGetStreamSize", 1, bad);
  const auto measure = [&] { return stream_size(stream); };
  return traced(measure, "%s(%p)", "GetStreamSize", static_cast<const void*>(stream));
}

ORBA_ENTRY(rauRegisterBrng, rauregisterbrng, P(const BrngProperties*, properties)) {
  constexpr const char* kName = "rauRegisterBrng";
  const auto add = [&] { return register_checked_brng(properties); };
  const int32_t status = traced(add, "%s", kName);
  return status < 0 && orba::services::verbose_level() == 0 ? refuse(kName, 1, status) : status;
}

ORBA_ENTRY(rauGetBrngProperties, raugetbrngproperties, V(int32_t, brng),
           P(BrngProperties*, properties)) {
  const auto read = [&] { return brng_properties(brng, properties); };
  return report_if_negative("rauRegisterBrng", traced(read, "%s(%d,%p)", "rauGetBrngProperties",
                                                      brng, static_cast<void*>(properties)));
}

ORBA_ENTRY(rauGetNumRegBrngs, raugetnumregbrngs) {
  return traced(registered_brngs, "%s", "rauGetNumRegBrngs");
}
