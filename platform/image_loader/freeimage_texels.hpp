// The texels of any of FreeImage's bitmaps as eight bits in four channels, and what kind they are in words.
#pragma once

#include "platform/image_loader/load_with_freeimage.hpp"

#include <FreeImage.h>

#include <string>

namespace IMAGE_LOADER {

/// Sixteen bits are rounded to eight, floats are clamped to 0…1, palettes and grey are widened; alpha is 255 where
/// there is none. False for types that hold no colours. Throws std::bad_alloc.
bool take_texels(FIBITMAP* bitmap, CHANNEL_ORDER order, DECODED_FILE& decoded);

/// "8-bit grey", "48-bit RGB". `format` is the file's.
std::string texels_text(FIBITMAP* bitmap, FREE_IMAGE_FORMAT format);

bool type_has_alpha(FIBITMAP* bitmap, FREE_IMAGE_FORMAT format);

}  // namespace IMAGE_LOADER
