// An alpha of four bits becomes eight by repetition, which is the exact n / 15 · 255.
#include "blocks/decode_bc2.hpp"

#include "blocks/decode_bc1.hpp"

namespace blocks {

void decode_bc2(std::uint8_t const* block, std::uint8_t (&rgba)[16][4]) {
    decode_bc1_four_colours(block + 8, rgba);
    for (int i = 0; i < 16; ++i) {
        std::uint32_t const nibble = (block[i / 2] >> (i % 2 * 4)) & 15u;
        rgba[i][3] = static_cast<std::uint8_t>(nibble * 17);
    }
}

}  // namespace blocks
