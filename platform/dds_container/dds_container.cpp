#include "platform/dds_container/dds_container.hpp"

#include "platform/dds_container/legacy_format.hpp"

#include <algorithm>
#include <limits>

namespace dds_container {

namespace {

using checked_size::saturating_product;
using checked_size::saturating_sum;

// Offsets of the header's fields from the start of the file.
enum FIELD : std::size_t {
    magic = 0,
    header_bytes = 4,
    flags = 8,
    height = 12,
    width = 16,
    pitch_or_linear_size = 20,
    depth = 24,
    mip_count = 28,
    pixel_format_bytes = 76,
    pixel_format_flags = 80,
    four_cc = 84,
    bits_per_texel = 88,
    red_mask = 92,
    green_mask = 96,
    blue_mask = 100,
    alpha_mask = 104,
    caps = 108,
    caps_2 = 112,
    dx10_format = 128,
    dx10_dimension = 132,
    dx10_misc = 136,
    dx10_array_size = 140,
    dx10_alpha_mode = 144,
};

constexpr std::uint32_t depth_flag = 0x00800000;
constexpr std::uint32_t caps_2_cube = 0x200;
constexpr std::uint32_t caps_2_faces = 0xfc00;
constexpr std::uint32_t caps_2_volume = 0x00200000;
constexpr std::uint32_t dx10_misc_cube = 0x4;
constexpr std::uint32_t dx10_premultiplied = 2;

enum DX10_DIMENSION : std::uint32_t { texture_1d = 2, texture_2d = 3, texture_3d = 4 };

class HEADER_VIEW {
public:
    explicit HEADER_VIEW(std::span<std::uint8_t const> bytes) : bytes_(bytes) {}
    std::uint32_t operator[](FIELD at) const {
        return bytes_[at] | static_cast<std::uint32_t>(bytes_[at + 1]) << 8 |
               static_cast<std::uint32_t>(bytes_[at + 2]) << 16 | static_cast<std::uint32_t>(bytes_[at + 3]) << 24;
    }

private:
    std::span<std::uint8_t const> bytes_;
};

std::string sides_text(DDS_DESCRIPTION const& description) {
    std::string text = std::to_string(description.width) + " x " + std::to_string(description.height);
    if (description.is_volume) {
        text += " x " + std::to_string(description.depth);
    }
    return text;
}

/// Bytes of one row and of one slice.
std::uint64_t row_bytes(DDS_DESCRIPTION const& description, std::uint32_t level_width) {
    return description.bytes_per_block != 0
               ? std::uint64_t{level_width / 4 + (level_width % 4 != 0)} * description.bytes_per_block
               : std::uint64_t{level_width} * description.bytes_per_texel;
}

std::uint64_t slice_bytes(DDS_DESCRIPTION const& description, std::uint32_t level) {
    std::uint32_t const rows = level_side(description.height, level);
    return saturating_product(row_bytes(description, level_side(description.width, level)),
                              description.bytes_per_block != 0 ? rows / 4 + (rows % 4 != 0) : rows);
}

std::uint64_t level_bytes(DDS_DESCRIPTION const& description, std::uint32_t level) {
    return saturating_product(slice_bytes(description, level), level_side(description.depth, level));
}

/// Bytes of one face with all its levels.
std::uint64_t face_bytes(DDS_DESCRIPTION const& description) {
    std::uint64_t sum = 0;
    for (std::uint32_t level = 0; level < description.mip_count; ++level) {
        sum = saturating_sum(sum, level_bytes(description, level));
    }
    return sum;
}

void fill_sizes(DDS_DESCRIPTION& description) {
    DXGI_FORMAT_INFO const& info = dxgi_format_info(description.format);
    if (description.format != DXGI::unknown) {
        description.bytes_per_texel = info.bytes_per_texel;
        description.bytes_per_block = info.bytes_per_block;
        description.is_srgb = info.is_srgb;
    } else {
        description.bytes_per_texel = description.masks.bits_per_texel / 8;
        description.bytes_per_block = 0;
        description.is_srgb = false;
    }
}

/// Whether the sides and counts are within the bounds and agree with one another.
bool check_extent(DDS_DESCRIPTION const& description, std::string& cause) {
    if (description.width == 0 || description.height == 0 || description.depth == 0) {
        cause = "the header announces " + sides_text(description) + " texels";
        return false;
    }
    std::uint32_t const largest = std::max({description.width, description.height, description.depth});
    if (largest > largest_side) {
        cause = "the header announces " + sides_text(description) + " texels; a side may have at most " +
                std::to_string(largest_side);
        return false;
    }
    if (saturating_product(description.width, description.height, description.depth) > most_texels_per_surface) {
        cause = "the header announces " + sides_text(description) + " texels, more than the " +
                std::to_string(most_texels_per_surface) + " that a surface may have";
        return false;
    }
    if (description.mip_count == 0 || description.mip_count > full_chain_length(largest)) {
        cause = "the header announces " + std::to_string(description.mip_count) + " mip levels, but " +
                sides_text(description) + " texels have at most " + std::to_string(full_chain_length(largest));
        return false;
    }
    if (description.array_size == 0 || description.face_count == 0 || description.face_count > 6) {
        cause = "the header announces an array of no elements";
        return false;
    }
    if (description.is_volume && (description.is_cube || description.array_size != 1)) {
        cause = "the header announces a volume that is a cube map or an array";
        return false;
    }
    return true;
}

bool read_dx10_extension(HEADER_VIEW const& header, DDS_DESCRIPTION& description, std::string& cause) {
    description.header_kind = HEADER_KIND::dx10;
    description.format = dxgi_from_number(header[dx10_format]);
    if (description.format == DXGI::unknown) {
        cause = "texels of the DXGI format " + std::to_string(header[dx10_format]) + " are not supported";
        return false;
    }
    description.has_alpha = dxgi_format_info(description.format).has_alpha;
    description.is_premultiplied = (header[dx10_alpha_mode] & 7) == dx10_premultiplied;
    description.array_size = header[dx10_array_size];
    switch (header[dx10_dimension]) {
    case texture_1d:
        description.height = 1;
        break;
    case texture_2d:
        description.is_cube = (header[dx10_misc] & dx10_misc_cube) != 0;
        break;
    case texture_3d:
        description.is_volume = true;
        break;
    default:
        cause = "the header announces the resource dimension " + std::to_string(header[dx10_dimension]);
        return false;
    }
    description.face_count = description.is_cube ? 6 : 1;
    return true;
}

bool read_legacy_rest(HEADER_VIEW const& header, LEGACY_PIXEL_FORMAT const& format, DDS_DESCRIPTION& description,
                      std::string& cause) {
    std::uint32_t const extra = header[caps_2];
    description.is_cube = (extra & caps_2_cube) != 0;
    description.is_volume = (extra & caps_2_volume) != 0 || ((header[flags] & depth_flag) != 0 && header[depth] > 1);
    if (description.is_cube) {
        // A cube map that names no face has all of them.
        int faces = 0;
        for (std::uint32_t bits = extra & caps_2_faces; bits != 0; bits &= bits - 1) {
            ++faces;
        }
        description.face_count = faces == 0 ? 6 : static_cast<std::uint32_t>(faces);
    }
    return read_legacy_format(format, description, cause);
}

}  // namespace

std::optional<DDS_DESCRIPTION> read_dds_header(std::span<std::uint8_t const> bytes, std::string& cause) {
    if (bytes.size() < 4 || bytes[0] != 'D' || bytes[1] != 'D' || bytes[2] != 'S' || bytes[3] != ' ') {
        cause = "this is not a DDS file";
        return std::nullopt;
    }
    auto const too_short = [&](std::size_t needed) {
        cause = "the file ends after " + std::to_string(bytes.size()) + " of the " + std::to_string(needed) +
                " bytes of its DDS header";
        return std::nullopt;
    };
    if (bytes.size() < legacy_header_size) {
        return too_short(legacy_header_size);
    }
    HEADER_VIEW const header(bytes);
    if (header[header_bytes] != 124) {
        cause = "the DDS header gives its size as " + std::to_string(header[header_bytes]) + " bytes, not 124";
        return std::nullopt;
    }

    DDS_DESCRIPTION description;
    description.width = header[width];
    description.height = header[height];
    description.raw_mip_count = header[mip_count];
    description.mip_count = std::max<std::uint32_t>(header[mip_count], 1);

    LEGACY_PIXEL_FORMAT format;
    format.flags = header[pixel_format_flags];
    format.four_cc = header[four_cc];
    format.bits_per_texel = header[bits_per_texel];
    format.red = header[red_mask];
    format.green = header[green_mask];
    format.blue = header[blue_mask];
    format.alpha = header[alpha_mask];
    if ((format.flags & LEGACY_PIXEL_FORMAT::four_cc_flag) != 0 && format.four_cc == four_cc_number("DX10")) {
        if (bytes.size() < dx10_header_size) {
            return too_short(dx10_header_size);
        }
        if (!read_dx10_extension(header, description, cause)) {
            return std::nullopt;
        }
    } else if (!read_legacy_rest(header, format, description, cause)) {
        return std::nullopt;
    }
    description.depth = description.is_volume ? std::max<std::uint32_t>(header[depth], 1) : 1;
    fill_sizes(description);
    if (!check_extent(description, cause)) {
        return std::nullopt;
    }
    return description;
}

std::optional<DDS_DESCRIPTION> read_dds(std::span<std::uint8_t const> file, std::string& cause) {
    std::optional<DDS_DESCRIPTION> description = read_dds_header(file, cause);
    if (!description) {
        return std::nullopt;
    }
    std::uint64_t const needed = payload_size(*description);
    std::uint64_t const present = file.size() - description->header_size();
    if (needed > present) {
        cause = "the header announces " + sides_text(*description) + " texels, " +
                std::to_string(description->mip_count) + " mip levels and " +
                std::to_string(std::uint64_t{description->array_size} * description->face_count) + " surfaces (" +
                std::to_string(needed) + " bytes), but only " + std::to_string(present) + " bytes follow";
        return std::nullopt;
    }
    return description;
}

std::uint64_t payload_size(DDS_DESCRIPTION const& description) {
    return saturating_product(face_bytes(description), description.face_count, description.array_size);
}

std::optional<DDS_SURFACE> find_surface(DDS_DESCRIPTION const& description, std::uint32_t element, std::uint32_t face,
                                        std::uint32_t level, std::uint32_t slice) {
    if (element >= description.array_size || face >= description.face_count || level >= description.mip_count ||
        slice >= level_side(description.depth, level)) {
        return std::nullopt;
    }
    DDS_SURFACE surface;
    surface.width = level_side(description.width, level);
    surface.height = level_side(description.height, level);
    surface.row_pitch = row_bytes(description, surface.width);
    surface.size = slice_bytes(description, level);
    std::uint64_t const face_index = std::uint64_t{element} * description.face_count + face;
    surface.offset = saturating_product(face_bytes(description), face_index);
    for (std::uint32_t before = 0; before < level; ++before) {
        surface.offset = saturating_sum(surface.offset, level_bytes(description, before));
    }
    surface.offset = saturating_sum(surface.offset, saturating_product(surface.size, slice));
    surface.offset = saturating_sum(surface.offset, description.header_size());
    return surface;
}

std::optional<std::vector<std::uint8_t>>
write_dds(DDS_DESCRIPTION const& given, std::span<std::span<std::uint8_t const> const> surfaces, std::string& cause) {
    DDS_DESCRIPTION description = given;
    fill_sizes(description);
    if (!check_extent(description, cause)) {
        return std::nullopt;
    }
    bool const is_dx10 = description.header_kind == HEADER_KIND::dx10;
    std::optional<LEGACY_PIXEL_FORMAT> format;
    if (is_dx10) {
        format = LEGACY_PIXEL_FORMAT{LEGACY_PIXEL_FORMAT::four_cc_flag, four_cc_number("DX10")};
        if (description.format == DXGI::unknown || (description.is_cube && description.face_count != 6)) {
            cause = "a DX10 header takes numbered formats and whole cube maps only";
            return std::nullopt;
        }
    } else {
        format = legacy_format_of(description);
        if (!format || description.array_size != 1) {
            cause = std::string("a legacy header cannot hold ") +
                    (format ? "an array" : std::string(dxgi_format_info(description.format).name) + " texels");
            return std::nullopt;
        }
        if (description.is_cube && description.face_count != 6) {
            cause = "a cube map without all its faces is not written";
            return std::nullopt;
        }
    }

    std::uint64_t const pictures = std::uint64_t{description.array_size} * description.face_count;
    if (surfaces.size() % description.mip_count != 0 || surfaces.size() / description.mip_count != pictures) {
        cause = "the description asks for " + std::to_string(pictures) + " surfaces of " +
                std::to_string(description.mip_count) + " levels, but " + std::to_string(surfaces.size()) +
                " levels were given";
        return std::nullopt;
    }
    std::uint64_t total = description.header_size();
    for (std::size_t i = 0; i < surfaces.size(); ++i) {
        std::uint64_t const needed = level_bytes(description, static_cast<std::uint32_t>(i % description.mip_count));
        if (surfaces[i].size() != needed) {
            cause = "level " + std::to_string(i % description.mip_count) + " takes " + std::to_string(needed) +
                    " bytes, but " + std::to_string(surfaces[i].size()) + " were given";
            return std::nullopt;
        }
        total = saturating_sum(total, needed);
    }

    std::vector<std::uint8_t> file;
    file.reserve(checked_size::memory_size(total));
    file.resize(description.header_size());
    auto const put = [&](FIELD at, std::uint32_t value) {
        for (std::size_t i = 0; i < 4; ++i) {
            file[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
        }
    };
    bool const is_block_format = description.bytes_per_block != 0;
    bool const has_mips = description.mip_count > 1;
    put(magic, four_cc_number("DDS "));
    put(header_bytes, 124);
    // Caps, height, width, pixel format; then mip count, pitch or linear size, depth.
    put(flags, 0x1 | 0x2 | 0x4 | 0x1000 | (has_mips ? 0x20000 : 0) | (is_block_format ? 0x80000 : 0x8) |
                   (description.is_volume ? depth_flag : 0));
    put(height, description.height);
    put(width, description.width);
    put(pitch_or_linear_size, static_cast<std::uint32_t>(is_block_format ? slice_bytes(description, 0)
                                                                         : row_bytes(description, description.width)));
    // The depth of what is no volume is 0 in files of the legacy kind and 1 in the others, as their usual writers have
    // it.
    put(depth, description.is_volume || description.header_kind == HEADER_KIND::dx10 ? description.depth : 0);
    put(mip_count, description.mip_count);
    put(pixel_format_bytes, 32);
    put(pixel_format_flags, format->flags);
    put(four_cc, format->four_cc);
    put(bits_per_texel, format->bits_per_texel);
    put(red_mask, format->red);
    put(green_mask, format->green);
    put(blue_mask, format->blue);
    put(alpha_mask, format->alpha);
    // Texture; mip maps; more than one surface.
    put(caps,
        0x1000 | (has_mips ? 0x400000 : 0) | (has_mips || description.is_cube || description.is_volume ? 0x8 : 0));
    put(caps_2, (description.is_cube ? caps_2_cube | caps_2_faces : 0) | (description.is_volume ? caps_2_volume : 0));
    if (is_dx10) {
        put(dx10_format, static_cast<std::uint32_t>(description.format));
        put(dx10_dimension, description.is_volume ? texture_3d : texture_2d);
        put(dx10_misc, description.is_cube ? dx10_misc_cube : 0);
        put(dx10_array_size, description.array_size);
        put(dx10_alpha_mode, description.is_premultiplied ? dx10_premultiplied : 0);
    }
    for (std::span<std::uint8_t const> const surface : surfaces) {
        file.insert(file.end(), surface.begin(), surface.end());
    }
    return file;
}

}  // namespace dds_container
