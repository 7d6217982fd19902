// What the tests of kernels loop over: every function and element type of the function table, the
// processor classes that run here, and a way to call one cell of a kernel row directly.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "services/detect/detect.h"
#include "vector/frame/rows.h"
#include "vector/words/shapes.h"
#include "vector/words/thread_words.h"

namespace orba::test {

// A shape that is not listed here stops the build: the callers below have to learn it first.
enum class Shape { k1i_1o, k2i_1o };

struct Subject {
  const char* function;
  char type;
  Shape shape;
  const vector::KamKernelRow* row;

  std::string name() const { return std::string("v") + type + function; }
  int operands() const { return shape == Shape::k2i_1o ? 2 : 1; }
  bool complex() const { return type == 'c' || type == 'z'; }
  int parts() const { return complex() ? 2 : 1; }
  vector::KamKernel kernel(int kernel_class, uint32_t accuracy) const {
    return row->kernel[vector::row_index(kernel_class, accuracy)];
  }
};

inline std::ostream& operator<<(std::ostream& stream, const Subject& subject) {
  return stream << subject.name();
}

inline const std::vector<Subject>& subjects() {
  static const std::vector<Subject> list = {
#define ORBA_SUBJECT(t, Name, shape) {#Name, #t[0], Shape::k##shape, &vector::row_v##t##Name},
#define ORBA_KAM_FUNCTION(Name, name, shape, types, ...) \
  ORBA_KAM_TYPES(types)                                  \
  (ORBA_SUBJECT, Name, shape)
#include "vector/functions.def"
#undef ORBA_KAM_FUNCTION
#undef ORBA_SUBJECT
  };
  return list;
}

// Classes whose instructions this processor has.
inline std::vector<int> live_classes() {
  std::vector<int> live;
  for (const int kernel_class : {0, 1, 2, 3, 5}) {
    if (kernel_class <= services::kam_class()) live.push_back(kernel_class);
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

// Runs a kernel over arrays of reals (a complex element is two of them); b is ignored by functions
// of one input.
template <class Type>
void call(const Subject& subject, vector::KamKernel kernel, int n, const typename Type::Real* a,
          const typename Type::Real* b, typename Type::Real* r) {
  using Element = typename Type::Element;
  const auto* ea = reinterpret_cast<const Element*>(a);
  const auto* eb = reinterpret_cast<const Element*>(b);
  auto* er = reinterpret_cast<Element*>(r);
  switch (subject.shape) {
    case Shape::k1i_1o:
      return reinterpret_cast<void (*)(int32_t, const Element*, Element*)>(kernel)(n, ea, er);
    case Shape::k2i_1o:
      return reinterpret_cast<void (*)(int32_t, const Element*, const Element*, Element*)>(kernel)(
          n, ea, eb, er);
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
