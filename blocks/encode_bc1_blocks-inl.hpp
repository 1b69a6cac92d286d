// What every BC1 search strategy works on: the texels of one block a lane, relative to their mean, and the error of a
// pair of endpoints with the best index for every texel.
//
// The palette lies evenly spaced on the line between the endpoints, so the best index of a texel is its projection onto
// that line, rounded. The error then follows in closed form from sums over indices and texels, and the same
// sums are the normal equations of the least-squares fit of new endpoints (S. Brown, "DXT Compression Techniques",
// 2006).
#include "hwy/highway.h"

#include "blocks/batch_lanes-inl.hpp"

#if defined(BLOCKS_ENCODE_BC1_BLOCKS_INL_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef BLOCKS_ENCODE_BC1_BLOCKS_INL_HPP
#undef BLOCKS_ENCODE_BC1_BLOCKS_INL_HPP
#else
#define BLOCKS_ENCODE_BC1_BLOCKS_INL_HPP
#endif

HWY_BEFORE_NAMESPACE();
namespace blocks {
namespace HWY_NAMESPACE {

/// Highest values of the 5:6:5 grid.
constexpr float grid_top[3] = {31, 63, 31};

struct COLOUR_BLOCKS {
    /// Texels minus `mean`; 0 for a transparent texel.
    V texels[16][3];
    V mean[3];
    /// 1 for opaque texels, 0 for transparent ones, and how many are opaque (at least 1, to be divided by).
    V opaque[16];
    V opaque_count;
    /// The weighted sum of squares of `texels`: the error of a block that is all mean.
    V spread;
    /// How much an error in each channel counts.
    float channel_weight[3];
};

/// Endpoints as integers of the 5:6:5 grid.
struct ENDPOINTS {
    V first[3];
    V second[3];
};

/// Sums over the texels of a block for one choice of indices; an index n of `steps` weighs the second endpoint n /
/// steps.
struct INDEX_SUMS {
    V weight;
    V weight_squared;
    V weighted_texels[3];
};

/// Entries of the palette less one, for each block: 3, or 2 where the palette has three colours. The reciprocal is kept
/// with it, because a quotient costs more than all that is made of it.
struct STEPS {
    V count;
    V reciprocal;
};

struct COLOUR_FIT {
    ENDPOINTS endpoints;
    STEPS steps;
    V error;
};

/// The grid value as the decoder widens it, by repeating its top bits: floor(q / 4) or floor(q / 16) is added below.
template <int channel>
HWY_INLINE V widen(V grid) {
    constexpr float top = channel == 1 ? 4 : 8;
    constexpr float repeat = channel == 1 ? 1.0f / 16 : 1.0f / 4;
    V const low = round_to_nearest(hn::Sub(hn::Mul(grid, set(repeat)), set(0.5f - repeat / 2)));
    return hn::Add(hn::Mul(grid, set(top)), low);
}

template <int channel>
HWY_INLINE V to_grid(V value) {
    constexpr float top = channel == 1 ? 63 : 31;
    return clamp(round_to_nearest(hn::Mul(value, set(top / 255))), set(0), set(top));
}

HWY_INLINE void round_to_grid(COLOUR_BLOCKS const& blocks, V const (&first)[3], V const (&second)[3],
                              ENDPOINTS& endpoints) {
    endpoints.first[0] = to_grid<0>(hn::Add(first[0], blocks.mean[0]));
    endpoints.first[1] = to_grid<1>(hn::Add(first[1], blocks.mean[1]));
    endpoints.first[2] = to_grid<2>(hn::Add(first[2], blocks.mean[2]));
    endpoints.second[0] = to_grid<0>(hn::Add(second[0], blocks.mean[0]));
    endpoints.second[1] = to_grid<1>(hn::Add(second[1], blocks.mean[1]));
    endpoints.second[2] = to_grid<2>(hn::Add(second[2], blocks.mean[2]));
}

/// The line between two endpoints, relative to the mean.
struct LINE {
    V start[3];
    V direction[3];
    /// Projection of a texel in steps: the sum of texel · `axis`, minus `offset`.
    V axis[3];
    V offset;
};

HWY_INLINE LINE line_between(COLOUR_BLOCKS const& blocks, ENDPOINTS const& endpoints, STEPS const& steps) {
    LINE line;
    V const start[3] = {widen<0>(endpoints.first[0]), widen<1>(endpoints.first[1]), widen<2>(endpoints.first[2])};
    V const end[3] = {widen<0>(endpoints.second[0]), widen<1>(endpoints.second[1]), widen<2>(endpoints.second[2])};
    V length_squared = set(0);
    for (int c = 0; c < 3; ++c) {
        line.start[c] = hn::Sub(start[c], blocks.mean[c]);
        line.direction[c] = hn::Sub(end[c], start[c]);
        line.axis[c] = hn::Mul(line.direction[c], set(blocks.channel_weight[c]));
        length_squared = hn::Add(length_squared, hn::Mul(line.axis[c], line.direction[c]));
    }
    // Equal endpoints: every projection becomes 0, and so does every index.
    V const scale = hn::Div(steps.count, hn::Max(length_squared, set(0x1p-20f)));
    line.offset = set(0);
    for (int c = 0; c < 3; ++c) {
        line.axis[c] = hn::Mul(line.axis[c], scale);
        line.offset = hn::Add(line.offset, hn::Mul(line.axis[c], line.start[c]));
    }
    return line;
}

HWY_INLINE V index_on(LINE const& line, STEPS const& steps, V const (&texel)[3]) {
    V const projection = hn::Add(hn::Add(hn::Mul(texel[0], line.axis[0]), hn::Mul(texel[1], line.axis[1])),
                                 hn::Mul(texel[2], line.axis[2]));
    return clamp(round_to_nearest(hn::Sub(projection, line.offset)), set(0), steps.count);
}

/// The error of a block with these endpoints and the best indices, and the sums for those indices. Out of line: it is
/// called from many places, and long enough for the call not to matter.
template <bool with_alpha>
HWY_NOINLINE V evaluate(COLOUR_BLOCKS const& blocks, ENDPOINTS const& endpoints, STEPS const& steps, INDEX_SUMS& sums) {
    LINE const line = line_between(blocks, endpoints, steps);
    sums.weight = sums.weight_squared = set(0);
    for (V& sum : sums.weighted_texels) {
        sum = set(0);
    }
    for (int i = 0; i < 16; ++i) {
        V index = index_on(line, steps, blocks.texels[i]);
        if constexpr (with_alpha) {
            index = hn::Mul(index, blocks.opaque[i]);
        }
        sums.weight = hn::Add(sums.weight, index);
        sums.weight_squared = hn::Add(sums.weight_squared, hn::Mul(index, index));
        for (int c = 0; c < 3; ++c) {
            sums.weighted_texels[c] = hn::Add(sums.weighted_texels[c], hn::Mul(index, blocks.texels[i][c]));
        }
    }
    sums.weight = hn::Mul(sums.weight, steps.reciprocal);
    sums.weight_squared = hn::Mul(hn::Mul(sums.weight_squared, steps.reciprocal), steps.reciprocal);
    V error = blocks.spread;
    V const twice_weight = hn::Add(sums.weight, sums.weight);
    for (int c = 0; c < 3; ++c) {
        sums.weighted_texels[c] = hn::Mul(sums.weighted_texels[c], steps.reciprocal);
        V const twice_texels = hn::Add(sums.weighted_texels[c], sums.weighted_texels[c]);
        V const start = line.start[c];
        V const direction = line.direction[c];
        V const constant = hn::Mul(hn::Mul(start, start), blocks.opaque_count);
        V const linear = hn::Sub(hn::Mul(start, twice_weight), twice_texels);
        V const quadratic = hn::Mul(direction, sums.weight_squared);
        V const channel = hn::Add(constant, hn::Mul(direction, hn::Add(linear, quadratic)));
        error = hn::Add(error, hn::Mul(channel, set(blocks.channel_weight[c])));
    }
    return error;
}

/// One channel's share of the exact error, for palettes that are rounded to whole numbers, halves up.
template <int channel>
HWY_INLINE V rounded_difference(COLOUR_BLOCKS const& blocks, LINE const& line, V step, V index, int texel) {
    V const start = hn::Add(line.start[channel], blocks.mean[channel]);
    V const value = hn::Floor(hn::Add(hn::Add(start, hn::Mul(step, index)), set(0.5f + 0x1p-10f)));
    return hn::Sub(hn::Sub(value, blocks.mean[channel]), blocks.texels[texel][channel]);
}

/// The same error as `evaluate` gives, but for the palette as most decoders round it.
template <bool with_alpha>
HWY_NOINLINE V evaluate_rounded(COLOUR_BLOCKS const& blocks, ENDPOINTS const& endpoints, STEPS const& steps) {
    LINE const line = line_between(blocks, endpoints, steps);
    V step[3], sum[3];
    for (int c = 0; c < 3; ++c) {
        step[c] = hn::Mul(line.direction[c], steps.reciprocal);
        sum[c] = set(0);
    }
    for (int i = 0; i < 16; ++i) {
        V const index = index_on(line, steps, blocks.texels[i]);
        V difference[3] = {rounded_difference<0>(blocks, line, step[0], index, i),
                           rounded_difference<1>(blocks, line, step[1], index, i),
                           rounded_difference<2>(blocks, line, step[2], index, i)};
        for (int c = 0; c < 3; ++c) {
            if constexpr (with_alpha) {
                difference[c] = hn::Mul(difference[c], blocks.opaque[i]);
            }
            sum[c] = hn::Add(sum[c], square(difference[c]));
        }
    }
    V error = set(0);
    for (int c = 0; c < 3; ++c) {
        error = hn::Add(error, hn::Mul(sum[c], set(blocks.channel_weight[c])));
    }
    return error;
}

HWY_INLINE void keep_better(M better, ENDPOINTS const& candidate, V error, COLOUR_FIT& best) {
    for (int c = 0; c < 3; ++c) {
        best.endpoints.first[c] = hn::IfThenElse(better, candidate.first[c], best.endpoints.first[c]);
        best.endpoints.second[c] = hn::IfThenElse(better, candidate.second[c], best.endpoints.second[c]);
    }
    best.error = hn::IfThenElse(better, error, best.error);
}

/// Takes the candidate over where its error is less.
template <bool with_alpha>
HWY_INLINE void try_endpoints(COLOUR_BLOCKS const& blocks, ENDPOINTS const& candidate, COLOUR_FIT& best) {
    INDEX_SUMS sums;
    V const error = evaluate<with_alpha>(blocks, candidate, best.steps, sums);
    keep_better(hn::Lt(error, best.error), candidate, error, best);
}

/// The place for the first candidate with a palette of `steps` + 1 colours.
HWY_INLINE COLOUR_FIT no_fit(float steps) {
    COLOUR_FIT fit;
    for (int c = 0; c < 3; ++c) {
        fit.endpoints.first[c] = fit.endpoints.second[c] = set(0);
    }
    fit.steps = {set(steps), set(1 / steps)};
    fit.error = set(1e30f);
    return fit;
}

}  // namespace HWY_NAMESPACE
}  // namespace blocks
HWY_AFTER_NAMESPACE();

#endif
