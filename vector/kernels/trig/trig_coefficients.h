// Written by tools/coefficients/trig.sollya; do not edit.
// clang-format off
#pragma once

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Quarter and half turns. By FMA a product with the first word, of full width, needs not be
// exact by itself: the difference is. Second words leave room for quotients below 2^24 (2^13).
constexpr double kPerQuarterTurn = 0x1.45f306dc9c883p-1;
constexpr double kPerHalfTurn = 0x1.45f306dc9c883p-2;
constexpr float kPerQuarterTurnF = 0x1.45f306p-1f;
constexpr float kPerHalfTurnF = 0x1.45f306p-2f;
constexpr double kQuarterTurn1 = 0x1.921fb54442d18p0;
constexpr double kQuarterTurn2 = 0x1.1a62633p-54;
constexpr double kQuarterTurn3 = 0x1.45c06e0e68948p-86;
constexpr double kHalfTurn1 = 0x1.921fb54442d18p1;
constexpr double kHalfTurn2 = 0x1.1a62633145c07p-53;
constexpr float kQuarterTurnF1 = 0x1.921fb4p0f;
constexpr float kQuarterTurnF2 = 0x1.444p-24f;
constexpr float kQuarterTurnF3 = 0x1.68c234p-39f;
constexpr float kHalfTurnF1 = 0x1.921fb4p1f;
constexpr float kHalfTurnF2 = 0x1.4442dp-23f;
constexpr float kHalfTurnF3 = 0x1.84698ap-47f;

// Words whose products with quotients below 2^16 (2^24, 2^12) are exact without FMA.
constexpr double kQuarterTurnShort1 = 0x1.921fb5444p0;
constexpr double kQuarterTurnShort2 = 0x1.68c234c4cp-39;
constexpr double kQuarterTurnShort3 = 0x1.98a2e037p-77;
constexpr double kQuarterTurnShort4 = 0x1.cd129024e088ap-115;
constexpr double kHalfTurnShort1 = 0x1.921fb54p1;
constexpr double kHalfTurnShort2 = 0x1.10b4611p-29;
constexpr double kHalfTurnShort3 = 0x1.4c4c662p-58;
constexpr double kHalfTurnShort4 = 0x1.1701b839a252p-87;
constexpr float kHalfTurnShortF1 = 0x1.92p1f;
constexpr float kHalfTurnShortF2 = 0x1.fb4p-11f;
constexpr float kHalfTurnShortF3 = 0x1.444p-23f;
constexpr float kHalfTurnShortF4 = 0x1.68c234p-38f;

// Steps of the table of 32nds of a half turn, quotients below 2^4.
constexpr double kPerTableStep = 0x1.45f306dc9c883p3;
constexpr double kTableStep1 = 0x1.921fb54442d1p-4;
constexpr double kTableStep2 = 0x1.08d313198a2ep-53;

// Radians of a turn of 2^64 units.
constexpr double kTurn1 = 0x1.921fb54442d18p-62;
constexpr double kTurn2 = 0x1.1a62633145c07p-116;

// Half and quarter turns of a radian, in words: products of the first one with floats are exact.
constexpr double kHalfTurns1 = 0x1.45f306dp-2;
constexpr double kHalfTurns2 = 0x1.9391054a7f09dp-31;
constexpr double kQuarterTurns1 = 0x1.45f306dp-1;
constexpr double kQuarterTurns2 = 0x1.9391054a7f09dp-30;

constexpr double kMinusSixth = -0x1.5555555555555p-3;

// sin x from degree 5 in steps of two, |x| <= 0.78564453125, error below 2^-63.
constexpr double kSineSeries[] = {
    0x1.1111111111068p-7, -0x1.a01a019ffe09bp-13, 0x1.71de3a332ea0dp-19, -0x1.ae642b9d9191bp-26,
    0x1.61093d61d3a22p-33, -0x1.9fb84d84c24b1p-41};

