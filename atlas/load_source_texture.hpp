// Sources of an atlas as the builder takes them: whatever the file holds, four 8-bit channels in the order red, green,
// blue, alpha, sides that are powers of two, and mip levels.
#pragma once

#include "atlas/pixel_buffer.hpp"

#include <cstdint>
#include <filesystem>
#include <string>
#include <variant>

enum class LOAD_FAILURE : std::uint8_t {
    cannot_load,         ///< the file is not there, is no image, is broken, or is larger than a device takes
    unsupported_format,  ///< it holds a cube map, a volume or an array
};

/// Loads a TGA, PNG, JPG, TIF or DDS file. Each side that is no power of two is resampled to the next one above. Of a
/// DDS the top level counts. With `all_levels` the texture has its full chain, averaged by a box filter, else one
/// level. `cause` says why there is none. Throws std::bad_alloc.
std::variant<PIXEL_BUFFER, LOAD_FAILURE> load_source_texture(std::filesystem::path const& path, bool all_levels,
                                                             std::string& cause);
