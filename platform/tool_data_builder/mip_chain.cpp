#include "platform/tool_data_builder/mip_chain.hpp"

#include "platform/dds_container/dds_container.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace TOOLDATABUILDER {

namespace {

constexpr std::uint32_t channels = 4;
constexpr std::uint32_t alpha_channel = 3;

// Levels are averaged in sixteen bits. Without a curve a byte becomes 257 times itself, and a value the nearest byte.
std::uint16_t widen(std::uint8_t byte) {
    return static_cast<std::uint16_t>(byte * 257);
}

std::uint8_t narrow(std::uint16_t value) {
    // (value + 128) / 257, exact for all 65536 values, without a division and within sixteen bits.
    auto const almost = static_cast<std::uint16_t>((value * 65281U) >> 16);
    return static_cast<std::uint8_t>(static_cast<std::uint16_t>(almost + 128U) >> 8);
}

/// The same with a byte's value in linear light.
class SRGB_CURVE {
public:
    SRGB_CURVE() {
        for (std::uint32_t byte = 0; byte < 256; ++byte) {
            wide_[byte] = static_cast<std::uint16_t>(std::lround(linear_light(byte / 255.0) * 65535));
        }
        // A value goes to the byte whose wide form is nearest.
        std::uint32_t byte = 0;
        for (std::uint32_t value = 0; value < narrow_.size(); ++value) {
            while (byte < 255 && 2 * value >= std::uint32_t{wide_[byte]} + wide_[byte + 1]) {
                ++byte;
            }
            narrow_[value] = static_cast<std::uint8_t>(byte);
        }
    }

    std::uint16_t widen(std::uint8_t byte) const { return wide_[byte]; }
    std::uint8_t narrow(std::uint16_t value) const { return narrow_[value]; }

private:
    static double linear_light(double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    }

    std::array<std::uint16_t, 256> wide_ = {};
    std::array<std::uint8_t, 65536> narrow_ = {};
};

SRGB_CURVE const& srgb_curve() {
    static SRGB_CURVE const curve;
    return curve;
}

using WIDE_VALUES = std::vector<std::uint16_t, IMAGE_LOADER::IMAGE_ALLOCATOR<std::uint16_t>>;

void widen_row(std::uint8_t const* bytes, MIP_FILTER filter, std::size_t texels, std::uint16_t* values) {
    if (filter == MIP_FILTER::box) {
        for (std::size_t i = 0; i < texels * channels; ++i) {
            values[i] = widen(bytes[i]);
        }
        return;
    }
    SRGB_CURVE const& curve = srgb_curve();
    for (std::size_t i = 0; i < texels * channels; i += channels) {
        for (std::size_t channel = 0; channel < alpha_channel; ++channel) {
            values[i + channel] = curve.widen(bytes[i + channel]);
        }
        values[i + alpha_channel] = widen(bytes[i + alpha_channel]);
    }
}

IMAGE_LOADER::IMAGE_BYTES narrow_values(WIDE_VALUES const& wide, MIP_FILTER filter) {
    IMAGE_LOADER::IMAGE_BYTES narrowed(wide.size());
    // Bytes may alias anything, the vectors' own pointers too; not these.
    std::uint16_t const* const values = wide.data();
    std::uint8_t* const bytes = narrowed.data();
    std::size_t const count = wide.size();
    if (filter == MIP_FILTER::box) {
        for (std::size_t i = 0; i < count; ++i) {
            bytes[i] = narrow(values[i]);
        }
        return narrowed;
    }
    SRGB_CURVE const& curve = srgb_curve();
    for (std::size_t i = 0; i < count; i += channels) {
        for (std::size_t channel = 0; channel < alpha_channel; ++channel) {
            bytes[i + channel] = curve.narrow(values[i + channel]);
        }
        bytes[i + alpha_channel] = narrow(values[i + alpha_channel]);
    }
    return narrowed;
}

struct WIDE_LEVEL {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    WIDE_VALUES values;

