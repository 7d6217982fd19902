// What the tests of kernels loop over: every function and element type of the function table, the
// processor classes that run here, and a way to call one cell of a kernel row directly.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "services/detect/detect.h"
#include "vector/frame/call.h"
#include "vector/words/thread_words.h"

namespace orba::test {

// Arrays and scalars of a call, whatever its shape.
struct Operands {
  const void* in[2];
  void* out[2];
  const void* scalars;
};

enum class Kind { in, out, scalar };
template <class P>
constexpr Kind kind_of = !std::is_pointer_v<P>                       ? Kind::scalar
                         : std::is_const_v<std::remove_pointer_t<P>> ? Kind::in
                                                                     : Kind::out;

// What a signature says, as ORBA_SIGNATURE gives it for a shape and type.
template <class Signature>
struct Shape;
template <class... P>
struct Shape<void(int32_t, P...)> {
  static constexpr Kind kinds[] = {kind_of<P>...};
  static constexpr int parts[] = {std::is_arithmetic_v<std::remove_pointer_t<P>> ? 1 : 2 ...};

  static constexpr int first(Kind kind) {
    return static_cast<int>(std::find(kinds, std::end(kinds), kind) - kinds);
  }
  // Parameters of a kind among the first ones.
  static constexpr int count(Kind kind, size_t before = sizeof...(P)) {
    return static_cast<int>(std::count(kinds, kinds + before, kind));
  }
  template <class Q>
  static Q argument(const Operands& x, int at) {
    if constexpr (kind_of<Q> == Kind::in) return static_cast<Q>(x.in[at]);
    if constexpr (kind_of<Q> == Kind::out) return static_cast<Q>(x.out[at]);
    if constexpr (kind_of<Q> == Kind::scalar) return static_cast<const Q*>(x.scalars)[at];
  }
  // Calls action(arguments...) with those of a call.
  template <class Action>
  static void apply(const Operands& x, Action action) {
    [&]<size_t... i>(std::index_sequence<i...>) { action(argument<P>(x, count(kind_of<P>, i))...); }
    (std::index_sequence_for<P...>{});
  }
  static void invoke(vector::KamKernel kernel, int n, const Operands& x) {
    apply(x, [&](P... p) { reinterpret_cast<void (*)(int32_t, P...)>(kernel)(n, p...); });
  }
};

struct Subject {
  const char* function;
  char type;
  const vector::KamKernelRow* row;
  vector::CallKind kind;
  int inputs, outputs, scalars;
  int parts_in, parts_out;  // numbers in an element of the arrays
  void (*invoke)(vector::KamKernel kernel, int n, const Operands& x);

  std::string name() const { return std::string("v") + type + function; }
  // Arguments of an element; a single scalar is one.
  int operands() const { return inputs + (scalars == 1); }
  bool complex() const { return type == 'c' || type == 'z'; }
  // Numbers of an element, arguments or results, whichever has more.
  int parts() const { return std::max(parts_in, outputs * parts_out); }
  vector::KamKernel kernel(int kernel_class, uint32_t accuracy) const {
    return row->kernel[vector::row_index(kernel_class, accuracy)];
  }
};

template <class Signature>
Subject make_subject(const char* function, char type, const vector::KamKernelRow& row,
                     vector::CallKind kind) {
  using S = Shape<Signature>;
  return {function,
          type,
          &row,
          kind,
          S::count(Kind::in),
          S::count(Kind::out),
          S::count(Kind::scalar),
          S::parts[S::first(Kind::in)],
          S::parts[S::first(Kind::out)],
          S::invoke};
}

inline std::ostream& operator<<(std::ostream& stream, const Subject& subject) {
  return stream << subject.name();
}

// The rows of a table as a list of subjects; lean functions compute nothing.
#define ORBA_SUBJECT_(t, Name, shape, call)                                            \
  make_subject<ORBA_SIGNATURE(shape, t)>(#Name, #t[0], ::orba::vector::row_v##t##Name, \
                                         ::orba::vector::CallKind::call),
#define ORBA_SUBJECTS(Name, name, shape, types, kernels, call) \
  ORBA_KAM_TYPES(types)                                        \
  (ORBA_SUBJECT_, Name, shape, call)

inline std::vector<Subject> without_lean(std::vector<Subject> list) {
  std::erase_if(list, [](const Subject& s) { return s.kind == vector::CallKind::lean; });
  return list;
}

inline const std::vector<Subject>& subjects() {
  static const std::vector<Subject> list = without_lean({
#define ORBA_KAM_FUNCTION ORBA_SUBJECTS
#include "vector/functions.def"
#undef ORBA_KAM_FUNCTION
  });
  return list;
}

// Classes whose instructions this processor has.
inline std::vector<int> live_classes() {
  std::vector<int> live;
  for (const int build : services::kBuilds) {
    if (build <= services::kam_class()) live.push_back(build);
  }
  return live;
}

inline constexpr uint32_t kAccuracies[] = {KAM_HA, KAM_LA, KAM_EP};

inline const char* accuracy_name(uint32_t accuracy) {
  return accuracy == KAM_HA ? "HA" : accuracy == KAM_LA ? "LA" : "EP";
}

// The live classes that share one kernel at one accuracy.
struct Cell {
  uint32_t accuracy;
  std::vector<int> classes;

