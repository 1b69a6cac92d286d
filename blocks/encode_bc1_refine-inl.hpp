// Betters endpoints that some other strategy has found. Least squares: with the indices held, the best real-valued
// endpoints solve two linear equations; they are then rounded to the four grid neighbours whose error, still with those
// indices, is least, which matters because the grid is coarse. Neighbour search: one channel of one endpoint up or down
// by one, indices chosen anew.
#include "hwy/highway.h"

#include "blocks/encode_bc1_blocks-inl.hpp"

#if defined(BLOCKS_ENCODE_BC1_REFINE_INL_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef BLOCKS_ENCODE_BC1_REFINE_INL_HPP
#undef BLOCKS_ENCODE_BC1_REFINE_INL_HPP
#else
#define BLOCKS_ENCODE_BC1_REFINE_INL_HPP
#endif

HWY_BEFORE_NAMESPACE();
namespace blocks {
namespace HWY_NAMESPACE {

/// The best of the four ways to round one channel of both endpoints, given in 0 … 255 relative to the mean.
template <int channel>
HWY_INLINE void round_channel(COLOUR_BLOCKS const& blocks, INDEX_SUMS const& sums, V first, V second, V& grid_first,
                              V& grid_second) {
    constexpr float top = channel == 1 ? 63 : 31;
    V const scale = set(top / 255);
    V const mean = blocks.mean[channel];
    V const second_squared = sums.weight_squared;
    V const cross = hn::Sub(sums.weight, sums.weight_squared);
    V const first_squared = hn::Sub(hn::Sub(blocks.opaque_count, sums.weight), cross);
    V const twice_texels = hn::Add(sums.weighted_texels[channel], sums.weighted_texels[channel]);
    V const twice_cross = hn::Add(cross, cross);

    V firsts[2], seconds[2], first_values[2], second_values[2], first_errors[2], second_errors[2];
    firsts[0] = round_to_nearest(hn::Sub(hn::Mul(hn::Add(first, mean), scale), set(0.5f)));
    seconds[0] = round_to_nearest(hn::Sub(hn::Mul(hn::Add(second, mean), scale), set(0.5f)));
    firsts[1] = hn::Add(firsts[0], set(1));
    seconds[1] = hn::Add(seconds[0], set(1));
    for (int i = 0; i < 2; ++i) {
        firsts[i] = clamp(firsts[i], set(0), set(top));
        seconds[i] = clamp(seconds[i], set(0), set(top));
        first_values[i] = hn::Sub(widen<channel>(firsts[i]), mean);
        second_values[i] = hn::Sub(widen<channel>(seconds[i]), mean);
        // The texels are relative to their mean, so what the first endpoint gets is minus what the second gets.
        first_errors[i] = hn::Mul(first_values[i], hn::Add(hn::Mul(first_values[i], first_squared), twice_texels));
        second_errors[i] = hn::Mul(second_values[i], hn::Sub(hn::Mul(second_values[i], second_squared), twice_texels));
    }
    V best = set(1e30f);
    grid_first = firsts[0];
    grid_second = seconds[0];
    for (int i = 0; i < 2; ++i) {
        V const slope = hn::Mul(twice_cross, first_values[i]);
        for (int j = 0; j < 2; ++j) {
            V const error = hn::Add(hn::Add(first_errors[i], second_errors[j]), hn::Mul(slope, second_values[j]));
            M const better = hn::Lt(error, best);
            best = hn::IfThenElse(better, error, best);
            grid_first = hn::IfThenElse(better, firsts[i], grid_first);
            grid_second = hn::IfThenElse(better, seconds[j], grid_second);
        }
    }
}

/// Endpoints fitted to the indices that `sums` came from. Where all indices are equal, any line through the texels'
/// mean would do: both endpoints become the mean.
HWY_NOINLINE void fit_endpoints(COLOUR_BLOCKS const& blocks, INDEX_SUMS const& sums, ENDPOINTS& fitted) {
    V const determinant = hn::Sub(hn::Mul(blocks.opaque_count, sums.weight_squared), square(sums.weight));
    M const solvable = hn::Gt(determinant, set(1e-3f));
    V const scale = hn::IfThenElseZero(solvable, hn::Div(set(1), hn::Max(determinant, set(1e-3f))));
    V const first_scale = hn::Neg(hn::Mul(sums.weight, scale));
    V const second_scale = hn::Mul(hn::Sub(blocks.opaque_count, sums.weight), scale);
    V first[3], second[3];
    for (int c = 0; c < 3; ++c) {
        first[c] = hn::Mul(sums.weighted_texels[c], first_scale);
        second[c] = hn::Mul(sums.weighted_texels[c], second_scale);
        // Far outside 0 … 255 the rounding trick would fail; no such endpoint survives the clamp to the grid anyway.
        first[c] = clamp(first[c], set(-512), set(512));
        second[c] = clamp(second[c], set(-512), set(512));
    }
    round_channel<0>(blocks, sums, first[0], second[0], fitted.first[0], fitted.second[0]);
    round_channel<1>(blocks, sums, first[1], second[1], fitted.first[1], fitted.second[1]);
    round_channel<2>(blocks, sums, first[2], second[2], fitted.first[2], fitted.second[2]);
}

/// At most `rounds` times: indices for the best endpoints, endpoints for those indices. A block is done at the first
/// round that does not help it, however long others in its vector go on.
template <bool with_alpha>
HWY_NOINLINE void refine_by_least_squares(COLOUR_BLOCKS const& blocks, int rounds, COLOUR_FIT& best) {
    INDEX_SUMS sums;
    evaluate<with_alpha>(blocks, best.endpoints, best.steps, sums);
    M active = hn::Ge(blocks.spread, set(0));
    for (int round = 0; round < rounds; ++round) {
        ENDPOINTS candidate;
        fit_endpoints(blocks, sums, candidate);
        V const error = evaluate<with_alpha>(blocks, candidate, best.steps, sums);
        active = hn::And(active, hn::Lt(error, best.error));
        keep_better(active, candidate, error, best);
        if (hn::AllFalse(D(), active)) {
            break;
        }
    }
}

/// At most `rounds` times: in every channel one endpoint or both up or down by one, each change kept where
/// it helps. A round that did not help a block would not help it a second time, so going on for the sake of others
/// changes nothing. `rounded`: errors are those of a palette that is rounded to whole numbers.
template <bool with_alpha, bool rounded>
HWY_NOINLINE void refine_by_neighbours(COLOUR_BLOCKS const& blocks, int rounds, COLOUR_FIT& best) {
    constexpr float moves[8][2] = {{-1, 0}, {1, 0}, {0, -1}, {0, 1}, {-1, 1}, {1, -1}, {1, 1}, {-1, -1}};
    if constexpr (rounded) {
        best.error = evaluate_rounded<with_alpha>(blocks, best.endpoints, best.steps);
    }
    for (int round = 0; round < rounds; ++round) {
        V const before = best.error;
        for (int c = 0; c < 3; ++c) {
            for (auto const& move : moves) {
                ENDPOINTS candidate = best.endpoints;
                V const top = set(grid_top[c]);
                candidate.first[c] = clamp(hn::Add(candidate.first[c], set(move[0])), set(0), top);
                candidate.second[c] = clamp(hn::Add(candidate.second[c], set(move[1])), set(0), top);
                if constexpr (rounded) {
                    V const error = evaluate_rounded<with_alpha>(blocks, candidate, best.steps);
                    keep_better(hn::Lt(error, best.error), candidate, error, best);
                } else {
                    try_endpoints<with_alpha>(blocks, candidate, best);
                }
            }
        }
        if (hn::AllFalse(D(), hn::Lt(best.error, before))) {
            break;
        }
    }
}

}  // namespace HWY_NAMESPACE
}  // namespace blocks
HWY_AFTER_NAMESPACE();

#endif
