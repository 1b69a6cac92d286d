// Which search strategies a block goes through at each effort. fast: range fit and least squares. normal: also cluster
// fit over the likely cuts, palettes of three colours, and the neighbours. best: all cuts, and those of a second axis.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "blocks/encode_bc1.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

#include "blocks/bc1_single_colour.hpp"
#include "blocks/channel_weights.hpp"
#include "blocks/encode_bc1.hpp"
#include "blocks/encode_bc1_cluster_fit-inl.hpp"
#include "blocks/encode_bc1_range_fit-inl.hpp"
#include "blocks/encode_bc1_refine-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace blocks {
namespace HWY_NAMESPACE {

HWY_INLINE void load_blocks(std::uint32_t const (&texels)[16][batch_blocks], std::size_t lane,
                            BC1_SETTINGS const& settings, COLOUR_BLOCKS& blocks) {
    auto const threshold = hn::Set(DI(), static_cast<std::int32_t>(settings.alpha_threshold));
    CHANNEL_WEIGHTS const weights = channel_weights(settings.perceptual);
    blocks.opaque_count = set(0);
    for (V& sum : blocks.mean) {
        sum = set(0);
    }
    for (int i = 0; i < 16; ++i) {
        auto const packed = hn::Load(DU(), &texels[i][lane]);
        auto const alpha = hn::BitCast(DI(), hn::ShiftRight<24>(packed));
        M const is_opaque = hn::RebindMask(D(), hn::Not(hn::Lt(alpha, threshold)));
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
        blocks.channel_weight[c] = weights.weight[c];
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
        hn::Store(hn::ConvertTo(DI(), round_to_nearest(blocks.mean[c])), DI(), values);
        GRID_PAIR const(&pairs)[256] = c == 1 ? table.six_bits : table.five_bits;
        for (std::size_t lane = 0; lane < hn::Lanes(D()); ++lane) {
            first[lane] = pairs[values[lane]].first;
            second[lane] = pairs[values[lane]].second;
        }
        endpoints.first[c] = hn::Load(D(), first);
        endpoints.second[c] = hn::Load(D(), second);
    }
    return endpoints;
}

/// The table's endpoints: nearly always the best for blocks of one colour, and often for those of nearly one.
template <bool with_alpha>
HWY_INLINE void try_single_colour(COLOUR_BLOCKS const& blocks, SINGLE_COLOUR_TABLE const& table, COLOUR_FIT& best) {
    try_endpoints<with_alpha>(blocks, single_colour(blocks, table), best);
}

/// A cluster fit and its refinement.
template <int steps>
HWY_INLINE void try_clusters(COLOUR_BLOCKS const& blocks, PREFIX_SUMS const& sums, EFFORT effort, COLOUR_FIT& best) {
    ENDPOINTS candidate;
    cluster_fit<steps>(blocks, sums, bc1_cuts(steps + 1, effort == EFFORT::best), best, candidate);
    try_endpoints<false>(blocks, candidate, best);
    refine_by_least_squares<false>(blocks, effort == EFFORT::best ? 4 : 1, best);
}

/// The direction of a fit in texel space.
HWY_INLINE void direction_of(COLOUR_FIT const& fit, V (&axis)[3]) {
    for (int c = 0; c < 3; ++c) {
        axis[c] = hn::Mul(hn::Sub(fit.endpoints.second[c], fit.endpoints.first[c]), set(grid_top[1] / grid_top[c]));
    }
}

/// The best palette of `steps` + 1 colours. `sums` are those of the texels in the order of `axis`; fast goes without.
template <int steps>
HWY_INLINE COLOUR_FIT fit_palette(COLOUR_BLOCKS const& blocks, V const (&axis)[3], PREFIX_SUMS const* sums,
                                  EFFORT effort) {
    COLOUR_FIT best = no_fit(steps);
    try_endpoints<false>(blocks, range_fit(blocks, axis, 1.0f / 32), best);
    refine_by_least_squares<false>(blocks, effort == EFFORT::fast ? 1 : 2, best);
    try_single_colour<false>(blocks, steps == 3 ? single_colour_of_four : single_colour_of_three, best);
    if (effort != EFFORT::fast) {
        try_clusters<steps>(blocks, *sums, effort, best);
    }
    if (effort == EFFORT::best) {
        // The texels may be in another order along the line that was found than along the principal axis.
        V found_axis[3];
        direction_of(best, found_axis);
        PREFIX_SUMS found_sums;
        sum_prefixes(blocks, found_axis, found_sums);
        try_clusters<steps>(blocks, found_sums, effort, best);
    }
    return best;
}

/// The last search, over the neighbourhood of what the others have found.
template <bool with_alpha>
HWY_INLINE void refine_in_the_end(COLOUR_BLOCKS const& blocks, EFFORT effort, COLOUR_FIT& best) {
    if (effort != EFFORT::fast) {
        refine_by_neighbours<with_alpha, false>(blocks, 2, best);
    }
    if (effort == EFFORT::best) {
        refine_by_neighbours<with_alpha, true>(blocks, 8, best);
    }
}

HWY_INLINE COLOUR_FIT fit_opaque(COLOUR_BLOCKS const& blocks, V const (&axis)[3], BC1_SETTINGS const& settings) {
    EFFORT const effort = settings.effort;
    if (effort == EFFORT::fast) {
        return fit_palette<3>(blocks, axis, nullptr, effort);
    }
    PREFIX_SUMS sums;
    sum_prefixes(blocks, axis, sums);
    COLOUR_FIT best = fit_palette<3>(blocks, axis, &sums, effort);
    if (effort == EFFORT::best) {
        refine_in_the_end<false>(blocks, effort, best);
    }
    if (settings.may_have_three_colours) {
        COLOUR_FIT three = fit_palette<2>(blocks, axis, &sums, effort);
        if (effort == EFFORT::best) {
            refine_in_the_end<false>(blocks, effort, three);
        }
        M const better = hn::Lt(three.error, best.error);
        keep_better(better, three.endpoints, three.error, best);
        best.steps.count = hn::IfThenElse(better, three.steps.count, best.steps.count);
        best.steps.reciprocal = hn::IfThenElse(better, three.steps.reciprocal, best.steps.reciprocal);
    }
    if (effort == EFFORT::normal) {
        refine_in_the_end<false>(blocks, effort, best);
    }
    return best;
}

/// Blocks with transparent texels have three colours.
HWY_INLINE COLOUR_FIT fit_transparent(COLOUR_BLOCKS const& blocks, V const (&axis)[3], EFFORT effort) {
    COLOUR_FIT best = no_fit(2);
    try_single_colour<true>(blocks, single_colour_of_three, best);
    for (float const inset : {0.0f, 1.0f / 16, 1.0f / 8}) {
        COLOUR_FIT fit = no_fit(2);
        try_endpoints<true>(blocks, range_fit(blocks, axis, inset), fit);
        refine_by_least_squares<true>(blocks, effort == EFFORT::fast ? 1 : 3, fit);
        keep_better(hn::Lt(fit.error, best.error), fit.endpoints, fit.error, best);
        if (effort == EFFORT::fast) {
            break;
        }
    }
    for (int round = 0; round < (effort == EFFORT::fast ? 0 : effort == EFFORT::normal ? 2 : 3); ++round) {
        V order[3] = {axis[0], axis[1], axis[2]};
        if (round > 0) {
            direction_of(best, order);
        }
        PREFIX_SUMS sums;
        sum_prefixes(blocks, order, sums);
        ENDPOINTS candidate;
        cluster_fit_opaque_part(blocks, sums, best, candidate);
        try_endpoints<true>(blocks, candidate, best);
        refine_by_least_squares<true>(blocks, 2, best);
    }
    refine_in_the_end<true>(blocks, effort, best);
    return best;
}

/// Endpoints as the format stores them, 5:6:5 bits.
HWY_INLINE VI pack_565(V const (&grid)[3]) {
    V const packed = hn::Add(hn::Add(hn::Mul(grid[0], set(2048)), hn::Mul(grid[1], set(32))), grid[2]);
    return hn::ConvertTo(DI(), packed);
}

struct PACKED_COLOURS {
    VI colours;
    VI indices;
};

/// The order of the stored colours chooses the kind of palette; equal ones always mean three colours, of which every
/// index but the transparent one is right then.
template <bool with_alpha>
HWY_NOINLINE void pack(COLOUR_BLOCKS const& blocks, COLOUR_FIT const& fit, PACKED_COLOURS& packed) {
    VI const first = pack_565(fit.endpoints.first);
    VI const second = pack_565(fit.endpoints.second);
    VI const low = hn::Min(first, second);
    VI const high = hn::Max(first, second);
    auto const has_four = hn::RebindMask(DI(), hn::Eq(fit.steps.count, set(3)));
    VI const stored_first = hn::IfThenElse(has_four, high, low);
    VI const stored_second = hn::IfThenElse(has_four, low, high);
    packed.colours = hn::Or(stored_first, hn::ShiftLeft<16>(stored_second));
    M const in_order = hn::RebindMask(D(), hn::Eq(first, stored_first));
    M const equal = hn::RebindMask(D(), hn::Eq(first, second));
    LINE const line = line_between(blocks, fit.endpoints, fit.steps);
    VI const one = hn::Set(DI(), 1);
    packed.indices = hn::Set(DI(), 0);
    for (int i = 15; i >= 0; --i) {
        V const on_line = index_on(line, fit.steps, blocks.texels[i]);
        V const turned = hn::IfThenElse(in_order, on_line, hn::Sub(fit.steps.count, on_line));
        VI const n = hn::ConvertTo(DI(), hn::IfThenZeroElse(equal, turned));
        // From the order along the line to the format's: 0 2 3 1 for four colours, 0 2 1 for three.
        VI const half = hn::ShiftRight<1>(n);
        VI const inner = hn::And(hn::Xor(n, hn::IfThenElseZero(has_four, half)), one);
        VI index = hn::Or(half, hn::ShiftLeft<1>(inner));
        if constexpr (with_alpha) {
            auto const transparent = hn::RebindMask(DI(), hn::Eq(blocks.opaque[i], set(0)));
            index = hn::IfThenElse(transparent, hn::Set(DI(), 3), index);
        }
        packed.indices = hn::Or(hn::ShiftLeft<2>(packed.indices), index);
    }
}

/// Blocks with at least one transparent texel.
HWY_INLINE M with_transparent_texels(COLOUR_BLOCKS const& blocks) {
    V least = blocks.opaque[0];
    for (V const opaque : blocks.opaque) {
        least = hn::Min(least, opaque);
    }
    return hn::Eq(least, set(0));
}

void encode_bc1_batch(BLOCK_BATCH const& batch, BC1_SETTINGS const& settings, std::uint64_t (&out)[batch_blocks]) {
    std::size_t const lanes = hn::Lanes(D());
    for (std::size_t lane = 0; lane < batch_blocks; lane += lanes) {
        COLOUR_BLOCKS blocks;
        load_blocks(batch.texels, lane, settings, blocks);
        V axis[3];
        principal_axis(blocks, settings.effort == EFFORT::fast ? 4 : 8, axis);
        PACKED_COLOURS packed;
        pack<false>(blocks, fit_opaque(blocks, axis, settings), packed);
        M const transparent = with_transparent_texels(blocks);
        if (!hn::AllFalse(D(), transparent)) {
            PACKED_COLOURS with_alpha;
            pack<true>(blocks, fit_transparent(blocks, axis, settings.effort), with_alpha);
            auto const chosen = hn::RebindMask(DI(), transparent);
            packed.colours = hn::IfThenElse(chosen, with_alpha.colours, packed.colours);
            packed.indices = hn::IfThenElse(chosen, with_alpha.indices, packed.indices);
        }
        HWY_ALIGN std::uint32_t stored_colours[batch_blocks];
        HWY_ALIGN std::uint32_t stored_indices[batch_blocks];
        hn::Store(hn::BitCast(DU(), packed.colours), DU(), stored_colours);
        hn::Store(hn::BitCast(DU(), packed.indices), DU(), stored_indices);
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
