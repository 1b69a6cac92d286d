// Decodes BC6H blocks exactly as the published format defines them.
#pragma once

#include <cstdint>

namespace blocks {

/// Decodes the 16 bytes at `block` into 16 texels, row by row, each three IEEE half floats (red, green, blue).
/// `is_signed` tells BC6H_SF16 from BC6H_UF16. The four reserved modes decode to zero.
void decode_bc6h(std::uint8_t const* block, bool is_signed, std::uint16_t (&half_rgb)[16][3]);

}  // namespace blocks
