// Sixteen blocks side by side, texel by texel: the form that the encoders work on. Lane b of every vector belongs to
// block b, so an encoder runs the same steps for all blocks of a batch and no value ever crosses lanes; that is also
// why the width of the machine's vectors cannot change a result.
#pragma once

#include <cstdint>

#include "blocks/block_types.hpp"

namespace blocks {

/// Blocks of a batch, whatever the width of the vectors.
inline constexpr std::uint32_t batch_blocks = 16;

struct BLOCK_BATCH {
    /// `texels[t][b]`: texel t (from the top left, row by row) of block b; red in the lowest byte, alpha in the
    /// highest.
    alignas(64) std::uint32_t texels[16][batch_blocks];
};

/// Fills a batch with `count` blocks (1 to `batch_blocks`) of a row of blocks. Texels outside the image repeat those of
/// its edge, and lanes from `count` on repeat the last block.
void gather_batch(RGBA8_VIEW const& image, std::uint32_t first_block_column, std::uint32_t block_row,
                  std::uint32_t count, BLOCK_BATCH& batch);

}  // namespace blocks
