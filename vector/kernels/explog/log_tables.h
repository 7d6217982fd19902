// Written by tools/tables/log_tables.cpp; do not edit.
// clang-format off
#pragma once

#include "vector/kernels/simd/lookup.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// Logarithms of 2 in two words: hi a multiple of 2^-42 (float: 2^-17), lo the rest to 28 bits;
// and rounded to float once.
constexpr double kLnOf2[2] = {0x1.62e42fefa38p-1, 0x1.ef35794p-45};
constexpr float kLnOf2F[2] = {0x1.62e4p-1f, 0x1.7f7d1cp-20f};
constexpr float kLnOf2RoundedF = 0x1.62e43p-1f;
constexpr double kLog10Of2[2] = {0x1.34413509f8p-2, -0x1.80433b8p-44};
constexpr float kLog10Of2F[2] = {0x1.3442p-2f, -0x1.95ec1p-19f};
constexpr float kLog10Of2RoundedF = 0x1.344136p-2f;

// log10(e) in two words: rounded, and the rest.
constexpr double kLog10OfE[2] = {0x1.bcb7b1526e50ep-2, 0x1.95355baaafad3p-57};
constexpr float kLog10OfEF[2] = {0x1.bcb7b2p-2f, -0x1.5b235ep-27f};

// -log(1 + j/16) in two words as above.
constexpr PairTable<double, 16> kLnSixteenths{{
    {0x0p+0, 0x0p+0},
    {-0x1.f0a30c0118p-5, 0x1.d599e84p-45},
    {-0x1.e27076e2bp-4, 0x1.a342c2ap-45},
    {-0x1.5ff3070a7ap-3, 0x1.8586f18p-44},
    {-0x1.c8ff7c79aap-3, 0x1.7794f68p-45},
    {-0x1.1675cababap-2, -0x1.8380e74p-44},
    {-0x1.4618bc21c6p-2, 0x1.3d82f48p-46},
    {-0x1.739d7f6bbdp-2, -0x1.a738932p-52},
    {-0x1.9f323ecbfap-2, 0x1.ed03526p-44},
    {-0x1.c8ff7c79aap-2, 0x1.7794f68p-44},
    {-0x1.f128f5fafp-2, -0x1.bb2cd72p-44},
    {-0x1.0be72e42528p-1, -0x1.415b4c4p-44},
    {-0x1.1e85f5e704p-1, -0x1.a07bd8cp-46},
    {-0x1.307d7334f1p-1, -0x1.7c3f6b2p-46},
    {-0x1.41d8fe8467p-1, -0x1.5732326p-44},
    {-0x1.52a2d265bc8p-1, 0x1.2a88c42p-44},
}};
constexpr PairTable<double, 16> kLog10Sixteenths{{
    {0x0p+0, 0x0p+0},
    {-0x1.af5f92b01p-6, 0x1.9f05922p-46},
    {-0x1.a30a9d60ap-5, 0x1.0163d7ep-45},
    {-0x1.31b3055c48p-4, 0x1.dcffc98p-45},
    {-0x1.8cf1838864p-4, -0x1.0193652p-45},
    {-0x1.e3bc1ab0ep-4, -0x1.9fe3d56p-44},
    {-0x1.1b3e71ec94p-3, -0x1.ef57776p-44},
    {-0x1.42c7e7fe4p-3, 0x1.ff1d22ap-46},
    {-0x1.68a288b60cp-3, 0x1.007a93cp-44},
    {-0x1.8cf1838864p-3, -0x1.0193652p-44},
    {-0x1.afd3e3a23cp-3, 0x1.2ffe158p-44},
    {-0x1.d165300e34p-3, 0x1.812c7fap-44},
    {-0x1.f1bdeeb654p-3, -0x1.201b2dap-44},
    {-0x1.087a0832fap-2, -0x1.eb13e6ap-44},
    {-0x1.178da53d1fp-2, 0x1.fec384cp-46},
    {-0x1.2622b0ee3bp-2, -0x1.e73b8bp-44},
}};
constexpr PairTable<float, 16> kLnSixteenthsF{{
    {0x0p+0f, 0x0p+0f},
    {-0x1.f0ap-5f, -0x1.86008cp-20f},
    {-0x1.e27p-4f, -0x1.db8abcp-22f},
    {-0x1.5ff4p-3f, 0x1.f1eb0ep-20f},
    {-0x1.c9p-3f, 0x1.070cacp-20f},
    {-0x1.1676p-2f, 0x1.aa2a2cp-21f},
    {-0x1.4618p-2f, -0x1.78438cp-19f},
    {-0x1.739ep-2f, 0x1.012886p-19f},
    {-0x1.9f32p-2f, -0x1.f65fccp-21f},
    {-0x1.c9p-2f, 0x1.070cacp-19f},
    {-0x1.f128p-2f, -0x1.ebf5ep-19f},
    {-0x1.0be7p-1f, -0x1.721296p-20f},
    {-0x1.1e86p-1f, 0x1.431f7ep-22f},
    {-0x1.307dp-1f, -0x1.ccd3c4p-19f},
    {-0x1.41d9p-1f, 0x1.7b98d6p-25f},
    {-0x1.52a3p-1f, 0x1.6cd21ep-20f},
}};
constexpr Table<float, 16> kLnRoundedSixteenthsF = {{
    0x0p+0f, -0x1.f0a30cp-5f, -0x1.e27076p-4f, -0x1.5ff308p-3f,
    -0x1.c8ff7cp-3f, -0x1.1675cap-2f, -0x1.4618bcp-2f, -0x1.739d8p-2f,
    -0x1.9f323ep-2f, -0x1.c8ff7cp-2f, -0x1.f128f6p-2f, -0x1.0be72ep-1f,
    -0x1.1e85f6p-1f, -0x1.307d74p-1f, -0x1.41d8fep-1f, -0x1.52a2d2p-1f}};

