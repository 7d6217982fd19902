#include <errno.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <string>
#include <tuple>

#include "tests/support/observe.h"
#include "vector/words/kernel_hooks.h"
#include "vector/words/thread_words.h"

namespace {

using namespace orba::vector;
using orba::test::stdout_of;

KamErrorContext seen;
int calls;
int answer;
uint32_t mode_of_callback;
bool replace;

int watch(KamErrorContext* context) {
  seen = *context;
  ++calls;
  if (replace) {
    context->r1 = 100.5;
    context->r2 = 200.5;
    context->r1_im = 101.5;
    context->r2_im = 201.5;
  }
  if (mode_of_callback != 0) kamSetMode(mode_of_callback);
  return answer;
}

uint16_t x87_status() {
  uint16_t word;
  asm volatile("fnstsw %0" : "=m"(word));
  return word & 0x3F;
}

uint16_t x87_masks() {
  uint16_t word;
  asm volatile("fnstcw %0" : "=m"(word));
  return word & 0x3F;
}

class ElementError : public testing::Test {
 protected:
  void SetUp() override { reset(KAM_ERRMODE_DEFAULT); }
  void TearDown() override { reset(KAM_ERRMODE_DEFAULT); }

  static void reset(uint32_t mode) {
    thread_words() = {KAM_HA | mode, 0, nullptr, nullptr};
    calls = answer = 0;
    mode_of_callback = 0;
    replace = false;
    errno = 0;
    asm volatile("fnclex");
  }
};

// One error of a one-input, one-output function at element 1 of four.
double out_of_domain[4];
void raise_double(int32_t code, const char* name = "vdSqrt") {
  static const double argument[4] = {1, -4, 9, 16};
  out_of_domain[1] = 7;
  element_error(code, 1, argument, argument, out_of_domain, out_of_domain, name);
}

// The six layouts, each with arrays of its own increment.
template <class T, int parts>
struct Plain {
  using Real = T;
  static constexpr int kParts = parts;
  static constexpr int kIncrement[4] = {1, 1, 1, 1};
  static void raise(int32_t code, int32_t i, const T* a, const T* b, T* r1, T* r2) {
    if constexpr (parts == 1) {
      element_error(code, i, a, b, r1, r2, "vtName");
    } else {
      element_error_complex(code, i, a, b, r1, r2, "vtName");
    }
  }
};
template <class T>
struct Strided {
  using Real = T;
  static constexpr int kParts = 1;
  static constexpr int kIncrement[4] = {2, -1, 3, 1};
  static void raise(int32_t code, int32_t i, const T* a, const T* b, T* r1, T* r2) {
    element_error_strided(code, i, a, 2, b, -1, r1, 3, r2, 1, "vtName");
  }
};

template <class Layout>
class ElementLayout : public ElementError {
 protected:
  using Real = typename Layout::Real;
  static constexpr int kLength = 64;
  static constexpr int kStart = 16;  // room for negative increments
  static constexpr int kIndex = 5;

  void SetUp() override {
    ElementError::SetUp();
    for (int k = 0; k < 4; ++k) {
      for (int i = 0; i < kLength; ++i) arrays_[k][i] = static_cast<Real>(1000 * (k + 1) + i);
    }
  }
  void raise(int32_t code) {
    Layout::raise(code, kIndex, arrays_[0] + kStart, arrays_[1] + kStart, arrays_[2] + kStart,
                  arrays_[3] + kStart);
  }
  static int position(int array) {
    return kStart + kIndex * Layout::kIncrement[array] * Layout::kParts;
  }
  // Checks that only the result elements in error differ from the start, by
  // these values.
  void expect_results(double r1, double r2, double r1_im, double r2_im) {
    const double wanted[4][2] = {{}, {}, {r1, r1_im}, {r2, r2_im}};
    for (int k = 0; k < 4; ++k) {
      for (int i = 0; i < kLength; ++i) {
        const int part = i - position(k);
        const bool changed = k >= 2 && part >= 0 && part < Layout::kParts;
        EXPECT_EQ(arrays_[k][i], changed ? wanted[k][part] : 1000 * (k + 1) + i) << k << ' ' << i;
      }
    }
  }

