#include "platform/directxtex/directxtex.hpp"

#ifndef _WIN32

namespace {

struct COM_STATE {
    std::uint32_t mode = COINIT_MULTITHREADED;
    std::uint32_t initialisations = 0;
};

thread_local COM_STATE com;

}  // namespace

HRESULT CoInitializeEx(void* reserved, std::uint32_t mode) noexcept {
    if (reserved != nullptr) {
        return E_INVALIDARG;
    }
    if (com.initialisations > 0 && com.mode != mode) {
        return com_mode_changed;
    }
    com.mode = mode;
    return com.initialisations++ == 0 ? S_OK : S_FALSE;
}

void CoUninitialize() noexcept {
    if (com.initialisations > 0) {
        --com.initialisations;
    }
}

HRESULT D3D11CreateDevice(IDXGIAdapter*, D3D_DRIVER_TYPE, void*, std::uint32_t, D3D_FEATURE_LEVEL const*, std::uint32_t,
                          std::uint32_t, ID3D11Device** device, D3D_FEATURE_LEVEL*,
                          ID3D11DeviceContext** context) noexcept {
    if (device != nullptr) {
        *device = nullptr;
    }
    if (context != nullptr) {
        *context = nullptr;
    }
    return DXGI_ERROR_UNSUPPORTED;
}

HRESULT DirectX::Compress(ID3D11Device*, Image const*, std::size_t, TexMetadata const&, DXGI_FORMAT, TEX_COMPRESS_FLAGS,
                          float, ScratchImage&) noexcept {
    return E_NOTIMPL;
}

#endif
