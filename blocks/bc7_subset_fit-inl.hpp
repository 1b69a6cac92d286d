// Fits a subset of a BC7 block, one block a lane: rounds of quantising the endpoints, giving each texel its index and
// solving the endpoints anew. The error that decides is the decoder's own, rounding and all.
#if defined(BLOCKS_BC7_SUBSET_FIT_INL_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef BLOCKS_BC7_SUBSET_FIT_INL_HPP
#undef BLOCKS_BC7_SUBSET_FIT_INL_HPP
#else
#define BLOCKS_BC7_SUBSET_FIT_INL_HPP
#endif

#include "blocks/bc7_search.hpp"
#include "blocks/line_fit-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace blocks::HWY_NAMESPACE {

/// Values that `bits` bits and, below them, a p-bit can express, as a decoder widens them: the next one not above a
/// value and the next one above.
struct NEIGHBOURS {
    V low;
    V high;
};

template <int bits, bool has_p>
HWY_INLINE NEIGHBOURS neighbours(V value, V p) {
    constexpr int total = bits + has_p;
    constexpr float top = static_cast<float>((1 << bits) - 1);
    constexpr float scale = static_cast<float>((1 << total) - 1) / 255.0f;
    auto const widen = [&](V code) {
        code = clamp(code, zero(), set(top));
        if constexpr (has_p)
            code = hn::Add(hn::Add(code, code), p);
        if constexpr (total == 8) {
            return code;
        } else {
            constexpr float up = static_cast<float>(1 << (8 - total));
            constexpr float down = 1.0f / static_cast<float>(1 << (2 * total - 8));
            return hn::Add(hn::Mul(code, set(up)), hn::Floor(hn::Mul(code, set(down))));
        }
    };
    V scaled = hn::Mul(value, set(scale));
    if constexpr (has_p)
        scaled = hn::Mul(hn::Sub(scaled, p), set(0.5f));
    V const code = hn::Floor(scaled);
    return {widen(code), widen(hn::Add(code, set(1.0f)))};
}

template <ENDPOINT_SPEC spec, std::size_t C>
HWY_INLINE void neighbours_of_end(V const (&value)[C], float p, NEIGHBOURS (&out)[C]) {
    constexpr bool has_p = spec.p != P_BITS::none;
    for (std::size_t i = 0; i < C && i < 3; ++i)
        out[i] = neighbours<spec.colour_bits, has_p>(value[i], set(p));
    if constexpr (C == 4)
        out[3] = neighbours<spec.alpha_bits, has_p>(value[3], set(p));
}

/// Rounds both ends to values that the p-bits allow: in each channel the pair of neighbours that costs least. Gives the
/// cost.
template <std::size_t C>
HWY_INLINE V round_ends(SUBJECT<C> const& subject, ERROR_FORM const& form, ENDS<C> const& ends,
                        NEIGHBOURS const (&near_a)[C], NEIGHBOURS const (&near_b)[C], ENDS<C>& out) {
    V total = zero();
    for (std::size_t i = 0; i < C; ++i) {
        V cost = set(3e38f);
        for (V const a : {near_a[i].low, near_a[i].high})
            for (V const b : {near_b[i].low, near_b[i].high}) {
                V const growth = form.growth(hn::Sub(a, ends.a[i]), hn::Sub(b, ends.b[i]));
                M const less = hn::Lt(growth, cost);
                cost = hn::Min(growth, cost);
                out.a[i] = hn::IfThenElse(less, a, out.a[i]);
                out.b[i] = hn::IfThenElse(less, b, out.b[i]);
            }
        total = hn::Add(total, hn::Mul(cost, subject.weight(i)));
    }
    return total;
}

/// Calls `use(rounded ends, cost)` for every combination of p-bits that the mode knows.
template <ENDPOINT_SPEC spec, std::size_t C, class USE>
HWY_INLINE void each_rounding(SUBJECT<C> const& subject, ERROR_FORM const& form, ENDS<C> const& ends, USE&& use) {
    constexpr int first_p = spec.p == P_BITS::always_one ? 1 : 0;
    constexpr int last_p = spec.p == P_BITS::none || spec.p == P_BITS::always_zero ? 0 : 1;
    NEIGHBOURS near_a[2][C], near_b[2][C];
    for (int p = first_p; p <= last_p; ++p) {
        neighbours_of_end<spec, C>(ends.a, static_cast<float>(p), near_a[p]);
        neighbours_of_end<spec, C>(ends.b, static_cast<float>(p), near_b[p]);
    }
    for (int p_a = first_p; p_a <= last_p; ++p_a)
        for (int p_b = first_p; p_b <= last_p; ++p_b) {
            if (spec.p == P_BITS::shared && p_a != p_b)
                continue;
            ENDS<C> rounded = ends;
            V const cost = round_ends<C>(subject, form, ends, near_a[p_a], near_b[p_b], rounded);
            use(rounded, cost);
        }
}

/// The whole fit of one subset. `whole` says that the set is all texels, which spares the masks.
template <ENDPOINT_SPEC spec, std::size_t C, bool whole>
FIT<C> fit_subset(SUBJECT<C> const& subject, TEXEL_SET texels, BC7_SEARCH const& search) {
    MOMENTS<C> const m = sum_moments<C, whole>(subject, texels);
    ENDS<C> ends = cover_axis<C, whole>(subject, texels, m);
    auto form = ERROR_FORM::even(m.count);
    FIT<C> best{ends, set(3e38f)};
    for (int round = 0; round < search.rounds; ++round) {
        WEIGHT_SUMS<C> sums;
        sums.clear();
        bool const last = round + 1 == search.rounds;
        constexpr bool choice = spec.p == P_BITS::own || spec.p == P_BITS::shared;
        if (choice && search.all_p_bits) {
            V lowest = set(3e38f);
            each_rounding<spec, C>(subject, form, ends, [&](ENDS<C> const& rounded, V) {
                WEIGHT_SUMS<C> s;
                V const error =
                    evaluate<EVALUATION{.whole = whole, .sums = true}>(subject, texels, rounded, spec.levels, &s);
                M const lower = hn::Lt(error, lowest);
                lowest = hn::Min(error, lowest);
                sums.take_if(lower, s);
                best.take_if(hn::Lt(error, best.error), rounded, error);
            });
        } else {
            FIT<C> cheapest{ends, set(3e38f)};
            each_rounding<spec, C>(subject, form, ends, [&](ENDS<C> const& rounded, V cost) {
                cheapest.take_if(hn::Lt(cost, cheapest.error), rounded, cost);
            });
            ENDS<C> const& q = cheapest.ends;
            V const error =
                last ? evaluate<EVALUATION{.whole = whole}, C>(subject, texels, q, spec.levels, nullptr)
                     : evaluate<EVALUATION{.whole = whole, .sums = true}>(subject, texels, q, spec.levels, &sums);
            best.take_if(hn::Lt(error, best.error), q, error);
        }
        if (!last)
            form = solve_least_squares<C>(m, sums, ends);
    }
    return best;
}

}  // namespace blocks::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
