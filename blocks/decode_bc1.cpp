// Rounding: the published formats define colours as real numbers and leave the precision open, and graphics processors
// differ in the last bit. Here a 5- or 6-bit channel is widened to 8 bits by repeating its top bits, as the processors
// do it, and a mixture of two widened values is rounded to the nearest integer. A decoder that works on c / 31 differs
// by 1 at most.
#include "blocks/decode_bc1.hpp"

namespace blocks {
namespace {

struct COLOUR {
    std::uint32_t channel[3];
};

std::uint32_t load_u16(std::uint8_t const* bytes) {
    return bytes[0] | static_cast<std::uint32_t>(bytes[1]) << 8;
}

COLOUR widen_565(std::uint32_t packed) {
    std::uint32_t const red = packed >> 11;
    std::uint32_t const green = (packed >> 5) & 63;
    std::uint32_t const blue = packed & 31;
    return {{red << 3 | red >> 2, green << 2 | green >> 4, blue << 3 | blue >> 2}};
}

void decode_colours(std::uint8_t const* block, bool may_have_three, std::uint8_t (&rgba)[16][4]) {
    std::uint32_t const packed_0 = load_u16(block);
    std::uint32_t const packed_1 = load_u16(block + 2);
    COLOUR const colour_0 = widen_565(packed_0);
    COLOUR const colour_1 = widen_565(packed_1);
    bool const three_colours = may_have_three && packed_0 <= packed_1;

    std::uint8_t palette[4][4];
    for (int c = 0; c < 3; ++c) {
        std::uint32_t const a = colour_0.channel[c];
        std::uint32_t const b = colour_1.channel[c];
        palette[0][c] = static_cast<std::uint8_t>(a);
        palette[1][c] = static_cast<std::uint8_t>(b);
        palette[2][c] = static_cast<std::uint8_t>(three_colours ? (a + b + 1) / 2 : (2 * a + b + 1) / 3);
        palette[3][c] = static_cast<std::uint8_t>(three_colours ? 0 : (a + 2 * b + 1) / 3);
    }
    palette[0][3] = palette[1][3] = palette[2][3] = 255;
    palette[3][3] = three_colours ? 0 : 255;

    std::uint32_t indices = load_u16(block + 4) | load_u16(block + 6) << 16;
    for (auto& texel : rgba) {
        for (int c = 0; c < 4; ++c) {
            texel[c] = palette[indices & 3][c];
        }
        indices >>= 2;
    }
}

}  // namespace

void decode_bc1(std::uint8_t const* block, std::uint8_t (&rgba)[16][4]) {
    decode_colours(block, true, rgba);
}

void decode_bc1_four_colours(std::uint8_t const* block, std::uint8_t (&rgba)[16][4]) {
    decode_colours(block, false, rgba);
}

}  // namespace blocks
