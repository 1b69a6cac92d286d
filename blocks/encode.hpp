// The encoders' front door, for every format: sizes, rows of blocks, and whole images over several threads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "blocks/block_types.hpp"

namespace blocks {

/// Bytes that an image of these sides takes: ⌈width / 4⌉ · ⌈height / 4⌉ blocks. Nothing if a side is 0 or a size_t
/// cannot hold the number.
std::optional<std::size_t> encoded_bytes(FORMAT format, std::uint32_t width, std::uint32_t height);

/// Encodes `block_row_count` rows of blocks from `first_block_row` on into `out`, which holds those rows alone. Blocks
/// that stick out of the image repeat the texels of its edge. Signed formats map 0 … 255 to -1 … 1. BC4 takes red, BC5
/// red and green. Rows do not depend on each other, so callers may hand them to threads as they like. False, and
/// nothing written, if the view is empty or its pitch is less than a row, the rows are not all in the image, `out` is
/// too short, or the format is BC6H, which takes half floats.
bool encode_rows(FORMAT format, RGBA8_VIEW const& image, ENCODE_OPTIONS const& options, std::uint32_t first_block_row,
                 std::uint32_t block_row_count, std::span<std::uint8_t> out);

/// The same from half floats, for BC6H alone; false for any other format.
bool encode_rows(FORMAT format, RGBA16F_VIEW const& image, ENCODE_OPTIONS const& options, std::uint32_t first_block_row,
                 std::uint32_t block_row_count, std::span<std::uint8_t> out);

/// Encodes a whole image on `threads` threads (at least 1), the calling one among them. The bytes do not depend on the
/// number. `out` holds at least encoded_bytes(); false as above.
bool encode_image(FORMAT format, RGBA8_VIEW const& image, ENCODE_OPTIONS const& options, int threads,
                  std::span<std::uint8_t> out);

/// The same from half floats, for BC6H alone.
bool encode_image(FORMAT format, RGBA16F_VIEW const& image, ENCODE_OPTIONS const& options, int threads,
                  std::span<std::uint8_t> out);

}  // namespace blocks
