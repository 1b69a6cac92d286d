// One texel, or one block, of each format, and the eight-bit texel that it stands for.
#include "platform/image_loader/convert.hpp"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace {

using namespace IMAGE_LOADER;
using BYTES = std::vector<std::uint8_t>;

IMAGE wrap(BYTES& bytes, std::uint32_t width, std::uint32_t height, TEXTURE_TEXEL_FORMAT format, std::uint64_t pitch) {
    return IMAGE(IMAGE_INFO{width, height, format, IMAGE_FORMAT::memory, 1, {{bytes.data(), pitch, bytes.size(), 0}}});
}

TEST(convert, reads_every_texel_layout) {
    struct CASE {
        TEXTURE_TEXEL_FORMAT format;
        BYTES texel;
        std::array<std::uint8_t, 4> rgba;
    };
    static CASE const cases[] = {
        {TTF_R8G8B8A8, {1, 2, 3, 4}, {1, 2, 3, 4}},
        {TTF_B8G8R8A8, {1, 2, 3, 4}, {3, 2, 1, 4}},
        {TTF_B8G8R8X8, {1, 2, 3, 4}, {3, 2, 1, 255}},
        {TTF_B8G8R8, {1, 2, 3}, {3, 2, 1, 255}},
        {TTF_L8, {9}, {9, 9, 9, 255}},
        {TTF_L8A8, {9, 7}, {9, 9, 9, 7}},
        {TTF_L16, {0xff, 0x80}, {128, 128, 128, 255}},
        {TTF_A8, {7}, {0, 0, 0, 7}},
        {TTF_R8, {9}, {9, 0, 0, 255}},
        {TTF_R8G8, {9, 7}, {9, 7, 0, 255}},
        {TTF_R16G16, {0x00, 0x80, 0xff, 0xff}, {128, 255, 0, 255}},
        {TTF_R16G16B16A16, {1, 1, 2, 2, 3, 3, 4, 4}, {1, 2, 3, 4}},
        {TTF_B5G6R5, {0x01, 0xfc}, {255, 130, 8, 255}},
        {TTF_B5G5R5A1, {0x01, 0x7e}, {255, 132, 8, 0}},
        {TTF_B4G4R4A4, {0x21, 0x43}, {51, 34, 17, 68}},
        {TTF_R10G10B10A2, {0xff, 0x03, 0x00, 0x60}, {255, 0, 128, 85}},
        {TTF_R8G8_SNORM, {0x7f, 0x80}, {255, 0, 0, 255}},
        {TTF_R8G8B8A8_SNORM, {0x00, 0x81, 0x40, 0xff}, {128, 0, 192, 126}},
        {TTF_R16G16_SNORM, {0xff, 0x7f, 0x00, 0x80}, {255, 0, 0, 255}},
        {TTF_R16G16B16A16_FLOAT, {0x00, 0x38, 0x00, 0xbc, 0x00, 0x40, 0x00, 0x7e}, {128, 0, 255, 0}},
        {TTF_R32_FLOAT, {0x00, 0x00, 0x80, 0x7f}, {255, 0, 0, 255}},
        {TTF_R32G32B32_FLOAT, {0, 0, 0, 0x3f, 0, 0, 0x80, 0x3e, 0, 0, 0, 0}, {128, 64, 0, 255}},
        // 1.0 is the exponent 15: 0x3c0 with six bits of mantissa, 0x1e0 with five; 0.5 one less.
        {TTF_R11G11B10_FLOAT, {0xc0, 0x03, 0x1c, 0x70}, {255, 128, 128, 255}},
        // Fractions of 256/512 and 128/512 with the exponent 16, which is times two.
        {TTF_R9G9B9E5, {0x00, 0x01, 0x01, 0x80}, {255, 128, 0, 255}},
    };
    for (CASE const& c : cases) {
        SCOPED_TRACE(texel_format_info(c.format).name);
        ASSERT_EQ(level_bytes(c.format, 1, 1), c.texel.size());
        // Two rows of one texel with a gap between them.
        BYTES padded = c.texel;
        padded.resize(2 * c.texel.size());
        padded.insert(padded.end(), c.texel.begin(), c.texel.end());
        IMAGE const source = wrap(padded, 1, 2, c.format, 2 * c.texel.size());
        ASSERT_TRUE(source.valid()) << source.cause();
        for (TEXTURE_TEXEL_FORMAT const format : {TTF_R8G8B8A8, TTF_B8G8R8A8}) {
            auto const [red, green, blue, alpha] = c.rgba;
            BYTES const texel =
                format == TTF_R8G8B8A8 ? BYTES{red, green, blue, alpha} : BYTES{blue, green, red, alpha};
            BYTES target(2 * 12, 0xee);
            IMAGE destination = wrap(target, 1, 2, format, 12);
            std::string cause;
            ASSERT_TRUE(convert(source, 0, destination, 0, cause)) << cause;
            BYTES expected(2 * 12, 0xee);
            std::copy(texel.begin(), texel.end(), expected.begin());
            std::copy(texel.begin(), texel.end(), expected.begin() + 12);
            EXPECT_EQ(target, expected);
        }
    }
}

