// The operations of the DirectXTex interface that are called, over this project's block encoders. Published names,
// values and meanings (house style does not apply to them); what differs from the library:
// - Box-filtered levels work for sides of any length, also where the library only takes powers of two.
// - An image of one texel is its own full chain; the library refuses it.
// - Blocks weigh the colour channels equally.
#pragma once

#include "platform/directxtex/scratch_image.hpp"

namespace DirectX {

enum TEX_FILTER_FLAGS : std::uint32_t {
    TEX_FILTER_DEFAULT = 0,
    TEX_FILTER_BOX = 0x400000,
    TEX_FILTER_SRGB_IN = 0x1000000,
    TEX_FILTER_SRGB_OUT = 0x2000000,
    TEX_FILTER_SRGB = TEX_FILTER_SRGB_IN | TEX_FILTER_SRGB_OUT,
};

enum TEX_COMPRESS_FLAGS : std::uint32_t {
    TEX_COMPRESS_DEFAULT = 0,
    TEX_COMPRESS_BC7_USE_3SUBSETS = 0x80000,
    TEX_COMPRESS_SRGB_IN = 0x1000000,
    TEX_COMPRESS_SRGB_OUT = 0x2000000,
    TEX_COMPRESS_SRGB = TEX_COMPRESS_SRGB_IN | TEX_COMPRESS_SRGB_OUT,
    TEX_COMPRESS_PARALLEL = 0x10000000,
};

enum DDS_FLAGS : std::uint32_t {
    DDS_FLAGS_NONE = 0,
    DDS_FLAGS_NO_LEGACY_EXPANSION = 0x2,
    DDS_FLAGS_FORCE_DX10_EXT = 0x10000,
};

constexpr TEX_FILTER_FLAGS operator|(TEX_FILTER_FLAGS a, TEX_FILTER_FLAGS b) {
    return static_cast<TEX_FILTER_FLAGS>(std::uint32_t{a} | std::uint32_t{b});
}
constexpr TEX_COMPRESS_FLAGS operator|(TEX_COMPRESS_FLAGS a, TEX_COMPRESS_FLAGS b) {
    return static_cast<TEX_COMPRESS_FLAGS>(std::uint32_t{a} | std::uint32_t{b});
}
constexpr TEX_COMPRESS_FLAGS& operator|=(TEX_COMPRESS_FLAGS& a, TEX_COMPRESS_FLAGS b) {
    return a = a | b;
}
constexpr DDS_FLAGS operator|(DDS_FLAGS a, DDS_FLAGS b) {
    return static_cast<DDS_FLAGS>(std::uint32_t{a} | std::uint32_t{b});
}

/// The base image and `levels` − 1 levels below it (0: all of them) by a box filter, in `chain`. With both sRGB flags,
/// or for an sRGB format, colours are averaged in linear light; alpha never is. Takes 8-bit RGBA and BGRA;
/// HRESULT_E_NOT_SUPPORTED for other formats, other filters, and one sRGB flag alone.
HRESULT GenerateMipMaps(Image const& base, TEX_FILTER_FLAGS filter, std::size_t levels, ScratchImage& chain) noexcept;

/// All levels of a texture as blocks of `format`, from 8-bit RGBA or BGRA (HRESULT_E_NOT_SUPPORTED for others). The
/// sRGB curve is applied when exactly one side is sRGB, by a flag or by its format, and never otherwise. Signed formats
/// take 0 … 1 as −1 … 1; BC6H takes it as it is. A BC1 texel is transparent when its alpha is below `threshold` (0 …
/// 1). With TEX_COMPRESS_PARALLEL as many threads as OpenMP offers work on it, else the calling one; the bytes are the
/// same.
HRESULT Compress(Image const* images, std::size_t image_count, TexMetadata const& metadata, DXGI_FORMAT format,
                 TEX_COMPRESS_FLAGS flags, float threshold, ScratchImage& compressed) noexcept;

/// Writes a DDS file, whole or not at all: with the DX10 extension when a flag asks for it or the format needs it.
HRESULT SaveToDDSFile(Image const* images, std::size_t image_count, TexMetadata const& metadata, DDS_FLAGS flags,
                      wchar_t const* path) noexcept;

}  // namespace DirectX
