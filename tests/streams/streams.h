// What the tests of streams share: the generators on every class, streams that delete themselves,
// arrays that notice writes beside them.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "include/orba_rau.h"
#include "statistics/streams/generators/table.h"
#include "statistics/streams/stream_state.h"
#include "tests/streams/reference.h"
#include "tests/support/rau_class.h"

namespace orba::test {

using Words = std::vector<uint32_t>;

// A generator on a class that runs here.
struct Subject {
  std::string generator;
  int32_t brng;
  int rau_class;

  const statistics::Brng& row() const { return *statistics::find_brng(rau_class, brng); }
  bool can(uint32_t ability) const { return (row().abilities & ability) != 0; }
  size_t output_words() const { return static_cast<size_t>(row().WordSize) / sizeof(uint32_t); }
  bool fused() const { return rau_class >= 3; }
  int32_t move_by_words(StreamState* stream, const std::vector<uint64_t>& steps) const {
    return row().InitStream(3, stream, static_cast<int32_t>(steps.size()), steps.data());
  }
};

inline std::ostream& operator<<(std::ostream& stream, const Subject& subject) {
  return stream << subject.generator << ", class " << subject.rau_class;
}

// Every generator of the table, Wichmann-Hill by its first and its last set.
inline std::vector<Subject> subjects() {
  std::vector<Subject> list;
  for (int c = 0; c <= highest_rau_class(); ++c) {
#define ORBA_BRNG(row, Name, size, seeds, zero, word, bits, subs, abilities, uniform, blocks) \
  list.push_back({#Name, (row + 1) << 20, c});                                                \
  if (subs > 1) list.push_back({#Name " last", ((row + 1) << 20) + subs - 1, c});
#include "statistics/streams/generators/brngs.def"
#undef ORBA_BRNG
  }
  return list;
}

// Runs a test for every subject, with its class as the running one.
template <class Test>
void for_each_subject(Test test) {
  for (const Subject& subject : subjects()) {
    SCOPED_TRACE(testing::Message() << subject);
    const RauClass running(subject.rau_class);
    test(subject);
    if (testing::Test::HasFatalFailure()) return;
  }
}

// n elements at a changing alignment, between elements that must stay as they are.
template <class T>
class Guarded {
 public:
  explicit Guarded(size_t n) : n_(n), first_(kGuard + shift_++ % 16), all_(first_ + n + kGuard) {
    std::memset(all_.data(), kPattern, all_.size() * sizeof(T));
  }
  T* data() { return all_.data() + first_; }
  std::vector<T> take() {
    expect_untouched(0, first_);
    expect_unwritten_from(n_);
    return {data(), data() + n_};
  }
  // That elements from this one on are as they were.
  void expect_unwritten_from(size_t element) const {
    expect_untouched(first_ + element, all_.size());
  }

 private:
  static constexpr size_t kGuard = 32;
  static constexpr int kPattern = 0xa5;
  void expect_untouched(size_t from, size_t to) const {
    const auto* bytes = reinterpret_cast<const unsigned char*>(all_.data());
    EXPECT_TRUE(std::all_of(bytes + from * sizeof(T), bytes + to * sizeof(T),
                            [](unsigned char byte) { return byte == kPattern; }))
        << "elements beside " << n_ << " were written";
  }
  static inline size_t shift_ = 0;
  size_t n_, first_;
  std::vector<T> all_;
};

// Equality of every bit.
template <class T>
testing::AssertionResult same(const std::vector<T>& got, const std::vector<T>& expected) {
  size_t i = 0;
  const size_t n = std::min(got.size(), expected.size());
  while (i < n && std::memcmp(&got[i], &expected[i], sizeof(T)) == 0) ++i;
  if (i == std::max(got.size(), expected.size())) return testing::AssertionSuccess();
  auto failure = testing::AssertionFailure() << "element " << i << " of " << got.size();
  if (i < n) failure << " is " << got[i] << ", expected " << expected[i];
  return failure << " for " << expected.size();
}

template <class T>
std::vector<T> slice(const std::vector<T>& all, size_t from, size_t count) {
  const auto first = all.begin() + static_cast<ptrdiff_t>(from);
  return {first, first + static_cast<ptrdiff_t>(count)};
}

template <class T>
void append(std::vector<T>& all, const std::vector<T>& more) {
  all.insert(all.end(), more.begin(), more.end());
}

// A stream of the running class.
class Stream {
 public:
  Stream(int32_t brng, const Words& seed) {
    EXPECT_EQ(rauNewStreamEx(&handle_, brng, static_cast<int32_t>(seed.size()), seed.data()), 0);
  }
  explicit Stream(StreamState* handle) : handle_(handle) {}
  Stream(Stream&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  ~Stream() {
    if (handle_ != nullptr) rauDeleteStream(&handle_);
  }
  operator StreamState*() const { return handle_; }
  StreamState** address() { return &handle_; }

  Stream copy() const {
    StreamState* made = nullptr;
    EXPECT_EQ(rauCopyStream(&made, handle_), 0);
    return Stream(made);
  }

  // The next n raw outputs, or numbers.
  Words words(size_t n) { return draw<uint32_t>(viRngUniformBits, 0, n * output_words(), n); }
  std::vector<double> doubles(size_t n, double a = 0, double b = 1, int32_t method = 0) {
    return draw<double>(vdRngUniform, method, n, n, a, b);
  }
  std::vector<float> floats(size_t n, float a = 0, float b = 1, int32_t method = 0) {
    return draw<float>(vsRngUniform, method, n, n, a, b);
  }
  std::vector<int32_t> integers(size_t n, int32_t a, int32_t b) {
    return draw<int32_t>(viRngUniform, 0, n, n, a, b);
  }
  std::vector<double> reals(size_t n, double a, double b, int32_t method = 0) {
    return doubles(n, a, b, method);
  }
  std::vector<float> reals(size_t n, float a, float b, int32_t method = 0) {
    return floats(n, a, b, method);
  }

  template <class T = uint32_t>
  T at(size_t offset) const {
    T value;
    std::memcpy(&value, reinterpret_cast<const char*>(handle_) + offset, sizeof value);
    return value;
  }
  Words state_words(size_t first, size_t count) const {
    Words words;
    for (size_t i = 0; i < count; ++i) words.push_back(at(16 + 4 * (first + i)));
    return words;
  }
  // Header and state.
  std::string bytes() const {
    return {reinterpret_cast<const char*>(handle_), static_cast<size_t>(row().StreamStateSize)};
  }
  const BrngProperties& row() const {
    return *statistics::find_brng(statistics::running_class(), handle_->brng);
  }
  size_t output_words() const { return static_cast<size_t>(row().WordSize) / sizeof(uint32_t); }

 private:
  // The elements that a call for n of them succeeds to write, and no others.
  template <class T, class Function, class... P>
  std::vector<T> draw(Function function, int32_t method, size_t elements, size_t n, P... p) {
    Guarded<T> r(elements);
    EXPECT_EQ(function(method, handle_, static_cast<int32_t>(n), r.data(), p...), 0);
    return r.take();
  }

  StreamState* handle_ = nullptr;
};

// A seed for any generator: as many words as it takes at most.
inline Words full_seed(const Subject& subject) {
  Words seed(static_cast<size_t>(subject.row().NSeeds));
  uint32_t word = 2463534242;
  for (uint32_t& w : seed) w = word = word * 1664525 + 1013904223;
  return seed;
}

// The first n raw outputs by the reference, as the library writes them.
inline Words reference_words(const Subject& subject, const Words& seed, size_t n) {
  const auto reference = make_reference(subject.brng, seed);
  Words words;
  for (size_t i = 0; i < n; ++i) {
    const Output u = reference.next();
    words.insert(words.end(), u.begin(), u.begin() + subject.output_words());
  }
  return words;
}

}  // namespace orba::test