    WIDE_LEVEL(std::uint32_t level_width, std::uint32_t level_height)
        : width(level_width),
          height(level_height),
          values(checked_size::memory_size(std::size_t{channels}, level_width, level_height)) {}
};

/// The texels of one axis that a texel of the level below covers, and how far: the weights' sum is the axis's total.
struct COVER {
    std::uint32_t first = 0;
    std::uint32_t count = 0;
    std::array<std::uint64_t, 3> weights = {};
};

COVER cover(std::uint32_t side, std::uint32_t half, std::uint32_t at) {
    if (side == 1) {
        return {0, 1, {1}};
    }
    if (side % 2 == 0) {
        return {2 * at, 2, {1, 1}};
    }
    return {2 * at, 3, {half - at, half, at + 1}};
}

std::uint64_t cover_total(std::uint32_t side) {
    return side % 2 == 0 ? 2 : side;
}

using ROWS = std::array<std::uint16_t const*, 3>;

/// A texel's four channels as one word.
std::uint64_t texel_word(std::uint16_t const* texel) {
    std::uint64_t word = 0;
    std::memcpy(&word, texel, sizeof word);
    return word;
}

/// One row of averages of 2 × 2 texels: what the weights come to where both sides are even. Channels are added in
/// pairs, each with 32 bits of a word to itself.
void average_quads(ROWS const& rows, std::uint32_t texels, std::uint16_t* out) {
    constexpr std::uint64_t pair = 0x0000ffff0000ffffU;
    std::uint16_t const* const upper = rows[0];
    std::uint16_t const* const lower = rows[1];
    for (std::size_t x = 0; x < texels; ++x) {
        std::size_t const left = 2 * channels * x;
        std::size_t const right = left + channels;
        std::uint64_t one_pair = 0x0000000200000002U;
        std::uint64_t other_pair = one_pair;
        for (std::uint64_t const texel : {texel_word(upper + left), texel_word(upper + right), texel_word(lower + left),
                                          texel_word(lower + right)}) {
            one_pair += texel & pair;
            other_pair += (texel >> 16) & pair;
        }
        std::uint64_t const average = ((one_pair >> 2) & pair) | ((other_pair >> 2) & pair) << 16;
        std::memcpy(out + channels * x, &average, sizeof average);
    }
}

/// One row of averages by weight; `width` is that of the level above.
void average_covered(ROWS const& rows, COVER const& row_cover, std::uint32_t width, std::uint32_t texels,
                     std::uint64_t total, std::uint16_t* out) {
    for (std::uint32_t x = 0; x < texels; ++x) {
        COVER const columns = cover(width, texels, x);
        std::array<std::uint64_t, channels> sums = {};
        for (std::uint32_t j = 0; j < row_cover.count; ++j) {
            for (std::uint32_t i = 0; i < columns.count; ++i) {
                std::uint64_t const weight = row_cover.weights[j] * columns.weights[i];
                std::uint16_t const* const texel = rows[j] + std::size_t{channels} * (columns.first + i);
                for (std::uint32_t channel = 0; channel < channels; ++channel) {
                    sums[channel] += weight * texel[channel];
                }
            }
        }
        for (std::uint64_t const sum : sums) {
            *out++ = static_cast<std::uint16_t>((sum + total / 2) / total);
        }
    }
}

/// Averages; `row_at(y, j)` gives row y of the level above, which stays until the next call with the same j.
template <typename ROW_AT>
WIDE_LEVEL halve(std::uint32_t width, std::uint32_t height, ROW_AT row_at) {
    WIDE_LEVEL half(dds_container::level_side(width, 1), dds_container::level_side(height, 1));
    bool const is_even = width % 2 == 0 && height % 2 == 0;
    std::uint64_t const total = cover_total(width) * cover_total(height);
    std::uint16_t* out = half.values.data();
    for (std::uint32_t y = 0; y < half.height; ++y, out += std::size_t{channels} * half.width) {
        COVER const row_cover = cover(height, half.height, y);
        ROWS rows = {};
        for (std::uint32_t j = 0; j < row_cover.count; ++j) {
            rows[j] = row_at(row_cover.first + j, j);
        }
        if (is_even) {
            average_quads(rows, half.width, out);
        } else {
            average_covered(rows, row_cover, width, half.width, total, out);
        }
    }
    return half;
}

}  // namespace

std::vector<MIP_LEVEL> make_lower_mips(blocks::RGBA8_VIEW const& top, MIP_FILTER filter) {
    std::vector<MIP_LEVEL> levels;
    if (std::min(top.width, top.height) == 0 || std::max(top.width, top.height) == 1) {
        return levels;
    }
    WIDE_LEVEL scratch(top.width, 3);
    WIDE_LEVEL wide = halve(top.width, top.height, [&](std::uint32_t y, std::uint32_t j) {
        std::uint16_t* const row = scratch.values.data() + std::size_t{channels} * top.width * j;
        widen_row(top.texels + y * top.row_pitch, filter, top.width, row);
        return row;
    });
    levels.push_back({wide.width, wide.height, narrow_values(wide.values, filter)});
    while (wide.width > 1 || wide.height > 1) {
        wide = halve(wide.width, wide.height, [&](std::uint32_t y, std::uint32_t) {
            return wide.values.data() + std::size_t{channels} * wide.width * y;
        });
        levels.push_back({wide.width, wide.height, narrow_values(wide.values, filter)});
    }
    return levels;
}

}  // namespace TOOLDATABUILDER
