// BC3: a BC4 block that holds alpha, then a colour block with four colours.
#pragma once

#include <cstdint>

namespace blocks {

/// Decodes the 16 bytes of a BC3 block.
void decode_bc3(std::uint8_t const* block, std::uint8_t (&rgba)[16][4]);

}  // namespace blocks
