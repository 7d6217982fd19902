// Written by tools/coefficients/hyperbolic.sollya; do not edit.
// clang-format off
#pragma once

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

constexpr double kSinhOverflow = 0x1.633ce8fb9f87dp9;
constexpr float kSinhOverflowF = 0x1.65a9f8p6f;

// (tanh r)/r = 1 + x*P(x), x = r^2, |x| <= 3.009033203125e-2, error below 2^-57.
constexpr double kTanhSeries[] = {
    -0x1.55555555554bbp-2, 0x1.11111110e0508p-3, -0x1.ba1ba115f42bap-5, 0x1.664ec958d4c69p-6,
    -0x1.223c51e2397f2p-7, 0x1.c37d1b6621fafp-9};

// (tanh r)/r = 1 + x*P(x), x = r^2, |x| <= 3.009033203125e-2, error below 2^-32.
constexpr double kTanhShortSeries[] = {
    -0x1.55554e2bdbeb1p-2, 0x1.1105c17535fc1p-3, -0x1.afebfb41d38edp-5};

// (tanh r)/r = 1 + x*P(x), x = r^2, |x| <= 3.009033203125e-2, error below 2^-32.
constexpr float kTanhSeriesF[] = {
    -0x1.55554ep-2f, 0x1.1105a2p-3f, -0x1.afe154p-5f};

// (tanh r)/r = 1 + x*P(x), x = r^2, |x| <= 3.009033203125e-2, error below 2^-15.
constexpr float kTanhShortSeriesF[] = {
    -0x1.51f6f6p-2f};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
