#include "statistics/summary/moments_prior.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace orba::statistics::summary {
namespace {

// What a call continues from. Ratios are made anew, and the mean is the caller's under kUserMean.
bool is_state(const MomentsPlan& plan, MomentsResult result) noexcept {
  ResultSet made = set_of(kKurtosis, kSkewness, kVariation);
  if (plan.method == MomentsMethod::kUserMean) made |= set_of(kMean);
  return (plan.needed & ~made & set_of(result)) != 0;
}

// Tells apart what an array of results holds, and where it lies. Never 0. Words are mixed with their
// places each by itself, so that none waits for another.
template <class Real>
uint64_t mark_of(const SsTask& task, const MomentsPlan& plan, MomentsResult result) noexcept {
  uint64_t mark = 0;
  const auto add = [&](int64_t place, uint64_t word) {
    constexpr uint64_t kOdd = 0x9E3779B97F4A7C15;  // near 2^64 over the golden ratio
    word = (word ^ static_cast<uint64_t>(place) * kOdd) * kOdd;
    mark += (word ^ word >> 32) * kOdd;
  };
  const auto add_element = [&](int64_t place, Real x) {
    if constexpr (sizeof(Real) == sizeof(uint64_t)) {
      add(place, std::bit_cast<uint64_t>(x));
    } else {
      add(place, std::bit_cast<uint32_t>(x));
    }
  };
  const auto selects = [&](int64_t j) { return task.selects(j); };
  add(-1, reinterpret_cast<uint64_t>(task.*kResultArrays[result]));
  if (storage_of(result) != nullptr) {
    add(-2, static_cast<uint64_t>(task.integer(task.*storage_of(result))));
    matrix_of<Real>(task, result, plan.p).for_each(selects, [&](int64_t j, int64_t k, Real x) {
      add_element(j * plan.p + k, x);
    });
  } else {
    const auto* x = static_cast<const Real*>(task.*kResultArrays[result]);
    for (int64_t j = 0; j < plan.p; ++j) {
      if (selects(j)) add_element(j, x[j]);
    }
  }
  return mark | 1;
}

template <class Real, class Number>
class PriorReader {
 public:
  PriorReader(const SsTask& task, const MomentsPlan& plan, const MomentsOrders& orders,
              const Real* pivot, MomentsPart<Number>* part) noexcept
      : plan_(plan),
        orders_(orders),
        results_(task, plan),
        carried_(Carried<Real>::find(task, plan)),
        pivot_(pivot),
        weight_{part->weight, part->squared_weight},
        part_(*part) {}

  void read() noexcept {
    for (int64_t j = 0; j < plan_.p; ++j) {
      part_.mean[j] = offset(j);
      for (int k = 2; k <= orders_.raw; ++k) {
        const Real *moment = results_.raw(k), *sum = results_.raw_sum(k);
        part_.raw[k - 2][j] = moment != nullptr ? moment[j] : sum != nullptr ? sum[j] / w() : 0;
      }
      for (int k = 2; k <= orders_.central; ++k) part_.central[k - 2][j] = central_sum(k, j);
    }
  }

  // After the means.
  void read_product(const SsTask& task) noexcept {
    summary::read_product(task, plan_, weight_, part_.product);
    if (carried_ == nullptr || plan_.method != MomentsMethod::kUserMean) return;
    const bool lost = weight_.degrees() == 0 && !plan_.needs(kCrossProduct);
    if (!lost && std::equal(pivot_, pivot_ + plan_.p, carried_->user_means())) return;
    // Products around the means of the call before become products around those of this one.
    const auto* old = carried_->offsets();
    for (int64_t j = 0; j < plan_.p; ++j) {
      if (!task.selects(j)) continue;
      for (int64_t k = 0; k <= j; ++k) {
        if (!task.selects(k)) continue;
        Number& element = part_.product[j * plan_.p + k];
        const Number now = part_.mean[j] * part_.mean[k];
        element = lost ? w() * now : element + w() * (now - static_cast<Number>(old[j] * old[k]));
      }
    }
  }

 private:
  Number w() const noexcept { return weight_.w; }