// sin x from degree 3 in steps of two, |x| <= 0.78564453125, error below 2^-57.
constexpr double kSineWholeSeries[] = {
    -0x1.5555555555548p-3, 0x1.111111110f76p-7, -0x1.a01a019bf2b76p-13, 0x1.71de355fa3f5bp-19,
    -0x1.ae5e54ff406aap-26, 0x1.5d8e61f0b0f3ap-33};

// cos x from degree 4 in steps of two, |x| <= 0.78564453125, error below 2^-64.
constexpr double kCosineSeries[] = {
    0x1.555555555554cp-5, -0x1.6c16c16c15222p-10, 0x1.a01a019cbfd2ep-16, -0x1.27e4f81315863p-22,
    0x1.1ee9f198154adp-29, -0x1.8fb1562c8c19bp-37};

// sin x from degree 3 in steps of two, |x| <= 4.9102783203125e-2, error below 2^-60.
constexpr double kSineTableSeries[] = {
    -0x1.5555555555456p-3, 0x1.11111107439a1p-7, -0x1.a013280dcbe12p-13};

// cos x from degree 4 in steps of two, |x| <= 4.9102783203125e-2, error below 2^-73.
constexpr double kCosineTableSeries[] = {
    0x1.55555555554a9p-5, -0x1.6c16c161c4d9cp-10, 0x1.a013de22234cbp-16};

// sin x from degree 3 in steps of two, |x| <= 0.78564453125, error below 2^-27.
constexpr double kSineShortSeries[] = {
    -0x1.55554526719f3p-3, 0x1.11073af339872p-7, -0x1.9943dd92c4464p-13};

// cos x from degree 2 in steps of two, |x| <= 0.78564453125, error below 2^-34.
constexpr double kCosineShortSeries[] = {
    -0x1.ffffffd0c5c3fp-2, 0x1.55553e104615p-5, -0x1.6c087e7b635d8p-10, 0x1.99342cb7724d3p-16};

// sin x from degree 3 in steps of two, |x| <= 1.5712890625, error below 2^-27.
constexpr double kHalfTurnSeries4[] = {
    -0x1.55554bc822c9p-3, 0x1.110ed37ce1cfbp-7, -0x1.9f6ffe3ef367ep-13, 0x1.5dbde6dc2d218p-19};

// sin x, 1 at pi/2, from degree 3 in steps of two, |x| <= 1.5712890625, error below 2^-26.
constexpr double kHalfTurnSeriesToOne4[] = {
    -0x1.55554bc822c9p-3, 0x1.110ed37ce1cfbp-7, -0x1.9f6ffe3ef367ep-13, 0x1.5dba5491b4b8p-19};

// sin(pi*x) from degree 1 in steps of two, relatively, |x| <= 0.500244140625, error below 2^-27.
constexpr double kSineOfHalfTurns[] = {
    0x1.921fb52066118p1, -0x1.4abbc16606802p2, 0x1.4668af28cfb7bp1, -0x1.324cc686333dep-1,
    0x1.3dafaaf185082p-4};

// sin(pi/2*x) from degree 1 in steps of two, relatively, |x| <= 0.500244140625, error below 2^-28.
constexpr double kSineOfQuarterTurns[] = {
    0x1.921fb52e68b95p0, -0x1.4abbb8ff3720dp-1, 0x1.465e918410263p-4, -0x1.2d92ed21fe002p-8};

// cos(pi/2*x) from degree 0 in steps of two, relatively, |x| <= 0.500244140625, error below 2^-34.
constexpr double kCosineOfQuarterTurns[] = {
    0x1.ffffffff84ad9p-1, -0x1.3bd3cc6e7a10ap0, 0x1.03c1daabf8043p-2, -0x1.55c4e949a8093p-6,
    0x1.d99f31dbcd5ddp-11};

// N and D of tan x = x*N(x^2)/D(x^2), relatively, |x| <= 0.78564453125, error below 2^-29.
constexpr double kTangentNumerator[] = {
    0x1.00000005abc32p0, -0x1.c71c78fb73d14p-4, 0x1.156b5af701f6cp-10};
