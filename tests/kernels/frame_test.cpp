// The four exported forms of every function: checks in their order, the mode of the call, the kernel
// of the row.

#include "vector/frame/define_functions.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <functional>
#include <string_view>

#include "tests/kernels/functions/functions.h"
#include "tests/support/observe.h"

#define ORBA_KAM_FUNCTION ORBA_DECLARE_KERNELS
#include "tests/kernels/functions/functions.def"
#undef ORBA_KAM_FUNCTION

namespace orba::vector {
namespace {
#define ORBA_HINTS_(t, Name) constexpr std::array<float, kRowSlots> hints_v##t##Name = {};
#define ORBA_KAM_FUNCTION(Name, name, shape, types, ...) \
  ORBA_KAM_TYPES(types)                                  \
  (ORBA_HINTS_, Name)
#include "tests/kernels/functions/functions.def"
#undef ORBA_KAM_FUNCTION
}  // namespace
#define ORBA_KAM_FUNCTION ORBA_DEFINE_ROWS
#include "tests/kernels/functions/functions.def"
#undef ORBA_KAM_FUNCTION
}  // namespace orba::vector

#define ORBA_KAM_FUNCTION ORBA_DEFINE_FORMS
#include "tests/kernels/functions/functions.def"
#undef ORBA_KAM_FUNCTION

