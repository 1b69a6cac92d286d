#include "dds/freeimage_bitmap.hpp"

#include "platform/checked_size.hpp"
#include "platform/image_loader/coded_file_bounds.hpp"
#include "platform/image_loader/load_image_file.hpp"
#include "platform/image_loader/quiet_tiff.hpp"
#include "platform/qe/file_in.hpp"
#include "platform/qe/replace_file.hpp"

#include <QtEndian>

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

namespace {

struct SIDES {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

/// The library has no way to read the header of a DDS alone. Nothing when the file ends within it.
std::optional<SIDES> sides_of_dds(std::string const& path) {
    std::array<std::uint8_t, 20> start = {};
    QE::FileIn file{QE::String(path)};
    if (!file.is_open() || file.size() < start.size() || !file.read(start))
        return std::nullopt;
    auto const number = [&](std::size_t offset) {
        return qFromLittleEndian<std::uint32_t>(start.data() + offset);
    };
    return SIDES{number(16), number(12)};
}

/// Whether a file of this length can hold the texels, as far as its kind lets that be known.
bool can_hold_texels(FREE_IMAGE_FORMAT format, std::string const& path, SIDES const& sides) {
    using IMAGE_LOADER::IMAGE_FORMAT;
    IMAGE_FORMAT const kind = format == FIF_PNG    ? IMAGE_FORMAT::png
                              : format == FIF_JPEG ? IMAGE_FORMAT::jpg
                              : format == FIF_TIFF ? IMAGE_FORMAT::tif
                                                   : IMAGE_FORMAT::unknown;
    if (kind != IMAGE_FORMAT::unknown) {
        std::string cause;
        auto const file = IMAGE_LOADER::read_whole_file(path, cause);
        return file && IMAGE_LOADER::can_hold_texels(*file, kind, sides.width, sides.height);
    }
    // Two bytes of a run-length coded TGA make 128 texels at most, and one byte of a DDS's blocks makes two.
    std::uint64_t const texels_per_byte = format == FIF_TARGA ? 64
                                          : format == FIF_DDS ? 2
                                                              : checked_size::more_than_any;
    std::error_code error;
    std::uint64_t const size = std::filesystem::file_size(path, error);
    return !error && checked_size::saturating_product(sides.width, sides.height) / texels_per_byte <= size;
}

/// Whether memory may be taken for what the header announces.
bool is_acceptable(FREE_IMAGE_FORMAT format, std::string const& path) {
    std::optional<SIDES> sides;
    if (format == FIF_DDS) {
        sides = sides_of_dds(path);
    } else if (FreeImage_FIFSupportsNoPixels(format)) {
        FREEIMAGE_BITMAP const header(FreeImage_Load(format, path.c_str(), FIF_LOAD_NOPIXELS));
        if (header)
            sides = SIDES{FreeImage_GetWidth(header.get()), FreeImage_GetHeight(header.get())};
    } else {
        // No source has such a name.
        return true;
    }
    return sides && checked_size::is_within_bounds(sides->width, sides->height) &&
           can_hold_texels(format, path, *sides);
}

}  // namespace

FREEIMAGE_BITMAP load_freeimage_bitmap(FREE_IMAGE_FORMAT format, QByteArray const& path) {
    if (format == FIF_TIFF)
        IMAGE_LOADER::keep_tiff_quiet();
    if (!is_acceptable(format, path.toStdString()))
        return nullptr;
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
