#include "platform/image_loader/image_format.hpp"

#include <array>

namespace IMAGE_LOADER {

namespace {

using blocks::FORMAT;
using dds_container::DXGI;
using dds_container::PIXEL_MASKS;

constexpr TEXEL_FORMAT_INFO no_format;

constexpr TEXEL_FORMAT_INFO masked(TEXTURE_TEXEL_FORMAT format, std::string_view name, PIXEL_MASKS masks, DXGI dxgi) {
    return {format, name, TEXEL_KIND::masks, masks.bits_per_texel / 8, 0, FORMAT::bc1, masks, dxgi};
}

constexpr TEXEL_FORMAT_INFO block(TEXTURE_TEXEL_FORMAT format, std::string_view name, FORMAT block, DXGI dxgi) {
    return {format, name, TEXEL_KIND::block, 0, 0, block, {}, dxgi};
}

constexpr TEXEL_FORMAT_INFO numbers(TEXTURE_TEXEL_FORMAT format, std::string_view name, TEXEL_KIND kind,
                                    std::uint32_t channels, std::uint32_t bytes_per_texel, DXGI dxgi) {
    return {format, name, kind, bytes_per_texel, channels, FORMAT::bc1, {}, dxgi};
}

constexpr PIXEL_MASKS bgra_8 = {32, 0x00ff0000, 0x0000ff00, 0x000000ff, 0xff000000};
constexpr PIXEL_MASKS bgrx_8 = {32, 0x00ff0000, 0x0000ff00, 0x000000ff, 0};
constexpr PIXEL_MASKS rgba_8 = {32, 0x000000ff, 0x0000ff00, 0x00ff0000, 0xff000000};

constexpr auto formats = std::to_array<TEXEL_FORMAT_INFO>({
    masked(TTF_L8, "L8", {8, 0xff, 0, 0, 0, true}, DXGI::unknown),
    masked(TTF_A8, "A8", {8, 0, 0, 0, 0xff}, DXGI::a8_unorm),
    masked(TTF_L8A8, "L8A8", {16, 0xff, 0, 0, 0xff00, true}, DXGI::unknown),
    masked(TTF_L16, "L16", {16, 0xffff, 0, 0, 0, true}, DXGI::unknown),
    masked(TTF_R8, "R8", {8, 0xff, 0, 0, 0}, DXGI::r8_unorm),
    masked(TTF_R8G8, "R8G8", {16, 0xff, 0xff00, 0, 0}, DXGI::r8g8_unorm),
    masked(TTF_R16, "R16", {16, 0xffff, 0, 0, 0}, DXGI::r16_unorm),
    masked(TTF_R16G16, "R16G16", {32, 0xffff, 0xffff0000, 0, 0}, DXGI::r16g16_unorm),
    masked(TTF_R10G10B10A2, "R10G10B10A2", {32, 0x3ff, 0xffc00, 0x3ff00000, 0xc0000000}, DXGI::r10g10b10a2_unorm),
    masked(TTF_B5G6R5, "B5G6R5", {16, 0xf800, 0x07e0, 0x001f, 0}, DXGI::b5g6r5_unorm),
    masked(TTF_B5G5R5A1, "B5G5R5A1", {16, 0x7c00, 0x03e0, 0x001f, 0x8000}, DXGI::b5g5r5a1_unorm),
    masked(TTF_B5G5R5X1, "B5G5R5X1", {16, 0x7c00, 0x03e0, 0x001f, 0}, DXGI::unknown),
    masked(TTF_B4G4R4A4, "B4G4R4A4", {16, 0x0f00, 0x00f0, 0x000f, 0xf000}, DXGI::b4g4r4a4_unorm),
    masked(TTF_B8G8R8, "B8G8R8", {24, 0xff0000, 0x00ff00, 0x0000ff, 0}, DXGI::unknown),
    masked(TTF_B8G8R8X8, "B8G8R8X8", bgrx_8, DXGI::b8g8r8x8_unorm),
    masked(TTF_B8G8R8X8_SRGB, "B8G8R8X8_SRGB", bgrx_8, DXGI::b8g8r8x8_unorm_srgb),
    masked(TTF_R8G8B8A8, "R8G8B8A8", rgba_8, DXGI::r8g8b8a8_unorm),
    masked(TTF_B8G8R8A8, "B8G8R8A8", bgra_8, DXGI::b8g8r8a8_unorm),
    masked(TTF_R8G8B8A8_SRGB, "R8G8B8A8_SRGB", rgba_8, DXGI::r8g8b8a8_unorm_srgb),
    masked(TTF_B8G8R8A8_SRGB, "B8G8R8A8_SRGB", bgra_8, DXGI::b8g8r8a8_unorm_srgb),
    block(TTF_BC1, "BC1", FORMAT::bc1, DXGI::bc1_unorm),
    block(TTF_BC2, "BC2", FORMAT::bc2, DXGI::bc2_unorm),
    block(TTF_BC3, "BC3", FORMAT::bc3, DXGI::bc3_unorm),
    block(TTF_BC1_SRGB, "BC1_SRGB", FORMAT::bc1, DXGI::bc1_unorm_srgb),
    block(TTF_BC2_SRGB, "BC2_SRGB", FORMAT::bc2, DXGI::bc2_unorm_srgb),
    block(TTF_BC3_SRGB, "BC3_SRGB", FORMAT::bc3, DXGI::bc3_unorm_srgb),
    block(TTF_BC4, "BC4", FORMAT::bc4_unorm, DXGI::bc4_unorm),
    block(TTF_BC4_SNORM, "BC4_SNORM", FORMAT::bc4_snorm, DXGI::bc4_snorm),
    block(TTF_BC5, "BC5", FORMAT::bc5_unorm, DXGI::bc5_unorm),
    block(TTF_BC5_SNORM, "BC5_SNORM", FORMAT::bc5_snorm, DXGI::bc5_snorm),
    block(TTF_BC6H_UF16, "BC6H_UF16", FORMAT::bc6h_uf16, DXGI::bc6h_uf16),
    block(TTF_BC6H_SF16, "BC6H_SF16", FORMAT::bc6h_sf16, DXGI::bc6h_sf16),
    block(TTF_BC7, "BC7", FORMAT::bc7, DXGI::bc7_unorm),
    block(TTF_BC7_SRGB, "BC7_SRGB", FORMAT::bc7, DXGI::bc7_unorm_srgb),
    numbers(TTF_R8_SNORM, "R8_SNORM", TEXEL_KIND::signed_8, 1, 1, DXGI::r8_snorm),
    numbers(TTF_R8G8_SNORM, "R8G8_SNORM", TEXEL_KIND::signed_8, 2, 2, DXGI::r8g8_snorm),
    numbers(TTF_R8G8B8A8_SNORM, "R8G8B8A8_SNORM", TEXEL_KIND::signed_8, 4, 4, DXGI::r8g8b8a8_snorm),
    numbers(TTF_R16_SNORM, "R16_SNORM", TEXEL_KIND::signed_16, 1, 2, DXGI::r16_snorm),
    numbers(TTF_R16G16_SNORM, "R16G16_SNORM", TEXEL_KIND::signed_16, 2, 4, DXGI::r16g16_snorm),
    numbers(TTF_R16G16B16A16_SNORM, "R16G16B16A16_SNORM", TEXEL_KIND::signed_16, 4, 8, DXGI::r16g16b16a16_snorm),
    numbers(TTF_R16G16B16A16, "R16G16B16A16", TEXEL_KIND::unsigned_16, 4, 8, DXGI::r16g16b16a16_unorm),
    numbers(TTF_R16_FLOAT, "R16_FLOAT", TEXEL_KIND::half, 1, 2, DXGI::r16_float),
    numbers(TTF_R16G16_FLOAT, "R16G16_FLOAT", TEXEL_KIND::half, 2, 4, DXGI::r16g16_float),
    numbers(TTF_R16G16B16A16_FLOAT, "R16G16B16A16_FLOAT", TEXEL_KIND::half, 4, 8, DXGI::r16g16b16a16_float),
    numbers(TTF_R32_FLOAT, "R32_FLOAT", TEXEL_KIND::single, 1, 4, DXGI::r32_float),
    numbers(TTF_R32G32_FLOAT, "R32G32_FLOAT", TEXEL_KIND::single, 2, 8, DXGI::r32g32_float),
    numbers(TTF_R32G32B32_FLOAT, "R32G32B32_FLOAT", TEXEL_KIND::single, 3, 12, DXGI::r32g32b32_float),
    numbers(TTF_R32G32B32A32_FLOAT, "R32G32B32A32_FLOAT", TEXEL_KIND::single, 4, 16, DXGI::r32g32b32a32_float),
    numbers(TTF_R11G11B10_FLOAT, "R11G11B10_FLOAT", TEXEL_KIND::small_float, 3, 4, DXGI::r11g11b10_float),
    numbers(TTF_R9G9B9E5, "R9G9B9E5", TEXEL_KIND::shared_exponent, 3, 4, DXGI::r9g9b9e5_sharedexp),
});

}  // namespace

TEXEL_FORMAT_INFO const& texel_format_info(TEXTURE_TEXEL_FORMAT format) {
    for (TEXEL_FORMAT_INFO const& row : formats) {
        if (row.format == format) {
            return row;
        }
    }
    return no_format;
}

TEXTURE_TEXEL_FORMAT texel_format_of(dds_container::DDS_DESCRIPTION const& description) {
    for (TEXEL_FORMAT_INFO const& row : formats) {
        bool const matches = description.format != DXGI::unknown
                                 ? row.dxgi == description.format
                                 : row.kind == TEXEL_KIND::masks && row.masks == description.masks;
        if (matches) {
            return row.format;
        }
    }
    return TTF_UNKNOWN;
}

std::uint64_t tight_row_pitch(TEXTURE_TEXEL_FORMAT format, std::uint32_t width) {
    TEXEL_FORMAT_INFO const& info = texel_format_info(format);
    return info.kind == TEXEL_KIND::block
               ? std::uint64_t{blocks::blocks_across(width)} * blocks::bytes_per_block(info.block)
               : std::uint64_t{width} * info.bytes_per_texel;
}

std::uint32_t surface_rows(TEXTURE_TEXEL_FORMAT format, std::uint32_t height) {
    return texel_format_info(format).kind == TEXEL_KIND::block ? blocks::blocks_across(height) : height;
}

std::uint64_t level_bytes(TEXTURE_TEXEL_FORMAT format, std::uint32_t width, std::uint32_t height) {
    return checked_size::saturating_product(tight_row_pitch(format, width), surface_rows(format, height));
}

std::uint64_t chain_bytes(TEXTURE_TEXEL_FORMAT format, std::uint32_t width, std::uint32_t height,
                          std::uint32_t levels) {
    std::uint64_t sum = 0;
    for (std::uint32_t level = 0; level < levels; ++level) {
        sum = checked_size::saturating_sum(sum, level_bytes(format, dds_container::level_side(width, level),
                                                            dds_container::level_side(height, level)));
    }
    return sum;
}

}  // namespace IMAGE_LOADER
