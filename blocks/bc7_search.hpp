// How far each effort level of the BC7 encoder looks. All tuning figures stand here.
#pragma once

#include <cstdint>

#include "blocks/block_types.hpp"

namespace blocks {

/// Where a mode's endpoints take the bit below their lowest one from.
enum class P_BITS : std::uint8_t { none, own, shared, always_zero, always_one };

/// Precision of the endpoints of one index plane and the number of interpolation steps between them.
struct ENDPOINT_SPEC {
    std::uint8_t colour_bits;
    std::uint8_t alpha_bits;
    P_BITS p;
    std::uint8_t levels;
};

/// Depth of the search. `partitions_N`: how many of the best-ranked partitions mode N tries; 0 leaves the mode out.
struct BC7_SEARCH {
    std::uint8_t partitions_0;
    std::uint8_t partitions_1;
    std::uint8_t partitions_2;
    std::uint8_t partitions_3;
    std::uint8_t partitions_7;
    std::uint8_t rotations;         ///< channel orders that modes 4 and 5 try (1 to 4); 0 leaves these modes out
    std::uint8_t opaque_rotations;  ///< the same for blocks without alpha
    std::uint8_t rounds;            ///< quantise, assign indices, least squares: how often
    bool all_p_bits;                ///< try every combination of p-bits instead of the nearest
};

constexpr BC7_SEARCH bc7_search(EFFORT effort) {
    switch (effort) {
    case EFFORT::fast:
        return {0, 1, 0, 1, 1, 1, 0, 2, false};
    case EFFORT::normal:
        return {1, 3, 1, 3, 3, 4, 1, 3, false};
    default:
        return {8, 12, 8, 12, 12, 4, 4, 4, true};
    }
}

}  // namespace blocks
