// The colour block of BC1, which BC2 and BC3 carry as their second half: two colours of 5:6:5 bits and an index of two
// bits for each texel. After the Direct3D 11 functional description and the Khronos Data Format document, section
// "S3TC".
#pragma once

#include <cstdint>

namespace blocks {

/// Decodes the 8 bytes of a BC1 block. A block whose first colour is not above its second one has three colours and
/// transparent black (0, 0, 0, 0).
void decode_bc1(std::uint8_t const* block, std::uint8_t (&rgba)[16][4]);

/// Decodes the same 8 bytes where they are the colour half of BC2 or BC3, which always has four colours. Alpha is 255.
void decode_bc1_four_colours(std::uint8_t const* block, std::uint8_t (&rgba)[16][4]);

}  // namespace blocks
