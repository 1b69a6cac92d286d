// The alpha error that NVIDIA Texture Tools is built with, against the sum as it is defined.
#include "setup/nvtt_alpha_error.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>

namespace {

TEST(nvtt_alpha_error, is_the_sum_of_square_distances_to_the_nearest_entry) {
    std::mt19937 random(11);
    for (int round = 0; round < 100000; ++round) {
        // Every third time only the ends of the range, where differences are largest.
        bool const extreme = round % 3 == 0;
        unsigned char palette[8];
        for (unsigned char& entry : palette)
            entry = static_cast<unsigned char>(extreme ? random() % 2 * 255 * (round % 2) : random());
        std::array<std::uint32_t, 16> texels;
        for (std::uint32_t& texel : texels)
            texel = static_cast<std::uint32_t>(random()) | (extreme ? 0xff000000U : 0U);
        unsigned expected = 0;
        for (std::uint32_t const texel : texels) {
            int nearest = 255 * 255;
            for (unsigned char const entry : palette) {
                int const distance = static_cast<int>(texel >> 24) - entry;
                nearest = std::min(nearest, distance * distance);
            }
            expected += static_cast<unsigned>(nearest);
        }
        ASSERT_EQ(zab_alpha_error(palette, texels.data()), expected) << round;
    }
}

}  // namespace
