#include "statistics/summary/moments_results.h"

#include <cmath>

#include "statistics/summary/moments_prior.h"
#include "statistics/summary/scratch.h"
#include "vector/frame/call.h"

namespace orba::statistics::summary {
namespace {

// Mean and central moments of one variable; those that nobody needs may be anything.
template <class Number>
struct Averages {
  Number mean, c2, c3, c4;
};

template <class Real, class Number>
void write_ratios(const ResultArrays<Real>& results, int64_t j, const Averages<Number>& x) {
  if (Real* kurtosis = results.of(kKurtosis)) {
    kurtosis[j] = static_cast<Real>(x.c4 / x.c2 / x.c2 - 3);
  }
  if (Real* skewness = results.of(kSkewness)) {
    skewness[j] = static_cast<Real>(x.c3 / x.c2 / std::sqrt(x.c2));
  }
  if (Real* variation = results.of(kVariation)) {
    variation[j] = static_cast<Real>(std::sqrt(x.c2) / x.mean);
  }
}

// 1 over the square roots of p numbers: in the accuracy that the thread has chosen for vector
// functions, denormals kept.
template <class Real, class Number>
void reciprocal_square_roots(int64_t p, Number* x) noexcept {
  const auto n = static_cast<int32_t>(p);
  if constexpr (!std::is_same_v<Real, Number>) {
    for (int64_t j = 0; j < p; ++j) x[j] = 1 / std::sqrt(x[j]);
  } else if constexpr (std::is_same_v<Real, double>) {
    vector::vector_call_with_mode<ORBA_SIGNATURE(1i_1o, d), vector::CallKind::threaded>(
        KAM_DENORMALS_KEEP, vector::row_vdInvSqrt, "vdInvSqrt", n, x, x);
  } else {
    vector::vector_call_with_mode<ORBA_SIGNATURE(1i_1o, s), vector::CallKind::threaded>(
        KAM_DENORMALS_KEEP, vector::row_vsInvSqrt, "vsInvSqrt", n, x, x);
  }
}

}  // namespace

template <class Real, class Number>
void write_moments(const SsTask& task, const MomentsPlan& plan, const MomentsPart<Number>& part,
                   const Real* pivot) noexcept {
  const ResultArrays<Real> results(task, plan);
  const Weight<Real, Number> weight = {part.weight, part.squared_weight};
  const Number unbiased = 1 / weight.degrees();
  const auto put = [](Real* to, int64_t j, Number value) {
    if (to != nullptr) to[j] = static_cast<Real>(value);
  };
  for (int64_t j = 0; j < plan.p; ++j) {
    if (!task.selects(j)) continue;
    Number raw[4] = {part.mean[j], 0, 0, 0}, sum[3] = {}, moment[3] = {};
    if (plan.method != MomentsMethod::kFast) raw[0] += pivot[j];
    for (int k = 2; k <= 4; ++k) {
      if (part.raw[k - 2] != nullptr) raw[k - 1] = part.raw[k - 2][j];
    }
    for (int k = 1; k <= 4; ++k) {
      const bool callers = k == 1 && plan.method == MomentsMethod::kUserMean;
      if (!callers) put(results.raw(k), j, raw[k - 1]);
      put(results.raw_sum(k), j, weight.w * raw[k - 1]);
    }
    if (plan.method == MomentsMethod::kFast) {
      const Number m = raw[0], r2 = raw[1], r3 = raw[2], r4 = raw[3], square = m * m;
      moment[1] = (-3 * r2 + 2 * square) * m + r3;
      moment[2] = ((6 * r2 - 3 * square) * m - 4 * r3) * m + r4;
      sum[0] = weight.w * (r2 - square);
      sum[1] = weight.w * moment[1];
      sum[2] = weight.w * moment[2];
      moment[0] = sum[0] * unbiased;
    } else {
      for (int k = 2; k <= 4; ++k) {
        if (part.central[k - 2] == nullptr) continue;
        sum[k - 2] = part.central[k - 2][j];
        moment[k - 2] = k == 2 ? sum[0] * unbiased : sum[k - 2] / weight.w;
      }
    }
    for (int k = 2; k <= 4; ++k) {
      put(results.central_sum(k), j, sum[k - 2]);
      put(results.central(k), j, moment[k - 2]);
    }
    const bool callers = plan.method == MomentsMethod::kUserMean;
    const Number mean = callers ? pivot[j] : raw[0];
    write_ratios(results, j, Averages<Number>{mean, moment[0], moment[1], moment[2]});
  }
}

template <class Real, class Number>
void write_matrices(const SsTask& task, const MomentsPlan& plan, const Weight<Real, Number>& weight,
                    const Number* product, Number* scratch) noexcept {
  const int64_t p = plan.p;
  const Number factor = weight.covariance_factor();
  const auto selects = [&](int64_t j) { return task.selects(j); };
  if (plan.needs(kCorrelation)) {
    for (int64_t j = 0; j < p; ++j) scratch[j] = task.selects(j) ? product[j * p + j] : 1;
    reciprocal_square_roots<Real>(p, scratch);
    matrix_of<Real>(task, kCorrelation, p).assign(selects, [&](int64_t j, int64_t k) {
      const Number value = product[j * p + k];
      return static_cast<Real>(j == k ? factor * value : value * scratch[j] * scratch[k]);
    });
  }
  if (plan.needs(kCrossProduct) && plan.method != MomentsMethod::kConversion) {
    matrix_of<Real>(task, kCrossProduct, p).assign(selects, [&](int64_t j, int64_t k) {
      return static_cast<Real>(product[j * p + k]);
    });
  }
  if (plan.needs(kCovariance)) {
    matrix_of<Real>(task, kCovariance, p).assign(selects, [&](int64_t j, int64_t k) {
      return static_cast<Real>(factor * product[j * p + k]);
    });
  }
}

template <class Real>
int32_t convert(const SsTask& task, const MomentsPlan& plan) noexcept {
  using Number = Wide<Real>;
  const int64_t p = plan.p;
  Weight<Real, Number> weight = {static_cast<Number>(plan.n), static_cast<Number>(plan.n)};
  if (const auto* kept = static_cast<const Real*>(task.accumulated_weight)) {
    weight = {kept[0], kept[1]};
  }
  const bool matrices = plan.needs_product();
  int64_t size = 0;
  if (matrices && __builtin_mul_overflow(p, p + 1, &size)) return RAU_SS_ERROR_MEM_FAILURE;
  const Scratch<Number> scratch(size);
  if (matrices && !scratch) return RAU_SS_ERROR_MEM_FAILURE;

  // Sums where there are any, else the moments as they stand.
  const ResultArrays<Real> results(task, plan);
  const auto average = [](const Real* sum, Real* moment, int64_t j, Number divisor) -> Number {
    if (moment == nullptr) return 0;
    if (sum == nullptr) return moment[j];
    const Number value = sum[j] / divisor;
    moment[j] = static_cast<Real>(value);
    return value;
  };
  for (int64_t j = 0; j < p; ++j) {
    if (!task.selects(j)) continue;
    Averages<Number> x = {};
    for (int k = 1; k <= 4; ++k) {
      const Number raw = average(results.attached_raw_sum(k), results.raw(k), j, weight.w);
      if (k == 1) x.mean = raw;
    }
    Number* const central[] = {&x.c2, &x.c3, &x.c4};
    for (int k = 2; k <= 4; ++k) {
      *central[k - 2] = average(results.attached_central_sum(k), results.central(k), j,
                                k == 2 ? weight.degrees() : weight.w);
    }
    write_ratios(results, j, x);
  }
  if (matrices) {
    read_product<Real>(task, plan, weight, scratch.data());
    write_matrices<Real>(task, plan, weight, scratch.data(), scratch.data() + p * p);
  }
  return RAU_STATUS_OK;
}

#define ORBA_WRITE_RESULTS(Real, Number)                                                       \
  template void write_moments<Real, Number>(const SsTask&, const MomentsPlan&,                 \
                                            const MomentsPart<Number>&, const Real*) noexcept; \
  template void write_matrices<Real, Number>(const SsTask&, const MomentsPlan&,                \
                                             const Weight<Real, Number>&, const Number*,       \
                                             Number*) noexcept;
ORBA_WRITE_RESULTS(float, float)
ORBA_WRITE_RESULTS(float, double)
ORBA_WRITE_RESULTS(double, double)
ORBA_WRITE_RESULTS(double, long double)
#undef ORBA_WRITE_RESULTS
template int32_t convert<float>(const SsTask&, const MomentsPlan&) noexcept;
template int32_t convert<double>(const SsTask&, const MomentsPlan&) noexcept;

}  // namespace orba::statistics::summary
