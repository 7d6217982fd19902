// Written by tools/tables/trig_tables.cpp; do not edit.
// clang-format off
#pragma once

#include "vector/kernels/simd/simd.h"

namespace orba::ORBA_CLASS_NAMESPACE {
namespace {

// floor(2^1160/(2 pi)), the least significant word first. Read at a byte, its words are a window
// of the expansion of 1/(2 pi): zeros stand before the point.
alignas(64) constexpr uint64_t kReciprocalTurn[20] = {
    0xfed7ec47e3574215,
    0x41ce7de294a4ba9a,
    0x49eeb1faf97c5ecf,
    0xd18fd9a797fa8b5d,
    0x4d9fb3c9f2c26dd3,
    0xcbc462d6829b47db,
    0xfe25fff7816603fb,
    0x2117e2ef7e4a0ec7,
    0x64758e60d4ce7d27,
    0x671c09ad17df904e,
    0x208d7d4baed1213a,
    0x877ac72c4a69cfba,
    0x924bba827464873f,
    0xc91b8e909374b801,
    0x9458eaf7aef1586d,
    0xd8a5664f10e4107f,
    0x09d5f47d4d377036,
    0xbe60db9391054a7f,
    0x0000000000000028,
    0x0000000000000000,
};

// Sine and cosine, head and tail each, of the multiples of pi/32 from -8 on.
alignas(64) constexpr double kSineCosineRows[17][4] = {
    {-0x1.6a09e667f3bcdp-1, 0x1.bdd3413b26456p-55, 0x1.6a09e667f3bcdp-1, -0x1.bdd3413b26456p-55},
    {-0x1.44cf325091dd6p-1, -0x1.8076a2cfdc6b3p-57, 0x1.8bc806b151741p-1, -0x1.2c5e12ed1336dp-55},
    {-0x1.1c73b39ae68c8p-1, -0x1.b25dd267f66p-55, 0x1.a9b66290ea1a3p-1, 0x1.9f630e8b6dac8p-60},
    {-0x1.e2b5d3806f63bp-2, -0x1.e0d891d3c6841p-58, 0x1.c38b2f180bdb1p-1, -0x1.6e0b1757c8d07p-56},
    {-0x1.87de2a6aea963p-2, 0x1.72cedd3d5a61p-57, 0x1.d906bcf328d46p-1, 0x1.457e610231ac2p-56},
    {-0x1.294062ed59f06p-2, 0x1.5d28da2c4612dp-56, 0x1.e9f4156c62ddap-1, 0x1.760b1e2e3f81ep-55},
    {-0x1.8f8b83c69a60bp-3, 0x1.26d19b9ff8d82p-57, 0x1.f6297cff75cbp-1, 0x1.562172a361fd3p-56},
    {-0x1.917a6bc29b42cp-4, 0x1.e2718d26ed688p-60, 0x1.fd88da3d12526p-1, -0x1.87df6378811c7p-55},
    {0x0p+0, 0x0p+0, 0x1p+0, 0x0p+0},
    {0x1.917a6bc29b42cp-4, -0x1.e2718d26ed688p-60, 0x1.fd88da3d12526p-1, -0x1.87df6378811c7p-55},
    {0x1.8f8b83c69a60bp-3, -0x1.26d19b9ff8d82p-57, 0x1.f6297cff75cbp-1, 0x1.562172a361fd3p-56},
    {0x1.294062ed59f06p-2, -0x1.5d28da2c4612dp-56, 0x1.e9f4156c62ddap-1, 0x1.760b1e2e3f81ep-55},
    {0x1.87de2a6aea963p-2, -0x1.72cedd3d5a61p-57, 0x1.d906bcf328d46p-1, 0x1.457e610231ac2p-56},
    {0x1.e2b5d3806f63bp-2, 0x1.e0d891d3c6841p-58, 0x1.c38b2f180bdb1p-1, -0x1.6e0b1757c8d07p-56},
    {0x1.1c73b39ae68c8p-1, 0x1.b25dd267f66p-55, 0x1.a9b66290ea1a3p-1, 0x1.9f630e8b6dac8p-60},
    {0x1.44cf325091dd6p-1, 0x1.8076a2cfdc6b3p-57, 0x1.8bc806b151741p-1, -0x1.2c5e12ed1336dp-55},
    {0x1.6a09e667f3bcdp-1, -0x1.bdd3413b26456p-55, 0x1.6a09e667f3bcdp-1, -0x1.bdd3413b26456p-55},
};


}  // namespace
}  // namespace orba::ORBA_CLASS_NAMESPACE
