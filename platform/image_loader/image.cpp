#include "platform/image_loader/image.hpp"

#include "platform/image_loader/convert.hpp"
#include "platform/image_loader/exchange_red_and_blue.hpp"
#include "platform/image_loader/load_dds.hpp"
#include "platform/image_loader/load_with_freeimage.hpp"

#include <algorithm>
#include <array>
#include <new>
#include <utility>

namespace IMAGE_LOADER {

namespace {

using dds_container::DDS_DESCRIPTION;

/// Why an image of this size cannot be made; empty when it can.
std::string extent_problem(std::uint32_t width, std::uint32_t height, std::uint32_t levels) {
    std::string const sides = std::to_string(width) + " x " + std::to_string(height);
    std::uint32_t const largest = std::max(width, height);
    if (width == 0 || height == 0) {
        return "an image of " + sides + " texels is empty";
    }
    if (!checked_size::is_within_bounds(width, height)) {
        return "an image of " + sides + " texels is too large";
    }
    if (levels == 0 || levels > dds_container::full_chain_length(largest)) {
        return "an image of " + sides + " texels cannot have " + std::to_string(levels) + " mip levels";
    }
    return {};
}

IMAGE_INFO info_of(DDS_DESCRIPTION const& description) {
    return {description.width, description.height,    texel_format_of(description),
            IMAGE_FORMAT::dds, description.mip_count, {}};
}

}  // namespace

IMAGE::IMAGE(IMAGE&& other) noexcept
    : info_(std::exchange(other.info_, {})),
      owned_(std::move(other.owned_)),
      cause_(std::move(other.cause_)) {
    other.owned_.clear();
    other.cause_ = "the image was moved away";
}

IMAGE& IMAGE::operator=(IMAGE&& other) noexcept {
    if (this != &other) {
        info_ = std::exchange(other.info_, {});
        owned_ = std::move(other.owned_);
        cause_ = std::move(other.cause_);
        other.owned_.clear();
        other.cause_ = "the image was moved away";
    }
    return *this;
}

void IMAGE::fail(std::string cause) {
    info_ = {};
    owned_ = {};
    cause_ = std::move(cause);
}

IMAGE IMAGE::failed(std::string cause) {
    IMAGE image;
    image.cause_ = std::move(cause);
    return image;
}

void IMAGE::lay_out(std::uint8_t* texels) {
    info_.surfaces.resize(info_.number_of_mips);
    std::uint64_t offset = 0;
    for (std::uint32_t level = 0; level < info_.number_of_mips; ++level) {
        IMAGE_SURFACE& surface = info_.surfaces[level];
        surface.texels = texels + offset;
        surface.row_pitch = tight_row_pitch(info_.texel_format, level_width(level));
        surface.bytes = level_bytes(info_.texel_format, level_width(level), level_height(level));
        surface.offset = offset;
        offset += surface.bytes;
    }
    cause_.clear();
}

void IMAGE::allocate() {
    try {
        owned_.resize(checked_size::memory_size(
            chain_bytes(info_.texel_format, info_.width, info_.height, info_.number_of_mips)));
    } catch (std::bad_alloc const&) {
        fail("there is not enough memory for an image of " + std::to_string(info_.width) + " x " +
             std::to_string(info_.height) + " texels");
        return;
    }
    lay_out(owned_.data());
}

IMAGE::IMAGE(void const* file, std::size_t count) : IMAGE(std::span(static_cast<std::uint8_t const*>(file), count)) {
}

IMAGE::IMAGE(std::span<std::uint8_t const> file) {
    IMAGE_FORMAT const format = detect_image_format(file);
    switch (format) {
    case IMAGE_FORMAT::dds:
        load_dds(file);
        break;
    case IMAGE_FORMAT::png:
    case IMAGE_FORMAT::jpg:
    case IMAGE_FORMAT::tif:
        load_coded(file, format);
        break;
    default:
        cause_ = "this is no DDS, PNG, JPG or TIF file";
        break;
    }
}

void IMAGE::load_dds(std::span<std::uint8_t const> file) {
    std::string cause;
    std::optional<DDS_DESCRIPTION> const description = dds_container::read_dds(file, cause);
    if (!description) {
        fail(std::move(cause));
        return;
    }
    char const* const shape = description->is_cube          ? "a cube map"
                              : description->is_volume      ? "a volume"
                              : description->array_size > 1 ? "an array"
                                                            : nullptr;
    if (shape != nullptr) {
        fail(std::string(shape) + ": only two-dimensional images can be converted");
        return;
    }
    info_ = info_of(*description);
    bool const keeps_texels = info_.texel_format != TTF_UNKNOWN;
    if (!keeps_texels) {
        info_.texel_format = TTF_B8G8R8A8;
    }
    allocate();
    if (!valid()) {
        return;
    }
    for (std::uint32_t level = 0; level < info_.number_of_mips; ++level) {
        dds_container::DDS_SURFACE const surface = *dds_container::find_surface(*description, 0, 0, level, 0);
        std::span<std::uint8_t const> const stored = file.subspan(surface.offset, surface.size);
        IMAGE_SURFACE const& target = info_.surfaces[level];
        if (keeps_texels) {
            std::copy(stored.begin(), stored.end(), target.texels);
        } else if (!decode_dds_surface(file, *description, surface, {target.texels, target.bytes}, cause)) {
            fail(std::move(cause));
            return;
        } else {
            exchange_red_and_blue(target.texels, target.texels, target.bytes / 4);
        }
    }
}

void IMAGE::load_coded(std::span<std::uint8_t const> file, IMAGE_FORMAT format) {
    CHANNEL_ORDER const order = format == IMAGE_FORMAT::png ? CHANNEL_ORDER::red_first : CHANNEL_ORDER::blue_first;
    std::string cause;
    std::optional<DECODED_FILE> decoded = load_with_freeimage(file, format, order, cause);
    if (!decoded) {
        fail(std::move(cause));
        return;
    }
    info_ = {decoded->width,
             decoded->height,
             order == CHANNEL_ORDER::red_first ? TTF_R8G8B8A8 : TTF_B8G8R8A8,
             format,
             1,
             {}};
    owned_ = std::move(decoded->texels);
    lay_out(owned_.data());
}

IMAGE::IMAGE(IMAGE_INFO info) {
    std::string problem = extent_problem(info.width, info.height, info.number_of_mips);
    if (texel_format_info(info.texel_format).kind == TEXEL_KIND::none) {
        problem = "an image of an unknown texel format";
    } else if (info.surfaces.size() != info.number_of_mips) {
        problem = "an image whose surfaces are not as many as its mip levels";
    }
    if (!problem.empty()) {
        cause_ = std::move(problem);
        return;
    }
    info_ = std::move(info);
    for (std::uint32_t level = 0; level < info_.number_of_mips; ++level) {
        IMAGE_SURFACE& surface = info_.surfaces[level];
        std::uint64_t const tight_pitch = tight_row_pitch(info_.texel_format, level_width(level));
        std::uint64_t const rows = surface_rows(info_.texel_format, level_height(level));
        if (surface.bytes == 0) {
            surface.bytes = checked_size::saturating_product(surface.row_pitch, rows);
        }
        if (surface.texels == nullptr || surface.row_pitch < tight_pitch ||
            (surface.bytes - tight_pitch) / surface.row_pitch < rows - 1 || surface.bytes < tight_pitch) {
            fail("the surface of mip level " + std::to_string(level) + " is too small for its texels");
            return;
        }
    }
    cause_.clear();
}

IMAGE::IMAGE(std::span<std::uint8_t> buffer, std::uint32_t width, std::uint32_t height, std::uint32_t levels,
             TEXTURE_TEXEL_FORMAT texel_format, IMAGE_FORMAT image_format)
    : info_{width, height, texel_format, image_format, levels, {}} {
    std::string problem = extent_problem(width, height, levels);
    if (problem.empty() && texel_format_info(texel_format).kind == TEXEL_KIND::none) {
        problem = "an image of an unknown texel format";
    }
    if (problem.empty()) {
        std::uint64_t const needed = chain_bytes(texel_format, width, height, levels);
        if (needed > buffer.size()) {
            problem = "a buffer of " + std::to_string(buffer.size()) + " bytes for an image of " +
                      std::to_string(needed) + " bytes";
        }
    }
    if (problem.empty()) {
        lay_out(buffer.data());
    } else {
        fail(std::move(problem));
    }
}

IMAGE::IMAGE(std::uint32_t width, std::uint32_t height, std::uint32_t levels, TEXTURE_TEXEL_FORMAT texel_format,
             IMAGE_FORMAT image_format)
    : info_{width, height, texel_format, image_format, levels, {}} {
    std::string problem = extent_problem(width, height, levels);
    if (problem.empty() && texel_format_info(texel_format).kind == TEXEL_KIND::none) {
        problem = "an image of an unknown texel format";
    }
    if (problem.empty()) {
        allocate();
    } else {
        fail(std::move(problem));
    }
}

std::span<std::uint8_t const> IMAGE::level(std::uint32_t level) const {
    if (level >= info_.surfaces.size() || info_.surfaces[level].texels == nullptr) {
        return {};
    }
    return {info_.surfaces[level].texels, info_.surfaces[level].bytes};
}

std::span<std::uint8_t> IMAGE::level(std::uint32_t level) {
    if (level >= info_.surfaces.size() || info_.surfaces[level].texels == nullptr) {
        return {};
    }
    return {info_.surfaces[level].texels, info_.surfaces[level].bytes};
}

std::size_t IMAGE::image_header_size(IMAGE_FORMAT format) {
    switch (format) {
    case IMAGE_FORMAT::dds:
        return dds_container::legacy_header_size;
    case IMAGE_FORMAT::tga:
        return 18;
    default:
        return 0;
    }
}

IMAGE IMAGE::read_header(std::span<std::uint8_t const> bytes) {
    std::string cause;
    std::optional<DDS_DESCRIPTION> const description = dds_container::read_dds_header(bytes, cause);
    if (!description) {
        return failed(std::move(cause));
    }
    IMAGE image;
    image.info_ = info_of(*description);
    for (std::uint32_t level = 0; level < description->mip_count; ++level) {
        // The container knows what else lies between two levels (the slices of a volume), and the sizes of texels that
        // no format here names.
        dds_container::DDS_SURFACE const surface = *dds_container::find_surface(*description, 0, 0, level, 0);
        image.info_.surfaces.push_back(
            {nullptr, surface.row_pitch, surface.size, surface.offset - description->header_size()});
    }
    image.cause_.clear();
    return image;
}

IMAGE_FORMAT detect_image_format(std::span<std::uint8_t const> file) {
    struct MARK {
        std::string_view bytes;
        IMAGE_FORMAT format;
    };
    using namespace std::string_view_literals;
    static constexpr auto marks = std::to_array<MARK>({
        {"DDS "sv, IMAGE_FORMAT::dds},
        {"\x89PNG\r\n\x1a\n"sv, IMAGE_FORMAT::png},
        {"\xff\xd8\xff"sv, IMAGE_FORMAT::jpg},
        {"II*\0"sv, IMAGE_FORMAT::tif},
        {"MM\0*"sv, IMAGE_FORMAT::tif},
        {"II+\0"sv, IMAGE_FORMAT::tif},
        {"MM\0+"sv, IMAGE_FORMAT::tif},
    });
    std::string_view const text(reinterpret_cast<char const*>(file.data()), std::min<std::size_t>(file.size(), 8));
    for (MARK const& mark : marks) {
        if (text.starts_with(mark.bytes)) {
            return mark.format;
        }
    }
    return IMAGE_FORMAT::unknown;
}

}  // namespace IMAGE_LOADER
