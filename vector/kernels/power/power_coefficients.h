// Written by tools/coefficients/power.sollya; do not edit.
// clang-format off
#pragma once

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// ln(1 + x)/x from x^1 on, |x| <= 1.55029296875e-2, error below 2^-72.
constexpr double kLnPairSeriesThirtySeconds[] = {
    -0x1p-1, 0x1.5555555555555p-2, -0x1.ffffffffffffep-3, 0x1.99999999a0a0dp-3,
    -0x1.5555555562c51p-3, 0x1.249247bfa833cp-3, -0x1.fffffc184117bp-4, 0x1.c753844afe6e1p-4,
    -0x1.99d68af4cb06p-4};

// ln(1 + x)/x from x^1 on, |x| <= 1.55029296875e-2, error below 2^-64.
constexpr double kLnPairSeriesLaThirtySeconds[] = {
    -0x1p-1, 0x1.5555555555557p-2, -0x1.0000000001875p-2, 0x1.999999998c14fp-3,
    -0x1.5555545223e44p-3, 0x1.249249c0107b9p-3, -0x1.0019d491e2c78p-3, 0x1.c7345102c1129p-4};

// ln(1 + x)/x from x^1 on, |x| <= 7.8125e-3, error below 2^-67.
constexpr double kLnPairSeries128[] = {
    -0x1p-1, 0x1.555555555555dp-2, -0x1.fffffffffb4dep-3, 0x1.9999999695916p-3,
    -0x1.55555b6e975ccp-3, 0x1.249541d7540c6p-3, -0x1.fc4c01c859719p-4};

// ln(1 + x)/x from x^0 on, |x| <= 3.040313720703125e-2, error below 2^-38.
constexpr double kLnFactorSeriesSixteenths[] = {
    0x1.0000000003e11p0, -0x1.0000000028bedp-1, 0x1.555550b8f28c7p-2, -0x1.ffffeef5cef9ep-3,
    0x1.9a01839d2d7ffp-3, -0x1.55ce97fb7e787p-3};

// ln(1 + x)/x from x^0 on, |x| <= 6.25e-2, error below 2^-39.
constexpr double kLnFactorSeries16[] = {
    0x1.00000000017c1p0, -0x1.ffffffff609a4p-2, 0x1.5555545e73e6cp-2, -0x1.0000030645194p-2,
    0x1.99a5f63b1cd11p-3, -0x1.55a17edfce25cp-3, 0x1.100a83bfcba1cp-3};

// ln(1 + x)/x from x^0 on, |x| <= 7.8125e-3, error below 2^-42.
constexpr double kLnFactorSeries128[] = {
    0x1.ffffffffffc6p-1, -0x1.fffffffec4abep-2, 0x1.555557406944ep-2, -0x1.0001ea05f0bc1p-2,
    0x1.97bb538871f38p-3};

// ln(1 + x)/x from x^0 on, |x| <= 3.040313720703125e-2, error below 2^-24.
constexpr float kLnFactorSeriesSixteenthsF[] = {
    0x1p0f, -0x1.fffffap-2f, 0x1.557dbcp-2f, -0x1.0042f6p-2f};

// ln(1 + x)/x from x^0 on, |x| <= 0.125, error below 2^-28.
constexpr float kLnFactorSeries8F[] = {
    0x1p0f, -0x1.fffff6p-2f, 0x1.5555aap-2f, -0x1.002078p-2f,
    0x1.99ca86p-3f, -0x1.286b72p-3f};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
