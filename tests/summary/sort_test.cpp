#include "statistics/summary/sort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <tuple>
#include <type_traits>
#include <vector>

#include "tests/support/rau_class.h"

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

// The promised order, from its definition: numbers, -0 before 0, then NaN by their bits, those
// without sign first and up, the others down.
template <class Real>
bool precedes(Real a, Real b) {
  const auto group = [](Real x) { return !std::isnan(x) ? 0 : !std::signbit(x) ? 1 : 2; };
  if (group(a) != group(b)) return group(a) < group(b);
  if (group(a) == 0) return a < b || (a == b && std::signbit(a) && !std::signbit(b));
  return group(a) == 1 ? bits_of(a) < bits_of(b) : bits_of(a) > bits_of(b);
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
  double (*value)(int64_t i, int64_t n, std::mt19937_64& engine);
};
using Limits = std::numeric_limits<double>;
using Engine = std::mt19937_64;
const Pattern kPatterns[] = {
    {"normal", [](int64_t, int64_t, Engine& e) { return std::normal_distribution<double>()(e); }},
    {"all sizes", [](int64_t, int64_t, Engine& e) { return std::bit_cast<double>(e()); }},
    {"two values", [](int64_t, int64_t, Engine& e) { return e() % 2 == 0 ? 0.5 : -3.0; }},
    {"signed zeros", [](int64_t, int64_t, Engine& e) { return e() % 2 == 0 ? 0.0 : -0.0; }},
    {"few values", [](int64_t, int64_t, Engine& e) { return double(e() % 37); }},
    {"one of many", [](int64_t, int64_t, Engine& e) { return e() % 3 == 0 ? double(e()) : 0; }},
    {"special",
     [](int64_t, int64_t, Engine& e) {
       const double nan = std::bit_cast<double>(0x7ff8000000000000 | (e() & 0xf0000000)),
                    infinity = Limits::infinity(), tiny = Limits::denorm_min();
       const double values[] = {0, infinity, nan, tiny, 1e38, 1.5, Limits::max()};
       return e() % 2 == 0 ? values[e() % 7] : -values[e() % 7];
     }},
    {"greatest key", [](int64_t, int64_t, Engine&) { return -Limits::signaling_NaN(); }},
    {"ascending", [](int64_t i, int64_t, Engine&) { return double(i); }},
    {"organ pipe", [](int64_t i, int64_t n, Engine&) { return double(std::min(i, n - i)); }},
    {"stray end", [](int64_t i, int64_t n, Engine&) { return double(i == n - 1 ? -1 : i); }},
};

template <class Real>
std::vector<Real> make(const Pattern& pattern, int64_t n, uint64_t seed = 1) {
  std::mt19937_64 engine(seed);
  std::vector<Real> x(static_cast<size_t>(n));
  for (int64_t i = 0; i < n; ++i) x[i] = static_cast<Real>(pattern.value(i, n, engine));
  return x;
}

// Data and scratch of n elements each, off alignment, between guards.
template <class Real>
struct Guarded {
  explicit Guarded(const std::vector<Real>& data) : x(data.size() + 2 * kGuard, kMark), y(x) {
    std::copy(data.begin(), data.end(), x.begin() + kGuard);
  }
  std::vector<Real> data() { return {x.begin() + kGuard, x.end() - kGuard}; }
  bool intact() const {
    const auto marks = [](const auto& array) {
      return std::count(array.begin(), array.begin() + kGuard, kMark) +
             std::count(array.end() - kGuard, array.end(), kMark);
    };
    return marks(x) == 2 * kGuard && marks(y) == 2 * kGuard;
  }
  static constexpr int kGuard = 33;
  static constexpr Real kMark = Real(-12345.625);
  std::vector<Real> x, y;
};

// Sort, radix sort, order statistics.
template <class Real>
auto kernels_of(size_t c) {
  using namespace statistics::summary;
  if constexpr (sizeof(Real) == 8) {
    return std::tuple(ss_d_sort_kernels[c], ss_d_radix_sort_kernels[c],
                      ss_d_order_statistics_at_kernels[c]);
  } else {
    return std::tuple(ss_s_sort_kernels[c], ss_s_radix_sort_kernels[c],
                      ss_s_order_statistics_at_kernels[c]);
  }
}

template <class Real>
class SortTest : public testing::Test {};
using Reals = testing::Types<double, float>;
TYPED_TEST_SUITE(SortTest, Reals);

template <class Real>
void check_sorts(const std::vector<Real>& data) {
  const auto expected = all_bits(sorted(data));
  for (int c = 0; c <= highest_rau_class(); ++c) {
    const auto [sort, radix_sort, at] = kernels_of<Real>(c);
    for (auto* kernel : {sort, radix_sort}) {
      Guarded<Real> arrays(data);
      kernel(&arrays.x[33], static_cast<int64_t>(data.size()), &arrays.y[33]);
      ASSERT_EQ(all_bits(arrays.data()), expected) << "class " << c << ", n " << data.size();
      ASSERT_TRUE(arrays.intact()) << "class " << c << ", n " << data.size();
    }
  }
}

TYPED_TEST(SortTest, SortsEveryLength) {
  for (const Pattern& pattern : kPatterns) {
    SCOPED_TRACE(pattern.name);
    for (int64_t n = 0; n <= 602; ++n) {
      const int64_t length = n <= 600 ? n : n == 601 ? 5000 : 100003;
      check_sorts(make<TypeParam>(pattern, length, static_cast<uint64_t>(n)));
      if (this->HasFatalFailure()) return;
    }
  }
}

// Ranks at their places, everything between them on the right sides, nothing lost.
template <class Real>
void check_order_statistics(const std::vector<Real>& data, const std::vector<Real>& in_order,
                            const std::vector<int64_t>& ranks) {
  const auto n = static_cast<int64_t>(data.size()), count = static_cast<int64_t>(ranks.size());
  for (int c = 0; c <= highest_rau_class(); ++c) {
    SCOPED_TRACE(testing::Message() << "class " << c << ", n " << n << ", ranks " << count);
    Guarded<Real> arrays(data);
    std::get<2>(kernels_of<Real>(c))(&arrays.x[33], n, ranks.data(), count, &arrays.y[33]);
    const std::vector<Real> got = arrays.data();
    ASSERT_EQ(all_bits(sorted(got)), all_bits(in_order));
    ASSERT_TRUE(arrays.intact());
    size_t rank = 0;
    for (int64_t i = 0; i < n && count > 0; ++i) {
      while (rank + 1 < ranks.size() && ranks[rank] < i) ++rank;
      const int64_t k = ranks[rank];
      ASSERT_EQ(bits_of(got[k]), bits_of(in_order[k])) << "rank " << k;
      ASSERT_FALSE(i < k ? precedes(got[k], got[i]) : precedes(got[i], got[k])) << "rank " << k;
    }
  }
}

TYPED_TEST(SortTest, PutsOrderStatisticsIntoPlace) {
  for (const Pattern& pattern : kPatterns) {
    SCOPED_TRACE(pattern.name);
    for (const int64_t n : {1, 2, 7, 33, 200, 257, 1000, 4097, 20000}) {
      const auto data = make<TypeParam>(pattern, n), in_order = sorted(data);
      std::vector<int64_t> quantiles, all(n);  // with upper neighbours and repetitions; every rank
      for (const int64_t tenths : {0, 1, 1, 3, 5, 7, 9, 10}) {
        for (const int64_t up : {0, 1})
          quantiles.push_back(std::min(tenths * (n - 1) / 10 + up, n - 1));
      }
      std::sort(quantiles.begin(), quantiles.end());
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
