// Texel formats by the numbers of Direct3D 9's published D3DFORMAT enumeration: which of them each kind of atlas
// texture takes, how many bits their texels have, and how this project's image loader calls them.
#pragma once

#include "platform/image_loader/image_format.hpp"

#include <cstdint>

/// Any number may stand here; only those that something below asks for by name have one.
enum class D3D_FORMAT : std::uint32_t {
    unknown = 0,
    a8r8g8b8 = 21,
    /// Bytes red, green, blue, alpha: what every source is loaded as.
    a8b8g8r8 = 32,
    l8 = 50,
};

/// Four characters as the number of a format, "DXT1".
constexpr D3D_FORMAT four_cc_format(char const (&text)[5]) {
    std::uint32_t number = 0;
    for (int i = 3; i >= 0; --i)
        number = number << 8 | static_cast<unsigned char>(text[i]);
    return static_cast<D3D_FORMAT>(number);
}

/// Sources and two-dimensional pages take the same formats.
bool is_2d_format(D3D_FORMAT format);
bool is_cube_format(D3D_FORMAT format);
bool is_volume_format(D3D_FORMAT format);

/// "DXT1" to "DXT5": blocks of 4 × 4 texels.
bool is_dxt_format(D3D_FORMAT format);

/// What a texel takes when textures are copied into a page; 0 for formats that cannot be copied. Two formats are
/// counted with 8 bits although they have 16 (A8P8) or are packed (A4L4): textures of them are stored that way too.
std::uint32_t bits_per_texel(D3D_FORMAT format);

/// The same layout as the image loader knows it; TTF_UNKNOWN for layouts that it has no name for.
IMAGE_LOADER::TEXTURE_TEXEL_FORMAT texel_format_of(D3D_FORMAT format);
