// A palette entry is a fraction with the denominator 7 or 5. Multiplied by 35 every entry is an integer, so each of the
// four faces of the decoder rounds once, from the exact value.
#include "blocks/decode_bc4.hpp"

#include <algorithm>

namespace blocks {
namespace {

constexpr int scale = 35;

/// The eight palette entries times `scale`. `first_is_above` compares the stored values: two signed ones that both mean
/// -1 still choose between the two kinds of palette.
struct PALETTE {
    int entry[8];

    PALETTE(int first, int second, bool first_is_above, int lowest, int highest) {
        int const steps = first_is_above ? 7 : 5;
        entry[0] = first * scale;
        entry[1] = second * scale;
        for (int i = 1; i < steps; ++i) {
            entry[i + 1] = ((steps - i) * first + i * second) * (scale / steps);
        }
        if (!first_is_above) {
            entry[6] = lowest * scale;
            entry[7] = highest * scale;
        }
    }
};

PALETTE unorm_palette(std::uint8_t const* block) {
    return {block[0], block[1], block[0] > block[1], 0, 255};
}

PALETTE snorm_palette(std::uint8_t const* block) {
    int const first = static_cast<std::int8_t>(block[0]);
    int const second = static_cast<std::int8_t>(block[1]);
    return {std::max(first, -127), std::max(second, -127), first > second, -127, 127};
}

template <typename VALUE>
void look_up(std::uint8_t const* block, VALUE const (&palette)[8], VALUE (&values)[16]) {
    std::uint64_t indices = 0;
    for (int i = 0; i < 6; ++i) {
        indices |= static_cast<std::uint64_t>(block[2 + i]) << (8 * i);
    }
    for (VALUE& value : values) {
        value = palette[indices & 7];
        indices >>= 3;
    }
}

}  // namespace

void decode_bc4_unorm(std::uint8_t const* block, std::uint8_t (&values)[16]) {
    PALETTE const exact = unorm_palette(block);
    std::uint8_t palette[8];
    for (int i = 0; i < 8; ++i) {
        palette[i] = static_cast<std::uint8_t>((exact.entry[i] + scale / 2) / scale);
    }
    look_up(block, palette, values);
}

void decode_bc4_unorm(std::uint8_t const* block, float (&values)[16]) {
    PALETTE const exact = unorm_palette(block);
    float palette[8];
    for (int i = 0; i < 8; ++i) {
        palette[i] = static_cast<float>(exact.entry[i]) / (255 * scale);
    }
    look_up(block, palette, values);
}

void decode_bc4_snorm(std::uint8_t const* block, std::uint8_t (&values)[16]) {
    PALETTE const exact = snorm_palette(block);
    constexpr int one = 127 * scale;
    std::uint8_t palette[8];
    for (int i = 0; i < 8; ++i) {
        palette[i] = static_cast<std::uint8_t>(((exact.entry[i] + one) * 255 + one) / (2 * one));
    }
    look_up(block, palette, values);
}

void decode_bc4_snorm(std::uint8_t const* block, float (&values)[16]) {
    PALETTE const exact = snorm_palette(block);
    float palette[8];
    for (int i = 0; i < 8; ++i) {
        palette[i] = static_cast<float>(exact.entry[i]) / (127 * scale);
    }
    look_up(block, palette, values);
}

}  // namespace blocks
