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

/// The value nearest to `value` that `bits` bits and, below them, `p` can express, as a decoder widens it.
template <int bits, bool has_p>
HWY_INLINE V quantise(V value, V p) {
    constexpr int total = bits + has_p;
    constexpr float top = static_cast<float>((1 << bits) - 1);
    constexpr float scale = static_cast<float>((1 << total) - 1) / 255.0f;
    V code;
    if constexpr (has_p) {
        code = round_half_up(hn::Mul(hn::Sub(hn::Mul(value, set(scale)), p), set(0.5f)));
        code = clamp(code, zero(), set(top));
        code = hn::Add(hn::Add(code, code), p);
    } else {
        code = clamp(round_half_up(hn::Mul(value, set(scale))), zero(), set(top));
    }
    if constexpr (total == 8) {
        return code;
    } else {
        constexpr float up = static_cast<float>(1 << (8 - total));
        constexpr float down = 1.0f / static_cast<float>(1 << (2 * total - 8));
        return hn::Add(hn::Mul(code, set(up)), hn::Floor(hn::Mul(code, set(down))));
    }
}

template <ENDPOINT_SPEC spec, std::size_t C>
HWY_INLINE void quantise_end(V const (&value)[C], V p, V (&out)[C]) {
    constexpr bool has_p = spec.p != P_BITS::none;
    for (std::size_t i = 0; i < C && i < 3; ++i)
        out[i] = quantise<spec.colour_bits, has_p>(value[i], p);
    if constexpr (C == 4)
        out[3] = quantise<spec.alpha_bits, has_p>(value[3], p);
}

template <std::size_t C>
HWY_INLINE V distance(SUBJECT<C> const& subject, V const (&a)[C], V const (&b)[C]) {
    V sum = zero();
    for (std::size_t i = 0; i < C; ++i)
        sum = hn::Add(sum, hn::Mul(square(hn::Sub(a[i], b[i])), subject.weight(i)));
    return sum;
}

/// Quantises both ends with the p-bits that bring them nearest.
template <ENDPOINT_SPEC spec, std::size_t C>
HWY_INLINE ENDS<C> quantise_nearest(SUBJECT<C> const& subject, ENDS<C> const& ends) {
    ENDS<C> out;
    if constexpr (spec.p == P_BITS::none || spec.p == P_BITS::always_one) {
        quantise_end<spec, C>(ends.a, set(1.0f), out.a);
        quantise_end<spec, C>(ends.b, set(1.0f), out.b);
    } else {
        ENDS<C> one;
        quantise_end<spec, C>(ends.a, zero(), out.a);
        quantise_end<spec, C>(ends.b, zero(), out.b);
        quantise_end<spec, C>(ends.a, set(1.0f), one.a);
        quantise_end<spec, C>(ends.b, set(1.0f), one.b);
        V gain_a = hn::Sub(distance<C>(subject, ends.a, out.a), distance<C>(subject, ends.a, one.a));
        V gain_b = hn::Sub(distance<C>(subject, ends.b, out.b), distance<C>(subject, ends.b, one.b));
        if constexpr (spec.p == P_BITS::shared)
            gain_a = gain_b = hn::Add(gain_a, gain_b);
        M const one_a = hn::Gt(gain_a, zero());
        M const one_b = hn::Gt(gain_b, zero());
        for (std::size_t i = 0; i < C; ++i) {
            out.a[i] = hn::IfThenElse(one_a, one.a[i], out.a[i]);
            out.b[i] = hn::IfThenElse(one_b, one.b[i], out.b[i]);
        }
    }
    return out;
}

/// The whole fit of one subset. `whole` says that the set is all texels, which spares the masks.
template <ENDPOINT_SPEC spec, std::size_t C, bool whole>
FIT<C> fit_subset(SUBJECT<C> const& subject, TEXEL_SET texels, BC7_SEARCH const& search) {
    MOMENTS<C> const m = sum_moments<C, whole>(subject, texels);
    ENDS<C> ends = cover_axis<C, whole>(subject, texels, m);
    FIT<C> best;
    best.ends = ends;
    best.error = set(3e38f);
    for (int round = 0; round < search.rounds; ++round) {
        WEIGHT_SUMS<C> sums;
        sums.clear();
        bool const last = round + 1 == search.rounds;
        constexpr bool choice = spec.p == P_BITS::own || spec.p == P_BITS::shared;
        if (choice && search.all_p_bits) {
            constexpr int combinations = spec.p == P_BITS::own ? 4 : 2;
            V lowest = set(3e38f);
            for (int p = 0; p < combinations; ++p) {
                ENDS<C> q;
                V const p_a = set(static_cast<float>(p & 1));
                V const p_b = set(static_cast<float>(spec.p == P_BITS::own ? p >> 1 : p));
                quantise_end<spec, C>(ends.a, p_a, q.a);
                quantise_end<spec, C>(ends.b, p_b, q.b);
                WEIGHT_SUMS<C> s;
                V const error = evaluate<EVALUATION{.whole = whole, .sums = true}>(subject, texels, q, spec.levels, &s);
                M const lower = hn::Lt(error, lowest);
                lowest = hn::IfThenElse(lower, error, lowest);
                sums.take_if(lower, s);
                best.take_if(hn::Lt(error, best.error), q, error);
            }
        } else {
            ENDS<C> const q = quantise_nearest<spec, C>(subject, ends);
            V const error =
                last ? evaluate<EVALUATION{.whole = whole}, C>(subject, texels, q, spec.levels, nullptr)
                     : evaluate<EVALUATION{.whole = whole, .sums = true}>(subject, texels, q, spec.levels, &sums);
            best.take_if(hn::Lt(error, best.error), q, error);
        }
        if (!last)
            solve_least_squares<C>(m, sums, ends);
    }
    return best;
}

}  // namespace blocks::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
