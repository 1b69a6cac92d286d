#include "platform/image_loader/freeimage_bitmap.hpp"

#include "platform/checked_size.hpp"
#include "platform/dds_container/dds_container.hpp"
#include "platform/image_loader/coded_file_bounds.hpp"
#include "platform/image_loader/quiet_tiff.hpp"
#include "platform/image_loader/tga_is_whole.hpp"
#include "platform/image_loader/tif_for_freeimage.hpp"

#include <array>
#include <limits>
#include <new>
#include <optional>
#include <utility>

namespace IMAGE_LOADER {

namespace {

struct CLOSE_MEMORY {
    void operator()(FIMEMORY* memory) const { FreeImage_CloseMemory(memory); }
};

/// For people.
std::string kind_name(FREE_IMAGE_FORMAT format) {
    switch (format) {
    case FIF_JPEG:
        return "JPG";
    case FIF_TIFF:
        return "TIF";
    case FIF_TARGA:
        return "TGA";
    default: {
        char const* const name = FreeImage_GetFormatFromFIF(format);
        return name != nullptr ? name : "unknown";
    }
    }
}

IMAGE_FORMAT kind_of(FREE_IMAGE_FORMAT format) {
    return format == FIF_PNG    ? IMAGE_FORMAT::png
           : format == FIF_JPEG ? IMAGE_FORMAT::jpg
           : format == FIF_TIFF ? IMAGE_FORMAT::tif
                                : IMAGE_FORMAT::unknown;
}

FREEIMAGE_BITMAP decode(std::span<std::uint8_t const> file, FREE_IMAGE_FORMAT format, int flags, std::string& cause) {
    if (file.size() > std::numeric_limits<DWORD>::max()) {
        cause = "a " + kind_name(format) + " file of more than 4 GiB";
        return nullptr;
    }
    if (format == FIF_TIFF) {
        keep_tiff_quiet();
    }
    // The library only reads from the memory although its parameter is not const.
    std::unique_ptr<FIMEMORY, CLOSE_MEMORY> const memory(
        FreeImage_OpenMemory(const_cast<BYTE*>(file.data()), static_cast<DWORD>(file.size())));
    FREEIMAGE_BITMAP bitmap;
    if (memory && format != FIF_UNKNOWN) {
        bitmap.reset(FreeImage_LoadFromMemory(format, memory.get(), flags));
    }
    if (!bitmap) {
        cause = "the " + kind_name(format) + " file is damaged or of a kind that is not supported";
    }
    return bitmap;
}

bool check_sides(std::uint32_t width, std::uint32_t height, FREE_IMAGE_FORMAT format, std::string& cause) {
    std::string const announced = "the " + kind_name(format) + " header announces " + std::to_string(width) + " x " +
                                  std::to_string(height) + " texels";
    if (width == 0 || height == 0) {
        cause = announced;
        return false;
    }
    if (!checked_size::is_within_bounds(width, height)) {
        cause = announced + ", more than an image may have";
        return false;
    }
    return true;
}

bool is_whole(std::span<std::uint8_t const> file, FREE_IMAGE_FORMAT format) {
    switch (format) {
    case FIF_JPEG:
        return jpg_is_whole(file);
    case FIF_TIFF:
        return tif_is_whole(file);
    case FIF_TARGA:
        return tga_is_whole(file);
    default:
        return true;
    }
}

/// Checks on the file that come before memory is taken for texels.
bool is_acceptable(std::span<std::uint8_t const> file, FREE_IMAGE_FORMAT format, FREEIMAGE_HEADER const& header,
                   std::string& cause) {
    if (!header.bitmap || !check_sides(header.width, header.height, format, cause)) {
        return false;
    }
    std::uint32_t const decoded_width = FreeImage_GetWidth(header.bitmap.get());
    if (!can_hold_texels(file, kind_of(format), decoded_width, header.height)) {
        cause = "the " + kind_name(format) + " header announces " + std::to_string(header.width) + " x " +
                std::to_string(header.height) + " texels, more than a file of " + std::to_string(file.size()) +
                " bytes can hold";
        return false;
    }
    if (!is_whole(file, format)) {
        cause = "the " + kind_name(format) + " file ends within its texels";
        return false;
    }
    return true;
}

FREEIMAGE_HEADER header_of(std::span<std::uint8_t const> file, FREE_IMAGE_FORMAT format, int flags,
                           TIF_FOR_FREEIMAGE const* tif, std::string& cause) {
    FREEIMAGE_HEADER header;
    header.bitmap = decode(tif != nullptr ? tif->file() : file, format, flags | FIF_LOAD_NOPIXELS, cause);
    if (header.bitmap) {
        header.width = FreeImage_GetWidth(header.bitmap.get()) / (tif != nullptr ? tif->times_as_wide() : 1);
        header.height = FreeImage_GetHeight(header.bitmap.get());
        header.grey_and_alpha_bits = tif != nullptr ? tif->grey_and_alpha_bits() : 0;
    }
    return header;
}

/// The transparent grey of a PNG of less than eight bits a texel, widened to eight.
std::optional<std::uint8_t> narrow_grey_key(std::span<std::uint8_t const> file) {
    auto const number = [&](std::size_t at) {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            value = value << 8 | file[at + i];
        }
        return value;
    };
    constexpr std::size_t first_chunk = 8;
    constexpr std::uint32_t transparency = 0x74524e53;
    constexpr std::uint32_t texels = 0x49444154;
    if (file.size() < 33 || file[25] != 0 || file[24] == 0 || file[24] >= 8) {
        return std::nullopt;
    }
    std::uint32_t const most = (1u << file[24]) - 1;
    for (std::size_t at = first_chunk; at + 12 <= file.size();) {
        std::size_t const bytes = number(at);
        std::uint32_t const name = number(at + 4);
        if (name == texels || bytes > file.size() - at - 12) {
            break;
        }
        if (name == transparency && bytes == 2) {
            return static_cast<std::uint8_t>((file[at + 9] & most) * 255 / most);
        }
        at += 12 + bytes;
    }
    return std::nullopt;
}

/// FreeImage widens such texels to eight bits, and their key it does not.
void widen_grey_key(std::span<std::uint8_t const> file, FIBITMAP* bitmap) {
    std::optional<std::uint8_t> const key = narrow_grey_key(file);
    if (key && FreeImage_GetImageType(bitmap) == FIT_BITMAP && FreeImage_GetBPP(bitmap) == 8) {
        std::array<BYTE, 256> alpha;
        alpha.fill(255);
        alpha[*key] = 0;
        FreeImage_SetTransparencyTable(bitmap, alpha.data(), static_cast<int>(alpha.size()));
    }
}

FREEIMAGE_BITMAP load_checked(std::span<std::uint8_t const> file, FREE_IMAGE_FORMAT format, int flags,
                              std::string& cause) {
    std::optional<TIF_FOR_FREEIMAGE> tif;
    if (format == FIF_TIFF) {
        tif.emplace(file);
    }
    if (format == FIF_DDS) {
        // FreeImage cannot read its header alone.
        if (!dds_container::read_dds(file, cause)) {
            return nullptr;
        }
    } else if (FreeImage_FIFSupportsNoPixels(format) &&
               !is_acceptable(file, format, header_of(file, format, flags, tif ? &*tif : nullptr, cause), cause)) {
        return nullptr;
    }
    if (tif && !tif->problem().empty()) {
        cause = tif->problem();
        return nullptr;
    }
    FREEIMAGE_BITMAP bitmap = decode(tif ? tif->file() : file, format, flags, cause);
    if (!bitmap) {
        return nullptr;
    }
    if (tif) {
        bitmap = tif->mended(std::move(bitmap));
    } else if (format == FIF_PNG) {
        widen_grey_key(file, bitmap.get());
    }
    if (!bitmap || !FreeImage_HasPixels(bitmap.get())) {
        cause = "the texels of the " + kind_name(format) + " file are of a kind that is not supported";
        return nullptr;
    }
    // What FreeImage made need not be what it announced.
    if (!check_sides(FreeImage_GetWidth(bitmap.get()), FreeImage_GetHeight(bitmap.get()), format, cause)) {
        return nullptr;
    }
    return bitmap;
}

}  // namespace

FREEIMAGE_BITMAP load_freeimage_bitmap(std::span<std::uint8_t const> file, FREE_IMAGE_FORMAT format, int flags,
                                       std::string& cause) {
    try {
        return load_checked(file, format, flags, cause);
    } catch (std::bad_alloc const&) {
        cause = "there is not enough memory for the " + kind_name(format) + " file";
        return nullptr;
    }
}

FREEIMAGE_HEADER read_freeimage_header(std::span<std::uint8_t const> file, FREE_IMAGE_FORMAT format,
                                       std::string& cause) {
    try {
        if (format == FIF_TIFF) {
            TIF_FOR_FREEIMAGE const tif(file);
            return header_of(file, format, 0, &tif, cause);
        }
        return header_of(file, format, 0, nullptr, cause);
    } catch (std::bad_alloc const&) {
        cause = "there is not enough memory for the " + kind_name(format) + " file";
        return {};
    }
}

}  // namespace IMAGE_LOADER
