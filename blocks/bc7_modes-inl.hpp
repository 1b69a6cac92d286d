// The trials of the BC7 encoder: fits all subsets of a mode, or polishes those that a block has, and keeps what is
// better than before.
#if defined(BLOCKS_BC7_MODES_INL_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef BLOCKS_BC7_MODES_INL_HPP
#undef BLOCKS_BC7_MODES_INL_HPP
#else
#define BLOCKS_BC7_MODES_INL_HPP
#endif

#include "blocks/bc7_pool-inl.hpp"
#include "blocks/bc7_subset_fit-inl.hpp"
#include "blocks/partition_estimate-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace blocks::HWY_NAMESPACE {

/// What a trial is to do: fit from the ground up, or better the endpoints that the block already has.
enum class BC7_STEP : std::uint8_t { fit, polish };

/// A mode of one index plane. Where `channels` is 3, alpha is `alpha` throughout.
struct BC7_PLANE_MODE {
    std::uint8_t mode;
    std::uint8_t subsets;
    std::uint8_t channels;
    std::uint8_t alpha;
    ENDPOINT_SPEC spec;
};
inline constexpr BC7_PLANE_MODE bc7_mode_0{0, 3, 3, 255, {4, 0, P_BITS::own, 8}};
inline constexpr BC7_PLANE_MODE bc7_mode_1{1, 2, 3, 255, {6, 0, P_BITS::shared, 8}};
inline constexpr BC7_PLANE_MODE bc7_mode_2{2, 3, 3, 255, {5, 0, P_BITS::none, 4}};
inline constexpr BC7_PLANE_MODE bc7_mode_3{3, 2, 3, 255, {7, 0, P_BITS::own, 4}};
inline constexpr BC7_PLANE_MODE bc7_mode_6{6, 1, 4, 0, {7, 7, P_BITS::own, 16}};
/// A block whose alpha is 255 or 0 throughout keeps that only with p-bits of one or zero.
inline constexpr BC7_PLANE_MODE bc7_mode_6_opaque{6, 1, 3, 255, {7, 0, P_BITS::always_one, 16}};
inline constexpr BC7_PLANE_MODE bc7_mode_6_transparent{6, 1, 3, 0, {7, 0, P_BITS::always_zero, 16}};
inline constexpr BC7_PLANE_MODE bc7_mode_7{7, 2, 4, 0, {5, 5, P_BITS::own, 4}};

/// A mode of two index planes. Alpha, or the channel that has changed places with it, is by itself.
struct BC7_TWO_PLANE_MODE {
    std::uint8_t mode;
    std::uint8_t index_selection;
    ENDPOINT_SPEC colours;
    ENDPOINT_SPEC lone;
};
inline constexpr BC7_TWO_PLANE_MODE bc7_mode_4_fine_alpha{4, 0, {5, 0, P_BITS::none, 4}, {6, 0, P_BITS::none, 8}};
inline constexpr BC7_TWO_PLANE_MODE bc7_mode_4_fine_colour{4, 1, {5, 0, P_BITS::none, 8}, {6, 0, P_BITS::none, 4}};
inline constexpr BC7_TWO_PLANE_MODE bc7_mode_5{5, 0, {7, 0, P_BITS::none, 4}, {8, 0, P_BITS::none, 4}};

/// The endpoints that the blocks have: channels [first, first + C) of subset `subset`.
template <std::size_t C>
HWY_INLINE ENDS<C> ends_so_far(BC7_LANES const& lanes, std::size_t subset, std::size_t first) {
    ENDS<C> ends;
    for (std::size_t i = 0; i < C; ++i) {
        alignas(64) float a[lane_count], b[lane_count];
        for (std::size_t lane = 0; lane < lane_count; ++lane) {
            auto const& end = lanes.at(lane).code.end[subset];
            a[lane] = end[0][first + i];
            b[lane] = end[1][first + i];
        }
        ends.a[i] = hn::Load(D(), a);
        ends.b[i] = hn::Load(D(), b);
    }
    return ends;
}

/// Does one step of the search with one subset of one plane.
template <BC7_STEP step, ENDPOINT_SPEC spec, bool whole, std::size_t C>
HWY_INLINE FIT<C> work_on(BC7_LANES const& lanes, SUBJECT<C> const& subject, TEXEL_SET texels, MOMENTS<C> const& m,
                          BC7_SEARCH const& search, std::size_t subset) {
    if constexpr (step == BC7_STEP::fit) {
        return fit_subset<spec, C, whole>(subject, texels, m, whole ? search.one_subset : search.more_subsets);
    } else {
        FIT<C> fit{ends_so_far<C>(lanes, subset, subject.channel[0]), zero()};
        fit.error = evaluate<EVALUATION{.whole = whole}, C>(subject, texels, fit.ends, spec.levels, nullptr);
        polish_subset<spec, C, whole>(subject, texels, search.sweeps, fit);
        return fit;
    }
}

/// Gives the endpoints in channels [first, first + C) of a subset to the lanes' blocks that are marked.
template <std::size_t C>
HWY_INLINE void give_ends(BC7_LANES const& lanes, bool const (&better)[lane_count], ENDS<C> const& ends,
                          std::size_t subset, std::size_t first) {
    for (std::size_t i = 0; i < C; ++i) {
        alignas(64) float a[lane_count], b[lane_count];
        hn::Store(ends.a[i], D(), a);
        hn::Store(ends.b[i], D(), b);
        for (std::size_t lane = 0; lane < lanes.trials.size(); ++lane)
            if (better[lane]) {
                auto& end = lanes.at(lane).code.end[subset];
                end[0][first + i] = static_cast<std::uint8_t>(a[lane]);
                end[1][first + i] = static_cast<std::uint8_t>(b[lane]);
            }
    }
}

