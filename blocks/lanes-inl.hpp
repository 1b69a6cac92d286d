// The working form of the BC6H and BC7 encoders: one block a lane. A group of up to 16 blocks is turned into one vector
// for every texel and channel, and from there on each lane runs the same search on its own block, with nothing
// exchanged between lanes. Hence no gathers, and a block's code does not depend on how many lanes a machine has.
//
// Only operations that IEEE 754 defines to the last bit are used: no fused multiply-add, no approximate reciprocal.
// Targets whose vectors have no fixed size (SVE, RVV) are left to the smaller ones that every such machine has, so that
// vectors may stand in arrays.

// Per-target include guard: this file is compiled once for every instruction set.
#if defined(BLOCKS_LANES_INL_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef BLOCKS_LANES_INL_HPP
#undef BLOCKS_LANES_INL_HPP
#else
#define BLOCKS_LANES_INL_HPP
#endif

#include <cstddef>
#include <cstdint>

#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace blocks::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

inline constexpr std::size_t max_lanes = 16;

using D = hn::CappedTag<float, max_lanes>;
using DU = hn::RebindToUnsigned<D>;
using V = hn::Vec<D>;
using VU = hn::Vec<DU>;
using M = hn::Mask<D>;

inline constexpr std::size_t lane_count = hn::MaxLanes(D());

HWY_INLINE V set(float value) {
    return hn::Set(D(), value);
}
HWY_INLINE V zero() {
    return hn::Zero(D());
}
HWY_INLINE V clamp(V value, V low, V high) {
    return hn::Min(hn::Max(value, low), high);
}
/// Rounds halves up. Every decoder rounds like this, too.
HWY_INLINE V round_half_up(V value) {
    return hn::Floor(hn::Add(value, set(0.5f)));
}
/// The nearest integer, ties to even, for magnitudes below 2^22: adding 1.5 · 2^23 leaves no bits for a fraction.
/// Quicker than the instruction made for it, and there are millions of them.
HWY_INLINE V round_to_nearest(V value) {
    V const shift = set(12582912.0f);
    return hn::Sub(hn::Add(value, shift), shift);
}
HWY_INLINE V square(V value) {
    return hn::Mul(value, value);
}

/// Texels of a group of blocks: channel, texel (row by row), lane.
struct TEXELS {
    alignas(64) float value[4][16][lane_count];

    HWY_INLINE V load(std::size_t channel, std::size_t texel) const { return hn::Load(D(), value[channel][texel]); }
};

/// For every lane a set of texels, bit i standing for texel i.
struct TEXEL_SET {
    VU bits;

    HWY_INLINE M has(std::size_t texel) const {
        return hn::RebindMask(D(), hn::TestBit(bits, hn::Set(DU(), std::uint32_t{1} << texel)));
    }
    HWY_INLINE TEXEL_SET complement() const { return {hn::Xor(bits, hn::Set(DU(), 0xFFFFu))}; }
    HWY_INLINE TEXEL_SET without(TEXEL_SET other) const { return {hn::AndNot(other.bits, bits)}; }
};

HWY_INLINE TEXEL_SET all_texels() {
    return {hn::Set(DU(), 0xFFFFu)};
}

}  // namespace blocks::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
