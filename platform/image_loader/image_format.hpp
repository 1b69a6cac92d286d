// The numbers by which the image loader names file kinds and texel layouts. Those that other programs see (the
// image-information database, format tables) are fixed; the rest fill the gaps.
#pragma once

#include "blocks/block_types.hpp"
#include "platform/dds_container/dds_container.hpp"

#include <cstdint>
#include <optional>
#include <string_view>

namespace IMAGE_LOADER {

/// What an image came from. `memory` is an image that was made, not loaded.
enum class IMAGE_FORMAT : std::uint32_t {
    unknown = 0,
    tga = 1,
    png = 2,
    dds = 3,
    jpg = 4,
    tif = 5,
    memory = 9,
};

/// How the texels of an image lie in memory, least significant byte or bit first as in DXGI's names.
enum TEXTURE_TEXEL_FORMAT : std::uint32_t {
    TTF_UNKNOWN = 0,
    TTF_L8 = 1,
    TTF_A8 = 2,
    TTF_L8A8 = 3,
    TTF_L16 = 4,
    TTF_R8 = 5,
    TTF_R8G8 = 6,
    TTF_R16 = 7,
    TTF_R16G16 = 8,
    TTF_BC1 = 9,
    TTF_BC2 = 10,
    TTF_BC3 = 11,
    TTF_BC1_SRGB = 12,
    TTF_BC2_SRGB = 13,
    TTF_BC3_SRGB = 14,
    TTF_R8_SNORM = 15,
    TTF_R8G8_SNORM = 16,
    TTF_R8G8B8A8_SNORM = 17,
    TTF_R16_SNORM = 18,
    TTF_R16G16_SNORM = 19,
    TTF_R16G16B16A16_SNORM = 20,
    TTF_R16G16B16A16 = 21,
    TTF_R16_FLOAT = 22,
    TTF_R16G16_FLOAT = 23,
    TTF_R16G16B16A16_FLOAT = 24,
    TTF_R32_FLOAT = 25,
    TTF_R32G32_FLOAT = 26,
    TTF_R32G32B32_FLOAT = 27,
    TTF_R32G32B32A32_FLOAT = 28,
    TTF_R10G10B10A2 = 29,
    TTF_R11G11B10_FLOAT = 30,
    TTF_R9G9B9E5 = 31,
    TTF_B5G6R5 = 32,
    TTF_B5G5R5A1 = 33,
    TTF_B5G5R5X1 = 34,
    TTF_B4G4R4A4 = 35,
    TTF_B8G8R8 = 36,
    TTF_B8G8R8X8 = 37,
    TTF_B8G8R8X8_SRGB = 38,
    TTF_BC4 = 42,
    TTF_BC4_SNORM = 43,
    TTF_BC5 = 44,
    TTF_BC5_SNORM = 45,
    TTF_BC6H_UF16 = 46,
    TTF_BC6H_SF16 = 47,
    TTF_BC7 = 48,
    TTF_BC7_SRGB = 49,
    TTF_R8G8B8A8 = 51,
    TTF_B8G8R8A8 = 52,
    TTF_R8G8B8A8_SRGB = 53,
    TTF_B8G8R8A8_SRGB = 54,
    TTF_NUM_FORMATS
};

/// Which kind of numbers a texel is made of: unsigned channels that masks cut out of up to 32 bits, channels of one
/// width with red first, or one of the packed float layouts.
enum class TEXEL_KIND : std::uint8_t {
    none,
    block,
    masks,
    signed_8,
    signed_16,
    unsigned_16,
    half,
    single,
    small_float,
    shared_exponent,
};

/// What reading a texel of a format takes.
struct TEXEL_FORMAT_INFO {
    TEXTURE_TEXEL_FORMAT format = TTF_UNKNOWN;
    std::string_view name = "UNKNOWN";
    TEXEL_KIND kind = TEXEL_KIND::none;
    std::uint32_t bytes_per_texel = 0;           ///< 0 for block formats
    std::uint32_t channels = 0;                  ///< red first; not used by `masks`
    blocks::FORMAT block = blocks::FORMAT::bc1;  ///< kind `block` only
    dds_container::PIXEL_MASKS masks;            ///< kind `masks` only
    dds_container::DXGI dxgi = dds_container::DXGI::unknown;
};

/// The table's row; the row of TTF_UNKNOWN for numbers that are no format.
TEXEL_FORMAT_INFO const& texel_format_info(TEXTURE_TEXEL_FORMAT format);

/// The format of a DDS file's texels; TTF_UNKNOWN for masks that no format has.
TEXTURE_TEXEL_FORMAT texel_format_of(dds_container::DDS_DESCRIPTION const& description);

/// Bytes from one row of texels, or of blocks, to the next when rows are not padded; how many such rows there are; and
/// bytes of a whole level. For sides within the bounds of `dds_container`.
std::uint64_t tight_row_pitch(TEXTURE_TEXEL_FORMAT format, std::uint32_t width);
std::uint32_t surface_rows(TEXTURE_TEXEL_FORMAT format, std::uint32_t height);
std::uint64_t level_bytes(TEXTURE_TEXEL_FORMAT format, std::uint32_t width, std::uint32_t height);

/// Bytes of `levels` levels laid one after the other. Of a thin image (1 × 1024) that is more than one and a half times
/// its top level.
std::uint64_t chain_bytes(TEXTURE_TEXEL_FORMAT format, std::uint32_t width, std::uint32_t height, std::uint32_t levels);

}  // namespace IMAGE_LOADER
