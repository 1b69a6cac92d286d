// Result codes of Windows' libraries, with the names and values that their documentation gives, for the part of the
// DirectXTex interface that stands in this folder. Names are those that callers of the real library write, so house
// style does not apply to them.
#pragma once

#include <cstdint>

/// Negative means failure; 0 and above mean some kind of success.
using HRESULT = std::int32_t;

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000E);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057);
inline constexpr HRESULT DXGI_ERROR_UNSUPPORTED = static_cast<HRESULT>(0x887A0004);
/// HRESULT_FROM_WIN32(ERROR_NOT_SUPPORTED)
inline constexpr HRESULT HRESULT_E_NOT_SUPPORTED = static_cast<HRESULT>(0x80070032);

constexpr bool SUCCEEDED(HRESULT result) {
    return result >= 0;
}
constexpr bool FAILED(HRESULT result) {
    return result < 0;
}
