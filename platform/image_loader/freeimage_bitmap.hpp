// FreeImage's bitmaps as values, and the one way in which files become bitmaps: what a file announces is held against
// what it holds before FreeImage sees it, and what FreeImage reads wrongly is put right.
#pragma once

#include <FreeImage.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace IMAGE_LOADER {

struct UNLOAD_BITMAP {
    void operator()(FIBITMAP* bitmap) const { FreeImage_Unload(bitmap); }
};
using FREEIMAGE_BITMAP = std::unique_ptr<FIBITMAP, UNLOAD_BITMAP>;

/// Null, and `cause` says why, when the file is damaged, ends within its texels, or has sides beyond the bounds for
/// images: a few bytes must not ask for all memory. `flags` are FreeImage's.
FREEIMAGE_BITMAP load_freeimage_bitmap(std::span<std::uint8_t const> file, FREE_IMAGE_FORMAT format, int flags,
                                       std::string& cause);

/// What can be known without decoding texels.
struct FREEIMAGE_HEADER {
    FREEIMAGE_BITMAP bitmap;  ///< has no texels
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    /// Bits of grey, and of alpha, in files of these two, which the bitmap does not show; else 0.
    std::uint32_t grey_and_alpha_bits = 0;
};
/// `bitmap` is null, and `cause` says why, when the header cannot be read.
FREEIMAGE_HEADER read_freeimage_header(std::span<std::uint8_t const> file, FREE_IMAGE_FORMAT format,
                                       std::string& cause);

}  // namespace IMAGE_LOADER
