// Golden blocks written out by hand from the format documents, and what decoding an image promises about its sides.
#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string>
#include <vector>

#include "blocks/decode.hpp"

namespace blocks {
namespace {

using BYTES = std::vector<std::uint8_t>;
using TEXEL = std::array<int, 4>;

struct GOLDEN {
    char const* name;
    FORMAT format;
    BYTES block;
    /// The first texels of the top row and, so that the order of the index bits is seen, the last texel of the block.
    std::array<TEXEL, 4> top;
    TEXEL last;
};

std::ostream& operator<<(std::ostream& out, GOLDEN const& golden) {
    return out << golden.name;
}

std::vector<GOLDEN> const golden_blocks = {
    // Red f800 above blue 001f: four colours. Indices 0 1 2 3 in the first row, 3 in the last texel.
    {"bc1_four",
     FORMAT::bc1,
     {0x00, 0xF8, 0x1F, 0x00, 0xE4, 0, 0, 0xC0},
     {{{255, 0, 0, 255}, {0, 0, 255, 255}, {170, 0, 85, 255}, {85, 0, 170, 255}}},
     {85, 0, 170, 255}},
    // The same colours exchanged: half way, then transparent black.
    {"bc1_three",
     FORMAT::bc1,
     {0x1F, 0x00, 0x00, 0xF8, 0xE4, 0, 0, 0x80},
     {{{0, 0, 255, 255}, {255, 0, 0, 255}, {128, 0, 128, 255}, {0, 0, 0, 0}}},
     {128, 0, 128, 255}},
    // Equal colours belong to the three-colour kind; 8410 widens to 132, 130, 132.
    {"bc1_equal",
     FORMAT::bc1,
     {0x10, 0x84, 0x10, 0x84, 0xE4, 0, 0, 0xC0},
     {{{132, 130, 132, 255}, {132, 130, 132, 255}, {132, 130, 132, 255}, {0, 0, 0, 0}}},
     {0, 0, 0, 0}},
    // In BC2 and BC3 the order of the colours means nothing.
    {"bc2",
     FORMAT::bc2,
     {0x10, 0x32, 0, 0, 0, 0, 0, 0xF0, 0x1F, 0x00, 0x00, 0xF8, 0xE4, 0, 0, 0xC0},
     {{{0, 0, 255, 0}, {255, 0, 0, 17}, {85, 0, 170, 34}, {170, 0, 85, 51}}},
     {170, 0, 85, 255}},
    // Alpha 255 above 0: sevenths. Indices 0 1 2 7 in the first row (octal 7210), 7 in the last texel.
    {"bc3",
     FORMAT::bc3,
     {255, 0, 0x88, 0x0E, 0, 0, 0, 0xE0, 0x1F, 0x00, 0x00, 0xF8, 0xE4, 0, 0, 0xC0},
     {{{0, 0, 255, 255}, {255, 0, 0, 0}, {85, 0, 170, 219}, {170, 0, 85, 36}}},
     {170, 0, 85, 36}},
    // Red 10 below 20: fifths, then 0 and 255. Indices 2 3 6 7 (octal 7632), 5 in the last texel.
    {"bc4_six",
     FORMAT::bc4_unorm,
     {10, 20, 0x9A, 0x0F, 0, 0, 0, 0xA0},
     {{{12, 0, 0, 255}, {14, 0, 0, 255}, {0, 0, 0, 255}, {255, 0, 0, 255}}},
     {18, 0, 0, 255}},
    // 127 above -127 in sevenths: index 2 is 5/7, 3 is 3/7.
    {"bc4_snorm_eight",
     FORMAT::bc4_snorm,
     {127, 0x81, 0x88, 0x06, 0, 0, 0, 0},
     {{{255, 0, 0, 255}, {0, 0, 0, 255}, {219, 0, 0, 255}, {182, 0, 0, 255}}},
     {255, 0, 0, 255}},
    // Both -1, but -127 is stored above -128, so there are no extra values and index 7 is -1 as well.
    {"bc4_snorm_lowest",
     FORMAT::bc4_snorm,
     {0x81, 0x80, 0xC1, 0x0F, 0, 0, 0, 0},
     {{{0, 0, 0, 255}, {0, 0, 0, 255}, {0, 0, 0, 255}, {0, 0, 0, 255}}},
     {0, 0, 0, 255}},
    // -128 stored below -127: fifths with -1 and 1 at the end.
    {"bc4_snorm_extra",
     FORMAT::bc4_snorm,
     {0x80, 0x81, 0xF0, 0x0F, 0, 0, 0, 0},
     {{{0, 0, 0, 255}, {0, 0, 0, 255}, {255, 0, 0, 255}, {255, 0, 0, 255}}},
     {0, 0, 0, 255}},
    {"bc5",
     FORMAT::bc5_unorm,
     {255, 0, 0x88, 0x0E, 0, 0, 0, 0xE0, 10, 20, 0x9A, 0x0F, 0, 0, 0, 0xA0},
     {{{255, 12, 0, 255}, {0, 14, 0, 255}, {219, 0, 0, 255}, {36, 255, 0, 255}}},
     {36, 18, 0, 255}},
    {"bc5_snorm",
     FORMAT::bc5_snorm,
     {127, 0x81, 0x88, 0x06, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
     {{{255, 128, 0, 255}, {0, 128, 0, 255}, {219, 128, 0, 255}, {182, 128, 0, 255}}},
     {255, 128, 0, 255}},
};

class GOLDEN_BLOCK : public testing::TestWithParam<GOLDEN> {};

TEST_P(GOLDEN_BLOCK, decodes) {
    GOLDEN const& golden = GetParam();
    BYTES texels(64);
    ASSERT_TRUE(decode_image_rgba8(golden.format, golden.block, 4, 4, texels));
    auto const texel = [&](int i) {
        return TEXEL{texels[4 * i], texels[4 * i + 1], texels[4 * i + 2], texels[4 * i + 3]};
    };
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(texel(i), golden.top[i]) << "texel " << i;
    }
    EXPECT_EQ(texel(15), golden.last);

    std::vector<float> floats(64);
    ASSERT_TRUE(decode_image_rgba32f(golden.format, golden.block, 4, 4, floats));
    bool const is_signed = golden.format == FORMAT::bc4_snorm || golden.format == FORMAT::bc5_snorm;
    for (int i = 0; i < 64; ++i) {
        bool const coded = golden.format == FORMAT::bc4_snorm ? i % 4 < 1 : i % 4 < 2;
        float const expected = static_cast<float>(texels[i]) / 255;
        EXPECT_NEAR(floats[i], is_signed && coded ? expected * 2 - 1 : expected, 1.01f / 255) << "value " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(formats, GOLDEN_BLOCK, testing::ValuesIn(golden_blocks),
                         [](auto const& tested) { return std::string(tested.param.name); });

TEST(decode_image_rgba32f, keeps_fractions) {
    BYTES const block = {255, 0, 0x88, 0x0E, 0, 0, 0, 0xE0};
    std::vector<float> texels(64);
    ASSERT_TRUE(decode_image_rgba32f(FORMAT::bc4_unorm, block, 4, 4, texels));
    EXPECT_FLOAT_EQ(texels[8], 6.0f / 7);
    BYTES const signed_block = {127, 0x81, 0x88, 0x06, 0, 0, 0, 0};
    ASSERT_TRUE(decode_image_rgba32f(FORMAT::bc4_snorm, signed_block, 4, 4, texels));
    EXPECT_FLOAT_EQ(texels[4], -1.0f);
    EXPECT_FLOAT_EQ(texels[8], 5.0f / 7);
}

TEST(decode_image_rgba8, drops_what_sticks_out) {
    // 5 × 5: four BC1 blocks of one colour each; nothing may be written past the 25 texels.
    BYTES blocks(4 * 8);
    for (std::uint8_t i = 0; i < 4; ++i) {
        blocks[8 * i] = blocks[8 * i + 2] = static_cast<std::uint8_t>(i + 1);
    }
    BYTES texels(25 * 4 + 4, 0xAB);
    ASSERT_TRUE(decode_image_rgba8(FORMAT::bc1, blocks, 5, 5, std::span(texels).first(100)));
    auto const blue = [&](int x, int y) {
        return int{texels[(y * 5 + x) * 4 + 2]};
    };
    EXPECT_EQ(blue(3, 3), 8);
    EXPECT_EQ(blue(4, 3), 16);
    EXPECT_EQ(blue(3, 4), 24);
    EXPECT_EQ(blue(4, 4), 33);
    EXPECT_EQ(texels[100], 0xAB);
}

TEST(decode_image_rgba8, refuses_short_spans_and_sizes_that_wrap) {
    BYTES const block(16);
    BYTES texels(64);
    std::uint32_t const huge = std::numeric_limits<std::uint32_t>::max();
    EXPECT_FALSE(decode_image_rgba8(FORMAT::bc3, std::span(block).first(15), 4, 4, texels));
    EXPECT_FALSE(decode_image_rgba8(FORMAT::bc3, block, 4, 4, std::span(texels).first(63)));
    EXPECT_FALSE(decode_image_rgba8(FORMAT::bc3, block, 5, 4, texels));
    EXPECT_FALSE(decode_image_rgba8(FORMAT::bc3, block, 0, 4, texels));
    EXPECT_FALSE(decode_image_rgba8(FORMAT::bc1, block, huge, huge, texels));
    EXPECT_FALSE(decode_image_rgba8(FORMAT::bc3, block, huge, huge, texels));
}

}  // namespace
}  // namespace blocks
