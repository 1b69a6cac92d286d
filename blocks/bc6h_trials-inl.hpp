// The trials of the BC6H encoder: one subset, and two subsets for the partitions that rank best, one block a lane.
#if defined(BLOCKS_BC6H_TRIALS_INL_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef BLOCKS_BC6H_TRIALS_INL_HPP
#undef BLOCKS_BC6H_TRIALS_INL_HPP
#else
#define BLOCKS_BC6H_TRIALS_INL_HPP
#endif

#include "blocks/bc6h_endpoints-inl.hpp"
#include "blocks/bc6h_search.hpp"
#include "blocks/partition_estimate-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace blocks::HWY_NAMESPACE {

/// The best code so far of each block. Indices are left out: they follow from the endpoints.
struct BC6H_CHOICE {
    V error;
    V mode;  ///< position in `bc6h_modes`
    V partition;
    ENDS<3> end[2];

    HWY_INLINE BC6H_CHOICE() {
        error = set(3e38f);
        mode = partition = zero();
        for (auto& subset : end)
            for (std::size_t c = 0; c < 3; ++c)
                subset.a[c] = subset.b[c] = zero();
    }
};

/// What all trials of a group share.
struct BC6H_TRIAL {
    TEXELS const& texels;
    BC6H_ORIGIN const& origin;
    BC6H_BOUNDS const& bounds;
    LANE_WEIGHTS const& weights;
    BC6H_SEARCH const& search;
    BC6H_CHOICE& choice;
};

/// Turns the first subset's segment so that texel 0 lies in the half of the first endpoint.
HWY_INLINE void turn_to_anchor(SUBJECT<3> const& subject, ENDS<3>& ends) {
    V texel[3], way[3], off_middle[3];
    subject.load(0, texel);
    for (std::size_t c = 0; c < 3; ++c) {
        way[c] = hn::Sub(ends.b[c], ends.a[c]);
        V const middle = hn::Mul(hn::Add(ends.a[c], ends.b[c]), set(0.5f));
        off_middle[c] = hn::Mul(hn::Sub(texel[c], middle), subject.weight(c));
    }
    M const turn = hn::Gt(dot<3>(off_middle, way), zero());
    for (std::size_t c = 0; c < 3; ++c) {
        V const a = ends.a[c];
        ends.a[c] = hn::IfThenElse(turn, ends.b[c], a);
        ends.b[c] = hn::IfThenElse(turn, a, ends.b[c]);
    }
}

/// Fits all subsets together, because most modes store their endpoints as differences from the first.
template <bool is_signed, std::size_t subsets>
void try_subsets(BC6H_TRIAL const& trial, TEXEL_SET const (&sets)[subsets], V partition) {
    constexpr bool whole = subsets == 1;
    constexpr int levels = whole ? 16 : 8;
    SUBJECT<3> const subject{trial.texels, trial.weights, {0, 1, 2}};
    MOMENTS<3> moments[subsets];
    ENDS<3> ends[subsets];
    ERROR_FORM form[subsets];
    for (std::size_t s = 0; s < subsets; ++s) {
        moments[s] = sum_moments<EVALUATION{.whole = whole, .weighted = true}>(subject, sets[s]);
        ends[s] = cover_axis<3, whole>(subject, sets[s], moments[s]);
        form[s] = ERROR_FORM::even(moments[s].count);
    }
    for (int round = 0; round < trial.search.rounds; ++round) {
        for (auto& e : ends)
            trial.bounds.keep(e);
        turn_to_anchor(subject, ends[0]);
        WEIGHT_SUMS<3> sums[subsets];
        V lowest = set(3e38f);
        auto const measure = [&](ENDS<3> const(&q)[subsets], V mode) {
            WEIGHT_SUMS<3> s[subsets];
            V error = evaluate<EVALUATION{
                .whole = whole, .sums = true, .rounded = false, .anchored = true, .weighted = true}>(
                subject, sets[0], q[0], levels, &s[0]);
            if constexpr (subsets == 2)
                error = hn::Add(error, evaluate<EVALUATION{.sums = true, .rounded = false, .weighted = true}>(
                                           subject, sets[1], q[1], levels, &s[1]));
            M const lower = hn::Lt(error, lowest);
            lowest = hn::Min(error, lowest);
            BC6H_CHOICE& choice = trial.choice;
            M const better = hn::Lt(error, choice.error);
            choice.error = hn::Min(error, choice.error);
            choice.mode = hn::IfThenElse(better, mode, choice.mode);
            choice.partition = hn::IfThenElse(better, partition, choice.partition);
            for (std::size_t i = 0; i < subsets; ++i) {
                sums[i].take_if(lower, s[i]);
                for (std::size_t c = 0; c < 3; ++c) {
                    choice.end[i].a[c] = hn::IfThenElse(better, q[i].a[c], choice.end[i].a[c]);
                    choice.end[i].b[c] = hn::IfThenElse(better, q[i].b[c], choice.end[i].b[c]);
                }
            }
        };
        for (auto& s : sums)
            s.clear();
        ENDS<3> nearest[subsets] = {};
        V nearest_mode = zero();
        V distance = set(3e38f);
        for (std::size_t m = 0; m < bc6h_modes.size(); ++m) {
            if (bc6h_modes[m].subsets != subsets)
                continue;
            ENDS<3> q[subsets];
            V const change = quantise_ends<is_signed, subsets>(bc6h_modes[m], trial.origin, ends, form, subject, q);
            V const mode = set(static_cast<float>(m));
            if (trial.search.all_modes) {
                measure(q, mode);
                continue;
            }
            M const nearer = hn::Lt(change, distance);
            distance = hn::Min(change, distance);
            nearest_mode = hn::IfThenElse(nearer, mode, nearest_mode);
            for (std::size_t i = 0; i < subsets; ++i)
                for (std::size_t c = 0; c < 3; ++c) {
                    nearest[i].a[c] = hn::IfThenElse(nearer, q[i].a[c], nearest[i].a[c]);
                    nearest[i].b[c] = hn::IfThenElse(nearer, q[i].b[c], nearest[i].b[c]);
                }
        }
        if (!trial.search.all_modes)
            measure(nearest, nearest_mode);
        for (std::size_t s = 0; s < subsets; ++s) {
            V explained;
            form[s] = solve_least_squares<3>(subject, moments[s], sums[s], ends[s], explained);
        }
    }
}

template <bool is_signed>
void search_bc6h(BC6H_TRIAL const& trial) {
    try_subsets<is_signed, 1>(trial, {all_texels()}, zero());
    TEXEL_PRODUCTS<3, true> const products(trial.texels, trial.weights.root);
    PARTITION_SCORES scores;
    constexpr std::size_t partitions = 1u << bc6h_partition_bits;
    score_two_subsets(products, partitions, scores);
    RANKED_PARTITIONS const ranked(scores, eight_levels_leave, partitions, trial.search.partitions);
    for (std::size_t k = 0; k < trial.search.partitions; ++k) {
        TEXEL_SET const second = ranked.look_up(two_subsets_second, k);
        try_subsets<is_signed, 2>(trial, {second.complement(), second}, ranked.number(k));
    }
}

}  // namespace blocks::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
