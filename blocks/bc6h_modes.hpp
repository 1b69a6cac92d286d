// The fourteen block layouts of BC6H: precision of the endpoints and the order in which their bits are scattered over
// the block, as the Khronos Data Format Specification lists them. One table serves decoder and encoder, so that the two
// cannot disagree.
#pragma once

#include <array>
#include <cstdint>

namespace blocks {

/// Endpoint fields: channel r, g or b of endpoint 0 to 3. Endpoints 2 and 3 belong to the second subset.
enum class BC6H_FIELD : std::uint8_t { r0, g0, b0, r1, g1, b1, r2, g2, b2, r3, g3, b3 };

/// Consecutive bits of a block that hold bits `low_bit` and up of a field, lowest first unless `reversed`.
struct BC6H_BIT_RUN {
    BC6H_FIELD field = BC6H_FIELD::r0;
    std::uint8_t low_bit = 0;
    std::uint8_t count = 0;
    bool reversed = false;
};

/// One block layout. `runs` follow the mode bits in storage order and end at the first run of no bits; partition bits,
/// if any, come after them, then the indices.
struct BC6H_MODE {
    std::uint8_t code;
    std::uint8_t code_bits;
    bool transformed;  ///< endpoints 1 to 3 are stored as differences from endpoint 0
    std::uint8_t subsets;
    std::uint8_t endpoint_bits;
    std::array<std::uint8_t, 3> delta_bits;  ///< bits of endpoints 1 to 3, for each channel
    std::array<BC6H_BIT_RUN, 24> runs;
};

inline constexpr std::uint32_t bc6h_partition_bits = 5;

namespace detail {
using enum BC6H_FIELD;

// A layout a paragraph reads better than the formatter's columns.
// clang-format off
inline constexpr std::array<BC6H_MODE, 14> bc6h_modes = {{
    {0, 2, true, 2, 10, {5, 5, 5},
      {{{g2, 4, 1}, {b2, 4, 1}, {b3, 4, 1}, {r0, 0, 10}, {g0, 0, 10}, {b0, 0, 10}, {r1, 0, 5}, {g3, 4, 1},
        {g2, 0, 4}, {g1, 0, 5}, {b3, 0, 1}, {g3, 0, 4}, {b1, 0, 5}, {b3, 1, 1}, {b2, 0, 4}, {r2, 0, 5},
        {b3, 2, 1}, {r3, 0, 5}, {b3, 3, 1}}}},
    {1, 2, true, 2, 7, {6, 6, 6},
      {{{g2, 5, 1}, {g3, 4, 1}, {g3, 5, 1}, {r0, 0, 7}, {b3, 0, 1}, {b3, 1, 1}, {b2, 4, 1}, {g0, 0, 7},
        {b2, 5, 1}, {b3, 2, 1}, {g2, 4, 1}, {b0, 0, 7}, {b3, 3, 1}, {b3, 5, 1}, {b3, 4, 1}, {r1, 0, 6},
        {g2, 0, 4}, {g1, 0, 6}, {g3, 0, 4}, {b1, 0, 6}, {b2, 0, 4}, {r2, 0, 6}, {r3, 0, 6}}}},
    {2, 5, true, 2, 11, {5, 4, 4},
      {{{r0, 0, 10}, {g0, 0, 10}, {b0, 0, 10}, {r1, 0, 5}, {r0, 10, 1}, {g2, 0, 4}, {g1, 0, 4}, {g0, 10, 1},
        {b3, 0, 1}, {g3, 0, 4}, {b1, 0, 4}, {b0, 10, 1}, {b3, 1, 1}, {b2, 0, 4}, {r2, 0, 5}, {b3, 2, 1},
        {r3, 0, 5}, {b3, 3, 1}}}},
    {6, 5, true, 2, 11, {4, 5, 4},
      {{{r0, 0, 10}, {g0, 0, 10}, {b0, 0, 10}, {r1, 0, 4}, {r0, 10, 1}, {g3, 4, 1}, {g2, 0, 4}, {g1, 0, 5},
        {g0, 10, 1}, {g3, 0, 4}, {b1, 0, 4}, {b0, 10, 1}, {b3, 1, 1}, {b2, 0, 4}, {r2, 0, 4}, {b3, 0, 1},
        {b3, 2, 1}, {r3, 0, 4}, {g2, 4, 1}, {b3, 3, 1}}}},
    {10, 5, true, 2, 11, {4, 4, 5},
      {{{r0, 0, 10}, {g0, 0, 10}, {b0, 0, 10}, {r1, 0, 4}, {r0, 10, 1}, {b2, 4, 1}, {g2, 0, 4}, {g1, 0, 4},
        {g0, 10, 1}, {b3, 0, 1}, {g3, 0, 4}, {b1, 0, 5}, {b0, 10, 1}, {b2, 0, 4}, {r2, 0, 4}, {b3, 1, 1},
        {b3, 2, 1}, {r3, 0, 4}, {b3, 4, 1}, {b3, 3, 1}}}},
    {14, 5, true, 2, 9, {5, 5, 5},
      {{{r0, 0, 9}, {b2, 4, 1}, {g0, 0, 9}, {g2, 4, 1}, {b0, 0, 9}, {b3, 4, 1}, {r1, 0, 5}, {g3, 4, 1},
        {g2, 0, 4}, {g1, 0, 5}, {b3, 0, 1}, {g3, 0, 4}, {b1, 0, 5}, {b3, 1, 1}, {b2, 0, 4}, {r2, 0, 5},
        {b3, 2, 1}, {r3, 0, 5}, {b3, 3, 1}}}},
    {18, 5, true, 2, 8, {6, 5, 5},
      {{{r0, 0, 8}, {g3, 4, 1}, {b2, 4, 1}, {g0, 0, 8}, {b3, 2, 1}, {g2, 4, 1}, {b0, 0, 8}, {b3, 3, 1},
        {b3, 4, 1}, {r1, 0, 6}, {g2, 0, 4}, {g1, 0, 5}, {b3, 0, 1}, {g3, 0, 4}, {b1, 0, 5}, {b3, 1, 1},
        {b2, 0, 4}, {r2, 0, 6}, {r3, 0, 6}}}},
    {22, 5, true, 2, 8, {5, 6, 5},
      {{{r0, 0, 8}, {b3, 0, 1}, {b2, 4, 1}, {g0, 0, 8}, {g2, 5, 1}, {g2, 4, 1}, {b0, 0, 8}, {g3, 5, 1},
        {b3, 4, 1}, {r1, 0, 5}, {g3, 4, 1}, {g2, 0, 4}, {g1, 0, 6}, {g3, 0, 4}, {b1, 0, 5}, {b3, 1, 1},
        {b2, 0, 4}, {r2, 0, 5}, {b3, 2, 1}, {r3, 0, 5}, {b3, 3, 1}}}},
    {26, 5, true, 2, 8, {5, 5, 6},
      {{{r0, 0, 8}, {b3, 1, 1}, {b2, 4, 1}, {g0, 0, 8}, {b2, 5, 1}, {g2, 4, 1}, {b0, 0, 8}, {b3, 5, 1},
        {b3, 4, 1}, {r1, 0, 5}, {g3, 4, 1}, {g2, 0, 4}, {g1, 0, 5}, {b3, 0, 1}, {g3, 0, 4}, {b1, 0, 6},
        {b2, 0, 4}, {r2, 0, 5}, {b3, 2, 1}, {r3, 0, 5}, {b3, 3, 1}}}},
    {30, 5, false, 2, 6, {6, 6, 6},
      {{{r0, 0, 6}, {g3, 4, 1}, {b3, 0, 1}, {b3, 1, 1}, {b2, 4, 1}, {g0, 0, 6}, {g2, 5, 1}, {b2, 5, 1},
        {b3, 2, 1}, {g2, 4, 1}, {b0, 0, 6}, {g3, 5, 1}, {b3, 3, 1}, {b3, 5, 1}, {b3, 4, 1}, {r1, 0, 6},
        {g2, 0, 4}, {g1, 0, 6}, {g3, 0, 4}, {b1, 0, 6}, {b2, 0, 4}, {r2, 0, 6}, {r3, 0, 6}}}},
    {3, 5, false, 1, 10, {10, 10, 10},
      {{{r0, 0, 10}, {g0, 0, 10}, {b0, 0, 10}, {r1, 0, 10}, {g1, 0, 10}, {b1, 0, 10}}}},
    {7, 5, true, 1, 11, {9, 9, 9},
      {{{r0, 0, 10}, {g0, 0, 10}, {b0, 0, 10}, {r1, 0, 9}, {r0, 10, 1}, {g1, 0, 9}, {g0, 10, 1}, {b1, 0, 9},
        {b0, 10, 1}}}},
    {11, 5, true, 1, 12, {8, 8, 8},
      {{{r0, 0, 10}, {g0, 0, 10}, {b0, 0, 10}, {r1, 0, 8}, {r0, 10, 2, true}, {g1, 0, 8}, {g0, 10, 2, true},
        {b1, 0, 8}, {b0, 10, 2, true}}}},
    {15, 5, true, 1, 16, {4, 4, 4},
      {{{r0, 0, 10}, {g0, 0, 10}, {b0, 0, 10}, {r1, 0, 4}, {r0, 10, 6, true}, {g1, 0, 4}, {g0, 10, 6, true},
        {b1, 0, 4}, {b0, 10, 6, true}}}},
}};
// clang-format on
}  // namespace detail

using detail::bc6h_modes;

}  // namespace blocks
