// Written by tools/tables/exp_tables.cpp; do not edit.
// clang-format off
#pragma once

#include "vector/kernels/simd/lookup.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// 2^(j/rows) = head*(1 + tail), the head rounded to nearest and, as an integer, less j/rows
// binades.
constexpr PairTable<double, 16> kExp2Pairs16{{
    {0x1p+0, 0x0p+0},
    {0x1.fb5586cf9890fp-1, 0x1.79aa65d837b6dp-54},
    {0x1.f72b83c7d517bp-1, -0x1.01b15eaa59348p-55},
    {0x1.f387a6e756238p-1, 0x1.68efde3a8a894p-54},
    {0x1.f06fe0a31b715p-1, 0x1.34d754db0abb6p-55},
    {0x1.edea64c123422p-1, 0x1.59f48a72a4c6dp-55},
    {0x1.ebfdad5362a27p-1, 0x1.690cebb7aafbp-56},
    {0x1.eab07dd485429p-1, 0x1.063e1e21c5409p-54},
    {0x1.ea09e667f3bcdp-1, -0x1.3b3efbf5e2228p-54},
    {0x1.ea11473eb0187p-1, -0x1.b32dcb94da51dp-56},
    {0x1.eace5422aa0dbp-1, 0x1.db72fc1f0eab4p-55},
    {0x1.ec49182a3f09p-1, 0x1.1affc2b91ce27p-56},
    {0x1.ee89f995ad3adp-1, 0x1.c1a7792cb3387p-55},
    {0x1.f199bdd85529cp-1, 0x1.36eae30af0cb3p-56},
    {0x1.f5818dcfba487p-1, 0x1.4a385a63d07a7p-56},
    {0x1.fa4afa2a490dap-1, -0x1.ff7128fd391fp-55},
}};
constexpr Table<double, 16> kExp2Heads16 = {{
    0x1p+0, 0x1.fb5586cf9890fp-1, 0x1.f72b83c7d517bp-1, 0x1.f387a6e756238p-1,
    0x1.f06fe0a31b715p-1, 0x1.edea64c123422p-1, 0x1.ebfdad5362a27p-1, 0x1.eab07dd485429p-1,
    0x1.ea09e667f3bcdp-1, 0x1.ea11473eb0187p-1, 0x1.eace5422aa0dbp-1, 0x1.ec49182a3f09p-1,
    0x1.ee89f995ad3adp-1, 0x1.f199bdd85529cp-1, 0x1.f5818dcfba487p-1, 0x1.fa4afa2a490dap-1}};
constexpr PairTable<float, 8> kExp2Pairs8F{{
    {0x1p+0f, 0x0p+0f},
    {0x1.f72b84p-1f, -0x1.9c0c22p-27f},
    {0x1.f06fep-1f, 0x1.125002p-25f},
    {0x1.ebfdaep-1f, -0x1.0a355p-25f},
    {0x1.ea09e6p-1f, 0x1.26055cp-26f},
    {0x1.eace54p-1f, 0x1.67a1cap-28f},
    {0x1.ee89fap-1f, -0x1.f9c304p-27f},
    {0x1.f5818ep-1f, -0x1.a5217cp-28f},
}};
constexpr Table<float, 8> kExp2Heads8F = {{
    0x1p+0f, 0x1.f72b84p-1f, 0x1.f06fep-1f, 0x1.ebfdaep-1f,
    0x1.ea09e6p-1f, 0x1.eace54p-1f, 0x1.ee89fap-1f, 0x1.f5818ep-1f}};
constexpr PairTable<float, 16> kExp2Pairs16F{{
    {0x1p+0f, 0x0p+0f},
    {0x1.fb5586p-1f, 0x1.8d96d4p-25f},
    {0x1.f72b84p-1f, -0x1.9c0c22p-27f},
    {0x1.f387a6p-1f, 0x1.964904p-25f},
    {0x1.f06fep-1f, 0x1.125002p-25f},
    {0x1.edea64p-1f, 0x1.370be4p-25f},
    {0x1.ebfdaep-1f, -0x1.0a355p-25f},
    {0x1.eab07ep-1f, -0x1.00d8acp-27f},
    {0x1.ea09e6p-1f, 0x1.26055cp-26f},
    {0x1.ea1148p-1f, -0x1.05cb44p-25f},
    {0x1.eace54p-1f, 0x1.67a1cap-28f},
    {0x1.ec4918p-1f, 0x1.a3b5e4p-28f},
    {0x1.ee89fap-1f, -0x1.f9c304p-27f},
    {0x1.f199bep-1f, -0x1.6961b4p-28f},
    {0x1.f5818ep-1f, -0x1.a5217cp-28f},
    {0x1.fa4afap-1f, 0x1.61428ep-28f},
}};
constexpr Table<float, 16> kExp2Heads16F = {{
    0x1p+0f, 0x1.fb5586p-1f, 0x1.f72b84p-1f, 0x1.f387a6p-1f,
    0x1.f06fep-1f, 0x1.edea64p-1f, 0x1.ebfdaep-1f, 0x1.eab07ep-1f,
    0x1.ea09e6p-1f, 0x1.ea1148p-1f, 0x1.eace54p-1f, 0x1.ec4918p-1f,
    0x1.ee89fap-1f, 0x1.f199bep-1f, 0x1.f5818ep-1f, 0x1.fa4afap-1f}};

}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
