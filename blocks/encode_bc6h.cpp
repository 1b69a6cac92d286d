// BC6H encoding: fills the lanes of a group with blocks and turns what the search has chosen into bits.
//
// Errors are measured between the bit patterns of halves, which is nearly a logarithmic scale, like the format's own
// interpolation. Published grounds: Microsoft's "BC6H Format"; partitions by estimate and endpoints by least squares as
// in the BC7 encoder.
#include "blocks/encode_bc6h.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "blocks/bc6h_code.hpp"
#include "blocks/bc6h_search.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "blocks/encode_bc6h.cpp"
#include "hwy/foreach_target.h"

#include "blocks/bc6h_trials-inl.hpp"

#ifndef BLOCKS_ENCODE_BC6H_ONCE
#define BLOCKS_ENCODE_BC6H_ONCE
namespace blocks {
namespace {

constexpr std::uint16_t half_infinity = 0x7C00;
constexpr std::uint16_t largest_half = 0x7BFF;

/// The half nearest to value / 255.
constexpr std::uint16_t half_of_byte(std::uint32_t value) {
    if (value == 0)
        return 0;
    // value / 255 lies in [2^-exponent, 2^(1 - exponent)); no byte leaves the range of normal halves, and none is a
    // tie.
    std::uint32_t exponent = 0;
    while (value << exponent < 255)
        ++exponent;
    std::uint32_t const mantissa = ((value << (exponent + 11)) / 255 + 1) >> 1;
    return static_cast<std::uint16_t>(((15 - exponent) << 10) + mantissa - 1024);
}

constexpr std::array<std::uint16_t, 256> half_of_bytes = [] {
    std::array<std::uint16_t, 256> table{};
    for (std::uint32_t i = 0; i < 256; ++i)
        table[i] = half_of_byte(i);
    return table;
}();

/// The nearest half that the format can express.
std::uint16_t tame(std::uint16_t half, bool is_signed) {
    std::uint16_t const size = half & 0x7FFF;
    bool const negative = (half & 0x8000) != 0;
    if (size > half_infinity || size == 0 || (negative && !is_signed))
        return 0;
    auto const finite = std::min(size, largest_half);
    return static_cast<std::uint16_t>(negative ? finite | 0x8000 : finite);
}

void load_texel(RGBA8_VIEW const& view, std::uint32_t x, std::uint32_t y, bool, std::uint16_t (&rgb)[3]) {
    std::uint8_t const* const texel = view.texels + y * view.row_pitch + x * std::size_t{4};
    for (std::size_t channel = 0; channel < 3; ++channel)
        rgb[channel] = half_of_bytes[texel[channel]];
}

void load_texel(RGBA16F_VIEW const& view, std::uint32_t x, std::uint32_t y, bool is_signed, std::uint16_t (&rgb)[3]) {
    auto const* const row = reinterpret_cast<std::uint8_t const*>(view.texels) + y * view.row_pitch;
    std::memcpy(rgb, row + x * std::size_t{8}, sizeof rgb);
    for (auto& half : rgb)
        half = tame(half, is_signed);
}

/// Middle of the interval on the decoder's 16-bit scale that becomes this half.
float on_decoder_scale(std::uint16_t half, bool is_signed) {
    auto const size = static_cast<float>(half & 0x7FFF);
    if (size == 0)
        return 0;
    float const value = (size + 0.5f) * (is_signed ? 32.0f : 64.0f) / 31.0f;
    return half & 0x8000 ? -value : value;
}

}  // namespace
}  // namespace blocks
#endif

HWY_BEFORE_NAMESPACE();
namespace blocks::HWY_NAMESPACE {

/// Blocks that wait for a lane, and where their codes go.
struct BC6H_GROUP {
    TEXELS texels;
    BC6H_ORIGIN origin;
    std::uint8_t* out[max_lanes];
    std::size_t count = 0;

    void add(std::uint16_t const (&rgb)[16][3], bool is_signed, std::uint8_t* code) {
        for (std::size_t channel = 0; channel < 3; ++channel) {
            float const zero_point = std::floor(on_decoder_scale(rgb[0][channel], is_signed) / bc6h_unit);
            origin.value[channel][count] = zero_point;
            for (std::size_t t = 0; t < 16; ++t)
                texels.value[channel][t][count] = on_decoder_scale(rgb[t][channel], is_signed) / bc6h_unit - zero_point;
        }
        out[count++] = code;
    }

