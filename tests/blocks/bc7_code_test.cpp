// Random decisions, written as a block and decoded again, must give the colours that the decisions stand for: field
// order, p-bits, anchors and the swapping of endpoints in all modes and partitions.
#include <random>
#include <utility>

#include <gtest/gtest.h>

#include "blocks/bc7_code.hpp"
#include "blocks/bc7_tables.hpp"
#include "blocks/decode_bc7.hpp"

namespace {

std::uint8_t widen(std::uint32_t code, std::uint32_t bits) {
    code <<= 8 - bits;
    return static_cast<std::uint8_t>(code | (code >> bits));
}

blocks::BC7_CODE random_code(std::uint8_t mode_index, std::uint8_t partition, std::mt19937& random) {
    blocks::BC7_MODE const& mode = blocks::bc7_modes[mode_index];
    blocks::BC7_CODE code;
    code.mode = mode_index;
    code.partition = static_cast<std::uint8_t>(partition & ((1u << mode.partition_bits) - 1));
    code.rotation = static_cast<std::uint8_t>(random() & ((1u << mode.rotation_bits) - 1));
    code.index_selection = static_cast<std::uint8_t>(random() & ((1u << mode.index_selection_bits) - 1));
    for (std::uint32_t subset = 0; subset < mode.subsets; ++subset) {
        std::uint32_t p = random() & 1u;
        for (auto& end : code.end[subset]) {
            if (mode.own_p_bits)
                p = random() & 1u;
            std::uint32_t const p_bits = mode.own_p_bits | mode.shared_p_bits;
            for (std::uint32_t channel = 0; channel < 4; ++channel) {
                std::uint32_t const bits = channel < 3 ? mode.colour_bits : mode.alpha_bits;
                std::uint32_t const value = static_cast<std::uint32_t>(random()) & ((1u << bits) - 1);
                end[channel] = bits ? widen((value << p_bits) | (p_bits ? p : 0), bits + p_bits) : 255;
            }
        }
    }
    std::uint32_t const colour_bits = code.index_selection ? mode.second_index_bits : mode.index_bits;
    std::uint32_t const alpha_bits = code.index_selection ? mode.index_bits : mode.second_index_bits;
    for (std::size_t t = 0; t < 16; ++t) {
        code.colour_index[t] = static_cast<std::uint8_t>(random() & ((1u << colour_bits) - 1));
        code.alpha_index[t] = static_cast<std::uint8_t>(random() & ((1u << alpha_bits) - 1));
    }
    return code;
}

TEST(bc7_code, what_is_written_is_what_is_decoded) {
    std::mt19937 random(99);
    for (std::uint8_t mode_index = 0; mode_index < 8; ++mode_index)
        for (std::uint8_t partition = 0; partition < 64; ++partition) {
            blocks::BC7_CODE const code = random_code(mode_index, partition, random);
            blocks::BC7_MODE const& mode = blocks::bc7_modes[mode_index];
            std::uint8_t block[16], rgba[16][4];
            blocks::write_bc7(code, block);
            blocks::decode_bc7(block, rgba);
            bool const planes = mode.second_index_bits != 0;
            std::uint32_t const colour_bits = code.index_selection ? mode.second_index_bits : mode.index_bits;
            std::uint32_t const alpha_bits = code.index_selection ? mode.index_bits : mode.second_index_bits;
            for (std::uint32_t t = 0; t < 16; ++t) {
                auto const& end = code.end[blocks::subset_of(mode.subsets, code.partition, t)];
                int expected[4];
                for (std::size_t c = 0; c < 4; ++c) {
                    bool const lone = planes && c == 3;
                    std::uint32_t const weight = blocks::interpolation_weight(
                        lone ? code.alpha_index[t] : code.colour_index[t], lone ? alpha_bits : colour_bits);
                    expected[c] = blocks::interpolate(end[0][c], end[1][c], weight);
                }
                if (code.rotation)
                    std::swap(expected[3], expected[code.rotation - 1]);
                for (std::size_t c = 0; c < 4; ++c)
                    ASSERT_EQ(rgba[t][c], expected[c]) << "mode " << +mode_index << " partition " << +partition;
            }
        }
}

}  // namespace
