// Fits two endpoints to a set of texels, one block a lane: principal axis first, then rounds of quantising the
// endpoints, giving each texel its index and solving the endpoints anew by least squares for those indices (the
// alternation known from vector quantisation as Lloyd's; Lloyd 1982). The error that decides is the decoder's own,
// rounding and all.
#if defined(BLOCKS_BC7_SUBSET_FIT_INL_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef BLOCKS_BC7_SUBSET_FIT_INL_HPP
#undef BLOCKS_BC7_SUBSET_FIT_INL_HPP
#else
#define BLOCKS_BC7_SUBSET_FIT_INL_HPP
#endif

#include "blocks/bc7_search.hpp"
#include "blocks/principal_axis-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace blocks::HWY_NAMESPACE {

/// How much an error in each channel counts, with square roots ready.
struct CHANNEL_WEIGHTS {
    float weight[4];
    float root[4];
};

/// The texels of a fit: some channels of a group.
template <std::size_t C>
struct SUBJECT {
    TEXELS const& texels;
    CHANNEL_WEIGHTS const& weights;
    std::size_t channel[C];

    HWY_INLINE void load(std::size_t texel, V (&c)[C]) const {
        for (std::size_t i = 0; i < C; ++i)
            c[i] = texels.load(channel[i], texel);
    }
    HWY_INLINE V weight(std::size_t i) const { return set(weights.weight[channel[i]]); }
    HWY_INLINE float root(std::size_t i) const { return weights.root[channel[i]]; }
};

/// Two endpoints.
template <std::size_t C>
struct ENDS {
    V a[C];
    V b[C];
};

/// Endpoints that a decoder would see and the squared error that they give.
template <std::size_t C>
struct FIT {
    ENDS<C> ends;
    V error;

    HWY_INLINE void take_if(M better, ENDS<C> const& other, V other_error) {
        error = hn::IfThenElse(better, other_error, error);
        for (std::size_t i = 0; i < C; ++i) {
            ends.a[i] = hn::IfThenElse(better, other.a[i], ends.a[i]);
            ends.b[i] = hn::IfThenElse(better, other.b[i], ends.b[i]);
        }
    }
};

/// Sums that least squares needs of the weights w that the texels' indices stand for.
template <std::size_t C>
struct WEIGHT_SUMS {
    V w;
    V ww;
    V wc[C];

    HWY_INLINE void clear() {
        w = ww = zero();
        for (auto& s : wc)
            s = zero();
    }
    HWY_INLINE void take_if(M better, WEIGHT_SUMS const& other) {
        w = hn::IfThenElse(better, other.w, w);
        ww = hn::IfThenElse(better, other.ww, ww);
        for (std::size_t i = 0; i < C; ++i)
            wc[i] = hn::IfThenElse(better, other.wc[i], wc[i]);
    }
};

template <std::size_t C, bool whole>
HWY_INLINE MOMENTS<C> sum_moments(SUBJECT<C> const& subject, TEXEL_SET texels) {
    auto m = MOMENTS<C>::none();
    for (std::size_t t = 0; t < 16; ++t) {
        V c[C];
        subject.load(t, c);
        V one = set(1.0f);
        if constexpr (!whole) {
            M const in = texels.has(t);
            one = hn::IfThenElseZero(in, one);
            for (auto& v : c)
                v = hn::IfThenElseZero(in, v);
        }
        m.count = hn::Add(m.count, one);
        std::size_t k = 0;
        for (std::size_t i = 0; i < C; ++i) {
            m.sum[i] = hn::Add(m.sum[i], c[i]);
            for (std::size_t j = i; j < C; ++j, ++k)
                m.product[k] = hn::Add(m.product[k], hn::Mul(c[i], c[j]));
        }
    }
    return m;
}

/// The ends of the segment of the principal axis that the texels cover.
template <std::size_t C, bool whole>
HWY_INLINE ENDS<C> cover_axis(SUBJECT<C> const& subject, TEXEL_SET texels, MOMENTS<C> const& m) {
    V mean[C], project[C], direction[C];
    V const inverse_count = hn::Div(set(1.0f), hn::Max(m.count, set(1.0f)));
    for (std::size_t i = 0; i < C; ++i)
        mean[i] = hn::Mul(m.sum[i], inverse_count);
    if constexpr (C == 1) {
        project[0] = direction[0] = set(1.0f);
    } else {
        V matrix[triangle(C)];
        scatter_matrix<C>(m, matrix);
        std::size_t k = 0;
        for (std::size_t i = 0; i < C; ++i)
            for (std::size_t j = i; j < C; ++j, ++k)
                matrix[k] = hn::Mul(matrix[k], set(subject.root(i) * subject.root(j)));
        normalise<C>(matrix);
        V axis[C];
        power_iteration<C, 4>(matrix, axis);
        V const inverse = hn::Div(set(1.0f), hn::Max(hn::Sqrt(dot<C>(axis, axis)), set(1e-15f)));
        for (std::size_t i = 0; i < C; ++i) {
            V const unit = hn::Mul(axis[i], inverse);
            project[i] = hn::Mul(unit, set(subject.root(i)));
            direction[i] = hn::Mul(unit, set(1.0f / subject.root(i)));
        }
    }
    V low = set(3e38f), high = set(-3e38f);
    for (std::size_t t = 0; t < 16; ++t) {
        V c[C];
        subject.load(t, c);
        for (std::size_t i = 0; i < C; ++i)
            c[i] = hn::Sub(c[i], mean[i]);
        V const along = dot<C>(c, project);
        if constexpr (whole) {
            low = hn::Min(low, along);
            high = hn::Max(high, along);
        } else {
            M const in = texels.has(t);
            low = hn::IfThenElse(in, hn::Min(low, along), low);
            high = hn::IfThenElse(in, hn::Max(high, along), high);
        }
    }
    ENDS<C> ends;
    for (std::size_t i = 0; i < C; ++i) {
        ends.a[i] = hn::Add(mean[i], hn::Mul(direction[i], low));
        ends.b[i] = hn::Add(mean[i], hn::Mul(direction[i], high));
    }
    return ends;
}

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

