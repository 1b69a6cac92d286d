#include "dds/compress_with_d3d.hpp"

#include "dds/gamma_curve.hpp"
#include "platform/directxtex/directxtex.hpp"

#include <cmath>
#include <cstring>
#include <memory>
#include <string>

namespace {

using IMAGE_LOADER::IMAGE;

constexpr float alpha_threshold_or_weight = 0.5F;

struct DEVICE_RELEASE {
    void operator()(ID3D11Device* device) const { device->Release(); }
};
using DEVICE = std::unique_ptr<ID3D11Device, DEVICE_RELEASE>;

/// The library's number for a texel layout. Red-first texels of 8 bits have none, on purpose.
DXGI_FORMAT dxgi_format_of(IMAGE_LOADER::TEXTURE_TEXEL_FORMAT format) {
    using IMAGE_LOADER::TEXEL_KIND;
    IMAGE_LOADER::TEXEL_FORMAT_INFO const& info = IMAGE_LOADER::texel_format_info(format);
    bool const is_listed = format == IMAGE_LOADER::TTF_B8G8R8A8 || info.kind == TEXEL_KIND::block ||
                           info.kind == TEXEL_KIND::half || info.kind == TEXEL_KIND::single;
    return is_listed ? static_cast<DXGI_FORMAT>(info.dxgi) : DXGI_FORMAT_UNKNOWN;
}

void copy_top_level(IMAGE const& image, DirectX::Image const& target) {
    std::size_t const row_bytes = IMAGE_LOADER::tight_row_pitch(image.texel_format(), image.width());
    std::size_t const row_pitch = image.get_image_info().surfaces.front().row_pitch;
    std::uint8_t const* row = image.level(0).data();
    for (std::uint32_t y = 0; y < IMAGE_LOADER::surface_rows(image.texel_format(), image.height()); ++y) {
        std::memcpy(target.pixels + y * target.rowPitch, row + y * row_pitch, row_bytes);
    }
}

/// Four 8-bit channels, alpha last.
void make_linear(DirectX::Image const& image) {
    GAMMA_CURVE const& curve = GAMMA_CURVE::standard();
    for (std::size_t y = 0; y < image.height; ++y) {
        std::uint8_t* const row = image.pixels + y * image.rowPitch;
        for (std::size_t at = 0; at < 4 * image.width; ++at) {
            if (at % 4 != 3)
                row[at] = static_cast<std::uint8_t>(std::lround(255.0F * curve.to_linear(row[at])));
        }
    }
}

/// Only these two gain from a device; the others are fast enough without.
bool wants_device(DXGI_CHOICE format) {
    return format == DXGI_CHOICE::bc6h_uf16 || format == DXGI_CHOICE::bc6h_sf16 || format == DXGI_CHOICE::bc7_unorm ||
           format == DXGI_CHOICE::bc7_unorm_srgb;
}

/// Null where there is none.
DEVICE make_device() {
    D3D_FEATURE_LEVEL const level = D3D_FEATURE_LEVEL_11_0;
    ID3D11Device* device = nullptr;
    HRESULT const made = D3D11CreateDevice(nullptr, D3D_DRIVER_TYPE_HARDWARE, nullptr, 0, &level, 1, D3D11_SDK_VERSION,
                                           &device, nullptr, nullptr);
    return DEVICE(FAILED(made) ? nullptr : device);
}

HRESULT compress(DirectX::ScratchImage const& chain, DXGI_CHOICE format, bool need_gamma_correction,
                 DirectX::ScratchImage& compressed) {
    using namespace DirectX;
    TEX_COMPRESS_FLAGS flags = TEX_COMPRESS_PARALLEL | TEX_COMPRESS_BC7_USE_3SUBSETS;
    if (need_gamma_correction)
        flags |= TEX_COMPRESS_SRGB;
    auto const target_format = static_cast<DXGI_FORMAT>(format);
    DEVICE const device = wants_device(format) ? make_device() : nullptr;
    if (device)
        return Compress(device.get(), chain.GetImages(), chain.GetImageCount(), chain.GetMetadata(), target_format,
                        flags, alpha_threshold_or_weight, compressed);
    return Compress(chain.GetImages(), chain.GetImageCount(), chain.GetMetadata(), target_format, flags,
                    alpha_threshold_or_weight, compressed);
}

/// Everything between the two calls to COM; the line that says why it failed, or null.
char const* write_compressed(PHYSICAL_PATH const& target, DXGI_CHOICE format, IMAGE const& image,
                             bool need_gamma_correction, bool convert_colour_space) {
    using namespace DirectX;
    ScratchImage base;
    if (FAILED(base.Initialize2D(dxgi_format_of(image.texel_format()), image.width(), image.height(), 1, 1)))
        return "Couldn't create texture";
    copy_top_level(image, *base.GetImage(0, 0, 0));
    if (convert_colour_space)
        make_linear(*base.GetImage(0, 0, 0));

    ScratchImage chain;
    TEX_FILTER_FLAGS const filter = need_gamma_correction ? TEX_FILTER_BOX | TEX_FILTER_SRGB : TEX_FILTER_BOX;
    if (FAILED(GenerateMipMaps(*base.GetImage(0, 0, 0), filter, 0, chain)))
        return "Couldn't generate mipmaps";
    base.Release();

    ScratchImage compressed;
    if (FAILED(compress(chain, format, need_gamma_correction, compressed)))
        return "Couldn't compress";

    std::wstring const path = target.text().toStdWString();
    if (FAILED(SaveToDDSFile(compressed.GetImages(), compressed.GetImageCount(), compressed.GetMetadata(),
                             DDS_FLAGS_FORCE_DX10_EXT | DDS_FLAGS_NO_LEGACY_EXPANSION, path.c_str())))
        return "Couldn't save file";
    return nullptr;
}

}  // namespace

bool compress_with_d3d(OUTPUT_LINE_SINK& sink, PHYSICAL_PATH const& target, DXGI_CHOICE format, IMAGE const& image,
                       bool need_gamma_correction, bool convert_colour_space) {
    if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {
        sink.add_output_line(QStringLiteral("Couldn't initialize COM"));
        return false;
    }
    if (char const* const failure =
            write_compressed(target, format, image, need_gamma_correction, convert_colour_space)) {
        // Deliberate: after a failure the thread stays initialised.
        sink.add_output_line(QLatin1String(failure));
        return false;
    }
    CoUninitialize();
    return true;
}
