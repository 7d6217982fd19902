// Written by tools/coefficients/arith.sollya; do not edit.
// clang-format off
#pragma once

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// (1 - x)^(-1/2) from x^1 on, |x| <= 7.932186126708984375e-4, error below 2^-57.
constexpr double kInvSqrtSeries[] = {
    0x1.ffffffffffddcp-2, 0x1.7fffffffffbe3p-2, 0x1.40000cfc5a109p-2, 0x1.18000fc28602cp-2};

// (1 - x)^(-1/2) from x^1 on, |x| <= 7.932186126708984375e-4, error below 2^-34.
constexpr double kInvSqrtShortSeries[] = {
    0x1.000004f295456p-1, 0x1.80000b8bb3026p-2};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
