// The one way in which this library's actions load and save images through FreeImage.
#pragma once

#include "dds/output_line_sink.hpp"
#include "platform/image_loader/freeimage_bitmap.hpp"

#include <QString>

using IMAGE_LOADER::FREEIMAGE_BITMAP;

/// Loads the file with default flags; null when it cannot be read, is cut short or has sides beyond the bounds for
/// images. FreeImage says no more than once what it has to say of one file.
FREEIMAGE_BITMAP load_freeimage_bitmap(FREE_IMAGE_FORMAT format, QString const& path);

/// Writes the file with default flags, whole or not at all; false when it cannot be written or `bitmap` is null. Texels
/// that FreeImage cannot write to such a file are narrowed to eight bits a channel; transparency is never dropped.
/// FreeImage tells why it cannot write a file by a message; where it is not asked, the line that stands for it goes to
/// `sink`. Throws std::bad_alloc.
bool save_freeimage_bitmap(OUTPUT_LINE_SINK& sink, FREE_IMAGE_FORMAT format, FIBITMAP* bitmap, QString const& path);
