// Fits a subset of a BC7 block, one block a lane. Texels are projected on the principal axis once. Their indices are
// then spread over all levels of the palette, or squeezed into fewer of them so that the endpoints come to lie beyond
// the outermost texels, and for each such start least squares gives the endpoints and, in closed form, their error
// after rounding. Only the best of what comes of it is measured exactly, as a decoder would see it. Squeezing pays
// because stored endpoints are coarse and, for a handful of texels, there are more levels than texels: many choices of
// levels fit nearly as well, and one of them rounds best.
#if defined(BLOCKS_BC7_SUBSET_FIT_INL_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef BLOCKS_BC7_SUBSET_FIT_INL_HPP
#undef BLOCKS_BC7_SUBSET_FIT_INL_HPP
#else
#define BLOCKS_BC7_SUBSET_FIT_INL_HPP
#endif

#include "blocks/bc7_rounding-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace blocks::HWY_NAMESPACE {

/// Levels left free at the lower and the upper end of the palette, likeliest to pay first.
struct SQUEEZE {
    std::uint8_t below;
    std::uint8_t above;
};
inline constexpr SQUEEZE bc7_squeezes[] = {{0, 0}, {1, 1}, {1, 0}, {0, 1}, {2, 0}, {0, 2}, {2, 1}, {1, 2},
                                           {2, 2}, {3, 0}, {0, 3}, {3, 1}, {1, 3}, {3, 2}, {2, 3}, {3, 3}};

/// The most that BC7_FIT_DEPTH may ask for.
inline constexpr std::size_t most_candidates = 8;

/// Where the texels lie along the principal axis, from 0 for the first to 1 for the last.
template <std::size_t C, bool whole>
HWY_NOINLINE void positions_on_axis(SUBJECT<C> const& subject, TEXEL_SET texels, MOMENTS<C> const& m, V (&along)[16]) {
    V project[C];
    if constexpr (C == 1) {
        project[0] = set(1.0f);
    } else {
        principal_axis<C>(subject, m, project);
        for (std::size_t i = 0; i < C; ++i)
            project[i] = hn::Mul(project[i], subject.root(i));
    }
    V low = set(3e38f), high = set(-3e38f);
    for (std::size_t t = 0; t < 16; ++t) {
        V c[C];
        subject.load(t, c);
        V const position = along[t] = dot<C>(c, project);
        if constexpr (whole) {
            low = hn::Min(low, position);
            high = hn::Max(high, position);
        } else {
            M const in = texels.has(t);
            low = hn::IfThenElse(in, hn::Min(low, position), low);
            high = hn::IfThenElse(in, hn::Max(high, position), high);
        }
    }
    V const inverse = hn::Div(set(1.0f), hn::Max(hn::Sub(high, low), set(1e-6f)));
    for (V& position : along)
        position = hn::Mul(hn::Sub(position, low), inverse);
}

/// What least squares needs for texels whose indices are their positions, spread over the levels that are not left
/// free.
template <int levels, bool whole, std::size_t C>
HWY_NOINLINE void sum_squeezed(SUBJECT<C> const& subject, TEXEL_SET texels, V const (&along)[16], SQUEEZE squeeze,
                               WEIGHT_SUMS<C>& sums) {
    V const lowest = set(static_cast<float>(squeeze.below));
    V const steps = set(static_cast<float>(levels - 1 - squeeze.below - squeeze.above));
    sums.clear();
    for (std::size_t t = 0; t < 16; ++t) {
        V const index = round_to_nearest(hn::Add(hn::Mul(along[t], steps), lowest));
        V w = round_to_nearest(hn::Mul(index, set(64.0f / (levels - 1))));
        if constexpr (!whole)
            w = hn::IfThenElseZero(texels.has(t), w);
        sums.w = hn::Add(sums.w, w);
        sums.ww = hn::Add(sums.ww, square(w));
        V c[C];
        subject.load(t, c);
        for (std::size_t i = 0; i < C; ++i)
            sums.wc[i] = hn::Add(sums.wc[i], hn::Mul(w, c[i]));
    }
}

/// The whole fit of one subset whose moments are known. `whole` says that the set is all texels, which spares the
/// masks.
template <ENDPOINT_SPEC spec, std::size_t C, bool whole>
HWY_NOINLINE FIT<C> fit_subset(SUBJECT<C> const& subject, TEXEL_SET texels, MOMENTS<C> const& m, BC7_FIT_DEPTH depth) {
    V along[16];
    positions_on_axis<C, whole>(subject, texels, m, along);
    FIT<C> candidate[most_candidates];
    for (FIT<C>& none : candidate)
        none.error = set(3e38f);
    int starts = 0;
    for (SQUEEZE const squeeze : bc7_squeezes) {
        if (squeeze.below + squeeze.above > spec.levels - 2)
            continue;
        WEIGHT_SUMS<C> sums;
        sum_squeezed<spec.levels, whole>(subject, texels, along, squeeze, sums);
        ENDS<C> ends;
        V explained;
        ERROR_FORM const form = solve_least_squares<C>(subject, m, sums, ends, explained);
        each_rounding<spec, C>(subject, form, ends, [&](ENDS<C> const& rounded, V cost) {
            V const error = hn::Sub(cost, explained);
            FIT<C> next{rounded, error};
            for (int k = 0; k < depth.candidates; ++k) {
                M const better = hn::Lt(next.error, candidate[k].error);
                FIT<C> const displaced = candidate[k];
                candidate[k].take_if(better, next.ends, next.error);
                next.take_if(better, displaced.ends, displaced.error);
            }
        });
        if (++starts == depth.starts)
            break;
    }
    FIT<C> best{candidate[0].ends, set(3e38f)};
    for (int k = 0; k < depth.candidates; ++k) {
        ENDS<C> const& ends = candidate[k].ends;
        V const error = evaluate<EVALUATION{.whole = whole}, C>(subject, texels, ends, spec.levels, nullptr);
        best.take_if(hn::Lt(error, best.error), ends, error);
    }
    return best;
}

/// Betters a fit by moving one channel of one endpoint at a time one step up and down, for as long as that helps, at
/// most `sweeps` times over.
template <ENDPOINT_SPEC spec, std::size_t C, bool whole>
HWY_NOINLINE void polish_subset(SUBJECT<C> const& subject, TEXEL_SET texels, int sweeps, FIT<C>& best) {
    for (int sweep = 0; sweep < sweeps; ++sweep) {
        V const before = best.error;
        for (std::size_t i = 0; i < C; ++i)
            for (bool const second : {false, true})
                for (float const direction : {-1.0f, 1.0f}) {
                    ENDS<C> ends = best.ends;
                    V& moved = second ? ends.b[i] : ends.a[i];
                    with_grid<spec>(i, [&](auto grid) { moved = grid.next(moved, direction); });
                    V const error =
                        evaluate<EVALUATION{.whole = whole}, C>(subject, texels, ends, spec.levels, nullptr);
                    best.take_if(hn::Lt(error, best.error), ends, error);
                }
        if (hn::AllFalse(D(), hn::Lt(best.error, before)))
            break;
    }
}

}  // namespace blocks::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