  std::string name() const {
    std::string text = accuracy_name(accuracy);
    for (const int kernel_class : classes) {
      text += (kernel_class == classes.front() ? " class " : ", ") + std::to_string(kernel_class);
    }
    return text;
  }
};

// Every live cell of a row, those that hold the same kernel together.
inline std::vector<Cell> cells(const Subject& subject) {
  std::vector<Cell> list;
  for (const uint32_t accuracy : kAccuracies) {
    const size_t first = list.size();
    for (const int kernel_class : live_classes()) {
      const vector::KamKernel kernel = subject.kernel(kernel_class, accuracy);
      size_t at = first;
      while (at < list.size() && subject.kernel(list[at].classes[0], accuracy) != kernel) ++at;
      if (at == list.size()) list.push_back({accuracy, {}});
      list[at].classes.push_back(kernel_class);
    }
  }
  return list;
}

// Calls action(Type_s{}) ... for the type of a subject.
template <class Action>
decltype(auto) with_type(const Subject& subject, Action&& action) {
  switch (subject.type) {
    case 's':
      return action(vector::Type_s{});
    case 'd':
      return action(vector::Type_d{});
    case 'c':
      return action(vector::Type_c{});
    default:
      return action(vector::Type_z{});
  }
}

// The scalars of functions that have more than one.
template <class Real>
constexpr Real kScalars[] = {1.25, -0.5, 0.75, 3};

// Runs a kernel of any shape over arrays that have parts() reals per element, arguments and results
// alike (missing ones are not read, and become 0). b is the second argument, also where that is a
// scalar: then a row of equal ones is a call of its own, which the base pointer hides from the reports.
template <class Type, class Real = typename Type::Real>
void call(const Subject& subject, vector::KamKernel kernel, int n, const Real* a, const Real* b,
          Real* r) {
  const int parts = subject.parts(), in = subject.parts_in, out = subject.parts_out;
  if (in == parts && out == parts && subject.scalars != 1) {
    return subject.invoke(kernel, n, {{a, b}, {r, nullptr}, kScalars<Real>});
  }
  std::vector<Real> x(n * in), s(n * in), y(n * out), z(n * out);
  for (int i = 0; i < n; ++i) {
    std::copy_n(a + i * parts, in, &x[i * in]);
    if (subject.operands() == 2) std::copy_n(b + i * parts, in, &s[i * in]);
  }
  if (subject.scalars == 1) {
    vector::thread_words().base = x.data();
    const auto same = [&](int i, int j) {
      return std::memcmp(&s[i * in], &s[j * in], in * sizeof(Real)) == 0;
    };
    for (int i = 0, end = 0; i < n; i = end) {
      while (end < n && same(i, end)) ++end;
      subject.invoke(kernel, end - i,
                     {{&x[i * in], nullptr}, {&y[i * out], &z[i * out]}, &s[i * in]});
    }
    vector::thread_words().base = nullptr;
  } else {
    subject.invoke(kernel, n, {{x.data(), s.data()}, {y.data(), z.data()}, kScalars<Real>});
  }
  std::fill_n(r, n * parts, Real{0});
  for (int i = 0; i < n; ++i) {
    std::copy_n(&y[i * out], out, r + i * parts);
    if (subject.outputs == 2) std::copy_n(&z[i * out], out, r + i * parts + out);
  }
}

// Sets this thread's words for a test and gives the old ones back.
class WordsScope {
 public:
  explicit WordsScope(uint32_t mode, KamErrorCallBack callback = nullptr)
      : old_(vector::thread_words()) {
    vector::thread_words() = {mode, KAM_STATUS_OK, callback, nullptr};
  }
  ~WordsScope() { vector::thread_words() = old_; }
  WordsScope(const WordsScope&) = delete;
  WordsScope& operator=(const WordsScope&) = delete;

 private:
  vector::KamThreadWords old_;
};

// Keeps the error reports that kernels make while it lives (mode with KAM_ERRMODE_CALLBACK).
class Recorder {
 public:
  explicit Recorder(uint32_t mode) : scope_(mode | KAM_ERRMODE_CALLBACK, &record) {
    reports().clear();
  }
  static std::vector<KamErrorContext>& reports() {
    thread_local std::vector<KamErrorContext> list;
    return list;
  }

 private:
  static int record(KamErrorContext* context) {
    reports().push_back(*context);
    return 1;
  }
  WordsScope scope_;
};

}  // namespace orba::test
