// The alpha half of BC2: four bits a texel, each the nearest there is. Nothing to search, so plain code does.
#pragma once

#include <cstdint>

#include "blocks/block_batch.hpp"

namespace blocks {

/// `out[b]` holds the 8 bytes of block b, the first texel lowest.
inline void encode_bc2_alpha(BLOCK_BATCH const& batch, std::uint64_t (&out)[batch_blocks]) {
    for (std::uint32_t block = 0; block < batch_blocks; ++block) {
        std::uint64_t packed = 0;
        for (int i = 15; i >= 0; --i) {
            std::uint32_t const alpha = batch.texels[i][block] >> 24;
            packed = packed << 4 | (alpha * 15 + 127) / 255;
        }
        out[block] = packed;
    }
}

}  // namespace blocks