/// The line through two decoded endpoints and the indices along it.
template <std::size_t C>
struct RAMP {
    V start[C];
    V step[C];     ///< way from end to end, in 64ths
    V project[C];  ///< takes a difference from `start` to a fraction of `last_index`
    V last_index;
    V index_to_weight;

    HWY_INLINE RAMP(ENDS<C> const& ends, V const (&weight)[C], V last) : last_index(last) {
        V way[C];
        V length = zero();
        for (std::size_t i = 0; i < C; ++i) {
            start[i] = ends.a[i];
            way[i] = hn::Sub(ends.b[i], ends.a[i]);
            step[i] = hn::Mul(way[i], set(1.0f / 64.0f));
            project[i] = hn::Mul(way[i], weight[i]);
            length = hn::Add(length, hn::Mul(way[i], project[i]));
        }
        V const inverse = hn::Div(last, hn::Max(length, set(1e-3f)));
        for (auto& p : project)
            p = hn::Mul(p, inverse);
        index_to_weight = hn::Div(set(64.0f), last);
    }

    HWY_INLINE V index(V const (&difference)[C]) const {
        return round_half_up(clamp(dot<C>(difference, project), zero(), last_index));
    }
    /// Weight of the second endpoint in 64ths.
    HWY_INLINE V weight(V index_) const { return round_half_up(hn::Mul(index_, index_to_weight)); }
};

/// Squared error of the texels where their indices are chosen along the ramp; optionally the sums for least squares.
template <std::size_t C, bool whole, bool with_sums>
HWY_INLINE V evaluate(SUBJECT<C> const& subject, TEXEL_SET texels, ENDS<C> const& ends, int levels,
                      WEIGHT_SUMS<C>* sums) {
    V channel_weight[C];
    for (std::size_t i = 0; i < C; ++i)
        channel_weight[i] = subject.weight(i);
    RAMP<C> const ramp(ends, channel_weight, set(static_cast<float>(levels - 1)));
    V channel_error[C];
    for (auto& e : channel_error)
        e = zero();
    WEIGHT_SUMS<C> s;
    s.clear();
    for (std::size_t t = 0; t < 16; ++t) {
        V c[C], difference[C];
        subject.load(t, c);
        for (std::size_t i = 0; i < C; ++i)
            difference[i] = hn::Sub(c[i], ramp.start[i]);
        V w = ramp.weight(ramp.index(difference));
        M in;
        if constexpr (!whole)
            in = texels.has(t);
        for (std::size_t i = 0; i < C; ++i) {
            V e = square(hn::Sub(round_half_up(hn::Mul(ramp.step[i], w)), difference[i]));
            if constexpr (!whole)
                e = hn::IfThenElseZero(in, e);
            channel_error[i] = hn::Add(channel_error[i], e);
        }
        if constexpr (with_sums) {
            if constexpr (!whole)
                w = hn::IfThenElseZero(in, w);
            s.w = hn::Add(s.w, w);
            s.ww = hn::Add(s.ww, hn::Mul(w, w));
            for (std::size_t i = 0; i < C; ++i)
                s.wc[i] = hn::Add(s.wc[i], hn::Mul(w, c[i]));
        }
    }
    if constexpr (with_sums)
        *sums = s;
    return dot<C>(channel_error, channel_weight);
}

/// Endpoints of least squared error for fixed indices. Lanes whose texels all have one weight keep what they have.
template <std::size_t C>
HWY_INLINE void solve_least_squares(MOMENTS<C> const& m, WEIGHT_SUMS<C> const& s, ENDS<C>& ends) {
    V const unit = set(1.0f / 64.0f);
    V const w = hn::Mul(s.w, unit);
    V const bb = hn::Mul(s.ww, set(1.0f / 4096.0f));
    V const ab = hn::Sub(w, bb);
    V const aa = hn::Sub(hn::Sub(m.count, w), ab);
    V const determinant = hn::Sub(hn::Mul(aa, bb), hn::Mul(ab, ab));
    M const sound = hn::Gt(determinant, set(1e-3f));
    V const inverse = hn::Div(set(1.0f), hn::IfThenElse(sound, determinant, set(1.0f)));
    for (std::size_t i = 0; i < C; ++i) {
        V const bc = hn::Mul(s.wc[i], unit);
        V const ac = hn::Sub(m.sum[i], bc);
        V const a = hn::Mul(hn::Sub(hn::Mul(bb, ac), hn::Mul(ab, bc)), inverse);
        V const b = hn::Mul(hn::Sub(hn::Mul(aa, bc), hn::Mul(ab, ac)), inverse);
        ends.a[i] = hn::IfThenElse(sound, a, ends.a[i]);
        ends.b[i] = hn::IfThenElse(sound, b, ends.b[i]);
    }
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
                V const error = evaluate<C, whole, true>(subject, texels, q, spec.levels, &s);
                M const lower = hn::Lt(error, lowest);
                lowest = hn::IfThenElse(lower, error, lowest);
                sums.take_if(lower, s);
                best.take_if(hn::Lt(error, best.error), q, error);
            }
        } else {
            ENDS<C> const q = quantise_nearest<spec, C>(subject, ends);
            V const error = last ? evaluate<C, whole, false>(subject, texels, q, spec.levels, nullptr)
                                 : evaluate<C, whole, true>(subject, texels, q, spec.levels, &sums);
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
