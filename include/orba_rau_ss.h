/* Orba: summary statistics; part of orba_rau.h, which includes this file.
 *
 * A task describes a computation by pointers into the caller's memory: observations, parameters and
 * the places where results go. They are read at each compute call, so the values behind them may
 * change between calls: blocks of data go through one task that way. What they point to has to live
 * until the last compute call. A task belongs to one thread at a time, different tasks are
 * independent.
 *
 * There are p variables with n observations each. Functions named raud work on double, those named
 * raus on float; all arrays of a task have the type of the function that computes. Each function
 * returns a status, 0 or one of the negative codes below, and prints nothing.
 *
 * The names in lower case are the same functions for callers that pass everything by address: a
 * task handle, an identifier and the two masks of a compute call are given by their addresses, all
 * other arguments as they are. */
#ifndef ORBA_RAU_SS_H
#define ORBA_RAU_SS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct SsTask SsTask;

/* Storage of observations: each variable contiguous (element (variable j, observation i) at j*n +
 * i) or each observation contiguous (i*p + j). Of symmetric matrices: full, or the lower or upper
 * triangle packed row by row. */
enum {
  RAU_SS_MATRIX_STORAGE_ROWS = 0x10000,
  RAU_SS_MATRIX_STORAGE_COLS = 0x20000,
  RAU_SS_MATRIX_STORAGE_FULL = 0,
  RAU_SS_MATRIX_STORAGE_L_PACKED = 1,
  RAU_SS_MATRIX_STORAGE_U_PACKED = 2
};

/* Parameters of a task, for the editors. */
enum {
  RAU_SS_ED_DIMEN = 1,
  RAU_SS_ED_OBSERV_N = 2,
  RAU_SS_ED_OBSERV = 3,
  RAU_SS_ED_OBSERV_STORAGE = 4,
  RAU_SS_ED_INDC = 5,
  RAU_SS_ED_WEIGHTS = 6,
  RAU_SS_ED_MEAN = 7,
  RAU_SS_ED_2R_MOM = 8,
  RAU_SS_ED_3R_MOM = 9,
  RAU_SS_ED_4R_MOM = 10,
  RAU_SS_ED_2C_MOM = 11,
  RAU_SS_ED_3C_MOM = 12,
  RAU_SS_ED_4C_MOM = 13,
  RAU_SS_ED_KURTOSIS = 14,
  RAU_SS_ED_SKEWNESS = 15,
  RAU_SS_ED_MIN = 16,
  RAU_SS_ED_MAX = 17,
  RAU_SS_ED_VARIATION = 18,
  RAU_SS_ED_COV = 19,
  RAU_SS_ED_COV_STORAGE = 20,
  RAU_SS_ED_COR = 21,
  RAU_SS_ED_COR_STORAGE = 22,
  RAU_SS_ED_ACCUM_WEIGHT = 23,
  RAU_SS_ED_QUANT_ORDER_N = 24,
  RAU_SS_ED_QUANT_ORDER = 25,
  RAU_SS_ED_QUANT_QUANTILES = 26,
  RAU_SS_ED_ORDER_STATS = 27,
  RAU_SS_ED_GROUP_INDC = 28,
  RAU_SS_ED_POOLED_COV_STORAGE = 29,
  RAU_SS_ED_POOLED_MEAN = 30,
  RAU_SS_ED_POOLED_COV = 31,
  RAU_SS_ED_REQ_GROUP_INDC = 32,
  RAU_SS_ED_GROUP_MEAN = 33,
  RAU_SS_ED_GROUP_COV_STORAGE = 34,
  RAU_SS_ED_GROUP_COV = 35,
  RAU_SS_ED_ROBUST_COV_STORAGE = 36,
  RAU_SS_ED_ROBUST_COV_PARAMS_N = 37,
  RAU_SS_ED_ROBUST_COV_PARAMS = 38,
  RAU_SS_ED_ROBUST_MEAN = 39,
  RAU_SS_ED_ROBUST_COV = 40,
  RAU_SS_ED_OUTLIERS_PARAMS_N = 41,
  RAU_SS_ED_OUTLIERS_PARAMS = 42,
  RAU_SS_ED_OUTLIERS_WEIGHT = 43,
  RAU_SS_ED_ORDER_STATS_STORAGE = 44,
  RAU_SS_ED_PARTIAL_COV_IDX = 45,
  RAU_SS_ED_PARTIAL_COV = 46,
  RAU_SS_ED_PARTIAL_COV_STORAGE = 47,
  RAU_SS_ED_PARTIAL_COR = 48,
  RAU_SS_ED_PARTIAL_COR_STORAGE = 49,
  RAU_SS_ED_MI_PARAMS_N = 50,
  RAU_SS_ED_MI_PARAMS = 51,
  RAU_SS_ED_MI_INIT_ESTIMATES_N = 52,
  RAU_SS_ED_MI_INIT_ESTIMATES = 53,
  RAU_SS_ED_MI_SIMUL_VALS_N = 54,
  RAU_SS_ED_MI_SIMUL_VALS = 55,
  RAU_SS_ED_MI_ESTIMATES_N = 56,
  RAU_SS_ED_MI_ESTIMATES = 57,
  RAU_SS_ED_MI_PRIOR_N = 58,
  RAU_SS_ED_MI_PRIOR = 59,
  RAU_SS_ED_PARAMTR_COR = 60,
  RAU_SS_ED_PARAMTR_COR_STORAGE = 61,
  RAU_SS_ED_STREAM_QUANT_PARAMS_N = 62,
  RAU_SS_ED_STREAM_QUANT_PARAMS = 63,
  RAU_SS_ED_STREAM_QUANT_ORDER_N = 64,
  RAU_SS_ED_STREAM_QUANT_ORDER = 65,
  RAU_SS_ED_STREAM_QUANT_QUANTILES = 66,
  RAU_SS_ED_SUM = 67,
  RAU_SS_ED_2R_SUM = 68,
  RAU_SS_ED_3R_SUM = 69,
  RAU_SS_ED_4R_SUM = 70,
  RAU_SS_ED_2C_SUM = 71,
  RAU_SS_ED_3C_SUM = 72,
  RAU_SS_ED_4C_SUM = 73,
  RAU_SS_ED_CP = 74,
  RAU_SS_ED_CP_STORAGE = 75,
  RAU_SS_ED_MDAD = 76,
  RAU_SS_ED_MNAD = 77,
  RAU_SS_ED_SORTED_OBSERV = 78,
  RAU_SS_ED_SORTED_OBSERV_STORAGE = 79
};

