#include <errno.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <string>
#include <tuple>
#include <utility>

#include "tests/support/observe.h"
#include "vector/words/kernel_hooks.h"
#include "vector/words/thread_words.h"

namespace {

using namespace orba::vector;
using orba::test::stdout_of;

KamErrorContext seen;
int calls, answer;
uint32_t mode_of_callback;
bool replace;
constexpr std::tuple kReplaced{100.5, 200.5, 101.5, 201.5};

int watch(KamErrorContext* context) {
  seen = *context;
  ++calls;
  if (replace) std::tie(context->r1, context->r2, context->r1_im, context->r2_im) = kReplaced;
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

constexpr int kSame = 99;

void reset(uint32_t mode) {
  thread_words() = {KAM_HA | mode, 0, nullptr, nullptr};
  calls = answer = 0;
  mode_of_callback = 0;
  replace = false;
  errno = kSame;
  asm volatile("fnclex");
}
struct ElementError : testing::Test {
  ElementError() { reset(KAM_ERRMODE_DEFAULT); }
  ~ElementError() override { reset(KAM_ERRMODE_DEFAULT); }
};

// One error of a one-input, one-output function at element 1 of four.
double out_of_domain[4];
void raise_double(int32_t code, const char* name = "vdSqrt") {
  static const double argument[4] = {1, -4, 9, 16};
  out_of_domain[1] = 7;
  element_error(code, 1, argument, argument, out_of_domain, out_of_domain, name);
}

// An error of element 5 in each of the six layouts, with arrays of their own increments: what the
// callback sees, and that only the result elements in error change.
template <class T, int parts, bool strided>
void check_layout() {
  SCOPED_TRACE(testing::Message() << sizeof(T) << ' ' << parts << ' ' << strided);
  const auto raise = [](int32_t code, int32_t i, const T* a, const T* b, T* r1, T* r2) {
    if constexpr (strided) {
      element_error_strided(code, i, a, 2, b, -1, r1, 3, r2, 1, "vtName");
    } else if constexpr (parts == 2) {
      element_error_complex(code, i, a, b, r1, r2, "vtName");
    } else {
      element_error(code, i, a, b, r1, r2, "vtName");
    }
  };
  constexpr int kStart = 16;                   // room for negative increments
  for (const bool finishes : {false, true}) {  // then nothing is stored, nor does more follow
    reset(finishes ? KAM_ERRMODE_DEFAULT : KAM_ERRMODE_CALLBACK);
    thread_words().callback = watch;
    replace = true;
    answer = finishes;
    T arrays[4][64], position[4];
    for (int k = 0; k < 4; ++k) {
      for (int i = 0; i < 64; ++i) arrays[k][i] = static_cast<T>(1000 * (k + 1) + i);
      position[k] = arrays[k][kStart + 5 * parts * (strided ? std::array{2, -1, 3, 1}[k] : 1)];
    }
    thread_words().base = arrays[0] + kStart - 7 * parts;  // 7 elements were before
    raise(KAM_STATUS_OVERFLOW, 5, arrays[0] + kStart, arrays[1] + kStart, arrays[2] + kStart,
          arrays[3] + kStart);
    EXPECT_EQ(std::tuple(calls, kamGetErrStatus(), seen.code, seen.index, seen.func_name_len),
              std::tuple(1, KAM_STATUS_OVERFLOW, KAM_STATUS_OVERFLOW, 12, 6));
    EXPECT_STREQ(seen.func_name, "vtName");
    EXPECT_EQ((std::array{seen.a1, seen.a2, seen.r1, seen.r2}),
              (std::array<double, 4>{position[0], position[1], position[2], position[3]}));
    if (parts == 2) {
      EXPECT_EQ((std::array{seen.a1_im - seen.a1, seen.a2_im - seen.a2, seen.r1_im - seen.r1,
                            seen.r2_im - seen.r2}),
                (std::array{1.0, 1.0, 1.0, 1.0}));
    }
    EXPECT_EQ(std::tuple(errno, x87_status()), std::tuple(kSame, 0));
    const double stored[4][2] = {{}, {}, {100.5, 101.5}, {200.5, 201.5}};
    for (int k = 0; k < 4; ++k) {
      for (int i = 0; i < 64; ++i) {
        const T old = static_cast<T>(1000 * (k + 1) + i), part = old - position[k];
        const bool changed = !finishes && k >= 2 && part >= 0 && part < parts;
        EXPECT_EQ(arrays[k][i], changed ? stored[k][static_cast<int>(part)] : old) << k << ' ' << i;
      }
    }
  }
  for (const int32_t code : {KAM_STATUS_BADSIZE, KAM_STATUS_BADMEM}) {  // no element at all
    raise(code, 0, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(std::tuple(seen.code, kamGetErrStatus()), std::tuple(code, code));
  }
}

TEST_F(ElementError, EveryLayout) {
  check_layout<double, 1, false>();
  check_layout<float, 1, false>();
  check_layout<double, 2, false>();
  check_layout<float, 2, false>();
  check_layout<double, 1, true>();
  check_layout<float, 1, true>();
}

TEST_F(ElementError, Reactions) {
  constexpr uint32_t kErrno = KAM_ERRMODE_ERRNO, kExcept = KAM_ERRMODE_EXCEPT,
                     kCallback = KAM_ERRMODE_CALLBACK, kDefault = KAM_ERRMODE_DEFAULT;
  const struct {
    uint32_t mode;
    int32_t code, status;
    int error_number, x87_flags, calls;
    bool printed = false;
    uint32_t mode_of_callback = 0;  // that it sets for what follows
  } cases[] = {                     // clang-format off
      {KAM_ERRMODE_NOERR, 2, 0, kSame, 0, 0}, {KAM_ERRMODE_IGNORE, 2, 2, kSame, 0, 0},
      {kErrno, 2, 2, ERANGE, 0, 0}, {KAM_ERRMODE_STDERR, 2, 2, kSame, 0, 0, true},
      {kExcept, 2, 2, kSame, 4, 0}, {kCallback, 2, 2, kSame, 0, 1}, {0, 2, 2, kSame, 0, 0},
      {kErrno | KAM_ERRMODE_STDERR, 2, 2, ERANGE, 0, 0, true},
      // the two quiet modes are quiet only when they stand alone
      {KAM_ERRMODE_NOERR | kErrno, 2, 2, ERANGE, 0, 0},
      {KAM_ERRMODE_IGNORE | kCallback, 2, 2, kSame, 0, 1},
      // traps of other exceptions, and traps without the exception mode
      {kExcept | KAM_TRAP_INVALID | KAM_TRAP_OVERFLOW, 2, 2, kSame, 4, 0},
      {kErrno | KAM_TRAP_MASK, 2, 2, ERANGE, 0, 0},
      // every code
      {kDefault, -2, -2, EACCES, 0, 1}, {kDefault, -1, -1, EINVAL, 0, 1}, {kDefault, 0, 0, 0, 0, 1},
      {kDefault, 1, 1, EDOM, 1, 1}, {kDefault, 2, 2, ERANGE, 4, 1}, {kDefault, 3, 3, ERANGE, 8, 1},
      {kDefault, 4, 4, ERANGE, 16, 1}, {kDefault, 5, 5, EFAULT, 0, 1},
      {kDefault, -3, -3, EFAULT, 0, 1}, {kDefault, 1000, 1000, EFAULT, 0, 1},
      // where no other reaction stands, none is looked up after the callback
      {kDefault, 1, 1, kSame, 1, 1, false, kExcept}, {kCallback, 1, 1, kSame, 0, 1, false, kErrno}};
  // clang-format on
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    reset(c.mode);
    thread_words().callback = watch;
    mode_of_callback = c.mode_of_callback;
    const std::string text = stdout_of([&] { raise_double(c.code); });
    EXPECT_EQ(std::tuple(errno, kamGetErrStatus(), !text.empty(), x87_status(), calls),
              std::tuple(c.error_number, c.status, c.printed, c.x87_flags, c.calls));
    EXPECT_EQ(x87_masks(), 0x3F);
    EXPECT_EQ(out_of_domain[1], 7);
  }
  reset(KAM_ERRMODE_DEFAULT);  // flags are sticky: the next error adds its own
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
      {-1, 1, 1, 2, 2, "Error (KAM_STATUS_BADSIZE) in vdF: array size 0 is not positive.\n"},
      {-2, 1, 1, 2, 2, "Error (KAM_STATUS_BADMEM) in vdF: NULL pointer is passed.\n"},
      {1, -4, -4, 7, 7, 
       "Error (KAM_STATUS_ERRDOM) in vdF: argument is out of domain.\na(0)=-4\nr(0)=7\n"},
      {2, 1.5, 1.5, 2, 0,
       "Error (KAM_STATUS_SING) in vdF: argument caused singularity.\na(0)=1.5\nr(0)=2\n"},
      {3, 1, -0.0, 2, 3,
       "Error (KAM_STATUS_OVERFLOW) in vdF: argument caused overflow.\na(0)=1\ny(0)=2\nz(0)=3\n"},
      {4, 1e-300, 2e100, 0, 0,
       "Error (KAM_STATUS_UNDERFLOW) in vdF: argument caused underflow.\n"
       "a(0)=1e-300\nb(0)=2e+100\ny(0)=0\n"},
      {1000, 1, 2, 3, 4, "Unknown error in vdF.\na(0)=1\nb(0)=2\ny(0)=3\nz(0)=4\n"},
      {0, 1, 1, 2, 2, ""}};
  // clang-format on
  for (auto c : cases) {
    reset(KAM_ERRMODE_STDERR);
    EXPECT_EQ(stdout_of([&] { element_error(c.code, 0, &c.a, &c.b, &c.r1, &c.r2, "vdF"); }),
              c.text);
  }
}

TEST_F(ElementError, LongNameIsCut) {
  kamSetErrorCallBack(watch);
  raise_double(KAM_STATUS_SING, std::string(60, 'x').c_str());
  EXPECT_EQ(seen.func_name, std::string(47, 'x'));
  EXPECT_EQ(seen.func_name_len, 47);
}

using ElementErrorDeathTest = ElementError;

TEST_F(ElementErrorDeathTest, UnmaskedExceptionTraps) {
  const std::pair<uint32_t, int32_t> cases[] = {{KAM_TRAP_INVALID, KAM_STATUS_ERRDOM},
                                                {KAM_TRAP_DIVBYZERO, KAM_STATUS_SING},
                                                {KAM_TRAP_OVERFLOW, KAM_STATUS_OVERFLOW},
                                                {KAM_TRAP_UNDERFLOW, KAM_STATUS_UNDERFLOW},
                                                {KAM_TRAP_MASK, 1000}};
  for (const auto& [trap, code] : cases) {
    const auto raise = [mode = KAM_ERRMODE_EXCEPT | trap, status = code] {
      signal(SIGFPE, [](int) { _exit(42); });
      reset(mode);
      raise_double(status);
      _exit(0);
    };
    EXPECT_EXIT(raise(), testing::ExitedWithCode(code == 1000 ? 0 : 42), "") << code;
  }
}

}  // namespace
