// FreeImage's writers take texels that they have no form for: some write what nobody can read, and some end the
// process. So each is asked what it can write. Files are coded in memory first, since FreeImage does not notice a disk
// that is full; in memory of our own, since FreeImage's leaves bytes that are skipped, as TIF does for even offsets, as
// they happen to be.
#include "dds/freeimage_bitmap.hpp"

#include "dds/freeimage_messages.hpp"
#include "platform/image_loader/freeimage_texels.hpp"
#include "platform/image_loader/load_image_file.hpp"
#include "platform/qe/replace_file.hpp"

#include <QFile>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <vector>

namespace {

/// A file in memory as FreeImage's writers see it. What is skipped is 0.
struct MEMORY_FILE {
    std::vector<std::uint8_t> bytes;
    std::size_t position = 0;
    bool is_out_of_memory = false;

    static unsigned DLL_CALLCONV read(void* buffer, unsigned size, unsigned count, fi_handle handle) {
        auto& file = *static_cast<MEMORY_FILE*>(handle);
        std::size_t const left = file.bytes.size() - std::min(file.position, file.bytes.size());
        std::size_t const read = size == 0 ? 0 : std::min<std::size_t>(count, left / size);
        if (read != 0)
            std::memcpy(buffer, file.bytes.data() + file.position, read * size);
        file.position += read * size;
        return static_cast<unsigned>(read);
    }
    static unsigned DLL_CALLCONV write(void* buffer, unsigned size, unsigned count, fi_handle handle) {
        auto& file = *static_cast<MEMORY_FILE*>(handle);
        std::size_t const length = std::size_t{size} * count;
        try {
            file.bytes.resize(std::max(file.bytes.size(), file.position + length));
        } catch (std::exception const&) {
            file.is_out_of_memory = true;
            return 0;
        }
        if (length != 0)
            std::memcpy(file.bytes.data() + file.position, buffer, length);
        file.position += length;
        return count;
    }
    static int DLL_CALLCONV seek(fi_handle handle, long offset, int origin) {
        auto& file = *static_cast<MEMORY_FILE*>(handle);
        long const from = origin == SEEK_CUR   ? static_cast<long>(file.position)
                          : origin == SEEK_END ? static_cast<long>(file.bytes.size())
                                               : 0;
        if (from + offset < 0)
            return -1;
        file.position = static_cast<std::size_t>(from + offset);
        return 0;
    }
    static long DLL_CALLCONV tell(fi_handle handle) {
        return static_cast<long>(static_cast<MEMORY_FILE*>(handle)->position);
    }
};

bool can_write(FREE_IMAGE_FORMAT format, FREE_IMAGE_TYPE type, unsigned bits) {
    return FreeImage_FIFSupportsExportType(format, type) &&
           (type != FIT_BITMAP || FreeImage_FIFSupportsExportBPP(format, static_cast<int>(bits)));
}

/// The bitmap's texels with eight bits a channel, as `format` can write them; null when it cannot.
FREEIMAGE_BITMAP narrowed(FREE_IMAGE_FORMAT format, FIBITMAP* bitmap) {
    IMAGE_LOADER::DECODED_FILE decoded;
    auto const order =
        FI_RGBA_RED == 0 ? IMAGE_LOADER::CHANNEL_ORDER::red_first : IMAGE_LOADER::CHANNEL_ORDER::blue_first;
    if (!IMAGE_LOADER::take_texels(bitmap, order, decoded))
        return nullptr;
    // JPEG has no place for alpha and loses it by intent.
    bool is_opaque = true;
    for (std::size_t i = FI_RGBA_ALPHA; format != FIF_JPEG && i < decoded.texels.size(); i += 4)
        is_opaque = is_opaque && decoded.texels[i] == 255;
    unsigned const bits = is_opaque && can_write(format, FIT_BITMAP, 24) ? 24 : 32;
    if (!can_write(format, FIT_BITMAP, bits))
        return nullptr;
    FREEIMAGE_BITMAP made(FreeImage_Allocate(static_cast<int>(decoded.width), static_cast<int>(decoded.height),
                                             static_cast<int>(bits), FI_RGBA_RED_MASK, FI_RGBA_GREEN_MASK,
                                             FI_RGBA_BLUE_MASK));
    if (!made)
        throw std::bad_alloc();
    std::uint8_t const* source = decoded.texels.data();
    for (std::uint32_t y = 0; y < decoded.height; ++y) {
        BYTE* target = FreeImage_GetScanLine(made.get(), static_cast<int>(decoded.height - 1 - y));
        for (std::uint32_t x = 0; x < decoded.width; ++x, source += 4, target += bits / 8)
            std::memcpy(target, source, bits / 8);
    }
    return made;
}

}  // namespace

FREEIMAGE_BITMAP load_freeimage_bitmap(FREE_IMAGE_FORMAT format, QString const& path) {
    FREEIMAGE_MESSAGES::begin_file();
    std::string cause;
    auto const file = IMAGE_LOADER::read_whole_file(QFile::encodeName(path).toStdString(), cause);
    return file ? IMAGE_LOADER::load_freeimage_bitmap(*file, format, 0, cause) : nullptr;
}

bool save_freeimage_bitmap(OUTPUT_LINE_SINK& sink, FREE_IMAGE_FORMAT format, FIBITMAP* bitmap, QString const& path) {
    if (bitmap == nullptr)
        return false;
    auto const cannot_hold = [&] {
        sink.add_output_line(QStringLiteral("%1 files cannot hold %2 texels")
                                 .arg(QString::fromLatin1(FreeImage_GetFormatFromFIF(format)),
                                      QString::fromStdString(IMAGE_LOADER::texels_text(bitmap, format))));
        return false;
    };
    if (!FreeImage_FIFSupportsWriting(format)) {
        sink.add_output_line(QStringLiteral("FreeImage writes no %1 files")
                                 .arg(QString::fromLatin1(FreeImage_GetFormatFromFIF(format))));
        return false;
    }
    FREEIMAGE_BITMAP narrow;
    if (!can_write(format, FreeImage_GetImageType(bitmap), FreeImage_GetBPP(bitmap))) {
        narrow = narrowed(format, bitmap);
        if (!narrow)
            return cannot_hold();
    }
    FREEIMAGE_MESSAGES::begin_file();
    MEMORY_FILE memory;
    FreeImageIO io = {MEMORY_FILE::read, MEMORY_FILE::write, MEMORY_FILE::seek, MEMORY_FILE::tell};
    bool const is_coded = FreeImage_SaveToHandle(format, narrow ? narrow.get() : bitmap, &io, &memory, 0);
    if (memory.is_out_of_memory)
        throw std::bad_alloc();
    if (!is_coded)
        return FREEIMAGE_MESSAGES::has_said_something() ? false : cannot_hold();
    std::string cause;
    if (QE::replace_file(QFile::encodeName(path).toStdString(), memory.bytes, cause))
        return true;
    sink.add_output_line(QStringLiteral("Failed to write '%1': %2").arg(path, QString::fromLocal8Bit(cause.c_str())));
    return false;
}
