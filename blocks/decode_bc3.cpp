// Both halves are formats of their own; this file only puts them together.
#include "blocks/decode_bc3.hpp"

#include "blocks/decode_bc1.hpp"
#include "blocks/decode_bc4.hpp"

namespace blocks {

void decode_bc3(std::uint8_t const* block, std::uint8_t (&rgba)[16][4]) {
    decode_bc1_four_colours(block + 8, rgba);
    std::uint8_t alpha[16];
    decode_bc4_unorm(block, alpha);
    for (int i = 0; i < 16; ++i) {
        rgba[i][3] = alpha[i];
    }
}

}  // namespace blocks