  Real arrays_[4][kLength];
};

using Layouts = testing::Types<Plain<double, 1>, Plain<float, 1>, Plain<double, 2>, Plain<float, 2>,
                               Strided<double>, Strided<float>>;
TYPED_TEST_SUITE(ElementLayout, Layouts);

TYPED_TEST(ElementLayout, CallbackRecordAndReplacement) {
  kamSetErrorCallBack(watch);
  kamSetMode(KAM_ERRMODE_CALLBACK);
  thread_words().base =
      this->arrays_[0] + this->kStart - 7 * TypeParam::kParts;  // 7 elements were before
  replace = true;
  this->raise(KAM_STATUS_OVERFLOW);
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(kamGetErrStatus(), KAM_STATUS_OVERFLOW);
  EXPECT_EQ(seen.code, KAM_STATUS_OVERFLOW);
  EXPECT_EQ(seen.index, this->kIndex + 7);
  EXPECT_STREQ(seen.func_name, "vtName");
  EXPECT_EQ(seen.func_name_len, 6);
  EXPECT_EQ(seen.a1, 1000 + this->position(0));
  EXPECT_EQ(seen.a2, 2000 + this->position(1));
  EXPECT_EQ(seen.r1, 3000 + this->position(2));
  EXPECT_EQ(seen.r2, 4000 + this->position(3));
  if (TypeParam::kParts == 2) {
    EXPECT_EQ(seen.a1_im, seen.a1 + 1);
    EXPECT_EQ(seen.a2_im, seen.a2 + 1);
    EXPECT_EQ(seen.r1_im, seen.r1 + 1);
    EXPECT_EQ(seen.r2_im, seen.r2 + 1);
  }
  this->expect_results(100.5, 200.5, 101.5, 201.5);
}

TYPED_TEST(ElementLayout, CallbackThatFinishesTheError) {
  kamSetErrorCallBack(watch);  // beside errno and the exception
  replace = true;
  answer = 1;
  this->raise(KAM_STATUS_ERRDOM);
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(kamGetErrStatus(), KAM_STATUS_ERRDOM);
  EXPECT_EQ(errno, 0);
  EXPECT_EQ(x87_status(), 0);
  this->expect_results(3000 + this->position(2), 4000 + this->position(3), 3001 + this->position(2),
                       4001 + this->position(3));
}

TYPED_TEST(ElementLayout, NoElementWithoutArrays) {
  kamSetErrorCallBack(watch);
  for (const int32_t code : {KAM_STATUS_BADSIZE, KAM_STATUS_BADMEM}) {
    TypeParam::raise(code, 0, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(seen.code, code);
    EXPECT_EQ(kamGetErrStatus(), code);
  }
}

TEST_F(ElementError, ReactionOfEveryMode) {
  const struct {
    uint32_t mode;
    int32_t status;
    int error_number;
    bool printed;
    int x87_flags, calls;
  } cases[] = {// clang-format off
      {KAM_ERRMODE_NOERR, 0, 0, false, 0, 0}, {KAM_ERRMODE_IGNORE, 2, 0, false, 0, 0},
      {KAM_ERRMODE_ERRNO, 2, ERANGE, false, 0, 0}, {KAM_ERRMODE_STDERR, 2, 0, true, 0, 0},
      {KAM_ERRMODE_EXCEPT, 2, 0, false, 4, 0}, {KAM_ERRMODE_CALLBACK, 2, 0, false, 0, 1},
      {KAM_ERRMODE_DEFAULT, 2, ERANGE, false, 4, 1}, {0, 2, 0, false, 0, 0},
      {KAM_ERRMODE_ERRNO | KAM_ERRMODE_STDERR, 2, ERANGE, true, 0, 0},
      // the two quiet modes are quiet only when they stand alone
      {KAM_ERRMODE_NOERR | KAM_ERRMODE_ERRNO, 2, ERANGE, false, 0, 0},
      {KAM_ERRMODE_IGNORE | KAM_ERRMODE_CALLBACK, 2, 0, false, 0, 1},
      // traps of other exceptions, and traps without the exception mode
      {KAM_ERRMODE_EXCEPT | KAM_TRAP_INVALID | KAM_TRAP_OVERFLOW, 2, 0, false, 4, 0},
      {KAM_ERRMODE_ERRNO | KAM_TRAP_MASK, 2, ERANGE, false, 0, 0}};
  // clang-format on
  for (const auto& c : cases) {
    SCOPED_TRACE(c.mode);
    reset(c.mode);
    thread_words().callback = watch;
    const std::string text = stdout_of([] { raise_double(KAM_STATUS_SING); });
    EXPECT_EQ(errno, c.error_number);
    EXPECT_EQ(kamGetErrStatus(), c.status);
    EXPECT_EQ(!text.empty(), c.printed);
    EXPECT_EQ(x87_status(), c.x87_flags);
    EXPECT_EQ(x87_masks(), 0x3F);
    EXPECT_EQ(calls, c.calls);
    EXPECT_EQ(out_of_domain[1], 7);
  }
}

TEST_F(ElementError, CallbackMayChangeTheModeOfWhatFollows) {
  kamSetErrorCallBack(watch);
  mode_of_callback = KAM_ERRMODE_EXCEPT;
  raise_double(KAM_STATUS_ERRDOM);
  EXPECT_EQ(errno, 0);
  EXPECT_EQ(x87_status(), 1);
  reset(KAM_ERRMODE_CALLBACK);  // no other reaction stands, so none is looked up
  thread_words().callback = watch;
  mode_of_callback = KAM_ERRMODE_ERRNO;
  raise_double(KAM_STATUS_ERRDOM);
  EXPECT_EQ(errno, 0);
}

TEST_F(ElementError, ErrnoAndExceptionFlagOfEveryCode) {
  struct Case {
    int32_t code;
    int error_number;
    int x87_flag;
  };
  const Case cases[] = {{-2, EACCES, 0}, {-1, EINVAL, 0},  {0, 0, 0},       {1, EDOM, 0x01},
                        {2, ERANGE, 4},  {3, ERANGE, 0x8}, {4, ERANGE, 16}, {5, EFAULT, 0},
                        {-3, EFAULT, 0}, {1000, EFAULT, 0}};
  for (const Case& c : cases) {
    reset(KAM_ERRMODE_DEFAULT);
    errno = 99;
    raise_double(c.code);
    EXPECT_EQ(errno, c.error_number) << c.code;
    EXPECT_EQ(x87_status(), c.x87_flag) << c.code;
    EXPECT_EQ(kamGetErrStatus(), c.code);
  }
  // Flags are sticky: the next error adds its own.
  raise_double(KAM_STATUS_ERRDOM);
  raise_double(KAM_STATUS_OVERFLOW);
  EXPECT_EQ(x87_status(), 0x09);
}

TEST_F(ElementError, PrintedLines) {
  const struct {
    int32_t code;
    double a, b, r1, r2;
    const char* text;
  } cases[] = {
      // clang-format off
      {-1, 1, 1, 2, 2, "(KAM_STATUS_BADSIZE) in vdF: array size 0 is not positive.\n"},
      {-2, 1, 1, 2, 2, "(KAM_STATUS_BADMEM) in vdF: NULL pointer is passed.\n"},
      {1, -4, -4, 7, 7, 
       "(KAM_STATUS_ERRDOM) in vdF: argument is out of domain.\na(0)=-4\nr(0)=7\n"},
      {2, 1.5, 1.5, 2, 0,
       "(KAM_STATUS_SING) in vdF: argument caused singularity.\na(0)=1.5\nr(0)=2\n"},
      {3, 1, -0.0, 2, 3,
       "(KAM_STATUS_OVERFLOW) in vdF: argument caused overflow.\na(0)=1\ny(0)=2\nz(0)=3\n"},
      {4, 1e-300, 2e100, 0, 0,
       "(KAM_STATUS_UNDERFLOW) in vdF: argument caused underflow.\n"
       "a(0)=1e-300\nb(0)=2e+100\ny(0)=0\n"}};
  // clang-format on
  const auto printed = [](int32_t code, double a, double b, double r1, double r2) {
    reset(KAM_ERRMODE_STDERR);
    return stdout_of([&] { element_error(code, 0, &a, &b, &r1, &r2, "vdF"); });
  };
  for (const auto& c : cases) {
    EXPECT_EQ(printed(c.code, c.a, c.b, c.r1, c.r2), std::string("Error ") + c.text);
  }
  EXPECT_EQ(printed(0, 1, 1, 2, 2), "");
  EXPECT_EQ(printed(1000, 1, 2, 3, 4), "Unknown error in vdF.\na(0)=1\nb(0)=2\ny(0)=3\nz(0)=4\n");
}

TEST_F(ElementError, LongNameIsCut) {
  kamSetErrorCallBack(watch);
  raise_double(KAM_STATUS_SING, std::string(60, 'x').c_str());
  EXPECT_EQ(seen.func_name, std::string(47, 'x'));
  EXPECT_EQ(seen.func_name_len, 47);
}

using ElementErrorDeathTest = ElementError;

TEST_F(ElementErrorDeathTest, UnmaskedExceptionTraps) {
  constexpr int kTrapped = 42;
  const std::tuple<uint32_t, int32_t, int> cases[] = {
      {KAM_TRAP_INVALID, KAM_STATUS_ERRDOM, kTrapped},
      {KAM_TRAP_DIVBYZERO, KAM_STATUS_SING, kTrapped},
      {KAM_TRAP_OVERFLOW, KAM_STATUS_OVERFLOW, kTrapped},
      {KAM_TRAP_UNDERFLOW, KAM_STATUS_UNDERFLOW, kTrapped},
      {KAM_TRAP_MASK, 1000, 0}};
  for (const auto& [trap, code, exit_code] : cases) {
    const auto raise = [mode = KAM_ERRMODE_EXCEPT | trap, status = code] {
      signal(SIGFPE, [](int) { _exit(kTrapped); });
      reset(mode);
      raise_double(status);
      _exit(0);
    };
    EXPECT_EXIT(raise(), testing::ExitedWithCode(exit_code), "") << trap << ' ' << code;
  }
}

}  // namespace
