// Polynomials of the logarithms, coefficients from the lowest degree up, as fitted by
// tools/coefficients/log.sollya. Name: base, accuracy (the full ones start at e^2, those of EP at
// e), rows of the table that leaves e. Errors are relative to log(1 + e).
//
//             range of e            full                 EP
//   16        [-0.0372, 0.0625]     degree 11, 2^-61     degree 5, 2^-28
//   256       [-0.00276, 0.00391]   degree 7,  2^-65     degree 3, 2^-28
//   8F        [-0.0625, 0.125]      degree 7,  2^-31     degree 3, 2^-14
//   16F       [-0.0372, 0.0625]     degree 6,  2^-31     degree 2, 2^-11.4
#pragma once

#include "vm/kernels/simd/simd.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

constexpr double kLnSeries16[] = {
    -0x1.fffffffffffffp-2, 0x1.5555555555525p-2, -0x1.00000000025b8p-2, 0x1.9999999a2d47dp-3,
    -0x1.5555552afefcdp-3, 0x1.249244318f417p-3, -0x1.00007c4d52dd9p-3, 0x1.c73f339cee6b5p-4,
    -0x1.993159ed2a3dcp-4, 0x1.4a88a7423f8eep-4};
constexpr double kLog10Series16[] = {
    -0x1.bcb7b1526e50dp-3, 0x1.287a7636f4339p-3, -0x1.bcb7b152731d6p-4, 0x1.63c62775a124ap-4,
    -0x1.287a760e2ee9ep-4, 0x1.fc3f9d7a7fc5fp-5, -0x1.bcb89c40fd744p-5, 0x1.8b6c8c03dff8ep-5,
    -0x1.635b464ad7911p-5, 0x1.1e7960e6ec6ccp-5};
constexpr double kLnSeriesEp16[] = {0x1.ffffffe779cb1p-1, -0x1.fffff933f305dp-2,
                                    0x1.55594c6b81947p-2, -0x1.0044245ee6dcfp-2,
                                    0x1.85e04d12e1c94p-3};
constexpr double kLog10SeriesEp16[] = {0x1.bcb7b13d21228p-2, -0x1.bcb7ab6b0ac7p-3,
                                       0x1.287de7e85ebeap-3, -0x1.bd2e114c37ecep-4,
                                       0x1.52a463885b9c5p-4};
constexpr double kLnSeries256[] = {-0x1p-1,
                                   0x1.5555555555446p-2,
                                   -0x1.ffffffffe275dp-3,
                                   0x1.99999a6644dfep-3,
                                   -0x1.555607b3f1c75p-3,
                                   0x1.237eadc1b4d01p-3};
constexpr double kLog10Series256[] = {-0x1.bcb7b1526e50ep-3, 0x1.287a7636f4249p-3,
                                      -0x1.bcb7b1527ac88p-4, 0x1.63c62847521c2p-4,
                                      -0x1.287addc0c8d59p-4, 0x1.fa02e455c2b7fp-5};
constexpr double kLnSeriesEp256[] = {0x1.00000004e4d2bp0, -0x1.00003d9e7e7ap-1,
                                     0x1.54e57b62c7b36p-2};
constexpr double kLog10SeriesEp256[] = {0x1.bcb7b15aeeb14p-2, -0x1.bcb81c5d88a98p-3,
                                        0x1.28194f158496cp-3};
constexpr float kLnSeries8F[] = {-0x1p-1f,       0x1.555546p-2f,  -0x1.000074p-2f,
                                 0x1.99e074p-3f, -0x1.5568b8p-3f, 0x1.f4ee4ep-4f};
constexpr float kLog10Series8F[] = {-0x1.bcb7b2p-3f, 0x1.287a66p-3f,  -0x1.bcb58cp-4f,
                                    0x1.640098p-4f,  -0x1.2a2b42p-4f, 0x1.c5124p-5f};
constexpr float kLnSeriesEp8F[] = {0x1.000282p0f, -0x1.007aaep-1f, 0x1.4079c6p-2f};
constexpr float kLog10SeriesEp8F[] = {0x1.bcbc0cp-2f, -0x1.bd8cd8p-3f, 0x1.165d4ep-3f};
constexpr float kLnSeries16F[] = {-0x1p-1f, 0x1.55555p-2f, -0x1.00032ep-2f, 0x1.9a026p-3f,
                                  -0x1.43c2fap-3f};
constexpr float kLog10Series16F[] = {-0x1.bcb7bp-3f, 0x1.287a76p-3f, -0x1.bcc702p-4f,
                                     0x1.642542p-4f, -0x1.129c76p-4f};
constexpr float kLnSeriesEp16F[] = {0x1.00177ap0f, -0x1.f818dap-2f};
constexpr float kLog10SeriesEp16F[] = {0x1.bce07cp-2f, -0x1.b5da8ep-3f};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
