// The calls into Windows that belong to compressing on a graphics card: COM is initialised for a thread, and a Direct3D
// 11 device is asked for. On Windows they are Windows' own. Elsewhere COM is a count and there never is a device, which
// callers have to expect on Windows too. Published names, values and meanings; house style does not apply to them.
// Included through directxtex.hpp, which brings HRESULT and the image types along.
#pragma once

#ifdef _WIN32
#include <d3d11.h>
#include <objbase.h>
#else

#include <cstddef>
#include <cstdint>

enum COINIT : std::uint32_t {
    COINIT_MULTITHREADED = 0,
    COINIT_APARTMENTTHREADED = 2,
};

/// RPC_E_CHANGED_MODE: the thread is already initialised, in the other mode.
inline constexpr HRESULT com_mode_changed = static_cast<HRESULT>(0x80010106);

/// S_OK for a thread's first initialisation, S_FALSE for further ones in the same mode; each success wants its
/// CoUninitialize. `reserved` must be null.
HRESULT CoInitializeEx(void* reserved, std::uint32_t mode) noexcept;
void CoUninitialize() noexcept;

enum D3D_DRIVER_TYPE : std::uint32_t { D3D_DRIVER_TYPE_HARDWARE = 1 };
enum D3D_FEATURE_LEVEL : std::uint32_t { D3D_FEATURE_LEVEL_11_0 = 0xb000 };
inline constexpr std::uint32_t D3D11_SDK_VERSION = 7;

struct IDXGIAdapter;
struct ID3D11DeviceContext;

/// A reference-counted device. There is none outside of Windows; the type is here so that callers can hold one.
class ID3D11Device {
public:
    virtual std::uint32_t Release() = 0;

protected:
    ~ID3D11Device() = default;
};

/// DXGI_ERROR_UNSUPPORTED, and null for whatever it was asked to make.
HRESULT D3D11CreateDevice(IDXGIAdapter* adapter, D3D_DRIVER_TYPE driver, void* software, std::uint32_t flags,
                          D3D_FEATURE_LEVEL const* levels, std::uint32_t level_count, std::uint32_t sdk_version,
                          ID3D11Device** device, D3D_FEATURE_LEVEL* chosen_level,
                          ID3D11DeviceContext** context) noexcept;

namespace DirectX {

/// The form that compresses on a device: E_NOTIMPL, as there is none.
HRESULT Compress(ID3D11Device* device, Image const* images, std::size_t image_count, TexMetadata const& metadata,
                 DXGI_FORMAT format, TEX_COMPRESS_FLAGS flags, float alpha_weight, ScratchImage& compressed) noexcept;

}  // namespace DirectX

#endif
