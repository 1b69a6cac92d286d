// The ATI back-end: a working image becomes a DDS file through the tool-data builder library's second compressor.
#pragma once

#include "dds/back_end_settings.hpp"
#include "dds/output_line_sink.hpp"
#include "platform/image_loader/image.hpp"
#include "processor/host/physical_path.hpp"

#include <vector>

/// Writes `target`, always with a full mip chain: settings without mip levels are refused before any file is touched.
/// `image` has four 8-bit channels, alpha last; levels of its own are kept, missing ones are made by a box filter (in
/// linear light with gamma correction, unless it is a normal map). Other mip filters are not to be had here, and levels
/// of normal maps are plain averages. `chain`, the one-bit-alpha levels of a single-level image, is what the other
/// back-end takes too; this one has no use for it, since the library makes all levels of such an image itself. False
/// after one line that says why.
bool compress_with_ati(OUTPUT_LINE_SINK& sink, PHYSICAL_PATH const& target, BACK_END_SETTINGS const& settings,
                       IMAGE_LOADER::IMAGE const& image, std::vector<IMAGE_LOADER::IMAGE> const& chain);
