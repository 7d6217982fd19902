// The table of special values: arguments, results and statuses.
#pragma once

#include <limits>
#include <string_view>
#include <vector>

#include "tests/support/kernel_subjects.h"

namespace orba::test {

// Stands for a part of a result that may be anything.
template <class Real>
constexpr Real kAny = static_cast<Real>(0x1.fadep+9);

template <class Real>
struct Special {
  std::string_view functions, types;  // functions separated by blanks
  unsigned accuracies;                // a bit for each
  Real a[2], b[2], r[2];
  int status;

  bool applies(const Subject& subject, uint32_t accuracy) const {
    if ((accuracies >> accuracy & 1) == 0) return false;
    const std::string_view name = subject.function;
    for (size_t at = 0; (at = functions.find(name, at)) != std::string_view::npos; ++at) {
      const size_t end = at + name.size();
      if ((at == 0 || functions[at - 1] == ' ') &&
          (end == functions.size() || functions[end] == ' '))
        return types.find(subject.type) != std::string_view::npos;
    }
    return false;
  }
};

template <class Real>
const std::vector<Special<Real>>& special_values() {
  using Numbers = std::numeric_limits<Real>;
  constexpr Real zero = 0, inf = Numbers::infinity(), most = Numbers::max();
  constexpr Real normal = Numbers::min(), denormal = Numbers::denorm_min();
  constexpr Real nan = Numbers::quiet_NaN();
  constexpr Real any = kAny<Real>;
  constexpr unsigned kHaLa = 1U << KAM_HA | 1U << KAM_LA, kAll = kHaLa | 1U << KAM_EP;
  static const std::vector<Special<Real>> table = {
#define ORBA_REAL(x) static_cast<Real>(x)
#define ORBA_SPECIAL(functions, types, accuracies, a, b, r, status) \
  {functions, types, accuracies, {ORBA_REAL(a), 0}, {ORBA_REAL(b), 0}, {ORBA_REAL(r), any}, status},
#define ORBA_SPECIAL_COMPLEX(functions, accuracies, are, aim, bre, bim, rre, rim, status) \
  {functions,                                                                             \
   "cz",                                                                                  \
   accuracies,                                                                            \
   {ORBA_REAL(are), ORBA_REAL(aim)},                                                      \
   {ORBA_REAL(bre), ORBA_REAL(bim)},                                                      \
   {ORBA_REAL(rre), ORBA_REAL(rim)},                                                      \
   status},
#include "tests/accuracy/special_values.def"
#undef ORBA_SPECIAL
#undef ORBA_SPECIAL_COMPLEX
#undef ORBA_REAL
  };
  return table;
}

}  // namespace orba::test
