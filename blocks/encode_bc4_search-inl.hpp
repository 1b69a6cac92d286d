// The searches for BC4 endpoints. The best endpoints seldom are the lowest and highest value: drawing them in, by up to
// half a step, or pushing them out lets the values between land nearer to the palette. Starts at several insets, least
// squares from each, and then the neighbourhood of the best. The palette of six values also starts from what is left
// when values near the ends of the range are given to its two fixed entries.
#include "hwy/highway.h"

#include "blocks/encode_bc4_blocks-inl.hpp"

#if defined(BLOCKS_ENCODE_BC4_SEARCH_INL_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef BLOCKS_ENCODE_BC4_SEARCH_INL_HPP
#undef BLOCKS_ENCODE_BC4_SEARCH_INL_HPP
#else
#define BLOCKS_ENCODE_BC4_SEARCH_INL_HPP
#endif

HWY_BEFORE_NAMESPACE();
namespace blocks {
namespace HWY_NAMESPACE {

/// How far the search goes.
struct BC4_SEARCH {
    /// Starts: each end drawn in by up to this many times less one of `inset_step`, a part of the length.
    int insets;
    float inset_step;
    /// Of least squares, from each start.
    int rounds;
    /// Of the last search, around the best so far.
    int reach;
};

constexpr BC4_SEARCH bc4_search(EFFORT effort) {
    switch (effort) {
    case EFFORT::fast:
        return {1, 0, 1, 0};
    case EFFORT::normal:
        return {2, 1.0f / 14, 1, 1};
    default:
        return {3, 1.0f / 28, 1, 3};
    }
}

HWY_INLINE INTERVAL to_integers(VALUE_BLOCKS const& blocks, V low, V high) {
    return {round_to_nearest(clamp(low, set(0), blocks.top)), round_to_nearest(clamp(high, set(0), blocks.top))};
}

/// The least-squares interval for the indices that belong to `interval`; `interval` itself where any would do.
template <int entries>
HWY_INLINE INTERVAL least_squares_interval(VALUE_BLOCKS const& blocks, INTERVAL const& interval) {
    INTERVAL_SUMS const sums = interval_sums<entries>(blocks, interval);
    V const determinant = hn::Sub(hn::Mul(sums.count, sums.index_squared), square(sums.index));
    V const slope = hn::Div(hn::Sub(hn::Mul(sums.count, sums.index_value), hn::Mul(sums.index, sums.value)),
                            hn::Max(determinant, set(1)));
    V const low = hn::Div(hn::Sub(sums.value, hn::Mul(slope, sums.index)), hn::Max(sums.count, set(1)));
    V const high = hn::Add(low, hn::Mul(slope, set(interval_steps<entries>)));
    INTERVAL const fitted = to_integers(blocks, low, high);
    M const solvable = hn::Gt(determinant, set(0.5f));
    return {hn::IfThenElse(solvable, fitted.low, interval.low), hn::IfThenElse(solvable, fitted.high, interval.high)};
}

template <int entries, MEASURE measure>
HWY_INLINE void try_least_squares(VALUE_BLOCKS const& blocks, INTERVAL const& start, int rounds, INTERVAL_FIT& best) {
    INTERVAL interval = start;
    for (int round = 0; round < rounds; ++round) {
        interval = least_squares_interval<entries>(blocks, interval);
        try_interval<entries, measure>(blocks, interval, best);
    }
}

/// Tries every interval whose ends lie within `reach` of those of the best.
template <int entries, MEASURE measure>
HWY_INLINE void search_neighbours(VALUE_BLOCKS const& blocks, int reach, INTERVAL_FIT& best) {
    INTERVAL const centre = best.interval;
    for (int low = -reach; low <= reach; ++low) {
        for (int high = -reach; high <= reach; ++high) {
            if (low == 0 && high == 0) {
                continue;
            }
            V const low_end = clamp(hn::Add(centre.low, set(static_cast<float>(low))), set(0), blocks.top);
            V const high_end = clamp(hn::Add(centre.high, set(static_cast<float>(high))), set(0), blocks.top);
            try_interval<entries, measure>(blocks, {low_end, high_end}, best);
        }
    }
}

/// The lowest and the highest value that the evenly spaced part of the palette has to cover: all of them, or those that
/// are more than `margin` from both ends of the range.
template <int entries>
HWY_INLINE INTERVAL covered_interval(VALUE_BLOCKS const& blocks, float margin) {
    V low = blocks.top;
    V high = set(0);
    for (V const value : blocks.values) {
        V low_value = value;
        V high_value = value;
        if constexpr (entries == 6) {
            low_value = hn::IfThenElse(hn::Gt(value, set(margin)), value, blocks.top);
            high_value = hn::IfThenElseZero(hn::Lt(value, hn::Sub(blocks.top, set(margin))), value);
        }
        low = hn::Min(low, low_value);
        high = hn::Max(high, high_value);
    }
    // A block of nothing but ends leaves them the wrong way round.
    return {hn::Min(low, high), hn::Max(low, high)};
}

template <int entries, MEASURE measure>
HWY_INLINE INTERVAL_FIT search_interval(VALUE_BLOCKS const& blocks, BC4_SEARCH const& search) {
    INTERVAL const covered = covered_interval<entries>(blocks, 0);
    V const length = hn::Sub(covered.high, covered.low);
    INTERVAL_FIT best = {to_integers(blocks, covered.low, covered.high), set(0)};
    best.error = interval_error<entries, measure>(blocks, best.interval);
    for (int i = 0; i < search.insets; ++i) {
        for (int j = 0; j < search.insets; ++j) {
            V const low = hn::Add(covered.low, hn::Mul(length, set(search.inset_step * static_cast<float>(i))));
            V const high = hn::Sub(covered.high, hn::Mul(length, set(search.inset_step * static_cast<float>(j))));
            INTERVAL const start = to_integers(blocks, low, high);
            try_interval<entries, measure>(blocks, start, best);
            try_least_squares<entries, measure>(blocks, start, search.rounds, best);
        }
    }
    if constexpr (entries == 6) {
        for (float const margin : {6.0f, 24.0f}) {
            if (search.reach > 0) {
                INTERVAL const inner = covered_interval<entries>(blocks, margin);
                INTERVAL const start = to_integers(blocks, inner.low, inner.high);
                try_interval<entries, measure>(blocks, start, best);
                try_least_squares<entries, measure>(blocks, start, 2, best);
            }
        }
    }
    if (search.reach > 0) {
        search_neighbours<entries, measure>(blocks, search.reach, best);
    }
    return best;
}

}  // namespace HWY_NAMESPACE
}  // namespace blocks
HWY_AFTER_NAMESPACE();

#endif
