// The numbers of the texel formats that a DDS file's extended header carries, under the names that Microsoft's
// DXGI_FORMAT documentation gives them, and what a container has to know of each: bits of a texel or bytes of a block.
#pragma once

#include <cstdint>
#include <string_view>

namespace dds_container {

enum class DXGI : std::uint32_t {
    unknown = 0,
    r32g32b32a32_float = 2,
    r32g32b32_float = 6,
    r16g16b16a16_float = 10,
    r16g16b16a16_unorm = 11,
    r16g16b16a16_snorm = 13,
    r32g32_float = 16,
    r10g10b10a2_unorm = 24,
    r11g11b10_float = 26,
    r8g8b8a8_unorm = 28,
    r8g8b8a8_unorm_srgb = 29,
    r8g8b8a8_snorm = 31,
    r16g16_float = 34,
    r16g16_unorm = 35,
    r16g16_snorm = 37,
    r32_float = 41,
    r8g8_unorm = 49,
    r8g8_snorm = 51,
    r16_float = 54,
    r16_unorm = 56,
    r16_snorm = 58,
    r8_unorm = 61,
    r8_snorm = 63,
    a8_unorm = 65,
    r9g9b9e5_sharedexp = 67,
    bc1_unorm = 71,
    bc1_unorm_srgb = 72,
    bc2_unorm = 74,
    bc2_unorm_srgb = 75,
    bc3_unorm = 77,
    bc3_unorm_srgb = 78,
    bc4_unorm = 80,
    bc4_snorm = 81,
    bc5_unorm = 83,
    bc5_snorm = 84,
    b5g6r5_unorm = 85,
    b5g5r5a1_unorm = 86,
    b8g8r8a8_unorm = 87,
    b8g8r8x8_unorm = 88,
    b8g8r8a8_unorm_srgb = 91,
    b8g8r8x8_unorm_srgb = 93,
    bc6h_uf16 = 95,
    bc6h_sf16 = 96,
    bc7_unorm = 98,
    bc7_unorm_srgb = 99,
    b4g4r4a4_unorm = 115,
};

/// What the layout of a surface depends on. Exactly one of the two sizes is not 0 for a format that is known.
struct DXGI_FORMAT_INFO {
    std::string_view name;  ///< as published, e.g. "BC1_UNORM"; "UNKNOWN" for numbers that are not in DXGI
    std::uint32_t bytes_per_texel = 0;
    std::uint32_t bytes_per_block = 0;
    bool is_srgb = false;
    bool has_alpha = false;
};

DXGI_FORMAT_INFO const& dxgi_format_info(DXGI format);

/// The format behind a number of a file. Typeless formats are read as their plain (unsigned normalised or half float)
/// sisters; what this project has no use for gives `unknown`.
DXGI dxgi_from_number(std::uint32_t number);

}  // namespace dds_container
