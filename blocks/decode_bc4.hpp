// BC4: two 8-bit values and an index of three bits for each texel; the alpha of BC3 and each channel of BC5 are the
// same block. After the Direct3D 11 functional description and the Khronos Data Format document, section "RGTC".
#pragma once

#include <cstdint>

namespace blocks {

/// Decodes the 8 bytes of a block to 0 … 255, interpolated values rounded to the nearest integer.
void decode_bc4_unorm(std::uint8_t const* block, std::uint8_t (&values)[16]);

/// Decodes the 8 bytes of a block to 0 … 1, interpolated values unrounded.
void decode_bc4_unorm(std::uint8_t const* block, float (&values)[16]);

/// Decodes the 8 bytes of a signed block; -1 … 1 becomes 0 … 255 as round((v + 1) / 2 · 255), a half upwards.
void decode_bc4_snorm(std::uint8_t const* block, std::uint8_t (&values)[16]);

/// Decodes the 8 bytes of a signed block to -1 … 1.
void decode_bc4_snorm(std::uint8_t const* block, float (&values)[16]);

}  // namespace blocks
