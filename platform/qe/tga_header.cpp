#include "platform/qe/tga_header.hpp"

#include <array>
#include <utility>

namespace QE {

namespace {

enum IMAGE_TYPE : std::uint8_t {
    colour_mapped = 1,
    true_colour = 2,
    grey = 3,
    run_length = 8,  // added to one of the above
};

bool is_texel_depth(std::uint32_t bits) {
    return bits == 15 || bits == 16 || bits == 24 || bits == 32;
}

TGA_PIXEL_FORMAT format_of(std::uint32_t type, std::uint32_t bits) {
    switch (type) {
    case colour_mapped:
        return bits == 8    ? TGA_PIXEL_FORMAT::colour_map_8
               : bits == 16 ? TGA_PIXEL_FORMAT::colour_map_16
                            : TGA_PIXEL_FORMAT::unsupported;
    case true_colour:
        switch (bits) {
        case 15:
            return TGA_PIXEL_FORMAT::true_colour_15;
        case 16:
            return TGA_PIXEL_FORMAT::true_colour_16;
        case 24:
            return TGA_PIXEL_FORMAT::true_colour_24;
        case 32:
            return TGA_PIXEL_FORMAT::true_colour_32;
        default:
            return TGA_PIXEL_FORMAT::unsupported;
        }
    case grey:
        return bits == 8    ? TGA_PIXEL_FORMAT::grey_8
               : bits == 16 ? TGA_PIXEL_FORMAT::grey_alpha_16
                            : TGA_PIXEL_FORMAT::unsupported;
    default:
        return TGA_PIXEL_FORMAT::unsupported;
    }
}

}  // namespace

bool TGAHeader::fail(std::string cause) {
    *this = TGAHeader();
    cause_ = std::move(cause);
    return false;
}

bool TGAHeader::read(FileIn& file) {
    *this = TGAHeader();
    std::uint64_t const start = file.position();
    std::array<std::uint8_t, byte_count> bytes;
    if (!file.read(bytes)) {
        return fail("the file has " + std::to_string(file.remaining()) + " bytes, too few for a TGA header");
    }
    auto const word = [&](std::size_t at) {
        return static_cast<std::uint32_t>(bytes[at] | bytes[at + 1] << 8);
    };

    std::uint32_t const map_type = bytes[1];
    std::uint32_t const image_type = bytes[2];
    std::uint32_t const kind = image_type & ~std::uint32_t{run_length};
    std::uint32_t const descriptor = bytes[17];
    id_length_ = bytes[0];
    // Files without a map may hold anything in the fields that describe it.
    if (map_type == 1) {
        first_map_entry_ = word(3);
        map_entry_count_ = word(5);
        bits_per_map_entry_ = bytes[7];
    }
    width_ = word(12);
    height_ = word(14);
    bits_per_texel_ = bytes[16];
    attribute_bits_ = descriptor & 0x0f;
    right_to_left_ = (descriptor & 0x10) != 0;
    top_down_ = (descriptor & 0x20) != 0;
    run_length_coded_ = (image_type & run_length) != 0;

    std::string problem;
    if (kind != colour_mapped && kind != true_colour && kind != grey) {
        problem = "TGA image type " + std::to_string(image_type) + " is not supported";
    } else if (map_type > 1) {
        problem = "TGA colour map type " + std::to_string(map_type) + " is not supported";
    } else if ((descriptor & 0xc0) != 0) {
        problem = "interleaved TGA rows are not supported";
    } else if (map_entry_count_ != 0 && !is_texel_depth(bits_per_map_entry_)) {
        problem = "TGA colour map entries of " + std::to_string(bits_per_map_entry_) + " bits are not supported";
    } else if (kind == colour_mapped && map_entry_count_ == 0) {
        problem = "the TGA header announces texels that index a colour map, and no colour map";
    } else {
        format_ = format_of(kind, bits_per_texel_);
        if (format_ == TGA_PIXEL_FORMAT::unsupported) {
            problem = "TGA image type " + std::to_string(image_type) + " with " + std::to_string(bits_per_texel_) +
                      " bits a texel is not supported";
        }
    }
    if (!problem.empty()) {
        file.seek(start);
        return fail(std::move(problem));
    }
    return true;
}

}  // namespace QE
