// The trials of the BC7 encoder, mode by mode, and what they have come to so far, one block a lane.
#if defined(BLOCKS_BC7_MODES_INL_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef BLOCKS_BC7_MODES_INL_HPP
#undef BLOCKS_BC7_MODES_INL_HPP
#else
#define BLOCKS_BC7_MODES_INL_HPP
#endif

#include "blocks/bc7_subset_fit-inl.hpp"
#include "blocks/bc7_tables.hpp"
#include "blocks/partition_estimate-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace blocks::HWY_NAMESPACE {

/// The best code so far of each block. Indices are left out: they follow from the endpoints.
struct BC7_CHOICE {
    V error;
    V mode;
    V partition;
    V rotation;
    V index_selection;
    V end[3][2][4];

    HWY_INLINE BC7_CHOICE() {
        error = set(3e38f);
        mode = partition = rotation = index_selection = zero();
        for (auto& subset : end)
            for (auto& one : subset)
                for (auto& channel : one)
                    channel = zero();
    }
};

/// What all trials of a group share.
struct BC7_TRIAL {
    TEXELS const& texels;
    CHANNEL_WEIGHTS const& weights;
    BC7_SEARCH const& search;
    BC7_CHOICE& choice;

    template <std::size_t C>
    HWY_INLINE SUBJECT<C> colours() const {
        SUBJECT<C> subject{texels, weights, {}};
        for (std::size_t i = 0; i < C; ++i)
            subject.channel[i] = i;
        return subject;
    }
};

/// Where a fit leaves alpha out, `alpha` is what the block has throughout.
template <std::size_t C>
HWY_INLINE void take_ends(M better, FIT<C> const& fit, V (&end)[2][4], float alpha = 255.0f) {
    for (std::size_t i = 0; i < 4; ++i) {
        end[0][i] = hn::IfThenElse(better, i < C ? fit.ends.a[i < C ? i : 0] : set(alpha), end[0][i]);
        end[1][i] = hn::IfThenElse(better, i < C ? fit.ends.b[i < C ? i : 0] : set(alpha), end[1][i]);
    }
}

HWY_INLINE void take_header(M better, V error, int mode, V partition, int rotation, int selection, BC7_CHOICE& choice) {
    choice.error = hn::IfThenElse(better, error, choice.error);
    choice.mode = hn::IfThenElse(better, set(static_cast<float>(mode)), choice.mode);
    choice.partition = hn::IfThenElse(better, partition, choice.partition);
    choice.rotation = hn::IfThenElse(better, set(static_cast<float>(rotation)), choice.rotation);
    choice.index_selection = hn::IfThenElse(better, set(static_cast<float>(selection)), choice.index_selection);
}

/// Mode 6: one subset, 16 levels. A block whose alpha is 255 or 0 throughout keeps that only with p-bits of one or
/// zero; then alpha is left out of the fit and given as `alpha`.
template <std::size_t C, P_BITS p>
void try_mode_6(BC7_TRIAL const& trial, float alpha = 255.0f) {
    FIT<C> const fit = fit_subset<ENDPOINT_SPEC{7, 7, p, 16}, C, true>(trial.colours<C>(), all_texels(), trial.search);
    M const better = hn::Lt(fit.error, trial.choice.error);
    take_ends<C>(better, fit, trial.choice.end[0], alpha);
    take_header(better, fit.error, 6, zero(), 0, 0, trial.choice);
}

/// Modes 1, 3 and 7: two subsets, for the `count` best partitions.
template <ENDPOINT_SPEC spec, std::size_t C>
void try_two_subsets(BC7_TRIAL const& trial, int mode, RANKED_PARTITIONS const& ranked, std::size_t count) {
    SUBJECT<C> const subject = trial.colours<C>();
    for (std::size_t k = 0; k < count; ++k) {
        TEXEL_SET const second = ranked.look_up(two_subsets_second, k);
        FIT<C> const fit_0 = fit_subset<spec, C, false>(subject, second.complement(), trial.search);
        FIT<C> const fit_1 = fit_subset<spec, C, false>(subject, second, trial.search);
        V const error = hn::Add(fit_0.error, fit_1.error);
        M const better = hn::Lt(error, trial.choice.error);
        take_ends<C>(better, fit_0, trial.choice.end[0]);
        take_ends<C>(better, fit_1, trial.choice.end[1]);
        take_header(better, error, mode, ranked.number(k), 0, 0, trial.choice);
    }
}

/// Modes 0 and 2: three subsets, for the `count` best partitions.
template <ENDPOINT_SPEC spec>
void try_three_subsets(BC7_TRIAL const& trial, int mode, RANKED_PARTITIONS const& ranked, std::size_t count) {
    SUBJECT<3> const subject = trial.colours<3>();
    for (std::size_t k = 0; k < count; ++k) {
        TEXEL_SET const second = ranked.look_up(three_subsets_second, k);
        TEXEL_SET const third = ranked.look_up(three_subsets_third, k);
        TEXEL_SET const first = second.complement().without(third);
        FIT<3> const fit_0 = fit_subset<spec, 3, false>(subject, first, trial.search);
        FIT<3> const fit_1 = fit_subset<spec, 3, false>(subject, second, trial.search);
        FIT<3> const fit_2 = fit_subset<spec, 3, false>(subject, third, trial.search);
        V const error = hn::Add(hn::Add(fit_0.error, fit_1.error), fit_2.error);
        M const better = hn::Lt(error, trial.choice.error);
        take_ends<3>(better, fit_0, trial.choice.end[0]);
        take_ends<3>(better, fit_1, trial.choice.end[1]);
        take_ends<3>(better, fit_2, trial.choice.end[2]);
        take_header(better, error, mode, ranked.number(k), 0, 0, trial.choice);
    }
}

