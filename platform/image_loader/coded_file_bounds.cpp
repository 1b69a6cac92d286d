// The bounds follow from the published formats: deflate (RFC 1951) makes of one byte no more than 1,032; LZW of a code
// of nine bits or more no more than 4,096 bytes; PackBits of two bytes 128; a JPG (ITU T.81) with Huffman coding spends
// a bit on each block of 8 × 8 samples, and the sampling factors leave one component at least a quarter of the texels.
#include "platform/image_loader/coded_file_bounds.hpp"

#include "platform/checked_size.hpp"
#include "platform/image_loader/tif_layout.hpp"

#include <optional>

namespace IMAGE_LOADER {

namespace {

using checked_size::saturating_product;

constexpr std::uint64_t deflate_ratio = 1032;
constexpr std::uint64_t lzw_ratio = 4096 * 8 / 9 + 1;
constexpr std::uint64_t pack_bits_ratio = 64;
/// Texels of a JPG for each byte.
constexpr std::uint64_t jpg_texels_per_byte = 64 * 8 * 4;

/// Where the segments in front of a JPG's texels end, and the mark of its frame. A segment may hold a thumbnail with
/// marks of its own, so they are stepped over.
struct JPG_START {
    std::size_t texels_at = 2;
    std::uint8_t frame = 0;
};

JPG_START read_jpg_start(std::span<std::uint8_t const> file) {
    constexpr std::uint8_t start_of_scan = 0xda;
    JPG_START start;
    std::size_t& at = start.texels_at;
    while (at + 4 <= file.size() && file[at] == 0xff) {
        std::uint8_t const marker = file[at + 1];
        if (marker == 0xff) {
            ++at;
            continue;
        }
        // C4, C8 and CC are tables and a reserved mark.
        if (marker == 0xc0 || (marker > 0xc0 && marker <= 0xcf && marker % 4 != 0)) {
            start.frame = marker;
        }
        at += 2 + static_cast<std::size_t>(file[at + 2] << 8 | file[at + 3]);
        if (marker == start_of_scan) {
            break;
        }
    }
    return start;
}

bool has_arithmetic_coding(std::uint8_t frame) {
    return frame >= 0xc9 && frame <= 0xcf;
}

/// Bytes of texels for each byte of a TIF file; nothing without a bound.
std::optional<std::uint64_t> tif_ratio(std::uint32_t compression) {
    switch (compression) {
    case 1:
        return 1;
    case 5:
        return lzw_ratio;
    case 8:
    case 32946:
        return deflate_ratio;
    case 32773:
        return pack_bits_ratio;
    default:
        return std::nullopt;
    }
}

}  // namespace

bool can_hold_texels(std::span<std::uint8_t const> file, IMAGE_FORMAT format, std::uint32_t width,
                     std::uint32_t height) {
    std::uint64_t const texels = saturating_product(width, height);
    switch (format) {
    case IMAGE_FORMAT::png:
        // A texel takes a bit at least.
        return texels / 8 / deflate_ratio <= file.size();
    case IMAGE_FORMAT::jpg:
        return has_arithmetic_coding(read_jpg_start(file).frame) || texels / jpg_texels_per_byte <= file.size();
    case IMAGE_FORMAT::tif: {
        TIF_LAYOUT const layout = read_tif_layout(file);
        std::optional<std::uint64_t> const ratio = tif_ratio(layout.compression);
        // Subsampling leaves each texel one sample of its own at least.
        std::uint64_t const bits =
            layout.bits_per_sample >= 1 && layout.bits_per_sample <= 64 ? layout.bits_per_sample : std::uint64_t{1};
        return !ratio || saturating_product(texels, bits) / 8 / *ratio <= file.size();
    }
    default:
        return true;
    }
}

bool jpg_is_whole(std::span<std::uint8_t const> file) {
    constexpr std::uint8_t end_of_image = 0xd9;
    for (std::size_t at = read_jpg_start(file).texels_at; at + 2 <= file.size(); ++at) {
        if (file[at] == 0xff && file[at + 1] == end_of_image) {
            return true;
        }
    }
    return false;
}

}  // namespace IMAGE_LOADER
