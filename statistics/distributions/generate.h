// The frame of every exported variate generator: checks in a fixed order, the running class's
// kernel, the trace.
#pragma once

#include <stdint.h>

#include <initializer_list>

#include "statistics/frame/dispatch.h"
#include "statistics/frame/entry.h"
#include "statistics/streams/stream.h"

namespace orba::statistics {

// Which values of the method argument a distribution takes.
using MethodTest = bool (*)(int32_t method);
constexpr bool standard_only(int32_t method) { return method == RAU_METHOD_STD; }
constexpr bool standard_or_accurate(int32_t method) {
  return method == RAU_METHOD_STD || method == RAU_METHOD_ACCURATE;
}

// A test of the distribution's parameters; they are made in order.
struct ParameterCheck {
  bool fault;
  int32_t position;
};

// A kernel may take the checks for granted. Its status goes to the caller unreported.
template <class Element, class... P>
inline int32_t generate(
    const char* name, const char* format, MethodTest accepts,
    const ByClass<int32_t(int32_t, StreamState*, int32_t, Element*, P...)>& kernels,
    std::initializer_list<ParameterCheck> checks, int32_t method, StreamState* stream, int32_t n,
    Element* r, P... parameters) noexcept {
  if (method < 0) return refuse(name, 1, RAU_ERROR_BADARGS);
  if (const int32_t bad = check_stream(stream)) return refuse(name, 2, bad);
  if (n < 0) return refuse(name, 3, RAU_ERROR_BADARGS);
  if (n == 0) return RAU_STATUS_OK;
  if (r == nullptr) return refuse(name, 4, RAU_ERROR_BADARGS);
  if (!accepts(method)) return refuse(name, 1, RAU_ERROR_BADARGS);
  for (const ParameterCheck& check : checks) {
    if (check.fault) return refuse(name, check.position, RAU_ERROR_BADARGS);
  }
  const auto kernel = kernels[static_cast<size_t>(running_class())];
  const auto call = [&] { return kernel(method, stream, n, r, parameters...); };
  return traced(call, format, name, method, static_cast<void*>(stream), n, static_cast<void*>(r),
                parameters...);
}

}  // namespace orba::statistics

// First arguments of every variate generator.
#define ORBA_RNG_ARGUMENTS(Element) \
  V(int32_t, method), H(StreamState*, stream), V(int32_t, n), P(Element*, r)
