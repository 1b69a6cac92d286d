#include "platform/dds_container/legacy_format.hpp"

#include <array>
#include <bit>

namespace dds_container {

namespace {

struct FOUR_CC_ROW {
    std::uint32_t code;
    DXGI format;
    bool is_premultiplied = false;
};

// The first row of a format is the one that is written. Numbers are those of the D3DFORMAT enumeration.
constexpr auto four_ccs = std::to_array<FOUR_CC_ROW>({
    {four_cc_number("DXT1"), DXGI::bc1_unorm},
    {four_cc_number("DXT2"), DXGI::bc2_unorm, true},
    {four_cc_number("DXT3"), DXGI::bc2_unorm},
    {four_cc_number("DXT4"), DXGI::bc3_unorm, true},
    {four_cc_number("DXT5"), DXGI::bc3_unorm},
    {four_cc_number("ATI1"), DXGI::bc4_unorm},
    {four_cc_number("BC4U"), DXGI::bc4_unorm},
    {four_cc_number("BC4S"), DXGI::bc4_snorm},
    {four_cc_number("ATI2"), DXGI::bc5_unorm},
    {four_cc_number("BC5U"), DXGI::bc5_unorm},
    {four_cc_number("BC5S"), DXGI::bc5_snorm},
    {36, DXGI::r16g16b16a16_unorm},
    {110, DXGI::r16g16b16a16_snorm},
    {111, DXGI::r16_float},
    {112, DXGI::r16g16_float},
    {113, DXGI::r16g16b16a16_float},
    {114, DXGI::r32_float},
    {115, DXGI::r32g32_float},
    {116, DXGI::r32g32b32a32_float},
});

struct MASK_ROW {
    PIXEL_MASKS masks;
    DXGI format;
    bool is_signed = false;
};

constexpr auto mask_formats = std::to_array<MASK_ROW>({
    {{32, 0x00ff0000, 0x0000ff00, 0x000000ff, 0xff000000}, DXGI::b8g8r8a8_unorm},
    {{32, 0x00ff0000, 0x0000ff00, 0x000000ff, 0}, DXGI::b8g8r8x8_unorm},
    {{32, 0x000000ff, 0x0000ff00, 0x00ff0000, 0xff000000}, DXGI::r8g8b8a8_unorm},
    {{32, 0x000003ff, 0x000ffc00, 0x3ff00000, 0xc0000000}, DXGI::r10g10b10a2_unorm},
    {{32, 0x0000ffff, 0xffff0000, 0, 0}, DXGI::r16g16_unorm},
    {{16, 0xf800, 0x07e0, 0x001f, 0}, DXGI::b5g6r5_unorm},
    {{16, 0x7c00, 0x03e0, 0x001f, 0x8000}, DXGI::b5g5r5a1_unorm},
    {{16, 0x0f00, 0x00f0, 0x000f, 0xf000}, DXGI::b4g4r4a4_unorm},
    {{16, 0x00ff, 0xff00, 0, 0}, DXGI::r8g8_unorm},
    {{16, 0xffff, 0, 0, 0}, DXGI::r16_unorm},
    {{8, 0xff, 0, 0, 0}, DXGI::r8_unorm},
    {{8, 0, 0, 0, 0xff}, DXGI::a8_unorm},
    {{16, 0x00ff, 0xff00, 0, 0}, DXGI::r8g8_snorm, true},
    {{32, 0x000000ff, 0x0000ff00, 0x00ff0000, 0xff000000}, DXGI::r8g8b8a8_snorm, true},
    {{32, 0x0000ffff, 0xffff0000, 0, 0}, DXGI::r16g16_snorm, true},
});

/// A code as people know it: its characters, or its digits when it is a number.
std::string four_cc_text(std::uint32_t code) {
    std::string text;
    for (int i = 0; i < 4; ++i) {
        char const c = static_cast<char>(code >> (8 * i) & 0xff);
        if (c < ' ' || c > '~') {
            return std::to_string(code);
        }
        text += c;
    }
    return text;
}

bool is_run_of_ones(std::uint32_t mask) {
    return mask == 0 || std::has_single_bit((std::uint64_t{mask} >> std::countr_zero(mask)) + 1);
}

bool read_four_cc(std::uint32_t code, DDS_DESCRIPTION& description, std::string& cause) {
    description.four_cc = four_cc_text(code);
    for (FOUR_CC_ROW const& row : four_ccs) {
        if (row.code == code) {
            description.format = row.format;
            description.is_premultiplied = row.is_premultiplied;
            description.has_alpha = dxgi_format_info(row.format).has_alpha;
            return true;
        }
    }
    cause = "texels of the code " + description.four_cc + " are not supported";
    return false;
}

}  // namespace

bool read_legacy_format(LEGACY_PIXEL_FORMAT const& stored, DDS_DESCRIPTION& description, std::string& cause) {
    // Some writers forget the flag; a code without a depth cannot mean anything else.
    if ((stored.flags & LEGACY_PIXEL_FORMAT::four_cc_flag) != 0 ||
        (stored.four_cc != 0 && stored.bits_per_texel == 0)) {
        return read_four_cc(stored.four_cc, description, cause);
    }

    PIXEL_MASKS masks;
    masks.bits_per_texel = stored.bits_per_texel;
    masks.is_luminance = (stored.flags & LEGACY_PIXEL_FORMAT::luminance_flag) != 0;
    bool const is_signed = (stored.flags & LEGACY_PIXEL_FORMAT::signed_flag) != 0;
    // Here the flags do count: layouts with an idle fourth byte keep its mask and drop the flag. Nothing tells where
    // the channels of a signed layout are but its masks.
    if ((stored.flags & LEGACY_PIXEL_FORMAT::alpha_only_flag) == 0) {
        masks.red = stored.red;
        if (!masks.is_luminance) {
            masks.green = stored.green;
            masks.blue = stored.blue;
        }
    }
    if (is_signed || (stored.flags & (LEGACY_PIXEL_FORMAT::alpha_pixels_flag | LEGACY_PIXEL_FORMAT::alpha_only_flag))) {
        masks.alpha = stored.alpha;
    }
    // Without a mask for it there is no luminance, only what alpha there is.
    masks.is_luminance = masks.is_luminance && masks.red != 0;

    std::uint32_t const bits = masks.bits_per_texel;
    if (bits != 8 && bits != 16 && bits != 24 && bits != 32) {
        cause = "texels of " + std::to_string(bits) + " bits are not supported";
        return false;
    }
    std::uint32_t const all = masks.red | masks.green | masks.blue | masks.alpha;
    if (all == 0 || (bits < 32 && all >> bits != 0)) {
        cause = "the channel masks do not fit into texels of " + std::to_string(bits) + " bits";
        return false;
    }
    for (std::uint32_t const mask : {masks.red, masks.green, masks.blue, masks.alpha}) {
        if (!is_run_of_ones(mask)) {
            cause = "channel masks with gaps are not supported";
            return false;
        }
    }
    for (MASK_ROW const& row : mask_formats) {
        if (row.masks == masks && row.is_signed == is_signed) {
            description.format = row.format;
        }
    }
    if (is_signed && description.format == DXGI::unknown) {
        cause = "signed texels of " + std::to_string(bits) + " bits with these masks are not supported";
        return false;
    }
    description.masks = masks;
    description.has_alpha = masks.alpha != 0;
    return true;
}

std::optional<LEGACY_PIXEL_FORMAT> legacy_format_of(DDS_DESCRIPTION const& description) {
    LEGACY_PIXEL_FORMAT stored;
    auto const store_masks = [&](PIXEL_MASKS const& masks, bool is_signed) {
        bool const has_colour = (masks.red | masks.green | masks.blue) != 0;
        stored.flags = is_signed            ? LEGACY_PIXEL_FORMAT::signed_flag
                       : masks.is_luminance ? LEGACY_PIXEL_FORMAT::luminance_flag
                       : has_colour         ? LEGACY_PIXEL_FORMAT::rgb_flag
                                            : LEGACY_PIXEL_FORMAT::alpha_only_flag;
        if (masks.alpha != 0 && has_colour && !is_signed) {
            stored.flags |= LEGACY_PIXEL_FORMAT::alpha_pixels_flag;
        }
        stored.bits_per_texel = masks.bits_per_texel;
        stored.red = masks.red;
        stored.green = masks.green;
        stored.blue = masks.blue;
        stored.alpha = masks.alpha;
    };

    if (description.format != DXGI::unknown) {
        for (FOUR_CC_ROW const& row : four_ccs) {
            bool const same_code = description.four_cc.empty() || four_cc_text(row.code) == description.four_cc;
            if (row.format == description.format && row.is_premultiplied == description.is_premultiplied && same_code) {
                stored.flags = LEGACY_PIXEL_FORMAT::four_cc_flag;
                stored.four_cc = row.code;
                return stored;
            }
        }
        for (MASK_ROW const& row : mask_formats) {
            if (row.format == description.format) {
                store_masks(row.masks, row.is_signed);
                return stored;
            }
        }
        return std::nullopt;
    }
    if (description.masks.bits_per_texel != 0) {
        store_masks(description.masks, false);
        return stored;
    }
    return std::nullopt;
}

}  // namespace dds_container
