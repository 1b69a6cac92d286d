// Fields of a TIF file that FreeImage does not hand on: without the first two, two samples of 16 bits cannot be told
// from one of 32; the third bounds what the file can hold.
#pragma once

#include <cstdint>
#include <span>

namespace IMAGE_LOADER {

struct TIF_LAYOUT {
    std::uint32_t samples_per_texel = 1;
    std::uint32_t bits_per_sample = 1;
    std::uint32_t compression = 1;  ///< the file's number, 1 for none
};

/// Reads the fields of the first picture, as the TIFF 6.0 format lays them down. Damaged files give what could be read;
/// the defaults are the format's own.
TIF_LAYOUT read_tif_layout(std::span<std::uint8_t const> file);

}  // namespace IMAGE_LOADER
