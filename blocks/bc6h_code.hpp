// What a BC6H encoder decides about a block, and the writing of it into 128 bits.
#pragma once

#include <cstdint>

#include "blocks/bc6h_modes.hpp"

namespace blocks {

/// One block, ready to be written. Endpoints are whole codes of the mode's precision (signed for BC6H_SF16), not yet
/// the differences that most modes store; those must fit. The index of texel 0 must lie in the lower half, because
/// swapping the first subset's ends would change every difference.
struct BC6H_CODE {
    std::uint8_t mode = 0;  ///< position in `bc6h_modes`
    std::uint8_t partition = 0;
    std::int32_t end[4][3] = {};
    std::uint8_t index[16] = {};
};

/// Writes the 16 bytes of a block.
void write_bc6h(BC6H_CODE const& code, std::uint8_t* block);

/// A block of one colour throughout, given as the bits of three finite halves (not negative where `is_signed` is
/// false); exact.
BC6H_CODE solid_bc6h(std::uint16_t const (&half_rgb)[3], bool is_signed);

/// Position of the mode that keeps 16 bits of endpoint precision.
inline constexpr std::uint8_t bc6h_widest_mode = 13;
static_assert(bc6h_modes[bc6h_widest_mode].endpoint_bits == 16);

}  // namespace blocks
