#include "platform/checked_size.hpp"

#include <gtest/gtest.h>

namespace {

using namespace checked_size;

constexpr std::uint64_t half = std::uint64_t{1} << 63;

TEST(checked_size, never_wraps_round) {
    EXPECT_EQ(saturating_sum(more_than_any - 1, 1), more_than_any);
    EXPECT_EQ(saturating_sum(half, half), more_than_any);
    EXPECT_EQ(saturating_sum(3, 4), 7u);
    EXPECT_EQ(saturating_product(4u, 16384u, 16384u), std::uint64_t{1} << 30);
    EXPECT_EQ(saturating_product(half, 2u), more_than_any);
    EXPECT_EQ(saturating_product(0xffffffffu, 0xffffffffu, 4u), more_than_any);
    // Nothing of something endless is nothing, in either order.
    EXPECT_EQ(saturating_product(half, 2u, 0u), 0u);
    EXPECT_EQ(saturating_product(0u, half, 2u), 0u);
}

TEST(checked_size, takes_no_memory_that_an_object_cannot_have) {
    EXPECT_EQ(memory_size(4u, 3u, 2u), 24u);
    EXPECT_THROW(memory_size(half), std::bad_alloc);
    EXPECT_THROW(memory_size(0xffffffffu, 0xffffffffu, 16u), std::bad_alloc);
}

TEST(checked_size, bounds_images) {
    EXPECT_TRUE(is_within_bounds(16384, 16384));
    EXPECT_TRUE(is_within_bounds(65536, 4096));
    EXPECT_TRUE(is_within_bounds(0, 65536));
    EXPECT_FALSE(is_within_bounds(16384, 16385));
    EXPECT_FALSE(is_within_bounds(65537, 1));
    EXPECT_FALSE(is_within_bounds(1024, 1024, 257));
    // A product of 2^64 is not 0.
    EXPECT_FALSE(is_within_bounds(std::uint64_t{1} << 32, std::uint64_t{1} << 32));
}

}  // namespace
