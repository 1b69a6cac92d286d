// Whether a TGA file ends before its texels do. FreeImage calls such a file loaded, with texels that differ from run to
// run.
#pragma once

#include <cstdint>
#include <span>

namespace IMAGE_LOADER {

/// Also false where the last run of a run-length coded file goes on behind the last texel: FreeImage leaves that run
/// out, or writes behind the memory of the image.
bool tga_is_whole(std::span<std::uint8_t const> file);

}  // namespace IMAGE_LOADER
