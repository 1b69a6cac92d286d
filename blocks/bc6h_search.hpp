// How far each effort level of the BC6H encoder looks. All tuning figures stand here.
#pragma once

#include <cstdint>

#include "blocks/block_types.hpp"

namespace blocks {

struct BC6H_SEARCH {
    std::uint8_t partitions;  ///< how many of the best-ranked partitions are fitted
    std::uint8_t rounds;      ///< quantise, assign indices, least squares: how often
    bool all_modes;           ///< measure every mode instead of the one whose endpoints come out nearest
};

constexpr BC6H_SEARCH bc6h_search(EFFORT effort) {
    switch (effort) {
    case EFFORT::fast:
        return {1, 2, false};
    case EFFORT::normal:
        return {4, 3, false};
    default:
        return {12, 4, true};
    }
}

}  // namespace blocks
