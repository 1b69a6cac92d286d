#include "dds/freeimage_bitmap.hpp"

#include "platform/checked_size.hpp"
#include "platform/image_loader/coded_file_bounds.hpp"
#include "platform/image_loader/load_image_file.hpp"
#include "platform/image_loader/quiet_tiff.hpp"
#include "platform/qe/replace_file.hpp"

#include <filesystem>
#include <string>
#include <system_error>

namespace {

/// Whether memory may be taken for what the header announces: the sides are within the bounds, and a file of this
/// length can hold the texels, as far as its kind lets that be known.
bool is_acceptable(FIBITMAP* header, FREE_IMAGE_FORMAT format, QByteArray const& path) {
    std::uint32_t const width = FreeImage_GetWidth(header);
    std::uint32_t const height = FreeImage_GetHeight(header);
    if (!checked_size::is_within_bounds(width, height))
        return false;
    using IMAGE_LOADER::IMAGE_FORMAT;
    IMAGE_FORMAT const kind = format == FIF_PNG    ? IMAGE_FORMAT::png
                              : format == FIF_JPEG ? IMAGE_FORMAT::jpg
                              : format == FIF_TIFF ? IMAGE_FORMAT::tif
                                                   : IMAGE_FORMAT::unknown;
    std::string cause;
    if (kind != IMAGE_FORMAT::unknown) {
        auto const file = IMAGE_LOADER::read_whole_file(path.toStdString(), cause);
        return file && IMAGE_LOADER::can_hold_texels(*file, kind, width, height);
    }
    // Two bytes of a run-length coded TGA make 128 texels at most.
    std::error_code error;
    return format != FIF_TARGA || checked_size::saturating_product(width, height) / 64 <=
                                      std::filesystem::file_size(path.toStdString(), error);
}

}  // namespace

FREEIMAGE_BITMAP load_freeimage_bitmap(FREE_IMAGE_FORMAT format, QByteArray const& path) {
    if (format == FIF_TIFF)
        IMAGE_LOADER::keep_tiff_quiet();
    if (FreeImage_FIFSupportsNoPixels(format)) {
        FREEIMAGE_BITMAP const header(FreeImage_Load(format, path.constData(), FIF_LOAD_NOPIXELS));
        if (!header || !is_acceptable(header.get(), format, path))
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
