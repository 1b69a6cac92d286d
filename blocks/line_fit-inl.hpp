// The pieces of fitting a line segment to a set of texels, one block a lane: the principal axis to begin with, indices
// along a segment and the error that they leave, and least squares for the endpoints where the indices stand. Taking
// the latter two by turns lowers the error step by step (Lloyd's method, 1982). What endpoints a format can store is
// none of this file's business.
#if defined(BLOCKS_LINE_FIT_INL_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef BLOCKS_LINE_FIT_INL_HPP
#undef BLOCKS_LINE_FIT_INL_HPP
#else
#define BLOCKS_LINE_FIT_INL_HPP
#endif

#include "blocks/channel_weights.hpp"
#include "blocks/principal_axis-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace blocks::HWY_NAMESPACE {

/// How much an error in each channel of each block counts, with square roots ready.
struct LANE_WEIGHTS {
    V weight[4];
    V root[4];

    /// The same for all blocks.
    HWY_INLINE explicit LANE_WEIGHTS(CHANNEL_WEIGHTS const& same) {
        for (std::size_t i = 0; i < 4; ++i) {
            weight[i] = set(same.weight[i]);
            root[i] = set(same.root[i]);
        }
    }
};

/// The texels of a fit: some channels of a group.
template <std::size_t C>
struct SUBJECT {
    TEXELS const& texels;
    LANE_WEIGHTS const& weights;
    std::size_t channel[C];

    HWY_INLINE void load(std::size_t texel, V (&c)[C]) const {
        for (std::size_t i = 0; i < C; ++i)
            c[i] = texels.load(channel[i], texel);
    }
    HWY_INLINE V weight(std::size_t i) const { return weights.weight[channel[i]]; }
    HWY_INLINE V root(std::size_t i) const { return weights.root[channel[i]]; }
    /// How much a texel counts, where texels differ in that. It stands in place of alpha.
    HWY_INLINE V texel_weight(std::size_t texel) const { return texels.load(3, texel); }
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

/// How texels are summed up. `whole`: the set is all texels, which spares the masks. `sums`: `evaluate` collects what
/// least squares needs. `rounded`: texels are whole numbers and decoders round to them. `anchored`: texel 0 must get
/// along with the lower half of the indices. `weighted`: texels count by their weights.
struct EVALUATION {
    bool whole = false;
    bool sums = false;
    bool rounded = true;
    bool anchored = false;
    bool weighted = false;
};

template <EVALUATION how, std::size_t C>
HWY_NOINLINE MOMENTS<C> sum_moments(SUBJECT<C> const& subject, TEXEL_SET texels) {
    auto m = MOMENTS<C>::none();
    for (std::size_t t = 0; t < 16; ++t) {
        V c[C];
        subject.load(t, c);
        V share = how.weighted ? subject.texel_weight(t) : set(1.0f);
        if constexpr (!how.whole)
            share = hn::IfThenElseZero(texels.has(t), share);
        m.count = hn::Add(m.count, share);
        std::size_t k = 0;
        for (std::size_t i = 0; i < C; ++i) {
            V const shared = hn::Mul(c[i], share);
            m.sum[i] = hn::Add(m.sum[i], shared);
            for (std::size_t j = i; j < C; ++j, ++k)
                m.product[k] = hn::Add(m.product[k], hn::Mul(shared, c[j]));
        }
    }
    return m;
}

/// The principal axis in the space whose channels are scaled by the roots of their weights; of any length.
template <std::size_t C>
HWY_INLINE void principal_axis(SUBJECT<C> const& subject, MOMENTS<C> const& m, V (&axis)[C]) {
    V matrix[triangle(C)];
    scatter_matrix<C>(m, matrix);
    std::size_t k = 0;
    for (std::size_t i = 0; i < C; ++i)
        for (std::size_t j = i; j < C; ++j, ++k)
            matrix[k] = hn::Mul(matrix[k], hn::Mul(subject.root(i), subject.root(j)));
    normalise<C>(matrix);
    power_iteration<C, 4>(matrix, axis);
}

/// The ends of the segment of the principal axis that the texels cover.
template <std::size_t C, bool whole>
HWY_NOINLINE ENDS<C> cover_axis(SUBJECT<C> const& subject, TEXEL_SET texels, MOMENTS<C> const& m) {
    V mean[C], project[C], direction[C];
    V const inverse_count = hn::Div(set(1.0f), hn::Max(m.count, set(1e-6f)));
    for (std::size_t i = 0; i < C; ++i)
        mean[i] = hn::Mul(m.sum[i], inverse_count);
    if constexpr (C == 1) {
        project[0] = direction[0] = set(1.0f);
    } else {
        V axis[C];
        principal_axis<C>(subject, m, axis);
        V const inverse = hn::Div(set(1.0f), hn::Max(hn::Sqrt(dot<C>(axis, axis)), set(1e-18f)));
        for (std::size_t i = 0; i < C; ++i) {
            V const unit = hn::Mul(axis[i], inverse);
            project[i] = hn::Mul(unit, subject.root(i));
            direction[i] = hn::Div(unit, subject.root(i));
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
        V const inverse = hn::Div(last, hn::Max(length, set(1e-6f)));
        for (auto& p : project)
            p = hn::Mul(p, inverse);
        index_to_weight = hn::Div(set(64.0f), last);
    }

    HWY_INLINE V index(V const (&difference)[C]) const { return index(difference, last_index); }
    /// The index where only those up to `limit` will do.
    HWY_INLINE V index(V const (&difference)[C], V limit) const {
        return round_half_up(clamp(dot<C>(difference, project), zero(), limit));
    }
    /// Weight of the second endpoint in 64ths.
    HWY_INLINE V weight(V index_) const { return round_half_up(hn::Mul(index_, index_to_weight)); }
};

/// Squared error of the texels where their indices are chosen along the segment.
template <EVALUATION how, std::size_t C>
HWY_NOINLINE V evaluate(SUBJECT<C> const& subject, TEXEL_SET texels, ENDS<C> const& ends, int levels,
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
        bool const lower_half = how.anchored && t == 0;
        V const limit = lower_half ? set(static_cast<float>(levels / 2 - 1)) : ramp.last_index;
        V w = ramp.weight(ramp.index(difference, limit));
        M in;
        if constexpr (!how.whole)
            in = texels.has(t);
        V share;
        if constexpr (how.weighted) {
            share = subject.texel_weight(t);
            if constexpr (!how.whole)
                share = hn::IfThenElseZero(in, share);
        }
        for (std::size_t i = 0; i < C; ++i) {
            V way = hn::Mul(ramp.step[i], w);
            if constexpr (how.rounded)
                way = round_half_up(way);
            V e = square(hn::Sub(way, difference[i]));
            if constexpr (how.weighted)
                e = hn::Mul(e, share);
            else if constexpr (!how.whole)
                e = hn::IfThenElseZero(in, e);
            channel_error[i] = hn::Add(channel_error[i], e);
        }
        if constexpr (how.sums) {
            V shared = w;
            if constexpr (how.weighted)
                shared = hn::Mul(w, share);
            else if constexpr (!how.whole)
                shared = hn::IfThenElseZero(in, w);
            s.w = hn::Add(s.w, shared);
            s.ww = hn::Add(s.ww, hn::Mul(shared, w));
            for (std::size_t i = 0; i < C; ++i)
                s.wc[i] = hn::Add(s.wc[i], hn::Mul(shared, c[i]));
        }
    }
    if constexpr (how.sums)
        *sums = s;
    return dot<C>(channel_error, channel_weight);
}

/// How the squared error grows as endpoints move by da and db from where it is least, the indices staying as they are:
/// aa da² + 2 ab da db + bb db², in every channel.
struct ERROR_FORM {
    V aa;
    V ab;
    V bb;

