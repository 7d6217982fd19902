// Every routine on every live class against long double, within the bound that any order of
// summation keeps: (k + 4) u (|alpha| sum |a b| + |beta c|).
#include "dense/dense.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <type_traits>
#include <vector>

#include "tests/support/rau_class.h"

namespace {

using orba::dense::dense_routines;
using orba::dense::kWorkspaceBytes;

template <class Real>
struct Routines {
  orba::dense::Syr<Real>* syr;
  orba::dense::Syrk<Real>* syrk;
  orba::dense::Gemm<Real>* gemm;
};

template <class Real>
Routines<Real> routines_of(int statistics_class) {
  const auto& all = dense_routines(statistics_class);
  if constexpr (std::is_same_v<Real, double>) {
    return {all.dsyr, all.dsyrk, all.dgemm};
  } else {
    return {all.ssyr, all.ssyrk, all.sgemm};
  }
}

// Not a byte more than promised, and nothing in it that could pass for a result.
void* workspace() {
  static const std::unique_ptr<void, decltype(&std::free)> block(
      std::aligned_alloc(64, kWorkspaceBytes), &std::free);
  memset(block.get(), 0xFF, kWorkspaceBytes);
  return block.get();
}

constexpr int64_t kPadding = 3;

// Column-major, nothing behind the last element, NaN between the columns.
template <class Real>
struct Matrix {
  int64_t rows, columns, ld;
  std::vector<Real> data;