namespace orba::test {
namespace {

using vector::CallKind;
using Outcome = std::pair<int, std::string>;  // status and printed text

// Calls that end with the checks get no mode at all: they must not look at it.
constexpr uint32_t kNoMode = 0;

// One function in its forms 0 to 3: v, vm, and these in lower case.
struct Forms {
  const char* name;
  std::string_view kernels;
  CallKind kind;
  const vector::KamKernelRow* row;
  std::vector<Kind> kinds;
  void (*kernel)(vector::KamKernel kernel, int n, const Operands& x);
  std::function<void(int form, int n, const Operands& x, uint32_t mode)> call;
};

template <class P>
auto by_address(P& p) {
  if constexpr (std::is_pointer_v<P>)
    return p;
  else
    return const_cast<const P*>(&p);
}

template <class... P, class WithMode, class Lower, class LowerWithMode>
Forms make_forms(const char* name, const char* kernels, CallKind kind,
                 const vector::KamKernelRow& row, void (*v)(int32_t, P...), WithMode* vm,
                 Lower* lower, LowerWithMode* lower_with_mode) {
  return {name,
          kernels,
          kind,
          &row,
          {kind_of<P>...},
          Shape<void(int32_t, P...)>::invoke,
          [=](int form, int n, const Operands& x, uint32_t mode) {
            Shape<void(int32_t, P...)>::apply(x, [&](P... p) {
              if (form == 0) v(n, p...);
              if (form == 1) vm(n, p..., mode);
              if (form == 2) lower(&n, by_address(p)...);
              if (form == 3)
                lower_with_mode(&n, by_address(p)..., mode != kNoMode ? &mode : nullptr);
            });
          }};
}

const std::vector<Forms> kFunctions = {
#define ORBA_FORMS_(t, Name, name, kernels, call)                                        \
  make_forms("v" #t #Name, #kernels, CallKind::call, vector::row_v##t##Name, v##t##Name, \
             vm##t##Name, v##t##name, vm##t##name),
#define ORBA_KAM_FUNCTION(Name, name, shape, types, kernels, call) \
  ORBA_KAM_TYPES(types)                                            \
  (ORBA_FORMS_, Name, name, kernels, call)
#include "tests/kernels/functions/functions.def"
#include "vector/functions.def"
};

TEST(Frame, EveryFormOfEveryFunction) {
  constexpr int n = 3;
  using Array = std::array<double, 2 * n>;
  Array a, untouched, scalars;
  a.fill(std::bit_cast<double>(0x3fc000003fc00000));        // floats of 1.5, doubles near 2^-3
  scalars.fill(std::bit_cast<double>(0x3fc0000000000001));  // increments of 1, too
  const std::array<int32_t, n> entries = {1, 1, 0};         // of masks and index vectors
  untouched.fill(0.71);
  for (const Forms& f : kFunctions) {
    for (int form = 0; form < 4; ++form) {
      SCOPED_TRACE(std::string(f.name) + " form " + std::to_string(form));
      Array y = untouched, z = untouched;
      const bool lean = f.kind == CallKind::lean;
      const void* const second = lean ? static_cast<const void*>(entries.data()) : a.data();
      const Operands arrays = {{a.data(), second}, {y.data(), z.data()}, scalars.data()};
      const Operands nothing = {{}, {}, scalars.data()};
      const auto run = [&](int count, const Operands& x, uint32_t accuracy) {
        // The forms with a mode take the accuracy as an argument.
        const uint32_t mode = (form % 2 == 0 ? accuracy : uint32_t{KAM_HA}) | KAM_ERRMODE_NOERR;
        const WordsScope words(mode);
        const std::string text = stdout_of([&] { f.call(form, count, x, accuracy); });
        EXPECT_EQ(vector::mode(), mode);
        return Outcome(vector::status(), text);
      };
      const auto refusal = [&](int position, int status) {
        return Outcome(status, "\nTessel Orba ERROR: Parameter " + std::to_string(position) +
                                   " was incorrect on entry to " + f.name + ".\n");
      };
      EXPECT_EQ(run(-1, nothing, kNoMode), refusal(1, KAM_STATUS_BADSIZE));
      EXPECT_EQ(run(0, nothing, kNoMode), Outcome(KAM_STATUS_OK, ""));
      if (f.name == std::string_view("vzTestGather")) {  // lean, and its kernel takes a null array
        EXPECT_EQ(run(n, {{a.data()}, {nullptr}, scalars.data()}, KAM_LA),
                  Outcome(KAM_STATUS_OK, ""));
      }
      Operands x = nothing;  // gets one array after another
      int ins = 0, outs = 0;
      for (size_t i = 0; i < f.kinds.size() && !lean; ++i) {
        if (f.kinds[i] == Kind::scalar) continue;
        EXPECT_EQ(run(n, x, kNoMode), refusal(static_cast<int>(i) + 2, KAM_STATUS_BADMEM));
        if (f.kinds[i] == Kind::in) x.in[ins++] = a.data();
        if (f.kinds[i] == Kind::out) x.out[outs++] = y.data();
      }
      EXPECT_EQ(y, untouched);
      for (const uint32_t accuracy : kAccuracies) {
        y = z = untouched;
        const bool warns = f.kind == CallKind::warning && accuracy != KAM_EP;
        EXPECT_EQ(run(n, arrays, accuracy),
                  Outcome(warns ? KAM_STATUS_ACCURACYWARNING : KAM_STATUS_OK, ""));
        Array kernel_y = untouched, kernel_z = untouched;
        const WordsScope words(accuracy | KAM_ERRMODE_NOERR);
        f.kernel(f.row->kernel[vector::row_index(services::kam_class(), accuracy)], n,
                 {{a.data(), second}, {kernel_y.data(), kernel_z.data()}, scalars.data()});
        const auto same = [](const Array& p, const Array& q) {
          return std::memcmp(p.data(), q.data(), sizeof p) == 0;
        };
        EXPECT_TRUE(same(y, kernel_y) && same(z, kernel_z));
        EXPECT_TRUE(y != untouched && (outs < 2 || z != untouched));
      }
    }
  }
}

// What a row says to be shared is one kernel, and the slots of the empty class are poisoned.
TEST(Frame, RowsShareWhatTheySay) {
  for (const Forms& f : kFunctions) {
    const auto kernel = [&](int c, uint32_t mode) {
      return f.row->kernel[vector::row_index(c, mode)];
    };
    for (const uint32_t accuracy : kAccuracies) {
      EXPECT_EQ(reinterpret_cast<uint64_t>(kernel(4, accuracy)), vector::kEmptyClassKernel);
      for (const int c : services::kBuilds) {
        const std::string_view shared = f.kernels;
        EXPECT_TRUE(shared != "single" || kernel(c, accuracy) == kernel(0, KAM_LA)) << f.name;
        EXPECT_TRUE(shared != "per_class" || kernel(c, accuracy) == kernel(c, KAM_LA)) << f.name;
        EXPECT_TRUE(shared == "single" || c == 0 || kernel(c, accuracy) != kernel(0, accuracy))
            << f.name;
      }
    }
  }
}

}  // namespace
}  // namespace orba::test
