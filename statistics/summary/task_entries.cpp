// The exported entries of summary statistics. They report nothing but their status.
#include "statistics/frame/entry.h"
#include "statistics/summary/task.h"

namespace {

using namespace orba::statistics;

void set(void*& field, const void* address) {
  if (address != nullptr) field = const_cast<void*>(address);
}
void set(const void*& field, const void* address) {
  if (address != nullptr) field = address;
}

void* address(const void* p) { return const_cast<void*>(p); }

template <class Real>
int32_t traced_compute(const char* name, SsTask* task, uint64_t estimates, uint32_t method) {
  const auto call = [&] { return compute<Real>(task, estimates, method); };
  return traced(call, "%s(%p,%lli,%d)", name, address(task), static_cast<long long>(estimates),
                static_cast<int>(method));
}

int32_t traced_delete(SsTask** task) {
  const auto call = [&] { return delete_task(task); };
  return traced(call, "%s(%p)", "rauSSDeleteTask", address(task));
}

int32_t traced_new(const char* name, bool is_double, SsTask** task, const int32_t* p,
                   const int32_t* n, const int32_t* xstorage, const void* x, const void* weights,
                   const int32_t* indices) {
  constexpr int32_t kIntegers32 = 0;
  const auto call = [&] {
    return new_task(task, p, n, xstorage, x, weights, indices, is_double, kIntegers32);
  };
  return traced(call, "%s(%p,%p,%p,%p,%p,%p,%p)", name, address(task), address(p), address(n),
                address(xstorage), address(x), address(weights), address(indices));
}

}  // namespace

ORBA_ENTRY(raudSSNewTask, raudssnewtask, P(SsTask**, task), P(const int32_t*, p),
           P(const int32_t*, n), P(const int32_t*, xstorage), P(const double*, x),
           P(const double*, weights), P(const int32_t*, indices)) {
  return traced_new("raudSSNewTask", true, task, p, n, xstorage, x, weights, indices);
}
ORBA_ENTRY(rausSSNewTask, rausssnewtask, P(SsTask**, task), P(const int32_t*, p),
           P(const int32_t*, n), P(const int32_t*, xstorage), P(const float*, x),
           P(const float*, weights), P(const int32_t*, indices)) {
  return traced_new("rausSSNewTask", false, task, p, n, xstorage, x, weights, indices);
}

ORBA_ENTRY(rauSSDeleteTask, raussdeletetask, P(SsTask**, task)) { return traced_delete(task); }

ORBA_ENTRY(raudSSCompute, raudsscompute, H(SsTask*, task), V(uint64_t, estimates),
           V(uint32_t, method)) {
  return traced_compute<double>("raudSSCompute", task, estimates, method);
}
ORBA_ENTRY(rausSSCompute, raussscompute, H(SsTask*, task), V(uint64_t, estimates),
           V(uint32_t, method)) {
  return traced_compute<float>("rausSSCompute", task, estimates, method);
}

ORBA_ENTRY(raudSSEditTask, raudssedittask, H(SsTask*, task), V(int32_t, id),
           P(const double*, address)) {
  return edit_floating(task, id, address);
}
ORBA_ENTRY(rausSSEditTask, rausssedittask, H(SsTask*, task), V(int32_t, id),
           P(const float*, address)) {
  return edit_floating(task, id, address);
}
ORBA_ENTRY(rauiSSEditTask, rauissedittask, H(SsTask*, task), V(int32_t, id),
           P(const int32_t*, address)) {
  return edit_integer(task, id, address);
}

// ---- Editors of several fields: OUT is for results, IN for floating parameters, INT for integers

#define ORBA_STORE_OUT(field) set(task->field, field)
#define ORBA_STORE_IN(field) set(task->field, field)
#define ORBA_STORE_INT(field) set(task->field, field)
#define ORBA_DOUBLE_OUT(field) P(double*, field)
#define ORBA_DOUBLE_IN(field) P(const double*, field)
#define ORBA_DOUBLE_INT(field) P(const int32_t*, field)
#define ORBA_FLOAT_OUT(field) P(float*, field)
#define ORBA_FLOAT_IN(field) P(const float*, field)
#define ORBA_FLOAT_INT(field) P(const int32_t*, field)

#define ORBA_EDITOR_BODY(...)                           \
  {                                                     \
    if (task == nullptr) return RAU_SS_ERROR_NULL_TASK; \
    ORBA_EACH(ORBA_STORE_, __VA_ARGS__);                \
    return RAU_STATUS_OK;                               \
  }
#define ORBA_EDITOR(Name, name, ...)                               \
  ORBA_ENTRY(raudSSEdit##Name, raudssedit##name, H(SsTask*, task), \
             ORBA_EACH(ORBA_DOUBLE_, __VA_ARGS__))                 \
  ORBA_EDITOR_BODY(__VA_ARGS__)                                    \
  ORBA_ENTRY(rausSSEdit##Name, rausssedit##name, H(SsTask*, task), \
             ORBA_EACH(ORBA_FLOAT_, __VA_ARGS__))                  \
  ORBA_EDITOR_BODY(__VA_ARGS__)

ORBA_EDITOR(Moments, moments, OUT(mean), OUT(raw_moment_2), OUT(raw_moment_3), OUT(raw_moment_4),
            OUT(central_moment_2), OUT(central_moment_3), OUT(central_moment_4))
ORBA_EDITOR(CovCor, covcor, OUT(mean), OUT(covariance), INT(covariance_storage), OUT(correlation),
            INT(correlation_storage))
ORBA_EDITOR(PartialCovCor, partialcovcor, INT(partial_indices), OUT(covariance),
            INT(covariance_storage), OUT(correlation), INT(correlation_storage),
            OUT(partial_covariance), INT(partial_covariance_storage), OUT(partial_correlation),
            INT(partial_correlation_storage))
ORBA_EDITOR(Quantiles, quantiles, INT(quantile_order_count), IN(quantile_orders), OUT(quantiles),
            OUT(order_statistics), INT(order_statistics_storage))
ORBA_EDITOR(StreamQuantiles, streamquantiles, INT(stream_quantile_order_count),
            IN(stream_quantile_orders), OUT(stream_quantiles), INT(stream_quantile_parameter_count),
            IN(stream_quantile_parameters))
ORBA_EDITOR(PooledCovariance, pooledcovariance, INT(group_indices), OUT(pooled_mean),
            OUT(pooled_covariance), INT(requested_group_indices), OUT(group_mean),
            OUT(group_covariance))
ORBA_EDITOR(RobustCovariance, robustcovariance, INT(robust_covariance_storage),
            INT(robust_parameter_count), IN(robust_parameters), OUT(robust_mean),
            OUT(robust_covariance))
ORBA_EDITOR(OutliersDetection, outliersdetection, INT(outlier_parameter_count),
            IN(outlier_parameters), OUT(outlier_weights))
ORBA_EDITOR(MissingValues, missingvalues, INT(imputation_parameter_count),
            IN(imputation_parameters), INT(initial_estimate_count), IN(initial_estimates),
            INT(prior_count), IN(prior), INT(simulated_value_count), OUT(simulated_values),
            INT(estimate_count), OUT(estimates))
ORBA_EDITOR(CorParameterization, corparameterization, IN(correlation), INT(correlation_storage),
            OUT(parametrized_correlation), INT(parametrized_correlation_storage))
