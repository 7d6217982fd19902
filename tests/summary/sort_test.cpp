#include "statistics/summary/sort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "services/detect/detect.h"

// The code as class 1 compiles it, for what no caller can reach on purpose.
#define ORBA_CLASS 1
#define ORBA_CLASS_NAMESPACE sort_test
#include "statistics/summary/kernels/sort.cpp"

namespace orba::test {
namespace {

template <class Real>
using BitsOf = std::conditional_t<sizeof(Real) == 8, uint64_t, uint32_t>;
template <class Real>
BitsOf<Real> bits_of(Real x) {
  return std::bit_cast<BitsOf<Real>>(x);
}

// The promised order, from its definition.
template <class Real>
bool precedes(Real a, Real b) {
  const auto group = [](Real x) { return !std::isnan(x) ? 0 : !std::signbit(x) ? 1 : 2; };
  if (group(a) != group(b)) return group(a) < group(b);
  switch (group(a)) {
    case 0:
      return a < b || (a == b && std::signbit(a) && !std::signbit(b));
    case 1:
      return bits_of(a) < bits_of(b);
    default:
      return bits_of(a) > bits_of(b);
  }
}

template <class Real>
std::vector<BitsOf<Real>> all_bits(const std::vector<Real>& x) {
  std::vector<BitsOf<Real>> bits(x.size());
  std::transform(x.begin(), x.end(), bits.begin(), bits_of<Real>);
  return bits;
}

template <class Real>
std::vector<Real> sorted(std::vector<Real> x) {
  std::sort(x.begin(), x.end(), precedes<Real>);
  return x;
}

struct Pattern {
  const char* name;
  std::function<double(int64_t i, int64_t n, std::mt19937_64& engine)> value;
};

const std::vector<Pattern>& patterns() {
  using Numbers = std::numeric_limits<double>;
  using Engine = std::mt19937_64;
  static const std::vector<Pattern> list = {
      {"normal", [](int64_t, int64_t, Engine& e) { return std::normal_distribution<double>()(e); }},
      {"all sizes", [](int64_t, int64_t, Engine& e) { return std::bit_cast<double>(e()); }},
      {"two values", [](int64_t, int64_t, Engine& e) { return e() % 2 == 0 ? 0.5 : -3.0; }},
      {"signed zeros", [](int64_t, int64_t, Engine& e) { return e() % 2 == 0 ? 0.0 : -0.0; }},
      {"few values", [](int64_t, int64_t, Engine& e) { return static_cast<double>(e() % 37); }},
      {"one of many",
       [](int64_t, int64_t, Engine& e) { return e() % 3 == 0 ? static_cast<double>(e()) : 0.0; }},
      {"special",
       [](int64_t, int64_t, Engine& e) {
         const double nan = std::bit_cast<double>(0x7ff8000000000000 | (e() & 0xf0000000));
         const double values[] = {0,    -0.0, Numbers::infinity(),   -Numbers::infinity(),
                                  nan,  -nan, Numbers::denorm_min(), -Numbers::denorm_min(),
                                  1e38, -1.5, Numbers::max(),        -Numbers::max()};
         return values[e() % std::size(values)];
       }},
      {"constant", [](int64_t, int64_t, Engine&) { return -7.25; }},
      {"greatest key", [](int64_t, int64_t, Engine&) { return -Numbers::signaling_NaN(); }},
      {"least key", [](int64_t, int64_t, Engine&) { return -Numbers::infinity(); }},
      {"ascending", [](int64_t i, int64_t, Engine&) { return static_cast<double>(i); }},
      {"descending", [](int64_t i, int64_t n, Engine&) { return static_cast<double>(n - i); }},
      {"sawtooth", [](int64_t i, int64_t, Engine&) { return static_cast<double>(i % 64); }},
      {"organ pipe",
       [](int64_t i, int64_t n, Engine&) { return static_cast<double>(std::min(i, n - i)); }},
      {"ascending with stray ends",
       [](int64_t i, int64_t n, Engine&) { return static_cast<double>(i == n - 1 ? -1 : i); }},
  };
  return list;
}

template <class Real>
std::vector<Real> make(const Pattern& pattern, int64_t n, uint64_t seed = 1) {
  std::mt19937_64 engine(seed);
  std::vector<Real> x(static_cast<size_t>(n));
  for (int64_t i = 0; i < n; ++i) x[i] = static_cast<Real>(pattern.value(i, n, engine));
  return x;
}

// Data and scratch of n elements each, off alignment, between guards.
template <class Real>
class Guarded {
 public:
  explicit Guarded(const std::vector<Real>& data) : n_(data.size()) {
    for (auto& array : arrays_) array.assign(n_ + 2 * kGuard, kMark);
    std::copy(data.begin(), data.end(), x());
  }
  Real* x() { return arrays_[0].data() + kGuard; }
  Real* scratch() { return arrays_[1].data() + kGuard; }
  std::vector<Real> data() { return {x(), x() + n_}; }
  bool intact() const {
    const auto is_mark = [](Real a) { return a == kMark; };
    return std::all_of(std::begin(arrays_), std::end(arrays_), [&](const auto& array) {
      return std::all_of(array.begin(), array.begin() + kGuard, is_mark) &&
             std::all_of(array.end() - kGuard, array.end(), is_mark);
    });
  }