TEST(convert, decodes_blocks_of_any_pitch) {
    // Red 31 and blue 31; the first texel takes the second colour.
    BYTES const block = {0x00, 0xf8, 0x1f, 0x00, 0x01, 0x00, 0x00, 0x00};
    BYTES rows = block;
    rows.resize(24);
    rows.insert(rows.end(), block.begin(), block.end());
    IMAGE const source = wrap(rows, 3, 5, TTF_BC1, 24);
    ASSERT_TRUE(source.valid()) << source.cause();
    IMAGE destination(3, 5, 1, TTF_B8G8R8A8);
    std::string cause;
    ASSERT_TRUE(convert(source, 0, destination, 0, cause)) << cause;
    auto const texels = destination.level(0);
    for (std::uint32_t y = 0; y < 5; ++y) {
        for (std::uint32_t x = 0; x < 3; ++x) {
            bool const is_blue = x == 0 && y % 4 == 0;
            EXPECT_EQ(texels[12 * y + 4 * x], is_blue ? 255 : 0);
            EXPECT_EQ(texels[12 * y + 4 * x + 2], is_blue ? 0 : 255);
            EXPECT_EQ(texels[12 * y + 4 * x + 3], 255);
        }
    }
}

TEST(convert, goes_level_by_level) {
    IMAGE source(4, 2, 3, TTF_R8G8B8A8);
    for (std::uint32_t level = 0; level < 3; ++level) {
        for (std::uint8_t& byte : source.level(level)) {
            byte = static_cast<std::uint8_t>(10 + level);
        }
    }
    IMAGE destination(2, 1, 2, TTF_B8G8R8A8);
    std::string cause;
    EXPECT_TRUE(convert(source, 1, destination, 0, cause));
    EXPECT_TRUE(convert(source, 2, destination, 1, cause));
    EXPECT_EQ(destination.level(0)[7], 11);
    EXPECT_EQ(destination.level(1)[3], 12);

    EXPECT_FALSE(convert(source, 0, destination, 0, cause));
    EXPECT_EQ(cause, "the levels differ in size");
    EXPECT_FALSE(convert(source, 3, destination, 0, cause));
    EXPECT_EQ(cause, "the source has no such level");
    EXPECT_FALSE(convert(source, 0, destination, 2, cause));
    EXPECT_EQ(cause, "the destination has no such level");
    IMAGE grey(4, 2, 1, TTF_L8);
    EXPECT_FALSE(convert(source, 0, grey, 0, cause));
    EXPECT_EQ(cause, "texels are converted to eight bits in four channels only");
}

}  // namespace
