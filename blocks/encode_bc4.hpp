// The encoder of BC4 blocks: one channel of sixteen blocks at a time. BC3's alpha and both channels of BC5 are the same
// block.
#pragma once

#include <cstdint>

#include "blocks/block_batch.hpp"
#include "blocks/block_types.hpp"

namespace blocks {

struct BC4_SETTINGS {
    EFFORT effort = EFFORT::normal;
    /// Texels' 0 … 255 mean -1 … 1, and the block stores signed values.
    bool is_signed = false;
    /// Which channel of the texels: 0 is red, 3 is alpha.
    std::uint32_t channel = 0;
};

/// Encodes a batch; `out[b]` holds the 8 bytes of block b, the first one lowest.
void encode_bc4(BLOCK_BATCH const& batch, BC4_SETTINGS const& settings, std::uint64_t (&out)[batch_blocks]);

}  // namespace blocks
