#include "platform/image_loader/load_with_freeimage.hpp"

#include "platform/image_loader/freeimage_bitmap.hpp"
#include "platform/image_loader/freeimage_texels.hpp"

#include <memory>
#include <new>

namespace IMAGE_LOADER {

namespace {

struct CLOSE_MEMORY {
    void operator()(FIMEMORY* memory) const { FreeImage_CloseMemory(memory); }
};

FREE_IMAGE_FORMAT library_format(IMAGE_FORMAT format) {
    return format == IMAGE_FORMAT::png   ? FIF_PNG
           : format == IMAGE_FORMAT::jpg ? FIF_JPEG
           : format == IMAGE_FORMAT::tif ? FIF_TIFF
                                         : FIF_UNKNOWN;
}

}  // namespace

std::optional<DECODED_FILE> load_with_freeimage(std::span<std::uint8_t const> file, IMAGE_FORMAT format,
                                                CHANNEL_ORDER order, std::string& cause) {
    int const flags = format == IMAGE_FORMAT::png ? PNG_IGNOREGAMMA : format == IMAGE_FORMAT::jpg ? JPEG_ACCURATE : 0;
    FREEIMAGE_BITMAP const bitmap = load_freeimage_bitmap(file, library_format(format), flags, cause);
    if (!bitmap) {
        return std::nullopt;
    }
    DECODED_FILE decoded;
    try {
        if (take_texels(bitmap.get(), order, decoded)) {
            return decoded;
        }
        cause = "the texels of the file are of a kind that is not supported";
    } catch (std::bad_alloc const&) {
        cause = "there is not enough memory for " + std::to_string(FreeImage_GetWidth(bitmap.get())) + " x " +
                std::to_string(FreeImage_GetHeight(bitmap.get())) + " texels";
    }
    return std::nullopt;
}

std::optional<CODED_FILE_INFO> read_info_with_freeimage(std::span<std::uint8_t const> file, IMAGE_FORMAT format,
                                                        std::string& cause) {
    FREE_IMAGE_FORMAT const library = library_format(format);
    FREEIMAGE_HEADER const header = read_freeimage_header(file, library, cause);
    if (!header.bitmap) {
        return std::nullopt;
    }
    if (header.grey_and_alpha_bits != 0) {
        return CODED_FILE_INFO{header.width, header.height,
                               std::to_string(2 * header.grey_and_alpha_bits) + "-bit grey and alpha", true};
    }
    return CODED_FILE_INFO{header.width, header.height, texels_text(header.bitmap.get(), library),
                           type_has_alpha(header.bitmap.get(), library)};
}

std::optional<std::vector<std::uint8_t>> encode_png(std::span<std::uint8_t const> rgba, std::uint32_t width,
                                                    std::uint32_t height, std::string& cause) {
    cause = "there is not enough memory for the PNG file";
    FREEIMAGE_BITMAP const bitmap(FreeImage_Allocate(static_cast<int>(width), static_cast<int>(height), 32));
    std::unique_ptr<FIMEMORY, CLOSE_MEMORY> const memory(FreeImage_OpenMemory());
    if (!bitmap || !memory) {
        return std::nullopt;
    }
    for (std::uint32_t y = 0; y < height; ++y) {
        std::uint8_t const* source = rgba.data() + std::size_t{4} * y * width;
        BYTE* target = FreeImage_GetScanLine(bitmap.get(), static_cast<int>(height - 1 - y));
        for (std::uint32_t x = 0; x < width; ++x, source += 4, target += 4) {
            target[FI_RGBA_RED] = source[0];
            target[FI_RGBA_GREEN] = source[1];
            target[FI_RGBA_BLUE] = source[2];
            target[FI_RGBA_ALPHA] = source[3];
        }
    }
    BYTE* bytes = nullptr;
    DWORD count = 0;
    if (!FreeImage_SaveToMemory(FIF_PNG, bitmap.get(), memory.get(), PNG_DEFAULT) ||
        !FreeImage_AcquireMemory(memory.get(), &bytes, &count)) {
        cause = "the PNG file cannot be encoded";
        return std::nullopt;
    }
    cause.clear();
    return std::vector<std::uint8_t>(bytes, bytes + count);
}

}  // namespace IMAGE_LOADER
