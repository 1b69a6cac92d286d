// The mip levels below an image of four 8-bit channels, by a box filter. A side that is odd is halved and rounded down;
// its texels then span a little more than two of the level above, and each of those counts as much as it is covered, so
// that no column is lost and the picture does not creep (the weights of S. Guthe and P. Heckbert, "Non-Power-of-Two
// Mipmap Creation", 2005). Levels are made from one another at sixteen bits a channel: rounding to eight at every level
// would brighten the small ones.
#pragma once

#include "blocks/block_types.hpp"
#include "platform/image_loader/image_memory.hpp"

#include <cstdint>
#include <vector>

namespace TOOLDATABUILDER {

enum class MIP_FILTER : std::uint8_t {
    box,       ///< all four channels as they are
    box_srgb,  ///< the first three channels are averaged in linear light, the fourth as it is
};

/// Texels of four bytes; rows without padding.
struct MIP_LEVEL {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    IMAGE_LOADER::IMAGE_BYTES texels;

    blocks::RGBA8_VIEW view() const { return {texels.data(), width, height, std::size_t{4} * width}; }
};

/// All levels below `top`, the largest first, down to 1 × 1; none for an image of one texel or without texels. The
/// order of the channels does not matter, but for the fourth with `box_srgb`. Throws std::bad_alloc.
std::vector<MIP_LEVEL> make_lower_mips(blocks::RGBA8_VIEW const& top, MIP_FILTER filter);

}  // namespace TOOLDATABUILDER
