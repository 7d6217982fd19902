// Written by tools/coefficients/exp.sollya; do not edit.
// clang-format off
#pragma once

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

constexpr double kExpLog2E = 0x1.71547652b82fep0;
constexpr double kExpLn2 = 0x1.62e42fefa39efp-1;
constexpr double kExpLn2Tail = 0x1.abc9e3b39803fp-56;
constexpr double kExpLn2Short = 0x1.62e42fefap-1;
constexpr double kExpLn2ShortTail = 0x1.cf79abc9e3b3ap-40;

constexpr float kExpLog2EF = 0x1.715476p0f;
constexpr float kExpLn2F = 0x1.62e43p-1f;
constexpr float kExpLn2TailF = -0x1.05c61p-29f;
constexpr float kExpLn2ShortF = 0x1.63p-1f;
constexpr float kExpLn2ShortTailF = -0x1.bd0106p-13f;

constexpr double kExpOverflow = 0x1.62e42fefa39efp9;
constexpr double kExpDenormal = -0x1.6232bdd7abcd2p9;
constexpr double kExpLowest = -0x1.74910d52d3051p9;

constexpr float kExpOverflowF = 0x1.62e42ep6f;
constexpr float kExpDenormalF = -0x1.5d589ep6f;
constexpr float kExpLowestF = -0x1.9fe368p6f;

// e^x from x^2 on, |x| <= 2.16827392578125e-2, error below 2^-56.
constexpr double kExpSeries16[] = {
    0x1p-1, 0x1.555555548ee1cp-3, 0x1.55555554bebcap-5, 0x1.11123b32a6307p-7,
    0x1.6c182626ab616p-10};

// e^x from x^2 on, |x| <= 5.420684814453125e-3, error below 2^-59.
constexpr double kExpSeries64[] = {
    0x1.fffffffffdba9p-2, 0x1.55555555543b6p-3, 0x1.555573d5de153p-5, 0x1.111126bce841ap-7};

// e^x from x^1 on, |x| <= 2.16827392578125e-2, error below 2^-29.
constexpr double kExpShortSeries16[] = {
    0x1.fffffff971a45p-1, 0x1.00022086813ebp-1, 0x1.55583d10f745p-3};

// e^x from x^1 on, |x| <= 5.420684814453125e-3, error below 2^-27.
constexpr double kExpShortSeries64[] = {
    0x1.00003d9b76892p0, 0x1.00002914ab18ep-1};

// e^x - 1 from x^2 on, relatively, |x| <= 2.16827392578125e-2, error below 2^-59.
constexpr double kExpm1Series16[] = {
    0x1.0000000000003p-1, 0x1.5555555555551p-3, 0x1.55555554a04e9p-5, 0x1.11111111521e8p-7,
    0x1.6c1829140c74ap-10, 0x1.a01a6dac205c1p-13};

// e^x - 1 from x^2 on, relatively, |x| <= 5.420684814453125e-3, error below 2^-62.
constexpr double kExpm1Series64[] = {
    0x1p-1, 0x1.5555555554af3p-3, 0x1.55555555553e1p-5, 0x1.1111227f3ff3cp-7,
    0x1.6c16ceddeebcfp-10};

// e^x - 1 from x^1 on, relatively, |x| <= 2.16827392578125e-2, error below 2^-32.
constexpr double kExpm1ShortSeries16[] = {
    0x1.fffffffe05bb2p-1, 0x1.00000001a5e7cp-1, 0x1.5557632a4d4bbp-3, 0x1.555555552965bp-5};

// e^x - 1 from x^1 on, relatively, |x| <= 5.420684814453125e-3, error below 2^-29.
constexpr double kExpm1ShortSeries64[] = {
    0x1.0000000002f77p0, 0x1.00001ecf7e10dp-1, 0x1.555555554a854p-3};

// e^x from x^2 on, |x| <= 4.3365478515625e-2, error below 2^-31.
constexpr float kExpSeries8F[] = {
    0x1.00000ep-1f, 0x1.555c7ap-3f, 0x1.5343p-5f};

// e^x from x^2 on, |x| <= 2.16827392578125e-2, error below 2^-29.
constexpr float kExpSeries16F[] = {
    0x1.00022p-1f, 0x1.555764p-3f};

// e^x from x^2 on, |x| <= 5.420684814453125e-3, error below 2^-37.
constexpr float kExpSeries64F[] = {
    0x1.000022p-1f, 0x1.555576p-3f};

// e^x from x^1 on, |x| <= 2.16827392578125e-2, error below 2^-12.
constexpr float kExpShortSeries16F[] = {
    0x1p0f};