/* Estimates: bits of a 64-bit mask. Those marked (later) are not computed yet: a compute call that
 * asks for them gives RAU_SS_ERROR_METHOD_NOT_SUPPORTED. */
#define RAU_SS_MEAN UINT64_C(0x1)                   /* mean */
#define RAU_SS_2R_MOM UINT64_C(0x2)                 /* raw moment 2 */
#define RAU_SS_3R_MOM UINT64_C(0x4)                 /* raw moment 3 */
#define RAU_SS_4R_MOM UINT64_C(0x8)                 /* raw moment 4 */
#define RAU_SS_2C_MOM UINT64_C(0x10)                /* central moment 2 */
#define RAU_SS_3C_MOM UINT64_C(0x20)                /* central moment 3 */
#define RAU_SS_4C_MOM UINT64_C(0x40)                /* central moment 4 */
#define RAU_SS_KURTOSIS UINT64_C(0x80)              /* kurtosis */
#define RAU_SS_SKEWNESS UINT64_C(0x100)             /* skewness */
#define RAU_SS_VARIATION UINT64_C(0x200)            /* coefficient of variation */
#define RAU_SS_MIN UINT64_C(0x400)                  /* minimum */
#define RAU_SS_MAX UINT64_C(0x800)                  /* maximum */
#define RAU_SS_COV UINT64_C(0x1000)                 /* covariance */
#define RAU_SS_COR UINT64_C(0x2000)                 /* correlation */
#define RAU_SS_POOLED_COV UINT64_C(0x4000)          /* pooled covariance (later) */
#define RAU_SS_GROUP_COV UINT64_C(0x8000)           /* group covariance (later) */
#define RAU_SS_QUANTS UINT64_C(0x10000)             /* quantiles */
#define RAU_SS_ORDER_STATS UINT64_C(0x20000)        /* order statistics */
#define RAU_SS_ROBUST_COV UINT64_C(0x40000)         /* robust covariance (later) */
#define RAU_SS_OUTLIERS UINT64_C(0x80000)           /* outlier detection (later) */
#define RAU_SS_PARTIAL_COV UINT64_C(0x100000)       /* partial covariance (later) */
#define RAU_SS_PARTIAL_COR UINT64_C(0x200000)       /* partial correlation (later) */
#define RAU_SS_MISSING_VALS UINT64_C(0x400000)      /* multiple imputation (later) */
#define RAU_SS_PARAMTR_COR UINT64_C(0x800000)       /* correlation parameterization (later) */
#define RAU_SS_STREAM_QUANTS UINT64_C(0x1000000)    /* stream quantiles (later) */
#define RAU_SS_SUM UINT64_C(0x2000000)              /* sum */
#define RAU_SS_2R_SUM UINT64_C(0x4000000)           /* raw sum 2 */
#define RAU_SS_3R_SUM UINT64_C(0x8000000)           /* raw sum 3 */
#define RAU_SS_4R_SUM UINT64_C(0x10000000)          /* raw sum 4 */
#define RAU_SS_2C_SUM UINT64_C(0x20000000)          /* central sum 2 */
#define RAU_SS_3C_SUM UINT64_C(0x40000000)          /* central sum 3 */
#define RAU_SS_4C_SUM UINT64_C(0x80000000)          /* central sum 4 */
#define RAU_SS_CP UINT64_C(0x100000000)             /* cross-product matrix */
#define RAU_SS_MDAD UINT64_C(0x200000000)           /* median absolute deviation */
#define RAU_SS_MNAD UINT64_C(0x400000000)           /* mean absolute deviation */
#define RAU_SS_POOLED_MEAN UINT64_C(0x800000000)    /* pooled mean (later) */
#define RAU_SS_GROUP_MEAN UINT64_C(0x1000000000)    /* group mean (later) */
#define RAU_SS_SORTED_OBSERV UINT64_C(0x8000000000) /* sorted observations */

