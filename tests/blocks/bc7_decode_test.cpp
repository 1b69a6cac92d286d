// One random block of every BC7 mode, and of the reserved one. The expected texels are those that OpenImageIO 2.4 gives
// for the same blocks; the hash covers all sixteen, the last one is spelt out.
#include <array>
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "blocks/decode_bc7.hpp"

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
    std::array<int, 4> last_texel;
    std::uint64_t hash;
};

constexpr GOLDEN goldens[] = {
    {0, "012527a7cfbd815aff71e71aed215700", {156, 222, 255, 255}, 0x3709bed237ac9c2cu},
    {1, "8664e45d3e4adafc56866b5bd4c760ee", {110, 177, 144, 255}, 0x19fdce93cee01bebu},
    {2, "4494a0ad059bbc48fe692b390a65625c", {107, 74, 231, 255}, 0x8b1d012338a4703eu},
    {3, "38bd69d1bbfe5835332187ae21af301a", {222, 244, 152, 255}, 0x449a85cee882b024u},
    {4, "d025d70a3a0979344743b3de1d453d2d", {64, 92, 34, 173}, 0x943f0568d71853a8u},
    {5, "a00d5099fdbf7396fc2ca732f2e8dadf", {26, 37, 255, 203}, 0x07ec5de5e291c6bdu},
    {6, "c00173056f8996214d51743119a44b40", {45, 123, 84, 128}, 0x73732bcf4639686fu},
    {7, "8010a6ebcc9b300595656469978ef360", {93, 77, 174, 182}, 0x7815882c87461293u},
    {8, "00618291c10890f663304a42209062b4", {0, 0, 0, 0}, 0xb9b23f3a46fd0825u},
};

TEST(bc7_decode, golden_blocks) {
    for (GOLDEN const& golden : goldens) {
        std::uint8_t block[16];
        from_hex(golden.block, block);
        std::uint8_t rgba[16][4];
        blocks::decode_bc7(block, rgba);
        for (std::size_t channel = 0; channel < 4; ++channel)
            EXPECT_EQ(rgba[15][channel], golden.last_texel[channel])
                << "mode " << golden.mode << " channel " << channel;
        EXPECT_EQ(fnv1a(&rgba[0][0], sizeof rgba), golden.hash) << "mode " << golden.mode;
    }
}

}  // namespace
