// What every kernel promises whatever it computes: it writes its n results and nothing else, each
// result depends on its element alone, the floating-point environment comes back, and elements in
// error are reported one by one in ascending order. The tests' own functions stand beside the
// library's, so that each shape and each use of the kernel contract is there.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>
#include <xmmintrin.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string_view>

#include "tests/kernels/functions/functions.h"
#include "tests/support/kernel_subjects.h"

namespace orba::test {
namespace {

constexpr int kMaxCount = 70;
constexpr int kMaxOffset = 7;
constexpr int kRotation =
    9;  // a step on in any vector length, a vector further in the shorter ones
constexpr uint32_t kDefaultMxcsr = 0x1f80;
constexpr uint32_t kMxcsrFlags = 0x3f;
constexpr uint32_t kMxcsrFlushAndDenormalsAreZero = 0x8040;

// Pages between two that must not be touched: where they begin and end. They stay for good.
std::pair<char*, char*> guarded_pages() {
  const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  void* const all = mmap(nullptr, 4 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  char* const first = static_cast<char*>(all) + page;
  mprotect(first, 2 * page, PROT_READ | PROT_WRITE);
  return {first, first + 2 * page};
}

template <class Real>
std::vector<Real> special_numbers() {
  using Numbers = std::numeric_limits<Real>;
  const Real inf = Numbers::infinity(), most = Numbers::max(), tiny = Numbers::denorm_min();
  return {0,
          -Real{0},
          inf,
          -inf,
          most,
          -most,
          Numbers::min(),
          tiny,
          -tiny,
          -1,
          1000,
          -1000,
          Numbers::quiet_NaN()};  // NaN last
}

// Ordinary numbers, or the same with special ones strewn in. At most one NaN per element, so that
// its payload doesn't depend on the order of operands.
template <class Real>
struct Inputs {
  std::vector<Real> a, b;

  Inputs(const Subject& subject, int n, bool special) : a(n * subject.parts_in), b(a.size()) {
    const std::vector<Real> pool = special_numbers<Real>();
    std::mt19937 random(7);
    for (size_t i = 0; i < a.size(); ++i) {
      a[i] = ordinary(random);
      b[i] = ordinary(random);
    }
    if (!special) return;
    const auto pick = [&](bool with_nan) { return pool[random() % (pool.size() - !with_nan)]; };
    for (int i = 0; i < n; i += 1 + static_cast<int>(random() % 3)) {
      const size_t at = static_cast<size_t>(i) * subject.parts_in + random() % subject.parts_in;
      a[at] = pick(true);
      if (random() % 2 == 0) b[at] = pick(!std::isnan(a[at]));
    }
  }

 private:
  static Real ordinary(std::mt19937& random) {
    return static_cast<Real>(0.5 + 1.5 * static_cast<double>(random()) * 0x1p-32);
  }
};

// What lies in result arrays before a call, and in the second one after it where there is only one.
template <class Real>
constexpr Real kUntouched = static_cast<Real>(-0x1.5a5p-3);

template <class Real>
struct Results {
  std::vector<Real> y, z;
  explicit Results(size_t numbers) : y(numbers, kUntouched<Real>), z(y) {}
  bool operator==(const Results& other) const {
    return y.size() == other.y.size() && starts_with(other.y.data(), other.z.data(), y.size());
  }
  bool starts_with(const Real* other_y, const Real* other_z, size_t numbers) const {
    const size_t bytes = numbers * sizeof(Real);
    return bytes == 0 || (std::memcmp(y.data(), other_y, bytes) == 0 &&
                          std::memcmp(z.data(), other_z, bytes) == 0);
  }
};

// Real sums and products, which report nothing, leave the rounding mode and the treatment of
// denormals to the caller on class 0 (and class 1 shares its code).
bool sets_environment(const Subject& subject, int kernel_class) {
  constexpr std::string_view kPlain[] = {"Add", "Sub", "Mul", "Sqr", "Abs"};
  const bool plain =
      std::find(std::begin(kPlain), std::end(kPlain), subject.function) != std::end(kPlain);
  return kernel_class >= 2 || subject.complex() || !plain;
}

// A kernel with the scalars that all calls here have.
template <class Real>
struct Kernel {
  const Subject& subject;
  vector::KamKernel entry;

  void operator()(int n, const Real* a, const Real* b, Real* y, Real* z) const {
    subject.invoke(entry, n, {{a, b}, {y, z}, kScalars<Real>});
  }
  Results<Real> operator()(const Inputs<Real>& x) const {
    const size_t n = x.a.size() / subject.parts_in;
    Results<Real> r(n * subject.parts_out);
    (*this)(static_cast<int>(n), x.a.data(), x.b.data(), r.y.data(), r.z.data());
    return r;
  }
};

// Calls body(cell, kernel) for every distinct kernel.
template <class Body>
void for_each_kernel(const Subject& subject, Body&& body) {
  with_type(subject, [&]<class Type>(Type) {
    for (const Cell& cell : cells(subject)) {
      SCOPED_TRACE(subject.name() + " " + cell.name());
      body(cell,
           Kernel<typename Type::Real>{subject, subject.kernel(cell.classes[0], cell.accuracy)});
      if (testing::Test::HasFatalFailure()) return;
    }
  });
}

std::vector<Subject> all_subjects() {
  std::vector<Subject> list = subjects();
  for (const Subject& subject : test_subjects()) list.push_back(subject);
  return list;
}

template <class Real>
void rotate(std::vector<Real>& x, size_t parts) {
  std::rotate(x.begin(), x.begin() + static_cast<std::ptrdiff_t>(kRotation * parts), x.end());
}

class Contract : public testing::TestWithParam<Subject> {};
INSTANTIATE_TEST_SUITE_P(All, Contract, testing::ValuesIn(all_subjects()),
                         [](const auto& subject) { return subject.param.name(); });

// Each result has the bits that a call of one element gives, whatever stands beside it, for every n
// at every offset; nothing around them is written; in-place calls and calls at the edge of a page
// give the same.
TEST_P(Contract, WritesItsResultsAndNothingElse) {
  const Subject& subject = GetParam();
  const size_t in = subject.parts_in, out = subject.parts_out;
  static const std::pair<char*, char*> pages[] = {guarded_pages(), guarded_pages(), guarded_pages(),
                                                  guarded_pages()};
  for_each_kernel(subject, [&]<class Real>(const Cell& cell, const Kernel<Real>& kernel) {
    const size_t room = (kMaxCount + 2 * kMaxOffset + 64) * 2;
    const WordsScope words(cell.accuracy | KAM_ERRMODE_IGNORE);
    for (const bool special : {false, true}) {
      Inputs<Real> inputs(subject, kMaxCount, special);
      Results<Real> want(kMaxCount * out);
      for (int i = 0; i < kMaxCount; ++i) {
        kernel(1, &inputs.a[i * in], &inputs.b[i * in], &want.y[i * out], &want.z[i * out]);
      }
      // Whatever lies around the arrays must not matter; it differs between the inputs.
      std::vector<Real> a(room, std::numeric_limits<Real>::quiet_NaN());
      std::vector<Real> b(room, std::numeric_limits<Real>::infinity());
      const Results<Real> untouched(room);
      for (int offset = 0; offset <= kMaxOffset; ++offset) {
        // Every element gets to another lane and among others.
        for (std::vector<Real>* x : {&inputs.a, &inputs.b}) rotate(*x, in);
        for (std::vector<Real>* x : {&want.y, &want.z}) rotate(*x, out);
        // Offsets count numbers, so complex elements also start between two of their places. The
        // arrays are misaligned in different ways.
        Results<Real> r(room);
        Real* const at[] = {a.data() + 16 + offset, b.data() + 16 + (offset * 3 & 7)};
        Real* const at_y = r.y.data() + 16 + (offset * 5 & 7);
        Real* const at_z = r.z.data() + 16 + (offset * 7 & 7);
        for (int n = 0; n <= kMaxCount; ++n) {
          std::copy_n(inputs.a.begin(), n * in, at[0]);
          std::copy_n(inputs.b.begin(), n * in, at[1]);
          r = untouched;
          kernel(n, at[0], at[1], at_y, at_z);
          ASSERT_TRUE(want.starts_with(at_y, at_z, n * out)) << "n=" << n << " offset=" << offset;
          std::fill_n(at_y, n * out, kUntouched<Real>);
          std::fill_n(at_z, n * out, kUntouched<Real>);
          ASSERT_EQ(r, untouched) << "wrote outside, n=" << n << " offset=" << offset;

          if (out > in) continue;  // results would run ahead of the arguments
          for (Real* const result : {at_y, at_z}) {
            for (int input = 0; input < subject.inputs; ++input) {
              if (result == at_z && subject.outputs == 1) continue;
              std::copy_n((input == 0 ? inputs.a : inputs.b).begin(), n * in, result);
              kernel(n, input == 0 ? result : at[0], input == 1 ? result : at[1], at_y, at_z);
              ASSERT_TRUE(want.starts_with(at_y, at_z, n * out))
                  << (result == at_y ? "y" : "z") << " in place of input " << input << ", n=" << n;
            }
          }
        }
      }
      for (int n = 1; n <= kMaxCount; ++n) {
        for (const bool at_end : {false, true}) {
          Real* at[4];
          for (int k = 0; k < 4; ++k) {
            const auto [first, end] = pages[k];
            at[k] = reinterpret_cast<Real*>(at_end ? end : first) -
                    (at_end ? n * (k < 2 ? in : out) : 0);
          }
          std::copy_n(inputs.a.begin(), n * in, at[0]);
          std::copy_n(inputs.b.begin(), n * in, at[1]);
          std::fill_n(at[3], n * out, kUntouched<Real>);
          kernel(n, at[0], at[1], at[2], at[3]);
          ASSERT_TRUE(want.starts_with(at[2], at[3], n * out)) << "guarded, n=" << n;
        }
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
template <class Real>
std::pair<Results<Real>, Environment> call_under(const Environment& caller,
                                                 const Kernel<Real>& kernel,
                                                 const Inputs<Real>& inputs) {
  const Environment old{_mm_getcsr(), x87_control()};
  Results<Real> r(inputs.a.size() / kernel.subject.parts_in * kernel.subject.parts_out);
  set_x87_control(caller.x87);
  _mm_setcsr(caller.mxcsr);
  kernel(static_cast<int>(inputs.a.size()) / kernel.subject.parts_in, inputs.a.data(),
         inputs.b.data(), r.y.data(), r.z.data());
  const Environment after{_mm_getcsr(), x87_control()};
  _mm_setcsr(old.mxcsr);
  set_x87_control(old.x87);
  return {r, after};
}

// Unmasked exceptions don't trap, control bits come back, sticky flags are kept and added to, and
// the results are those of the default environment.
TEST_P(Contract, RestoresTheFloatingPointEnvironment) {
  const Subject& subject = GetParam();
  for_each_kernel(subject, [&]<class Real>(const Cell& cell, const Kernel<Real>& kernel) {
    constexpr uint32_t kDivideByZeroFlag = 0x4, kInexactFlag = 0x20;
    constexpr uint32_t kUnmasked = 0, kRoundUp = 0x4000;
    constexpr uint16_t kX87Default = 0x37f, kX87Unmasked = 0x340;
    const WordsScope words(cell.accuracy | KAM_ERRMODE_IGNORE);
    for (const int n : {0, 1, 5, kMaxCount}) {
      const Inputs<Real> inputs(subject, n, true);
      const Results<Real> want = call_under({kDefaultMxcsr, kX87Default}, kernel, inputs).first;
      for (uint32_t mxcsr : {kUnmasked, kUnmasked | kDivideByZeroFlag, kDefaultMxcsr | kInexactFlag,
                             kDefaultMxcsr | kRoundUp, kUnmasked | kRoundUp,
                             kDefaultMxcsr | kMxcsrFlushAndDenormalsAreZero}) {
        const bool changes_results = (mxcsr & (kRoundUp | kMxcsrFlushAndDenormalsAreZero)) != 0;
        const Environment caller{mxcsr, mxcsr == kUnmasked ? kX87Unmasked : kX87Default};
        const auto [r, after] = call_under(caller, kernel, inputs);
        EXPECT_EQ(after.mxcsr & ~kMxcsrFlags, mxcsr & ~kMxcsrFlags) << std::hex << mxcsr;
        EXPECT_EQ(mxcsr & kMxcsrFlags & ~after.mxcsr, 0U) << "lost a flag, " << std::hex << mxcsr;
        EXPECT_EQ(after.x87, caller.x87);
        EXPECT_TRUE(n > 0 || after.mxcsr == mxcsr);
        if (!changes_results || sets_environment(subject, cell.classes[0])) {
          EXPECT_EQ(r, want) << "n=" << n << " mxcsr=" << std::hex << mxcsr;
        }
      }
    }
  });
}

// The hardware divider raises its flags behind masked exceptions, and they stay visible. Under the
// flush mode denormal inputs count as zero; class 0 sums never look at the mode.
TEST(ContractEnvironment, LeavesNewFlagsVisibleAndFlushesOnDemand) {
  for (const Subject& subject : subjects()) {
    for_each_kernel(subject, [&]<class Real>(const Cell& cell, const Kernel<Real>& kernel) {
      const int kernel_class = cell.classes[0];
      const Environment caller{kDefaultMxcsr, 0x37f};
      Inputs<Real> inputs(subject, 37, false);
      if (subject.name() == "vdDiv" && cell.accuracy == KAM_HA) {
        const WordsScope words(KAM_HA | KAM_ERRMODE_IGNORE);
        inputs.b[3] = 0;
        const uint32_t flags = call_under({0, 0x37f}, kernel, inputs).second.mxcsr;
        EXPECT_EQ(flags & 0x4, 0x4U) << "divide by zero";
        EXPECT_TRUE(kernel_class == 5 || (flags & 0x20) != 0) << "inexact";
      }
      // On class 1 either form of a sum may stand.
      if (subject.function != std::string_view("Add") || kernel_class == 1) return;
      constexpr Real kDenormal = std::numeric_limits<Real>::denorm_min();
      std::fill(inputs.a.begin(), inputs.a.end(), kDenormal);
      std::fill(inputs.b.begin(), inputs.b.end(), Real{0});
      for (const uint32_t mode : {KAM_DENORMALS_FLUSH, KAM_DENORMALS_KEEP}) {
        const WordsScope words(cell.accuracy | KAM_ERRMODE_IGNORE | mode);
        const bool flushed = mode == KAM_DENORMALS_FLUSH && sets_environment(subject, kernel_class);
        const std::vector<Real> y = call_under(caller, kernel, inputs).first.y;
        EXPECT_EQ(y, std::vector<Real>(y.size(), flushed ? Real{0} : kDenormal));
      }
    });
  }
}

constexpr double kReplacement = 42;

int replace_result(KamErrorContext* context) {
  context->r2 = -2 * kReplacement;
  context->r1 = kReplacement;
  context->r1_im = -kReplacement;
  return 0;
}

// Every pair of special numbers that a kernel reports. Statuses are the accuracy suite's business; here
// it matters that those which must report do.
template <class Real>
struct Fault {
  Real a, b;  // both parts of a complex number
  int status;
};
template <class Real>
std::vector<Fault<Real>> find_faults(const Kernel<Real>& kernel, uint32_t accuracy) {
  const Subject& subject = kernel.subject;
  const Recorder recorder(accuracy);
  std::vector<Fault<Real>> faults;
  Inputs<Real> element(subject, 1, false);
  for (const Real a : special_numbers<Real>()) {
    for (const Real b : special_numbers<Real>()) {
      std::fill(element.a.begin(), element.a.end(), a);
      std::fill(element.b.begin(), element.b.end(), b);
      Recorder::reports().clear();
      kernel(element);
      if (!Recorder::reports().empty()) faults.push_back({a, b, Recorder::reports()[0].code});
    }
  }
  constexpr std::string_view kReporting[] = {
      "vdDiv", "vdInv",   "vdSqrt",     "vdInvSqrt",   "vdExp",       "vdExpm1",
      "vdLn",  "vdLog10", "vdLog1p",    "vzMul",       "vzMulByConj", "vzDiv",
      "vzAdd", "vzSub",   "vdTestPair", "vdTestScale", "vdTestShared"};
  std::string name = subject.name();
  name[1] = subject.complex() ? 'z' : 'd';
  const bool silent = accuracy == KAM_EP && (name == "vzAdd" || name == "vzSub");
  EXPECT_TRUE(silent || !faults.empty() || std::ranges::count(kReporting, name) == 0) << "silent";
  return faults;
}

// Elements in error are reported in ascending order with their values, and a callback's result
// reaches the output. Elements that are not in error are never reported.
TEST_P(Contract, ReportsElementsInError) {
  const Subject& subject = GetParam();
  const int in = subject.parts_in, out = subject.parts_out;
  for_each_kernel(subject, [&]<class Real>(const Cell& cell, const Kernel<Real>& kernel) {
    const std::vector<Fault<Real>> faults = find_faults(kernel, cell.accuracy);
    const auto same = [](double x, Real y) { return std::isnan(y) ? std::isnan(x) : x == y; };
    for (const int n : {1, 7, 33, kMaxCount}) {
      Inputs<Real> inputs(subject, n, faults.empty());
      if (!faults.empty()) {  // of a number or its reciprocal, one lies in every domain
        const Recorder recorder(cell.accuracy);
        kernel(inputs);
        for (const KamErrorContext& report : Recorder::reports()) {
          inputs.a[report.index * in] = 1 / inputs.a[report.index * in];
        }
      }
      std::vector<int> wrong, status;
      for (int i = 0; i < n && !faults.empty();
           i += i == n - 1 ? 1 : std::min(i % 4 + 1, n - 1 - i)) {
        const Fault<Real>& fault = faults[(wrong.size() * 5 + n) % faults.size()];
        std::fill_n(&inputs.a[i * in], in, fault.a);
        std::fill_n(&inputs.b[i * in], in, fault.b);
        wrong.push_back(i);
        status.push_back(fault.status);
      }
      Results<Real> r(0);
      {
        const Recorder recorder(cell.accuracy);
        r = kernel(inputs);
        const std::vector<KamErrorContext>& reports = Recorder::reports();
        ASSERT_EQ(reports.size(), wrong.size()) << "n=" << n;
        for (size_t i = 0; i < wrong.size(); ++i) {
          const size_t at = static_cast<size_t>(wrong[i]) * out;
          const KamErrorContext& report = reports[i];
          EXPECT_EQ(report.index, wrong[i]);
          EXPECT_EQ(report.code, status[i]);
          EXPECT_EQ(report.func_name, subject.name());
          EXPECT_EQ(report.func_name_len, static_cast<int>(subject.name().size()));
          EXPECT_TRUE(same(report.a1, inputs.a[at]));
          EXPECT_TRUE(same(report.a2, subject.inputs == 2    ? inputs.b[at]
                                      : subject.scalars == 1 ? kScalars<Real>[0]
                                                             : inputs.a[at]));
          EXPECT_TRUE(same(report.r1, r.y[at]) && (out == 1 || same(report.r1_im, r.y[at + 1])));
          EXPECT_TRUE(same(report.r2, subject.outputs == 2 ? r.z[at] : r.y[at]));
        }
        EXPECT_EQ(vector::status(), wrong.empty() ? KAM_STATUS_OK : status.back());
      }
      const WordsScope words(cell.accuracy | KAM_ERRMODE_CALLBACK, replace_result);
      for (const int at : wrong) {
        r.y[at * out] = static_cast<Real>(kReplacement);
        if (out == 2) r.y[at * out + 1] = static_cast<Real>(-kReplacement);
        if (subject.outputs == 2) r.z[at * out] = static_cast<Real>(-2 * kReplacement);
      }
      EXPECT_EQ(kernel(inputs), r) << "n=" << n;
    }
  });
}

// In the mode without error handling nothing is reported and the results are the same.
TEST_P(Contract, StaysSilentWithoutErrorHandling) {
  const Subject& subject = GetParam();
  for_each_kernel(subject, [&]<class Real>(const Cell& cell, const Kernel<Real>& kernel) {
    const Inputs<Real> inputs(subject, kMaxCount, true);
    const auto results_in = [&](uint32_t mode) {
      const WordsScope words(cell.accuracy | mode);
      const Results<Real> r = kernel(inputs);
      EXPECT_TRUE(mode == KAM_ERRMODE_IGNORE || vector::status() == KAM_STATUS_OK);
      return r;
    };
    EXPECT_EQ(results_in(KAM_ERRMODE_NOERR), results_in(KAM_ERRMODE_IGNORE));
  });
}

// What the tests' own functions give, by the road that an element has to take.
template <class Real>
void expected(std::string_view name, bool complex, const Real* a, const Real* b, Real* y, Real* z) {
  const Real(&s)[4] = kScalars<Real>;
  const Real sum = std::abs(a[0]) + std::abs(a[complex ? 1 : 0]);
  if (name == "TestPair") {
    *y = std::isnan(*a) ? 5 : std::isinf(*a) ? 3 : std::abs(*a) > 10 ? *a / 4 : *a * 2;
    *z = std::isnan(*a) ? 6 : std::isinf(*a) ? 4 : std::abs(*a) > 10 ? -*a : *a / 2;
  } else if (name == "TestUnit") {
    y[0] = !std::isfinite(*a) ? 8 : std::abs(*a) > 10 ? *a / 4 : *a;
    y[1] = !std::isfinite(*a) ? 9 : std::abs(*a) > 10 ? -*a : *a * 2;
  } else if (name == "TestScale") {
    y[0] = a[0] * s[0];
    if (complex) y[1] = a[1] * (std::isfinite(y[0]) && std::isfinite(a[1] * s[1]) ? s[1] : -s[1]);
  } else if (name == "TestNorm") {
    *y = std::isfinite(sum) ? sum : 7;
  } else {
    *y = name == "TestShared" ? *a / *b : (*a * s[0] + s[1]) / (*b * s[2] + s[3]);
  }
}

// Marked lanes here and there, and stretches of nothing but marked ones and of nothing but errors, in
// arrays long enough that gathered lanes run on the rare road more than once.
TEST(ContractRoads, EveryElementTakesItsOwn) {
  constexpr int count = 1500;
  for (const Subject& subject : test_subjects()) {
    for_each_kernel(subject, [&]<class Real>(const Cell& cell, const Kernel<Real>& kernel) {
      Inputs<Real> x(subject, count, true);
      const auto fill = [&](int first, int end, Real value) {
        std::fill(&x.a[first * subject.parts_in], &x.a[end * subject.parts_in], value);
      };
      fill(400, 800, 1000);
      fill(650, 720, std::numeric_limits<Real>::infinity());
      const Recorder recorder(cell.accuracy);
      const Results<Real> r = kernel(x);
      Results<Real> want(r.y.size());
      for (int i = 0; i < count; ++i) {
        const int in = i * subject.parts_in, out = i * subject.parts_out;
        expected(subject.function, subject.parts_in == 2, &x.a[in], &x.b[in], &want.y[out],
                 &want.z[out]);
      }
      const auto same = [](Real p, Real q) { return p == q || (std::isnan(p) && std::isnan(q)); };
      EXPECT_TRUE(std::equal(r.y.begin(), r.y.end(), want.y.begin(), same));
      EXPECT_TRUE(std::equal(r.z.begin(), r.z.end(), want.z.begin(), same));
      EXPECT_TRUE(std::ranges::is_sorted(Recorder::reports(), {}, &KamErrorContext::index));
    });
  }
}

}  // namespace
}  // namespace orba::test
