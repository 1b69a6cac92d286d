#include "dds/freeimage_bitmap.hpp"

#include "platform/dds_container/dds_container.hpp"
#include "platform/image_loader/quiet_tiff.hpp"
#include "platform/qe/replace_file.hpp"

#include <algorithm>
#include <cstdint>
#include <string>

namespace {

bool has_acceptable_sides(FIBITMAP* bitmap) {
    std::uint64_t const width = FreeImage_GetWidth(bitmap);
    std::uint64_t const height = FreeImage_GetHeight(bitmap);
    return std::max(width, height) <= dds_container::largest_side &&
           width * height <= dds_container::most_texels_per_surface;
}

}  // namespace

FREEIMAGE_BITMAP load_freeimage_bitmap(FREE_IMAGE_FORMAT format, QByteArray const& path) {
    if (format == FIF_TIFF)
        IMAGE_LOADER::keep_tiff_quiet();
    if (FreeImage_FIFSupportsNoPixels(format)) {
        FREEIMAGE_BITMAP const header(FreeImage_Load(format, path.constData(), FIF_LOAD_NOPIXELS));
        if (!header || !has_acceptable_sides(header.get()))
            return nullptr;
    }
    return FREEIMAGE_BITMAP(FreeImage_Load(format, path.constData(), 0));
}

bool save_freeimage_bitmap(FREE_IMAGE_FORMAT format, FIBITMAP* bitmap, QByteArray const& path) {
    struct CLOSE_MEMORY {
        void operator()(FIMEMORY* memory) const { FreeImage_CloseMemory(memory); }
    };
    std::unique_ptr<FIMEMORY, CLOSE_MEMORY> const memory(FreeImage_OpenMemory());
    if (bitmap == nullptr || !memory || !FreeImage_SaveToMemory(format, bitmap, memory.get(), 0))
        return false;
    BYTE* bytes = nullptr;
    DWORD count = 0;
    std::string cause;
    return FreeImage_AcquireMemory(memory.get(), &bytes, &count) &&
           QE::replace_file(path.toStdString(), {bytes, count}, cause);
}
