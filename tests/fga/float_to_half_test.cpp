#include "fga/float_to_half.hpp"
#include "tests/fga/half_rule.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(float_to_half, known_values) {
    struct CASE {
        float value;
        int half;
    };
    CASE const cases[] = {
        {0.0F, 0x0000},
        {-0.0F, 0x8000},
        {-1.0F, 0xBC00},
        {0.333333F, 0x3555},
        {65504.0F, 0x7BFF},
        {65520.0F, 0x7BFF},  // a tie
        {65520.004F, 0x7C00},
        {70000.0F, 0x7C00},
        {std::numeric_limits<float>::infinity(), 0x7C00},
        {-std::numeric_limits<float>::quiet_NaN(), 0xFC00},
        {1.0F + 0x1p-11F, 0x3C00},      // a tie
        {1.0F + 3 * 0x1p-11F, 0x3C01},  // a tie above an odd half, which still goes down
        {0x1p-25F, 0x0000},             // half of the smallest
        {0x1.002002p-25F, 0x0001},
        {-0x1.8p-24F, 0x8001},    // a tie between subnormals
        {0x1.8002p-24F, 0x0001},  // above a tie, but not by enough
        {0x1.801p-24F, 0x0002},
        {0x1.ffcp-15F, 0x03FF},
        {0x1.ffffp-15F, 0x0400},
        {std::numeric_limits<float>::denorm_min(), 0x0000},
    };
    for (CASE const& c : cases)
        EXPECT_EQ(float_to_half(c.value), c.half) << std::hexfloat << c.value;
}

// Where the rule changes: the ends of every exponent, and on both sides of every step and tie near them.
TEST(float_to_half, boundaries) {
    for (std::uint32_t exponent = 0; exponent < 256; ++exponent) {
        for (std::uint32_t step = 0; step < 1 << 12; ++step) {
            for (int offset = -3; offset <= 3; ++offset) {
                for (std::uint32_t const near : {0u, 513u, 1024u}) {
                    std::uint32_t const bits =
                        ((exponent << 23) + (step << 11) + near + static_cast<std::uint32_t>(offset)) & 0x7FFFFFFF;
                    float const value = std::bit_cast<float>(bits);
                    ASSERT_EQ(float_to_half(value), half_by_rule(value)) << std::hex << bits;
                }
            }
        }
    }
}

}  // namespace
