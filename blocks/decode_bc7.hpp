// Decodes BC7 blocks exactly as the published format defines them.
#pragma once

#include <cstdint>

namespace blocks {

/// Decodes the 16 bytes at `block` into 16 texels, row by row, in the order red, green, blue, alpha. The reserved mode
/// (lowest byte zero) decodes to zero in every channel, alpha too.
void decode_bc7(std::uint8_t const* block, std::uint8_t (&rgba)[16][4]);

}  // namespace blocks
