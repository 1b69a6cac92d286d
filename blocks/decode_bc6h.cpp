// BC6H decoding, field by field in storage order (Khronos Data Format Specification, chapter on BPTC; Microsoft, "BC6H
// Format"). Speed is second here: the file is meant to be checked against those documents.
#include "blocks/decode_bc6h.hpp"

#include <cstring>

#include "blocks/bc6h_modes.hpp"
#include "blocks/bc7_tables.hpp"
#include "blocks/bits128.hpp"

namespace blocks {
namespace {

std::int32_t sign_extend(std::int32_t value, std::uint32_t bits) {
    std::int32_t const sign = std::int32_t{1} << (bits - 1);
    return (value ^ sign) - sign;
}

/// Widens an endpoint of `bits` bits to 16 (15 and sign).
std::int32_t unquantise(std::int32_t value, std::uint32_t bits, bool is_signed) {
    if (!is_signed) {
        if (bits >= 15 || value == 0)
            return value;
        if (value == (std::int32_t{1} << bits) - 1)
            return 0xFFFF;
        return ((value << 15) + 0x4000) >> (bits - 1);
    }
    if (bits >= 16 || value == 0)
        return value;
    std::int32_t const size = value < 0 ? -value : value;
    std::int32_t const wide =
        size >= (std::int32_t{1} << (bits - 1)) - 1 ? 0x7FFF : ((size << 15) + 0x4000) >> (bits - 1);
    return value < 0 ? -wide : wide;
}

/// Scales an interpolated value into the range of finite half floats and gives the half's bits.
std::uint16_t to_half_bits(std::int32_t value, bool is_signed) {
    if (!is_signed)
        return static_cast<std::uint16_t>((value * 31) >> 6);
    std::int32_t const size = ((value < 0 ? -value : value) * 31) >> 5;
    return static_cast<std::uint16_t>(value < 0 ? size | 0x8000 : size);
}

BC6H_MODE const* find_mode(std::uint32_t low_bits) {
    for (BC6H_MODE const& mode : bc6h_modes)
        if ((low_bits & ((1u << mode.code_bits) - 1)) == mode.code)
            return &mode;
    return nullptr;
}

}  // namespace

void decode_bc6h(std::uint8_t const* block, bool is_signed, std::uint16_t (&half_rgb)[16][3]) {
    BC6H_MODE const* const mode = find_mode(block[0]);
    if (!mode) {
        std::memset(half_rgb, 0, sizeof half_rgb);
        return;
    }
    BIT_READER bits(block);
    bits.take(mode->code_bits);

    std::int32_t ends[4][3] = {};
    for (BC6H_BIT_RUN const& run : mode->runs) {
        auto const field = static_cast<std::uint32_t>(run.field);
        for (std::uint32_t i = 0; i < run.count; ++i) {
            std::uint32_t const position = run.low_bit + (run.reversed ? run.count - 1u - i : i);
            ends[field / 3][field % 3] |= static_cast<std::int32_t>(bits.take(1) << position);
        }
    }
    std::uint32_t const partition = mode->subsets == 2 ? bits.take(bc6h_partition_bits) : 0;

    std::uint32_t const width = mode->endpoint_bits;
    for (std::uint32_t channel = 0; channel < 3; ++channel) {
        if (is_signed)
            ends[0][channel] = sign_extend(ends[0][channel], width);
        for (std::uint32_t end = 1; end < 2u * mode->subsets; ++end) {
            std::int32_t& value = ends[end][channel];
            if (mode->transformed) {
                value = sign_extend(value, mode->delta_bits[channel]);
                value = (ends[0][channel] + value) & ((std::int32_t{1} << width) - 1);
            }
            if (is_signed)
                value = sign_extend(value, width);
        }
        for (auto& end : ends)
            end[channel] = unquantise(end[channel], width, is_signed);
    }

    std::uint32_t const index_bits = mode->subsets == 2 ? 3 : 4;
    for (std::uint32_t texel = 0; texel < 16; ++texel) {
        std::uint32_t const subset = subset_of(mode->subsets, partition, texel);
        std::uint32_t const index = bits.take(index_bits - (texel == anchor_of(mode->subsets, partition, subset)));
        std::uint32_t const weight = interpolation_weight(index, index_bits);
        for (std::uint32_t channel = 0; channel < 3; ++channel)
            half_rgb[texel][channel] =
                to_half_bits(interpolate(ends[2 * subset][channel], ends[2 * subset + 1][channel], weight), is_signed);
    }
}

}  // namespace blocks