/// Marks the lanes whose trial is the best so far for its block and puts the header into those blocks. Several lanes
/// may have the same block: a later one then gains over an earlier one.
HWY_INLINE bool give_header(BC7_LANES const& lanes, V error, int mode, int selection, bool rotated,
                            bool (&better)[lane_count]) {
    if (hn::AllFalse(D(), hn::Lt(error, lanes.limit)))
        return false;
    alignas(64) float errors[lane_count];
    hn::Store(error, D(), errors);
    for (std::size_t lane = 0; lane < lane_count; ++lane) {
        better[lane] = lane < lanes.trials.size() && errors[lane] < lanes.at(lane).error;
        if (!better[lane])
            continue;
        BC7_BLOCK& block = lanes.at(lane);
        block.error = errors[lane];
        block.code.mode = static_cast<std::uint8_t>(mode);
        block.code.partition = rotated ? std::uint8_t{0} : lanes.variant(lane);
        block.code.rotation = rotated ? lanes.variant(lane) : std::uint8_t{0};
        block.code.index_selection = static_cast<std::uint8_t>(selection);
    }
    return true;
}

/// Calls `use` for every group of lanes that the trials fill.
template <class USE>
HWY_INLINE void each_group(BC7_POOL& pool, std::span<BC7_TRIAL const> trials, bool rotated, USE&& use) {
    for (; !trials.empty(); trials = trials.subspan(std::min(lane_count, trials.size())))
        use(BC7_LANES(pool, trials.first(std::min(lane_count, trials.size())), rotated));
}

template <BC7_PLANE_MODE mode, BC7_STEP step>
HWY_NOINLINE void try_mode(BC7_POOL& pool, BC7_SEARCH const& search, std::span<BC7_TRIAL const> trials) {
    constexpr std::size_t C = mode.channels;
    constexpr bool whole = mode.subsets == 1;
    each_group(pool, trials, false, [&](BC7_LANES const& lanes) {
        SUBJECT<C> const subject = lanes.colours<C>();
        TEXEL_SET sets[3] = {all_texels(), all_texels(), all_texels()};
        MOMENTS<C> moments[3];
        moments[0] = sum_moments<EVALUATION{.whole = true}>(subject, all_texels());
        if constexpr (mode.subsets == 3) {
            sets[1] = lanes.look_up(three_subsets_second);
            sets[2] = lanes.look_up(three_subsets_third);
        } else if constexpr (mode.subsets == 2) {
            sets[1] = lanes.look_up(two_subsets_second);
        }
        for (std::size_t s = 1; s < mode.subsets; ++s) {
            sets[0] = sets[0].without(sets[s]);
            moments[s] = sum_moments<EVALUATION{}>(subject, sets[s]);
            moments[0] = difference<C>(moments[0], moments[s]);
        }
        FIT<C> fit[mode.subsets];
        V error = zero();
        for (std::size_t s = 0; s < mode.subsets; ++s) {
            fit[s] = work_on<step, mode.spec, whole>(lanes, subject, sets[s], moments[s], search, s);
            error = hn::Add(error, fit[s].error);
            if (hn::AllFalse(D(), hn::Lt(error, lanes.limit)))
                return;
        }
        bool better[lane_count];
        if (!give_header(lanes, error, mode.mode, 0, false, better))
            return;
        for (std::size_t s = 0; s < mode.subsets; ++s) {
            give_ends<C>(lanes, better, fit[s].ends, s, 0);
            if constexpr (C == 3) {
                ENDS<1> const alpha{{set(mode.alpha)}, {set(mode.alpha)}};
                give_ends<1>(lanes, better, alpha, s, 3);
            }
        }
    });
}

template <BC7_TWO_PLANE_MODE mode, BC7_STEP step>
HWY_NOINLINE void try_mode(BC7_POOL& pool, BC7_SEARCH const& search, std::span<BC7_TRIAL const> trials) {
    each_group(pool, trials, true, [&](BC7_LANES const& lanes) {
        SUBJECT<3> const colours = lanes.colours<3>();
        SUBJECT<1> const lone = lanes.lone_channel();
        auto const colour_moments = sum_moments<EVALUATION{.whole = true}>(colours, all_texels());
        FIT<3> const fit_3 = work_on<step, mode.colours, true>(lanes, colours, all_texels(), colour_moments, search, 0);
        if (hn::AllFalse(D(), hn::Lt(fit_3.error, lanes.limit)))
            return;
        auto const lone_moments = sum_moments<EVALUATION{.whole = true}>(lone, all_texels());
        FIT<1> const fit_1 = work_on<step, mode.lone, true>(lanes, lone, all_texels(), lone_moments, search, 0);
        bool better[lane_count];
        if (!give_header(lanes, hn::Add(fit_3.error, fit_1.error), mode.mode, mode.index_selection, true, better))
            return;
        give_ends<3>(lanes, better, fit_3.ends, 0, 0);
        give_ends<1>(lanes, better, fit_1.ends, 0, 3);
    });
}

}  // namespace blocks::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