    /// Empty lanes take a copy of the first block.
    void fill_up() {
        for (std::size_t channel = 0; channel < 3; ++channel) {
            std::fill(origin.value[channel] + count, origin.value[channel] + lane_count, origin.value[channel][0]);
            for (auto& texel : texels.value[channel])
                std::fill(texel + count, texel + lane_count, texel[0]);
        }
    }
};

/// Finds the indices and codes that go with the chosen endpoints and writes the blocks.
template <bool is_signed>
void write_group(BC6H_GROUP const& group, CHANNEL_WEIGHTS const& weights, BC6H_CHOICE const& choice) {
    BC6H_CODE code[max_lanes];
    auto const each_lane = [](V v, auto&& put) {
        alignas(64) float lanes[max_lanes];
        hn::Store(v, D(), lanes);
        for (std::size_t lane = 0; lane < lane_count; ++lane)
            put(lane, lanes[lane]);
    };
    each_lane(choice.mode, [&](std::size_t lane, float v) { code[lane].mode = static_cast<std::uint8_t>(v); });
    each_lane(choice.partition,
              [&](std::size_t lane, float v) { code[lane].partition = static_cast<std::uint8_t>(v); });
    for (std::size_t e = 0; e < 4; ++e)
        for (std::size_t c = 0; c < 3; ++c) {
            V const end = e % 2 ? choice.end[e / 2].b[c] : choice.end[e / 2].a[c];
            V const value = hn::Mul(hn::Add(end, group.origin.load(c)), set(bc6h_unit));
            // A decoded endpoint lies inside the step that its code stands for, or at the end of the scale.
            each_lane(value, [&](std::size_t lane, float v) {
                std::uint32_t const bits = bc6h_modes[code[lane].mode].endpoint_bits;
                auto const size = static_cast<std::int32_t>(std::fabs(v)) >> (16 - bits);
                code[lane].end[e][c] = v < 0 ? -size : size;
            });
        }

    alignas(64) std::uint32_t second[max_lanes];
    alignas(64) float last[max_lanes], anchor_limit[max_lanes];
    for (std::size_t lane = 0; lane < lane_count; ++lane) {
        bool const two = bc6h_modes[code[lane].mode].subsets == 2;
        second[lane] = two ? two_subsets_second[code[lane].partition] : 0u;
        last[lane] = two ? 7.0f : 15.0f;
        anchor_limit[lane] = two ? 3.0f : 7.0f;
    }
    V weight[3];
    for (std::size_t c = 0; c < 3; ++c)
        weight[c] = set(weights.weight[c]);
    TEXEL_SET const in_second{hn::Load(DU(), second)};
    for (std::size_t t = 0; t < 16; ++t) {
        M const is_second = in_second.has(t);
        ENDS<3> ends;
        V difference[3];
        for (std::size_t c = 0; c < 3; ++c) {
            ends.a[c] = hn::IfThenElse(is_second, choice.end[1].a[c], choice.end[0].a[c]);
            ends.b[c] = hn::IfThenElse(is_second, choice.end[1].b[c], choice.end[0].b[c]);
            difference[c] = hn::Sub(group.texels.load(c, t), ends.a[c]);
        }
        RAMP<3> const ramp(ends, weight, hn::Load(D(), last));
        V const index = ramp.index(difference, t == 0 ? hn::Load(D(), anchor_limit) : ramp.last_index);
        each_lane(index, [&](std::size_t lane, float v) { code[lane].index[t] = static_cast<std::uint8_t>(v); });
    }
    for (std::size_t lane = 0; lane < group.count; ++lane)
        write_bc6h(code[lane], group.out[lane]);
}

template <bool is_signed>
void encode_group(BC6H_GROUP& group, BC6H_SEARCH const& search, CHANNEL_WEIGHTS const& weights) {
    if (group.count == 0)
        return;
    group.fill_up();
    BC6H_CHOICE choice;
    search_bc6h<is_signed>(BC6H_TRIAL{group.texels, group.origin, weights, search, choice});
    write_group<is_signed>(group, weights, choice);
    group.count = 0;
}

template <bool is_signed, class VIEW>
void encode_rows_of(VIEW const& view, ENCODE_OPTIONS const& options, std::uint32_t first_block_row,
                    std::uint32_t block_row_count, std::uint8_t* out) {
    BC6H_SEARCH const search = bc6h_search(options.effort);
    CHANNEL_WEIGHTS const weights = channel_weights(options.perceptual);
    BC6H_GROUP group;
    for (std::uint32_t row = first_block_row; row < first_block_row + block_row_count; ++row)
        for (std::uint32_t column = 0; column < blocks_across(view.width); ++column, out += 16) {
            std::uint16_t rgb[16][3];
            bool solid = true;
            for (std::uint32_t t = 0; t < 16; ++t) {
                load_texel(view, std::min(column * block_side + t % 4, view.width - 1),
                           std::min(row * block_side + t / 4, view.height - 1), is_signed, rgb[t]);
                solid = solid && std::memcmp(rgb[t], rgb[0], sizeof rgb[0]) == 0;
            }
            if (solid) {
                write_bc6h(solid_bc6h(rgb[0], is_signed), out);
                continue;
            }
            group.add(rgb, is_signed, out);
            if (group.count == lane_count)
                encode_group<is_signed>(group, search, weights);
        }
    encode_group<is_signed>(group, search, weights);
}

void encode_halves(RGBA16F_VIEW const& view, bool is_signed, ENCODE_OPTIONS const& options,
                   std::uint32_t first_block_row, std::uint32_t block_row_count, std::uint8_t* out) {
    auto const encode = is_signed ? &encode_rows_of<true, RGBA16F_VIEW> : &encode_rows_of<false, RGBA16F_VIEW>;
    encode(view, options, first_block_row, block_row_count, out);
}

void encode_bytes(RGBA8_VIEW const& view, bool is_signed, ENCODE_OPTIONS const& options, std::uint32_t first_block_row,
                  std::uint32_t block_row_count, std::uint8_t* out) {
    auto const encode = is_signed ? &encode_rows_of<true, RGBA8_VIEW> : &encode_rows_of<false, RGBA8_VIEW>;
    encode(view, options, first_block_row, block_row_count, out);
}

}  // namespace blocks::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace blocks {

HWY_EXPORT(encode_halves);
HWY_EXPORT(encode_bytes);

void encode_bc6h_rows(RGBA16F_VIEW const& view, bool is_signed, ENCODE_OPTIONS const& options,
                      std::uint32_t first_block_row, std::uint32_t block_row_count, std::uint8_t* out) {
    HWY_DYNAMIC_DISPATCH(encode_halves)(view, is_signed, options, first_block_row, block_row_count, out);
}

void encode_bc6h_rows(RGBA8_VIEW const& view, bool is_signed, ENCODE_OPTIONS const& options,
                      std::uint32_t first_block_row, std::uint32_t block_row_count, std::uint8_t* out) {
    HWY_DYNAMIC_DISPATCH(encode_bytes)(view, is_signed, options, first_block_row, block_row_count, out);
}

}  // namespace blocks
#endif