// For factors: lo words in full, logarithms rounded once to double.
constexpr double kLnOf2Full[2] = {0x1.62e42fefa38p-1, 0x1.ef35793c7673p-45};
constexpr double kLnOf2Rounded = 0x1.62e42fefa39efp-1;
constexpr Table<double, 16> kLnRoundedSixteenths = {{
    0x0p+0, -0x1.f0a30c01162a6p-5, -0x1.e27076e2af2e6p-4, -0x1.5ff3070a793d4p-3,
    -0x1.c8ff7c79a9a22p-3, -0x1.1675cababa60ep-2, -0x1.4618bc21c5ec2p-2, -0x1.739d7f6bbd007p-2,
    -0x1.9f323ecbf984cp-2, -0x1.c8ff7c79a9a22p-2, -0x1.f128f5faf06edp-2, -0x1.0be72e4252a83p-1,
    -0x1.1e85f5e7040dp-1, -0x1.307d7334f10bep-1, -0x1.41d8fe84672aep-1, -0x1.52a2d265bc5abp-1}};
constexpr PairTable<double, 32> kLnThirtySeconds{{
    {0x0p+0, 0x0p+0},
    {-0x1.f829b0e78p-6, -0x1.980267c7e09e4p-45},
    {-0x1.f0a30c0118p-5, 0x1.d599e83368e91p-45},
    {-0x1.6f0d28ae58p-4, 0x1.4b4641b664613p-44},
    {-0x1.e27076e2bp-4, 0x1.a342c2af0003cp-45},
    {-0x1.29552f82p-3, 0x1.5b967f4471dfcp-44},
    {-0x1.5ff3070a7ap-3, 0x1.8586f183bebf2p-44},
    {-0x1.9525a9cf46p-3, 0x1.297137d9f158fp-44},
    {-0x1.c8ff7c79aap-3, 0x1.7794f689f8434p-45},
    {-0x1.fb9186d5e4p-3, 0x1.d572aab993c87p-47},
    {-0x1.1675cababap-2, -0x1.8380e731f55c4p-44},
    {-0x1.2e8e2bae12p-2, 0x1.67b1e99b72bd8p-45},
    {-0x1.4618bc21c6p-2, 0x1.3d82f484c84ccp-46},
    {-0x1.5d1bdbf581p-2, 0x1.8d6bdc9c7c238p-44},
    {-0x1.739d7f6bbdp-2, -0x1.a7389314feb5p-52},
    {-0x1.89a3386c14p-2, -0x1.2d5ad38c40882p-45},
    {-0x1.9f323ecbfap-2, 0x1.ed03525ca2643p-44},
    {-0x1.b44f77bcc9p-2, 0x1.3ae68224aa2cep-47},
    {-0x1.c8ff7c79aap-2, 0x1.7794f689f8434p-44},
    {-0x1.dd46a04c1cp-2, -0x1.282fb989a9274p-44},
    {-0x1.f128f5fafp-2, -0x1.bb2cd720ec44cp-44},
    {-0x1.02552a5a5dp-1, -0x1.fd8d38d2bafddp-46},
    {-0x1.0be72e42528p-1, -0x1.415b4c4bdd99fp-44},
    {-0x1.154c3d2f4d8p-1, 0x1.0b2b38662e34dp-44},
    {-0x1.1e85f5e704p-1, -0x1.a07bd8b34be7cp-46},
    {-0x1.2795e1289bp-1, -0x1.1aeb783f3db97p-45},
    {-0x1.307d7334f1p-1, -0x1.7c3f6b2143eadp-46},
    {-0x1.393e0d35628p-1, -0x1.0cd4e221301b7p-44},
    {-0x1.41d8fe8467p-1, -0x1.5732325e617a3p-44},
    {-0x1.4a4f85db04p-1, 0x1.44fdd840b8591p-45},
    {-0x1.52a2d265bc8p-1, 0x1.2a88c41ba8752p-44},
    {-0x1.5ad404c35ap-1, 0x1.a609acaab41fcp-46},
}};

