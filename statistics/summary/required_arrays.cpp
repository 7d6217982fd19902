#include "statistics/summary/required_arrays.h"

#include "statistics/summary/observations.h"

namespace orba::statistics {
namespace {

constexpr uint32_t kUnsupported = uint32_t{1} << kMomentsResultCount;

// One row for each result, by MomentsResult.
struct Requirement {
  uint64_t estimate;       // its bit in an estimate mask
  void* SsTask::*array;    // where it goes
  int32_t missing;         // status when there is no such array
  uint32_t for_one_pass;   // sets of results that have to be there: for 1PASS and user means,
  uint32_t for_fast;       // for FAST,
  uint32_t for_converted;  // for conversions, which make no sums
};

constexpr Requirement kRequirements[] = {
    {RAU_SS_MEAN, &SsTask::mean, -4006, 0x1, 0x1, 0x1001},
    {RAU_SS_2R_MOM, &SsTask::raw_moment_2, -4007, 0x2, 0x2, 0x2002},
    {RAU_SS_3R_MOM, &SsTask::raw_moment_3, -4008, 0x4, 0x4, 0x4004},
    {RAU_SS_4R_MOM, &SsTask::raw_moment_4, -4009, 0x8, 0x8, 0x8008},
    {RAU_SS_2C_MOM, &SsTask::central_moment_2, -4010, 0x13, 0x13, 0x10010},
    {RAU_SS_3C_MOM, &SsTask::central_moment_3, -4011, 0x27, 0x27, 0x20020},
    {RAU_SS_4C_MOM, &SsTask::central_moment_4, -4012, 0x4F, 0x4F, 0x40040},
    {RAU_SS_COV, &SsTask::covariance, -4018, 0x81, 0x81, 0x80080},
    {RAU_SS_COR, &SsTask::correlation, -4019, 0x101, 0x101, 0x80100},
    {RAU_SS_KURTOSIS, &SsTask::kurtosis, -4013, 0x25F, 0x25F, 0x251},
    {RAU_SS_SKEWNESS, &SsTask::skewness, -4014, 0x437, 0x437, 0x431},
    {RAU_SS_VARIATION, &SsTask::variation, -4017, 0x813, 0x813, 0x811},
    {RAU_SS_SUM, &SsTask::sum, -4074, 0x1000, 0x1000, kUnsupported},
    {RAU_SS_2R_SUM, &SsTask::raw_sum_2, -4075, 0x2000, 0x2000, kUnsupported},
    {RAU_SS_3R_SUM, &SsTask::raw_sum_3, -4076, 0x4000, 0x4000, kUnsupported},
    {RAU_SS_4R_SUM, &SsTask::raw_sum_4, -4077, 0x8000, 0x8000, kUnsupported},
    {RAU_SS_2C_SUM, &SsTask::central_sum_2, -4078, 0x10001, 0x10003, kUnsupported},
    {RAU_SS_3C_SUM, &SsTask::central_sum_3, -4079, 0x20001, 0x20007, kUnsupported},
    {RAU_SS_4C_SUM, &SsTask::central_sum_4, -4080, 0x40001, 0x4000F, kUnsupported},
    {RAU_SS_CP, &SsTask::cross_product, -4081, 0x80001, 0x80001, kUnsupported},
};
static_assert(sizeof kRequirements == kMomentsResultCount * sizeof(Requirement));

int32_t read_method(uint32_t method, MomentsPlan* plan) noexcept {
  constexpr uint32_t conversions = RAU_SS_METHOD_CP_TO_COVCOR | RAU_SS_METHOD_SUM_TO_MOM;
  switch (method & (RAU_SS_METHOD_FAST | RAU_SS_METHOD_1PASS | RAU_SS_METHOD_FAST_USER_MEAN)) {
    case RAU_SS_METHOD_FAST:
      plan->method = MomentsMethod::kFast;
      break;
    case RAU_SS_METHOD_1PASS:
      plan->method = MomentsMethod::kOnePass;
      break;
    case RAU_SS_METHOD_FAST_USER_MEAN:
      plan->method = MomentsMethod::kUserMean;
      break;
    case 0:
      if ((method & conversions) == 0) return RAU_SS_ERROR_METHOD_NOT_SUPPORTED;
      plan->method = MomentsMethod::kConversion;
      break;
    default:
      return RAU_SS_ERROR_METHOD_NOT_SUPPORTED;
  }
  return RAU_STATUS_OK;
}

uint32_t required_for(const Requirement& row, MomentsMethod method) noexcept {
  switch (method) {
    case MomentsMethod::kFast:
      return row.for_fast;
    case MomentsMethod::kConversion:
      return row.for_converted;
    default:
      return row.for_one_pass;
  }
}

int32_t check_arrays(const SsTask& task, uint64_t estimates, MomentsPlan* plan) noexcept {
  // Deviations from the caller's means need them, whatever is asked.
  if (plan->method == MomentsMethod::kUserMean) plan->needed = 1u << kMean;
  for (uint32_t result = 0; result < kMomentsResultCount; ++result) {
    if ((estimates & kRequirements[result].estimate) == 0) continue;
    plan->asked |= 1u << result;
    plan->needed |= required_for(kRequirements[result], plan->method);
  }
  for (uint32_t result = 0; result < kMomentsResultCount; ++result) {
    const Requirement& row = kRequirements[result];
    if (plan->needs(static_cast<MomentsResult>(result)) && task.*row.array == nullptr) {
      return row.missing;
    }
  }
  if ((plan->needed & kUnsupported) != 0) return RAU_SS_ERROR_METHOD_NOT_SUPPORTED;
  return RAU_STATUS_OK;
}

int32_t check_data(const SsTask& task, MomentsPlan* plan) noexcept {
  plan->p = task.integer(task.dimension);
  if (plan->method != MomentsMethod::kConversion) {
    Observations<void> data;
    if (const int32_t bad = read_observations(task, &data)) return bad;
    plan->n = data.n;
    plan->rows = data.rows;
  } else if (task.accumulated_weight == nullptr) {
    if (task.observation_count == nullptr || task.weights != nullptr) {
      return RAU_SS_ERROR_BAD_ACCUM_WEIGHT;
    }
    plan->n = task.integer(task.observation_count);
  }
  return RAU_STATUS_OK;
}

int32_t check_matrices(const SsTask& task, const MomentsPlan& plan) noexcept {
  const struct {
    MomentsResult result;
    const void* storage;
  } matrices[] = {{kCovariance, task.covariance_storage},
                  {kCorrelation, task.correlation_storage},
                  {kCrossProduct, task.cross_product_storage}};
  for (const auto& matrix : matrices) {
    if (plan.needs(matrix.result) && matrix.storage == nullptr) {
      return RAU_SS_ERROR_BAD_STORAGE_ADDR;
    }
  }
  return RAU_STATUS_OK;
}

}  // namespace

int32_t validate_moments(const SsTask& task, uint64_t estimates, uint32_t method,
                         MomentsPlan* plan) noexcept {
  *plan = {};
  if (const int32_t bad = read_method(method, plan)) return bad;
  if (const int32_t bad = check_arrays(task, estimates, plan)) return bad;
  if (const int32_t bad = check_data(task, plan)) return bad;
  return check_matrices(task, *plan);
}

}  // namespace orba::statistics
