// The colour encoder of BC1, BC2 and BC3: sixteen blocks at a time, each the best of several fits to its texels.
#pragma once

#include <cstdint>

#include "blocks/block_batch.hpp"
#include "blocks/block_types.hpp"

namespace blocks {

struct BC1_SETTINGS {
    EFFORT effort = EFFORT::normal;
    bool perceptual = false;
    /// False where the block is the colour half of BC2 or BC3, which always have four colours.
    bool may_have_three_colours = true;
    /// Texels with an alpha below this become transparent black; 0 makes every texel opaque.
    std::uint32_t alpha_threshold = 0;
};

/// Encodes a batch; `out[b]` holds the 8 bytes of block b, the first one lowest. An opaque block never uses the
/// transparent entry of the palette.
void encode_bc1(BLOCK_BATCH const& batch, BC1_SETTINGS const& settings, std::uint64_t (&out)[batch_blocks]);

}  // namespace blocks
