// What the BC4 search works on: the values of one block a lane, and the error of a pair of endpoints, for both kinds of
// palette. Eight steps: eight values evenly spaced from low to high. Six steps: six such values, and the two ends
// of the channel's range besides. As in BC1 the best index is a rounded projection, and the sums over indices give the
// least-squares endpoints.
#include "hwy/highway.h"

#include "blocks/batch_lanes-inl.hpp"

#if defined(BLOCKS_ENCODE_BC4_BLOCKS_INL_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef BLOCKS_ENCODE_BC4_BLOCKS_INL_HPP
#undef BLOCKS_ENCODE_BC4_BLOCKS_INL_HPP
#else
#define BLOCKS_ENCODE_BC4_BLOCKS_INL_HPP
#endif

HWY_BEFORE_NAMESPACE();
namespace blocks {
namespace HWY_NAMESPACE {

struct VALUE_BLOCKS {
    /// 0 … `top`. Signed blocks are shifted upwards to 0 … 254, so one search serves both kinds.
    V values[16];
    V top;
    /// What one step of an 8-bit texel comes to, and its reciprocal.
    V unit;
    V inverse_unit;
};

/// Decoders either keep the fractions of the values between the endpoints or round to 8 bits. `both` adds up the errors
/// of the two; what is best for that is nearly the best for either.
enum class MEASURE : std::uint8_t { fractions, both };

/// The ends of the evenly spaced values: integers, low ≤ high.
struct INTERVAL {
    V low;
    V high;
};

struct INTERVAL_FIT {
    INTERVAL interval;
    V error;
};

/// Sums over the texels that take one of the evenly spaced values; indices count steps from low.
struct INTERVAL_SUMS {
    V count;
    V index;
    V index_squared;
    V value;
    V index_value;
};

/// Evenly spaced values, less one.
template <int entries>
constexpr float interval_steps = entries - 1;

/// Steps per unit of value; 0 for an interval of one value.
template <int entries>
HWY_INLINE V steps_per_value(INTERVAL const& interval) {
    V const length = hn::Sub(interval.high, interval.low);
    return hn::IfThenElseZero(hn::Gt(length, set(0)), hn::Div(set(interval_steps<entries>), hn::Max(length, set(1))));
}

template <int entries>
HWY_INLINE V index_in(INTERVAL const& interval, V scale, V value) {
    V const position = hn::Mul(hn::Sub(value, interval.low), scale);
    return clamp(round_to_nearest(position), set(0), set(interval_steps<entries>));
}

/// The error with the best indices. `entries` is 8 or 6.
template <int entries, MEASURE measure>
HWY_INLINE V interval_error(VALUE_BLOCKS const& blocks, INTERVAL const& interval) {
    V const scale = steps_per_value<entries>(interval);
    V const step = hn::Mul(hn::Sub(interval.high, interval.low), set(1.0f / interval_steps<entries>));
    V error = set(0);
    for (V const value : blocks.values) {
        V const offset = hn::Mul(index_in<entries>(interval, scale, value), step);
        V const entry = hn::Add(interval.low, offset);
        V difference = hn::Abs(hn::Sub(value, entry));
        V to_end = set(0);
        if constexpr (entries == 6) {
            to_end = hn::Min(value, hn::Sub(blocks.top, value));
        }
        if constexpr (measure == MEASURE::both) {
            V const rounded = hn::Mul(round_to_nearest(hn::Mul(entry, blocks.inverse_unit)), blocks.unit);
            V rounded_difference = hn::Abs(hn::Sub(value, rounded));
            if constexpr (entries == 6) {
                rounded_difference = hn::IfThenElse(hn::Le(to_end, difference), to_end, rounded_difference);
            }
            error = hn::Add(error, square(rounded_difference));
        }
        if constexpr (entries == 6) {
            difference = hn::Min(difference, to_end);
        }
        error = hn::Add(error, square(difference));
    }
    return error;
}

/// The sums for the best indices.
template <int entries>
HWY_INLINE INTERVAL_SUMS interval_sums(VALUE_BLOCKS const& blocks, INTERVAL const& interval) {
    V const scale = steps_per_value<entries>(interval);
    V const step = hn::Mul(hn::Sub(interval.high, interval.low), set(1.0f / interval_steps<entries>));
    INTERVAL_SUMS sums = {set(0), set(0), set(0), set(0), set(0)};
    for (V value : blocks.values) {
        V index = index_in<entries>(interval, scale, value);
        V inside = set(1);
        if constexpr (entries == 6) {
            V const difference = hn::Abs(hn::Sub(hn::Sub(value, interval.low), hn::Mul(index, step)));
            V const to_ends = hn::Min(value, hn::Sub(blocks.top, value));
            M const spaced = hn::Lt(difference, to_ends);
            index = hn::IfThenElseZero(spaced, index);
            value = hn::IfThenElseZero(spaced, value);
            inside = hn::IfThenElseZero(spaced, inside);
        }
        sums.count = hn::Add(sums.count, inside);
        sums.index = hn::Add(sums.index, index);
        sums.index_squared = hn::Add(sums.index_squared, square(index));
        sums.value = hn::Add(sums.value, value);
        sums.index_value = hn::Add(sums.index_value, hn::Mul(index, value));
    }
    return sums;
}

template <int entries, MEASURE measure>
HWY_INLINE void try_interval(VALUE_BLOCKS const& blocks, INTERVAL const& candidate, INTERVAL_FIT& best) {
    V const error = interval_error<entries, measure>(blocks, candidate);
    M const better = hn::And(hn::Lt(error, best.error), hn::Le(candidate.low, candidate.high));
    best.interval.low = hn::IfThenElse(better, candidate.low, best.interval.low);
    best.interval.high = hn::IfThenElse(better, candidate.high, best.interval.high);
    best.error = hn::IfThenElse(better, error, best.error);
}

}  // namespace HWY_NAMESPACE
}  // namespace blocks
HWY_AFTER_NAMESPACE();

#endif
