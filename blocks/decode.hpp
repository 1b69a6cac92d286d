// Whole images out of blocks, for every format. The blocks may come from a file that nobody has looked at yet: sizes
// are checked before anything is read, and every bit pattern of every block decodes to something.
#pragma once

#include <cstdint>
#include <span>

#include "blocks/block_types.hpp"

namespace blocks {

/// Decodes an image of `width` × `height` texels to RGBA, 8 bits a channel, rows tightly packed (width · 4 bytes).
/// `blocks` holds ⌈width / 4⌉ · ⌈height / 4⌉ blocks in rows from the top; what sticks out of the image is dropped.
/// BC4 gives red, BC5 red and green, the other colours are 0, and alpha is 255 where the format has none. Signed values
/// map -1 … 1 to 0 … 255 as round((v + 1) / 2 · 255); those of BC6H are clamped to 0 … 1 first and then mean 0 … 255.
/// False, and nothing written, if a side is 0 or either span is too short.
bool decode_image_rgba8(FORMAT format, std::span<std::uint8_t const> blocks, std::uint32_t width, std::uint32_t height,
                        std::span<std::uint8_t> texels);

/// The same to RGBA in floats: unsigned formats give 0 … 1, signed ones -1 … 1, BC6H what its half floats say.
bool decode_image_rgba32f(FORMAT format, std::span<std::uint8_t const> blocks, std::uint32_t width,
                          std::uint32_t height, std::span<float> texels);

}  // namespace blocks
