// Writing of BC7 blocks, field by field in storage order, the mirror of the decoder.
#include "blocks/bc7_code.hpp"

#include <algorithm>
#include <utility>

#include "blocks/bc7_tables.hpp"
#include "blocks/bits128.hpp"

namespace blocks {
namespace {

/// Makes sure that the anchor's index has a zero as its highest bit: if not, the ends [first, last) of the channels
/// change places and the indices of the subset count the other way. Weights are symmetric, so the texels stay the same.
void settle_anchor(std::uint8_t (&end)[2][4], std::uint32_t first, std::uint32_t last, std::uint8_t (&index)[16],
                   std::uint32_t index_bits, std::uint32_t texels, std::uint32_t anchor) {
    if ((index[anchor] >> (index_bits - 1)) == 0)
        return;
    for (std::uint32_t channel = first; channel < last; ++channel)
        std::swap(end[0][channel], end[1][channel]);
    for (std::uint32_t texel = 0; texel < 16; ++texel)
        if ((texels >> texel) & 1u)
            index[texel] = static_cast<std::uint8_t>((1u << index_bits) - 1 - index[texel]);
}

}  // namespace

void write_bc7(BC7_CODE const& given, std::uint8_t* block) {
    BC7_CODE code = given;
    BC7_MODE const& mode = bc7_modes[code.mode];
    bool const two_planes = mode.second_index_bits != 0;
    std::uint32_t const first_bits = mode.index_bits;
    std::uint32_t const colour_bits = code.index_selection ? mode.second_index_bits : first_bits;
    std::uint32_t const alpha_bits = code.index_selection ? first_bits : mode.second_index_bits;

    std::uint32_t texels_of[3] = {};
    for (std::uint32_t texel = 0; texel < 16; ++texel)
        texels_of[subset_of(mode.subsets, code.partition, texel)] |= 1u << texel;
    for (std::uint32_t subset = 0; subset < mode.subsets; ++subset)
        settle_anchor(code.end[subset], 0, two_planes ? 3 : 4, code.colour_index, colour_bits, texels_of[subset],
                      anchor_of(mode.subsets, code.partition, subset));
    if (two_planes)
        settle_anchor(code.end[0], 3, 4, code.alpha_index, alpha_bits, 0xFFFF, 0);

    BIT_WRITER bits;
    bits.put(1u << code.mode, code.mode + 1u);
    bits.put(code.partition, mode.partition_bits);
    bits.put(code.rotation, mode.rotation_bits);
    bits.put(code.index_selection, mode.index_selection_bits);
    std::uint32_t const channels = mode.alpha_bits ? 4 : 3;
    for (std::uint32_t channel = 0; channel < channels; ++channel) {
        std::uint32_t const width = channel < 3 ? mode.colour_bits : mode.alpha_bits;
        for (std::uint32_t subset = 0; subset < mode.subsets; ++subset)
            for (auto const& end : code.end[subset])
                bits.put(static_cast<std::uint32_t>(end[channel] >> (8 - width)), width);
    }
    std::uint32_t const p_position = 7u - mode.colour_bits;
    for (std::uint32_t subset = 0; subset < mode.subsets; ++subset) {
        if (mode.shared_p_bits)
            bits.put((code.end[subset][0][0] >> p_position) & 1u, 1);
        if (mode.own_p_bits)
            for (auto const& end : code.end[subset])
                bits.put((end[0] >> p_position) & 1u, 1);
    }
    auto const put_indices = [&](std::uint8_t const(&index)[16], std::uint32_t width) {
        for (std::uint32_t texel = 0; texel < 16; ++texel) {
            std::uint32_t const subset = subset_of(mode.subsets, code.partition, texel);
            bits.put(index[texel], width - (texel == anchor_of(mode.subsets, code.partition, subset)));
        }
    };
    put_indices(code.index_selection ? code.alpha_index : code.colour_index, first_bits);
    if (two_planes)
        put_indices(code.index_selection ? code.colour_index : code.alpha_index, mode.second_index_bits);
    bits.store(block);
}

BC7_CODE solid_bc7(std::uint8_t const (&rgba)[4]) {
    // Mode 5 stores 7 bits of colour. Neighbouring 7-bit ends, a third of the way from one to the other, give the 8-bit
    // values between.
    BC7_CODE code;
    code.mode = 5;
    for (std::uint32_t channel = 0; channel < 3; ++channel) {
        auto const widen = [](std::uint32_t seven) {
            return (seven << 1) | (seven >> 6);
        };
        std::uint32_t const low = rgba[channel] >> 1;
        for (std::uint32_t const first : {low, low - std::min(low, 1u)})
            for (std::uint32_t const second : {first, std::min(first + 1, 127u), first - std::min(first, 1u)})
                if (interpolate(static_cast<std::int32_t>(widen(first)), static_cast<std::int32_t>(widen(second)),
                                interpolation_weight(1, 2)) == rgba[channel]) {
                    code.end[0][0][channel] = static_cast<std::uint8_t>(widen(first));
                    code.end[0][1][channel] = static_cast<std::uint8_t>(widen(second));
                }
    }
    code.end[0][0][3] = code.end[0][1][3] = rgba[3];
    std::fill(std::begin(code.colour_index), std::end(code.colour_index), std::uint8_t{1});
    return code;
}

}  // namespace blocks
