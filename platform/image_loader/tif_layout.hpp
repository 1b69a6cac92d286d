// Fields of a TIF file that FreeImage does not hand on, and that tell how its texels have to be read and what the file
// can hold.
#pragma once

#include "platform/image_loader/tif_directory.hpp"

#include <cstdint>
#include <span>

namespace IMAGE_LOADER {

struct TIF_LAYOUT {
    std::uint32_t samples_per_texel = 1;
    std::uint32_t bits_per_sample = 1;
    std::uint32_t compression = 1;  ///< the file's number, 1 for none
    std::uint32_t photometric = 0;  ///< 0 grey with white as 0, 1 grey, 3 palette; higher numbers are colours
    std::uint32_t predictor = 1;    ///< 2 where each row holds differences to the texel before
    std::uint32_t planes = 1;       ///< 2 where the channels lie apart
    std::uint32_t tile_width = 0;   ///< 0 where rows are not cut into tiles

    bool is_grey_or_palette() const { return photometric <= 1 || photometric == 3; }
};

/// Reads the fields of the first picture. Damaged files give what could be read; the defaults are the format's own.
TIF_LAYOUT read_tif_layout(TIF_DIRECTORY const& directory);
TIF_LAYOUT read_tif_layout(std::span<std::uint8_t const> file);

/// Whether the strips or tiles lie within the file, as far as their places are told; of texels that are not
/// compressed, whether they are as many as announced.
bool tif_is_whole(std::span<std::uint8_t const> file);

}  // namespace IMAGE_LOADER
