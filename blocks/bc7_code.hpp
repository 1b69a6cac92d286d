// What a BC7 encoder decides about a block, and the writing of it into 128 bits. Encoders keep endpoints as the 8-bit
// values that a decoder will see; the bits that are stored, p-bits included, are the highest bits of those.
#pragma once

#include <cstdint>

namespace blocks {

/// One block, ready to be written. `end[subset][which][channel]` must be values that the mode can express.
struct BC7_CODE {
    std::uint8_t mode = 6;
    std::uint8_t partition = 0;
    std::uint8_t rotation = 0;
    std::uint8_t index_selection = 0;
    std::uint8_t end[3][2][4] = {};
    std::uint8_t colour_index[16] = {};
    std::uint8_t alpha_index[16] = {};  ///< modes 4 and 5 only
};

/// Writes the 16 bytes of a block. Endpoints are swapped here where an anchor's index needs it.
void write_bc7(BC7_CODE const& code, std::uint8_t* block);

/// A block of one colour throughout, exact in all four channels.
BC7_CODE solid_bc7(std::uint8_t const (&rgba)[4]);

}  // namespace blocks
