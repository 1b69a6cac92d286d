// FreeImage decodes; the widening and narrowing is done here for all texel types but its own palettes, because its
// conversions drop alpha of some types and stretch the range of others.
#include "platform/image_loader/load_with_freeimage.hpp"

#include "platform/checked_size.hpp"
#include "platform/image_loader/coded_file_bounds.hpp"
#include "platform/image_loader/exchange_red_and_blue.hpp"
#include "platform/image_loader/quiet_tiff.hpp"
#include "platform/image_loader/tif_layout.hpp"

#include <FreeImage.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>

namespace IMAGE_LOADER {

namespace {

struct CLOSE_MEMORY {
    void operator()(FIMEMORY* memory) const { FreeImage_CloseMemory(memory); }
};
struct UNLOAD_BITMAP {
    void operator()(FIBITMAP* bitmap) const { FreeImage_Unload(bitmap); }
};
using MEMORY = std::unique_ptr<FIMEMORY, CLOSE_MEMORY>;
using BITMAP = std::unique_ptr<FIBITMAP, UNLOAD_BITMAP>;

struct LIBRARY_KIND {
    FREE_IMAGE_FORMAT format;
    int flags;
    char const* name;
};

LIBRARY_KIND library_kind(IMAGE_FORMAT format) {
    switch (format) {
    case IMAGE_FORMAT::png:
        return {FIF_PNG, PNG_IGNOREGAMMA, "PNG"};
    case IMAGE_FORMAT::jpg:
        return {FIF_JPEG, JPEG_ACCURATE, "JPG"};
    case IMAGE_FORMAT::tif:
        return {FIF_TIFF, TIFF_DEFAULT, "TIF"};
    default:
        return {FIF_UNKNOWN, 0, "unknown"};
    }
}

BITMAP load_bitmap(std::span<std::uint8_t const> file, LIBRARY_KIND kind, int extra_flags, std::string& cause) {
    if (file.size() > std::numeric_limits<DWORD>::max()) {
        cause = std::string("a ") + kind.name + " file of more than 4 GiB";
        return nullptr;
    }
    if (kind.format == FIF_TIFF) {
        keep_tiff_quiet();
    }
    // The library only reads from the memory although its parameter is not const.
    MEMORY const memory(FreeImage_OpenMemory(const_cast<BYTE*>(file.data()), static_cast<DWORD>(file.size())));
    BITMAP bitmap;
    if (memory && kind.format != FIF_UNKNOWN) {
        bitmap.reset(FreeImage_LoadFromMemory(kind.format, memory.get(), kind.flags | extra_flags));
    }
    if (!bitmap) {
        cause = std::string("the ") + kind.name + " file is damaged or of a kind that is not supported";
    }
    return bitmap;
}

/// Writes one texel in the wanted order.
class TEXEL_WRITER {
public:
    explicit TEXEL_WRITER(CHANNEL_ORDER order) : red_(order == CHANNEL_ORDER::red_first ? 0 : 2), blue_(2 - red_) {}
    void operator()(std::uint8_t* target, std::uint8_t red, std::uint8_t green, std::uint8_t blue,
                    std::uint8_t alpha) const {
        target[red_] = red;
        target[1] = green;
        target[blue_] = blue;
        target[3] = alpha;
    }

private:
    std::size_t red_;
    std::size_t blue_;
};

/// Eight bits from a value whose range is that of its type, negative values being 0; floats have the range 0…1.
template <typename NUMBER>
std::uint8_t to_byte(NUMBER value) {
    double unit = static_cast<double>(value);
    if constexpr (std::is_integral_v<NUMBER>) {
        unit /= static_cast<double>(std::numeric_limits<NUMBER>::max());
    }
    return unit > 0.0 ? static_cast<std::uint8_t>(std::fmin(unit, 1.0) * 255.0 + 0.5) : std::uint8_t{0};
}

/// Texels of one number (grey), two (grey, alpha), three or four (red first).
template <typename NUMBER>
void take_numbers(FIBITMAP* bitmap, std::size_t channels, TEXEL_WRITER const& write, DECODED_FILE& decoded) {
    for (std::uint32_t y = 0; y < decoded.height; ++y) {
        BYTE const* const line = FreeImage_GetScanLine(bitmap, static_cast<int>(decoded.height - 1 - y));
        std::uint8_t* target = decoded.texels.data() + std::size_t{4} * y * decoded.width;
        for (std::size_t x = 0; x < decoded.width; ++x, target += 4) {
            NUMBER numbers[4] = {};
            std::memcpy(numbers, line + x * channels * sizeof(NUMBER), channels * sizeof(NUMBER));
            std::uint8_t const first = to_byte(numbers[0]);
            std::uint8_t const last = channels % 2 == 0 ? to_byte(numbers[channels - 1]) : std::uint8_t{255};
            if (channels < 3) {
                write(target, first, first, first, last);
            } else {
                write(target, first, to_byte(numbers[1]), to_byte(numbers[2]), last);
            }
        }
    }
}

/// Texels of one to 32 bits, palettes and their transparent entries included.
bool take_bitmap(FIBITMAP* bitmap, CHANNEL_ORDER order, DECODED_FILE& decoded) {
    static_assert(FI_RGBA_GREEN == 1 && FI_RGBA_ALPHA == 3 && FI_RGBA_RED + FI_RGBA_BLUE == 2);
    bool const is_in_order = (order == CHANNEL_ORDER::red_first) == (FI_RGBA_RED == 0);
    BITMAP converted;
    if (FreeImage_GetBPP(bitmap) != 32) {
        converted.reset(FreeImage_ConvertTo32Bits(bitmap));
        if (!converted) {
            return false;
        }
        bitmap = converted.get();
    }
    for (std::uint32_t y = 0; y < decoded.height; ++y) {
        BYTE const* const source = FreeImage_GetScanLine(bitmap, static_cast<int>(decoded.height - 1 - y));
        std::uint8_t* const target = decoded.texels.data() + std::size_t{4} * y * decoded.width;
        if (is_in_order) {
            std::memcpy(target, source, std::size_t{4} * decoded.width);
        } else {
            exchange_red_and_blue(source, target, decoded.width);
        }
    }
    return true;
}

bool take_texels(FIBITMAP* bitmap, bool is_grey_alpha_16, CHANNEL_ORDER order, DECODED_FILE& decoded) {
    TEXEL_WRITER const write(order);
    if (is_grey_alpha_16) {
        // The library takes the two samples of a texel for one of 32 bits.
        if (FreeImage_GetImageType(bitmap) == FIT_UINT32) {
            take_numbers<std::uint16_t>(bitmap, 2, write, decoded);
            return true;
        }
        return false;
    }
    switch (FreeImage_GetImageType(bitmap)) {
    case FIT_BITMAP:
        return take_bitmap(bitmap, order, decoded);
    case FIT_UINT16:
        take_numbers<std::uint16_t>(bitmap, 1, write, decoded);
        return true;
    case FIT_INT16:
        take_numbers<std::int16_t>(bitmap, 1, write, decoded);
        return true;
    case FIT_UINT32:
        take_numbers<std::uint32_t>(bitmap, 1, write, decoded);
        return true;
    case FIT_INT32:
        take_numbers<std::int32_t>(bitmap, 1, write, decoded);
        return true;
    case FIT_FLOAT:
        take_numbers<float>(bitmap, 1, write, decoded);
        return true;
    case FIT_DOUBLE:
        take_numbers<double>(bitmap, 1, write, decoded);
        return true;
    case FIT_RGB16:
        take_numbers<std::uint16_t>(bitmap, 3, write, decoded);
        return true;
    case FIT_RGBA16:
        take_numbers<std::uint16_t>(bitmap, 4, write, decoded);
        return true;
    case FIT_RGBF:
        take_numbers<float>(bitmap, 3, write, decoded);
        return true;
    case FIT_RGBAF:
        take_numbers<float>(bitmap, 4, write, decoded);
        return true;
    default:
        return false;
    }
}

bool check_sides(std::uint32_t width, std::uint32_t height, LIBRARY_KIND kind, std::string& cause) {
    std::string const announced = std::string("the ") + kind.name + " header announces " + std::to_string(width) +
                                  " x " + std::to_string(height) + " texels";
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

TIF_LAYOUT layout_of(std::span<std::uint8_t const> file, IMAGE_FORMAT format) {
    return format == IMAGE_FORMAT::tif ? read_tif_layout(file) : TIF_LAYOUT{};
}

bool is_grey_alpha_16(TIF_LAYOUT layout) {
    return layout.samples_per_texel == 2 && layout.bits_per_sample == 16;
}

std::string texels_text(FIBITMAP* bitmap, IMAGE_FORMAT format) {
    std::string const bits = std::to_string(FreeImage_GetBPP(bitmap)) + "-bit ";
    switch (FreeImage_GetImageType(bitmap)) {
    case FIT_BITMAP:
        if (FreeImage_GetBPP(bitmap) == 32) {
            return bits + (format == IMAGE_FORMAT::jpg ? "CMYK" : "RGBA");
        }
        switch (FreeImage_GetColorType(bitmap)) {
        case FIC_MINISWHITE:
        case FIC_MINISBLACK:
            return bits + "grey";
        case FIC_PALETTE:
            return bits + "palette";
        default:
            return bits + "RGB";
        }
    case FIT_UINT16:
    case FIT_INT16:
    case FIT_UINT32:
    case FIT_INT32:
        return bits + "grey";
    case FIT_FLOAT:
    case FIT_DOUBLE:
        return bits + "float grey";
    case FIT_RGB16:
        return bits + "RGB";
    case FIT_RGBA16:
        return bits + "RGBA";
    case FIT_RGBF:
        return bits + "float RGB";
    case FIT_RGBAF:
        return bits + "float RGBA";
    default:
        return bits + "texels of an unknown kind";
    }
}

bool type_has_alpha(FIBITMAP* bitmap, IMAGE_FORMAT format) {
    switch (FreeImage_GetImageType(bitmap)) {
    case FIT_RGBA16:
    case FIT_RGBAF:
        return true;
    case FIT_BITMAP:
        return format != IMAGE_FORMAT::jpg && (FreeImage_GetBPP(bitmap) == 32 || FreeImage_IsTransparent(bitmap));
    default:
        return false;
    }
}

}  // namespace

std::optional<DECODED_FILE> load_with_freeimage(std::span<std::uint8_t const> file, IMAGE_FORMAT format,
                                                CHANNEL_ORDER order, std::string& cause) {
    LIBRARY_KIND const kind = library_kind(format);
    BITMAP const header = load_bitmap(file, kind, FIF_LOAD_NOPIXELS, cause);
    if (!header || !check_sides(FreeImage_GetWidth(header.get()), FreeImage_GetHeight(header.get()), kind, cause)) {
        return std::nullopt;
    }
    if (!can_hold_texels(file, format, FreeImage_GetWidth(header.get()), FreeImage_GetHeight(header.get()))) {
        cause = std::string("the ") + kind.name + " header announces " +
                std::to_string(FreeImage_GetWidth(header.get())) + " x " +
                std::to_string(FreeImage_GetHeight(header.get())) + " texels, more than a file of " +
                std::to_string(file.size()) + " bytes can hold";
        return std::nullopt;
    }
    if (format == IMAGE_FORMAT::jpg && !jpg_is_whole(file)) {
        cause = "the JPG file ends within its texels";
        return std::nullopt;
    }
    TIF_LAYOUT const layout = layout_of(file, format);
    if (layout.samples_per_texel == 2 && layout.bits_per_sample > 16) {
        cause = "grey with alpha is not supported in a TIF file of " + std::to_string(layout.bits_per_sample) +
                " bits a sample";
        return std::nullopt;
    }
    BITMAP const bitmap = load_bitmap(file, kind, 0, cause);
    if (!bitmap) {
        return std::nullopt;
    }
    DECODED_FILE decoded;
    decoded.width = FreeImage_GetWidth(bitmap.get());
    decoded.height = FreeImage_GetHeight(bitmap.get());
    if (!check_sides(decoded.width, decoded.height, kind, cause)) {
        return std::nullopt;
    }
    try {
        decoded.texels.resize(checked_size::memory_size(4u, decoded.width, decoded.height));
    } catch (std::bad_alloc const&) {
        cause = "there is not enough memory for " + std::to_string(decoded.width) + " x " +
                std::to_string(decoded.height) + " texels";
        return std::nullopt;
    }
    if (!FreeImage_HasPixels(bitmap.get()) || !take_texels(bitmap.get(), is_grey_alpha_16(layout), order, decoded)) {
        cause = std::string("the texels of the ") + kind.name + " file are of a kind that is not supported";
        return std::nullopt;
    }
    return decoded;
}

std::optional<CODED_FILE_INFO> read_info_with_freeimage(std::span<std::uint8_t const> file, IMAGE_FORMAT format,
                                                        std::string& cause) {
    BITMAP const header = load_bitmap(file, library_kind(format), FIF_LOAD_NOPIXELS, cause);
    if (!header) {
        return std::nullopt;
    }
    if (is_grey_alpha_16(layout_of(file, format))) {
        return CODED_FILE_INFO{FreeImage_GetWidth(header.get()), FreeImage_GetHeight(header.get()),
                               "32-bit grey and alpha", true};
    }
    return CODED_FILE_INFO{FreeImage_GetWidth(header.get()), FreeImage_GetHeight(header.get()),
                           texels_text(header.get(), format), type_has_alpha(header.get(), format)};
}

std::optional<std::vector<std::uint8_t>> encode_png(std::span<std::uint8_t const> rgba, std::uint32_t width,
                                                    std::uint32_t height, std::string& cause) {
    cause = "there is not enough memory for the PNG file";
    BITMAP const bitmap(FreeImage_Allocate(static_cast<int>(width), static_cast<int>(height), 32));
    MEMORY const memory(FreeImage_OpenMemory());
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
