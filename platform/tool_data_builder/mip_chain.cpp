#include "platform/tool_data_builder/mip_chain.hpp"

#include "platform/dds_container/dds_container.hpp"

#include <algorithm>
#include <array>
#include <cmath>

namespace TOOLDATABUILDER {

namespace {

constexpr std::uint32_t channels = 4;
constexpr std::uint32_t alpha_channel = 3;

/// From bytes to the sixteen bits that levels are averaged in, and back.
class CHANNEL_CURVE {
public:
    explicit CHANNEL_CURVE(bool is_srgb) {
        for (std::uint32_t byte = 0; byte < 256; ++byte) {
            wide_[byte] = static_cast<std::uint16_t>(is_srgb ? std::lround(linear_light(byte / 255.0) * 65535)
                                                             : static_cast<long>(byte * 257));
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

CHANNEL_CURVE const& plain_curve() {
    static CHANNEL_CURVE const curve(false);
    return curve;
}

CHANNEL_CURVE const& srgb_curve() {
    static CHANNEL_CURVE const curve(true);
    return curve;
}

struct WIDE_LEVEL {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint16_t, IMAGE_LOADER::IMAGE_ALLOCATOR<std::uint16_t>> values;

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

/// Averages; `value_at(texel, channel)` gives the sixteen bits of the level above.
template <typename VALUE_AT>
WIDE_LEVEL halve(std::uint32_t width, std::uint32_t height, VALUE_AT value_at) {
    WIDE_LEVEL half(dds_container::level_side(width, 1), dds_container::level_side(height, 1));
    std::uint64_t const total = cover_total(width) * cover_total(height);
    std::uint16_t* out = half.values.data();
    for (std::uint32_t y = 0; y < half.height; ++y) {
        COVER const rows = cover(height, half.height, y);
        for (std::uint32_t x = 0; x < half.width; ++x) {
            COVER const columns = cover(width, half.width, x);
            std::array<std::uint64_t, channels> sums = {};
            for (std::uint32_t j = 0; j < rows.count; ++j) {
                std::size_t const texel = std::size_t{rows.first + j} * width + columns.first;
                for (std::uint32_t i = 0; i < columns.count; ++i) {
                    std::uint64_t const weight = rows.weights[j] * columns.weights[i];
                    for (std::uint32_t channel = 0; channel < channels; ++channel) {
                        sums[channel] += weight * value_at(texel + i, channel);
                    }
                }
            }
            for (std::uint64_t const sum : sums) {
                *out++ = static_cast<std::uint16_t>((sum + total / 2) / total);
            }
        }
    }
    return half;
}

using CURVES = std::array<CHANNEL_CURVE const*, channels>;

MIP_LEVEL narrow(WIDE_LEVEL const& wide, CURVES const& curves) {
    MIP_LEVEL level{wide.width, wide.height, IMAGE_LOADER::IMAGE_BYTES(wide.values.size())};
    for (std::size_t i = 0; i < wide.values.size(); ++i) {
        level.texels[i] = curves[i % channels]->narrow(wide.values[i]);
    }
    return level;
}

}  // namespace

std::vector<MIP_LEVEL> make_lower_mips(blocks::RGBA8_VIEW const& top, MIP_FILTER filter) {
    std::vector<MIP_LEVEL> levels;
    if (std::min(top.width, top.height) == 0 || std::max(top.width, top.height) == 1) {
        return levels;
    }
    CURVES curves;
    curves.fill(filter == MIP_FILTER::box_srgb ? &srgb_curve() : &plain_curve());
    curves[alpha_channel] = &plain_curve();

    std::size_t const texels_per_row = top.width;
    WIDE_LEVEL wide = halve(top.width, top.height, [&](std::size_t texel, std::uint32_t channel) {
        std::uint8_t const* const row = top.texels + texel / texels_per_row * top.row_pitch;
        return curves[channel]->widen(row[texel % texels_per_row * channels + channel]);
    });
    levels.push_back(narrow(wide, curves));
    while (wide.width > 1 || wide.height > 1) {
        wide = halve(wide.width, wide.height,
                     [&](std::size_t texel, std::uint32_t channel) { return wide.values[texel * channels + channel]; });
        levels.push_back(narrow(wide, curves));
    }
    return levels;
}

}  // namespace TOOLDATABUILDER
