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

#include "blocks/bc7_tables.hpp"
#include "blocks/principal_axis-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace blocks::HWY_NAMESPACE {

/// Scores of all partitions (lower is better) where indices have 4 levels and where they have 8.
struct PARTITION_SCORES {
    alignas(64) float four_levels[64][max_lanes];
    alignas(64) float eight_levels[64][max_lanes];
};

/// Channel products of every texel, worked out once for all partitions.
template <std::size_t C>
struct TEXEL_PRODUCTS {
    alignas(64) float value[16][C + triangle(C)][max_lanes];

    /// `weight_root` scales the channels before anything else; `origin` is what counts as zero.
    HWY_INLINE TEXEL_PRODUCTS(TEXELS const& texels, float const* weight_root, V const* origin) {
        for (std::size_t t = 0; t < 16; ++t) {
            V c[C];
            for (std::size_t i = 0; i < C; ++i) {
                c[i] = hn::Mul(hn::Sub(texels.load(i, t), origin[i]), set(weight_root[i]));
                hn::Store(c[i], D(), value[t][i]);
            }
            std::size_t k = C;
            for (std::size_t i = 0; i < C; ++i)
                for (std::size_t j = i; j < C; ++j, ++k)
                    hn::Store(hn::Mul(c[i], c[j]), D(), value[t][k]);
        }
    }

    HWY_INLINE MOMENTS<C> sum(std::uint32_t mask) const {
        auto m = MOMENTS<C>::none();
        std::uint32_t count = 0;
        for (; mask; mask &= mask - 1, ++count) {
            auto const t = static_cast<std::size_t>(__builtin_ctz(mask));
            for (std::size_t i = 0; i < C; ++i)
                m.sum[i] = hn::Add(m.sum[i], hn::Load(D(), value[t][i]));
            for (std::size_t k = 0; k < triangle(C); ++k)
                m.product[k] = hn::Add(m.product[k], hn::Load(D(), value[t][C + k]));
        }
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

/// Adds a subset's estimated error off and along its axis.
template <std::size_t C>
HWY_INLINE void add_subset(MOMENTS<C> const& m, V& off_axis, V& along_axis) {
    V matrix[triangle(C)];
    scatter_matrix<C>(m, matrix);
    V const size = normalise<C>(matrix);
    V const along = hn::Min(hn::Mul(largest_eigenvalue<C, 2>(matrix), size), size);
    off_axis = hn::Add(off_axis, hn::Sub(size, along));
    along_axis = hn::Add(along_axis, along);
}

HWY_INLINE void store_scores(V off_axis, V along_axis, std::size_t partition, PARTITION_SCORES& scores) {
    hn::Store(hn::Add(off_axis, hn::Mul(along_axis, set(1.0f / 9.0f))), D(), scores.four_levels[partition]);
    hn::Store(hn::Add(off_axis, hn::Mul(along_axis, set(1.0f / 49.0f))), D(), scores.eight_levels[partition]);
}

template <std::size_t C>
void score_two_subsets(TEXEL_PRODUCTS<C> const& products, std::size_t partitions, PARTITION_SCORES& scores) {
    MOMENTS<C> const whole = products.sum(0xFFFF);
    for (std::size_t p = 0; p < partitions; ++p) {
        MOMENTS<C> const second = products.sum(two_subsets_second[p]);
        V off = zero(), along = zero();
        add_subset<C>(second, off, along);
        add_subset<C>(difference<C>(whole, second), off, along);
        store_scores(off, along, p, scores);
    }
}

template <std::size_t C>
void score_three_subsets(TEXEL_PRODUCTS<C> const& products, PARTITION_SCORES& scores) {
    MOMENTS<C> const whole = products.sum(0xFFFF);
    for (std::size_t p = 0; p < 64; ++p) {
        MOMENTS<C> const second = products.sum(three_subsets_second[p]);
        MOMENTS<C> const third = products.sum(three_subsets_third[p]);
        V off = zero(), along = zero();
        add_subset<C>(second, off, along);
        add_subset<C>(third, off, along);
        add_subset<C>(difference<C>(difference<C>(whole, second), third), off, along);
        store_scores(off, along, p, scores);
    }
}

/// For every lane the partitions of the lowest scores among the first `partitions`, best first.
struct RANKED_PARTITIONS {
    std::uint8_t partition[max_lanes][16];

    RANKED_PARTITIONS(float const (*score)[max_lanes], std::size_t partitions, std::size_t wanted) {
        alignas(64) float rest[64][max_lanes];
        for (std::size_t p = 0; p < partitions; ++p)
            hn::Store(hn::Load(D(), score[p]), D(), rest[p]);
        for (std::size_t k = 0; k < wanted; ++k) {
            V lowest = hn::Load(D(), rest[0]);
            V index = zero();
            for (std::size_t p = 1; p < partitions; ++p) {
                V const s = hn::Load(D(), rest[p]);
                M const lower = hn::Lt(s, lowest);
                lowest = hn::IfThenElse(lower, s, lowest);
                index = hn::IfThenElse(lower, set(static_cast<float>(p)), index);
            }
            alignas(64) float chosen[max_lanes];
            hn::Store(index, D(), chosen);
            for (std::size_t lane = 0; lane < lane_count; ++lane) {
                auto const p = static_cast<std::uint8_t>(chosen[lane]);
                partition[lane][k] = p;
                rest[p][lane] = 3e38f;
            }
        }
    }

    HWY_INLINE V number(std::size_t k) const {
        alignas(64) float out[max_lanes];
        for (std::size_t lane = 0; lane < lane_count; ++lane)
            out[lane] = partition[lane][k];
        return hn::Load(D(), out);
    }

    /// The texels that a table of masks gives for the k-th best partition.
    template <class TABLE>
    HWY_INLINE TEXEL_SET look_up(TABLE const& table, std::size_t k) const {
        alignas(64) std::uint32_t out[max_lanes];
        for (std::size_t lane = 0; lane < lane_count; ++lane)
            out[lane] = table[partition[lane][k]];
        return {hn::Load(DU(), out)};
    }
};

}  // namespace blocks::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
