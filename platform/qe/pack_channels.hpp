// One image from single channels of several TGA files. A file is let go as soon as its channels are taken over, and one
// that gives several channels is read once: whatever the number of sources, memory holds the result, one source, and no
// more.
#pragma once

#include "platform/qe/image32.hpp"
#include "platform/qe/string.hpp"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace QE {

/// The bytes of a texel of an IMAGE32.
enum class TEXEL_BYTE : std::uint8_t { blue = 0, green = 1, red = 2, alpha = 3 };

struct CHANNEL_SOURCE {
    String path;      ///< local 8-bit encoding; empty for a channel without a source
    TEXEL_BYTE from;  ///< which byte of the source's texels is taken
    TEXEL_BYTE to;    ///< and which one of the result's it becomes

    // What was found.
    bool is_present = false;  ///< false when there is no path, or its file cannot be opened or read
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::string cause;  ///< why the file is not present, for people
};

/// Every byte that no present source gives is 0, but alpha is `alpha`. Nothing when the present sources have not all
/// the same size, or no texels, or there is none. All sources are looked at in any case. Throws std::bad_alloc.
std::optional<IMAGE32> pack_channels(std::span<CHANNEL_SOURCE> sources, std::uint8_t alpha);

}  // namespace QE
