#include "tests/accuracy/oracle.h"

#include <algorithm>
#include <iterator>

#include "include/orba_kam.h"
#include "tests/support/kernel_subjects.h"

namespace orba::test {

using enum Denormals;

namespace {

constexpr mpfr_prec_t kPrecision = 160;
constexpr mpfr_rnd_t kNearest = MPFR_RNDN;

// Reports by function. A lane of a one-input function has b = 0.
int never(const Lane&) { return KAM_STATUS_OK; }
int zero_divisor(const Lane& lane) { return lane.b[0] == 0 ? KAM_STATUS_SING : KAM_STATUS_OK; }
int zero_input(const Lane& lane) { return lane.a[0] == 0 ? KAM_STATUS_SING : KAM_STATUS_OK; }
int negative(const Lane& lane) { return lane.a[0] < 0 ? KAM_STATUS_ERRDOM : KAM_STATUS_OK; }
int zero_or_negative(const Lane& lane) { return lane.a[0] == 0 ? KAM_STATUS_SING : negative(lane); }
int below_minus_one(const Lane& lane) {
  return lane.a[0] == -1 ? KAM_STATUS_SING : lane.a[0] < -1 ? KAM_STATUS_ERRDOM : KAM_STATUS_OK;
}
int infinite(const Lane& lane) { return std::isinf(lane.a[0]) ? KAM_STATUS_ERRDOM : KAM_STATUS_OK; }
bool not_finite(const Lane& lane) { return !std::isfinite(lane.a[0]); }
int beyond_one(const Lane& lane) {
  return std::abs(lane.a[0]) > 1 ? KAM_STATUS_ERRDOM : KAM_STATUS_OK;
}
int one_or_beyond(const Lane& lane) {
  return std::abs(lane.a[0]) == 1 ? KAM_STATUS_SING : beyond_one(lane);
}
int below_one(const Lane& lane) { return lane.a[0] < 1 ? KAM_STATUS_ERRDOM : KAM_STATUS_OK; }
int complex_quotient(const Lane& lane) {
  const bool zero = lane.b[0] == 0 && lane.b[1] == 0;
  const bool report = lane.overflow && lane.finite_inputs() && !zero;
  return report ? KAM_STATUS_OVERFLOW : KAM_STATUS_OK;
}
int finite_overflow(const Lane& lane) {
  return lane.overflow && lane.finite_inputs() ? KAM_STATUS_OVERFLOW : KAM_STATUS_OK;
}
// Complex sums at the lowest accuracy have no range test.
int finite_overflow_but_ep(const Lane& lane) {
  return lane.accuracy == KAM_EP ? KAM_STATUS_OK : finite_overflow(lane);
}
int exponential(const Lane& lane) {
  if (!lane.finite_inputs()) return KAM_STATUS_OK;
  const double lowest_normal = lane.single ? -87.33654022216797 : -708.3964185322641;
  if (lane.a[0] < lowest_normal) return KAM_STATUS_UNDERFLOW;
  return finite_overflow(lane);
}

// Powers: the situations of the standard that are no error come first.
int power(const Lane& lane) {
  const double a = lane.a[0], b = lane.b[0];
  if (std::isnan(a) || std::isnan(b) || a == 1 || b == 0) return KAM_STATUS_OK;
  if (a == 0) return b < 0 ? KAM_STATUS_ERRDOM : KAM_STATUS_OK;
  if (std::isinf(a) || std::isinf(b)) return KAM_STATUS_OK;
  if (a < 0 && b != std::floor(b)) return KAM_STATUS_ERRDOM;
  if (lane.overflow) return KAM_STATUS_OVERFLOW;
  return lane.underflow ? KAM_STATUS_UNDERFLOW : KAM_STATUS_OK;
}

// Where e^x and 1 don't both show in e^x - 1.
// Where e^x and 1, or e^x and e^-x, don't both show in the result.
bool far_from_zero(const Lane& lane) { return !(std::abs(lane.a[0]) <= (lane.single ? 86 : 707)); }

// re = a.re*u.re - a.im*u.im and so on: products are exact, each sum is rounded once.
void multiply(mpfr_t* r, mpfr_t* a, mpfr_t* b) {
  mpfr_fmms(r[0], a[0], b[0], a[1], b[1], kNearest);
  mpfr_fmma(r[1], a[0], b[1], a[1], b[0], kNearest);
}
void multiply_by_conjugate(mpfr_t* r, mpfr_t* a, mpfr_t* b) {
  mpfr_fmma(r[0], a[0], b[0], a[1], b[1], kNearest);
  mpfr_fmms(r[1], a[1], b[0], a[0], b[1], kNearest);
}
// A zero divisor, of either sign, multiplies both parts by infinity.
void divide(mpfr_t* r, mpfr_t* a, mpfr_t* b) {
  if (mpfr_zero_p(b[0]) && mpfr_zero_p(b[1])) {
    for (int part = 0; part < 2; ++part) {
      mpfr_set_inf(r[part], 1);
      mpfr_mul(r[part], r[part], a[part], kNearest);
    }
    return;
  }
  multiply_by_conjugate(r, a, b);
  mpfr_t norm;
  mpfr_init2(norm, kPrecision);
  mpfr_fmma(norm, b[0], b[0], b[1], b[1], kNearest);
  mpfr_div(r[0], r[0], norm, kNearest);
  mpfr_div(r[1], r[1], norm, kNearest);
  mpfr_clear(norm);
}

template <class Real>
Real linear_fraction(Real a, Real b) {
  const Real(&s)[4] = kScalars<Real>;
  return (a * s[0] + s[1]) / (b * s[2] + s[3]);
}

// By definition 0 where half a unit is about to show in double precision.
void pow_3o2(mpfr_t* r, mpfr_t* a, mpfr_t*) {
  mpfr_pow_ui(r[0], a[0], 3, kNearest);
  mpfr_sqrt(r[0], r[0], kNearest);
  if (mpfr_cmp_d(a[0], 0x1.ffp-717) < 0 && mpfr_sgn(a[0]) >= 0) mpfr_set_zero(r[0], 1);
}

#define ORBA_UNARY(f) [](mpfr_t* r, mpfr_t* a, mpfr_t*) { f(r[0], a[0], kNearest); }
#define ORBA_BINARY(f) [](mpfr_t* r, mpfr_t* a, mpfr_t* b) { f(r[0], a[0], b[0], kNearest); }
#define ORBA_PARTS(f)                   \
  [](mpfr_t* r, mpfr_t* a, mpfr_t* b) { \
    f(r[0], a[0], b[0], kNearest);      \
    f(r[1], a[1], b[1], kNearest);      \
  }
#define ORBA_WIDE(expression) [](double x) -> double { return expression; }

}  // namespace

const Oracle kOracles[] = {
    {"Add", false, ORBA_BINARY(mpfr_add), nullptr, never, kByCaller},
    {"Sub", false, ORBA_BINARY(mpfr_sub), nullptr, never, kByCaller},
    {"Mul", false, ORBA_BINARY(mpfr_mul), nullptr, never, kByCaller},
    {"Sqr", false, ORBA_UNARY(mpfr_sqr), ORBA_WIDE(x* x), never, kByCaller},
    {"Abs", false, ORBA_UNARY(mpfr_abs), ORBA_WIDE(std::abs(x)), never, kKept},
    {"Div", false, ORBA_BINARY(mpfr_div), nullptr, zero_divisor},
    {"Inv", false, [](mpfr_t* r, mpfr_t* a, mpfr_t*) { mpfr_ui_div(r[0], 1, a[0], kNearest); },
     ORBA_WIDE(1 / x), zero_input},
    {"Sqrt", false, ORBA_UNARY(mpfr_sqrt), ORBA_WIDE(std::sqrt(x)), negative},
    {"InvSqrt", false,
     [](mpfr_t* r, mpfr_t* a, mpfr_t*) {
       mpfr_rec_sqrt(r[0], a[0], kNearest);  // gives +inf for both zeros
       if (mpfr_zero_p(a[0])) mpfr_setsign(r[0], r[0], mpfr_signbit(a[0]), kNearest);
     },
     ORBA_WIDE(x == 0 ? 1 / x : 1 / std::sqrt(x)), zero_or_negative},
    {"Cbrt", false, ORBA_UNARY(mpfr_cbrt), ORBA_WIDE(std::cbrt(x)), never},
    {"InvCbrt", false,
     [](mpfr_t* r, mpfr_t* a, mpfr_t*) {
       mpfr_cbrt(r[0], a[0], kNearest);
       mpfr_ui_div(r[0], 1, r[0], kNearest);
     },
     ORBA_WIDE(1 / std::cbrt(x)), zero_input},
    {"Pow2o3", false,
     [](mpfr_t* r, mpfr_t* a, mpfr_t*) {
       mpfr_sqr(r[0], a[0], kNearest);
       mpfr_cbrt(r[0], r[0], kNearest);
     },
     ORBA_WIDE(std::cbrt(x* x)), never},
    {"Pow3o2", false, pow_3o2, ORBA_WIDE(x* std::sqrt(x)), negative},
    {"Hypot", false, ORBA_BINARY(mpfr_hypot), nullptr, never},
    {"Exp", false, ORBA_UNARY(mpfr_exp), ORBA_WIDE(std::exp(x)), exponential},
    {"Expm1", false, ORBA_UNARY(mpfr_expm1), ORBA_WIDE(std::expm1(x)), finite_overflow, kByMode,
     far_from_zero},
    {"Ln", false, ORBA_UNARY(mpfr_log), ORBA_WIDE(std::log(x)), zero_or_negative},
    {"Log10", false, ORBA_UNARY(mpfr_log10), ORBA_WIDE(std::log10(x)), zero_or_negative},
    {"Log1p", false, ORBA_UNARY(mpfr_log1p), ORBA_WIDE(std::log1p(x)), below_minus_one},
    {"Sin", false, ORBA_UNARY(mpfr_sin), ORBA_WIDE(std::sin(x)), infinite, kByMode, not_finite},
    {"Cos", false, ORBA_UNARY(mpfr_cos), ORBA_WIDE(std::cos(x)), infinite, kByMode, not_finite},
    {"SinCos", false,
     [](mpfr_t* r, mpfr_t* a, mpfr_t*) { mpfr_sin_cos(r[0], r[1], a[0], kNearest); }, nullptr,
     infinite, kByMode, not_finite, 2},
    {"Tan", false, ORBA_UNARY(mpfr_tan), ORBA_WIDE(std::tan(x)), infinite, kByMode, not_finite},
    {"Asin", false, ORBA_UNARY(mpfr_asin), ORBA_WIDE(std::asin(x)), beyond_one},
    {"Acos", false, ORBA_UNARY(mpfr_acos), ORBA_WIDE(std::acos(x)), beyond_one},
    {"Atan", false, ORBA_UNARY(mpfr_atan), ORBA_WIDE(std::atan(x)), never},
    {"Atan2", false, ORBA_BINARY(mpfr_atan2), nullptr, never},
    {"Asinh", false, ORBA_UNARY(mpfr_asinh), ORBA_WIDE(std::asinh(x)), never, kByMode, not_finite},
    {"Acosh", false, ORBA_UNARY(mpfr_acosh), ORBA_WIDE(std::acosh(x)), below_one, kByMode,
     [](const Lane& lane) { return !(lane.a[0] >= 1) || not_finite(lane); }},
    {"Atanh", false, ORBA_UNARY(mpfr_atanh), ORBA_WIDE(std::atanh(x)), one_or_beyond, kByMode,
     [](const Lane& lane) { return !(std::abs(lane.a[0]) < 1); }},
    {"Floor", false, ORBA_UNARY(mpfr_rint_floor), ORBA_WIDE(std::floor(x)), never},
    {"Ceil", false, ORBA_UNARY(mpfr_rint_ceil), ORBA_WIDE(std::ceil(x)), never},
    {"Trunc", false, ORBA_UNARY(mpfr_rint_trunc), ORBA_WIDE(std::trunc(x)), never},
    {"Round", false, ORBA_UNARY(mpfr_rint_round), ORBA_WIDE(std::round(x)), never},
    {"NearbyInt", false, ORBA_UNARY(mpfr_rint_roundeven), ORBA_WIDE(std::nearbyint(x)), never},
    {"Rint", false, ORBA_UNARY(mpfr_rint_roundeven), ORBA_WIDE(std::nearbyint(x)), never},
    {"Modf", false, [](mpfr_t* r, mpfr_t* a, mpfr_t*) { mpfr_modf(r[0], r[1], a[0], kNearest); },
     nullptr, never, kByMode, nullptr, 2},
    {"LinearFrac",
     false,
     nullptr,
     nullptr,
     never,
     kByMode,
     nullptr,
     1,
     {linear_fraction<float>, linear_fraction<double>}},
    {"Pow", false, ORBA_BINARY(mpfr_pow), nullptr, power},
    {"Powx", false, ORBA_BINARY(mpfr_pow), nullptr, power},
    {"Sinh", false, ORBA_UNARY(mpfr_sinh), ORBA_WIDE(std::sinh(x)), finite_overflow, kByMode,
     far_from_zero},
    {"Cosh", false, ORBA_UNARY(mpfr_cosh), ORBA_WIDE(std::cosh(x)), finite_overflow, kByMode,
     far_from_zero},
    {"Tanh", false, ORBA_UNARY(mpfr_tanh), ORBA_WIDE(std::tanh(x)), never},
    {"Add", true, ORBA_PARTS(mpfr_add), nullptr, finite_overflow_but_ep},
    {"Sub", true, ORBA_PARTS(mpfr_sub), nullptr, finite_overflow_but_ep},
    {"Mul", true, multiply, nullptr, finite_overflow},
    {"MulByConj", true, multiply_by_conjugate, nullptr, finite_overflow},
    {"Conj", true,
     [](mpfr_t* r, mpfr_t* a, mpfr_t*) {
       mpfr_set(r[0], a[0], kNearest);
       mpfr_neg(r[1], a[1], kNearest);
     },
     nullptr, never, kKept},
    {"Div", true, divide, nullptr, complex_quotient},
};
const int kOracleCount = static_cast<int>(std::size(kOracles));

const Oracle* find_oracle(std::string_view function, bool complex) {
  const auto* found = std::find_if(std::begin(kOracles), std::end(kOracles), [&](const Oracle& o) {
    return o.function == function && o.complex == complex;
  });
  return found != std::end(kOracles) ? found : nullptr;
}

namespace {

constexpr int kPairMargin = 48;

template <class Real>
int clamp_unit(int exponent) {
  return std::clamp(exponent, Format<Real>::kMinUnit, Format<Real>::kMaxUnit);
}

// Exponent of the last place of x's binade, whatever the range of the type.
template <class Real>
int place_of(mpfr_srcptr x) {
  constexpr mpfr_exp_t kRange = 1 << 14;
  const auto exponent = mpfr_regular_p(x) ? std::clamp(mpfr_get_exp(x), -kRange, kRange) : -kRange;
  return static_cast<int>(exponent) - std::numeric_limits<Real>::digits;
}

template <class Real>
void set_unit(Reference& reference, int exponent, double magnitude) {
  const int half = exponent / 2;
  reference.scale[0] = power_of_two(-half);
  reference.scale[1] = power_of_two(half - exponent);
  constexpr double kLowest = std::numeric_limits<Real>::min();
  constexpr double kHighest = std::numeric_limits<Real>::max();
  reference.size = std::clamp(magnitude, kLowest, kHighest);
}

}  // namespace

Evaluator::Evaluator(const Oracle& oracle, Measure measure)
    : oracle_(oracle), measure_(measure), parts_(oracle.complex ? 2 : oracle.results) {
  mpfr_inits2(kPrecision, a_[0], a_[1], b_[0], b_[1], r_[0], r_[1], tail_, nullptr);
}

Evaluator::~Evaluator() { mpfr_clears(a_[0], a_[1], b_[0], b_[1], r_[0], r_[1], tail_, nullptr); }

template <class Real>
void Evaluator::exact(const Real* a, const Real* b, Reference* references) {
  for (int part = 0; part < parts_; ++part) {
    mpfr_set_d(a_[part], a[part], kNearest);
    mpfr_set_d(b_[part], b[part], kNearest);
  }
  if (oracle_.exact != nullptr)
    oracle_.exact(r_, a_, b_);
  else
    mpfr_set_d(r_[0], oracle_.steps(a[0], b[0]), kNearest);
  constexpr double kMax = std::numeric_limits<double>::max();
  for (int part = 0; part < parts_; ++part) {
    Reference& reference = references[part];
    mpfr_srcptr x = r_[part];
    mpfr_srcptr larger = oracle_.complex && mpfr_cmpabs(r_[1 - part], x) > 0 ? r_[1 - part] : x;
    int place = place_of<Real>(x);
    if (measure_ == Measure::kUlpOfPair) {
      place = std::max(place, place_of<Real>(larger) - kPairMargin);
    }
    const int unit = clamp_unit<Real>(place);
    set_unit<Real>(reference, unit, std::abs(mpfr_get_d(larger, kNearest)));
    reference.head = mpfr_get_d(x, kNearest);
    reference.tail = 0;
    if (!mpfr_regular_p(x)) continue;
    if (std::isinf(reference.head)) reference.head = std::copysign(kMax, reference.head);
    mpfr_sub_d(tail_, x, reference.head, kNearest);
    mpfr_mul_2si(tail_, tail_, -unit, kNearest);
    reference.tail = mpfr_get_d(tail_, kNearest);
  }
}
template void Evaluator::exact(const float*, const float*, Reference*);
template void Evaluator::exact(const double*, const double*, Reference*);

Reference wide_reference(double value) {
  Reference reference{};
  reference.head = value;
  const auto biased = static_cast<int>(std::bit_cast<uint64_t>(value) >> 52 & 0x7ff);
  set_unit<float>(reference, clamp_unit<float>(biased - 1023 - 23), std::abs(value));
  return reference;
}

}  // namespace orba::test