/* Methods: bits of a 32-bit mask. One mask may serve several estimates: each driver looks for its
 * own bits. The methods of estimates that are not computed yet are left out. */
enum {
  RAU_SS_METHOD_FAST = 0x1,  /* moments, extremes, quantiles, order statistics, deviations */
  RAU_SS_METHOD_1PASS = 0x2, /* moments, extremes */
  RAU_SS_METHOD_FAST_USER_MEAN = 0x100, /* moments about means that the caller gives */
  RAU_SS_METHOD_CP_TO_COVCOR = 0x200,   /* covariance and correlation from a kept cross-product */
  RAU_SS_METHOD_SUM_TO_MOM = 0x400,     /* moments from kept sums */
  RAU_SS_METHOD_RADIX = 0x100000        /* sorted observations */
};

/* Statuses beside those of streams. A code named after an array means that it is missing, at an
 * edit with a null address or in a compute call that needs it. */
enum {
  RAU_SS_ERROR_MEM_FAILURE = -4000,
  RAU_SS_ERROR_BAD_DIMEN = -4001,             /* missing or below 1 */
  RAU_SS_ERROR_BAD_OBSERV_N = -4002,          /* missing or below 1 */
  RAU_SS_ERROR_STORAGE_NOT_SUPPORTED = -4003, /* a storage code that is none */
  RAU_SS_ERROR_BAD_INDC = -4004,
  RAU_SS_ERROR_BAD_WEIGHTS = -4005,
  RAU_SS_ERROR_BAD_MEAN = -4006,
  RAU_SS_ERROR_BAD_2R_MOM = -4007,
  RAU_SS_ERROR_BAD_3R_MOM = -4008,
  RAU_SS_ERROR_BAD_4R_MOM = -4009,
  RAU_SS_ERROR_BAD_2C_MOM = -4010,
  RAU_SS_ERROR_BAD_3C_MOM = -4011,
  RAU_SS_ERROR_BAD_4C_MOM = -4012,
  RAU_SS_ERROR_BAD_KURTOSIS = -4013,
  RAU_SS_ERROR_BAD_SKEWNESS = -4014,
  RAU_SS_ERROR_BAD_MIN = -4015,
  RAU_SS_ERROR_BAD_MAX = -4016,
  RAU_SS_ERROR_BAD_VARIATION = -4017,
  RAU_SS_ERROR_BAD_COV = -4018,
  RAU_SS_ERROR_BAD_COR = -4019,
  RAU_SS_ERROR_BAD_ACCUM_WEIGHT = -4020,
  RAU_SS_ERROR_BAD_QUANT_ORDER = -4021,
  RAU_SS_ERROR_BAD_QUANT_ORDER_N = -4022, /* or a count below 0, an order outside 0 to 1 */
  RAU_SS_ERROR_BAD_QUANT = -4023,
  RAU_SS_ERROR_BAD_ORDER_STATS = -4024,
  RAU_SS_ERROR_BAD_ROBUST_PARAMS = -4026,
  RAU_SS_ERROR_BAD_ROBUST_COV = -4027,
  RAU_SS_ERROR_BAD_ROBUST_MEAN = -4028,
  RAU_SS_ERROR_METHOD_NOT_SUPPORTED = -4029, /* no method of the mask gives the estimate */
  RAU_SS_ERROR_BAD_GROUP_INDC = -4030,
  RAU_SS_ERROR_NULL_TASK = -4031,
  RAU_SS_ERROR_BAD_OBSERV = -4032,
  RAU_SS_ERROR_BAD_POOLED_COV = -4034,
  RAU_SS_ERROR_BAD_POOLED_MEAN = -4035,
  RAU_SS_ERROR_BAD_GROUP_COV = -4036,
  RAU_SS_ERROR_BAD_GROUP_MEAN = -4037,
  RAU_SS_ERROR_BAD_GROUP_INDC_EDIT = -4038,
  RAU_SS_ERROR_BAD_OUTLIERS_PARAMS = -4039,
  RAU_SS_ERROR_BAD_OUTLIERS_PARAMS_N = -4040,
  RAU_SS_ERROR_BAD_OUTLIERS_WEIGHT = -4041,
  RAU_SS_ERROR_BAD_ROBUST_PARAMS_EDIT = -4042,
  RAU_SS_ERROR_BAD_ROBUST_PARAMS_N = -4043,
  RAU_SS_ERROR_BAD_STORAGE_ADDR = -4044, /* a missing storage code */
  RAU_SS_ERROR_BAD_PARTIAL_IDX = -4045,
  RAU_SS_ERROR_BAD_PARTIAL_COV = -4046,
  RAU_SS_ERROR_BAD_PARTIAL_COR = -4047,
  RAU_SS_ERROR_BAD_MI_PARAMS = -4048,
  RAU_SS_ERROR_BAD_MI_PARAMS_N = -4049,
  RAU_SS_ERROR_BAD_MI_INIT_ESTIMATES_N = -4052,
  RAU_SS_ERROR_BAD_MI_INIT_ESTIMATES = -4053,
  RAU_SS_ERROR_BAD_MI_SIMUL_VALS = -4054,
  RAU_SS_ERROR_BAD_MI_SIMUL_VALS_N = -4055,
  RAU_SS_ERROR_BAD_MI_ESTIMATES_N = -4056,
  RAU_SS_ERROR_BAD_MI_ESTIMATES = -4057,
  RAU_SS_ERROR_BAD_MI_PRIOR_N = -4061,
  RAU_SS_ERROR_BAD_MI_PRIOR = -4062,
  RAU_SS_ERROR_BAD_STREAM_QUANT_PARAMS = -4065,
  RAU_SS_ERROR_BAD_STREAM_QUANT_PARAMS_N = -4066,
  RAU_SS_ERROR_BAD_STREAM_QUANT_ORDER = -4068,
  RAU_SS_ERROR_BAD_STREAM_QUANT_ORDER_N = -4069,
  RAU_SS_ERROR_BAD_STREAM_QUANT_QUANTILES = -4070,
  RAU_SS_ERROR_BAD_PARAMTR_COR = -4071,
  RAU_SS_ERROR_BAD_SUM = -4074,
  RAU_SS_ERROR_BAD_2R_SUM = -4075,
  RAU_SS_ERROR_BAD_3R_SUM = -4076,
  RAU_SS_ERROR_BAD_4R_SUM = -4077,
  RAU_SS_ERROR_BAD_2C_SUM = -4078,
  RAU_SS_ERROR_BAD_3C_SUM = -4079,
  RAU_SS_ERROR_BAD_4C_SUM = -4080,
  RAU_SS_ERROR_BAD_CP = -4081,
  RAU_SS_ERROR_BAD_MDAD = -4082,
  RAU_SS_ERROR_BAD_MNAD = -4083,
  RAU_SS_ERROR_BAD_SORTED_OBSERV = -4084,
  RAU_SS_ERROR_BAD_SORTED_OBSERV_ALIAS = -4085 /* sorting in place under a variable mask */
};

