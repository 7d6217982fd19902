// Signs of complex products and quotients whose parts underflow, beside parts that do not: those of
// the exact sums of products; an exact cancellation gives +0, and zero products add up as they do in
// the formula. On every class, at every accuracy, whether denormals are kept or flushed.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string_view>
#include <vector>

#include "tests/support/kernel_subjects.h"

namespace orba::test {
namespace {

using Wide = __float128;  // holds the product of two doubles, and the sign of a sum of two of them

// Zeros, numbers near 1, denormal ones, and powers of two times a few bits wherever products underflow.
template <class Real>
Real pick(std::mt19937& random, bool flushed) {
  const int lowest = std::numeric_limits<Real>::min_exponent - 1;
  const int digits = std::numeric_limits<Real>::digits;
  const Real sign = random() % 2 == 0 ? 1 : -1;
  const Real m = static_cast<Real>(1 + random() % 8);
  switch (random() % 5) {
    case 0:
      return sign * 0;
    case 1:
      return sign * m;
    case 2:
      return sign * std::ldexp(m, flushed ? lowest : lowest - digits + 1);
    default:
      return sign * std::ldexp(m, static_cast<int>(random() % -lowest) + lowest);
  }
}

// Whether the sign bit of a part is that of p + q, over d, unless the part may be a rounding error.
template <class Real>
bool sign_holds(Real got, Wide p, Wide q, Wide d) {
  const Wide exact = p + q;
  const bool negative =
      p == 0 && q == 0 ? std::signbit(static_cast<double>(p) + static_cast<double>(q)) : exact < 0;
  if (std::isnan(got)) return false;
  const Wide size = exact < 0 ? -exact : exact;
  if (exact == 0 ? got != 0 : size >= d * static_cast<Wide>(std::numeric_limits<Real>::min()))
    return true;
  return std::signbit(got) == negative;
}

TEST(ComplexSigns, UnderflowingPartsKeepTheirs) {
  for (const Subject& subject : subjects()) {
    const std::string_view function = subject.function;
    if (!subject.complex() || (function != "Mul" && function != "MulByConj" && function != "Div"))
      continue;
    with_type(
        subject, [&]<class Type, class Real = typename Type::Real>(Type) {
          for (const uint32_t denormals :
               {uint32_t{KAM_DENORMALS_KEEP}, uint32_t{KAM_DENORMALS_FLUSH}}) {
            std::mt19937 random(5);
            const int n = 20000;
            std::vector<Real> a(2 * n), b(2 * n), r(2 * n);
            for (Real& x : a) x = pick<Real>(random, denormals == KAM_DENORMALS_FLUSH);
            for (Real& x : b) x = pick<Real>(random, denormals == KAM_DENORMALS_FLUSH);
            for (const Cell& cell : cells(subject)) {
              const WordsScope words(cell.accuracy | denormals | KAM_ERRMODE_IGNORE);
              call<Type>(subject, subject.kernel(cell.classes[0], cell.accuracy), n, a.data(),
                         b.data(), r.data());
              int wrong = 0;
              for (int i = 0; i < n; ++i) {
                const Wide x = a[2 * i], y = a[2 * i + 1], u = b[2 * i], v = b[2 * i + 1];
                const bool conjugate = function != "Mul";
                const Wide d = function == "Div" ? u * u + v * v : 1;
                if (d == 0) continue;
                const bool holds = sign_holds(r[2 * i], x * u, conjugate ? y * v : -y * v, d) &&
                                   sign_holds(r[2 * i + 1], conjugate ? -x * v : x * v, y * u, d);
                if (!holds && wrong++ == 0) {
                  ADD_FAILURE() << subject << " " << cell.name() << " denormals " << denormals
                                << ": (" << a[2 * i] << ", " << a[2 * i + 1] << "), (" << b[2 * i]
                                << ", " << b[2 * i + 1] << ") gives (" << r[2 * i] << ", "
                                << r[2 * i + 1] << ")";
                }
              }
              EXPECT_EQ(wrong, 0);
            }
          }
        });
  }
}

}  // namespace
}  // namespace orba::test
