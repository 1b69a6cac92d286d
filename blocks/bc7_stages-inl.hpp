// Which trials a pool of blocks goes through. Every block is fitted with one subset first; all further trials are
// listed by what an estimate says that they would come to, and passed over for blocks that already have better.
#if defined(BLOCKS_BC7_STAGES_INL_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef BLOCKS_BC7_STAGES_INL_HPP
#undef BLOCKS_BC7_STAGES_INL_HPP
#else
#define BLOCKS_BC7_STAGES_INL_HPP
#endif

#include <type_traits>

#include "blocks/bc7_modes-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace blocks::HWY_NAMESPACE {

/// A trial and the least error that it is believed to come to.
struct BC7_PROSPECT {
    BC7_TRIAL trial;
    std::uint8_t rank;
    float least_error;
};

/// Tries the prospects rank by rank, each time those that still may better their block.
template <auto mode>
void try_prospects(BC7_POOL& pool, BC7_SEARCH const& search, std::span<BC7_PROSPECT const> prospects, int ranks) {
    std::vector<BC7_TRIAL> trials;
    for (int first = 0, last = 0; first < ranks; first = last + 1, last = std::min(2 * first, ranks - 1)) {
        trials.clear();
        for (BC7_PROSPECT const& prospect : prospects)
            if (prospect.rank >= first && prospect.rank <= last &&
                prospect.least_error < pool.blocks[prospect.trial.block].error)
                trials.push_back(prospect.trial);
        try_mode<mode, BC7_STEP::fit>(pool, search, trials);
    }
}

/// One trial for each block that is not yet without error.
inline std::vector<BC7_TRIAL> unfinished(BC7_POOL const& pool) {
    std::vector<BC7_TRIAL> trials;
    for (std::size_t b = 0; b < pool.blocks.size(); ++b)
        if (pool.blocks[b].error > 0)
            trials.push_back({static_cast<std::uint16_t>(b), 0});
    return trials;
}

/// Adds the `count` best partitions of each of a group of lanes. Steps along the axis leave `left` of the error there,
/// of which `belief` is taken for granted.
inline void add_prospects(BC7_LANES const& lanes, PARTITION_SCORES const& scores, float left, float belief,
                          std::size_t partitions, std::size_t count, std::vector<BC7_PROSPECT>& prospects) {
    if (count == 0)
        return;
    RANKED_PARTITIONS const ranked(scores, left, partitions, count);
    for (std::size_t k = 0; k < count; ++k)
        for (std::size_t lane = 0; lane < lanes.trials.size(); ++lane) {
            std::uint32_t const p = ranked.partition[k][lane];
            float const along = lanes.at(lane).few_colours ? 0.0f : scores.along_axis[p][lane] * left * belief;
            prospects.push_back({{lanes.trials[lane].block, static_cast<std::uint8_t>(p)},
                                 static_cast<std::uint8_t>(k),
                                 scores.off_axis[p][lane] + along});
        }
}

template <BC7_PLANE_MODE eight_levels, BC7_PLANE_MODE four_levels>
void try_partitions(BC7_POOL& pool, BC7_SEARCH const& search, std::size_t count_eight, std::size_t count_four) {
    if (count_eight == 0 && count_four == 0)
        return;
    constexpr std::size_t C = four_levels.channels;
    std::vector<BC7_PROSPECT> eight, four;
    each_group(pool, unfinished(pool), false, [&](BC7_LANES const& lanes) {
        TEXEL_PRODUCTS<C> const products(lanes.texels, lanes.weights.root);
        PARTITION_SCORES scores;
        if constexpr (four_levels.subsets == 2)
            score_two_subsets(products, 64, scores);
        else
            score_three_subsets<C>(products, scores);
        std::size_t const partitions = eight_levels.mode == 0 ? 16 : 64;
        add_prospects(lanes, scores, eight_levels_leave, search.belief, partitions, count_eight, eight);
        add_prospects(lanes, scores, four_levels_leave, search.belief, 64, count_four, four);
    });
    try_prospects<eight_levels>(pool, search, eight, static_cast<int>(count_eight));
    try_prospects<four_levels>(pool, search, four, static_cast<int>(count_four));
}