/* ---- Tasks ---- */

/* Makes a task of *p variables. Without observations (x null) *n and *xstorage are not looked at:
 * both may come later, by an edit. weights: n numbers, null for 1 each; indices: p integers that
 * select variables by being non-zero, null for all. RAU_SS_ERROR_BAD_DIMEN, _BAD_STORAGE_ADDR,
 * _STORAGE_NOT_SUPPORTED, _BAD_OBSERV_N; RAU_SS_ERROR_MEM_FAILURE sets *task to null. */
int32_t raudSSNewTask(SsTask** task, const int32_t* p, const int32_t* n, const int32_t* xstorage,
                      const double* x, const double* weights, const int32_t* indices);
int32_t raudssnewtask(SsTask** task, const int32_t* p, const int32_t* n, const int32_t* xstorage,
                      const double* x, const double* weights, const int32_t* indices);
int32_t rausSSNewTask(SsTask** task, const int32_t* p, const int32_t* n, const int32_t* xstorage,
                      const float* x, const float* weights, const int32_t* indices);
int32_t rausssnewtask(SsTask** task, const int32_t* p, const int32_t* n, const int32_t* xstorage,
                      const float* x, const float* weights, const int32_t* indices);

/* Frees a task with all that it keeps, and sets the handle to null. */
int32_t rauSSDeleteTask(SsTask** task);
int32_t raussdeletetask(SsTask** task);

