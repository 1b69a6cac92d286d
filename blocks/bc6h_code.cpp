// Writing of BC6H blocks, field by field in storage order, the mirror of the decoder.
#include "blocks/bc6h_code.hpp"

#include <algorithm>
#include <utility>

#include "blocks/bc7_tables.hpp"
#include "blocks/bits128.hpp"

namespace blocks {

void write_bc6h(BC6H_CODE const& given, std::uint8_t* block) {
    BC6H_CODE code = given;
    BC6H_MODE const& mode = bc6h_modes[code.mode];
    std::uint32_t const index_bits = mode.subsets == 2 ? 3 : 4;

    if (mode.subsets == 2) {
        std::uint32_t const anchor = anchor_of(2, code.partition, 1);
        if (code.index[anchor] >> (index_bits - 1)) {
            std::swap(code.end[2], code.end[3]);
            for (std::uint32_t texel = 0; texel < 16; ++texel)
                if (subset_of(2, code.partition, texel) == 1)
                    code.index[texel] = static_cast<std::uint8_t>((1u << index_bits) - 1 - code.index[texel]);
        }
    }

    std::uint32_t fields[12];
    for (std::uint32_t end = 0; end < 4; ++end)
        for (std::uint32_t channel = 0; channel < 3; ++channel) {
            bool const difference = mode.transformed && end > 0;
            std::int32_t const value = code.end[end][channel] - (difference ? code.end[0][channel] : 0);
            std::uint32_t const width = end > 0 ? mode.delta_bits[channel] : mode.endpoint_bits;
            fields[3 * end + channel] = static_cast<std::uint32_t>(value) & ((1u << width) - 1);
        }

    BIT_WRITER bits;
    bits.put(mode.code, mode.code_bits);
    for (BC6H_BIT_RUN const& run : mode.runs) {
        std::uint32_t const value =
            (fields[static_cast<std::uint32_t>(run.field)] >> run.low_bit) & ((1u << run.count) - 1);
        if (run.reversed) {
            for (std::uint32_t i = run.count; i-- > 0;)
                bits.put((value >> i) & 1u, 1);
        } else {
            bits.put(value, run.count);
        }
    }
    if (mode.subsets == 2)
        bits.put(code.partition, bc6h_partition_bits);
    for (std::uint32_t texel = 0; texel < 16; ++texel) {
        std::uint32_t const subset = subset_of(mode.subsets, code.partition, texel);
        bits.put(code.index[texel], index_bits - (texel == anchor_of(mode.subsets, code.partition, subset)));
    }
    bits.store(block);
}

BC6H_CODE solid_bc6h(std::uint16_t const (&half_rgb)[3], bool is_signed) {
    // The smallest 16-bit endpoint that a decoder scales down to the half wanted; it scales by 31/64, or 31/32 with a
    // sign.
    BC6H_CODE code;
    code.mode = bc6h_widest_mode;
    for (std::uint32_t channel = 0; channel < 3; ++channel) {
        std::int32_t const size = half_rgb[channel] & 0x7FFF;
        std::int32_t const end = is_signed ? (size * 32 + 30) / 31 : (size * 64 + 30) / 31;
        code.end[0][channel] = code.end[1][channel] = half_rgb[channel] & 0x8000 ? -end : end;
    }
    return code;
}

}  // namespace blocks