  Matrix(int64_t r, int64_t c)
      : rows(r),
        columns(c),
        ld(r + kPadding),
        data(r > 0 && c > 0 ? (c - 1) * ld + r : 0, std::numeric_limits<Real>::quiet_NaN()) {}
  Real& operator()(int64_t i, int64_t j) { return data[j * ld + i]; }
  const Real& operator()(int64_t i, int64_t j) const { return data[j * ld + i]; }
};

template <class Real>
Matrix<Real> random_matrix(int64_t rows, int64_t columns) {
  static std::mt19937 engine(20240607);
  std::uniform_real_distribution<Real> uniform(-1, 1);
  Matrix<Real> m(rows, columns);
  for (int64_t j = 0; j < columns; ++j) {
    for (int64_t i = 0; i < rows; ++i) m(i, j) = uniform(engine);
  }
  return m;
}

template <class Real>
Matrix<Real> transposed(const Matrix<Real>& m) {
  Matrix<Real> t(m.columns, m.rows);
  for (int64_t j = 0; j < m.columns; ++j) {
    for (int64_t i = 0; i < m.rows; ++i) t(j, i) = m(i, j);
  }
  return t;
}

// sum and sum of magnitudes over l of a(i, l) b(l, j).
struct Product {
  Matrix<long double> sum, magnitude;
};

template <class Real>
Product product(const Matrix<Real>& a, const Matrix<Real>& b) {
  Product p{{a.rows, b.columns}, {a.rows, b.columns}};
  for (int64_t j = 0; j < b.columns; ++j) {
    for (int64_t i = 0; i < a.rows; ++i) p.sum(i, j) = p.magnitude(i, j) = 0;
    for (int64_t l = 0; l < a.columns; ++l) {
      for (int64_t i = 0; i < a.rows; ++i) {
        const long double term = static_cast<long double>(a(i, l)) * b(l, j);
        p.sum(i, j) += term;
        p.magnitude(i, j) += std::abs(term);
      }
    }
  }
  return p;
}

template <class Real>
bool same_bits(const std::vector<Real>& a, const std::vector<Real>& b) {
  return a.size() == b.size() &&
         (a.empty() || memcmp(a.data(), b.data(), a.size() * sizeof(Real)) == 0);
}

// Which elements a routine works on: a triangle, or all ('*').
bool in_region(char uplo, int64_t i, int64_t j) {
  return uplo == '*' || (std::tolower(uplo) == 'u' ? i <= j : i >= j);
}

// Runs `call(c)` on a copy of `start` and compares with alpha p + beta start on the region; what
// lies outside must not change, and with beta = 0 the region starts out as NaN.
template <class Real, class Call>
Matrix<Real> check(char uplo, const Product& p, int64_t k, Real alpha, Real beta,
                   const Matrix<Real>& start, const Call& call) {
  Matrix<Real> c = start;
  for (int64_t j = 0; j < c.columns && beta == 0; ++j) {
    for (int64_t i = 0; i < c.rows; ++i) {
      if (in_region(uplo, i, j)) c(i, j) = std::numeric_limits<Real>::quiet_NaN();
    }
  }
  call(c);
  Matrix<Real> outside = start;
  const long double unit = static_cast<long double>(std::numeric_limits<Real>::epsilon()) / 2;
  int64_t wrong = 0;
  for (int64_t j = 0; j < c.columns; ++j) {
    for (int64_t i = 0; i < c.rows; ++i) {
      if (!in_region(uplo, i, j)) continue;
      const long double old = start(i, j);
      const long double wanted = alpha * p.sum(i, j) + beta * old;
      const long double bound = static_cast<long double>(k + 4) * unit *
                                (std::abs(alpha) * p.magnitude(i, j) + std::abs(beta * old));
      if (!(std::abs(c(i, j) - wanted) <= bound) && ++wrong == 1) {
        ADD_FAILURE() << "element " << i << ", " << j << " is " << c(i, j) << ", not " << wanted;
      }
      outside(i, j) = c(i, j);
    }
  }
  EXPECT_EQ(wrong, 0);
  EXPECT_TRUE(same_bits(outside.data, c.data)) << "wrote outside its part of the matrix";
  return c;
}

template <class Real>
struct Factors {
  Real alpha, beta;
};
template <class Real>
constexpr Factors<Real> kFactors[] = {{1, 1},          {1, 0},         {-1, Real(0.5)},
                                      {Real(0.5), -1}, {Real(0.5), 0}, {0, Real(0.5)},
                                      {0, 0},          {0, 1}};

// Sizes around the tiles of every class; the last ones take several blocks in both directions.
constexpr int64_t kSizes[] = {0, 1, 2, 3, 5, 17, 64, 100, 129};
struct Shape {
  int64_t m, n, k;
};
std::vector<Shape> shapes() {
  std::vector<Shape> list = {{200, 3, 397}, {3, 397, 200}, {397, 200, 397}};
  constexpr size_t count = std::size(kSizes);
  for (size_t i = 0; i < count; ++i) {
    for (size_t l = 0; l < count; ++l) {
      list.push_back({kSizes[i], kSizes[(i + 2 * l + 1) % count], kSizes[l]});
    }
  }
  return list;
}

template <class Real>
class Dense : public testing::Test {};
using Reals = testing::Types<double, float>;
TYPED_TEST_SUITE(Dense, Reals);

TYPED_TEST(Dense, RankOne) {
  using Real = TypeParam;
  for (const int64_t n : kSizes) {
    const auto x = random_matrix<Real>(n, 1);
    const auto start = random_matrix<Real>(n, n);
    const Product p = product(x, transposed(x));
    for (int c = 0; c <= orba::test::highest_rau_class(); ++c) {
      const auto routines = routines_of<Real>(c);
      for (const char uplo : {'u', 'U', 'l', 'L'}) {
        for (const Real alpha : {Real(1), Real(-1), Real(0.5), Real(0)}) {
          SCOPED_TRACE(testing::Message()
                       << "class " << c << " n " << n << " uplo " << uplo << " alpha " << alpha);
          check<Real>(uplo, p, 1, alpha, 1, start, [&](Matrix<Real>& m) {
            routines.syr(uplo, n, alpha, alpha == 0 ? nullptr : x.data.data(), m.data.data(), m.ld);
          });
        }
      }
    }
  }
}

TYPED_TEST(Dense, RankK) {
  using Real = TypeParam;
  for (const Shape& shape : shapes()) {
    const int64_t n = shape.n, k = shape.k;
    const auto a = random_matrix<Real>(n, k);
    const auto at = transposed(a);
    const auto start = random_matrix<Real>(n, n);
    const Product p = product(a, at);
    for (int c = 0; c <= orba::test::highest_rau_class(); ++c) {
      const auto routines = routines_of<Real>(c);
      for (const auto& f : kFactors<Real>) {
        const auto run = [&](char uplo, char trans) {
          SCOPED_TRACE(testing::Message()
                       << "class " << c << " n " << n << " k " << k << " uplo " << uplo << " trans "
                       << trans << " alpha " << f.alpha << " beta " << f.beta);
          const auto& stored = std::tolower(trans) == 'n' ? a : at;
          const Real* data = f.alpha == 0 ? nullptr : stored.data.data();
          return check<Real>(uplo, p, k, f.alpha, f.beta, start, [&](Matrix<Real>& r) {
            routines.syrk(uplo, trans, n, k, f.alpha, data, stored.ld, f.beta, r.data.data(), r.ld,
                          workspace());
          });
        };
        // How A is stored does not show in a single bit.
        const auto upper = run('u', 'n');
        EXPECT_TRUE(same_bits(upper.data, run('U', 't').data));
        const auto lower = run('l', 'N');
        EXPECT_TRUE(same_bits(lower.data, run('L', 'c').data));
      }
    }
  }
}

TYPED_TEST(Dense, General) {
  using Real = TypeParam;
  for (const Shape& shape : shapes()) {
    const auto a = random_matrix<Real>(shape.m, shape.k);
    const auto at = transposed(a);
    const auto b = random_matrix<Real>(shape.k, shape.n);
    const auto bt = transposed(b);
    const auto start = random_matrix<Real>(shape.m, shape.n);
    const Product p = product(a, b);
    for (int c = 0; c <= orba::test::highest_rau_class(); ++c) {
      const auto routines = routines_of<Real>(c);
      for (const auto& f : kFactors<Real>) {
        for (const char* trans : {"nn", "NT", "tn", "TC", "cN"}) {
          SCOPED_TRACE(testing::Message()
                       << "class " << c << " m " << shape.m << " n " << shape.n << " k " << shape.k
                       << " trans " << trans << " alpha " << f.alpha << " beta " << f.beta);
          const auto& left = std::tolower(trans[0]) == 'n' ? a : at;
          const auto& right = std::tolower(trans[1]) == 'n' ? b : bt;
          const Real* left_data = f.alpha == 0 ? nullptr : left.data.data();
          const Real* right_data = f.alpha == 0 ? nullptr : right.data.data();
          check<Real>('*', p, shape.k, f.alpha, f.beta, start, [&](Matrix<Real>& r) {
            routines.gemm(trans[0], trans[1], shape.m, shape.n, shape.k, f.alpha, left_data,
                          left.ld, right_data, right.ld, f.beta, r.data.data(), r.ld, workspace());
          });
        }
      }
    }
  }
}

}  // namespace