    /// For `count` texels spread evenly between the endpoints.
    HWY_INLINE static ERROR_FORM even(V count) {
        V const third = hn::Mul(count, set(1.0f / 3.0f));
        return {third, hn::Mul(third, set(0.5f)), third};
    }
    HWY_INLINE V growth(V da, V db) const {
        V const b = hn::Mul(bb, db);
        return hn::Add(hn::Mul(da, hn::Add(hn::Mul(aa, da), hn::Mul(set(2.0f), hn::Mul(ab, db)))), hn::Mul(b, db));
    }
};

/// Endpoints of least squared error for fixed indices, and in `explained` how much less than the scatter that error is.
/// Texels that all have one weight get their mean.
template <std::size_t C>
HWY_INLINE ERROR_FORM solve_least_squares(SUBJECT<C> const& subject, MOMENTS<C> const& m, WEIGHT_SUMS<C> const& s,
                                          ENDS<C>& ends, V& explained) {
    V const unit = set(1.0f / 64.0f);
    V const w = hn::Mul(s.w, unit);
    ERROR_FORM form;
    form.bb = hn::Mul(s.ww, set(1.0f / 4096.0f));
    form.ab = hn::Sub(w, form.bb);
    form.aa = hn::Sub(hn::Sub(m.count, w), form.ab);
    V const determinant = hn::Sub(hn::Mul(form.aa, form.bb), square(form.ab));
    M const sound = hn::Gt(determinant, set(1e-3f));
    V const inverse = hn::IfThenElseZero(sound, hn::Div(set(1.0f), hn::Max(determinant, set(1e-3f))));
    V const inverse_count = hn::Div(set(1.0f), hn::Max(m.count, set(1e-6f)));
    V const back = hn::Mul(w, inverse);
    V const ahead = hn::Mul(hn::Sub(m.count, w), inverse);
    explained = zero();
    for (std::size_t i = 0; i < C; ++i) {
        // Relative to the mean, the first endpoint's share of the texels is minus the second's.
        V const mean = hn::Mul(m.sum[i], inverse_count);
        V const share = hn::Sub(hn::Mul(s.wc[i], unit), hn::Mul(w, mean));
        ends.a[i] = hn::Sub(mean, hn::Mul(share, back));
        ends.b[i] = hn::Add(mean, hn::Mul(share, ahead));
        explained = hn::Add(explained, hn::Mul(square(share), subject.weight(i)));
    }
    explained = hn::Mul(explained, hn::Mul(m.count, inverse));
    return form;
}

}  // namespace blocks::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