// e^x from x^0 on, |x| <= 0.346923828125, error below 2^-13.
constexpr float kExpNoTableSeriesF[] = {
    0x1p0f, 0x1.fff968p-1f, 0x1.02227p-1f, 0x1.583fep-3f};

// e^x - 1 from x^2 on, relatively, |x| <= 2.16827392578125e-2, error below 2^-31.
constexpr float kExpm1Series16F[] = {
    0x1p-1f, 0x1.555708p-3f, 0x1.555638p-5f};

// e^x - 1 from x^2 on, relatively, |x| <= 5.420684814453125e-3, error below 2^-29.
constexpr float kExpm1Series64F[] = {
    0x1.00001ep-1f, 0x1.55555ep-3f};

// e^x - 1 from x^1 on, relatively, |x| <= 4.3365478515625e-2, error below 2^-12.
constexpr float kExpm1ShortSeries8F[] = {
    0x1.000a44p0f, 0x1.fffffcp-2f};

// e^x - 1 from x^1 on, relatively, |x| <= 2.16827392578125e-2, error below 2^-14.
constexpr float kExpm1ShortSeries16F[] = {
    0x1.000292p0f, 0x1.000002p-1f};

// (sinh r)/r from x on, x = r^2, |x| <= 4.7016143798828125e-4, error below 2^-69.
constexpr double kSinhSeries16[] = {
    0x1.5555555555557p-3, 0x1.11111110b6f85p-7, 0x1.a01b50438650ap-13};

// cosh r from x on, x = r^2, |x| <= 4.7016143798828125e-4, error below 2^-66.
constexpr double kCoshSeries16[] = {
    0x1.0000000000004p-1, 0x1.5555555484b44p-5, 0x1.6c183df93b9acp-10};

// (sinh r)/r from x on, x = r^2, |x| <= 0.120361328125, error below 2^-61.
constexpr double kSinhSeries[] = {
    0x1.5555555555559p-3, 0x1.111111110f648p-7, 0x1.a01a01b00c2f6p-13, 0x1.71ddf7f266a2cp-19,
    0x1.af5f693dfe9d8p-26};

// cosh r from x on, x = r^2, |x| <= 0.120361328125, error below 2^-57.
constexpr double kCoshSeries[] = {
    0x1.000000000000cp-1, 0x1.555555554fe1p-5, 0x1.6c16c186060a9p-10, 0x1.a01995b7d1278p-16,
    0x1.28b0ff3e7f2d1p-22};

// (sinh r)/r from x on, x = r^2, |x| <= 0.120361328125, error below 2^-37.
constexpr double kSinhShortSeries[] = {
    0x1.5555557387a68p-3, 0x1.1110b1b1c0721p-7, 0x1.a17026e3f87c1p-13};

// (sinh r)/r from x on, x = r^2, |x| <= 0.120361328125, error below 2^-26.
constexpr double kSinhShortSeriesInCosh[] = {
    0x1.5554af64cd50ap-3, 0x1.122816835d735p-7};

// cosh r from x on, x = r^2, |x| <= 0.120361328125, error below 2^-34.
constexpr double kCoshShortSeries[] = {
    0x1.00000043432f8p-1, 0x1.55547fd975128p-5, 0x1.6d96e7066c3abp-10};

// (sinh r)/r from x on, x = r^2, |x| <= 4.7016143798828125e-4, error below 2^-31.
constexpr float kSinhSeries16F[] = {
    0x1.555708p-3f};

// cosh r from x on, x = r^2, |x| <= 4.7016143798828125e-4, error below 2^-29.
constexpr float kCoshSeries16F[] = {
    0x1.00022p-1f};

// (sinh r)/r from x on, x = r^2, |x| <= 0.120361328125, error below 2^-34.
constexpr float kSinhSeriesF[] = {
    0x1.555556p-3f, 0x1.110fe2p-7f, 0x1.a28f26p-13f};

// cosh r from x on, x = r^2, |x| <= 0.120361328125, error below 2^-33.
constexpr float kCoshSeriesF[] = {
    0x1p-1f, 0x1.5554e4p-5f, 0x1.6d5164p-10f};

// (sinh r)/r from x on, x = r^2, |x| <= 0.120361328125, error below 2^-15.
constexpr float kSinhShortSeriesF[] = {
    0x1.570956p-3f};

// cosh r from x on, x = r^2, |x| <= 0.120361328125, error below 2^-13.
constexpr float kCoshShortSeriesF[] = {
    0x1.021fbap-1f};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
