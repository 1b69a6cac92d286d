// BC7 decoding, field by field in storage order (Khronos Data Format Specification, chapter on BPTC; Microsoft, "BC7
// Format Mode Reference"). Speed is second here: the file is meant to be checked against those documents.
#include "blocks/decode_bc7.hpp"

#include <bit>
#include <cstring>
#include <utility>

#include "blocks/bc7_tables.hpp"
#include "blocks/bits128.hpp"

namespace blocks {
namespace {

struct ENDPOINTS {
    std::uint32_t value[3][2][4];  // subset, end, channel; already 8 bits wide
};

/// Widens `bits` bits to 8 by repeating the highest ones below.
std::uint32_t widen(std::uint32_t value, std::uint32_t bits) {
    value <<= 8 - bits;
    return value | (value >> bits);
}

ENDPOINTS take_endpoints(BIT_READER& bits, BC7_MODE const& mode) {
    ENDPOINTS ends{};
    std::uint32_t const channels = mode.alpha_bits ? 4 : 3;
    auto const bits_of = [&](std::uint32_t channel) -> std::uint32_t {
        return channel < 3 ? mode.colour_bits : mode.alpha_bits;
    };
    for (std::uint32_t channel = 0; channel < channels; ++channel)
        for (std::uint32_t subset = 0; subset < mode.subsets; ++subset)
            for (auto& end : ends.value[subset])
                end[channel] = bits.take(bits_of(channel));

    std::uint32_t const p_bits = mode.own_p_bits | mode.shared_p_bits;
    for (std::uint32_t subset = 0; subset < mode.subsets; ++subset) {
        std::uint32_t const shared = mode.shared_p_bits ? bits.take(1) : 0;
        for (auto& end : ends.value[subset]) {
            std::uint32_t const p = mode.own_p_bits ? bits.take(1) : shared;
            for (std::uint32_t channel = 0; channel < channels; ++channel)
                end[channel] = widen((end[channel] << p_bits) | (p_bits ? p : 0), bits_of(channel) + p_bits);
            if (channels == 3)
                end[3] = 255;
        }
    }
    return ends;
}

}  // namespace

void decode_bc7(std::uint8_t const* block, std::uint8_t (&rgba)[16][4]) {
    if (block[0] == 0) {
        std::memset(rgba, 0, sizeof rgba);
        return;
    }
    auto const mode_index = static_cast<std::uint32_t>(std::countr_zero(block[0]));
    BC7_MODE const& mode = bc7_modes[mode_index];
    BIT_READER bits(block);
    bits.take(mode_index + 1);
    std::uint32_t const partition = bits.take(mode.partition_bits);
    std::uint32_t const rotation = bits.take(mode.rotation_bits);
    std::uint32_t const index_selection = bits.take(mode.index_selection_bits);
    ENDPOINTS const ends = take_endpoints(bits, mode);

    std::uint32_t index[2][16] = {};
    for (std::uint32_t texel = 0; texel < 16; ++texel) {
        std::uint32_t const subset = subset_of(mode.subsets, partition, texel);
        index[0][texel] = bits.take(mode.index_bits - (texel == anchor_of(mode.subsets, partition, subset)));
    }
    if (mode.second_index_bits)
        for (std::uint32_t texel = 0; texel < 16; ++texel)
            index[1][texel] = bits.take(mode.second_index_bits - (texel == 0));

    std::uint32_t const colour_set = index_selection;
    std::uint32_t const alpha_set = mode.second_index_bits ? 1 - index_selection : 0;
    std::uint32_t const width[2] = {mode.index_bits, mode.second_index_bits};
    for (std::uint32_t texel = 0; texel < 16; ++texel) {
        auto const& end = ends.value[subset_of(mode.subsets, partition, texel)];
        for (std::uint32_t channel = 0; channel < 4; ++channel) {
            std::uint32_t const set = channel < 3 ? colour_set : alpha_set;
            rgba[texel][channel] = static_cast<std::uint8_t>(
                interpolate(static_cast<std::int32_t>(end[0][channel]), static_cast<std::int32_t>(end[1][channel]),
                            interpolation_weight(index[set][texel], width[set])));
        }
        if (rotation)
            std::swap(rgba[texel][3], rgba[texel][rotation - 1]);
    }
}

}  // namespace blocks
