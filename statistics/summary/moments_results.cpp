#include "statistics/summary/moments_results.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "statistics/summary/scratch.h"
#include "vector/frame/call.h"

namespace orba::statistics::summary {
namespace {

// Kurtosis, skewness and variation of variable j, from moments in place.
template <class Real>
void write_ratios(const ResultArrays<Real>& results, int64_t j) noexcept {
  if (Real* kurtosis = results.of(kKurtosis)) {
    const Real c2 = results.central(2)[j];
    kurtosis[j] = results.central(4)[j] / (c2 * c2) - 3;
  }
  if (Real* skewness = results.of(kSkewness)) {
    const Real c2 = results.central(2)[j];
    skewness[j] = results.central(3)[j] / (c2 * std::sqrt(c2));
  }
  if (Real* variation = results.of(kVariation)) {
    variation[j] = std::sqrt(results.central(2)[j]) / results.raw(1)[j];
  }
}

// The moment of order k that a central sum makes.
template <class Real>
Real central_moment(int k, Real sum, const Weight<Real>& weight) noexcept {
  return k == 2 ? sum * weight.moment_2_factor() : sum / weight.w;
}

template <class Real>
void write_central(const ResultArrays<Real>& results, int k, int64_t j, Real sum,
                   Real moment) noexcept {
  if (Real* to = results.central_sum(k)) to[j] = sum;
  if (Real* to = results.central(k)) to[j] = moment;
}

// Storage codes of matrices are read as bits, the upper triangle's first.
template <class Real>
class SymmetricMatrix {
 public:
  SymmetricMatrix(const SsTask& task, void* data, const void* storage, int64_t p)
      : data_(static_cast<Real*>(data)), storage_(task.integer(storage)), p_(p) {}

  // Elements with k <= j.
  Real get(int64_t j, int64_t k) const noexcept { return data_[index(j, k)]; }
  void set(int64_t j, int64_t k, Real value) const noexcept {
    data_[index(j, k)] = value;
    if (full()) data_[k * p_ + j] = value;
  }

 private:
  bool upper() const noexcept { return (storage_ & RAU_SS_MATRIX_STORAGE_U_PACKED) != 0; }
  bool lower() const noexcept { return (storage_ & RAU_SS_MATRIX_STORAGE_L_PACKED) != 0; }
  bool full() const noexcept { return !upper() && !lower(); }
  int64_t index(int64_t j, int64_t k) const noexcept {
    if (upper()) return k * p_ - k * (k - 1) / 2 + (j - k);
    if (lower()) return j * (j + 1) / 2 + k;
    return j * p_ + k;
  }

