// From any texel format to eight bits in four channels: swizzling, widening, and block decoding.
#pragma once

#include "platform/image_loader/image.hpp"

#include <cstdint>
#include <span>
#include <string>

namespace IMAGE_LOADER {

/// Converts one level of `source` into one level of `destination`, which is of the same size and of TTF_B8G8R8A8 or
/// TTF_R8G8B8A8 (or their sRGB sisters; sRGB texels are copied as they are, no curve is applied). Channels that a
/// format lacks become 0, alpha 255; luminance fills all three colours. Floats are clamped to 0…1; signed values −1…1
/// become 0…255. False when the sizes or formats do not fit or the blocks cannot be decoded; `cause` then says why.
bool convert(IMAGE const& source, std::uint32_t source_level, IMAGE& destination, std::uint32_t destination_level,
             std::string& cause);

/// The same for bare memory: `bytes` hold a surface of the format with rows `row_pitch` bytes apart; `rgba` takes
/// width × height × 4 bytes, tightly, in the order red, green, blue, alpha.
bool decode_surface(TEXEL_FORMAT_INFO const& format, std::span<std::uint8_t const> bytes, std::uint64_t row_pitch,
                    std::uint32_t width, std::uint32_t height, std::span<std::uint8_t> rgba, std::string& cause);

}  // namespace IMAGE_LOADER
