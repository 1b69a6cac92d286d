// The image class of the DirectXTex interface, as far as it is called: one two-dimensional texture with its mip levels
// in one piece of memory. Published names and meanings; house style does not apply to them.
#pragma once

#include "platform/directxtex/hresult.hpp"
#include "platform/image_loader/image_memory.hpp"

#include <cstddef>
#include <cstdint>
#include <vector>

/// The published numbers; those without a name here may be cast to it.
enum DXGI_FORMAT : std::uint32_t {
    DXGI_FORMAT_UNKNOWN = 0,
    DXGI_FORMAT_R8G8B8A8_UNORM = 28,
    DXGI_FORMAT_R8G8B8A8_UNORM_SRGB = 29,
    DXGI_FORMAT_BC1_UNORM = 71,
    DXGI_FORMAT_BC1_UNORM_SRGB = 72,
    DXGI_FORMAT_BC2_UNORM = 74,
    DXGI_FORMAT_BC2_UNORM_SRGB = 75,
    DXGI_FORMAT_BC3_UNORM = 77,
    DXGI_FORMAT_BC3_UNORM_SRGB = 78,
    DXGI_FORMAT_BC4_UNORM = 80,
    DXGI_FORMAT_BC4_SNORM = 81,
    DXGI_FORMAT_BC5_UNORM = 83,
    DXGI_FORMAT_BC5_SNORM = 84,
    DXGI_FORMAT_B8G8R8A8_UNORM = 87,
    DXGI_FORMAT_B8G8R8A8_UNORM_SRGB = 91,
    DXGI_FORMAT_BC6H_UF16 = 95,
    DXGI_FORMAT_BC6H_SF16 = 96,
    DXGI_FORMAT_BC7_UNORM = 98,
    DXGI_FORMAT_BC7_UNORM_SRGB = 99,
};

namespace DirectX {

enum TEX_DIMENSION : std::uint32_t {
    TEX_DIMENSION_TEXTURE1D = 2,
    TEX_DIMENSION_TEXTURE2D = 3,
    TEX_DIMENSION_TEXTURE3D = 4,
};

struct TexMetadata {
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t depth = 0;
    std::size_t arraySize = 0;
    std::size_t mipLevels = 0;
    std::uint32_t miscFlags = 0;
    std::uint32_t miscFlags2 = 0;
    DXGI_FORMAT format = DXGI_FORMAT_UNKNOWN;
    TEX_DIMENSION dimension = TEX_DIMENSION_TEXTURE2D;
};

/// A view of one level: rows of texels, or of blocks, `rowPitch` bytes apart; `slicePitch` bytes in all.
struct Image {
    std::size_t width = 0;
    std::size_t height = 0;
    DXGI_FORMAT format = DXGI_FORMAT_UNKNOWN;
    std::size_t rowPitch = 0;
    std::size_t slicePitch = 0;
    std::uint8_t* pixels = nullptr;
};

/// Owns its texels.
class ScratchImage {
public:
    ScratchImage() = default;
    ScratchImage(ScratchImage&&) = default;
    ScratchImage& operator=(ScratchImage&&) = default;

    /// Texels of 0. With `mip_levels` 0 the whole chain down to 1 × 1. E_INVALIDARG for a format that is unknown, sides
    /// of 0 or beyond the bounds of `dds_container`, more levels than the sides have, or an array of other than one
    /// element; E_OUTOFMEMORY. The image is empty after a failure.
    HRESULT Initialize2D(DXGI_FORMAT format, std::size_t width, std::size_t height, std::size_t array_size,
                         std::size_t mip_levels) noexcept;
    void Release() noexcept;

    TexMetadata const& GetMetadata() const noexcept { return metadata_; }
    /// Null for what the image does not have.
    Image const* GetImage(std::size_t mip, std::size_t item, std::size_t slice) const noexcept;
    Image const* GetImages() const noexcept { return images_.data(); }
    std::size_t GetImageCount() const noexcept { return images_.size(); }
    std::uint8_t* GetPixels() const noexcept { return images_.empty() ? nullptr : images_.front().pixels; }
    std::size_t GetPixelsSize() const noexcept { return memory_.size(); }

private:
    TexMetadata metadata_;
    std::vector<Image> images_;
    IMAGE_LOADER::IMAGE_BYTES memory_;
};

}  // namespace DirectX
