// What the tests of the encoders share: small images, and the loop over instruction sets.
#pragma once

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "blocks/block_types.hpp"
#include "hwy/targets.h"

namespace checks {

/// An image that owns its texels, four channels each.
template <class CHANNEL, class VIEW>
struct IMAGE {
    std::uint32_t width;
    std::uint32_t height;
    std::vector<CHANNEL> texels;

    IMAGE(std::uint32_t w, std::uint32_t h) : width(w), height(h), texels(std::size_t{w} * h * 4) {}
    CHANNEL* at(std::uint32_t x, std::uint32_t y) { return texels.data() + (std::size_t{y} * width + x) * 4; }
    CHANNEL const* at(std::uint32_t x, std::uint32_t y) const {
        return texels.data() + (std::size_t{y} * width + x) * 4;
    }
    VIEW view() const { return {texels.data(), width, height, std::size_t{width} * 4 * sizeof(CHANNEL)}; }
    std::size_t block_count() const {
        return std::size_t{blocks::blocks_across(width)} * blocks::blocks_across(height);
    }

    /// The same image with its last column and row repeated up to full blocks.
    IMAGE padded() const {
        IMAGE out(blocks::blocks_across(width) * 4, blocks::blocks_across(height) * 4);
        for (std::uint32_t y = 0; y < out.height; ++y)
            for (std::uint32_t x = 0; x < out.width; ++x)
                std::copy_n(at(std::min(x, width - 1), std::min(y, height - 1)), 4, out.at(x, y));
        return out;
    }
};

using BYTES = IMAGE<std::uint8_t, blocks::RGBA8_VIEW>;
using HALVES = IMAGE<std::uint16_t, blocks::RGBA16F_VIEW>;

/// Something of everything: smooth ramps, a hard edge, two hues in a block, grain and, where asked for, alpha.
inline BYTES mixed_image(std::uint32_t width, std::uint32_t height, bool alpha) {
    BYTES image(width, height);
    std::mt19937 random(1234);
    for (std::uint32_t y = 0; y < height; ++y)
        for (std::uint32_t x = 0; x < width; ++x) {
            auto const grain = static_cast<int>(random() % 9) - 4;
            bool const edge = (x + 2 * y) % 23 < 7;
            bool const spot = (x / 3 + y / 5) % 4 == 0;
            int const value[4] = {static_cast<int>(x * 255 / width) + grain,
                                  edge ? 40 : static_cast<int>(y * 3) + grain, spot ? 210 : 90 + grain,
                                  alpha ? static_cast<int>((x * 5 + y * 3) % 256) : 255};
            for (std::size_t c = 0; c < 4; ++c)
                image.at(x, y)[c] = static_cast<std::uint8_t>(std::clamp(value[c], 0, 255));
        }
    return image;
}

/// Runs `encode` (which gives bytes) on every instruction set of this machine and expects the same bytes from all.
template <class ENCODE>
void expect_same_on_all_targets(ENCODE&& encode) {
    std::vector<std::uint8_t> const expected = encode();
    std::int64_t const targets = hwy::SupportedTargets();
    EXPECT_NE(targets & (HWY_SCALAR | HWY_EMU128), 0);
    for (std::int64_t rest = targets; rest != 0; rest &= rest - 1) {
        std::int64_t const target = rest & -rest;
        hwy::SetSupportedTargetsForTest(target);
        EXPECT_EQ(encode(), expected) << hwy::TargetName(target);
    }
    hwy::SetSupportedTargetsForTest(0);
}

}  // namespace checks
