// What the block layouts of BC6H and BC7 have in common and what sets BC7's eight modes apart: partitions, anchors,
// interpolation weights and field widths, as the Khronos Data Format Specification and Microsoft's Direct3D 11 format
// documents list them. Partitions are bit masks, because both decoder and encoder ask "is texel i in subset s".
#pragma once

#include <array>
#include <cstdint>

namespace blocks {

/// One of the eight BC7 block layouts: how many bits each field takes.
struct BC7_MODE {
    std::uint8_t subsets;
    std::uint8_t partition_bits;
    std::uint8_t rotation_bits;
    std::uint8_t index_selection_bits;
    std::uint8_t colour_bits;
    std::uint8_t alpha_bits;
    std::uint8_t own_p_bits;     ///< one p-bit an endpoint
    std::uint8_t shared_p_bits;  ///< one p-bit a subset
    std::uint8_t index_bits;
    std::uint8_t second_index_bits;
};

inline constexpr std::array<BC7_MODE, 8> bc7_modes = {{
    {3, 4, 0, 0, 4, 0, 1, 0, 3, 0},
    {2, 6, 0, 0, 6, 0, 0, 1, 3, 0},
    {3, 6, 0, 0, 5, 0, 0, 0, 2, 0},
    {2, 6, 0, 0, 7, 0, 1, 0, 2, 0},
    {1, 0, 2, 1, 5, 6, 0, 0, 2, 3},
    {1, 0, 2, 0, 7, 8, 0, 0, 2, 2},
    {1, 0, 0, 0, 7, 7, 1, 0, 4, 0},
    {2, 6, 0, 0, 5, 5, 1, 0, 2, 0},
}};

/// Weight of the second endpoint in 64ths, for an index of `index_bits` (2, 3 or 4) bits. The published tables are this
/// rounding of evenly spread weights.
constexpr std::uint32_t interpolation_weight(std::uint32_t index, std::uint32_t index_bits) {
    std::uint32_t const last = (1u << index_bits) - 1;
    return (index * 128 + last) / (2 * last);
}

/// Interpolates between two endpoints of at most 16 bits and sign.
constexpr std::int32_t interpolate(std::int32_t first, std::int32_t second, std::uint32_t weight) {
    auto const w = static_cast<std::int32_t>(weight);
    return (first * (64 - w) + second * w + 32) >> 6;
}

/// Texels of the second of two subsets, bit i standing for texel i (row by row). BC6H has the first 32 of them.
inline constexpr std::array<std::uint16_t, 64> two_subsets_second = {
    {0xcccc, 0x8888, 0xeeee, 0xecc8, 0xc880, 0xfeec, 0xfec8, 0xec80, 0xc800, 0xffec, 0xfe80, 0xe800, 0xffe8,
     0xff00, 0xfff0, 0xf000, 0xf710, 0x008e, 0x7100, 0x08ce, 0x008c, 0x7310, 0x3100, 0x8cce, 0x088c, 0x3110,
     0x6666, 0x366c, 0x17e8, 0x0ff0, 0x718e, 0x399c, 0xaaaa, 0xf0f0, 0x5a5a, 0x33cc, 0x3c3c, 0x55aa, 0x9696,
     0xa55a, 0x73ce, 0x13c8, 0x324c, 0x3bdc, 0x6996, 0xc33c, 0x9966, 0x0660, 0x0272, 0x04e4, 0x4e40, 0x2720,
     0xc936, 0x936c, 0x39c6, 0x639c, 0x9336, 0x9cc6, 0x817e, 0xe718, 0xccf0, 0x0fcc, 0x7744, 0xee22}};
/// Texels of the second of three subsets.
inline constexpr std::array<std::uint16_t, 64> three_subsets_second = {
    {0x08cc, 0x8cc8, 0xcc80, 0xec00, 0x3300, 0x00cc, 0xff00, 0xcccc, 0x0f00, 0x0ff0, 0x00f0, 0x4444, 0x6666,
     0x2222, 0x136c, 0x008c, 0x36c8, 0x08ce, 0x3330, 0xf000, 0x00ee, 0x8888, 0x22c0, 0x4430, 0x0c22, 0x0344,
     0x6996, 0x9960, 0x0330, 0x0066, 0xc22c, 0x8c00, 0x1300, 0xc400, 0x004c, 0x2222, 0x00f0, 0x2492, 0x2942,
     0xc30c, 0xc03c, 0x00aa, 0xaa00, 0x3030, 0xc0c0, 0x9090, 0xa00a, 0xaaa0, 0x0aaa, 0xe0e0, 0x7070, 0x6660,
     0x0ee0, 0x0770, 0x0666, 0x6600, 0x0066, 0x0cc0, 0x0330, 0x6000, 0x8080, 0x1010, 0x000a, 0x08ce}};
/// Texels of the third of three subsets.
inline constexpr std::array<std::uint16_t, 64> three_subsets_third = {
    {0xf600, 0x7300, 0x3310, 0x00ce, 0xcc00, 0xcc00, 0x00cc, 0x3300, 0xf000, 0xf000, 0xff00, 0x8888, 0x8888,
     0xcccc, 0xec80, 0x7310, 0xc800, 0x3100, 0xccc0, 0x0ccc, 0xee00, 0x7700, 0xcc00, 0x3300, 0x00cc, 0xfc88,
     0x0660, 0x6600, 0xc88c, 0xf900, 0x0cc0, 0x7310, 0xec80, 0x08ce, 0xec80, 0x4444, 0x0f00, 0x4924, 0x4294,
     0x0c30, 0x03c0, 0xff00, 0x5500, 0xcccc, 0x0c0c, 0x6666, 0x0ff0, 0x5550, 0xf000, 0x0e0e, 0x8888, 0x9990,
     0xe00e, 0x8888, 0xf000, 0x9900, 0xff00, 0xc00c, 0xcccc, 0x9000, 0x0808, 0xeeee, 0xfff0, 0x7310}};

/// The texel of the second of two subsets whose index is stored without its highest bit. In a first subset it is texel
/// 0.
inline constexpr std::array<std::uint8_t, 64> two_subsets_anchor = {
    {15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 2,  8, 2, 2, 8,
     8,  15, 2,  8,  2,  2,  8,  8,  2,  2,  15, 15, 6,  8,  2,  8,  15, 15, 2, 8, 2, 2,
     2,  15, 15, 6,  6,  2,  6,  8,  15, 15, 2,  2,  15, 15, 15, 15, 15, 2,  2, 15}};

/// The same for the second of three subsets, and below for the third.
inline constexpr std::array<std::uint8_t, 64> three_subsets_second_anchor = {
    {3,  3,  15, 15, 8, 3,  15, 15, 8,  8,  6, 6,  6, 5,  3, 3,  3,  3,  8,  15, 3,  3,
     6,  10, 5,  8,  8, 6,  8,  5,  15, 15, 8, 15, 3, 5,  6, 10, 8,  15, 15, 3,  15, 5,
     15, 15, 15, 15, 3, 15, 5,  5,  5,  8,  5, 10, 5, 10, 8, 13, 15, 12, 3,  3}};
inline constexpr std::array<std::uint8_t, 64> three_subsets_third_anchor = {
    {15, 8, 8, 3,  15, 15, 3,  8,  15, 15, 15, 15, 15, 15, 15, 8,  15, 8,  15, 3,  15, 8,
     15, 8, 3, 15, 6,  10, 15, 15, 10, 8,  15, 3,  15, 10, 10, 8,  9,  10, 6,  15, 8,  15,
     3,  6, 6, 8,  15, 3,  15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 3,  15, 15, 8}};

/// Subset (0 to 2) of texel `texel` where a block of `subsets` subsets uses partition `partition`.
constexpr std::uint32_t subset_of(std::uint32_t subsets, std::uint32_t partition, std::uint32_t texel) {
    if (subsets == 2)
        return (two_subsets_second[partition] >> texel) & 1u;
    if (subsets == 3)
        return ((three_subsets_second[partition] >> texel) & 1u) + 2 * ((three_subsets_third[partition] >> texel) & 1u);
    return 0;
}

/// Anchor texel of subset `subset`.
constexpr std::uint32_t anchor_of(std::uint32_t subsets, std::uint32_t partition, std::uint32_t subset) {
    if (subset == 0)
        return 0;
    if (subsets == 2)
        return two_subsets_anchor[partition];
    return subset == 1 ? three_subsets_second_anchor[partition] : three_subsets_third_anchor[partition];
}

}  // namespace blocks