 private:
  static constexpr int kGuard = 33;
  static constexpr Real kMark = Real(-12345.625);
  size_t n_;
  std::vector<Real> arrays_[2];
};

std::vector<int> live_classes() {
  std::vector<int> live(1 + static_cast<size_t>(services::rau_class(services::rau_cpu_type())));
  std::iota(live.begin(), live.end(), 0);
  return live;
}

template <class Real>
struct Kernels;
template <>
struct Kernels<double> {
  static constexpr auto& sort = statistics::summary::ss_d_sort_kernels;
  static constexpr auto& radix_sort = statistics::summary::ss_d_radix_sort_kernels;
  static constexpr auto& order_statistics_at =
      statistics::summary::ss_d_order_statistics_at_kernels;
};
template <>
struct Kernels<float> {
  static constexpr auto& sort = statistics::summary::ss_s_sort_kernels;
  static constexpr auto& radix_sort = statistics::summary::ss_s_radix_sort_kernels;
  static constexpr auto& order_statistics_at =
      statistics::summary::ss_s_order_statistics_at_kernels;
};

template <class Real>
class SortTest : public testing::Test {};
using Reals = testing::Types<double, float>;
TYPED_TEST_SUITE(SortTest, Reals);

template <class Real>
void check_sorts(const std::vector<Real>& data) {
  const auto expected = all_bits(sorted(data));
  for (const int c : live_classes()) {
    for (statistics::summary::Sort<Real>* kernel :
         {Kernels<Real>::sort[c], Kernels<Real>::radix_sort[c]}) {
      Guarded<Real> arrays(data);
      kernel(arrays.x(), static_cast<int64_t>(data.size()), arrays.scratch());
      ASSERT_EQ(all_bits(arrays.data()), expected) << "class " << c << ", n " << data.size();
      ASSERT_TRUE(arrays.intact()) << "class " << c << ", n " << data.size();
    }
  }
}

TYPED_TEST(SortTest, SortsEveryLength) {
  for (const Pattern& pattern : patterns()) {
    SCOPED_TRACE(pattern.name);
    for (int64_t n = 0; n <= 600; ++n) {
      check_sorts(make<TypeParam>(pattern, n, static_cast<uint64_t>(n)));
      if (this->HasFatalFailure()) return;
    }
  }
}

TYPED_TEST(SortTest, SortsLongArrays) {
  for (const Pattern& pattern : patterns()) {
    SCOPED_TRACE(pattern.name);
    for (const int64_t n : {5000, 100003}) {
      check_sorts(make<TypeParam>(pattern, n));
      if (this->HasFatalFailure()) return;
    }
  }
}

// A sorting network is right if it sorts all sequences of zeros and ones: all of them for few
// elements, random ones of every density for full networks.
TYPED_TEST(SortTest, SortsZerosAndOnes) {
  for (int n = 1; n <= 14; ++n) {
    for (int set = 0; set < 1 << n; ++set) {
      std::vector<TypeParam> data(n);
      for (int i = 0; i < n; ++i) data[i] = static_cast<TypeParam>(set >> i & 1);
      check_sorts(data);
      if (this->HasFatalFailure()) return;
    }
  }
  std::mt19937_64 engine(5);
  for (const int n : {32, 64, 128, 256}) {
    for (int round = 0; round < 1000; ++round) {
      std::vector<TypeParam> data(n);
      const uint64_t percent = engine() % 100;
      for (TypeParam& x : data) x = engine() % 100 < percent ? TypeParam(1) : TypeParam(0);
      check_sorts(data);
      if (this->HasFatalFailure()) return;
    }
  }
}

// Ranks at their places, everything between them on the right sides, nothing lost.
template <class Real>
void check_order_statistics(const std::vector<Real>& data, const std::vector<Real>& in_order,
                            const std::vector<int64_t>& ranks) {
  const auto n = static_cast<int64_t>(data.size());
  for (const int c : live_classes()) {
    SCOPED_TRACE("class " + std::to_string(c) + ", n " + std::to_string(n) + ", ranks " +
                 std::to_string(ranks.size()));
    Guarded<Real> arrays(data);
    Kernels<Real>::order_statistics_at[c](arrays.x(), n, ranks.data(),
                                          static_cast<int64_t>(ranks.size()), arrays.scratch());
    const std::vector<Real> got = arrays.data();
    ASSERT_EQ(all_bits(sorted(got)), all_bits(in_order));
    ASSERT_TRUE(arrays.intact());
    int64_t from = 0;
    for (const int64_t k : ranks) {
      ASSERT_EQ(bits_of(got[k]), bits_of(in_order[k])) << "rank " << k;
      for (int64_t i = from; i < k; ++i) ASSERT_FALSE(precedes(got[k], got[i])) << "rank " << k;
      from = std::max(from, k);
    }
    if (ranks.empty()) continue;
    for (int64_t i = from; i < n; ++i) ASSERT_FALSE(precedes(got[i], got[from]));
  }
}

TYPED_TEST(SortTest, PutsOrderStatisticsIntoPlace) {
  for (const Pattern& pattern : patterns()) {
    SCOPED_TRACE(pattern.name);
    for (const int64_t n : {1, 2, 7, 33, 200, 257, 1000, 4097, 20000}) {
      const auto data = make<TypeParam>(pattern, n);
      const auto in_order = sorted(data);
      std::vector<int64_t> quantiles;  // with upper neighbours and repetitions
      for (const int64_t tenths : {0, 1, 1, 3, 5, 7, 9, 10}) {
        quantiles.push_back(tenths * (n - 1) / 10);
        quantiles.push_back(std::min(quantiles.back() + 1, n - 1));
      }
      std::sort(quantiles.begin(), quantiles.end());
      std::vector<int64_t> all(n);
      std::iota(all.begin(), all.end(), 0);
      for (const auto& ranks : std::vector<std::vector<int64_t>>{
               {}, {0}, {n - 1}, {n / 2}, {n / 2, n / 2, n / 2}, {0, n - 1}, quantiles, all}) {
        check_order_statistics(data, in_order, ranks);
        if (this->HasFatalFailure()) return;
      }
    }
  }
}

// The way out of bad luck with pivots.
TYPED_TEST(SortTest, SortsWhenPartitionsAreUsedUp) {
  using sort_test::Key;
  constexpr int64_t n = sort_test::radix_from<TypeParam> - 1;
  std::mt19937_64 engine(9);
  std::vector<BitsOf<TypeParam>> data(n);
  for (auto& key : data) key = static_cast<BitsOf<TypeParam>>(engine());
  const auto as_keys = [](auto& x) { return reinterpret_cast<Key<TypeParam>*>(x.data()); };
  auto expected = data;
  std::sort(as_keys(expected), as_keys(expected) + n);
  const int64_t ranks[] = {0, n / 2, n - 1};
  for (int partitions = 0; partitions < 4; ++partitions) {
    auto x = data, scratch = data;
    const Key<TypeParam> lowest = sort_test::KeyOf<TypeParam>::lowest;
    sort_test::sort_range<TypeParam>(as_keys(x), n, lowest, partitions, as_keys(scratch));
    EXPECT_EQ(x, expected);
    x = data;
    sort_test::select_in_range<TypeParam>(as_keys(x), n, 0, ranks, 3, lowest, partitions,
                                          as_keys(scratch));
    for (const int64_t k : ranks) EXPECT_EQ(x[k], expected[k]);
  }
}

}  // namespace
}  // namespace orba::test
