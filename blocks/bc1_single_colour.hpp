// The best endpoints for a block of one colour. Rounding such a colour to the grid leaves errors of up to 4; a mixture
// of two grid values comes nearer, for most values exactly.
#pragma once

#include <cstdint>

namespace blocks {

struct GRID_PAIR {
    std::uint8_t first;
    std::uint8_t second;
};

/// For each 8-bit value the grid values whose mixture comes nearest to it: two parts of the first to one of the second
/// where the palette has four colours, equal parts where it has three. Of several equally near pairs it is the closest
/// together, because decoders differ in how they round a mixture.
struct SINGLE_COLOUR_TABLE {
    GRID_PAIR five_bits[256];
    GRID_PAIR six_bits[256];
};

extern SINGLE_COLOUR_TABLE const single_colour_of_four;
extern SINGLE_COLOUR_TABLE const single_colour_of_three;

}  // namespace blocks
