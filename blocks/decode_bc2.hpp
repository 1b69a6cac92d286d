// BC2: 16 alpha values of four bits, then a colour block with four colours.
#pragma once

#include <cstdint>

namespace blocks {

/// Decodes the 16 bytes of a BC2 block.
void decode_bc2(std::uint8_t const* block, std::uint8_t (&rgba)[16][4]);

}  // namespace blocks
