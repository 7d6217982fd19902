// Polynomials of the logarithms, coefficients from the lowest degree up, as fitted by
// tools/coefficients/log_polynomials.sollya, which also tells their errors, relative to the logarithm:
//
//                     e^2 ...   error     EP, e ...   error
//   reciprocals       degree    2^-62     degree 5    2^-31        |e| < 0.0304
//   the same, float   degree    2^-31     degree 2    2^-12
//   cells             degree    2^-57     degree 3    2^-29        |e| < 0.003
//
// PLACEHOLDER
#pragma once

#include "vm/kernels/simd/simd.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

constexpr double kLnReciprocal[] = {
    -0x1p-1, 0x1.5555555555502p-2, -0x1.ffffffffffeb8p-3, 0x1.9999999b45d3ap-3,
    -0x1.55555557cd1fep-3, 0x1.249233c7ee4cap-3, -0x1.ffffcc81f56a7p-4, 0x1.c7f35f94ec241p-4,
    -0x1.9a77f0faa1ce1p-4};
constexpr double kLog10Reciprocal[] = {
    -0x1.bcb7b1526e50ep-3, 0x1.287a7636f4316p-3, -0x1.bcb7b1526f431p-4, 0x1.63c627769a22fp-4,
    -0x1.287a762c22792p-4, 0x1.fc3f80ea316ecp-5, -0x1.bcb8070533acap-5, 0x1.8c08c0c19fec7p-5,
    -0x1.63a518ac823bcp-5};
constexpr double kLnReciprocalEp[] = {0x1.0000000007c28p0, -0x1.fffffd030bb75p-2,
                                      0x1.55554eac1135dp-2, -0x1.0032821cdea58p-2,
                                      0x1.9a12d8bf81c14p-3};
constexpr double kLog10ReciprocalEp[] = {0x1.bcb7b1527bcbcp-2, -0x1.bcb7aeba0007ap-3,
                                         0x1.287a706dc8b9ep-3, -0x1.bd0f6f3a7f359p-4,
                                         0x1.642f77aea0eap-4};
constexpr float kLnReciprocalF[] = {-0x1.fffffep-2f, 0x1.55555p-2f, -0x1.002d8p-2f,
                                    0x1.9a0beep-3f};
constexpr float kLog10ReciprocalF[] = {-0x1.bcb7aep-3f, 0x1.287a72p-3f, -0x1.bd16cep-4f,
                                       0x1.64256cp-4f};
constexpr float kLnReciprocalEpF[] = {0x1.000a1ap0f, -0x1.001e4cp-1f};
constexpr float kLog10ReciprocalEpF[] = {0x1.bcc93cp-2f, -0x1.bcec56p-3f};
constexpr double kLnCell[] = {-0x1p-1, 0x1.555555553f69p-2, -0x1.ffffffffd0fdfp-3,
                              0x1.999a89dd3dcb7p-3, -0x1.555635a0dd482p-3};
constexpr double kLog10Cell[] = {-0x1.bcb7b1526e50ep-3, 0x1.287a7636e12b3p-3,
                                 -0x1.bcb7b1526e2dfp-4, 0x1.63c6f825862bbp-4,
                                 -0x1.287b00dbc10ccp-4};
constexpr double kLnCellEp[] = {0x1.fffffffff718p-1, -0x1.0000389f965f6p-1, 0x1.5555ec5473766p-2};
constexpr double kLog10CellEp[] = {0x1.bcb7b15266948p-2, -0x1.bcb813afd86b6p-3,
                                   0x1.287af95e620f2p-3};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
