#include "vector/words/kernel_hooks.h"

#include <bit>
#include <utility>

#include "services/bounded_string.h"
#include "services/messages.h"
#include "services/platform/platform.h"
#include "services/threads/float_state.h"
#include "vector/words/thread_words.h"

namespace orba::vector {
namespace {

constexpr size_t kNameCharacters = 47;  // kept of a function's name

// An array of elements of `kParts` reals each, `increment` elements apart.
template <class Real, int kParts>
struct Elements {
  Real* first;
  int32_t increment = 1;

  Real* at(int32_t i) const { return first + int64_t{i} * increment * kParts; }
};

template <class Real, int kParts>
void load(Elements<Real, kParts> from, int32_t i, double& real, double& imaginary) {
  const Real* element = from.at(i);
  real = element[0];
  if constexpr (kParts == 2) imaginary = element[1];
}

template <class Real, int kParts>
void store(Elements<Real, kParts> to, int32_t i, double real, double imaginary) {
  Real* element = to.at(i);
  element[0] = static_cast<Real>(real);
  if constexpr (kParts == 2) element[1] = static_cast<Real>(imaginary);
}

int errno_of(int32_t code) {
  switch (code) {
    case KAM_STATUS_BADMEM:
      return 13;
    case KAM_STATUS_BADSIZE:
      return 22;
    case KAM_STATUS_OK:
      return 0;
    case KAM_STATUS_ERRDOM:
      return 33;
    case KAM_STATUS_SING:
    case KAM_STATUS_OVERFLOW:
    case KAM_STATUS_UNDERFLOW:
      return 34;
    default:
      return 14;
  }
}

int message_of(int32_t code) {
  switch (code) {
    case KAM_STATUS_ERRDOM:
      return services::kMessageStatusErrDom;
    case KAM_STATUS_SING:
      return services::kMessageStatusSing;
    case KAM_STATUS_OVERFLOW:
      return services::kMessageStatusOverflow;
    case KAM_STATUS_UNDERFLOW:
      return services::kMessageStatusUnderflow;
    default:
      return services::kMessageStatusUnknown;
  }
}

void print_value(int message, int32_t index, double value) {
  services::print_message(services::MessageKind::error, message, 2, index, value);
}

// One-input functions give their input twice, one-output functions their output twice.
bool absent(double second, double first) {
  return std::bit_cast<uint64_t>(second) == std::bit_cast<uint64_t>(first) || second == 0.0;
}

void print_values(const KamErrorContext& context) {
  const bool has_b = !absent(context.a2, context.a1);
  const bool has_z = !absent(context.r2, context.r1);
  int message = has_b ? (has_z ? services::kMessageValuesABYZ : services::kMessageValuesABY)
                      : (has_z ? services::kMessageValuesAYZ : services::kMessageValuesA);
  print_value(message++, context.index, context.a1);
  if (has_b) print_value(message++, context.index, context.a2);
  print_value(message++, context.index, context.r1);
  if (has_z) print_value(message, context.index, context.r2);
}

void print_error(const KamErrorContext& context) {
  constexpr auto kKind = services::MessageKind::error;
  switch (context.code) {
    case KAM_STATUS_OK:
      break;
    case KAM_STATUS_BADSIZE:
      services::print_message(kKind, services::kMessageStatusBadSize, 2, context.func_name,
                              context.index);
      break;
    case KAM_STATUS_BADMEM:
      services::print_message(kKind, services::kMessageStatusBadMem, 1, context.func_name);
      break;
    default:
      services::print_message(kKind, message_of(context.code), 1, context.func_name);
      print_values(context);
  }
}

// The exception flags have the same bit numbers in the status word as their masks in the control
// word.
constexpr uint32_t kX87Invalid = 0x01;
constexpr uint32_t kX87DivideByZero = 0x04;
constexpr uint32_t kX87Overflow = 0x08;
constexpr uint32_t kX87Underflow = 0x10;

uint32_t x87_flag_of(int32_t code) {
  switch (code) {
    case KAM_STATUS_ERRDOM:
      return kX87Invalid;
    case KAM_STATUS_SING:
      return kX87DivideByZero;
    case KAM_STATUS_OVERFLOW:
      return kX87Overflow;
    case KAM_STATUS_UNDERFLOW:
      return kX87Underflow;
    default:
      return 0;
  }
}

uint32_t x87_unmasked_by(uint32_t mode) {
  return ((mode & KAM_TRAP_INVALID) != 0 ? kX87Invalid : 0) |
         ((mode & KAM_TRAP_DIVBYZERO) != 0 ? kX87DivideByZero : 0) |
         ((mode & KAM_TRAP_OVERFLOW) != 0 ? kX87Overflow : 0) |
         ((mode & KAM_TRAP_UNDERFLOW) != 0 ? kX87Underflow : 0);
}

// Raises the exception of a status code: a trap where the mode unmasks it, in any case the sticky
// flag. The x87 unit lets an environment be loaded with a flag already pending, which needs no
// operation that would really fail.
void raise_exception(int32_t code, uint32_t mode) {
  const uint32_t flag = x87_flag_of(code);
  services::X87Environment environment;
  asm volatile("fnstenv %0" : "=m"(environment));

  services::X87Environment pending = environment;
  pending.control &= ~x87_unmasked_by(mode);
  pending.status = (pending.status & ~services::kFloatExceptions) | flag;
  asm volatile("fldenv %0\n\tfwait" : : "m"(pending));  // traps at the wait

  environment.control |= services::kFloatExceptions;
  environment.status |= flag;
  asm volatile("fldenv %0" : : "m"(environment));
}

template <class Real, int kParts>
void handle(int32_t code, int32_t index, Elements<const Real, kParts> a,
            Elements<const Real, kParts> b, Elements<Real, kParts> r1, Elements<Real, kParts> r2,
            const char* name) {
  const uint32_t error_mode = mode() & KAM_ERRMODE_MASK;
  if (error_mode == KAM_ERRMODE_NOERR) return;
  set_status(code);
  if (error_mode == KAM_ERRMODE_IGNORE) return;

  KamErrorContext context = {};
  context.code = code;
  context.index = index;
  KamThreadWords& words = thread_words();
  if (const void* base = words.base) {
    const ptrdiff_t bytes = reinterpret_cast<const char*>(a.first) - static_cast<const char*>(base);
    context.index += static_cast<int32_t>(bytes / static_cast<ptrdiff_t>(kParts * sizeof(Real)));
  }
  services::copy_string(context.func_name, sizeof context.func_name, name, kNameCharacters);
  context.func_name_len =
      static_cast<int32_t>(services::string_length(context.func_name, sizeof context.func_name));

  const bool has_element = code != KAM_STATUS_BADSIZE && code != KAM_STATUS_BADMEM;
  if (has_element) {
    load(a, index, context.a1, context.a1_im);
    load(b, index, context.a2, context.a2_im);
    load(r1, index, context.r1, context.r1_im);
    load(r2, index, context.r2, context.r2_im);
  }

  if ((error_mode & KAM_ERRMODE_CALLBACK) != 0) {
    // What the callback calls in its turn starts from arrays of its own.
    const KamErrorCallBack user_callback = callback();
    const void* base = std::exchange(words.base, nullptr);
    const bool finished = user_callback != nullptr && user_callback(&context) != 0;
    words.base = base;
    if (finished) return;
  }

  constexpr uint32_t kReactions = KAM_ERRMODE_NOERR | KAM_ERRMODE_EXCEPT | KAM_ERRMODE_STDERR |
                                  KAM_ERRMODE_ERRNO | KAM_ERRMODE_IGNORE;
  if ((error_mode & kReactions) != 0) {
    const uint32_t now = mode();  // the callback may have changed it
    if ((now & KAM_ERRMODE_ERRNO) != 0)
      services::platform::set_runtime_errno(errno_of(context.code));
    if ((now & KAM_ERRMODE_STDERR) != 0) print_error(context);
    if ((now & KAM_ERRMODE_EXCEPT) != 0) raise_exception(context.code, now);
  }

  if (has_element) {
    store(r2, index, context.r2, context.r2_im);
    store(r1, index, context.r1, context.r1_im);
  }
}

}  // namespace

uint32_t kernel_mode() noexcept { return mode(); }

void element_error(int32_t code, int32_t index, const double* a, const double* b, double* r1,
                   double* r2, const char* name) noexcept {
  handle<double, 1>(code, index, {a}, {b}, {r1}, {r2}, name);
}

void element_error(int32_t code, int32_t index, const float* a, const float* b, float* r1,
                   float* r2, const char* name) noexcept {
  handle<float, 1>(code, index, {a}, {b}, {r1}, {r2}, name);
}

void element_error_complex(int32_t code, int32_t index, const double* a, const double* b,
                           double* r1, double* r2, const char* name) noexcept {
  handle<double, 2>(code, index, {a}, {b}, {r1}, {r2}, name);
}

void element_error_complex(int32_t code, int32_t index, const float* a, const float* b, float* r1,
                           float* r2, const char* name) noexcept {
  handle<float, 2>(code, index, {a}, {b}, {r1}, {r2}, name);
}

void element_error_strided(int32_t code, int32_t index, const double* a, int32_t inca,
                           const double* b, int32_t incb, double* r1, int32_t incr1, double* r2,
                           int32_t incr2, const char* name) noexcept {
  handle<double, 1>(code, index, {a, inca}, {b, incb}, {r1, incr1}, {r2, incr2}, name);
}

void element_error_strided(int32_t code, int32_t index, const float* a, int32_t inca,
                           const float* b, int32_t incb, float* r1, int32_t incr1, float* r2,
                           int32_t incr2, const char* name) noexcept {
  handle<float, 1>(code, index, {a, inca}, {b, incb}, {r1, incr1}, {r2, incr2}, name);
}

}  // namespace orba::vector
