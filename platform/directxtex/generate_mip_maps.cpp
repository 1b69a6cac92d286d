#include "platform/directxtex/operations.hpp"

#include "platform/tool_data_builder/mip_chain.hpp"

#include <algorithm>
#include <cstring>
#include <new>

namespace DirectX {

namespace {

bool takes(DXGI_FORMAT format, TEX_FILTER_FLAGS filter) {
    bool const is_format = format == DXGI_FORMAT_R8G8B8A8_UNORM || format == DXGI_FORMAT_R8G8B8A8_UNORM_SRGB ||
                           format == DXGI_FORMAT_B8G8R8A8_UNORM || format == DXGI_FORMAT_B8G8R8A8_UNORM_SRGB;
    return is_format && (filter == TEX_FILTER_BOX || filter == (TEX_FILTER_BOX | TEX_FILTER_SRGB));
}

bool is_srgb(DXGI_FORMAT format) {
    return format == DXGI_FORMAT_R8G8B8A8_UNORM_SRGB || format == DXGI_FORMAT_B8G8R8A8_UNORM_SRGB;
}

}  // namespace

HRESULT GenerateMipMaps(Image const& base, TEX_FILTER_FLAGS filter, std::size_t levels, ScratchImage& chain) noexcept {
    if (base.pixels == nullptr) {
        return E_INVALIDARG;
    }
    if (!takes(base.format, filter)) {
        return HRESULT_E_NOT_SUPPORTED;
    }
    HRESULT const made = chain.Initialize2D(base.format, base.width, base.height, 1, levels);
    if (FAILED(made)) {
        return made;
    }
    Image const& top = *chain.GetImage(0, 0, 0);
    for (std::size_t y = 0; y < top.height; ++y) {
        std::memcpy(top.pixels + y * top.rowPitch, base.pixels + y * base.rowPitch, top.rowPitch);
    }
    bool const in_linear_light = filter != TEX_FILTER_BOX || is_srgb(base.format);
    using TOOLDATABUILDER::MIP_FILTER;
    try {
        auto const lower = TOOLDATABUILDER::make_lower_mips(
            {top.pixels, static_cast<std::uint32_t>(top.width), static_cast<std::uint32_t>(top.height), top.rowPitch},
            in_linear_light ? MIP_FILTER::box_srgb : MIP_FILTER::box);
        for (std::size_t level = 1; level < chain.GetImageCount(); ++level) {
            std::copy(lower[level - 1].texels.begin(), lower[level - 1].texels.end(),
                      chain.GetImage(level, 0, 0)->pixels);
        }
    } catch (std::bad_alloc const&) {
        chain.Release();
        return E_OUTOFMEMORY;
    }
    return S_OK;
}

}  // namespace DirectX