  // What the part's mean starts from; unknown under kUserMean when neither the task nor a sum
  // tells.
  Number offset(int64_t j) const noexcept {
    const Real *mean = results_.raw(1), *sum = results_.raw_sum(1);
    switch (plan_.method) {
      case MomentsMethod::kUserMean:
        if (carried_ != nullptr) {
          return static_cast<Number>(carried_->offsets()[j] +
                                     (carried_->user_means()[j] - pivot_[j]));
        }
        return sum != nullptr ? sum[j] / w() - pivot_[j] : Number(NAN);
      case MomentsMethod::kFast:
        return mean != nullptr ? mean[j] : sum != nullptr ? sum[j] / w() : 0;
      default:
        if (mean != nullptr) return static_cast<Number>(mean[j]) - pivot_[j];
        return sum != nullptr ? sum[j] / w() - pivot_[j] : 0;
    }
  }

  // From the sum, or the moment; under kOnePass, where higher sums depend on lower ones that nobody
  // may have asked for, also from what the task carries or from raw moments.
  Number central_sum(int k, int64_t j) const noexcept {
    const bool one_pass = plan_.method == MomentsMethod::kOnePass;
    if (const Real* sum = results_.central_sum(k)) return sum[j];
    if (const Real* moment = results_.central(k)) {
      if (k > 2) return moment[j] * w();
      // After a single observation the moment was x/0.
      const Number degrees = weight_.degrees();
      if (degrees != 0) return moment[j] * degrees;
      if (one_pass) return 0;
      if (carried_ == nullptr) return static_cast<Number>(NAN);
      return static_cast<Number>(w() * carried_->offsets()[j] * carried_->offsets()[j]);
    }
    if (!one_pass) return 0;  // nor does anything depend on it
    if (carried_ != nullptr) return static_cast<Number>(carried_->central_sums(k)[j]);
    const Real *r1 = results_.raw(1), *r2 = results_.raw(2), *r3 = results_.raw(3);
    if (r1 == nullptr || r2 == nullptr || (k == 3 && r3 == nullptr)) return Number(NAN);
    const Number m = r1[j], second = r2[j];
    return w() * (k == 2 ? second - m * m : (2 * m * m - 3 * second) * m + r3[j]);
  }

  const MomentsPlan& plan_;
  const MomentsOrders& orders_;
  const ResultArrays<Real> results_;
  const Carried<Real>* const carried_;
  const Real* const pivot_;
  const Weight<Real, Number> weight_;
  MomentsPart<Number>& part_;
};

}  // namespace

// ---- What the task carries ----

template <class Real>
bool Carried<Real>::fits(const SsTask& task, int64_t p) noexcept {
  const auto* held = static_cast<const Carried*>(task.saved_mean);
  return held != nullptr && held->element_size_ == sizeof(Real) && held->p_ == p;
}

template <class Real>
bool Carried<Real>::wanted(const SsTask& task, const MomentsPlan& plan,
                           const MomentsOrders& orders) noexcept {
  if (task.accumulated_weight == nullptr) return false;
  const ResultArrays<Real> results(task, plan);
  if (plan.method == MomentsMethod::kUserMean) {
    return orders.product || results.central(2) != nullptr;
  }
  for (int k = 2; k < orders.central; ++k) {
    if (results.central(k) == nullptr && results.central_sum(k) == nullptr) return true;
  }
  return false;
}

template <class Real>
bool Carried<Real>::prepare(SsTask& task, int64_t p) noexcept {
  if (fits(task, p)) return true;
  int64_t size;
  if (__builtin_mul_overflow(p, int64_t{kRows * sizeof(Number)}, &size) ||
      __builtin_add_overflow(size, int64_t{sizeof(Carried)}, &size)) {
    return false;
  }
  auto* made = static_cast<Carried*>(services::allocate(static_cast<uint64_t>(size), 128));
  if (made == nullptr) return false;
  made->p_ = p;
  made->element_size_ = sizeof(Real);
  made->weight_ = 0;  // no continued call has it
  services::free_memory(task.saved_mean);
  task.saved_mean = made;
  return true;
}

template <class Real>
const Carried<Real>* Carried<Real>::find(const SsTask& task, const MomentsPlan& plan) noexcept {
  if (!fits(task, plan.p)) return nullptr;
  const auto* held = static_cast<const Carried*>(task.saved_mean);
  const auto* weight = static_cast<const Real*>(task.accumulated_weight);
  if (weight == nullptr || held->method_ != plan.method || held->weight_ != weight[0] ||
      held->squared_weight_ != weight[1]) {
    return nullptr;
  }
  for (uint32_t r = 0; r < kMomentsResultCount; ++r) {
    const auto result = static_cast<MomentsResult>(r);
    if (is_state(plan, result) && held->marks_[r] != mark_of<Real>(task, plan, result)) {
      return nullptr;
    }
  }
  return held;
}

