#include "platform/directxtex/operations.hpp"

#include "blocks/encode.hpp"
#include "platform/checked_size.hpp"

#include <omp.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <optional>

namespace DirectX {

namespace {

/// What turns one of 256 values into another.
using CURVE = std::array<std::uint8_t, 256>;

std::optional<blocks::FORMAT> block_format(DXGI_FORMAT format) {
    switch (format) {
    case DXGI_FORMAT_BC1_UNORM:
    case DXGI_FORMAT_BC1_UNORM_SRGB:
        return blocks::FORMAT::bc1;
    case DXGI_FORMAT_BC2_UNORM:
    case DXGI_FORMAT_BC2_UNORM_SRGB:
        return blocks::FORMAT::bc2;
    case DXGI_FORMAT_BC3_UNORM:
    case DXGI_FORMAT_BC3_UNORM_SRGB:
        return blocks::FORMAT::bc3;
    case DXGI_FORMAT_BC4_UNORM:
        return blocks::FORMAT::bc4_unorm;
    case DXGI_FORMAT_BC4_SNORM:
        return blocks::FORMAT::bc4_snorm;
    case DXGI_FORMAT_BC5_UNORM:
        return blocks::FORMAT::bc5_unorm;
    case DXGI_FORMAT_BC5_SNORM:
        return blocks::FORMAT::bc5_snorm;
    case DXGI_FORMAT_BC6H_UF16:
        return blocks::FORMAT::bc6h_uf16;
    case DXGI_FORMAT_BC6H_SF16:
        return blocks::FORMAT::bc6h_sf16;
    case DXGI_FORMAT_BC7_UNORM:
    case DXGI_FORMAT_BC7_UNORM_SRGB:
        return blocks::FORMAT::bc7;
    default:
        return std::nullopt;
    }
}

bool is_srgb(DXGI_FORMAT format) {
    switch (format) {
    case DXGI_FORMAT_R8G8B8A8_UNORM_SRGB:
    case DXGI_FORMAT_B8G8R8A8_UNORM_SRGB:
    case DXGI_FORMAT_BC1_UNORM_SRGB:
    case DXGI_FORMAT_BC2_UNORM_SRGB:
    case DXGI_FORMAT_BC3_UNORM_SRGB:
    case DXGI_FORMAT_BC7_UNORM_SRGB:
        return true;
    default:
        return false;
    }
}

bool has_blue_first(DXGI_FORMAT format) {
    return format == DXGI_FORMAT_B8G8R8A8_UNORM || format == DXGI_FORMAT_B8G8R8A8_UNORM_SRGB;
}

bool is_source(DXGI_FORMAT format) {
    return has_blue_first(format) || format == DXGI_FORMAT_R8G8B8A8_UNORM || format == DXGI_FORMAT_R8G8B8A8_UNORM_SRGB;
}

/// The curve of IEC 61966-2-1, one way or the other.
double curved(double value, bool to_linear) {
    if (to_linear) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    }
    return value <= 0.0031308 ? value * 12.92 : 1.055 * std::pow(value, 1 / 2.4) - 0.055;
}

CURVE colour_curve(bool source_is_srgb, bool target_is_srgb) {
    CURVE curve = {};
    for (std::size_t i = 0; i < curve.size(); ++i) {
        double const value = static_cast<double>(i) / 255;
        double const converted = source_is_srgb == target_is_srgb ? value : curved(value, source_is_srgb);
        curve[i] = static_cast<std::uint8_t>(std::lround(converted * 255));
    }
    return curve;
}

/// The image's texels as the encoders take them: red first.
IMAGE_LOADER::IMAGE_BYTES encoder_texels(Image const& image, CURVE const& curve) {
    IMAGE_LOADER::IMAGE_BYTES texels(checked_size::memory_size(4u, image.width, image.height));
    std::size_t const red = has_blue_first(image.format) ? 2 : 0;
    std::uint8_t* out = texels.data();
    for (std::size_t y = 0; y < image.height; ++y) {
        std::uint8_t const* in = image.pixels + y * image.rowPitch;
        for (std::size_t x = 0; x < image.width; ++x, in += 4, out += 4) {
            out[0] = curve[in[red]];
            out[1] = curve[in[1]];
            out[2] = curve[in[2 - red]];
            out[3] = in[3];
        }
    }
    return texels;
}

}  // namespace

HRESULT Compress(Image const* images, std::size_t image_count, TexMetadata const& metadata, DXGI_FORMAT format,
                 TEX_COMPRESS_FLAGS flags, float threshold, ScratchImage& compressed) noexcept {
    std::optional<blocks::FORMAT> const block = block_format(format);
    if (images == nullptr || image_count != metadata.mipLevels || !block || !(threshold >= 0 && threshold <= 1)) {
        return E_INVALIDARG;
    }
    if (!is_source(metadata.format)) {
        return HRESULT_E_NOT_SUPPORTED;
    }
    HRESULT const made = compressed.Initialize2D(format, metadata.width, metadata.height, 1, image_count);
    if (FAILED(made)) {
        return made;
    }
    blocks::ENCODE_OPTIONS options;
    options.one_bit_alpha = *block == blocks::FORMAT::bc1;
    // The first value that is not below the threshold; 255 at most, so that a threshold of 1 leaves opaque texels.
    options.alpha_threshold = static_cast<std::uint8_t>(std::ceil(threshold * 255));
    int const threads = (flags & TEX_COMPRESS_PARALLEL) != 0 ? omp_get_max_threads() : 1;
    CURVE const curve = colour_curve((flags & TEX_COMPRESS_SRGB_IN) != 0 || is_srgb(metadata.format),
                                     (flags & TEX_COMPRESS_SRGB_OUT) != 0 || is_srgb(format));
    HRESULT result = S_OK;
    try {
        for (std::size_t level = 0; level < image_count && SUCCEEDED(result); ++level) {
            Image const& source = images[level];
            Image const& target = *compressed.GetImage(level, 0, 0);
            if (source.pixels == nullptr || source.format != metadata.format || source.width != target.width ||
                source.height != target.height) {
                result = E_INVALIDARG;
                break;
            }
            IMAGE_LOADER::IMAGE_BYTES const texels = encoder_texels(source, curve);
            blocks::RGBA8_VIEW const view = {texels.data(), static_cast<std::uint32_t>(source.width),
                                             static_cast<std::uint32_t>(source.height), 4 * source.width};
            if (!blocks::encode_image(*block, view, options, threads, {target.pixels, target.slicePitch})) {
                result = E_FAIL;
            }
        }
    } catch (std::bad_alloc const&) {
        result = E_OUTOFMEMORY;
    }
    if (FAILED(result)) {
        compressed.Release();
    }
    return result;
}

}  // namespace DirectX
