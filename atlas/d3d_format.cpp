#include "atlas/d3d_format.hpp"

#include <algorithm>
#include <array>
#include <initializer_list>

namespace {

using namespace IMAGE_LOADER;

struct RANGE {
    std::uint32_t first;
    std::uint32_t last;
};

bool is_in(D3D_FORMAT format, std::initializer_list<RANGE> ranges) {
    auto const number = static_cast<std::uint32_t>(format);
    return std::any_of(ranges.begin(), ranges.end(),
                       [number](RANGE range) { return range.first <= number && number <= range.last; });
}

struct LOADER_ROW {
    std::uint32_t number;
    TEXTURE_TEXEL_FORMAT format;
};

constexpr auto loader_formats = std::to_array<LOADER_ROW>({
    {20, TTF_B8G8R8},
    {21, TTF_B8G8R8A8},
    {22, TTF_B8G8R8X8},
    {23, TTF_B5G6R5},
    {24, TTF_B5G5R5X1},
    {25, TTF_B5G5R5A1},
    {26, TTF_B4G4R4A4},
    {28, TTF_A8},
    {31, TTF_R10G10B10A2},
    {32, TTF_R8G8B8A8},
    {34, TTF_R16G16},
    {36, TTF_R16G16B16A16},
    {50, TTF_L8},
    {51, TTF_L8A8},
    {60, TTF_R8G8_SNORM},
    {63, TTF_R8G8B8A8_SNORM},
    {64, TTF_R16G16_SNORM},
    {81, TTF_L16},
    {110, TTF_R16G16B16A16_SNORM},
    {111, TTF_R16_FLOAT},
    {112, TTF_R16G16_FLOAT},
    {113, TTF_R16G16B16A16_FLOAT},
    {114, TTF_R32_FLOAT},
    {115, TTF_R32G32_FLOAT},
    {116, TTF_R32G32B32A32_FLOAT},
    {static_cast<std::uint32_t>(four_cc_format("DXT1")), TTF_BC1},
    {static_cast<std::uint32_t>(four_cc_format("DXT2")), TTF_BC2},
    {static_cast<std::uint32_t>(four_cc_format("DXT3")), TTF_BC2},
    {static_cast<std::uint32_t>(four_cc_format("DXT4")), TTF_BC3},
    {static_cast<std::uint32_t>(four_cc_format("DXT5")), TTF_BC3},
});

}  // namespace

bool is_2d_format(D3D_FORMAT format) {
    return is_dxt_format(format) ||
           is_in(format, {{20, 36}, {40, 41}, {50, 52}, {60, 64}, {67, 67}, {81, 81}, {110, 117}});
}

bool is_cube_format(D3D_FORMAT format) {
    return is_dxt_format(format) || is_in(format, {{21, 26}, {34, 34}, {50, 51}, {63, 64}, {81, 81}});
}

bool is_volume_format(D3D_FORMAT format) {
    return is_in(format, {{21, 26}, {34, 34}, {50, 51}, {64, 64}, {81, 81}});
}

bool is_dxt_format(D3D_FORMAT format) {
    constexpr std::array formats = {four_cc_format("DXT1"), four_cc_format("DXT2"), four_cc_format("DXT3"),
                                    four_cc_format("DXT4"), four_cc_format("DXT5")};
    return std::find(formats.begin(), formats.end(), format) != formats.end();
}

std::uint32_t bits_per_texel(D3D_FORMAT format) {
    if (format == four_cc_format("DXT1"))
        return 4;
    if (is_dxt_format(format) || is_in(format, {{27, 28}, {40, 41}, {50, 50}, {52, 52}}))
        return 8;
    for (D3D_FORMAT const packed :
         {four_cc_format("UYVY"), four_cc_format("YUY2"), four_cc_format("RGBG"), four_cc_format("GRGB")}) {
        if (format == packed)
            return 16;
    }
    if (is_in(format, {{23, 26}, {29, 30}, {51, 51}, {60, 61}, {81, 81}, {111, 111}, {117, 117}}))
        return 16;
    if (is_in(format, {{20, 20}}))
        return 24;
    if (is_in(format, {{21, 22}, {31, 35}, {62, 64}, {67, 67}, {112, 112}, {114, 114}}))
        return 32;
    if (is_in(format, {{36, 36}, {110, 110}, {113, 113}, {115, 115}}))
        return 64;
    return is_in(format, {{116, 116}}) ? 128 : 0;
}

TEXTURE_TEXEL_FORMAT texel_format_of(D3D_FORMAT format) {
    for (LOADER_ROW const& row : loader_formats) {
        if (static_cast<D3D_FORMAT>(row.number) == format)
            return row.format;
    }
    return TTF_UNKNOWN;
}
