// BC6H encoding.
#pragma once

#include <cstdint>

#include "blocks/block_types.hpp"

namespace blocks {

/// Encodes `block_row_count` rows of blocks from block row `first_block_row` on. `out` takes
/// `block_row_count * blocks_across(view.width) * 16` bytes. Blocks that stick out of the image repeat its last column
/// and row. Infinities become the largest finite halves, NaN becomes zero and so, where `is_signed` is false, does all
/// that is negative; alpha is dropped. Starts no threads; calls for different rows may run side by side.
void encode_bc6h_rows(RGBA16F_VIEW const& view, bool is_signed, ENCODE_OPTIONS const& options,
                      std::uint32_t first_block_row, std::uint32_t block_row_count, std::uint8_t* out);

/// The same for 8-bit texels: v counts as the half nearest to v / 255, without any curve.
void encode_bc6h_rows(RGBA8_VIEW const& view, bool is_signed, ENCODE_OPTIONS const& options,
                      std::uint32_t first_block_row, std::uint32_t block_row_count, std::uint8_t* out);

}  // namespace blocks