/* Sets the parameter `id` (RAU_SS_ED_...) of a task to an address: raud and raus for floating
 * arrays, which compute calls may write though the address is const here, raui for integers.
 * RAU_SS_ERROR_NULL_TASK; RAU_ERROR_BADARGS for an id that is none or of the other kind. A null
 * address changes nothing and gives the code of the parameter. Nothing is looked at before the
 * compute call. */
int32_t raudSSEditTask(SsTask* task, int32_t id, const double* address);
int32_t raudssedittask(SsTask* const* task, const int32_t* id, const double* address);
int32_t rausSSEditTask(SsTask* task, int32_t id, const float* address);
int32_t rausssedittask(SsTask* const* task, const int32_t* id, const float* address);
int32_t rauiSSEditTask(SsTask* task, int32_t id, const int32_t* address);
int32_t rauissedittask(SsTask* const* task, const int32_t* id, const int32_t* address);

/* Computes the estimates of a mask (RAU_SS_...) by the methods of another (RAU_SS_METHOD_...). In
 * this order: extremes, sorted observations, moments with sums and matrices, absolute deviations,
 * quantiles and order statistics; the first failure ends the call. Each estimate needs its array.
 *
 * Variables that the task does not select keep their values in all results.
 *
 * Moments, sums and matrices come from the observations by one of RAU_SS_METHOD_FAST, _1PASS (safe
 * for data far from 0) and _FAST_USER_MEAN (about the means that the task points to), or from kept
 * sums and cross-products by the two conversions. Central moments need the arrays of the mean and
 * of the raw moments of lower order too, skewness and kurtosis the central moments they are made
 * of. With RAU_SS_ED_ACCUM_WEIGHT (two numbers, 0 before the first block: the sums of weights and
 * of their squares) a call continues from the results of the calls before it, as long as the
 * arrays stay as and where that left them. The central moment of order 2 and the covariance are
 * unbiased; the diagonal of a correlation matrix holds variances. No sum on the way overflows or
 * underflows where the result does not.
 *
 * RAU_SS_MIN, RAU_SS_MAX: p numbers each, continued from the values that are there: set them to an
 * observation or to a bound before the first block. NaN observations count for nothing.
 *
 * RAU_SS_QUANTS: for the order q, with h = q (n - 1), k the integer part of h and f = h - k,
 * (1 - f) x[k] + f x[k + 1] of the sorted observations x[0] ... x[n - 1] (definition 7 of Hyndman
 * and Fan, American Statistician 50, 1996). The quantile of the order NaN is NaN.
 *
 * RAU_SS_ORDER_STATS, RAU_SS_SORTED_OBSERV: each variable's observations, ascending, NaN last; the
 * latter may go where the observations are, in the same storage and without a variable mask.
 *
 * RAU_SS_MDAD: the median of |x - median|. RAU_SS_MNAD: the mean of |x - mean| with the weights of
 * the task, about the task's means if it has any, else about the mean of these observations.
 *
 * RAU_SS_ERROR_NULL_TASK, _BAD_DIMEN, _BAD_OBSERV_N, _BAD_OBSERV, _BAD_STORAGE_ADDR,
 * _STORAGE_NOT_SUPPORTED, then what the estimates ask for; RAU_SS_ERROR_MEM_FAILURE. */
