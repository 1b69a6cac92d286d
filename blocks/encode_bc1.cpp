// Which search strategies a block goes through at each effort. fast: range fit and least squares. normal: also cluster
// fit over all cuts, and palettes of three colours. best: also a second axis and a search of the neighbours.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "blocks/encode_bc1.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "blocks/bc1_single_colour.hpp"
#include "blocks/encode_bc1.hpp"
#include "blocks/encode_bc1_cluster_fit-inl.hpp"
#include "blocks/encode_bc1_range_fit-inl.hpp"
#include "blocks/encode_bc1_refine-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace blocks {
namespace HWY_NAMESPACE {

/// The channels' shares in luma (ITU-R BT.601), scaled to the sum of equal weights.
constexpr float perceptual_weights[3] = {3 * 0.299f, 3 * 0.587f, 3 * 0.114f};

HWY_INLINE void load_blocks(std::uint32_t const (&texels)[16][batch_blocks], std::size_t lane,
                            BC1_SETTINGS const& settings, COLOUR_BLOCKS& blocks) {
    auto const threshold = hn::Set(INTS(), static_cast<std::int32_t>(settings.alpha_threshold));
    blocks.opaque_count = set(0);
    for (V& sum : blocks.mean) {
        sum = set(0);
    }
    for (int i = 0; i < 16; ++i) {
        auto const packed = hn::Load(WORDS(), &texels[i][lane]);
        auto const alpha = hn::BitCast(INTS(), hn::ShiftRight<24>(packed));
        M const is_opaque = hn::RebindMask(FLOATS(), hn::Not(hn::Lt(alpha, threshold)));
        blocks.opaque[i] = hn::IfThenElseZero(is_opaque, set(1));
        blocks.opaque_count = hn::Add(blocks.opaque_count, blocks.opaque[i]);
        blocks.texels[i][0] = hn::IfThenElseZero(is_opaque, unpack_channel<0>(packed));
        blocks.texels[i][1] = hn::IfThenElseZero(is_opaque, unpack_channel<8>(packed));
        blocks.texels[i][2] = hn::IfThenElseZero(is_opaque, unpack_channel<16>(packed));
        for (int c = 0; c < 3; ++c) {
            blocks.mean[c] = hn::Add(blocks.mean[c], blocks.texels[i][c]);
        }
    }
    blocks.opaque_count = hn::Max(blocks.opaque_count, set(1));
    blocks.spread = set(0);
    for (int c = 0; c < 3; ++c) {
        blocks.channel_weight[c] = settings.perceptual ? perceptual_weights[c] : 1.0f;
        blocks.mean[c] = hn::Div(blocks.mean[c], blocks.opaque_count);
        V squares = set(0);
        for (int i = 0; i < 16; ++i) {
            V const centred = hn::Mul(hn::Sub(blocks.texels[i][c], blocks.mean[c]), blocks.opaque[i]);
            blocks.texels[i][c] = centred;
            squares = hn::Add(squares, square(centred));
        }
        blocks.spread = hn::Add(blocks.spread, hn::Mul(squares, set(blocks.channel_weight[c])));
    }
}

/// Endpoints for the mean colour out of a table.
HWY_INLINE ENDPOINTS single_colour(COLOUR_BLOCKS const& blocks, SINGLE_COLOUR_TABLE const& table) {
    ENDPOINTS endpoints;
    for (int c = 0; c < 3; ++c) {
        HWY_ALIGN std::int32_t values[batch_blocks];
        HWY_ALIGN float first[batch_blocks];
        HWY_ALIGN float second[batch_blocks];
        hn::Store(hn::ConvertTo(INTS(), round(blocks.mean[c])), INTS(), values);
        GRID_PAIR const(&pairs)[256] = c == 1 ? table.six_bits : table.five_bits;
        for (std::size_t lane = 0; lane < hn::Lanes(FLOATS()); ++lane) {
            first[lane] = pairs[values[lane]].first;
            second[lane] = pairs[values[lane]].second;
        }
        endpoints.first[c] = hn::Load(FLOATS(), first);
        endpoints.second[c] = hn::Load(FLOATS(), second);
    }
    return endpoints;
}

/// The table's endpoints: nearly always the best for blocks of one colour, and often for those of nearly one.
template <int steps, bool with_alpha>
HWY_INLINE void try_single_colour(COLOUR_BLOCKS const& blocks, FIT& best) {
    SINGLE_COLOUR_TABLE const& table = steps == 3 ? single_colour_of_four : single_colour_of_three;
    try_endpoints<steps, with_alpha>(blocks, single_colour(blocks, table), best);
}

/// A cluster fit and its refinement.
template <int steps>
HWY_INLINE void try_clusters(COLOUR_BLOCKS const& blocks, V const (&axis)[3], EFFORT effort, FIT& best) {
    auto const cuts = bc1_cuts(steps + 1, effort == EFFORT::best);
    try_endpoints<steps, false>(blocks, cluster_fit<steps>(blocks, axis, cuts, best), best);
    refine_by_least_squares<steps, false>(blocks, effort == EFFORT::best ? 4 : 1, best);
}

template <int steps>
HWY_INLINE FIT fit_opaque(COLOUR_BLOCKS const& blocks, V const (&axis)[3], EFFORT effort) {
    FIT best = no_fit();
    try_endpoints<steps, false>(blocks, range_fit(blocks, axis, 1.0f / 32), best);
    refine_by_least_squares<steps, false>(blocks, effort == EFFORT::fast ? 1 : 2, best);
    try_single_colour<steps, false>(blocks, best);
    if (effort != EFFORT::fast) {
        try_clusters<steps>(blocks, axis, effort, best);
    }
    if (effort == EFFORT::best) {
        V found_axis[3];
        for (int c = 0; c < 3; ++c) {
            found_axis[c] = hn::Sub(best.endpoints.second[c], best.endpoints.first[c]);
            if (c != 1) {
                found_axis[c] = hn::Add(found_axis[c], found_axis[c]);
            }
        }
        try_clusters<steps>(blocks, found_axis, effort, best);
    }
    if (effort != EFFORT::fast) {
        refine_by_neighbours<steps, false>(blocks, effort == EFFORT::best ? 4 : 1, best);
    }
    return best;
}

/// Blocks with transparent texels have three colours, and too few lanes have such blocks for cluster fit to pay.
HWY_INLINE FIT fit_transparent(COLOUR_BLOCKS const& blocks, V const (&axis)[3], EFFORT effort) {
    FIT best = no_fit();
    try_single_colour<2, true>(blocks, best);
    for (float const inset : {0.0f, 1.0f / 16, 1.0f / 8}) {
        FIT fit = no_fit();
        try_endpoints<2, true>(blocks, range_fit(blocks, axis, inset), fit);
        refine_by_least_squares<2, true>(blocks, effort == EFFORT::fast ? 1 : 3, fit);
        keep_better(hn::Lt(fit.error, best.error), fit.endpoints, fit.error, best);
        if (effort == EFFORT::fast) {
            break;
        }
    }
    if (effort != EFFORT::fast) {
        refine_by_neighbours<2, true>(blocks, effort == EFFORT::best ? 8 : 1, best);
    }
    return best;
}

/// Endpoints as the format stores them, 5:6:5 bits.
HWY_INLINE hn::Vec<INTS> pack_565(V const (&grid)[3]) {
    V const packed = hn::Add(hn::Add(hn::Mul(grid[0], set(2048)), hn::Mul(grid[1], set(32))), grid[2]);
    return hn::ConvertTo(INTS(), packed);
}

/// Writes the blocks with a palette of `steps` + 1 colours. The order of the stored colours chooses the kind of
/// palette; equal ones always mean three colours, of which every index but the transparent one is right then.
template <int steps, bool with_alpha>
HWY_INLINE void pack(COLOUR_BLOCKS const& blocks, ENDPOINTS const& endpoints, hn::Vec<INTS>& colours,
                     hn::Vec<INTS>& indices) {
    auto const first = pack_565(endpoints.first);
    auto const second = pack_565(endpoints.second);
    auto const low = hn::Min(first, second);
    auto const high = hn::Max(first, second);
    colours = steps == 3 ? hn::Or(high, hn::ShiftLeft<16>(low)) : hn::Or(low, hn::ShiftLeft<16>(high));
    auto const in_order = hn::RebindMask(FLOATS(), steps == 3 ? hn::Eq(first, high) : hn::Eq(first, low));
    M const equal = hn::RebindMask(FLOATS(), hn::Eq(first, second));
    LINE const line = line_between<steps>(blocks, endpoints);
    auto const one = hn::Set(INTS(), 1);
    indices = hn::Set(INTS(), 0);
    for (int i = 15; i >= 0; --i) {
        V const on_line = index_on<steps>(line, blocks.texels[i]);
        V const ordered = hn::IfThenZeroElse(equal, select(in_order, on_line, hn::Sub(set(steps), on_line)));
        auto const n = hn::ConvertTo(INTS(), ordered);
        // From the order along the line to the format's: 0 2 3 1 for four colours, 0 2 1 for three.
        auto const half = hn::ShiftRight<1>(n);
        auto const inner = hn::And(steps == 3 ? hn::Xor(n, half) : n, one);
        auto index = hn::Or(half, hn::ShiftLeft<1>(inner));
        if constexpr (with_alpha) {
            auto const transparent = hn::RebindMask(INTS(), hn::Eq(blocks.opaque[i], set(0)));
            index = hn::IfThenElse(transparent, hn::Set(INTS(), 3), index);
        }
        indices = hn::Or(hn::ShiftLeft<2>(indices), index);
    }
}

void encode_bc1_batch(BLOCK_BATCH const& batch, BC1_SETTINGS const& settings, std::uint64_t (&out)[batch_blocks]) {
    std::size_t const lanes = hn::Lanes(FLOATS());
    for (std::size_t lane = 0; lane < batch_blocks; lane += lanes) {
        COLOUR_BLOCKS blocks;
        load_blocks(batch.texels, lane, settings, blocks);
        V axis[3];
        principal_axis(blocks, settings.effort == EFFORT::fast ? 4 : 8, axis);

        FIT const four = fit_opaque<3>(blocks, axis, settings.effort);
        auto colours = hn::Set(INTS(), 0);
        auto indices = hn::Set(INTS(), 0);
        pack<3, false>(blocks, four.endpoints, colours, indices);
        if (settings.may_have_three_colours && settings.effort != EFFORT::fast) {
            FIT const three = fit_opaque<2>(blocks, axis, settings.effort);
            auto three_colours = hn::Set(INTS(), 0);
            auto three_indices = hn::Set(INTS(), 0);
            pack<2, false>(blocks, three.endpoints, three_colours, three_indices);
            auto const better = hn::RebindMask(INTS(), hn::Lt(three.error, four.error));
            colours = hn::IfThenElse(better, three_colours, colours);
            indices = hn::IfThenElse(better, three_indices, indices);
        }
        if (settings.alpha_threshold != 0) {
            V all_opaque = blocks.opaque[0];
            for (V const opaque : blocks.opaque) {
                all_opaque = hn::Min(all_opaque, opaque);
            }
            M const transparent = hn::Eq(all_opaque, set(0));
            if (!hn::AllFalse(FLOATS(), transparent)) {
                FIT const fit = fit_transparent(blocks, axis, settings.effort);
                auto alpha_colours = hn::Set(INTS(), 0);
                auto alpha_indices = hn::Set(INTS(), 0);
                pack<2, true>(blocks, fit.endpoints, alpha_colours, alpha_indices);
                auto const chosen = hn::RebindMask(INTS(), transparent);
                colours = hn::IfThenElse(chosen, alpha_colours, colours);
                indices = hn::IfThenElse(chosen, alpha_indices, indices);
            }
        }
        HWY_ALIGN std::uint32_t stored_colours[batch_blocks];
        HWY_ALIGN std::uint32_t stored_indices[batch_blocks];
        hn::Store(hn::BitCast(WORDS(), colours), WORDS(), stored_colours);
        hn::Store(hn::BitCast(WORDS(), indices), WORDS(), stored_indices);
        for (std::size_t i = 0; i < lanes; ++i) {
            out[lane + i] = stored_colours[i] | std::uint64_t{stored_indices[i]} << 32;
        }
    }
}

}  // namespace HWY_NAMESPACE
}  // namespace blocks
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace blocks {

HWY_EXPORT(encode_bc1_batch);

void encode_bc1(BLOCK_BATCH const& batch, BC1_SETTINGS const& settings, std::uint64_t (&out)[batch_blocks]) {
    HWY_DYNAMIC_DISPATCH(encode_bc1_batch)(batch, settings, out);
}

}  // namespace blocks
#endif
