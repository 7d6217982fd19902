// The frame of every exported variate generator: checks in a fixed order, the running class's
// kernel, the trace. A distribution is one line of the macros below.
#pragma once

#include <stdint.h>

#include <array>
#include <initializer_list>

#include "statistics/frame/dispatch.h"
#include "statistics/frame/entry.h"
#include "statistics/streams/generators/table.h"
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

// What a kernel is: it may take the checks for granted, and its status goes to the caller
// unreported.
template <class Element, class... P>
using VariateKernel = int32_t(Source source, int32_t method, int32_t n, Element* r, P...);

// The format of a call's trace, from the types of the distribution's parameters.
constexpr const char* format_of(double) { return ",%lf"; }
constexpr const char* format_of(float) { return ",%f"; }
constexpr const char* format_of(int32_t) { return ",%d"; }
constexpr const char* format_of(const void*) { return ",%p"; }

template <class... P>
constexpr std::array<char, 64> kVariateFormat = [] {
  std::array<char, 64> text = {};
  size_t end = 0;
  for (const char* part : {"%s(%d,%p,%d,%p", format_of(P{})..., ")"}) {
    while (*part != '\0') text[end++] = *part++;
  }
  return text;
}();

template <class Element, class... P>
inline int32_t generate(const char* name, MethodTest accepts,
                        const ByClass<VariateKernel<Element, P...>>& kernels,
                        std::initializer_list<ParameterCheck> checks, int32_t method,
                        StreamState* stream, int32_t n, Element* r, P... parameters) noexcept {
  if (method < 0) return refuse(name, 1, RAU_ERROR_BADARGS);
  if (const int32_t bad = check_stream(stream)) return refuse(name, 2, bad);
  if (n < 0) return refuse(name, 3, RAU_ERROR_BADARGS);
  if (n == 0) return RAU_STATUS_OK;
  if (r == nullptr) return refuse(name, 4, RAU_ERROR_BADARGS);
  if (!accepts(method)) return refuse(name, 1, RAU_ERROR_BADARGS);
  for (const ParameterCheck& check : checks) {
    if (check.fault) return refuse(name, check.position, RAU_ERROR_BADARGS);
  }
  const int rau_class = running_class();
  const auto kernel = kernels[static_cast<size_t>(rau_class)];
  const Source source = {stream, &brng_of(rau_class, *stream)};
  const auto call = [&] { return kernel(source, method, n, r, parameters...); };
  return traced(call, kVariateFormat<P...>.data(), name, method, static_cast<void*>(stream), n,
                static_cast<void*>(r), parameters...);
}

}  // namespace orba::statistics

// ---- A distribution ----
//
//   ORBA_VARIATES(Uniform, uniform, standard_or_accurate, (V(Real, a), V(Real, b)), {a >= b, 5})
//
// defines vdRngUniform and vsRngUniform in both forms, over kernels of these names: the methods that
// they take, the parameters behind r (marked as in entry.h; Real is double or float), and the tests
// of these, each with the position to report. ORBA_VARIATE does so for one function of any name and
// element type. To be used in namespace orba::statistics.
#define ORBA_VARIATE(Name, name, Element, accepts, parameters, ...)                           \
  ORBA_CLASS_KERNELS(Name,                                                                    \
                     VariateKernel<Element ORBA_BEHIND(ORBA_TYPE_, ORBA_UNPACK parameters)>); \
  ORBA_ENTRY(Name, name, V(int32_t, method), H(StreamState*, stream), V(int32_t, n),          \
             P(Element*, r) ORBA_BEHIND(ORBA_MARKED_, ORBA_UNPACK parameters)) {              \
    return generate(#Name, accepts, Name##_kernels, {__VA_ARGS__}, method, stream, n,         \
                    r ORBA_BEHIND(ORBA_NAME_, ORBA_UNPACK parameters));                       \
  }
#define ORBA_VARIATES(Name, name, accepts, parameters, ...)                      \
  namespace in_double {                                                          \
  using Real = double;                                                           \
  ORBA_VARIATE(vdRng##Name, vdrng##name, Real, accepts, parameters, __VA_ARGS__) \
  }                                                                              \
  namespace in_single {                                                          \
  using Real = float;                                                            \
  ORBA_VARIATE(vsRng##Name, vsrng##name, Real, accepts, parameters, __VA_ARGS__) \
  }

#define ORBA_UNPACK(...) __VA_ARGS__
#define ORBA_BEHIND(prefix, ...) __VA_OPT__(, ORBA_EACH(prefix, __VA_ARGS__))
#define ORBA_TYPE_P(type, name) type
#define ORBA_TYPE_V(type, name) type
#define ORBA_TYPE_H(type, name) type
#define ORBA_MARKED_P(type, name) P(type, name)
#define ORBA_MARKED_V(type, name) V(type, name)
#define ORBA_MARKED_H(type, name) H(type, name)