int32_t raudSSCompute(SsTask* task, uint64_t estimates, uint32_t method);
int32_t raudsscompute(SsTask* const* task, const uint64_t* estimates, const uint32_t* method);
int32_t rausSSCompute(SsTask* task, uint64_t estimates, uint32_t method);
int32_t raussscompute(SsTask* const* task, const uint64_t* estimates, const uint32_t* method);

/* ---- Editors of several parameters at once ----
 *
 * Each takes the addresses that are not null and leaves the other parameters as they are; the one
 * failure is RAU_SS_ERROR_NULL_TASK. */

/* Arrays of p numbers: means, raw moments of order 2 to 4, central moments of order 2 to 4. */
int32_t raudSSEditMoments(SsTask* task, double* mean, double* raw_moment_2, double* raw_moment_3,
                          double* raw_moment_4, double* central_moment_2, double* central_moment_3,
                          double* central_moment_4);
int32_t raudsseditmoments(SsTask* const* task, double* mean, double* raw_moment_2,
                          double* raw_moment_3, double* raw_moment_4, double* central_moment_2,
                          double* central_moment_3, double* central_moment_4);
int32_t rausSSEditMoments(SsTask* task, float* mean, float* raw_moment_2, float* raw_moment_3,
                          float* raw_moment_4, float* central_moment_2, float* central_moment_3,
                          float* central_moment_4);
int32_t raussseditmoments(SsTask* const* task, float* mean, float* raw_moment_2,
                          float* raw_moment_3, float* raw_moment_4, float* central_moment_2,
                          float* central_moment_3, float* central_moment_4);

/* Covariance and correlation, p x p in the storage that the codes tell. */
int32_t raudSSEditCovCor(SsTask* task, double* mean, double* covariance,
                         const int32_t* covariance_storage, double* correlation,
                         const int32_t* correlation_storage);
int32_t raudsseditcovcor(SsTask* const* task, double* mean, double* covariance,
                         const int32_t* covariance_storage, double* correlation,
                         const int32_t* correlation_storage);
int32_t rausSSEditCovCor(SsTask* task, float* mean, float* covariance,
                         const int32_t* covariance_storage, float* correlation,
                         const int32_t* correlation_storage);
int32_t raussseditcovcor(SsTask* const* task, float* mean, float* covariance,
                         const int32_t* covariance_storage, float* correlation,
                         const int32_t* correlation_storage);

/* Partial covariance and correlation; partial_indices are p integers. */
int32_t raudSSEditPartialCovCor(SsTask* task, const int32_t* partial_indices, double* covariance,
                                const int32_t* covariance_storage, double* correlation,
                                const int32_t* correlation_storage, double* partial_covariance,
                                const int32_t* partial_covariance_storage,
                                double* partial_correlation,
                                const int32_t* partial_correlation_storage);
int32_t raudsseditpartialcovcor(SsTask* const* task, const int32_t* partial_indices,
                                double* covariance, const int32_t* covariance_storage,
                                double* correlation, const int32_t* correlation_storage,
                                double* partial_covariance,
                                const int32_t* partial_covariance_storage,
                                double* partial_correlation,
                                const int32_t* partial_correlation_storage);