constexpr double kTangentDenominator[] = {0x1p0, -0x1.c71c71c71c71cp-2, 0x1.041041041041p-6};

// N and D of tan(pi/2*x) = x*N(x^2)/D(x^2), relatively, |x| <= 0.500244140625, error below 2^-29.
constexpr double kTangentOfQuarterTurnsNumerator[] = {
    0x1.921fb54d2b3dbp0, -0x1.b8fa6f7e366f3p-2, 0x1.4b9fc8bb70e01p-7};
constexpr double kTangentOfQuarterTurnsDenominator[] = {0x1p0, -0x1.18bc4418cafe2p0, 0x1.8bd23188b34f9p-4};

constexpr double kTangentPairNumeratorSecond = -0x1.0c46dca3f1941p-3;

// The rest of kTangentPairNumerator, |x| <= 0.78564453125, error below 2^-61.
constexpr double kTangentPairNumeratorSeries[] = {
    0x1.98bc7307e36c9p-9, -0x1.765d5d2b3104p-17, -0x1.3365ee12f2052p-26};

constexpr double kTangentPairDenominatorSecond = -0x1.db78c3a74e1f6p-2;

// The rest of kTangentPairDenominator, |x| <= 0.78564453125, error below 2^-61.
constexpr double kTangentPairDenominatorSeries[] = {
    0x1.92686eaa148fp-6, -0x1.0c79fce8d64a2p-12};

constexpr float kMinusSixthF = -0x1.555556p-3f;

// sin x from degree 5 in steps of two, |x| <= 0.786376953125, error below 2^-32.
constexpr float kSineSeriesF[] = {
    0x1.111174p-7f, -0x1.a0596ap-13f, 0x1.7c376p-19f};

// sin x from degree 3 in steps of two, |x| <= 0.786376953125, error below 2^-27.
constexpr float kSineWholeSeriesF[] = {
    -0x1.555546p-3f, 0x1.110776p-7f, -0x1.9952dcp-13f};

// cos x from degree 4 in steps of two, |x| <= 0.786376953125, error below 2^-33.
constexpr float kCosineSeriesF[] = {
    0x1.55554ap-5f, -0x1.6c0c2ep-10f, 0x1.99eab2p-16f};

constexpr float kTangentPairFNumeratorSecond = -0x1.c81824p-4f;

// The rest of kTangentPairFNumerator, |x| <= 0.786376953125, error below 2^-30.
constexpr float kTangentPairFNumeratorSeries[] = {
    0x1.19a95p-10f};

constexpr float kTangentPairFDenominatorSecond = -0x1.c75b5ep-2f;

// The rest of kTangentPairFDenominator, |x| <= 0.786376953125, error below 2^-30.
constexpr float kTangentPairFDenominatorSeries[] = {
    0x1.05a3e8p-6f};

// sin x from degree 3 in steps of two, |x| <= 0.78564453125, error below 2^-19.
constexpr float kSineShortSeriesF[] = {
    -0x1.554428p-3f, 0x1.0b7e92p-7f};

// cos x from degree 2 in steps of two, |x| <= 0.78564453125, error below 2^-16.
constexpr float kCosineShortSeriesF[] = {
    -0x1.ffc55cp-2f, 0x1.4baf7p-5f};

// sin x from degree 3 in steps of two, |x| <= 1.5712890625, error below 2^-12.
constexpr float kHalfTurnSeries2F[] = {
    -0x1.543b8ap-3f, 0x1.f5c774p-8f};

// sin x, 1 at pi/2, from degree 3 in steps of two, |x| <= 1.5712890625, error below 2^-12.
constexpr float kHalfTurnSeriesToOne2F[] = {
    -0x1.543b8ap-3f, 0x1.f4d94p-8f};

// N and D of tan x = x*N(x^2)/D(x^2), relatively, |x| <= 0.78564453125, error below 2^-14.
constexpr float kTangentFNumerator[] = {
    0x1.fffa6p-1f, -0x1.0fb3fap-4f};
constexpr float kTangentFDenominator[] = {0x1p0f, -0x1.99999ap-2f};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
