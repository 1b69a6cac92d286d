#include "dds/one_bit_alpha_chain.hpp"
#include "tests/dds/test_images.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using IMAGE_LOADER::IMAGE;

std::size_t opaque_texels(IMAGE const& image) {
    std::size_t count = 0;
    for (std::uint32_t y = 0; y < image.height(); ++y) {
        for (std::uint32_t x = 0; x < image.width(); ++x) {
            std::uint8_t const alpha = texel_at(image, x, y)[3];
            EXPECT_TRUE(alpha == 0 || alpha == 255);
            count += alpha == 255;
        }
    }
    return count;
}

TEST(one_bit_alpha_chain, every_level_keeps_the_coverage) {
    // A grating of which a plain average would make everything or nothing; 60 × 20 divides unevenly on the way down.
    IMAGE const top = make_image(60, 20, [](auto x, auto y, auto) {
        return TEXEL{0, 200, 0, (x + y) % 5 == 0 ? std::uint8_t{128} : std::uint8_t{127}};
    });
    auto const chain = make_one_bit_alpha_chain(top, false);
    std::uint32_t width = 60, height = 20;
    for (IMAGE const& level : chain) {
        width = std::max(width / 2, 1U);
        height = std::max(height / 2, 1U);
        EXPECT_EQ(level.width(), width);
        EXPECT_EQ(level.height(), height);
        EXPECT_EQ(opaque_texels(level), static_cast<std::size_t>(std::lround(width * height / 5.0)));
    }
    EXPECT_EQ(width * height, 1U);
}

TEST(one_bit_alpha_chain, the_fullest_blocks_stay_and_colours_are_averaged) {
    // The left half is solid but for its first column: there the blocks are fullest.
    IMAGE const top = make_image(8, 8, [](auto x, auto, auto) {
        return TEXEL{static_cast<std::uint8_t>(x % 2 ? 255 : 0), 7, 9,
                     x > 0 && x < 5 ? std::uint8_t{255} : std::uint8_t{0}};
    });
    auto const plain = make_one_bit_alpha_chain(top, false);
    ASSERT_EQ(plain.size(), 3U);
    for (std::uint32_t y = 0; y < 4; ++y)
        EXPECT_EQ(texel_at(plain[0], 1, y), (TEXEL{128, 7, 9, 255}));
    EXPECT_EQ(opaque_texels(plain[0]), 8U);
    // Half of 255 in linear light: 255 × 0.5^(1/2.2).
    EXPECT_EQ(texel_at(make_one_bit_alpha_chain(top, true)[0], 1, 0), (TEXEL{186, 7, 9, 255}));
}

TEST(one_bit_alpha_chain, ties_are_broken_alike_in_every_run) {
    IMAGE const top = make_image(64, 64, [](auto x, auto, auto) {
        return TEXEL{1, 2, 3, x % 2 ? std::uint8_t{255} : std::uint8_t{0}};
    });
    auto const first = make_one_bit_alpha_chain(top, false);
    auto const second = make_one_bit_alpha_chain(top, false);
    ASSERT_EQ(first.size(), second.size());
    for (std::size_t i = 0; i < first.size(); ++i)
        EXPECT_TRUE(std::ranges::equal(first[i].level(0), second[i].level(0)));
    // All texels of the first level are equal, so which half stays is the generator's choice: scattered, not a block.
    std::size_t in_upper_half = 0;
    for (std::uint32_t y = 0; y < 16; ++y) {
        for (std::uint32_t x = 0; x < 32; ++x)
            in_upper_half += texel_at(first[0], x, y)[3] == 255;
    }
    EXPECT_EQ(opaque_texels(first[0]), 512U);
    EXPECT_NEAR(static_cast<double>(in_upper_half), 256.0, 50.0);
}

}  // namespace
