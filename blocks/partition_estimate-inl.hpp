// Ranks all partitions of a block by how well straight lines would fit their subsets, without fitting any. A subset's
// error is taken as the part of its scatter that lies off the principal axis, plus what evenly spaced steps along the
// axis leave: for texels spread evenly over a segment, scatter / (levels - 1)² remains. The sums of all 64 partitions
// are plain additions under masks that are the same for all lanes.
#if defined(BLOCKS_PARTITION_ESTIMATE_INL_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef BLOCKS_PARTITION_ESTIMATE_INL_HPP
#undef BLOCKS_PARTITION_ESTIMATE_INL_HPP
#else
#define BLOCKS_PARTITION_ESTIMATE_INL_HPP
#endif

#include <bit>

#include "blocks/bc7_tables.hpp"
#include "blocks/principal_axis-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace blocks::HWY_NAMESPACE {

/// Estimated errors of all partitions, in two parts.
struct PARTITION_SCORES {
    alignas(64) float off_axis[64][lane_count];
    alignas(64) float along_axis[64][lane_count];
};

/// What evenly spaced steps leave of the error along an axis: found by trying what ranks best.
inline constexpr float four_levels_leave = 0.08f;
inline constexpr float eight_levels_leave = 0.014f;

/// Channel products of every texel, worked out once for all partitions. `weighted`: texels count by their weights,
/// which stand in place of alpha.
template <std::size_t C, bool weighted = false>
struct TEXEL_PRODUCTS {
    alignas(64) float value[16][C + triangle(C) + weighted][lane_count];

    /// `weight_root` scales the channels before anything else.
    HWY_INLINE TEXEL_PRODUCTS(TEXELS const& texels, V const* weight_root) {
        for (std::size_t t = 0; t < 16; ++t) {
            V c[C];
            for (std::size_t i = 0; i < C; ++i)
                c[i] = hn::Mul(texels.load(i, t), weight_root[i]);
            V const share = weighted ? texels.load(3, t) : set(1.0f);
            std::size_t k = C;
            for (std::size_t i = 0; i < C; ++i) {
                V const shared = hn::Mul(c[i], share);
                hn::Store(shared, D(), value[t][i]);
                for (std::size_t j = i; j < C; ++j, ++k)
                    hn::Store(hn::Mul(shared, c[j]), D(), value[t][k]);
            }
            if constexpr (weighted)
                hn::Store(share, D(), value[t][k]);
        }
    }

    HWY_INLINE MOMENTS<C> sum(std::uint32_t mask) const {
        auto m = MOMENTS<C>::none();
        std::uint32_t count = 0;
        for (; mask; mask &= mask - 1, ++count) {
            auto const t = static_cast<std::size_t>(std::countr_zero(mask));
            for (std::size_t i = 0; i < C; ++i)
                m.sum[i] = hn::Add(m.sum[i], hn::Load(D(), value[t][i]));
            for (std::size_t k = 0; k < triangle(C); ++k)
                m.product[k] = hn::Add(m.product[k], hn::Load(D(), value[t][C + k]));
            if constexpr (weighted)
                m.count = hn::Add(m.count, hn::Load(D(), value[t][C + triangle(C)]));
        }
        if constexpr (!weighted)
            m.count = set(static_cast<float>(count));
        return m;
    }
};

/// What is left of `whole` without `part`.
template <std::size_t C>
HWY_INLINE MOMENTS<C> difference(MOMENTS<C> const& whole, MOMENTS<C> const& part) {
    MOMENTS<C> m;
    m.count = hn::Sub(whole.count, part.count);
    for (std::size_t i = 0; i < C; ++i)
        m.sum[i] = hn::Sub(whole.sum[i], part.sum[i]);
    for (std::size_t k = 0; k < triangle(C); ++k)
        m.product[k] = hn::Sub(whole.product[k], part.product[k]);
    return m;
}

/// A subset's error off its axis, and that along it for steps of one.
struct SUBSET_ESTIMATE {
    V off_axis;
    V along_axis;

    HWY_INLINE void add(SUBSET_ESTIMATE const& other) {
        off_axis = hn::Add(off_axis, other.off_axis);
        along_axis = hn::Add(along_axis, other.along_axis);
    }
};
/// `texels`: how many the subset has. Two lie on a line's ends, whatever the steps, and of few most come near to one.
template <std::size_t C, bool weighted>
HWY_INLINE SUBSET_ESTIMATE estimate_subset(MOMENTS<C> const& m, int texels) {
    // Scaled so that the fifth powers that follow stay in range.
    constexpr float scale = 1.0f / 512;
    V const inverse_count =
        weighted ? hn::Div(set(1.0f), hn::Max(m.count, set(1e-6f))) : set(1.0f / static_cast<float>(texels));
    V matrix[triangle(C)];
    std::size_t k = 0;
    for (std::size_t i = 0; i < C; ++i) {
        V const mean = hn::Mul(m.sum[i], inverse_count);
        for (std::size_t j = i; j < C; ++j, ++k)
            matrix[k] = hn::Mul(hn::Sub(m.product[k], hn::Mul(mean, m.sum[j])), set(scale));
    }
    V const size = trace<C>(matrix);
    V const along = hn::Min(largest_eigenvalue<C, 1>(matrix), size);
    float const inner = std::max(0.0f, static_cast<float>(texels - 2) / static_cast<float>(texels));
    return {hn::Mul(hn::Sub(size, along), set(1 / scale)), hn::Mul(along, set(inner * inner / scale))};
}