int32_t rausSSEditPartialCovCor(SsTask* task, const int32_t* partial_indices, float* covariance,
                                const int32_t* covariance_storage, float* correlation,
                                const int32_t* correlation_storage, float* partial_covariance,
                                const int32_t* partial_covariance_storage,
                                float* partial_correlation,
                                const int32_t* partial_correlation_storage);
int32_t raussseditpartialcovcor(SsTask* const* task, const int32_t* partial_indices,
                                float* covariance, const int32_t* covariance_storage,
                                float* correlation, const int32_t* correlation_storage,
                                float* partial_covariance,
                                const int32_t* partial_covariance_storage,
                                float* partial_correlation,
                                const int32_t* partial_correlation_storage);

/* Quantiles: their number and orders, 0 to 1; results, element (variable j, order k) at
 * j*count + k. Order statistics: the sorted observations, p x n in a storage of observations. */
int32_t raudSSEditQuantiles(SsTask* task, const int32_t* quantile_order_count,
                            const double* quantile_orders, double* quantiles,
                            double* order_statistics, const int32_t* order_statistics_storage);
int32_t raudsseditquantiles(SsTask* const* task, const int32_t* quantile_order_count,
                            const double* quantile_orders, double* quantiles,
                            double* order_statistics, const int32_t* order_statistics_storage);
int32_t rausSSEditQuantiles(SsTask* task, const int32_t* quantile_order_count,
                            const float* quantile_orders, float* quantiles, float* order_statistics,
                            const int32_t* order_statistics_storage);
int32_t raussseditquantiles(SsTask* const* task, const int32_t* quantile_order_count,
                            const float* quantile_orders, float* quantiles, float* order_statistics,
                            const int32_t* order_statistics_storage);

/* Quantiles of a stream of blocks. */
int32_t raudSSEditStreamQuantiles(SsTask* task, const int32_t* stream_quantile_order_count,
                                  const double* stream_quantile_orders, double* stream_quantiles,
                                  const int32_t* stream_quantile_parameter_count,
                                  const double* stream_quantile_parameters);
int32_t raudsseditstreamquantiles(SsTask* const* task, const int32_t* stream_quantile_order_count,
                                  const double* stream_quantile_orders, double* stream_quantiles,
                                  const int32_t* stream_quantile_parameter_count,
                                  const double* stream_quantile_parameters);
int32_t rausSSEditStreamQuantiles(SsTask* task, const int32_t* stream_quantile_order_count,
                                  const float* stream_quantile_orders, float* stream_quantiles,
                                  const int32_t* stream_quantile_parameter_count,
                                  const float* stream_quantile_parameters);
int32_t raussseditstreamquantiles(SsTask* const* task, const int32_t* stream_quantile_order_count,
                                  const float* stream_quantile_orders, float* stream_quantiles,
                                  const int32_t* stream_quantile_parameter_count,
                                  const float* stream_quantile_parameters);

/* Pooled and group means and covariances; group_indices are n integers. The storage codes of the
 * two covariances are set by rauiSSEditTask. */
int32_t raudSSEditPooledCovariance(SsTask* task, const int32_t* group_indices, double* pooled_mean,
                                   double* pooled_covariance,
                                   const int32_t* requested_group_indices, double* group_mean,
                                   double* group_covariance);
int32_t raudsseditpooledcovariance(SsTask* const* task, const int32_t* group_indices,
                                   double* pooled_mean, double* pooled_covariance,
                                   const int32_t* requested_group_indices, double* group_mean,
                                   double* group_covariance);
int32_t rausSSEditPooledCovariance(SsTask* task, const int32_t* group_indices, float* pooled_mean,
                                   float* pooled_covariance, const int32_t* requested_group_indices,
                                   float* group_mean, float* group_covariance);
int32_t raussseditpooledcovariance(SsTask* const* task, const int32_t* group_indices,
                                   float* pooled_mean, float* pooled_covariance,
                                   const int32_t* requested_group_indices, float* group_mean,
                                   float* group_covariance);