// Tables of rows of [1, 2): c near 1/m for m in a row, and -log(c) in two words as above;
// e = c*m - 1.

// 16 rows: e in [-0.03711, 0.06250).
constexpr Table<float, 16> kReciprocals16F = {{
    0x1p+0f, 0x1.dp-1f, 0x1.cp-1f, 0x1.ap-1f, 0x1.9p-1f, 0x1.8p-1f, 0x1.7p-1f, 0x1.6p-1f,
    0x1.5p-1f, 0x1.4p-1f, 0x1.38p-1f, 0x1.28p-1f, 0x1.2p-1f, 0x1.18p-1f, 0x1.1p-1f, 0x1p-1f}};
constexpr PairTable<float, 16> kLnRows16F{{
    {0x0p+0f, 0x0p+0f},
    {0x1.9338p-4f, -0x1.0d1536p-19f},
    {0x1.1178p-3f, 0x1.d044fcp-20f},
    {0x1.a94p-3f, -0x1.2c3752p-19f},
    {0x1.f99p-3f, 0x1.c6cb3cp-19f},
    {0x1.2696p-2f, 0x1.089a6ep-21f},
    {0x1.522ap-2f, 0x1.c0e714p-19f},
    {0x1.7fbp-2f, -0x1.7109fap-20f},
    {0x1.af52p-2f, 0x1.2a491ap-19f},
    {0x1.e148p-2f, 0x1.4344e4p-19f},
    {0x1.fb36p-2f, -0x1.d4216ep-20f},
    {0x1.188fp-1f, -0x1.bf0dc4p-21f},
    {0x1.2696p-1f, 0x1.089a6ep-20f},
    {0x1.3503p-1f, -0x1.d4989cp-19f},
    {0x1.43dap-1f, -0x1.a0db88p-26f},
    {0x1.62e4p-1f, 0x1.7f7d1cp-20f},
}};
constexpr PairTable<float, 16> kLog10Rows16F{{
    {0x0p+0f, 0x0p+0f},
    {0x1.5e4p-5f, -0x1.a65206p-19f},
    {0x1.db1p-5f, 0x1.ed766ap-21f},
    {0x1.716p-4f, -0x1.798e4cp-19f},
    {0x1.b72p-4f, 0x1.cd1716p-20f},
    {0x1.ffcp-4f, -0x1.ea21c4p-23f},
    {0x1.25bcp-3f, -0x1.7dea5p-19f},
    {0x1.4d44p-3f, -0x1.f6296ep-25f},
    {0x1.76a4p-3f, 0x1.72edfap-21f},
    {0x1.a208p-3f, 0x1.a84fbcp-19f},
    {0x1.b89p-3f, -0x1.983068p-19f},
    {0x1.e76p-3f, 0x1.24046cp-19f},
    {0x1.ffcp-3f, -0x1.ea21c4p-22f},
    {0x1.0c68p-2f, -0x1.dc52a8p-19f},
    {0x1.194cp-2f, -0x1.884212p-19f},
    {0x1.3442p-2f, -0x1.95ec1p-19f},
}};
constexpr Table<float, 16> kLnRounded16F = {{
    0x0p+0f, 0x1.9335e6p-4f, 0x1.1178e8p-3f, 0x1.a93ed4p-3f,
    0x1.f991c6p-3f, 0x1.269622p-2f, 0x1.522aep-2f, 0x1.7fafa4p-2f,
    0x1.af5296p-2f, 0x1.e148a2p-2f, 0x1.fb358ap-2f, 0x1.188ee4p-1f,
    0x1.269622p-1f, 0x1.35028ap-1f, 0x1.43dap-1f, 0x1.62e43p-1f}};