template <class Real>
template <class State>
void Carried<Real>::leave(SsTask& task, const MomentsPlan& plan, const MomentsOrders& orders,
                          const MomentsPart<State>& part, const Real* pivot) noexcept {
  auto* held = static_cast<Carried*>(task.saved_mean);
  const auto* weight = static_cast<const Real*>(task.accumulated_weight);
  const auto copy = [&](const auto* from, int64_t i) {
    std::copy_n(from, plan.p, held->values_ + i * plan.p);
  };
  held->method_ = plan.method;
  held->weight_ = weight[0];
  held->squared_weight_ = weight[1];
  for (uint32_t r = 0; r < kMomentsResultCount; ++r) {
    const auto result = static_cast<MomentsResult>(r);
    held->marks_[r] = is_state(plan, result) ? mark_of<Real>(task, plan, result) : 0;
  }
  if (plan.method == MomentsMethod::kUserMean) {
    copy(pivot, 0);
    copy(part.mean, 1);
  } else {
    for (int k = 2; k < orders.central; ++k) copy(part.central[k - 2], k - 2);
  }
}

// ---- What the arrays hold ----

template <class Real, class Number>
void read_product(const SsTask& task, const MomentsPlan& plan, const Weight<Real, Number>& weight,
                  Number* product) noexcept {
  const int64_t p = plan.p;
  const auto selects = [&](int64_t j) { return task.selects(j); };
  const auto source = matrix_of<Real>(task, product_source(plan), p);
  const auto read = [&](const auto& sum) {
    source.for_each(selects,
                    [&](int64_t j, int64_t k, Real x) { product[j * p + k] = sum(j, k, x); });
  };
  // After a single observation nothing is known but that products around the mean are 0. A
  // variance of 0 tells the same of its whole row, whose correlations are undefined.
  const Number degrees = weight.degrees();
  const bool zero = degrees == 0 && plan.method != MomentsMethod::kUserMean;
  const auto scaled = [&](Number covariance) { return zero ? 0 : covariance * degrees; };
  if (task.indices != nullptr) std::fill_n(product, p * p, Number(0));
  switch (product_source(plan)) {
    case kCrossProduct:
      return read([](int64_t, int64_t, Real x) { return x; });
    case kCovariance:
      return read([&](int64_t, int64_t, Real x) { return scaled(x); });
    default:
      return read([&](int64_t j, int64_t k, Real x) -> Number {
        if (j == k) return scaled(x);
        const Number jj = source(j, j), kk = source(k, k);
        return jj != 0 && kk != 0 ? scaled(x * std::sqrt(jj) * std::sqrt(kk)) : 0;
      });
  }
}

template <class Real, class Number>
void read_prior(const SsTask& task, const MomentsPlan& plan, const MomentsOrders& orders,
                const Real* pivot, MomentsPart<Number>* part) noexcept {
  part->weight = part->squared_weight = 0;
  if (const auto* kept = static_cast<const Real*>(task.accumulated_weight)) {
    part->weight = kept[0];
    part->squared_weight = kept[1];
  }
  if (part->weight > 0) {
    PriorReader<Real, Number> reader(task, plan, orders, pivot, part);
    reader.read();
    if (orders.product) reader.read_product(task);
  } else {
    part->clear(plan.p);
  }
}

#define ORBA_READ_PRIOR(Real, Number)                                                             \
  template void read_prior<Real, Number>(const SsTask&, const MomentsPlan&, const MomentsOrders&, \
                                         const Real*, MomentsPart<Number>*) noexcept;             \
  template void read_product<Real, Number>(const SsTask&, const MomentsPlan&,                     \
                                           const Weight<Real, Number>&, Number*) noexcept;        \
  template void Carried<Real>::leave<Number>(SsTask&, const MomentsPlan&, const MomentsOrders&,   \
                                             const MomentsPart<Number>&, const Real*) noexcept;
ORBA_READ_PRIOR(float, float)
ORBA_READ_PRIOR(float, double)
ORBA_READ_PRIOR(double, double)
ORBA_READ_PRIOR(double, long double)
#undef ORBA_READ_PRIOR
template class Carried<float>;
template class Carried<double>;

}  // namespace orba::statistics::summary
