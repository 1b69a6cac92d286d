// BC7 encoding.
#pragma once

#include <cstdint>

#include "blocks/block_types.hpp"

namespace blocks {

/// Encodes `block_row_count` rows of blocks from block row `first_block_row` on. `out` takes
/// `block_row_count * blocks_across(view.width) * 16` bytes. Blocks that stick out of the image repeat its last column
/// and row. A block whose alpha is 255 or 0 throughout keeps exactly that, and a block of one colour is exact. Starts
/// no threads; calls for different rows may run side by side.
void encode_bc7_rows(RGBA8_VIEW const& view, ENCODE_OPTIONS const& options, std::uint32_t first_block_row,
                     std::uint32_t block_row_count, std::uint8_t* out);

}  // namespace blocks
