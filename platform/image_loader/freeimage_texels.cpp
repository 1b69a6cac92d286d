// The widening and narrowing is done here for all texel types but FreeImage's own palettes, because its conversions
// drop alpha of some types and stretch the range of others.
#include "platform/image_loader/freeimage_texels.hpp"

#include "platform/checked_size.hpp"
#include "platform/image_loader/exchange_red_and_blue.hpp"
#include "platform/image_loader/freeimage_bitmap.hpp"

#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace IMAGE_LOADER {

namespace {

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
    FREEIMAGE_BITMAP converted;
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

}  // namespace

bool take_texels(FIBITMAP* bitmap, CHANNEL_ORDER order, DECODED_FILE& decoded) {
    decoded.width = FreeImage_GetWidth(bitmap);
    decoded.height = FreeImage_GetHeight(bitmap);
    decoded.texels.resize(checked_size::memory_size(4u, decoded.width, decoded.height));
    TEXEL_WRITER const write(order);
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

std::string texels_text(FIBITMAP* bitmap, FREE_IMAGE_FORMAT format) {
    std::string const bits = std::to_string(FreeImage_GetBPP(bitmap)) + "-bit ";
    switch (FreeImage_GetImageType(bitmap)) {
    case FIT_BITMAP:
        if (FreeImage_GetBPP(bitmap) == 32) {
            return bits + (format == FIF_JPEG ? "CMYK" : "RGBA");
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
        return bits + "unknown";
    }
}

bool type_has_alpha(FIBITMAP* bitmap, FREE_IMAGE_FORMAT format) {
    switch (FreeImage_GetImageType(bitmap)) {
    case FIT_RGBA16:
    case FIT_RGBAF:
        return true;
    case FIT_BITMAP:
        return format != FIF_JPEG && (FreeImage_GetBPP(bitmap) == 32 || FreeImage_IsTransparent(bitmap));
    default:
        return false;
    }
}

}  // namespace IMAGE_LOADER
