// Rounding of real-valued BC7 endpoints to values that the format can store, one block a lane. With the indices held,
// the squared error is a quadratic in both endpoints, and what rounding one of them costs can in part be made up for
// by the other: for each of the two values next to the first endpoint the second is placed anew (the nearest-plane
// method of L. Babai, "On Lovász' lattice reduction and the nearest lattice point problem", 1986).
#if defined(BLOCKS_BC7_ROUNDING_INL_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef BLOCKS_BC7_ROUNDING_INL_HPP
#undef BLOCKS_BC7_ROUNDING_INL_HPP
#else
#define BLOCKS_BC7_ROUNDING_INL_HPP
#endif

#include "blocks/bc7_search.hpp"
#include "blocks/line_fit-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace blocks::HWY_NAMESPACE {

/// The values that `bits` bits and, below them, a p-bit can express, as a decoder widens them.
template <int bits, bool has_p>
struct ENDPOINT_GRID {
    static constexpr int total = bits + has_p;
    static constexpr float top = static_cast<float>((1 << bits) - 1);

    /// Real-valued code of a value. Far outside 0 … 255 rounding would fail, and the grid ends much earlier.
    HWY_INLINE static V code_of(V value, float p) {
        constexpr float scale = static_cast<float>((1 << total) - 1) / 255.0f;
        V const near = clamp(value, set(-512.0f), set(768.0f));
        if constexpr (has_p)
            return hn::Sub(hn::Mul(near, set(scale * 0.5f)), set(p * 0.5f));
        else
            return hn::Mul(near, set(scale));
    }

    /// Value of a whole code, brought into range.
    HWY_INLINE static V widen(V code, float p) {
        code = clamp(code, zero(), set(top));
        if constexpr (has_p)
            code = hn::Add(hn::Add(code, code), set(p));
        return repeat_top_bits(code);
    }

    /// Value of all bits of an endpoint, the p-bit included.
    HWY_INLINE static V repeat_top_bits(V all_bits) {
        if constexpr (total == 8) {
            return all_bits;
        } else {
            constexpr float up = static_cast<float>(1 << (8 - total));
            constexpr float down = 1.0f / static_cast<float>(1 << (2 * total - 8));
            return hn::Add(hn::Mul(all_bits, set(up)), hn::Floor(hn::Mul(all_bits, set(down))));
        }
    }

    HWY_INLINE static V nearest(V value, float p) { return widen(round_to_nearest(code_of(value, p)), p); }

    /// One step up or down from a value of the grid, the p-bit staying as it is; the value itself at the grid's end.
    HWY_INLINE static V next(V value, float direction) {
        V const all_bits = hn::Floor(hn::Mul(value, set(1.0f / static_cast<float>(1 << (8 - total)))));
        V const moved = hn::Add(all_bits, set(has_p ? 2.0f * direction : direction));
        V const limit = set(static_cast<float>((1 << total) - 1));
        M const outside = hn::Or(hn::Lt(moved, zero()), hn::Gt(moved, limit));
        return hn::IfThenElse(outside, value, repeat_top_bits(moved));
    }
};

/// Calls `use` with the grid of channel `channel`.
template <ENDPOINT_SPEC spec, class USE>
HWY_INLINE void with_grid(std::size_t channel, USE&& use) {
    constexpr bool has_p = spec.p != P_BITS::none;
    if (channel < 3)
        use(ENDPOINT_GRID<spec.colour_bits, has_p>());
    else
        use(ENDPOINT_GRID < spec.alpha_bits == 0 ? spec.colour_bits : spec.alpha_bits, has_p > ());
}

/// A value for the first endpoint of one channel, what it costs and where the second one should then be.
struct FIRST_END {
    V value;
    V cost;
    V slope;
    V target;
};

/// Calls `use(rounded ends, cost)` for every combination of p-bits that the mode knows, with the pair of values that
/// costs least in each channel. The cost is how much more the squared error becomes.
template <ENDPOINT_SPEC spec, std::size_t C, class USE>
HWY_INLINE void each_rounding(SUBJECT<C> const& subject, ERROR_FORM const& form, ENDS<C> const& ends, USE&& use) {
    constexpr int first_p = spec.p == P_BITS::always_one ? 1 : 0;
    constexpr int last_p = spec.p == P_BITS::none || spec.p == P_BITS::always_zero ? 0 : 1;
    V const follow = hn::Div(form.ab, hn::Max(form.bb, set(1e-6f)));
    for (int p_a = first_p; p_a <= last_p; ++p_a) {
        FIRST_END first[C][2];
        for (std::size_t i = 0; i < C; ++i)
            with_grid<spec>(i, [&](auto grid) {
                auto const p = static_cast<float>(p_a);
                V const below = hn::Floor(grid.code_of(ends.a[i], p));
                for (int k = 0; k < 2; ++k) {
                    V const value = grid.widen(hn::Add(below, set(static_cast<float>(k))), p);
                    V const da = hn::Sub(value, ends.a[i]);
                    V const across = hn::Mul(form.ab, da);
                    first[i][k] = {value, hn::Mul(hn::Mul(form.aa, da), da), hn::Add(across, across),
                                   hn::Sub(ends.b[i], hn::Mul(follow, da))};
                }
            });
        for (int p_b = first_p; p_b <= last_p; ++p_b) {
            if (spec.p == P_BITS::shared && p_a != p_b)
                continue;
            ENDS<C> rounded;
            V total = zero();
            for (std::size_t i = 0; i < C; ++i)
                with_grid<spec>(i, [&](auto grid) {
                    V cost[2], b[2];
                    for (int k = 0; k < 2; ++k) {
                        b[k] = grid.nearest(first[i][k].target, static_cast<float>(p_b));
                        V const db = hn::Sub(b[k], ends.b[i]);
                        cost[k] =
                            hn::Add(first[i][k].cost, hn::Mul(db, hn::Add(first[i][k].slope, hn::Mul(form.bb, db))));
                    }
                    M const upper = hn::Lt(cost[1], cost[0]);
                    rounded.a[i] = hn::IfThenElse(upper, first[i][1].value, first[i][0].value);
                    rounded.b[i] = hn::IfThenElse(upper, b[1], b[0]);
                    total = hn::Add(total, hn::Mul(hn::Min(cost[0], cost[1]), subject.weight(i)));
                });
            use(rounded, total);
        }
    }
}

}  // namespace blocks::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
