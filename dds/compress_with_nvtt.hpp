// The nvidia back-end: a working image becomes a DDS file through NVIDIA Texture Tools, mip chain included.
#pragma once

#include "dds/back_end_settings.hpp"
#include "dds/output_line_sink.hpp"
#include "platform/image_loader/image.hpp"
#include "processor/host/physical_path.hpp"

#include <vector>

/// Writes `target`. `image` has four 8-bit channels, alpha last, and may have mip levels of its own; `chain` holds
/// ready levels below its top, or nothing. The written file is held against its own header. False after the library's
/// errors went to the sink, one line each; a file may then be left behind. The library is used on the calling thread
/// and nothing is shared between calls.
bool compress_with_nvtt(OUTPUT_LINE_SINK& sink, PHYSICAL_PATH const& target, BACK_END_SETTINGS const& settings,
                        IMAGE_LOADER::IMAGE const& image, std::vector<IMAGE_LOADER::IMAGE> const& chain);