constexpr Table<float, 16> kLog10Rounded16F = {{
    0x0p+0f, 0x1.5e3966p-5f, 0x1.db11eep-5f, 0x1.715d0cp-4f,
    0x1.b721cep-4f, 0x1.ffbfc2p-4f, 0x1.25ba82p-3f, 0x1.4d43f8p-3f,
    0x1.76a45cp-3f, 0x1.a209a8p-3f, 0x1.b88e68p-3f, 0x1.e76124p-3f,
    0x1.ffbfc2p-3f, 0x1.0c6712p-2f, 0x1.194b3cp-2f, 0x1.344136p-2f}};

// 8 rows: e in [-0.06250, 0.12500).
constexpr Table<float, 8> kReciprocals8F = {{
    0x1p+0f, 0x1.bp-1f, 0x1.8p-1f, 0x1.6p-1f, 0x1.4p-1f, 0x1.3p-1f, 0x1.2p-1f, 0x1p-1f}};
constexpr PairTable<float, 8> kLnRows8F{{
    {0x0p+0f, 0x0p+0f},
    {0x1.5bf4p-3f, 0x1.ad50f6p-25f},
    {0x1.2696p-2f, 0x1.089a6ep-21f},
    {0x1.7fbp-2f, -0x1.7109fap-20f},
    {0x1.e148p-2f, 0x1.4344e4p-19f},
    {0x1.0ae7p-1f, 0x1.b8b416p-19f},
    {0x1.2696p-1f, 0x1.089a6ep-20f},
    {0x1.62e4p-1f, 0x1.7f7d1cp-20f},
}};
constexpr PairTable<float, 8> kLog10Rows8F{{
    {0x0p+0f, 0x0p+0f},
    {0x1.2e38p-4f, 0x1.3a05bcp-19f},
    {0x1.ffcp-4f, -0x1.ea21c4p-23f},
    {0x1.4d44p-3f, -0x1.f6296ep-25f},
    {0x1.a208p-3f, 0x1.a84fbcp-19f},
    {0x1.cfa8p-3f, 0x1.cecb98p-20f},
    {0x1.ffcp-3f, -0x1.ea21c4p-22f},
    {0x1.3442p-2f, -0x1.95ec1p-19f},
}};
constexpr Table<float, 8> kLnRounded8F = {{
    0x0p+0f, 0x1.5bf406p-3f, 0x1.269622p-2f, 0x1.7fafa4p-2f,
    0x1.e148a2p-2f, 0x1.0ae76ep-1f, 0x1.269622p-1f, 0x1.62e43p-1f}};
constexpr Table<float, 8> kLog10Rounded8F = {{
    0x0p+0f, 0x1.2e3a74p-4f, 0x1.ffbfc2p-4f, 0x1.4d43f8p-3f,
    0x1.a209a8p-3f, 0x1.cfa8e8p-3f, 0x1.ffbfc2p-3f, 0x1.344136p-2f}};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
