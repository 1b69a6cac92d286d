// BC7 encoding: sorts blocks into solid, opaque, transparent and translucent ones, fills the lanes of a group with
// blocks of one kind and turns what the search has chosen into bits.
//
// Estimating partitions before fitting any follows P. Krajcevski, A. Lake and D. Manocha, "FasTC: Accelerated
// Fixed-Rate Texture Encoding" (2013); solving endpoints by least squares follows I. Castaño, "High Quality DXT
// Compression using CUDA" (2007).
#include "blocks/encode_bc7.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

#include "blocks/bc7_code.hpp"
#include "blocks/bc7_search.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "blocks/encode_bc7.cpp"
#include "hwy/foreach_target.h"

#include "blocks/bc7_modes-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace blocks::HWY_NAMESPACE {

/// Blocks that wait for a lane, and where their codes go.
struct BC7_GROUP {
    TEXELS texels;
    std::uint8_t* out[max_lanes];
    std::size_t count = 0;

    void add(std::uint8_t const (&rgba)[16][4], std::uint8_t* code) {
        for (std::size_t t = 0; t < 16; ++t)
            for (std::size_t channel = 0; channel < 4; ++channel)
                texels.value[channel][t][count] = rgba[t][channel];
        out[count++] = code;
    }

    /// Empty lanes take a copy of the first block.
    void fill_up() {
        for (auto& channel : texels.value)
            for (auto& texel : channel)
                std::fill(texel + count, texel + lane_count, texel[0]);
    }
};

/// Finds the indices that go with the chosen endpoints, plane by plane, and writes the blocks.
void write_group(BC7_GROUP const& group, CHANNEL_WEIGHTS const& weights, BC7_CHOICE const& choice) {
    BC7_CODE code[max_lanes];
    auto const each_lane = [](V v, auto&& put) {
        alignas(64) float lanes[max_lanes];
        hn::Store(v, D(), lanes);
        for (std::size_t lane = 0; lane < lane_count; ++lane)
            put(lane, static_cast<std::uint8_t>(lanes[lane]));
    };
    each_lane(choice.mode, [&](std::size_t lane, std::uint8_t v) { code[lane].mode = v; });
    each_lane(choice.partition, [&](std::size_t lane, std::uint8_t v) { code[lane].partition = v; });
    each_lane(choice.rotation, [&](std::size_t lane, std::uint8_t v) { code[lane].rotation = v; });
    each_lane(choice.index_selection, [&](std::size_t lane, std::uint8_t v) { code[lane].index_selection = v; });
    for (std::size_t s = 0; s < 3; ++s)
        for (std::size_t e = 0; e < 2; ++e)
            for (std::size_t c = 0; c < 4; ++c)
                each_lane(choice.end[s][e][c], [&](std::size_t lane, std::uint8_t v) { code[lane].end[s][e][c] = v; });

    alignas(64) std::uint32_t second[max_lanes], third[max_lanes];
    alignas(64) float colour_last[max_lanes], alpha_last[max_lanes], alpha_in_colour[max_lanes];
    for (std::size_t lane = 0; lane < lane_count; ++lane) {
        BC7_CODE const& c = code[lane];
        BC7_MODE const& mode = bc7_modes[c.mode];
        second[lane] = mode.subsets == 2 ? two_subsets_second[c.partition]
                                         : (mode.subsets == 3 ? three_subsets_second[c.partition] : 0u);
        third[lane] = mode.subsets == 3 ? three_subsets_third[c.partition] : 0u;
        bool const two_planes = mode.second_index_bits != 0;
        std::uint32_t const colour_bits = c.index_selection ? mode.second_index_bits : mode.index_bits;
        std::uint32_t const alpha_bits = c.index_selection ? mode.index_bits : mode.second_index_bits;
        colour_last[lane] = static_cast<float>((1u << colour_bits) - 1);
        alpha_last[lane] = two_planes ? static_cast<float>((1u << alpha_bits) - 1) : 1.0f;
        alpha_in_colour[lane] = two_planes ? 0.0f : weights.weight[3];
    }

    V colour_weight[4], lone_weight[1];
    M rotated[3];
    lone_weight[0] = set(weights.weight[3]);
    for (std::size_t c = 0; c < 3; ++c) {
        rotated[c] = hn::Eq(choice.rotation, set(static_cast<float>(c + 1)));
        colour_weight[c] = hn::IfThenElse(rotated[c], set(weights.weight[3]), set(weights.weight[c]));
        lone_weight[0] = hn::IfThenElse(rotated[c], set(weights.weight[c]), lone_weight[0]);
    }
    colour_weight[3] = hn::Load(D(), alpha_in_colour);

    TEXEL_SET const in_second{hn::Load(DU(), second)}, in_third{hn::Load(DU(), third)};
    for (std::size_t t = 0; t < 16; ++t) {
        V texel[4];
        texel[3] = group.texels.load(3, t);
        V const alpha = texel[3];
        for (std::size_t c = 0; c < 3; ++c) {
            V const own = group.texels.load(c, t);
            texel[c] = hn::IfThenElse(rotated[c], alpha, own);
            texel[3] = hn::IfThenElse(rotated[c], own, texel[3]);
        }
        M const is_second = in_second.has(t), is_third = in_third.has(t);
        ENDS<4> ends;
        for (std::size_t c = 0; c < 4; ++c) {
            auto const pick = [&](std::size_t e) {
                V const two = hn::IfThenElse(is_second, choice.end[1][e][c], choice.end[0][e][c]);
                return hn::IfThenElse(is_third, choice.end[2][e][c], two);
            };
            ends.a[c] = pick(0);
            ends.b[c] = pick(1);
        }
        V difference[4];
        for (std::size_t c = 0; c < 4; ++c)
            difference[c] = hn::Sub(texel[c], ends.a[c]);
        RAMP<4> const colour(ends, colour_weight, hn::Load(D(), colour_last));
        each_lane(colour.index(difference), [&](std::size_t lane, std::uint8_t v) { code[lane].colour_index[t] = v; });

        ENDS<1> const lone_ends{{ends.a[3]}, {ends.b[3]}};
        V const lone_difference[1] = {difference[3]};
        RAMP<1> const lone(lone_ends, lone_weight, hn::Load(D(), alpha_last));
        each_lane(lone.index(lone_difference),
                  [&](std::size_t lane, std::uint8_t v) { code[lane].alpha_index[t] = v; });
    }
    for (std::size_t lane = 0; lane < group.count; ++lane)
        write_bc7(code[lane], group.out[lane]);
}

