// What the rounding functions leave in the status word of the floating-point unit, and how LinearFrac
// treats denormals.
#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <cmath>
#include <limits>
#include <string_view>

#include "tests/support/kernel_subjects.h"

namespace orba::test {
namespace {

constexpr uint32_t kDefault = 0x1f80, kFlags = 0x3f, kInexact = 0x20;

constexpr struct {
  std::string_view function;
  bool raises_inexact;
} kRounding[] = {
    {"Floor", true},      {"Ceil", true},   {"Trunc", true}, {"Rint", true},
    {"NearbyInt", false}, {"Round", false}, {"Modf", false},
};

template <class Real>
uint32_t flags_of(const Subject& subject, const Cell& cell, const std::vector<Real>& a) {
  std::vector<Real> y(a.size()), z(a.size());
  const WordsScope words(cell.accuracy);
  const uint32_t old = _mm_getcsr();
  _mm_setcsr(kDefault);
  subject.invoke(subject.kernel(cell.classes[0], cell.accuracy), static_cast<int>(a.size()),
                 {{a.data(), nullptr}, {y.data(), z.data()}, nullptr});
  const uint32_t flags = _mm_getcsr() & kFlags;
  _mm_setcsr(old);
  return flags;
}

// For the first argument with a fraction and not before; dead lanes of tails raise nothing. Before
// class 2 any of them may raise it.
TEST(Rounding, RaisesInexactWhereItIsToldTo) {
  for (const auto& [function, raises_inexact] : kRounding) {
    for (const Subject& subject : subjects()) {
      if (subject.function != function) continue;
      for (const Cell& cell : cells(subject)) {
        SCOPED_TRACE(subject.name() + " " + cell.name());
        const uint32_t free = cell.classes[0] < 2 ? kInexact : 0;
        with_type(subject, [&]<class Type>(Type) {
          using Real = typename Type::Real;
          using Numbers = std::numeric_limits<Real>;
          const Real pool[] = {1,
                               0,
                               -Real{0},
                               -7,
                               Numbers::max(),
                               -Numbers::infinity(),
                               Numbers::infinity(),
                               Numbers::quiet_NaN(),
                               1 / Numbers::epsilon()};
          for (int n = 1; n <= 70; ++n) {
            std::vector<Real> a(n);
            for (int i = 0; i < n; ++i) a[i] = pool[(i + n) % std::size(pool)];
            EXPECT_EQ(flags_of(subject, cell, a) & ~free, 0u) << n;
            a[(n * 7) % n] = Real(-2.5);
            a[n / 2] = Real(0.3);
            EXPECT_EQ(flags_of(subject, cell, a) & ~free, raises_inexact ? kInexact & ~free : 0)
                << n;
          }
        });
      }
    }
  }
}

// In single precision, and in double on classes 2 and 3, whatever the mode and the caller ask for.
TEST(LinearFrac, KeepsDenormals) {
  for (const Subject& subject : subjects()) {
    if (subject.function != std::string_view("LinearFrac")) continue;
    for (const Cell& cell : cells(subject)) {
      SCOPED_TRACE(subject.name() + " " + cell.name());
      with_type(subject, [&]<class Type>(Type) {
        using Real = typename Type::Real;
        const std::vector<Real> a(19, std::numeric_limits<Real>::denorm_min());
        constexpr Real same[] = {1, 0, 0, 1};  // a
        for (const uint32_t mode : {KAM_DENORMALS_KEEP, KAM_DENORMALS_FLUSH}) {
          const bool by_mode = subject.type == 'd' && cell.classes[0] != 2 && cell.classes[0] != 3;
          const bool flushes = by_mode && mode == KAM_DENORMALS_FLUSH;
          for (const uint32_t caller : {kDefault, kDefault | 0x8040}) {
            std::vector<Real> y(a.size());
            const WordsScope words(cell.accuracy | mode);
            const uint32_t old = _mm_getcsr();
            _mm_setcsr(caller);
            subject.invoke(subject.kernel(cell.classes[0], cell.accuracy),
                           static_cast<int>(a.size()), {{a.data(), a.data()}, {y.data()}, same});
            _mm_setcsr(old);
            EXPECT_EQ(y, flushes ? std::vector<Real>(a.size()) : a);
          }
        }
      });
    }
  }
}

}  // namespace
}  // namespace orba::test
