// The one way from a loaded image to a DDS file. Every texture of this library goes through it, whichever action made
// its image: smaller if asked, four 8-bit channels, alpha and channel steps, a concrete format, a back-end.
#pragma once

#include "dds/output_line_sink.hpp"
#include "dds/texture_rules.hpp"
#include "platform/image_loader/image.hpp"
#include "processor/host/physical_path.hpp"

/// Writes `target`. `source` is used up: it may be smaller afterwards. `is_png` tells that the source file's name ends
/// with ".png": its working copy then keeps the byte order red, green, blue, alpha, where every other source has blue,
/// green, red, alpha, and no later step makes a difference between the two. False after a line that says why; a file
/// may then be left behind. Throws std::bad_alloc.
bool compress_image(OUTPUT_LINE_SINK& sink, TEXTURE_RULES const& rules, bool is_png, IMAGE_LOADER::IMAGE& source,
                    PHYSICAL_PATH const& target);
