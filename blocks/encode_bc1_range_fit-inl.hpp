// Range fit: the endpoints are the outermost texels along the principal axis of the block's colours. Quick, and a good
// start for least squares.
#include <hwy/highway.h>

#include "blocks/encode_bc1_blocks-inl.hpp"

#if defined(BLOCKS_ENCODE_BC1_RANGE_FIT_INL_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef BLOCKS_ENCODE_BC1_RANGE_FIT_INL_HPP
#undef BLOCKS_ENCODE_BC1_RANGE_FIT_INL_HPP
#else
#define BLOCKS_ENCODE_BC1_RANGE_FIT_INL_HPP
#endif

HWY_BEFORE_NAMESPACE();
namespace blocks {
namespace HWY_NAMESPACE {

/// The direction in which the texels of each block are spread most, by power iteration on their covariance, the
/// channels scaled by the square roots of their weights. Zero for a block of one colour.
HWY_INLINE void principal_axis(COLOUR_BLOCKS const& blocks, int iterations, V (&axis)[3]) {
    V rr = set(0), rg = set(0), rb = set(0), gg = set(0), gb = set(0), bb = set(0);
    for (auto const& texel : blocks.texels) {
        rr = hn::Add(rr, hn::Mul(texel[0], texel[0]));
        rg = hn::Add(rg, hn::Mul(texel[0], texel[1]));
        rb = hn::Add(rb, hn::Mul(texel[0], texel[2]));
        gg = hn::Add(gg, hn::Mul(texel[1], texel[1]));
        gb = hn::Add(gb, hn::Mul(texel[1], texel[2]));
        bb = hn::Add(bb, hn::Mul(texel[2], texel[2]));
    }
    // Rows times weights: the matrix of the weighted problem in a form whose eigenvector is the axis in texel space.
    V const red_weight = set(blocks.channel_weight[0]);
    V const green_weight = set(blocks.channel_weight[1]);
    V const blue_weight = set(blocks.channel_weight[2]);
    M const green_widest = hn::And(hn::Gt(gg, rr), hn::Ge(gg, bb));
    M const blue_widest = hn::And(hn::Gt(bb, rr), hn::Gt(bb, gg));
    axis[0] = select(green_widest, rg, select(blue_widest, rb, rr));
    axis[1] = select(green_widest, gg, select(blue_widest, gb, rg));
    axis[2] = select(green_widest, gb, select(blue_widest, bb, rb));
    for (int i = 0; i < iterations; ++i) {
        V const largest = hn::Max(hn::Max(hn::Abs(axis[0]), hn::Abs(axis[1])), hn::Abs(axis[2]));
        V const scale = hn::Div(set(1), hn::Max(largest, set(1e-12f)));
        V const r = hn::Mul(hn::Mul(axis[0], scale), red_weight);
        V const g = hn::Mul(hn::Mul(axis[1], scale), green_weight);
        V const b = hn::Mul(hn::Mul(axis[2], scale), blue_weight);
        axis[0] = hn::Add(hn::Add(hn::Mul(rr, r), hn::Mul(rg, g)), hn::Mul(rb, b));
        axis[1] = hn::Add(hn::Add(hn::Mul(rg, r), hn::Mul(gg, g)), hn::Mul(gb, b));
        axis[2] = hn::Add(hn::Add(hn::Mul(rb, r), hn::Mul(gb, g)), hn::Mul(bb, b));
    }
    V const largest = hn::Max(hn::Max(hn::Abs(axis[0]), hn::Abs(axis[1])), hn::Abs(axis[2]));
    V const scale = hn::Div(set(1), hn::Max(largest, set(1e-12f)));
    for (V& component : axis) {
        component = hn::Mul(component, scale);
    }
}

/// Where a texel lies along `axis`, in the metric of the channel weights.
HWY_INLINE V along_axis(COLOUR_BLOCKS const& blocks, V const (&texel)[3], V const (&axis)[3]) {
    V const r = hn::Mul(hn::Mul(texel[0], axis[0]), set(blocks.channel_weight[0]));
    V const g = hn::Mul(hn::Mul(texel[1], axis[1]), set(blocks.channel_weight[1]));
    V const b = hn::Mul(hn::Mul(texel[2], axis[2]), set(blocks.channel_weight[2]));
    return hn::Add(hn::Add(r, g), b);
}

/// The two ends of the texels' shadow on the axis, brought in by `inset` of their distance, as grid colours.
/// Transparent texels stand at the mean and so never lie outside.
HWY_INLINE ENDPOINTS range_fit(COLOUR_BLOCKS const& blocks, V const (&axis)[3], float inset) {
    V lowest = set(0), highest = set(0);
    for (auto const& texel : blocks.texels) {
        V const position = along_axis(blocks, texel, axis);
        lowest = hn::Min(lowest, position);
        highest = hn::Max(highest, position);
    }
    V const length_squared = along_axis(blocks, axis, axis);
    V const scale = hn::Div(set(1), hn::Max(length_squared, set(1e-12f)));
    V const distance = hn::Mul(hn::Sub(highest, lowest), set(inset));
    lowest = hn::Mul(hn::Add(lowest, distance), scale);
    highest = hn::Mul(hn::Sub(highest, distance), scale);
    V first[3], second[3];
    for (int c = 0; c < 3; ++c) {
        first[c] = hn::Mul(axis[c], lowest);
        second[c] = hn::Mul(axis[c], highest);
    }
    ENDPOINTS endpoints;
    round_to_grid(blocks, first, second, endpoints);
    return endpoints;
}

}  // namespace HWY_NAMESPACE
}  // namespace blocks
HWY_AFTER_NAMESPACE();

#endif
