#include "statistics/summary/moments_plan.h"

#include "statistics/summary/observations.h"

namespace orba::statistics {
namespace {

// Stands in a set for what no array can make up for.
constexpr uint32_t kUnsupported = kMomentsResultCount;

constexpr ResultSet kUpTo2R = set_of(kMean, kRawMoment2), kUpTo3R = kUpTo2R | set_of(kRawMoment3),
                    kUpTo4R = kUpTo3R | set_of(kRawMoment4);

// One row for each result, in their order.
struct Requirement {
  uint64_t estimate;        // its bit in an estimate mask
  int32_t missing;          // status when there is no array for it
  ResultSet for_one_pass;   // what has to be there beside it: for 1PASS and user means,
  ResultSet for_fast;       // for FAST,
  ResultSet for_converted;  // for conversions, which make no sums
};

constexpr Requirement kRequirements[] = {
    {RAU_SS_MEAN, RAU_SS_ERROR_BAD_MEAN, 0, 0, set_of(kSum)},
    {RAU_SS_2R_MOM, RAU_SS_ERROR_BAD_2R_MOM, 0, 0, set_of(kRawSum2)},
    {RAU_SS_3R_MOM, RAU_SS_ERROR_BAD_3R_MOM, 0, 0, set_of(kRawSum3)},
    {RAU_SS_4R_MOM, RAU_SS_ERROR_BAD_4R_MOM, 0, 0, set_of(kRawSum4)},
    {RAU_SS_2C_MOM, RAU_SS_ERROR_BAD_2C_MOM, kUpTo2R, kUpTo2R, set_of(kCentralSum2)},
    {RAU_SS_3C_MOM, RAU_SS_ERROR_BAD_3C_MOM, kUpTo3R, kUpTo3R, set_of(kCentralSum3)},
    {RAU_SS_4C_MOM, RAU_SS_ERROR_BAD_4C_MOM, kUpTo4R, kUpTo4R, set_of(kCentralSum4)},
    {RAU_SS_COV, RAU_SS_ERROR_BAD_COV, set_of(kMean), set_of(kMean), set_of(kCrossProduct)},
    {RAU_SS_COR, RAU_SS_ERROR_BAD_COR, set_of(kMean), set_of(kMean), set_of(kCrossProduct)},
    {RAU_SS_KURTOSIS, RAU_SS_ERROR_BAD_KURTOSIS, kUpTo4R | set_of(kCentralMoment2, kCentralMoment4),
     kUpTo4R | set_of(kCentralMoment2, kCentralMoment4),
     set_of(kMean, kCentralMoment2, kCentralMoment4)},
    {RAU_SS_SKEWNESS, RAU_SS_ERROR_BAD_SKEWNESS, kUpTo3R | set_of(kCentralMoment2, kCentralMoment3),
     kUpTo3R | set_of(kCentralMoment2, kCentralMoment3),
     set_of(kMean, kCentralMoment2, kCentralMoment3)},
    {RAU_SS_VARIATION, RAU_SS_ERROR_BAD_VARIATION, kUpTo2R | set_of(kCentralMoment2),
     kUpTo2R | set_of(kCentralMoment2), set_of(kMean, kCentralMoment2)},
    {RAU_SS_SUM, RAU_SS_ERROR_BAD_SUM, 0, 0, set_of(kUnsupported)},
    {RAU_SS_2R_SUM, RAU_SS_ERROR_BAD_2R_SUM, 0, 0, set_of(kUnsupported)},
    {RAU_SS_3R_SUM, RAU_SS_ERROR_BAD_3R_SUM, 0, 0, set_of(kUnsupported)},
    {RAU_SS_4R_SUM, RAU_SS_ERROR_BAD_4R_SUM, 0, 0, set_of(kUnsupported)},
    {RAU_SS_2C_SUM, RAU_SS_ERROR_BAD_2C_SUM, set_of(kMean), kUpTo2R, set_of(kUnsupported)},
    {RAU_SS_3C_SUM, RAU_SS_ERROR_BAD_3C_SUM, set_of(kMean), kUpTo3R, set_of(kUnsupported)},
    {RAU_SS_4C_SUM, RAU_SS_ERROR_BAD_4C_SUM, set_of(kMean), kUpTo4R, set_of(kUnsupported)},
    {RAU_SS_CP, RAU_SS_ERROR_BAD_CP, set_of(kMean), set_of(kMean), set_of(kUnsupported)},
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

ResultSet required_beside(const Requirement& row, MomentsMethod method) noexcept {
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
  for (uint32_t result = 0; result < kMomentsResultCount; ++result) {
    const Requirement& row = kRequirements[result];
    if ((estimates & row.estimate) == 0) continue;
    const ResultSet beside = required_beside(row, plan->method);
    plan->needed |= beside == set_of(kUnsupported) ? beside : beside | set_of(result);
  }
  for (uint32_t result = 0; result < kMomentsResultCount; ++result) {
    if (plan->needs(static_cast<MomentsResult>(result)) && task.*kResultArrays[result] == nullptr) {
      return kRequirements[result].missing;
    }
  }
  if ((plan->needed & set_of(kUnsupported)) != 0) return RAU_SS_ERROR_METHOD_NOT_SUPPORTED;
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
  for (const MomentsResult matrix : {kCovariance, kCorrelation, kCrossProduct}) {
    if (plan.needs(matrix) && task.*storage_of(matrix) == nullptr) {
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
