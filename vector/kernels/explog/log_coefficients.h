// Written by tools/coefficients/log.sollya; do not edit.
// clang-format off
#pragma once

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// ln(1 + x)/x from x^1 on, |x| <= 3.040313720703125e-2, error below 2^-62.
constexpr double kLnSeriesSixteenths[] = {
    -0x1p-1, 0x1.5555555555502p-2, -0x1.ffffffffffeb8p-3, 0x1.9999999b45d3ap-3,
    -0x1.55555557cd1fep-3, 0x1.249233c7ee4cap-3, -0x1.ffffcc81f56a7p-4, 0x1.c7f35f94ec241p-4,
    -0x1.9a77f0faa1ce1p-4};

// log10(1 + x)/x from x^1 on, |x| <= 3.040313720703125e-2, error below 2^-62.
constexpr double kLog10SeriesSixteenths[] = {
    -0x1.bcb7b1526e50ep-3, 0x1.287a7636f4316p-3, -0x1.bcb7b1526f431p-4, 0x1.63c627769a22fp-4,
    -0x1.287a762c22792p-4, 0x1.fc3f80ea316ecp-5, -0x1.bcb8070533acap-5, 0x1.8c08c0c19fec7p-5,
    -0x1.63a518ac823bcp-5};

// ln(1 + x)/x from x^1 on, |x| <= 3.040313720703125e-2, error below 2^-56.
constexpr double kLnSeriesLaSixteenths[] = {
    -0x1.fffffffffffd2p-2, 0x1.55555555554bbp-2, -0x1.00000000a296bp-2, 0x1.9999999c19ebdp-3,
    -0x1.555541fb4f733p-3, 0x1.24922dfaf2aa6p-3, -0x1.006d191b8c0d2p-3, 0x1.c80c3cfad2bedp-4};

// log10(1 + x)/x from x^1 on, |x| <= 3.040313720703125e-2, error below 2^-56.
constexpr double kLog10SeriesLaSixteenths[] = {
    -0x1.bcb7b1526e4e7p-3, 0x1.287a7636f42d9p-3, -0x1.bcb7b153865cep-4, 0x1.63c627775084cp-4,
    -0x1.287a657950f5p-4, 0x1.fc3f76eedabfep-5, -0x1.bd74eb065b99dp-5, 0x1.8c1e27a41d20ep-5};

// ln(1 + x)/x from x^0 on, |x| <= 3.040313720703125e-2, error below 2^-31.
constexpr double kLnSeriesEpSixteenths[] = {
    0x1.0000000007c28p0, -0x1.fffffd030bb75p-2, 0x1.55554eac1135dp-2, -0x1.0032821cdea58p-2,
    0x1.9a12d8bf81c14p-3};

// log10(1 + x)/x from x^0 on, |x| <= 3.040313720703125e-2, error below 2^-31.
constexpr double kLog10SeriesEpSixteenths[] = {
    0x1.bcb7b1527bcbcp-2, -0x1.bcb7aeba0007ap-3, 0x1.287a706dc8b9ep-3, -0x1.bd0f6f3a7f359p-4,
    0x1.642f77aea0eap-4};

// ln(1 + x)/x from x^1 on, |x| <= 3.040313720703125e-2, error below 2^-31.
constexpr float kLnSeriesSixteenthsF[] = {
    -0x1.fffffep-2f, 0x1.55555p-2f, -0x1.002d8p-2f, 0x1.9a0beep-3f};

// ln(1 + x)/x from x^1 on, |x| <= 3.040313720703125e-2, error below 2^-25.
constexpr float kLnSeriesLaSixteenthsF[] = {
    -0x1.fffffcp-2f, 0x1.557d8p-2f, -0x1.003958p-2f};

// ln(1 + x)/x from x^0 on, |x| <= 3.040313720703125e-2, error below 2^-12.
constexpr float kLnSeriesEpSixteenthsF[] = {
    0x1.000a1ap0f, -0x1.001e4cp-1f};

// ln(1 + x)/x from x^1 on, |x| <= 3.90625e-3, error below 2^-65.
constexpr double kLnSeries256[] = {
    -0x1p-1, 0x1.5555555555446p-2, -0x1.ffffffffe275dp-3, 0x1.99999a6644dfep-3,
    -0x1.555607b3f1c75p-3, 0x1.237eadc1b4d01p-3};

// log10(1 + x)/x from x^1 on, |x| <= 3.90625e-3, error below 2^-65.
constexpr double kLog10Series256[] = {
    -0x1.bcb7b1526e50ep-3, 0x1.287a7636f4249p-3, -0x1.bcb7b1527ac88p-4, 0x1.63c62847521c2p-4,
    -0x1.287addc0c8d59p-4, 0x1.fa02e455c2b7fp-5};

// ln(1 + x)/x from x^0 on, |x| <= 3.90625e-3, error below 2^-28.
constexpr double kLnSeriesEp256[] = {
    0x1.00000004e4d2bp0, -0x1.00003d9e7e7ap-1, 0x1.54e57b62c7b36p-2};

// log10(1 + x)/x from x^0 on, |x| <= 3.90625e-3, error below 2^-28.
constexpr double kLog10SeriesEp256[] = {
    0x1.bcb7b15aeeb14p-2, -0x1.bcb81c5d88a98p-3, 0x1.28194f158496cp-3};

// ln(1 + x)/x from x^1 on, |x| <= 0.125, error below 2^-32.
constexpr float kLnSeries8F[] = {
    -0x1p-1f, 0x1.555546p-2f, -0x1.000074p-2f, 0x1.99e074p-3f,
    -0x1.5568b8p-3f, 0x1.f4ee4ep-4f};

// log10(1 + x)/x from x^1 on, |x| <= 0.125, error below 2^-31.
constexpr float kLog10Series8F[] = {
    -0x1.bcb7b2p-3f, 0x1.287a66p-3f, -0x1.bcb58cp-4f, 0x1.640098p-4f,
    -0x1.2a2b42p-4f, 0x1.c5124p-5f};

// ln(1 + x)/x from x^0 on, |x| <= 0.125, error below 2^-14.
constexpr float kLnSeriesEp8F[] = {
    0x1.000282p0f, -0x1.007aaep-1f, 0x1.4079c6p-2f};

// log10(1 + x)/x from x^0 on, |x| <= 0.125, error below 2^-14.
constexpr float kLog10SeriesEp8F[] = {
    0x1.bcbc0cp-2f, -0x1.bd8cd8p-3f, 0x1.165d4ep-3f};

// ln(1 + x)/x from x^1 on, |x| <= 6.25e-2, error below 2^-32.
constexpr float kLnSeries16F[] = {
    -0x1p-1f, 0x1.55555p-2f, -0x1.00032ep-2f, 0x1.9a026p-3f,
    -0x1.43c2fap-3f};

// log10(1 + x)/x from x^1 on, |x| <= 6.25e-2, error below 2^-31.
constexpr float kLog10Series16F[] = {
    -0x1.bcb7bp-3f, 0x1.287a76p-3f, -0x1.bcc702p-4f, 0x1.642542p-4f,
    -0x1.129c76p-4f};

// ln(1 + x)/x from x^0 on, |x| <= 6.25e-2, error below 2^-11.
constexpr float kLnSeriesEp16F[] = {
    0x1.00177ap0f, -0x1.f818dap-2f};

// log10(1 + x)/x from x^0 on, |x| <= 6.25e-2, error below 2^-11.
constexpr float kLog10SeriesEp16F[] = {
    0x1.bce07cp-2f, -0x1.b5da8ep-3f};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
