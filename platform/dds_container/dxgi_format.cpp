#include "platform/dds_container/dxgi_format.hpp"

#include <array>
#include <utility>

namespace dds_container {

namespace {

struct ROW {
    DXGI format;
    DXGI_FORMAT_INFO info;
};

constexpr auto formats = std::to_array<ROW>({
    {DXGI::unknown, {"UNKNOWN", 0, 0, false, false}},
    {DXGI::r32g32b32a32_float, {"R32G32B32A32_FLOAT", 16, 0, false, true}},
    {DXGI::r32g32b32_float, {"R32G32B32_FLOAT", 12, 0, false, false}},
    {DXGI::r16g16b16a16_float, {"R16G16B16A16_FLOAT", 8, 0, false, true}},
    {DXGI::r16g16b16a16_unorm, {"R16G16B16A16_UNORM", 8, 0, false, true}},
    {DXGI::r16g16b16a16_snorm, {"R16G16B16A16_SNORM", 8, 0, false, true}},
    {DXGI::r32g32_float, {"R32G32_FLOAT", 8, 0, false, false}},
    {DXGI::r10g10b10a2_unorm, {"R10G10B10A2_UNORM", 4, 0, false, true}},
    {DXGI::r11g11b10_float, {"R11G11B10_FLOAT", 4, 0, false, false}},
    {DXGI::r8g8b8a8_unorm, {"R8G8B8A8_UNORM", 4, 0, false, true}},
    {DXGI::r8g8b8a8_unorm_srgb, {"R8G8B8A8_UNORM_SRGB", 4, 0, true, true}},
    {DXGI::r8g8b8a8_snorm, {"R8G8B8A8_SNORM", 4, 0, false, true}},
    {DXGI::r16g16_float, {"R16G16_FLOAT", 4, 0, false, false}},
    {DXGI::r16g16_unorm, {"R16G16_UNORM", 4, 0, false, false}},
    {DXGI::r16g16_snorm, {"R16G16_SNORM", 4, 0, false, false}},
    {DXGI::r32_float, {"R32_FLOAT", 4, 0, false, false}},
    {DXGI::r8g8_unorm, {"R8G8_UNORM", 2, 0, false, false}},
    {DXGI::r8g8_snorm, {"R8G8_SNORM", 2, 0, false, false}},
    {DXGI::r16_float, {"R16_FLOAT", 2, 0, false, false}},
    {DXGI::r16_unorm, {"R16_UNORM", 2, 0, false, false}},
    {DXGI::r16_snorm, {"R16_SNORM", 2, 0, false, false}},
    {DXGI::r8_unorm, {"R8_UNORM", 1, 0, false, false}},
    {DXGI::r8_snorm, {"R8_SNORM", 1, 0, false, false}},
    {DXGI::a8_unorm, {"A8_UNORM", 1, 0, false, true}},
    {DXGI::r9g9b9e5_sharedexp, {"R9G9B9E5_SHAREDEXP", 4, 0, false, false}},
    {DXGI::bc1_unorm, {"BC1_UNORM", 0, 8, false, true}},
    {DXGI::bc1_unorm_srgb, {"BC1_UNORM_SRGB", 0, 8, true, true}},
    {DXGI::bc2_unorm, {"BC2_UNORM", 0, 16, false, true}},
    {DXGI::bc2_unorm_srgb, {"BC2_UNORM_SRGB", 0, 16, true, true}},
    {DXGI::bc3_unorm, {"BC3_UNORM", 0, 16, false, true}},
    {DXGI::bc3_unorm_srgb, {"BC3_UNORM_SRGB", 0, 16, true, true}},
    {DXGI::bc4_unorm, {"BC4_UNORM", 0, 8, false, false}},
    {DXGI::bc4_snorm, {"BC4_SNORM", 0, 8, false, false}},
    {DXGI::bc5_unorm, {"BC5_UNORM", 0, 16, false, false}},
    {DXGI::bc5_snorm, {"BC5_SNORM", 0, 16, false, false}},
    {DXGI::b5g6r5_unorm, {"B5G6R5_UNORM", 2, 0, false, false}},
    {DXGI::b5g5r5a1_unorm, {"B5G5R5A1_UNORM", 2, 0, false, true}},
    {DXGI::b8g8r8a8_unorm, {"B8G8R8A8_UNORM", 4, 0, false, true}},
    {DXGI::b8g8r8x8_unorm, {"B8G8R8X8_UNORM", 4, 0, false, false}},
    {DXGI::b8g8r8a8_unorm_srgb, {"B8G8R8A8_UNORM_SRGB", 4, 0, true, true}},
    {DXGI::b8g8r8x8_unorm_srgb, {"B8G8R8X8_UNORM_SRGB", 4, 0, true, false}},
    {DXGI::bc6h_uf16, {"BC6H_UF16", 0, 16, false, false}},
    {DXGI::bc6h_sf16, {"BC6H_SF16", 0, 16, false, false}},
    {DXGI::bc7_unorm, {"BC7_UNORM", 0, 16, false, true}},
    {DXGI::bc7_unorm_srgb, {"BC7_UNORM_SRGB", 0, 16, true, true}},
    {DXGI::b4g4r4a4_unorm, {"B4G4R4A4_UNORM", 2, 0, false, true}},
});

// A typeless number and the format as which it is read.
constexpr auto typeless = std::to_array<std::pair<std::uint32_t, DXGI>>({
    {1, DXGI::r32g32b32a32_float}, {5, DXGI::r32g32b32_float}, {9, DXGI::r16g16b16a16_float}, {15, DXGI::r32g32_float},
    {23, DXGI::r10g10b10a2_unorm}, {27, DXGI::r8g8b8a8_unorm}, {33, DXGI::r16g16_float},      {39, DXGI::r32_float},
    {48, DXGI::r8g8_unorm},        {53, DXGI::r16_unorm},      {60, DXGI::r8_unorm},          {70, DXGI::bc1_unorm},
    {73, DXGI::bc2_unorm},         {76, DXGI::bc3_unorm},      {79, DXGI::bc4_unorm},         {82, DXGI::bc5_unorm},
    {90, DXGI::b8g8r8a8_unorm},    {92, DXGI::b8g8r8x8_unorm}, {94, DXGI::bc6h_uf16},         {97, DXGI::bc7_unorm},
});

}  // namespace

DXGI_FORMAT_INFO const& dxgi_format_info(DXGI format) {
    for (ROW const& row : formats) {
        if (row.format == format) {
            return row.info;
        }
    }
    return formats.front().info;
}

DXGI dxgi_from_number(std::uint32_t number) {
    for (auto const& [typeless_number, format] : typeless) {
        if (typeless_number == number) {
            return format;
        }
    }
    for (ROW const& row : formats) {
        if (static_cast<std::uint32_t>(row.format) == number) {
            return row.format;
        }
    }
    return DXGI::unknown;
}

}  // namespace dds_container
