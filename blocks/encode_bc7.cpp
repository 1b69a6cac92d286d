// BC7 encoding: sorts blocks into solid, opaque, transparent and translucent ones, searches those of one kind together
// and turns what was found into bits.
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

#include "blocks/bc7_stages-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace blocks::HWY_NAMESPACE {

/// The texels' indices along the ramp of their subset, in both planes.
struct TEXEL_INDICES {
    V colour;
    V lone;
};

/// What the code of each lane's block says, spread over lanes.
struct BC7_CODE_LANES {
    ENDS<4> ends[3];
    TEXEL_SET second, third;
    V colour_last, lone_last;
    V colour_weight[4], lone_weight[1];

    HWY_INLINE explicit BC7_CODE_LANES(BC7_LANES const& lanes) {
        alignas(64) std::uint32_t second_set[lane_count], third_set[lane_count];
        alignas(64) float colour_steps[lane_count], lone_steps[lane_count], alpha_in_colour[lane_count];
        for (std::size_t lane = 0; lane < lane_count; ++lane) {
            BC7_CODE const& code = lanes.at(lane).code;
            BC7_MODE const& mode = bc7_modes[code.mode];
            second_set[lane] = mode.subsets == 2   ? two_subsets_second[code.partition]
                               : mode.subsets == 3 ? three_subsets_second[code.partition]
                                                   : 0u;
            third_set[lane] = mode.subsets == 3 ? three_subsets_third[code.partition] : 0u;
            bool const two_planes = mode.second_index_bits != 0;
            std::uint32_t const colour_bits = code.index_selection ? mode.second_index_bits : mode.index_bits;
            std::uint32_t const lone_bits = code.index_selection ? mode.index_bits : mode.second_index_bits;
            colour_steps[lane] = static_cast<float>((1u << colour_bits) - 1);
            lone_steps[lane] = two_planes ? static_cast<float>((1u << lone_bits) - 1) : 1.0f;
            alpha_in_colour[lane] = two_planes ? 0.0f : 1.0f;
        }
        for (std::size_t s = 0; s < 3; ++s)
            ends[s] = ends_so_far<4>(lanes, s, 0);
        second = {hn::Load(DU(), second_set)};
        third = {hn::Load(DU(), third_set)};
        colour_last = hn::Load(D(), colour_steps);
        lone_last = hn::Load(D(), lone_steps);
        for (std::size_t c = 0; c < 3; ++c)
            colour_weight[c] = lanes.weights.weight[c];
        colour_weight[3] = hn::Mul(hn::Load(D(), alpha_in_colour), lanes.weights.weight[3]);
        lone_weight[0] = lanes.weights.weight[3];
    }

    HWY_INLINE TEXEL_INDICES indices(TEXELS const& texels, std::size_t t) const {
        M const is_second = second.has(t), is_third = third.has(t);
        ENDS<4> own;
        V difference[4];
        for (std::size_t c = 0; c < 4; ++c) {
            auto const pick = [&](V zeroth, V first, V other) {
                return hn::IfThenElse(is_third, other, hn::IfThenElse(is_second, first, zeroth));
            };
            own.a[c] = pick(ends[0].a[c], ends[1].a[c], ends[2].a[c]);
            own.b[c] = pick(ends[0].b[c], ends[1].b[c], ends[2].b[c]);
            difference[c] = hn::Sub(texels.load(c, t), own.a[c]);
        }
        RAMP<4> const colour(own, colour_weight, colour_last);
        ENDS<1> const lone_ends{{own.a[3]}, {own.b[3]}};
        RAMP<1> const lone(lone_ends, lone_weight, lone_last);
        return {colour.index(difference), lone.index({difference[3]})};
    }
};

/// Finds the indices that go with the chosen endpoints and writes the blocks.
void write_blocks(BC7_POOL& pool) {
    std::vector<BC7_TRIAL> all;
    for (std::size_t b = 0; b < pool.blocks.size(); ++b)
        all.push_back({static_cast<std::uint16_t>(b), pool.blocks[b].code.rotation});
    each_group(pool, all, true, [](BC7_LANES const& lanes) {
        BC7_CODE_LANES const code(lanes);
        alignas(64) float colour[16][lane_count], lone[16][lane_count];
        for (std::size_t t = 0; t < 16; ++t) {
            TEXEL_INDICES const indices = code.indices(lanes.texels, t);
            hn::Store(indices.colour, D(), colour[t]);
            hn::Store(indices.lone, D(), lone[t]);
        }
        for (std::size_t lane = 0; lane < lanes.trials.size(); ++lane) {
            BC7_BLOCK& block = lanes.at(lane);
            for (std::size_t t = 0; t < 16; ++t) {
                block.code.colour_index[t] = static_cast<std::uint8_t>(colour[t][lane]);
                block.code.alpha_index[t] = static_cast<std::uint8_t>(lone[t][lane]);
            }
            write_bc7(block.code, block.out);
        }
    });
}

/// Blocks of one kind, and what is to be done with them.
struct BC7_KIND {
    void (*search_modes)(BC7_POOL&, BC7_SEARCH const&);
    BC7_POOL pool;

    void flush(BC7_SEARCH const& search) {
        search_modes(pool, search);
        write_blocks(pool);
        pool.blocks.clear();
    }
};

void encode_rows(RGBA8_VIEW const& view, ENCODE_OPTIONS const& options, std::uint32_t first_block_row,
                 std::uint32_t block_row_count, std::uint8_t* out) {
    BC7_SEARCH const search = bc7_search(options.effort);
    CHANNEL_WEIGHTS const weights = channel_weights(options.perceptual);
    BC7_KIND opaque{&search_opaque, {{}, weights}};
    BC7_KIND transparent{&search_transparent, {{}, weights}};
    BC7_KIND translucent{&search_translucent, {{}, weights}};
    for (std::uint32_t row = first_block_row; row < first_block_row + block_row_count; ++row)
        for (std::uint32_t column = 0; column < blocks_across(view.width); ++column, out += 16) {
            BC7_BLOCK block{{}, out, 3e38f, false, {}};
            bool solid = true;
            std::uint32_t lowest_alpha = 255, highest_alpha = 0;
            for (std::uint32_t t = 0; t < 16; ++t) {
                std::uint32_t const x = std::min(column * block_side + t % 4, view.width - 1);
                std::uint32_t const y = std::min(row * block_side + t / 4, view.height - 1);
                auto& texel = block.rgba[t];
                std::memcpy(texel, view.texels + y * view.row_pitch + x * std::size_t{4}, 4);
                solid = solid && std::memcmp(texel, block.rgba[0], 4) == 0;
                lowest_alpha = std::min<std::uint32_t>(lowest_alpha, texel[3]);
                highest_alpha = std::max<std::uint32_t>(highest_alpha, texel[3]);
            }
            if (solid) {
                write_bc7(solid_bc7(block.rgba[0]), out);
                continue;
            }
            block.few_colours = has_few_colours(block.rgba);
            BC7_KIND& kind = lowest_alpha == 255 ? opaque : (highest_alpha == 0 ? transparent : translucent);
            kind.pool.blocks.push_back(block);
            if (kind.pool.blocks.size() == BC7_POOL::most)
                kind.flush(search);
        }
    for (BC7_KIND* const kind : {&opaque, &transparent, &translucent})
        kind->flush(search);
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
