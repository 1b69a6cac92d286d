// The powers that NVIDIA Texture Tools is built with, against the function that they stand in for.
#include "setup/nvtt_powers.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <random>
#include <vector>

namespace {

TEST(nvtt_powers, are_those_of_the_math_library_whatever_came_before) {
    std::vector<float> bases = {0.0F, 1.0F, -1.0F, 2.0F, 1e-30F, 1e30F};
    for (int byte = 0; byte < 256; ++byte)
        bases.push_back(static_cast<float>(byte) / 255.0F);
    std::mt19937 random(5);
    for (int i = 0; i < 100000; ++i)
        bases.push_back(static_cast<float>(random()) * 0x1p-32F);
    for (float const exponent : {2.2F, 1.0F / 2.2F, 1.0F}) {
        ZAB_POWERS powers(exponent);
        for (std::size_t i = 0; i < 3 * bases.size(); ++i) {
            // Those of the bytes come again and again, in between the others.
            float const base = bases[i % 3 == 0 ? random() % 262 : random() % bases.size()];
            ASSERT_EQ(std::bit_cast<std::uint32_t>(powers(base)),
                      std::bit_cast<std::uint32_t>(std::pow(base, exponent)))
                << base << " to the power of " << exponent;
        }
    }
}

}  // namespace
