// FreeImage's bitmaps as values, and the one way in which this library's actions load and save them.
#pragma once

#include <QByteArray>

#include <FreeImage.h>

#include <memory>

struct FREEIMAGE_UNLOAD {
    void operator()(FIBITMAP* bitmap) const { FreeImage_Unload(bitmap); }
};
using FREEIMAGE_BITMAP = std::unique_ptr<FIBITMAP, FREEIMAGE_UNLOAD>;

/// Loads the file with default flags; null when it cannot be read or its sides are beyond the bounds of
/// `dds_container`. The header is looked at first where the format allows it: a few bytes must not ask for all memory.
FREEIMAGE_BITMAP load_freeimage_bitmap(FREE_IMAGE_FORMAT format, QByteArray const& path);

/// Writes the file with default flags, whole or not at all; false when it cannot be written or `bitmap` is null. The
/// file is coded in memory first: writing by itself, FreeImage does not notice a disk that is full.
bool save_freeimage_bitmap(FREE_IMAGE_FORMAT format, FIBITMAP* bitmap, QByteArray const& path);
