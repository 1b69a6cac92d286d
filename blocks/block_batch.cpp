#include "blocks/block_batch.hpp"

#include <algorithm>
#include <bit>
#include <cstring>

namespace blocks {
namespace {

std::uint32_t load_texel(std::uint8_t const* bytes) {
    std::uint32_t texel;
    std::memcpy(&texel, bytes, sizeof texel);
    if constexpr (std::endian::native == std::endian::big) {
        texel = texel >> 24 | (texel >> 8 & 0xFF00u) | (texel << 8 & 0xFF0000u) | texel << 24;
    }
    return texel;
}

}  // namespace

void gather_batch(RGBA8_VIEW const& image, std::uint32_t first_block_column, std::uint32_t block_row,
                  std::uint32_t count, BLOCK_BATCH& batch) {
    for (std::uint32_t row = 0; row < block_side; ++row) {
        // A side can be so near to 2^32 that the block's own coordinates would wrap.
        std::size_t const y = std::min(std::size_t{block_row} * block_side + row, std::size_t{image.height} - 1);
        std::uint8_t const* const line = image.texels + y * image.row_pitch;
        for (std::uint32_t block = 0; block < count; ++block) {
            std::size_t const x = (std::size_t{first_block_column} + block) * block_side;
            for (std::uint32_t column = 0; column < block_side; ++column) {
                std::size_t const inside = std::min(x + column, std::size_t{image.width} - 1);
                batch.texels[row * block_side + column][block] = load_texel(line + inside * 4);
            }
        }
    }
    for (auto& texel : batch.texels) {
        std::fill(texel + count, texel + batch_blocks, texel[count - 1]);
    }
}

}  // namespace blocks