/// Modes 4 and 5. `belief` is how much of the estimates along the axes is taken for granted.
inline void try_two_planes(BC7_POOL& pool, BC7_SEARCH const& search, float belief) {
    std::vector<BC7_PROSPECT> five, fine_alpha, fine_colour;
    std::vector<BC7_TRIAL> trials;
    for (BC7_TRIAL const& trial : unfinished(pool))
        for (std::uint8_t rotation = 0; rotation < 4; ++rotation)
            trials.push_back({trial.block, rotation});
    each_group(pool, trials, true, [&](BC7_LANES const& lanes) {
        auto const colours = sum_moments<EVALUATION{.whole = true}>(lanes.colours<3>(), all_texels());
        auto const lone = sum_moments<EVALUATION{.whole = true}>(lanes.lone_channel(), all_texels());
        V matrix[triangle(3)];
        scatter_matrix<3>(colours, matrix);
        std::size_t k = 0;
        for (std::size_t i = 0; i < 3; ++i)
            for (std::size_t j = i; j < 3; ++j, ++k)
                matrix[k] = hn::Mul(matrix[k], hn::Mul(lanes.weights.root[i], lanes.weights.root[j]));
        V const size = normalise<3>(matrix);
        V const along = hn::Min(hn::Mul(largest_eigenvalue<3, 2>(matrix), size), size);
        V const off = hn::Sub(size, along);
        V lone_scatter[1];
        scatter_matrix<1>(lone, lone_scatter);
        V const spread = hn::Mul(lone_scatter[0], lanes.weights.weight[3]);
        auto const add = [&](float colours_leave, float lone_leaves, std::vector<BC7_PROSPECT>& prospects) {
            V const left = hn::Add(hn::Mul(along, set(colours_leave)), hn::Mul(spread, set(lone_leaves)));
            alignas(64) float off_axis[lane_count], all[lane_count];
            hn::Store(off, D(), off_axis);
            hn::Store(hn::Add(off, hn::Mul(left, set(belief))), D(), all);
            for (std::size_t lane = 0; lane < lanes.trials.size(); ++lane) {
                float const error = lanes.at(lane).few_colours ? off_axis[lane] : all[lane];
                prospects.push_back({lanes.trials[lane], 0, error});
            }
        };
        add(four_levels_leave, four_levels_leave, five);
        add(four_levels_leave, eight_levels_leave, fine_alpha);
        add(eight_levels_leave, four_levels_leave, fine_colour);
    });
    try_prospects<bc7_mode_5>(pool, search, five, 1);
    try_prospects<bc7_mode_4_fine_alpha>(pool, search, fine_alpha, 1);
    try_prospects<bc7_mode_4_fine_colour>(pool, search, fine_colour, 1);
}

/// Polishes what the blocks of one mode have.
template <auto mode>
void polish(BC7_POOL& pool, BC7_SEARCH const& search) {
    std::vector<BC7_TRIAL> trials;
    for (std::size_t b = 0; b < pool.blocks.size(); ++b) {
        BC7_BLOCK const& block = pool.blocks[b];
        bool same = block.code.mode == mode.mode;
        std::uint8_t variant = block.code.partition;
        // Compilers are at odds about whether the type of such a parameter is const.
        if constexpr (std::is_same_v<std::remove_const_t<decltype(mode)>, BC7_TWO_PLANE_MODE>) {
            same = same && block.code.index_selection == mode.index_selection;
            variant = block.code.rotation;
        }
        if (same && block.error > 0)
            trials.push_back({static_cast<std::uint16_t>(b), variant});
    }
    try_mode<mode, BC7_STEP::polish>(pool, search, trials);
}

template <auto... modes>
void polish_all(BC7_POOL& pool, BC7_SEARCH const& search) {
    if (search.sweeps)
        (polish<modes>(pool, search), ...);
}

/// For blocks whose alpha is 255 throughout.
inline void search_opaque(BC7_POOL& pool, BC7_SEARCH const& search) {
    try_mode<bc7_mode_6_opaque, BC7_STEP::fit>(pool, search, unfinished(pool));
    try_partitions<bc7_mode_1, bc7_mode_3>(pool, search, search.partitions_1, search.partitions_3);
    try_partitions<bc7_mode_0, bc7_mode_2>(pool, search, search.partitions_0, search.partitions_2);
    try_two_planes(pool, search, search.belief_opaque);
    polish_all<bc7_mode_0, bc7_mode_1, bc7_mode_2, bc7_mode_3, bc7_mode_4_fine_alpha, bc7_mode_4_fine_colour,
               bc7_mode_5, bc7_mode_6_opaque>(pool, search);
}

/// For all other blocks: the modes that carry alpha.
inline void search_translucent(BC7_POOL& pool, BC7_SEARCH const& search) {
    try_mode<bc7_mode_6, BC7_STEP::fit>(pool, search, unfinished(pool));
    try_two_planes(pool, search, search.belief_alpha);
    try_partitions<bc7_mode_7, bc7_mode_7>(pool, search, 0, search.partitions_7);
    polish_all<bc7_mode_4_fine_alpha, bc7_mode_4_fine_colour, bc7_mode_5, bc7_mode_6, bc7_mode_7>(pool, search);
}

/// For blocks whose alpha is 0 throughout: the modes that give exactly that.
inline void search_transparent(BC7_POOL& pool, BC7_SEARCH const& search) {
    try_mode<bc7_mode_6_transparent, BC7_STEP::fit>(pool, search, unfinished(pool));
    try_two_planes(pool, search, search.belief_alpha);
    polish_all<bc7_mode_4_fine_alpha, bc7_mode_4_fine_colour, bc7_mode_5, bc7_mode_6_transparent>(pool, search);
}

}  // namespace blocks::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
