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

/// How thoroughly one subset is fitted.
struct BC7_FIT_DEPTH {
    std::uint8_t starts;      ///< how many ways of spreading the indices endpoints are solved for
    std::uint8_t candidates;  ///< how many of the rounded endpoints that come of it are measured exactly
};

/// Depth of the search. `partitions_N`: how many of the best-ranked partitions mode N tries; 0 leaves the mode out.
struct BC7_SEARCH {
    std::uint8_t partitions_0;
    std::uint8_t partitions_1;
    std::uint8_t partitions_2;
    std::uint8_t partitions_3;
    std::uint8_t partitions_7;
    BC7_FIT_DEPTH one_subset;
    BC7_FIT_DEPTH more_subsets;
    /// A trial is passed over where the error off the axes is no less than what the block has. These tell how much of
    /// the estimated error along the axes counts with it: for partitions, and for modes 4 and 5 without and with alpha.
    float belief;
    float belief_opaque;
    float belief_alpha;
    std::uint8_t sweeps;  ///< over the neighbours of what was chosen in the end
};

constexpr BC7_SEARCH bc7_search(EFFORT effort) {
    switch (effort) {
    case EFFORT::fast:
        return {0, 1, 0, 1, 1, {6, 1}, {4, 2}, 0.5f, 2.0f, 0.1f, 0};
    case EFFORT::normal:
        return {1, 2, 1, 2, 4, {9, 2}, {9, 2}, 0.5f, 0.5f, 0.1f, 1};
    default:
        return {6, 10, 6, 10, 12, {16, 6}, {16, 6}, 0.3f, 0.1f, 0.05f, 2};
    }
}

}  // namespace blocks
