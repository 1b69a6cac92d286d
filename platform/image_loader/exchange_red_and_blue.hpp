// The one difference between the byte orders of texels: compilers make vector code of this form, and not of three
// assignments.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace IMAGE_LOADER {

/// Copies texels of four bytes with their first and third exchanged. `to` may be `from`.
inline void exchange_red_and_blue(std::uint8_t const* from, std::uint8_t* to, std::size_t texels) {
    constexpr std::uint32_t green_and_alpha = std::endian::native == std::endian::little ? 0xff00ff00U : 0x00ff00ffU;
    for (std::size_t at = 0; at < 4 * texels; at += 4) {
        std::uint32_t texel = 0;
        std::memcpy(&texel, from + at, 4);
        texel = (texel & green_and_alpha) | std::rotl(texel & ~green_and_alpha, 16);
        std::memcpy(to + at, &texel, 4);
    }
}

}  // namespace IMAGE_LOADER
