// One random block of every BC6H mode and of the four reserved ones, read as unsigned and as signed. The expected
// halves are those that OpenImageIO 2.4 gives for the same blocks; the hash covers all sixteen texels (halves low byte
// first), the last one is spelt out.
#include <array>
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "blocks/decode_bc6h.hpp"

namespace {

std::uint64_t fnv1a(std::uint8_t const* bytes, std::size_t count) {
    std::uint64_t hash = 14695981039346656037u;
    for (std::size_t i = 0; i < count; ++i)
        hash = (hash ^ bytes[i]) * 1099511628211u;
    return hash;
}

void from_hex(char const* hex, std::uint8_t (&block)[16]) {
    for (auto& byte : block) {
        byte = static_cast<std::uint8_t>(std::stoi(std::string(hex, 2), nullptr, 16));
        hex += 2;
    }
}

struct GOLDEN {
    int mode;
    char const* block;
    std::array<int, 3> last_texel_unsigned;
    std::uint64_t hash_unsigned;
    std::array<int, 3> last_texel_signed;
    std::uint64_t hash_signed;
};

constexpr GOLDEN goldens[] = {
    {0,
     "d4378ff129bdc7892da9ed08267bab8f",
     {0x34b8, 0x603f, 0x1ea0},
     0xe90f2f4b5541206au,
     {0x6971, 0xb7bf, 0x3d40},
     0xbca306d82a493c5du},
    {1,
     "71a1388e4046682993d6d6acce1bb409",
     {0x0b24, 0x6df4, 0x4544},
     0xba08810d055e2bf8u,
     {0x1648, 0x9e08, 0xef68},
     0x1dd3b5e7b03d6e0cu},
    {2,
     "e2ed8bb55270056f7fd1fae425bf28b5",
     {0x35af, 0x2fb4, 0x52e4},
     0x2b04d5ebf97178f0u,
     {0x6b5f, 0x5f69, 0xd256},
     0x51479dcfe4d82a1du},
    {6,
     "467a3d4c8114f1b35e5838a2b858d64c",
     {0x7931, 0x0739, 0x0a53},
     0xa61d119ae3495a65u,
     {0x85bb, 0x0e72, 0x14a6},
     0x81f9eef77cc66baeu},
    {10,
     "6a4ba2f12c83194d0115128a63891d30",
     {0x248a, 0x32b5, 0x25ee},
     0xccf2b8c1e686e576u,
     {0x4914, 0x656a, 0x4bdd},
     0xdf84b95b7600f88fu},
    {14,
     "4e32aa8366ae12565a93aaa7317448ee",
     {0x6463, 0x4fcd, 0x50c5},
     0xa6591901c58f8199u,
     {0xafb6, 0xd8e2, 0xd6f2},
     0x9737e589e56d22ddu},
    {18,
     "d29c335352e55ddf1c221c13358afd18",
     {0x766e, 0x2b5a, 0x1702},
     0x0e3286ff19f40180u,
     {0x8c1c, 0x56b4, 0x2e04},
     0x03a649afe9480007u},
    {22,
     "363fdd2f797e81e2318e0e29572f8020",
     {0x686f, 0x5b15, 0x49b9},
     0x8389572e4dfe4498u,
     {0x8516, 0xc2cc, 0xe585},
     0xdd3b42583d8599bcu},
    {26,
     "3a99f05e99bb039907d1ad4607176045",
     {0x62fc, 0x718c, 0x4d3a},
     0xee5ea5778255b832u,
     {0xb2fe, 0x95df, 0xde83},
     0x4160c88417ea3e68u},
    {30,
     "be1b8088af5405dc2088fd1888091f05",
     {0x1ff8, 0x1458, 0x0c98},
     0xd8f6d237dd1f4670u,
     {0x3ff0, 0x28b0, 0x1930},
     0x7f455392c5eb2c10u},
    {3,
     "c341dff0ab543f25aae3992a3db5e564",
     {0x4665, 0x3905, 0x27f0},
     0x75afb78cb003f35bu,
     {0xeb72, 0x720a, 0x4fe0},
     0x5be430f87217aae4u},
    {7,
     "6739f64dcbca0a712b43205d4e3ef9ef",
     {0x1257, 0x41b3, 0x6468},
     0xda56fd2cbc067bb1u,
     {0x24af, 0xe536, 0xaf4d},
     0x6c42c434a76252abu},
    {11,
     "8b6fc5e9b2c61fd758f29f616445d04f",
     {0x1aae, 0x1b6d, 0x489e},
     0x6003040910fb23e7u,
     {0x355d, 0x36db, 0xe6d2},
     0x6722179f093520cfu},
    {15,
     "6f6cea67afeaf191e3f5e0accbcfb95d",
     {0x5304, 0x0f6a, 0x269b},
     0x1e3bf7395540975eu,
     {0xd1f6, 0x1ed5, 0x4d36},
     0x6300624c650eea42u},
    {19,
     "1350b8d06701048a27fe203132680e75",
     {0x0000, 0x0000, 0x0000},
     0x0243cfa845185aa5u,
     {0x0000, 0x0000, 0x0000},
     0x0243cfa845185aa5u},
    {23,
     "d740324c381be81e1f7ff33f9f94d597",
     {0x0000, 0x0000, 0x0000},
     0x0243cfa845185aa5u,
     {0x0000, 0x0000, 0x0000},
     0x0243cfa845185aa5u},
    {27,
     "dbf20620053b2c6c5b365cf5519ac906",
     {0x0000, 0x0000, 0x0000},
     0x0243cfa845185aa5u,
     {0x0000, 0x0000, 0x0000},
     0x0243cfa845185aa5u},
    {31,
     "9fc8ca2719a7b84531d5caa81f221b62",
     {0x0000, 0x0000, 0x0000},
     0x0243cfa845185aa5u,
     {0x0000, 0x0000, 0x0000},
     0x0243cfa845185aa5u},
};

TEST(bc6h_decode, golden_blocks) {
    for (GOLDEN const& golden : goldens)
        for (bool const is_signed : {false, true}) {
            SCOPED_TRACE("mode " + std::to_string(golden.mode) + (is_signed ? " signed" : " unsigned"));
            std::uint8_t block[16];
            from_hex(golden.block, block);
            std::uint16_t half[16][3];
            blocks::decode_bc6h(block, is_signed, half);
            auto const& last = is_signed ? golden.last_texel_signed : golden.last_texel_unsigned;
            std::uint8_t bytes[96];
            for (std::size_t i = 0; i < 48; ++i) {
                bytes[2 * i] = static_cast<std::uint8_t>(half[i / 3][i % 3]);
                bytes[2 * i + 1] = static_cast<std::uint8_t>(half[i / 3][i % 3] >> 8);
            }
            for (std::size_t channel = 0; channel < 3; ++channel)
                EXPECT_EQ(half[15][channel], last[channel]) << "channel " << channel;
            EXPECT_EQ(fnv1a(bytes, sizeof bytes), is_signed ? golden.hash_signed : golden.hash_unsigned);
        }
}

}  // namespace