/* Robust means and covariance. */
int32_t raudSSEditRobustCovariance(SsTask* task, const int32_t* robust_covariance_storage,
                                   const int32_t* robust_parameter_count,
                                   const double* robust_parameters, double* robust_mean,
                                   double* robust_covariance);
int32_t raudsseditrobustcovariance(SsTask* const* task, const int32_t* robust_covariance_storage,
                                   const int32_t* robust_parameter_count,
                                   const double* robust_parameters, double* robust_mean,
                                   double* robust_covariance);
int32_t rausSSEditRobustCovariance(SsTask* task, const int32_t* robust_covariance_storage,
                                   const int32_t* robust_parameter_count,
                                   const float* robust_parameters, float* robust_mean,
                                   float* robust_covariance);
int32_t raussseditrobustcovariance(SsTask* const* task, const int32_t* robust_covariance_storage,
                                   const int32_t* robust_parameter_count,
                                   const float* robust_parameters, float* robust_mean,
                                   float* robust_covariance);

/* Outlier detection; results are n weights. */
int32_t raudSSEditOutliersDetection(SsTask* task, const int32_t* outlier_parameter_count,
                                    const double* outlier_parameters, double* outlier_weights);
int32_t raudsseditoutliersdetection(SsTask* const* task, const int32_t* outlier_parameter_count,
                                    const double* outlier_parameters, double* outlier_weights);
int32_t rausSSEditOutliersDetection(SsTask* task, const int32_t* outlier_parameter_count,
                                    const float* outlier_parameters, float* outlier_weights);
int32_t raussseditoutliersdetection(SsTask* const* task, const int32_t* outlier_parameter_count,
                                    const float* outlier_parameters, float* outlier_weights);

/* Multiple imputation. */
int32_t raudSSEditMissingValues(SsTask* task, const int32_t* imputation_parameter_count,
                                const double* imputation_parameters,
                                const int32_t* initial_estimate_count,
                                const double* initial_estimates, const int32_t* prior_count,
                                const double* prior, const int32_t* simulated_value_count,
                                double* simulated_values, const int32_t* estimate_count,
                                double* estimates);
int32_t raudsseditmissingvalues(SsTask* const* task, const int32_t* imputation_parameter_count,
                                const double* imputation_parameters,
                                const int32_t* initial_estimate_count,
                                const double* initial_estimates, const int32_t* prior_count,
                                const double* prior, const int32_t* simulated_value_count,
                                double* simulated_values, const int32_t* estimate_count,
                                double* estimates);
int32_t rausSSEditMissingValues(SsTask* task, const int32_t* imputation_parameter_count,
                                const float* imputation_parameters,
                                const int32_t* initial_estimate_count,
                                const float* initial_estimates, const int32_t* prior_count,
                                const float* prior, const int32_t* simulated_value_count,
                                float* simulated_values, const int32_t* estimate_count,
                                float* estimates);
int32_t raussseditmissingvalues(SsTask* const* task, const int32_t* imputation_parameter_count,
                                const float* imputation_parameters,
                                const int32_t* initial_estimate_count,
                                const float* initial_estimates, const int32_t* prior_count,
                                const float* prior, const int32_t* simulated_value_count,
                                float* simulated_values, const int32_t* estimate_count,
                                float* estimates);

/* Repair of a correlation matrix. */
int32_t raudSSEditCorParameterization(SsTask* task, const double* correlation,
                                      const int32_t* correlation_storage,
                                      double* parametrized_correlation,
                                      const int32_t* parametrized_correlation_storage);
int32_t raudsseditcorparameterization(SsTask* const* task, const double* correlation,
                                      const int32_t* correlation_storage,
                                      double* parametrized_correlation,
                                      const int32_t* parametrized_correlation_storage);
int32_t rausSSEditCorParameterization(SsTask* task, const float* correlation,
                                      const int32_t* correlation_storage,
                                      float* parametrized_correlation,
                                      const int32_t* parametrized_correlation_storage);
int32_t raussseditcorparameterization(SsTask* const* task, const float* correlation,
                                      const int32_t* correlation_storage,
                                      float* parametrized_correlation,
                                      const int32_t* parametrized_correlation_storage);

#ifdef __cplusplus
}
#endif

#endif
