// Written by tools/coefficients/root.sollya; do not edit.
// clang-format off
#pragma once

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// (1 - x)^(-1/3), |x| <= 0.10302734375, error below 2^-14.
constexpr double kCubeRootRefinement[] = {
    0x1.ffffad869bd2ap-1, 0x1.56c02c32643ffp-2, 0x1.ca6c5c3a7d7f2p-3};

// ((1 - x)^(-1/3) - 1)/x, |x| <= 4.8828125e-4, error below 2^-48.
constexpr double kInverseRootSeries[] = {
    0x1.5555555555545p-2, 0x1.c71c71c71c6eap-3, 0x1.61f9b1d623631p-3, 0x1.26fabf8866d58p-3};

// ((1 - x)^(-1/3) - 1)/x, |x| <= 1.953125e-3, error below 2^-19.
constexpr float kInverseRootSeriesF[] = {
    0x1.55556cp-2f, 0x1.c71cap-3f};

// (1 - x)^(-1/3), |x| <= 0.10302734375, error below 2^-32.
constexpr double kInverseRootSeriesEp[] = {
    0x1.ffffffffe5f57p-1, 0x1.5555563a91ccep-2, 0x1.c71c761dd9cdap-3, 0x1.61f46a09c86a9p-3,
    0x1.26f341e3c6c96p-3, 0x1.0382bfae45027p-3, 0x1.cede494f7c4e2p-4};

// (1 - x)^(-1/3), |x| <= 0.10302734375, error below 2^-14.
constexpr float kInverseRootSeriesEpF[] = {
    0x1.ffffaep-1f, 0x1.56c02cp-2f, 0x1.ca6b6ep-3f};

// ((1 - x)^(-2/3) - 1)/x, |x| <= 4.8828125e-4, error below 2^-47.
constexpr double kInverseSquareSeries[] = {
    0x1.555555555553ap-1, 0x1.1c71c71c71c4fp-1, 0x1.f9adda8677b2dp-2, 0x1.cf8a08e0a1073p-2};

// ((1 - x)^(-2/3) - 1)/x, |x| <= 1.953125e-3, error below 2^-19.
constexpr float kInverseSquareSeriesF[] = {
    0x1.555574p-1f, 0x1.1c71e6p-1f};

// (1 - x)^(-2/3), |x| <= 0.10302734375, error below 2^-30.
constexpr double kInverseSquareSeriesEp[] = {
    0x1.ffffffffceb9p-1, 0x1.5555570797e0cp-1, 0x1.1c71ca034c72fp-1, 0x1.f9a3da242b534p-2,
    0x1.cf7df11cd5da3p-2, 0x1.b7f3d444b2fdbp-2, 0x1.a03a63fc288d8p-2};

// (1 - x)^(-2/3), |x| <= 0.10302734375, error below 2^-12.
constexpr float kInverseSquareSeriesEpF[] = {
    0x1.ffff8ap-1f, 0x1.575c22p-1f, 0x1.1ea45p-1f};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