/// Modes 4 and 5: one channel has indices of its own. `rotation` says which: 0 is alpha, 1 to 3 are red, green and
/// blue, whose place alpha takes among the colours.
template <ENDPOINT_SPEC colour, ENDPOINT_SPEC single>
void try_two_planes(BC7_TRIAL const& trial, int mode, int rotation, int selection) {
    SUBJECT<3> colours = trial.colours<3>();
    SUBJECT<1> lone{trial.texels, trial.weights, {3}};
    if (rotation)
        std::swap(colours.channel[rotation - 1], lone.channel[0]);
    FIT<3> const fit_3 = fit_subset<colour, 3, true>(colours, all_texels(), trial.search);
    FIT<1> const fit_1 = fit_subset<single, 1, true>(lone, all_texels(), trial.search);
    V const error = hn::Add(fit_3.error, fit_1.error);
    M const better = hn::Lt(error, trial.choice.error);
    auto& end = trial.choice.end[0];
    take_ends<3>(better, fit_3, end);
    end[0][3] = hn::IfThenElse(better, fit_1.ends.a[0], end[0][3]);
    end[1][3] = hn::IfThenElse(better, fit_1.ends.b[0], end[1][3]);
    take_header(better, error, mode, zero(), rotation, selection, trial.choice);
}

HWY_INLINE void try_modes_4_and_5(BC7_TRIAL const& trial, int rotations) {
    for (int rotation = 0; rotation < rotations; ++rotation) {
        try_two_planes<ENDPOINT_SPEC{7, 0, P_BITS::none, 4}, ENDPOINT_SPEC{8, 0, P_BITS::none, 4}>(trial, 5, rotation,
                                                                                                   0);
        try_two_planes<ENDPOINT_SPEC{5, 0, P_BITS::none, 4}, ENDPOINT_SPEC{6, 0, P_BITS::none, 8}>(trial, 4, rotation,
                                                                                                   0);
        try_two_planes<ENDPOINT_SPEC{5, 0, P_BITS::none, 8}, ENDPOINT_SPEC{6, 0, P_BITS::none, 4}>(trial, 4, rotation,
                                                                                                   1);
    }
}

/// All modes for blocks whose alpha is 255 throughout.
inline void search_opaque(BC7_TRIAL const& trial) {
    BC7_SEARCH const& search = trial.search;
    try_mode_6<3, P_BITS::always_one>(trial);
    V const origin[3] = {zero(), zero(), zero()};
    TEXEL_PRODUCTS<3> const products(trial.texels, trial.weights.root, origin);
    PARTITION_SCORES scores;
    if (search.partitions_1 || search.partitions_3) {
        score_two_subsets<3>(products, 64, scores);
        RANKED_PARTITIONS const eight(scores.eight_levels, 64, search.partitions_1);
        try_two_subsets<ENDPOINT_SPEC{6, 0, P_BITS::shared, 8}, 3>(trial, 1, eight, search.partitions_1);
        RANKED_PARTITIONS const four(scores.four_levels, 64, search.partitions_3);
        try_two_subsets<ENDPOINT_SPEC{7, 0, P_BITS::own, 4}, 3>(trial, 3, four, search.partitions_3);
    }
    if (search.partitions_0 || search.partitions_2) {
        score_three_subsets<3>(products, scores);
        RANKED_PARTITIONS const eight(scores.eight_levels, 16, search.partitions_0);
        try_three_subsets<ENDPOINT_SPEC{4, 0, P_BITS::own, 8}>(trial, 0, eight, search.partitions_0);
        RANKED_PARTITIONS const four(scores.four_levels, 64, search.partitions_2);
        try_three_subsets<ENDPOINT_SPEC{5, 0, P_BITS::none, 4}>(trial, 2, four, search.partitions_2);
    }
    try_modes_4_and_5(trial, search.opaque_rotations);
}

/// All modes that carry alpha.
inline void search_translucent(BC7_TRIAL const& trial) {
    BC7_SEARCH const& search = trial.search;
    try_mode_6<4, P_BITS::own>(trial);
    try_modes_4_and_5(trial, search.rotations);
    if (search.partitions_7) {
        V const origin[4] = {zero(), zero(), zero(), zero()};
        TEXEL_PRODUCTS<4> const products(trial.texels, trial.weights.root, origin);
        PARTITION_SCORES scores;
        score_two_subsets<4>(products, 64, scores);
        RANKED_PARTITIONS const four(scores.four_levels, 64, search.partitions_7);
        try_two_subsets<ENDPOINT_SPEC{5, 5, P_BITS::own, 4}, 4>(trial, 7, four, search.partitions_7);
    }
}

/// For blocks whose alpha is 0 throughout: the modes that give exactly that.
inline void search_transparent(BC7_TRIAL const& trial) {
    try_mode_6<3, P_BITS::always_zero>(trial, 0.0f);
    try_modes_4_and_5(trial, trial.search.rotations);
}

}  // namespace blocks::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
