// What PNG, JPG and TIF files can hold at most, found from their bytes before the decoder takes memory for what their
// headers announce: a file of a hundred bytes must not cost a gigabyte.
#pragma once

#include "platform/image_loader/image_format.hpp"

#include <cstdint>
#include <span>

namespace IMAGE_LOADER {

/// Whether a file of this length can hold so many texels, by the tightest coding that its kind allows. Codings without
/// a useful bound (fax codings and a few newer ones in TIF, arithmetic coding in JPG) can hold anything.
bool can_hold_texels(std::span<std::uint8_t const> file, IMAGE_FORMAT format, std::uint32_t width,
                     std::uint32_t height);

/// Whether the texels of a JPG go on to its end mark. The decoder fills what is missing with grey and calls it a
/// warning.
bool jpg_is_whole(std::span<std::uint8_t const> file);

}  // namespace IMAGE_LOADER
