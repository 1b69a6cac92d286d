// Blocks that are searched together, and how they get into lanes. A trial is one mode and partition (or rotation) for
// one block. What pays differs from block to block, so lanes are not tied to blocks: the trials that are worth making
// are listed, and each lane takes the next one, whichever block it is for. No block's result depends on its company.
#if defined(BLOCKS_BC7_POOL_INL_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef BLOCKS_BC7_POOL_INL_HPP
#undef BLOCKS_BC7_POOL_INL_HPP
#else
#define BLOCKS_BC7_POOL_INL_HPP
#endif

#include <algorithm>
#include <cstring>
#include <span>
#include <utility>
#include <vector>

#include "blocks/bc7_code.hpp"
#include "blocks/bc7_tables.hpp"
#include "blocks/line_fit-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace blocks::HWY_NAMESPACE {

/// A block and the best that is known for it. Indices are left out: they follow from the endpoints.
struct BC7_BLOCK {
    std::uint8_t rgba[16][4];
    std::uint8_t* out;
    float error;
    /// No more than four different texels, as in lettering: estimates, which take texels to be spread along a line,
    /// expect too much error then.
    bool few_colours;
    BC7_CODE code;
};

inline bool has_few_colours(std::uint8_t const (&rgba)[16][4]) {
    std::uint8_t seen[4][4];
    std::size_t count = 0;
    for (auto const& texel : rgba) {
        bool known = false;
        for (std::size_t i = 0; i < count; ++i)
            known = known || std::memcmp(texel, seen[i], 4) == 0;
        if (known)
            continue;
        if (count == 4)
            return false;
        std::memcpy(seen[count++], texel, 4);
    }
    return true;
}

/// `variant` is the partition, or the rotation of modes 4 and 5.
struct BC7_TRIAL {
    std::uint16_t block;
    std::uint8_t variant;
};

struct BC7_POOL {
    static constexpr std::size_t most = 128;
    std::vector<BC7_BLOCK> blocks;
    CHANNEL_WEIGHTS weights;
};

/// A few trials, one a lane. Lanes left over repeat the last one.
struct BC7_LANES {
    BC7_POOL& pool;
    std::span<BC7_TRIAL const> trials;
    TEXELS texels;
    LANE_WEIGHTS weights;
    V limit;  ///< the error that a trial must get below

    /// `rotated`: variants are rotations, and the channel that they name changes places with alpha.
    HWY_INLINE BC7_LANES(BC7_POOL& from, std::span<BC7_TRIAL const> which, bool rotated)
        : pool(from),
          trials(which),
          weights(from.weights) {
        alignas(64) std::uint8_t packed[16][lane_count][4];
        alignas(64) float limits[lane_count];
        for (std::size_t lane = 0; lane < lane_count; ++lane) {
            BC7_BLOCK const& block = at(lane);
            for (std::size_t t = 0; t < 16; ++t)
                std::memcpy(packed[t][lane], block.rgba[t], 4);
            if (std::size_t const rotation = rotated ? variant(lane) : 0u)
                for (auto& texel : packed)
                    std::swap(texel[lane][rotation - 1], texel[lane][3]);
            limits[lane] = block.error;
        }
        limit = hn::Load(D(), limits);
        for (std::size_t t = 0; t < 16; ++t) {
            VU const all = load_packed(packed[t]);
            hn::Store(channel_of<0>(all), D(), texels.value[0][t]);
            hn::Store(channel_of<8>(all), D(), texels.value[1][t]);
            hn::Store(channel_of<16>(all), D(), texels.value[2][t]);
            hn::Store(channel_of<24>(all), D(), texels.value[3][t]);
        }
        if (rotated)
            for (std::size_t c = 0; c < 3; ++c) {
                M const lone = hn::Eq(variants(), set(static_cast<float>(c + 1)));
                V const weight = weights.weight[c];
                V const root = weights.root[c];
                V const full = set(pool.weights.weight[3]);
                weights.weight[c] = hn::IfThenElse(lone, full, weight);
                weights.root[c] = hn::IfThenElse(lone, full, root);
                weights.weight[3] = hn::IfThenElse(lone, weight, weights.weight[3]);
                weights.root[3] = hn::IfThenElse(lone, root, weights.root[3]);
            }
    }

    HWY_INLINE BC7_TRIAL trial(std::size_t lane) const {
        return trials[lane < trials.size() ? lane : trials.size() - 1];
    }
    HWY_INLINE std::uint8_t variant(std::size_t lane) const { return trial(lane).variant; }
    HWY_INLINE BC7_BLOCK& at(std::size_t lane) const { return pool.blocks[trial(lane).block]; }

    HWY_INLINE V variants() const {
        alignas(64) float out[lane_count];
        for (std::size_t lane = 0; lane < lane_count; ++lane)
            out[lane] = variant(lane);
        return hn::Load(D(), out);
    }

    /// The texels that a table of masks gives for the trials' partitions.
    template <class TABLE>
    HWY_INLINE TEXEL_SET look_up(TABLE const& table) const {
        alignas(64) std::uint32_t out[lane_count];
        for (std::size_t lane = 0; lane < lane_count; ++lane)
            out[lane] = table[variant(lane)];
        return {hn::Load(DU(), out)};
    }

    template <std::size_t C>
    HWY_INLINE SUBJECT<C> colours() const {
        SUBJECT<C> subject{texels, weights, {}};
        for (std::size_t i = 0; i < C; ++i)
            subject.channel[i] = i;
        return subject;
    }
    HWY_INLINE SUBJECT<1> lone_channel() const { return {texels, weights, {3}}; }

private:
    HWY_INLINE static VU load_packed(std::uint8_t const (&bytes)[lane_count][4]) {
        alignas(64) std::uint32_t words[lane_count];
        for (std::size_t lane = 0; lane < lane_count; ++lane)
            words[lane] = bytes[lane][0] | std::uint32_t{bytes[lane][1]} << 8 | std::uint32_t{bytes[lane][2]} << 16 |
                          std::uint32_t{bytes[lane][3]} << 24;
        return hn::Load(DU(), words);
    }
    template <int shift>
    HWY_INLINE static V channel_of(VU words) {
        VU const byte = hn::And(hn::ShiftRight<shift>(words), hn::Set(DU(), 255u));
        return hn::ConvertTo(D(), hn::BitCast(hn::RebindToSigned<D>(), byte));
    }
};

}  // namespace blocks::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
