#include "dds/channel_steps.hpp"
#include "tests/dds/test_images.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace {

TEST(channel_steps, premultiplied_alpha_of_every_pair) {
    for (bool const gamma : {false, true}) {
        auto image = make_image(256, 256, [](auto x, auto y, auto) {
            auto const colour = static_cast<std::uint8_t>(x);
            return TEXEL{colour, colour, colour, static_cast<std::uint8_t>(y)};
        });
        premultiply_alpha(image, gamma);
        for (std::uint32_t y = 0; y < 256; ++y) {
            for (std::uint32_t x = 0; x < 256; ++x) {
                double const colour = x / 255.0;
                double const alpha = y / 255.0;
                double const product = gamma ? std::pow(std::pow(colour, 2.2) * alpha, 1 / 2.2) : colour * alpha;
                auto const byte = static_cast<std::uint8_t>(std::lround(product * 255.0));
                ASSERT_EQ(texel_at(image, x, y), (TEXEL{byte, byte, byte, static_cast<std::uint8_t>(y)}));
            }
        }
    }
}

TEST(channel_steps, every_level_is_rewritten) {
    auto const texel = [](auto, auto, auto) {
        return TEXEL{200, 100, 50, 128};
    };
    auto image = make_image(4, 2, texel, 3);
    premultiply_alpha(image, false);
    for (std::uint32_t level = 0; level < 3; ++level)
        EXPECT_EQ(texel_at(image, 0, 0, level), (TEXEL{100, 50, 25, 128}));
    auto parallax = make_image(
        4, 2,
        [](auto, auto, auto) {
            return TEXEL{10, 20, 30, 40};
        },
        3);
    shuffle_parallax_channels(parallax);
    for (std::uint32_t level = 0; level < 3; ++level)
        EXPECT_EQ(texel_at(parallax, 0, 0, level), (TEXEL{40, 20, 255, 30}));
}

}  // namespace
