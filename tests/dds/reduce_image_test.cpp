#include "dds/gamma_curve.hpp"
#include "dds/halve_image.hpp"
#include "dds/reduce_image.hpp"
#include "tests/dds/test_images.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>

namespace {

using IMAGE_LOADER::IMAGE;

IMAGE numbered_levels(std::uint32_t width, std::uint32_t height, std::uint32_t levels) {
    return make_image(
        width, height,
        [](auto, auto, auto level) {
            return TEXEL{std::uint8_t(level * 10), 1, 2, 255};
        },
        levels);
}

TEST(reduce_image, sizes) {
    struct CASE {
        std::uint32_t width, height, levels;
        std::int32_t drop_mips;
        std::uint32_t max_size;
        std::uint32_t expected_width, expected_height, expected_levels;
    };
    CASE const cases[] = {
        {1024, 512, 1, 0, 65536, 1024, 512, 1},  // untouched
        {1024, 512, 1, 1, 65536, 512, 256, 1},   //
        {1024, 512, 1, 0, 256, 256, 128, 1},     // until both fit
        {12, 2048, 1, 0, 256, 6, 1024, 1},       // the floor stops it, too large as it is
        {7, 7, 1, 3, 65536, 7, 7, 1},            //
        {8, 9, 1, 1, 65536, 4, 4, 1},            //
        {64, 64, 7, 2, 65536, 16, 16, 5},        // levels are dropped, not resampled
        {64, 64, 7, 0, 4, 4, 4, 3},              // no floor for them
        {64, 64, 2, 3, 65536, 8, 8, 1},          // the chain runs out, halving takes over
        {64, 32, 1, -5, 65536, 64, 32, 1},       //
    };
    for (CASE const& c : cases) {
        TEST_SINK sink;
        IMAGE image = numbered_levels(c.width, c.height, c.levels);
        EXPECT_TRUE(reduce_image(sink, image, c.drop_mips, c.max_size, false, 2.2F));
        EXPECT_EQ(image.width(), c.expected_width);
        EXPECT_EQ(image.height(), c.expected_height);
        EXPECT_EQ(image.number_of_mips(), c.expected_levels);
        EXPECT_EQ(sink.lines, QStringList());
    }
}

TEST(reduce_image, dropped_levels_keep_the_texels_of_the_rest) {
    TEST_SINK sink;
    IMAGE image = numbered_levels(64, 64, 7);
    ASSERT_TRUE(reduce_image(sink, image, 2, 65536, true, 2.2F));
    EXPECT_EQ(texel_at(image, 3, 3, 0), (TEXEL{20, 1, 2, 255}));
    EXPECT_EQ(texel_at(image, 0, 0, 4), (TEXEL{60, 1, 2, 255}));
}

TEST(reduce_image, averages_of_blocks) {
    auto const corner = [](auto x, auto y, auto) -> TEXEL {
        bool const lit = x % 2 == 0 && y % 2 == 0;
        return lit ? TEXEL{255, 2, 100, 255} : TEXEL{0, 1, 100, 0};
    };
    TEST_SINK sink;
    IMAGE plain = make_image(8, 8, corner);
    ASSERT_TRUE(reduce_image(sink, plain, 1, 65536, false, 2.2F));
    // (255 + 0 + 0 + 0 + 2) / 4, (2 + 1 + 1 + 1 + 2) / 4 with the remainder dropped.
    EXPECT_EQ(texel_at(plain, 1, 1), (TEXEL{64, 1, 100, 64}));

    // Odd sides leave their last column and row out; sides of one texel count it twice.
    auto const column = [](auto x, auto y, auto) {
        return TEXEL{std::uint8_t(10 * x), std::uint8_t(10 * y), 255, 7};
    };
    for (GAMMA_CURVE const* const curve : {static_cast<GAMMA_CURVE const*>(nullptr), &GAMMA_CURVE::standard()}) {
        IMAGE const odd = halve_image(make_image(5, 3, column), curve);
        EXPECT_EQ(std::pair(odd.width(), odd.height()), std::pair(2U, 1U));
        EXPECT_EQ(texel_at(odd, 1, 0)[0], curve == nullptr ? 25 : 26);
        EXPECT_EQ(texel_at(halve_image(make_image(1, 4, column), curve), 0, 1)[0], 0);
        EXPECT_EQ(texel_at(halve_image(make_image(4, 1, column), curve), 1, 0)[1], 0);
    }

    IMAGE gamma = make_image(8, 8, corner);
    ASSERT_TRUE(reduce_image(sink, gamma, 1, 65536, true, 2.2F));
    // 255 × 0.25^(1/2.2) = 135.8; alpha has no curve.
    EXPECT_EQ(texel_at(gamma, 2, 2), (TEXEL{136, 1, 100, 64}));
}

TEST(gamma_curve, steps_give_what_the_powers_give) {
    GAMMA_CURVE const& curve = GAMMA_CURVE::standard();
    auto const expect_power = [&](GAMMA_CURVE const& of, float exponent, float linear) {
        auto const power = static_cast<float>(std::pow(double{linear}, double{1.0F / exponent}));
        ASSERT_EQ(of.to_byte(linear), static_cast<int>(std::min(power * 255.0F + 0.5F, 255.0F))) << linear;
    };
    for (int i = 0; i <= 100000; ++i)
        expect_power(curve, 2.2F, static_cast<float>(i) / 100000.0F);
    // Round binary numbers and their neighbours, down to the smallest ones; and a curve of more steps to a power of
    // two.
    GAMMA_CURVE const steep(0.05F);
    for (std::uint32_t bits = 1U << 13; bits < std::bit_cast<std::uint32_t>(4.0F); bits += 1U << 13) {
        for (std::uint32_t const near : {bits - 1, bits, bits + 1}) {
            expect_power(curve, 2.2F, std::bit_cast<float>(near));
            expect_power(steep, 0.05F, std::bit_cast<float>(near));
        }
    }
    for (int value = 0; value < 256; ++value) {
        auto const byte = static_cast<std::uint8_t>(value);
        EXPECT_EQ(curve.to_byte(curve.to_linear(byte)), byte);
    }
    EXPECT_EQ(curve.to_byte(1.5F), 255);
}

}  // namespace