HWY_INLINE void store_scores(SUBSET_ESTIMATE const& estimate, std::size_t partition, PARTITION_SCORES& scores) {
    hn::Store(estimate.off_axis, D(), scores.off_axis[partition]);
    hn::Store(estimate.along_axis, D(), scores.along_axis[partition]);
}

template <std::size_t C, bool weighted>
void score_two_subsets(TEXEL_PRODUCTS<C, weighted> const& products, std::size_t partitions, PARTITION_SCORES& scores) {
    MOMENTS<C> const whole = products.sum(0xFFFF);
    for (std::size_t p = 0; p < partitions; ++p) {
        MOMENTS<C> const second = products.sum(two_subsets_second[p]);
        int const texels = std::popcount(two_subsets_second[p]);
        SUBSET_ESTIMATE estimate = estimate_subset<C, weighted>(second, texels);
        estimate.add(estimate_subset<C, weighted>(difference<C>(whole, second), 16 - texels));
        store_scores(estimate, p, scores);
    }
}

template <std::size_t C>
void score_three_subsets(TEXEL_PRODUCTS<C> const& products, PARTITION_SCORES& scores) {
    MOMENTS<C> const whole = products.sum(0xFFFF);
    for (std::size_t p = 0; p < 64; ++p) {
        MOMENTS<C> const second = products.sum(three_subsets_second[p]);
        MOMENTS<C> const third = products.sum(three_subsets_third[p]);
        int const seconds = std::popcount(three_subsets_second[p]);
        int const thirds = std::popcount(three_subsets_third[p]);
        SUBSET_ESTIMATE estimate = estimate_subset<C, false>(second, seconds);
        estimate.add(estimate_subset<C, false>(third, thirds));
        estimate.add(
            estimate_subset<C, false>(difference<C>(difference<C>(whole, second), third), 16 - seconds - thirds));
        store_scores(estimate, p, scores);
    }
}

/// For every lane the partitions of the lowest estimates among the first `partitions`, best first. Of the error along
/// the axis `left` is left.
struct RANKED_PARTITIONS {
    static constexpr std::size_t most = 16;
    alignas(64) std::uint32_t partition[most][lane_count];

    HWY_NOINLINE RANKED_PARTITIONS(PARTITION_SCORES const& scores, float left, std::size_t partitions,
                                   std::size_t wanted) {
        // The bits of positive floats are in the order of their values. The lowest six give way to the partition's
        // number, so that no two keys are the same and the next one is the least of those above.
        alignas(64) std::uint32_t keys[64][lane_count];
        VU const number_bits = hn::Set(DU(), 63u);
        for (std::size_t p = 0; p < partitions; ++p) {
            V const along = hn::Mul(hn::Load(D(), scores.along_axis[p]), set(left));
            V const score = hn::Add(hn::Load(D(), scores.off_axis[p]), along);
            VU const bits = hn::BitCast(DU(), hn::Max(score, set(1e-20f)));
            hn::Store(hn::Or(hn::AndNot(number_bits, bits), hn::Set(DU(), static_cast<std::uint32_t>(p))), DU(),
                      keys[p]);
        }
        VU const none = hn::Set(DU(), 0x7FFFFFFFu);
        VU last = hn::Zero(DU());
        for (std::size_t k = 0; k < wanted; ++k) {
            VU lowest = none;
            for (std::size_t p = 0; p < partitions; ++p) {
                VU const key = hn::Load(DU(), keys[p]);
                lowest = hn::Min(lowest, hn::IfThenElse(hn::Gt(key, last), key, none));
            }
            hn::Store(hn::And(number_bits, lowest), DU(), partition[k]);
            last = lowest;
        }
    }

    HWY_INLINE V number(std::size_t k) const {
        return hn::ConvertTo(D(), hn::BitCast(hn::RebindToSigned<D>(), hn::Load(DU(), partition[k])));
    }

    /// The texels that a table of masks gives for the k-th best partition.
    template <class TABLE>
    HWY_INLINE TEXEL_SET look_up(TABLE const& table, std::size_t k) const {
        alignas(64) std::uint32_t out[lane_count];
        for (std::size_t lane = 0; lane < lane_count; ++lane)
            out[lane] = table[partition[k][lane]];
        return {hn::Load(DU(), out)};
    }
};

}  // namespace blocks::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