  Real* data_;
  int64_t storage_;
  int64_t p_;
};

template <class Real>
SymmetricMatrix<Real> covariance_of(const SsTask& task, int64_t p) noexcept {
  return {task, task.covariance, task.covariance_storage, p};
}
template <class Real>
SymmetricMatrix<Real> correlation_of(const SsTask& task, int64_t p) noexcept {
  return {task, task.correlation, task.correlation_storage, p};
}
template <class Real>
SymmetricMatrix<Real> cross_product_of(const SsTask& task, int64_t p) noexcept {
  return {task, task.cross_product, task.cross_product_storage, p};
}

// Calls visit(j, k) for each pair of selected variables, k <= j.
template <class Visit>
void for_each_pair(const SsTask& task, int64_t p, const Visit& visit) noexcept {
  for (int64_t j = 0; j < p; ++j) {
    if (!task.selects(j)) continue;
    for (int64_t k = 0; k <= j; ++k) {
      if (task.selects(k)) visit(j, k);
    }
  }
}

// In the accuracy that the thread has chosen for vector functions, denormals kept.
template <class Real>
void reciprocal_square_roots(int64_t p, Real* x) noexcept {
  const auto n = static_cast<int32_t>(p);
  if constexpr (std::is_same_v<Real, double>) {
    vector::vector_call_with_mode<ORBA_SIGNATURE(1i_1o, d), vector::CallKind::threaded>(
        KAM_DENORMALS_KEEP, vector::row_vdInvSqrt, "vdInvSqrt", n, x, x);
  } else {
    vector::vector_call_with_mode<ORBA_SIGNATURE(1i_1o, s), vector::CallKind::threaded>(
        KAM_DENORMALS_KEEP, vector::row_vsInvSqrt, "vsInvSqrt", n, x, x);
  }
}

}  // namespace

bool product_in_place(const SsTask& task, const MomentsPlan& plan) noexcept {
  return plan.needs(kCovariance) && task.indices == nullptr &&
         (task.integer(task.covariance_storage) &
          (RAU_SS_MATRIX_STORAGE_L_PACKED | RAU_SS_MATRIX_STORAGE_U_PACKED)) == 0;
}

template <class Real>
void write_moments(const SsTask& task, const MomentsPlan& plan, const MomentsPart<Real>& part,
                   const Real* pivot) noexcept {
  const ResultArrays<Real> results(task, plan);
  const Weight<Real> weight = {part.weight, part.squared_weight};
  for (int64_t j = 0; j < plan.p; ++j) {
    if (!task.selects(j)) continue;
    Real raw[4] = {part.mean[j], 0, 0, 0};
    if (plan.method != MomentsMethod::kFast) raw[0] += pivot[j];
    for (int k = 2; k <= 4; ++k) {
      if (part.raw[k - 2] != nullptr) raw[k - 1] = part.raw[k - 2][j];
    }
    for (int k = 1; k <= 4; ++k) {
      const bool callers = k == 1 && plan.method == MomentsMethod::kUserMean;
      if (Real* to = results.raw(k); to != nullptr && !callers) to[j] = raw[k - 1];
      if (Real* to = results.raw_sum(k)) to[j] = weight.w * raw[k - 1];
    }
    if (plan.method == MomentsMethod::kFast) {
      const Real m = raw[0], r2 = raw[1], r3 = raw[2], r4 = raw[3], square = m * m;
      const Real c2 = r2 - square, c3 = (-3 * r2 + 2 * square) * m + r3,
                 c4 = ((6 * r2 - 3 * square) * m - 4 * r3) * m + r4;
      write_central(results, 2, j, weight.w * c2, central_moment(2, weight.w * c2, weight));
      write_central(results, 3, j, weight.w * c3, c3);
      write_central(results, 4, j, weight.w * c4, c4);
    } else {
      for (int k = 2; k <= 4; ++k) {
        if (part.central[k - 2] == nullptr) continue;
        const Real sum = part.central[k - 2][j];
        write_central(results, k, j, sum, central_moment(k, sum, weight));
      }
    }
    write_ratios(results, j);
  }
}

template <class Real>
void read_product(const SsTask& task, const MomentsPlan& plan, const Weight<Real>& weight,
                  Real* product) noexcept {
  const int64_t p = plan.p;
  const Real degrees = weight.degrees();
  // After a single observation nothing is known but that products are 0. A variance of 0 tells the
  // same of its whole row, whose correlations are undefined.
  const auto scaled = [&](Real covariance) { return degrees != 0 ? covariance * degrees : 0; };
  if (task.indices != nullptr) std::fill_n(product, p * p, Real(0));
  if (plan.needs(kCrossProduct)) {
    const auto from = cross_product_of<Real>(task, p);
    for_each_pair(task, p, [&](int64_t j, int64_t k) { product[j * p + k] = from.get(j, k); });
  } else if (plan.needs(kCovariance)) {
    const auto from = covariance_of<Real>(task, p);
    for_each_pair(task, p,
                  [&](int64_t j, int64_t k) { product[j * p + k] = scaled(from.get(j, k)); });
  } else {
    const auto from = correlation_of<Real>(task, p);
    for_each_pair(task, p, [&](int64_t j, int64_t k) {
      Real covariance = from.get(j, k);
      if (j != k) {
        const Real variances = from.get(j, j) * from.get(k, k);
        covariance = variances != 0 ? covariance * std::sqrt(variances) : 0;
      }
      product[j * p + k] = scaled(covariance);
    });
  }
}

template <class Real>
void write_matrices(const SsTask& task, const MomentsPlan& plan, const Weight<Real>& weight,
                    const Real* product, Real* scratch) noexcept {
  const int64_t p = plan.p;
  const Real factor = weight.covariance_factor();
  if (plan.needs(kCorrelation)) {
    for (int64_t j = 0; j < p; ++j) scratch[j] = task.selects(j) ? product[j * p + j] : 1;
    reciprocal_square_roots(p, scratch);
    const auto to = correlation_of<Real>(task, p);
    for_each_pair(task, p, [&](int64_t j, int64_t k) {
      const Real value = product[j * p + k];
      to.set(j, k, j == k ? factor * value : value * scratch[j] * scratch[k]);
    });
  }
  if (plan.needs(kCrossProduct) && plan.method != MomentsMethod::kConversion) {
    const auto to = cross_product_of<Real>(task, p);
    for_each_pair(task, p, [&](int64_t j, int64_t k) { to.set(j, k, product[j * p + k]); });
  }
  // Last, for its memory may be that of the product.
  if (plan.needs(kCovariance)) {
    const auto to = covariance_of<Real>(task, p);
    for_each_pair(task, p,
                  [&](int64_t j, int64_t k) { to.set(j, k, factor * product[j * p + k]); });
  }
}

template <class Real>
int32_t convert(const SsTask& task, const MomentsPlan& plan) noexcept {
  const int64_t p = plan.p;
  Weight<Real> weight = {static_cast<Real>(plan.n), static_cast<Real>(plan.n)};
  if (const auto* kept = static_cast<const Real*>(task.accumulated_weight)) {
    weight = {kept[0], kept[1]};
  }
  const bool matrices = plan.needs(kCovariance) || plan.needs(kCorrelation);
  int64_t size = 0;
  if (matrices && __builtin_mul_overflow(p, p + 1, &size)) return RAU_SS_ERROR_MEM_FAILURE;
  const Scratch<Real> scratch(size);
  if (matrices && !scratch) return RAU_SS_ERROR_MEM_FAILURE;

  const ResultArrays<Real> results(task, plan);
  for (int64_t j = 0; j < p; ++j) {
    if (!task.selects(j)) continue;
    for (int k = 1; k <= 4; ++k) {
      const Real* sum = results.attached_raw_sum(k);
      Real* to = results.raw(k);
      if (sum != nullptr && to != nullptr) to[j] = sum[j] / weight.w;
    }
    for (int k = 2; k <= 4; ++k) {
      const Real* sum = results.attached_central_sum(k);
      Real* to = results.central(k);
      if (sum != nullptr && to != nullptr) to[j] = central_moment(k, sum[j], weight);
    }
    write_ratios(results, j);
  }
  if (matrices) {
    read_product(task, plan, weight, scratch.data());
    write_matrices(task, plan, weight, scratch.data(), scratch.data() + p * p);
  }
  return RAU_STATUS_OK;
}

#define ORBA_MOMENTS_RESULTS(Real)                                                               \
  template void write_moments<Real>(const SsTask&, const MomentsPlan&, const MomentsPart<Real>&, \
                                    const Real*) noexcept;                                       \
  template void read_product<Real>(const SsTask&, const MomentsPlan&, const Weight<Real>&,       \
                                   Real*) noexcept;                                              \
  template void write_matrices<Real>(const SsTask&, const MomentsPlan&, const Weight<Real>&,     \
                                     const Real*, Real*) noexcept;                               \
  template int32_t convert<Real>(const SsTask&, const MomentsPlan&) noexcept;
ORBA_MOMENTS_RESULTS(double)
ORBA_MOMENTS_RESULTS(float)
#undef ORBA_MOMENTS_RESULTS

}  // namespace orba::statistics::summary
