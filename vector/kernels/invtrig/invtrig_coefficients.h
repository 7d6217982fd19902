// Written by tools/coefficients/invtrig.sollya; do not edit.
// clang-format off
#pragma once

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

constexpr double kHalfPi = 0x1.921fb54442d18p0;
constexpr double kHalfPiTail = 0x1.1a62633145c07p-54;
constexpr double kPi = 0x1.921fb54442d18p1;
constexpr double kPiTail = 0x1.1a62633145c07p-53;
constexpr double kAtanHalf = 0x1.dac670561bb5p-2;
constexpr double kAtanHalfTail = -0x1.2ea406ee84d0fp-55;
constexpr double kHalfPiRounded = 0x1.921fb54442d18p0;
constexpr double kPiRounded = 0x1.921fb54442d18p1;

constexpr float kHalfPiF = 0x1.921fb4p0f;
constexpr float kHalfPiFTail = 0x1.4442d2p-24f;
constexpr float kPiF = 0x1.921fb6p1f;
constexpr float kPiFTail = -0x1.777a5cp-24f;
constexpr float kAtanHalfF = 0x1.dac67p-2f;
constexpr float kAtanHalfFTail = 0x1.586ed4p-28f;
constexpr float kHalfPiRoundedF = 0x1.921fb6p0f;
constexpr float kPiRoundedF = 0x1.921fb6p1f;

// (atan(t)/t - 1)/x, |x| <= 0.111114501953125, error below 2^-61.
constexpr double kAtanSeries[] = {
    -0x1.555555555554bp-2, 0x1.9999999997691p-3, -0x1.2492492346aaep-3, 0x1.c71c7103f0ffdp-4,
    -0x1.745cf624ea404p-4, 0x1.3b1032cbd7c9fp-4, -0x1.10d45e45d91ccp-4, 0x1.dc8bf4cbd9f1cp-5,
    -0x1.89211197f5bbbp-5, 0x1.c991ccbf30dfcp-6};

// (atan(t)/t - 1)/x, |x| <= 0.111114501953125, error below 2^-33.
constexpr float kAtanSeriesF[] = {
    -0x1.555554p-2f, 0x1.99982p-3f, -0x1.245138p-3f, 0x1.bd63f4p-4f,
    -0x1.1e4346p-4f};

// (atan(t)/t - 1)/x, |x| <= 1, error below 2^-31.
constexpr double kAtanSeriesSingle[] = {
    -0x1.55555104052bap-2, 0x1.9997e0308d34p-3, -0x1.2473738017cbap-3, 0x1.c4f1e169c03fp-4,
    -0x1.68e6fe58e01afp-4, 0x1.1422c799e0665p-4, -0x1.6e19a18609c8ap-5, 0x1.714b1bbe03c5bp-6,
    -0x1.df970acf1ca0fp-8, 0x1.23f92f268c556p-10};

// (atan(t)/t - 1)/x, |x| <= 1, error below 2^-28.
constexpr double kAtanSeriesEp[] = {
    -0x1.55553e5a3f253p-2, 0x1.9991fd25513b1p-3, -0x1.2421b528ce072p-3, 0x1.c099fe71f6658p-4,
    -0x1.583491fb071d8p-4, 0x1.dac9e8100570dp-5, -0x1.fed168af75bebp-6, 0x1.65a6659a0d9c7p-7,
    -0x1.d62fffce8d545p-10};

// atan(t)/t, |x| <= 1, error below 2^-15.
constexpr float kAtanSeriesEpF[] = {
    0x1.fffc12p-1f, -0x1.53a956p-2f, 0x1.7b5204p-3f, -0x1.78871ep-4f,
    0x1.86f8d6p-6f};

// (asin(t)/t - 1)/x, |x| <= 0.25, error below 2^-59.
constexpr double kAsinSeries[] = {
    0x1.5555555555577p-3, 0x1.333333332e133p-4, 0x1.6db6db721247bp-5, 0x1.f1c71a95002fbp-6,
    0x1.6e8bdedebf9dfp-6, 0x1.1c49f077d5bc7p-6, 0x1.ca1f8af1f0a3p-7, 0x1.75859dad05ec1p-7,
    0x1.613c1e6ed62ccp-7, 0x1.e5fbe88e19b6dp-9, 0x1.639a894e13f3ep-6, -0x1.57fad0de8e68fp-6,
    0x1.0b45e9f72248dp-5};

// (asin(t)/t - 1)/x, |x| <= 0.25, error below 2^-31.
constexpr float kAsinSeriesF[] = {
    0x1.55554cp-3f, 0x1.33389ep-4f, 0x1.6caab6p-5f, 0x1.04af34p-5f,
    0x1.d7924cp-7f, 0x1.33d432p-5f};

// (asin(t)/t - 1)/x, |x| <= 0.25, error below 2^-31.
constexpr double kAsinSeriesSingle[] = {
    0x1.55554c5fb0496p-3, 0x1.33387c9d34ca1p-4, 0x1.6caed2156a44ep-5, 0x1.0491a13d0d9d2p-5,
    0x1.d91fa336d9245p-7, 0x1.3355c1d8575cbp-5};

// (asin(t)/t - 1)/x, |x| <= 0.25, error below 2^-27.
constexpr double kAsinSeriesEp[] = {
    0x1.5555c88339386p-3, 0x1.3301e46a1775fp-4, 0x1.747e4a13da347p-5, 0x1.8c283d28c3c54p-6,
    0x1.596d27da32db1p-5};

// asin(t)/t, |x| <= 0.25, error below 2^-14.
constexpr float kAsinSeriesEpF[] = {
    0x1.00020ap0f, 0x1.50f944p-3f, 0x1.892de2p-4f};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
