// The uniform variates.
#include "statistics/distributions/generate.h"

using orba::statistics::generate;

ORBA_CLASS_KERNELS(vdRngUniform, int32_t(int32_t, StreamState*, int32_t, double*, double, double));
ORBA_CLASS_KERNELS(vsRngUniform, int32_t(int32_t, StreamState*, int32_t, float*, float, float));
ORBA_CLASS_KERNELS(viRngUniform,
                   int32_t(int32_t, StreamState*, int32_t, int32_t*, int32_t, int32_t));
ORBA_CLASS_KERNELS(viRngUniformBits, int32_t(int32_t, StreamState*, int32_t, uint32_t*));
ORBA_CLASS_KERNELS(viRngUniformBits32, int32_t(int32_t, StreamState*, int32_t, uint32_t*));
ORBA_CLASS_KERNELS(viRngUniformBits64, int32_t(int32_t, StreamState*, int32_t, uint64_t*));

ORBA_ENTRY(vdRngUniform, vdrnguniform, ORBA_RNG_ARGUMENTS(double), V(double, a), V(double, b)) {
  return generate("vdRngUniform", "%s(%d,%p,%d,%p,%lf,%lf)", orba::statistics::standard_or_accurate,
                  vdRngUniform_kernels, {{a >= b, 5}}, method, stream, n, r, a, b);
}

ORBA_ENTRY(vsRngUniform, vsrnguniform, ORBA_RNG_ARGUMENTS(float), V(float, a), V(float, b)) {
  return generate("vsRngUniform", "%s(%d,%p,%d,%p,%f,%f)", orba::statistics::standard_or_accurate,
                  vsRngUniform_kernels, {{a >= b, 5}}, method, stream, n, r, a, b);
}

ORBA_ENTRY(viRngUniform, virnguniform, ORBA_RNG_ARGUMENTS(int32_t), V(int32_t, a), V(int32_t, b)) {
  return generate("viRngUniform", "%s(%d,%p,%d,%p,%d,%d)", orba::statistics::standard_only,
                  viRngUniform_kernels, {{a >= b, 5}}, method, stream, n, r, a, b);
}

ORBA_ENTRY(viRngUniformBits, virnguniformbits, ORBA_RNG_ARGUMENTS(uint32_t)) {
  return generate("viRngUniformBits", "%s(%d,%p,%d,%p)", orba::statistics::standard_only,
                  viRngUniformBits_kernels, {}, method, stream, n, r);
}

ORBA_ENTRY(viRngUniformBits32, virnguniformbits32, ORBA_RNG_ARGUMENTS(uint32_t)) {
  return generate("viRngUniformBits32", "%s(%d,%p,%d,%p)", orba::statistics::standard_only,
                  viRngUniformBits32_kernels, {}, method, stream, n, r);
}

ORBA_ENTRY(viRngUniformBits64, virnguniformbits64, ORBA_RNG_ARGUMENTS(uint64_t)) {
  return generate("viRngUniformBits64", "%s(%d,%p,%d,%p)", orba::statistics::standard_only,
                  viRngUniformBits64_kernels, {}, method, stream, n, r);
}
