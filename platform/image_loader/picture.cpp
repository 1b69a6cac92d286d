#include "platform/image_loader/picture.hpp"

#include "platform/checked_size.hpp"
#include "platform/image_loader/exchange_red_and_blue.hpp"
#include "platform/image_loader/load_dds.hpp"
#include "platform/image_loader/load_image_file.hpp"
#include "platform/image_loader/load_with_freeimage.hpp"
#include "platform/qe/replace_file.hpp"
#include "platform/qe/tga_header.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <new>

namespace IMAGE_LOADER {

namespace {

using dds_container::DDS_DESCRIPTION;
using dds_container::HEADER_KIND;

std::optional<PICTURE> load_dds_picture(std::span<std::uint8_t const> file, std::uint32_t level,
                                        std::uint32_t layer_or_slice, std::string& cause) {
    std::optional<DDS_DESCRIPTION> const description = dds_container::read_dds(file, cause);
    if (!description) {
        return std::nullopt;
    }
    std::uint32_t const faces = description->face_count;
    std::optional<dds_container::DDS_SURFACE> const surface =
        description->is_volume
            ? dds_container::find_surface(*description, 0, 0, level, layer_or_slice)
            : dds_container::find_surface(*description, layer_or_slice / faces, layer_or_slice % faces, level, 0);
    if (!surface) {
        cause = level >= description->mip_count
                    ? "there is no mip level " + std::to_string(level) + "; the file has " +
                          std::to_string(description->mip_count)
                    : "mip level " + std::to_string(level) + " has no " +
                          (description->is_volume ? "slice " : "surface ") + std::to_string(layer_or_slice);
        return std::nullopt;
    }
    PICTURE picture{surface->width, surface->height, {}};
    picture.rgba.resize(checked_size::memory_size(4u, surface->width, surface->height));
    if (!decode_dds_surface(file, *description, *surface, picture.rgba, cause)) {
        return std::nullopt;
    }
    return picture;
}

std::optional<PICTURE> load_tga_picture(std::filesystem::path const& path, std::string& cause) {
    std::optional<QE::IMAGE32> const tga = load_tga_file(path, cause);
    if (!tga) {
        return std::nullopt;
    }
    if (tga->pixels.empty()) {
        cause = "the image is empty";
        return std::nullopt;
    }
    PICTURE picture{tga->width, tga->height, {tga->pixels.begin(), tga->pixels.end()}};
    exchange_red_and_blue(picture.rgba.data(), picture.rgba.data(), picture.rgba.size() / 4);
    return picture;
}

std::optional<PICTURE> load_any_picture(std::filesystem::path const& path, std::uint32_t level,
                                        std::uint32_t layer_or_slice, std::string& cause) {
    std::optional<std::vector<std::uint8_t>> file;
    IMAGE_FORMAT format = IMAGE_FORMAT::tga;
    if (!has_tga_extension(path)) {
        file = read_whole_file(path, cause);
        if (!file) {
            return std::nullopt;
        }
        format = detect_image_format(*file);
        if (format == IMAGE_FORMAT::dds) {
            return load_dds_picture(*file, level, layer_or_slice, cause);
        }
        if (format == IMAGE_FORMAT::unknown) {
            cause = "this is no TGA, DDS, PNG, JPG or TIF file";
            return std::nullopt;
        }
    }
    if (level != 0 || layer_or_slice != 0) {
        cause = "the file holds one picture only";
        return std::nullopt;
    }
    if (format == IMAGE_FORMAT::tga) {
        return load_tga_picture(path, cause);
    }
    std::optional<DECODED_FILE> const decoded = load_with_freeimage(*file, format, CHANNEL_ORDER::red_first, cause);
    if (!decoded) {
        return std::nullopt;
    }
    return PICTURE{decoded->width, decoded->height, {decoded->texels.begin(), decoded->texels.end()}};
}

/// The channels from the most significant bits down, "A8R8G8B8", as legacy layouts are called.
std::string masks_text(dds_container::PIXEL_MASKS const& masks) {
    struct CHANNEL {
        char name;
        std::uint32_t mask;
    };
    std::array<CHANNEL, 4> channels = {CHANNEL{masks.is_luminance ? 'L' : 'R', masks.red}, CHANNEL{'G', masks.green},
                                       CHANNEL{'B', masks.blue}, CHANNEL{'A', masks.alpha}};
    std::sort(channels.begin(), channels.end(), [](CHANNEL a, CHANNEL b) { return a.mask > b.mask; });
    int const idle =
        static_cast<int>(masks.bits_per_texel) - std::popcount(masks.red | masks.green | masks.blue | masks.alpha);
    std::string text;
    if (idle > 0) {
        text += 'X';
        text += std::to_string(idle);
    }
    for (CHANNEL const& channel : channels) {
        if (channel.mask != 0) {
            text += channel.name;
            text += std::to_string(std::popcount(channel.mask));
        }
    }
    return text;
}

FILE_DESCRIPTION describe_dds(DDS_DESCRIPTION const& dds, std::uint64_t file_size) {
    FILE_DESCRIPTION description;
    description.kind = "DDS";
    description.width = dds.width;
    description.height = dds.height;
    description.depth = dds.depth;
    description.mips = dds.mip_count;
    description.faces = dds.face_count;
    description.layers = dds.array_size;
    description.is_cube = dds.is_cube;
    description.is_volume = dds.is_volume;
    description.is_srgb = dds.is_srgb;
    description.has_alpha = dds.has_alpha;
    description.header_kind = dds.header_kind == HEADER_KIND::dx10 ? "DX10" : "legacy";
    bool const is_numeric_code = !dds.four_cc.empty() && dds.four_cc[0] >= '0' && dds.four_cc[0] <= '9';
    description.format = dds.masks.bits_per_texel != 0 ? masks_text(dds.masks)
                         : dds.four_cc.empty() || is_numeric_code
                             ? std::string(dds_container::dxgi_format_info(dds.format).name)
                             : dds.four_cc;
    description.payload_expected = dds_container::payload_size(dds);
    description.payload_actual = file_size - dds.header_size();
    return description;
}

std::optional<FILE_DESCRIPTION> describe_tga(std::filesystem::path const& path, std::string& cause) {
    QE::FileIn file(QE::String(path.string()));
    QE::TGAHeader header;
    if (!file.is_open()) {
        cause = "the file cannot be opened";
        return std::nullopt;
    }
    if (!header.read(file)) {
        cause = header.cause();
        return std::nullopt;
    }
    FILE_DESCRIPTION description;
    description.kind = "TGA";
    description.width = header.width();
    description.height = header.height();
    bool const is_map =
        header.format() == QE::TGA_PIXEL_FORMAT::colour_map_8 || header.format() == QE::TGA_PIXEL_FORMAT::colour_map_16;
    std::uint32_t const bits = is_map ? header.bits_per_map_entry() : header.bits_per_texel();
    bool const is_grey =
        header.format() == QE::TGA_PIXEL_FORMAT::grey_8 || header.format() == QE::TGA_PIXEL_FORMAT::grey_alpha_16;
    description.has_alpha = bits == 32 || header.format() == QE::TGA_PIXEL_FORMAT::grey_alpha_16 ||
                            (!is_grey && bits == 16 && header.attribute_bits() != 0);
    description.format = std::to_string(header.bits_per_texel()) + "-bit";
    description.format += is_map ? " colour map" : is_grey ? " grey" : " true colour";
    description.format += header.is_run_length_coded() ? ", run-length" : "";
    if (!header.is_run_length_coded()) {
        std::uint64_t const in_front =
            header.id_length() + std::uint64_t{header.map_entry_count()} * ((header.bits_per_map_entry() + 7) / 8);
        description.payload_expected =
            checked_size::saturating_product(header.width(), header.height(), (header.bits_per_texel() + 7u) / 8);
        description.payload_actual = file.remaining() - std::min(file.remaining(), in_front);
    }
    return description;
}

}  // namespace

std::optional<PICTURE> load_picture(std::filesystem::path const& path, std::uint32_t level,
                                    std::uint32_t layer_or_slice, std::string& cause) {
    try {
        return load_any_picture(path, level, layer_or_slice, cause);
    } catch (std::bad_alloc const&) {
        cause = "there is not enough memory for the picture";
        return std::nullopt;
    }
}

std::optional<FILE_DESCRIPTION> describe(std::filesystem::path const& path, std::string& cause) {
    if (has_tga_extension(path)) {
        return describe_tga(path, cause);
    }
    std::vector<std::uint8_t> start(dds_container::dx10_header_size);
    std::uint64_t file_size = 0;
    {
        QE::FileIn file(QE::String(path.string()));
        if (!file.is_open()) {
            cause = "the file cannot be opened";
            return std::nullopt;
        }
        file_size = file.size();
        start.resize(std::min<std::uint64_t>(start.size(), file_size));
        if (!file.read(start)) {
            cause = "the file cannot be read";
            return std::nullopt;
        }
    }
    IMAGE_FORMAT const format = detect_image_format(start);
    if (format == IMAGE_FORMAT::dds) {
        std::optional<DDS_DESCRIPTION> const dds = dds_container::read_dds_header(start, cause);
        return dds ? std::optional(describe_dds(*dds, file_size)) : std::nullopt;
    }
    if (format == IMAGE_FORMAT::unknown) {
        cause = "this is no TGA, DDS, PNG, JPG or TIF file";
        return std::nullopt;
    }
    // Where a TIF or JPG keeps its header is not known beforehand.
    std::optional<std::vector<std::uint8_t>> const bytes = read_whole_file(path, cause);
    std::optional<CODED_FILE_INFO> const info = bytes ? read_info_with_freeimage(*bytes, format, cause) : std::nullopt;
    if (!info) {
        return std::nullopt;
    }
    FILE_DESCRIPTION description;
    description.kind = format == IMAGE_FORMAT::png ? "PNG" : format == IMAGE_FORMAT::jpg ? "JPG" : "TIF";
    description.width = info->width;
    description.height = info->height;
    description.format = info->texels;
    description.has_alpha = info->has_alpha;
    return description;
}

bool write_png(std::filesystem::path const& path, PICTURE const& picture, std::string& cause) {
    if (picture.width == 0 || picture.height == 0 ||
        picture.rgba.size() != checked_size::saturating_product(4u, picture.width, picture.height)) {
        cause = "the picture is empty";
        return false;
    }
    std::optional<std::vector<std::uint8_t>> const png = encode_png(picture.rgba, picture.width, picture.height, cause);
    if (!png) {
        return false;
    }
    if (QE::replace_file(path, *png, cause)) {
        return true;
    }
    cause = "the file cannot be written: " + cause;
    return false;
}

}  // namespace IMAGE_LOADER
