// What every kernel promises whatever it computes: it writes its n results and nothing else, each
// result depends on its element alone, the floating-point environment comes back, and elements in
// error are reported one by one in ascending order.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>
#include <xmmintrin.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string_view>
#include <type_traits>

#include "tests/accuracy/special_values.h"
#include "tests/support/kernel_subjects.h"

namespace orba::test {
namespace {

constexpr int kMaxCount = 70;
constexpr int kMaxOffset = 7;
constexpr uint32_t kDefaultMxcsr = 0x1f80;
constexpr uint32_t kMxcsrFlags = 0x3f;
constexpr uint32_t kMxcsrFlushAndDenormalsAreZero = 0x8040;

// Numbers between two pages that must not be touched.
template <class Real>
class GuardedArray {
 public:
  explicit GuardedArray(size_t numbers) : numbers_(numbers) {
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    body_ = (numbers * sizeof(Real) + page - 1) / page * page;
    mapping_ = static_cast<char*>(
        mmap(nullptr, body_ + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    size_ = body_ + 2 * page;
    first_ = mapping_ + page;
    mprotect(first_, body_, PROT_READ | PROT_WRITE);
  }
  ~GuardedArray() { munmap(mapping_, size_); }
  GuardedArray(const GuardedArray&) = delete;
  GuardedArray& operator=(const GuardedArray&) = delete;

  Real* front() { return reinterpret_cast<Real*>(first_); }  // just behind a guard page
  Real* back() { return reinterpret_cast<Real*>(first_ + body_) - numbers_; }  // just before one

 private:
  size_t numbers_, body_, size_;
  char* mapping_;
  char* first_;
};

// Ordinary numbers, or the same with special ones strewn in. At most one NaN per element, so that
// its payload doesn't depend on the order of operands.
template <class Real>
struct Inputs {
  std::vector<Real> a, b;

  Inputs(const Subject& subject, int n, bool special) : a(n * subject.parts()), b(a.size()) {
    using Numbers = std::numeric_limits<Real>;
    const Real pool[] = {0,
                         -Real{0},
                         Numbers::infinity(),
                         -Numbers::infinity(),
                         Numbers::max(),
                         -1,
                         -Numbers::max(),
                         Numbers::min(),
                         Numbers::denorm_min(),
                         -Numbers::denorm_min(),
                         Real{1000},
                         Real{-1000},
                         Numbers::quiet_NaN()};
    std::mt19937 random(7);
    for (size_t i = 0; i < a.size(); ++i) {
      a[i] = ordinary(random);
      b[i] = ordinary(random);
    }
    if (!special) return;
    const auto pick = [&](bool with_nan) { return pool[random() % (std::size(pool) - !with_nan)]; };
    for (int i = 0; i < n; i += 1 + static_cast<int>(random() % 3)) {
      const size_t at = static_cast<size_t>(i) * subject.parts() + random() % subject.parts();
      a[at] = pick(true);
      if (random() % 2 == 0) b[at] = pick(!std::isnan(a[at]));
    }
  }

 private:
  static Real ordinary(std::mt19937& random) {
    return static_cast<Real>(0.5 + 1.5 * static_cast<double>(random()) * 0x1p-32);
  }
};

template <class Real>
bool same_bits(const Real* x, const Real* y, size_t count) {
  return count == 0 || std::memcmp(x, y, count * sizeof(Real)) == 0;
}

// The first special value that a cell reports, null when it never does.
template <class Real>
const Special<Real>* find_error_case(const Subject& subject, const Cell& cell) {
  // Class 1 has one kernel for all accuracies.
  const uint32_t accuracy = cell.classes[0] == 1 ? uint32_t{KAM_HA} : cell.accuracy;
  for (const Special<Real>& special : special_values<Real>()) {
    if (special.status != KAM_STATUS_OK && special.applies(subject, accuracy)) return &special;
  }
  return nullptr;
}

template <class Real>
void put_error(const Subject& subject, const Special<Real>& error, Inputs<Real>& inputs, int at) {
  std::copy_n(error.a, subject.parts(), &inputs.a[at * subject.parts()]);
  std::copy_n(error.b, subject.parts(), &inputs.b[at * subject.parts()]);
}

// Real sums and products, which report nothing, leave the rounding mode and the treatment of
// denormals to the caller on class 0 (and class 1 shares its code).
bool sets_environment(const Subject& subject, int kernel_class) {
  constexpr std::string_view kPlain[] = {"Add", "Sub", "Mul", "Sqr", "Abs"};
  const bool plain =
      std::find(std::begin(kPlain), std::end(kPlain), subject.function) != std::end(kPlain);
  return kernel_class >= 2 || subject.complex() || !plain;
}

class Contract : public testing::TestWithParam<Subject> {
 protected:
  // Calls body(Type, cell, kernel) for every distinct kernel.
  template <class Body>
  void for_each_kernel(Body&& body) {
    const Subject& subject = GetParam();
    with_type(subject, [&]<class Type>(Type type) {
      for (const Cell& cell : cells(subject)) {
        SCOPED_TRACE(subject.name() + " " + cell.name());
        body(type, cell, subject.kernel(cell.classes[0], cell.accuracy));
        if (HasFatalFailure()) return;
      }
    });
  }
};

INSTANTIATE_TEST_SUITE_P(All, Contract, testing::ValuesIn(subjects()),
                         [](const auto& subject) { return subject.param.name(); });

// Each result has the bits that a call of one element gives, for every n at every offset; nothing
// around them is written; in-place calls and calls at the edge of a page give the same.
TEST_P(Contract, WritesItsResultsAndNothingElse) {
  const Subject& subject = GetParam();
  for_each_kernel([&]<class Type>(Type, const Cell& cell, vector::KamKernel kernel) {
    using Real = typename Type::Real;
    const size_t parts = subject.parts();
    const size_t room = (kMaxCount + 2 * kMaxOffset + 64) * parts;
    const WordsScope words(cell.accuracy | KAM_ERRMODE_IGNORE);
    for (const bool special : {false, true}) {
      const Inputs<Real> inputs(subject, kMaxCount, special);
      std::vector<Real> want(kMaxCount * parts);
      for (int i = 0; i < kMaxCount; ++i) {
        call<Type>(subject, kernel, 1, &inputs.a[i * parts], &inputs.b[i * parts],
                   &want[i * parts]);
      }
      // Whatever lies around the arrays must not matter; it differs between the inputs.
      std::vector<Real> a(room, std::numeric_limits<Real>::quiet_NaN());
      std::vector<Real> b(room, std::numeric_limits<Real>::infinity());
      std::vector<Real> r(room), untouched(room, static_cast<Real>(-0x1.5a5p-3));
      for (int offset = 0; offset <= kMaxOffset; ++offset) {
        // Offsets count numbers, so complex elements also start between two of their places. The
        // three arrays are misaligned in different ways.
        Real* at_a = a.data() + 16 + offset;
        Real* at_b = b.data() + 16 + (offset * 3 & 7);
        Real* at_r = r.data() + 16 + (offset * 5 & 7);
        for (int n = 0; n <= kMaxCount; ++n) {
          const size_t count = n * parts;
          std::copy_n(inputs.a.begin(), count, at_a);
          std::copy_n(inputs.b.begin(), count, at_b);
          r = untouched;
          call<Type>(subject, kernel, n, at_a, at_b, at_r);
          ASSERT_TRUE(same_bits(at_r, want.data(), count)) << "n=" << n << " offset=" << offset;
          std::copy_n(untouched.begin(), count, at_r);
          ASSERT_TRUE(same_bits(r.data(), untouched.data(), room))
              << "wrote outside, n=" << n << " offset=" << offset;

          std::copy_n(inputs.a.begin(), count, at_r);
          call<Type>(subject, kernel, n, at_r, at_b, at_r);
          ASSERT_TRUE(same_bits(at_r, want.data(), count)) << "r = a, n=" << n;
          if (subject.operands() == 2) {
            std::copy_n(inputs.b.begin(), count, at_r);
            call<Type>(subject, kernel, n, at_a, at_r, at_r);
            ASSERT_TRUE(same_bits(at_r, want.data(), count)) << "r = b, n=" << n;
          }
        }
      }
      for (int n = 1; n <= kMaxCount; ++n) {
        const size_t count = n * parts;
        GuardedArray<Real> ga(count), gb(count), gr(count);
        for (const auto place : {&GuardedArray<Real>::front, &GuardedArray<Real>::back}) {
          std::copy_n(inputs.a.begin(), count, (ga.*place)());
          std::copy_n(inputs.b.begin(), count, (gb.*place)());
          call<Type>(subject, kernel, n, (ga.*place)(), (gb.*place)(), (gr.*place)());
          ASSERT_TRUE(same_bits((gr.*place)(), want.data(), count)) << "guarded, n=" << n;
        }
      }
    }
  });
}

// The result of an element is the same wherever it stands and whatever stands beside it.
TEST_P(Contract, KeepsElementsApart) {
  const Subject& subject = GetParam();
  for_each_kernel([&]<class Type>(Type, const Cell& cell, vector::KamKernel kernel) {
    using Real = typename Type::Real;
    const int parts = subject.parts();
    const WordsScope words(cell.accuracy | KAM_ERRMODE_IGNORE);
    const Inputs<Real> probes(subject, 24, true);
    const Inputs<Real> strangers(subject, kMaxCount, true);
    std::vector<Real> r(kMaxCount * parts), alone(parts);
    for (int probe = 0; probe < 24; ++probe) {
      call<Type>(subject, kernel, 1, &probes.a[probe * parts], &probes.b[probe * parts],
                 alone.data());
      for (int at = 0; at < kMaxCount; ++at) {
        Inputs<Real> inputs = strangers;
        std::copy_n(&probes.a[probe * parts], parts, &inputs.a[at * parts]);
        std::copy_n(&probes.b[probe * parts], parts, &inputs.b[at * parts]);
        call<Type>(subject, kernel, kMaxCount, inputs.a.data(), inputs.b.data(), r.data());
        ASSERT_TRUE(same_bits(&r[at * parts], alone.data(), parts))
            << "probe " << probe << " at " << at;
      }
    }
  });
}

uint16_t x87_control() {
  uint16_t word;
  __asm__ volatile("fnstcw %0" : "=m"(word));
  return word;
}
// Flags that earlier x87 code left would trap as soon as they are unmasked.
void set_x87_control(uint16_t word) { __asm__ volatile("fnclex\n\tfldcw %0" : : "m"(word)); }

// Environment around one call: what the caller has, and what it finds afterwards.
struct Environment {
  uint32_t mxcsr;
  uint16_t x87;
};
template <class Type, class Real = typename Type::Real>
Environment call_under(const Environment& caller, const Subject& subject, vector::KamKernel kernel,
                       const Inputs<Real>& inputs, std::vector<Real>& r) {
  const uint32_t old_mxcsr = _mm_getcsr();
  const uint16_t old_x87 = x87_control();
  const int n = static_cast<int>(r.size()) / subject.parts();
  set_x87_control(caller.x87);
  _mm_setcsr(caller.mxcsr);
  call<Type>(subject, kernel, n, inputs.a.data(), inputs.b.data(), r.data());
  const Environment after{_mm_getcsr(), x87_control()};
  _mm_setcsr(old_mxcsr);
  set_x87_control(old_x87);
  return after;
}

// Unmasked exceptions don't trap, control bits come back, sticky flags are kept and added to, and
// the results are those of the default environment.
TEST_P(Contract, RestoresTheFloatingPointEnvironment) {
  const Subject& subject = GetParam();
  for_each_kernel([&]<class Type>(Type, const Cell& cell, vector::KamKernel kernel) {
    using Real = typename Type::Real;
    constexpr uint32_t kDivideByZeroFlag = 0x4, kInexactFlag = 0x20;
    constexpr uint32_t kUnmasked = 0, kRoundUp = 0x4000;
    constexpr uint16_t kX87Default = 0x37f, kX87Unmasked = 0x340;
    const WordsScope words(cell.accuracy | KAM_ERRMODE_IGNORE);
    for (const int n : {0, 1, 5, kMaxCount}) {
      const Inputs<Real> inputs(subject, n, true);
      std::vector<Real> want(n * subject.parts()), r(want);
      call_under<Type>({kDefaultMxcsr, kX87Default}, subject, kernel, inputs, want);
      for (uint32_t mxcsr : {kUnmasked, kUnmasked | kDivideByZeroFlag, kDefaultMxcsr | kInexactFlag,
                             kDefaultMxcsr | kRoundUp, kUnmasked | kRoundUp,
                             kDefaultMxcsr | kMxcsrFlushAndDenormalsAreZero}) {
        const bool changes_results = (mxcsr & (kRoundUp | kMxcsrFlushAndDenormalsAreZero)) != 0;
        const Environment caller{mxcsr, mxcsr == kUnmasked ? kX87Unmasked : kX87Default};
        std::fill(r.begin(), r.end(), Real{0});
        const Environment after = call_under<Type>(caller, subject, kernel, inputs, r);
        EXPECT_EQ(after.mxcsr & ~kMxcsrFlags, mxcsr & ~kMxcsrFlags) << std::hex << mxcsr;
        EXPECT_EQ(mxcsr & kMxcsrFlags & ~after.mxcsr, 0U) << "lost a flag, " << std::hex << mxcsr;
        EXPECT_EQ(after.x87, caller.x87);
        EXPECT_TRUE(n > 0 || after.mxcsr == mxcsr);
        if (!changes_results || sets_environment(subject, cell.classes[0])) {
          EXPECT_TRUE(same_bits(r.data(), want.data(), r.size()))
              << "n=" << n << " mxcsr=" << std::hex << mxcsr;
        }
      }
    }
  });
}

// The hardware divider raises its flags behind masked exceptions, and they stay visible.
TEST(ContractEnvironment, LeavesNewFlagsVisible) {
  const auto& all = subjects();
  const auto divide =
      std::find_if(all.begin(), all.end(), [](const Subject& s) { return s.name() == "vdDiv"; });
  if (divide == all.end()) GTEST_SKIP() << "no division yet";
  for (const int kernel_class : live_classes()) {
    const WordsScope words(KAM_HA | KAM_ERRMODE_IGNORE);
    Inputs<double> inputs(*divide, 5, false);
    inputs.b[3] = 0;
    std::vector<double> r(5);
    const Environment after = call_under<vector::Type_d>(
        {0, 0x37f}, *divide, divide->kernel(kernel_class, KAM_HA), inputs, r);
    EXPECT_EQ(after.mxcsr & 0x4, 0x4U) << "divide by zero, class " << kernel_class;
    EXPECT_TRUE(kernel_class == 5 || (after.mxcsr & 0x20) != 0)
        << "inexact, class " << kernel_class;
  }
}

// Under the flush mode denormal inputs count as zero; class 0 sums never look at the mode.
TEST(ContractEnvironment, FlushesDenormalsOnDemand) {
  for (const Subject& subject : subjects()) {
    if (std::string_view(subject.function) != "Add") continue;
    with_type(subject, [&]<class Type>(Type) {
      using Real = typename Type::Real;
      constexpr Real kDenormal = std::numeric_limits<Real>::denorm_min();
      for (const Cell& cell : cells(subject)) {
        for (const uint32_t mode : {KAM_DENORMALS_FLUSH, KAM_DENORMALS_KEEP}) {
          const int kernel_class = cell.classes[0];
          if (kernel_class == 1) continue;  // either form may stand there
          Inputs<Real> inputs(subject, 37, false);
          std::fill(inputs.a.begin(), inputs.a.end(), kDenormal);
          std::fill(inputs.b.begin(), inputs.b.end(), Real{0});
          std::vector<Real> r(inputs.a.size());
          const WordsScope words(cell.accuracy | KAM_ERRMODE_IGNORE | mode);
          call_under<Type>({kDefaultMxcsr, 0x37f}, subject,
                           subject.kernel(kernel_class, cell.accuracy), inputs, r);
          const bool flushed =
              mode == KAM_DENORMALS_FLUSH && sets_environment(subject, kernel_class);
          const Real want = flushed ? Real{0} : kDenormal;
          EXPECT_EQ(std::count(r.begin(), r.end(), want), static_cast<std::ptrdiff_t>(r.size()))
              << subject.name() << " " << cell.name() << " mode " << std::hex << mode;
        }
      }
    });
  }
}

constexpr double kReplacement = 42;

int replace_result(KamErrorContext* context) {
  context->r1 = kReplacement;
  context->r1_im = -kReplacement;
  return 0;
}

// Elements in error are reported in ascending order with their values, and a callback's result
// reaches the output. Elements that are not in error are never reported.
TEST_P(Contract, ReportsElementsInError) {
  const Subject& subject = GetParam();
  for_each_kernel([&]<class Type>(Type, const Cell& cell, vector::KamKernel kernel) {
    using Real = typename Type::Real;
    const int parts = subject.parts();
    const Special<Real>* error = find_error_case<Real>(subject, cell);
    for (const int n : {1, 7, 33, kMaxCount}) {
      Inputs<Real> inputs(subject, n, error == nullptr);
      std::vector<int> wrong;
      if (error != nullptr) {
        for (int i = 0; i < n; i += i % 4 + 1) wrong.push_back(i);
        if (wrong.back() != n - 1) wrong.push_back(n - 1);
        for (const int at : wrong) put_error(subject, *error, inputs, at);
      }
      std::vector<Real> r(inputs.a.size()), replaced(r);
      {
        const Recorder recorder(cell.accuracy);
        call<Type>(subject, kernel, n, inputs.a.data(), inputs.b.data(), r.data());
        const std::vector<KamErrorContext>& reports = Recorder::reports();
        ASSERT_EQ(reports.size(), wrong.size()) << "n=" << n;
        for (size_t i = 0; i < wrong.size(); ++i) {
          const size_t at = static_cast<size_t>(wrong[i]) * parts;
          const KamErrorContext& report = reports[i];
          EXPECT_EQ(report.index, wrong[i]);
          EXPECT_EQ(report.code, error->status);
          EXPECT_EQ(report.func_name, subject.name());
          EXPECT_EQ(report.func_name_len, static_cast<int>(subject.name().size()));
          EXPECT_EQ(static_cast<Real>(report.a1), inputs.a[at]);
          EXPECT_EQ(static_cast<Real>(report.a2),
                    subject.operands() == 2 ? inputs.b[at] : inputs.a[at]);
          const Real seen[] = {static_cast<Real>(report.r1), static_cast<Real>(report.r1_im)};
          EXPECT_TRUE(
              std::equal(seen, seen + parts, &r[at],
                         [](Real x, Real y) { return x == y || (std::isnan(x) && std::isnan(y)); }))
              << "at " << wrong[i];
        }
        EXPECT_EQ(vector::status(), wrong.empty() ? KAM_STATUS_OK : error->status);
      }
      {
        const WordsScope words(cell.accuracy | KAM_ERRMODE_CALLBACK, replace_result);
        call<Type>(subject, kernel, n, inputs.a.data(), inputs.b.data(), replaced.data());
      }
      for (const int at : wrong) {
        r[at * parts] = static_cast<Real>(kReplacement);
        if (parts == 2) r[at * parts + 1] = static_cast<Real>(-kReplacement);
      }
      EXPECT_TRUE(same_bits(replaced.data(), r.data(), r.size())) << "n=" << n;
    }
  });
}

// In the mode without error handling nothing is reported and the results are the same.
TEST_P(Contract, StaysSilentWithoutErrorHandling) {
  const Subject& subject = GetParam();
  for_each_kernel([&]<class Type>(Type, const Cell& cell, vector::KamKernel kernel) {
    using Real = typename Type::Real;
    const Inputs<Real> inputs(subject, kMaxCount, true);
    std::vector<Real> want(inputs.a.size()), r(want);
    {
      const WordsScope words(cell.accuracy | KAM_ERRMODE_IGNORE);
      call<Type>(subject, kernel, kMaxCount, inputs.a.data(), inputs.b.data(), want.data());
    }
    const WordsScope words(cell.accuracy | KAM_ERRMODE_NOERR);
    call<Type>(subject, kernel, kMaxCount, inputs.a.data(), inputs.b.data(), r.data());
    EXPECT_TRUE(same_bits(r.data(), want.data(), r.size()));
    EXPECT_EQ(vector::status(), KAM_STATUS_OK);
  });
}

}  // namespace
}  // namespace orba::test