void encode_group(BC7_GROUP& group, CHANNEL_WEIGHTS const& weights, BC7_SEARCH const& search,
                  void (*search_modes)(BC7_TRIAL const&)) {
    if (group.count == 0)
        return;
    group.fill_up();
    BC7_CHOICE choice;
    search_modes(BC7_TRIAL{group.texels, weights, search, choice});
    write_group(group, weights, choice);
    group.count = 0;
}

void encode_rows(RGBA8_VIEW const& view, ENCODE_OPTIONS const& options, std::uint32_t first_block_row,
                 std::uint32_t block_row_count, std::uint8_t* out) {
    BC7_SEARCH const search = bc7_search(options.effort);
    CHANNEL_WEIGHTS const weights = channel_weights(options.perceptual);
    struct KIND {
        void (*search_modes)(BC7_TRIAL const&);
        BC7_GROUP group;
    };
    KIND opaque{&search_opaque, {}}, transparent{&search_transparent, {}}, translucent{&search_translucent, {}};
    for (std::uint32_t row = first_block_row; row < first_block_row + block_row_count; ++row)
        for (std::uint32_t column = 0; column < blocks_across(view.width); ++column, out += 16) {
            std::uint8_t rgba[16][4];
            bool solid = true;
            std::uint32_t lowest_alpha = 255, highest_alpha = 0;
            for (std::uint32_t t = 0; t < 16; ++t) {
                std::uint32_t const x = std::min(column * block_side + t % 4, view.width - 1);
                std::uint32_t const y = std::min(row * block_side + t / 4, view.height - 1);
                std::memcpy(rgba[t], view.texels + y * view.row_pitch + x * std::size_t{4}, 4);
                solid = solid && std::memcmp(rgba[t], rgba[0], 4) == 0;
                lowest_alpha = std::min<std::uint32_t>(lowest_alpha, rgba[t][3]);
                highest_alpha = std::max<std::uint32_t>(highest_alpha, rgba[t][3]);
            }
            if (solid) {
                write_bc7(solid_bc7(rgba[0]), out);
                continue;
            }
            KIND& kind = lowest_alpha == 255 ? opaque : (highest_alpha == 0 ? transparent : translucent);
            kind.group.add(rgba, out);
            if (kind.group.count == lane_count)
                encode_group(kind.group, weights, search, kind.search_modes);
        }
    for (KIND* const kind : {&opaque, &transparent, &translucent})
        encode_group(kind->group, weights, search, kind->search_modes);
}

}  // namespace blocks::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace blocks {

HWY_EXPORT(encode_rows);

void encode_bc7_rows(RGBA8_VIEW const& view, ENCODE_OPTIONS const& options, std::uint32_t first_block_row,
                     std::uint32_t block_row_count, std::uint8_t* out) {
    HWY_DYNAMIC_DISPATCH(encode_rows)(view, options, first_block_row, block_row_count, out);
}

}  // namespace blocks
#endif
