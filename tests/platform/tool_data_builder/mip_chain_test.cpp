// Box-filtered levels against a plain average over the texels that each one covers.
#include "platform/tool_data_builder/mip_chain.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

using namespace TOOLDATABUILDER;
using BYTES = std::vector<std::uint8_t>;

BYTES noise(std::uint32_t width, std::uint32_t height, std::size_t padding) {
    BYTES bytes;
    std::uint32_t state = 1;
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::size_t i = 0; i < std::size_t{4} * width + padding; ++i) {
            state = state * 1664525 + 1013904223;
            bytes.push_back(i < std::size_t{4} * width ? static_cast<std::uint8_t>(state >> 24) : 255);
        }
    }
    return bytes;
}

TEST(mip_chain, sides_and_levels) {
    struct CASE {
        std::uint32_t width, height;
        std::vector<std::pair<std::uint32_t, std::uint32_t>> levels;
    };
    CASE const cases[] = {
        {0, 4, {}}, {1, 1, {}}, {2, 1, {{1, 1}}}, {7, 12, {{3, 6}, {1, 3}, {1, 1}}}, {1, 5, {{1, 2}, {1, 1}}},
    };
    for (CASE const& c : cases) {
        BYTES const texels = noise(c.width, c.height, 0);
        std::vector<std::pair<std::uint32_t, std::uint32_t>> sides;
        for (MIP_LEVEL const& level :
             make_lower_mips({texels.data(), c.width, c.height, std::size_t{4} * c.width}, MIP_FILTER::box)) {
            sides.emplace_back(level.width, level.height);
            EXPECT_EQ(level.texels.size(), std::size_t{4} * level.width * level.height);
        }
        EXPECT_EQ(sides, c.levels) << c.width << " x " << c.height;
    }
}

TEST(mip_chain, every_texel_of_the_top_counts_as_much_as_it_is_covered) {
    for (auto const& [width, height] : {std::pair(16U, 8U), std::pair(9U, 7U), std::pair(13U, 1U)}) {
        std::size_t const pitch = std::size_t{4} * width + 3;
        BYTES const texels = noise(width, height, 3);
        auto const levels = make_lower_mips({texels.data(), width, height, pitch}, MIP_FILTER::box);
        MIP_LEVEL const& half = levels.front();
        for (std::size_t at = 0; at < half.texels.size(); ++at) {
            // In units of 1 / half.width and 1 / half.height of a texel.
            std::size_t const x = at / 4 % half.width;
            std::size_t const y = at / 4 / half.width;
            double sum = 0;
            for (std::size_t j = y * height; j < (y + 1) * height; ++j) {
                for (std::size_t i = x * width; i < (x + 1) * width; ++i)
                    sum += texels[j / half.height * pitch + i / half.width * 4 + at % 4];
            }
            EXPECT_NEAR(half.texels[at], sum / (width * height), 0.51);
        }
        for (std::size_t channel = 0; channel < 4; ++channel) {
            double sum = 0;
            for (std::uint32_t y = 0; y < height; ++y) {
                for (std::uint32_t x = 0; x < width; ++x)
                    sum += texels[y * pitch + 4 * x + channel];
            }
            EXPECT_NEAR(levels.back().texels[channel], sum / (width * height), 0.51) << "level of one texel";
        }
    }
}

TEST(mip_chain, the_mean_goes_to_the_nearest_byte) {
    // All sums of four bytes, at one column each.
    constexpr std::uint32_t columns = 4 * 255 + 1;
    BYTES texels(std::size_t{4} * 2 * columns * 2);
    for (std::uint32_t sum = 0; sum < columns; ++sum) {
        for (std::uint32_t part = 0, left = sum; part < 4; ++part) {
            auto const byte = static_cast<std::uint8_t>(std::min(left, 255U));
            left -= byte;
            std::fill_n(texels.begin() + 4 * (2 * columns * (part / 2) + 2 * sum + part % 2), 4, byte);
        }
    }
    auto const levels = make_lower_mips({texels.data(), 2 * columns, 2, std::size_t{8} * columns}, MIP_FILTER::box);
    for (std::uint32_t sum = 0; sum < columns; ++sum) {
        // In the sixteen bits of a level, then back to the nearest of the bytes' wide forms.
        std::uint32_t const wide = (257 * sum + 2) / 4;
        for (std::size_t channel = 0; channel < 4; ++channel)
            ASSERT_EQ(levels[0].texels[4 * sum + channel], (wide + 128) / 257) << sum;
    }
}

TEST(mip_chain, small_levels_do_not_brighten) {
    // A mean of 100.25 that rounding at every level would carry up to 101.
    BYTES texels(std::size_t{4} * 1024 * 2);
    for (std::size_t i = 0; i < texels.size(); ++i)
        texels[i] = i / 4 % 4 == 0 ? 101 : 100;
    auto const levels = make_lower_mips({texels.data(), 1024, 2, 4096}, MIP_FILTER::box);
    EXPECT_EQ(levels.back().texels[0], 100);
    for (std::size_t i = 0; i < texels.size(); ++i)
        texels[i] = i / 4 % 1024 == 0 ? 102 : 100;
    EXPECT_EQ(make_lower_mips({texels.data(), 1024, 2, 4096}, MIP_FILTER::box).back().texels[0], 100);
}

TEST(mip_chain, colours_as_light_and_alpha_as_it_is) {
    BYTES const texels = {0, 0, 77, 0, 255, 0, 77, 255};
    auto const levels = make_lower_mips({texels.data(), 2, 1, 8}, MIP_FILTER::box_srgb);
    // Half the light of white is 188 of 255.
    EXPECT_EQ(BYTES(levels[0].texels.begin(), levels[0].texels.end()), (BYTES{188, 0, 77, 128}));
    for (int value = 0; value < 256; ++value) {
        BYTES const grey(8, static_cast<std::uint8_t>(value));
        EXPECT_EQ(make_lower_mips({grey.data(), 1, 2, 4}, MIP_FILTER::box_srgb)[0].texels[0], value);
    }
}

}  // namespace
