// What a legacy DDS header can say of its texels: four-character codes, the numbers of old Direct3D formats in their
// place, and channel masks. One table each way, so that reading and writing cannot disagree.
#pragma once

#include "platform/dds_container/dds_container.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace dds_container {

/// The pixel format block of a header, without its size field.
struct LEGACY_PIXEL_FORMAT {
    static constexpr std::uint32_t alpha_pixels_flag = 0x1;
    static constexpr std::uint32_t alpha_only_flag = 0x2;
    static constexpr std::uint32_t four_cc_flag = 0x4;
    static constexpr std::uint32_t rgb_flag = 0x40;
    static constexpr std::uint32_t luminance_flag = 0x20000;
    static constexpr std::uint32_t signed_flag = 0x80000;

    std::uint32_t flags = 0;
    std::uint32_t four_cc = 0;
    std::uint32_t bits_per_texel = 0;
    std::uint32_t red = 0;
    std::uint32_t green = 0;
    std::uint32_t blue = 0;
    std::uint32_t alpha = 0;
};

/// Four characters as the number that stands in the file.
constexpr std::uint32_t four_cc_number(char const (&text)[5]) {
    std::uint32_t number = 0;
    for (int i = 3; i >= 0; --i) {
        number = number << 8 | static_cast<unsigned char>(text[i]);
    }
    return number;
}

/// Fills format, four_cc, masks, is_premultiplied and has_alpha of the description. False, and `cause` filled, for
/// texels that are not supported.
bool read_legacy_format(LEGACY_PIXEL_FORMAT const& stored, DDS_DESCRIPTION& description, std::string& cause);

/// The block that says what the description's masks, four-character code or format say; nothing when none can.
std::optional<LEGACY_PIXEL_FORMAT> legacy_format_of(DDS_DESCRIPTION const& description);

}  // namespace dds_container
