#include "platform/tool_data_builder/amd_compressor.hpp"

#include "blocks/encode.hpp"
#include "platform/dds_container/dds_container.hpp"
#include "platform/dds_container/legacy_format.hpp"
#include "platform/image_loader/exchange_red_and_blue.hpp"
#include "platform/qe/native_path.hpp"
#include "platform/qe/replace_file.hpp"
#include "platform/tool_data_builder/mip_chain.hpp"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <new>
#include <optional>
#include <vector>

namespace TOOLDATABUILDER {

namespace {

namespace fs = std::filesystem;
using dds_container::DXGI;
using dds_container::four_cc_number;
using dds_container::LEGACY_PIXEL_FORMAT;
using IMAGE_LOADER::IMAGE_BYTES;
using QE::IMAGE32;

struct OUTPUT_FORMAT {
    AMD_TC_FORMAT format;
    std::uint32_t pixel_format_flags;
    std::uint32_t four_cc;
    DXGI dxgi;
    std::optional<blocks::FORMAT> block;
};

constexpr std::uint32_t opaque_flags = LEGACY_PIXEL_FORMAT::rgb_flag;
constexpr std::uint32_t alpha_flags = LEGACY_PIXEL_FORMAT::rgb_flag | LEGACY_PIXEL_FORMAT::alpha_pixels_flag;
constexpr std::uint32_t block_flags = LEGACY_PIXEL_FORMAT::four_cc_flag;

constexpr auto output_formats = std::to_array<OUTPUT_FORMAT>({
    {AMD_TC_FORMAT::argb_8888, opaque_flags, 0, DXGI::b8g8r8x8_unorm, {}},
    {AMD_TC_FORMAT::argb_8888, alpha_flags, 0, DXGI::b8g8r8a8_unorm, {}},
    {AMD_TC_FORMAT::dxt5_xgxr, block_flags, four_cc_number("DXT5"), DXGI::bc3_unorm, blocks::FORMAT::bc3},
    {AMD_TC_FORMAT::dxt1, block_flags, four_cc_number("DXT1"), DXGI::bc1_unorm, blocks::FORMAT::bc1},
    {AMD_TC_FORMAT::dxt3, block_flags, four_cc_number("DXT3"), DXGI::bc2_unorm, blocks::FORMAT::bc2},
    {AMD_TC_FORMAT::dxt5, block_flags, four_cc_number("DXT5"), DXGI::bc3_unorm, blocks::FORMAT::bc3},
});

OUTPUT_FORMAT const* find_output_format(AMD_TC_FORMAT format, std::uint32_t flags, std::uint32_t four_cc) {
    auto const found = std::find_if(output_formats.begin(), output_formats.end(), [&](OUTPUT_FORMAT const& row) {
        return row.format == format && row.pixel_format_flags == flags && row.four_cc == four_cc;
    });
    return found == output_formats.end() ? nullptr : &*found;
}

/// Views of the levels' bytes. Their order is the image's, blue first.
using LEVELS = std::vector<blocks::RGBA8_VIEW>;

LEVELS views_of(std::span<IMAGE32 const> images) {
    LEVELS levels;
    for (IMAGE32 const& image : images) {
        levels.push_back({image.pixels.data(), image.width, image.height, std::size_t{4} * image.width});
    }
    return levels;
}

bool are_levels(LEVELS const& levels) {
    for (std::size_t i = 0; i < levels.size(); ++i) {
        auto const level = static_cast<std::uint32_t>(i);
        if (levels[i].width != dds_container::level_side(levels[0].width, level) ||
            levels[i].height != dds_container::level_side(levels[0].height, level) || levels[i].width == 0 ||
            levels[i].height == 0) {
            return false;
        }
    }
    return !levels.empty();
}

IMAGE_BYTES encoder_texels(blocks::RGBA8_VIEW const& level, bool swizzle_normals) {
    IMAGE_BYTES texels(level.texels, level.texels + level.row_pitch * level.height);
    if (!swizzle_normals) {
        IMAGE_LOADER::exchange_red_and_blue(texels.data(), texels.data(), texels.size() / 4);
        return texels;
    }
    for (std::size_t at = 0; at < texels.size(); at += 4) {
        texels[at] = 255;
        texels[at + 3] = texels[at + 2];
        texels[at + 2] = 0;
    }
    return texels;
}

std::optional<IMAGE_BYTES> encode(blocks::RGBA8_VIEW const& level, OUTPUT_FORMAT const& format,
                                  AMD_TC_CompressOptions const& options) {
    if (!format.block) {
        return IMAGE_BYTES(level.texels, level.texels + level.row_pitch * level.height);
    }
    blocks::ENCODE_OPTIONS encoding;
    encoding.effort = options.fast != 0 ? blocks::EFFORT::fast : blocks::EFFORT::best;
    encoding.one_bit_alpha = options.one_bit_alpha != 0;
    encoding.alpha_threshold = static_cast<std::uint8_t>(std::min(options.alpha_threshold, 255U));
    IMAGE_BYTES const texels = encoder_texels(level, format.format == AMD_TC_FORMAT::dxt5_xgxr);
    IMAGE_BYTES encoded(blocks::encoded_bytes(*format.block, level.width, level.height).value_or(0));
    blocks::RGBA8_VIEW const view = {texels.data(), level.width, level.height, level.row_pitch};
    if (!blocks::encode_image(*format.block, view, encoding, 1, encoded)) {
        return {};
    }
    return encoded;
}

bool write(fs::path const& path, LEVELS levels, AMD_TC_FORMAT format, std::uint32_t pixel_format_flags,
           std::uint32_t four_cc, AMD_TC_CompressOptions const& options, bool complete_chain, std::string& cause) {
    OUTPUT_FORMAT const* const output = find_output_format(format, pixel_format_flags, four_cc);
    if (output == nullptr || options.size != sizeof options) {
        cause = "the format's numbers do not fit together";
        return false;
    }
    if (!are_levels(levels)) {
        cause = "the images are no mip levels of one texture";
        return false;
    }
    std::vector<MIP_LEVEL> lower;
    if (complete_chain) {
        lower =
            make_lower_mips(levels.back(), options.linear_light_levels != 0 ? MIP_FILTER::box_srgb : MIP_FILTER::box);
        for (MIP_LEVEL const& level : lower) {
            levels.push_back(level.view());
        }
    }
    std::vector<IMAGE_BYTES> encoded;
    for (blocks::RGBA8_VIEW const& level : levels) {
        std::optional<IMAGE_BYTES> bytes = encode(level, *output, options);
        if (!bytes) {
            cause = "the blocks cannot be encoded";
            return false;
        }
        encoded.push_back(std::move(*bytes));
    }
    dds_container::DDS_DESCRIPTION description;
    description.width = levels.front().width;
    description.height = levels.front().height;
    description.mip_count = static_cast<std::uint32_t>(levels.size());
    description.format = output->dxgi;
    std::vector<std::span<std::uint8_t const>> const surfaces(encoded.begin(), encoded.end());
    auto const file = dds_container::write_dds(description, surfaces, cause);
    return file && QE::replace_file(path, *file, cause);
}

}  // namespace

bool write_dds_AMD_compressor(QE::String const& path, std::span<IMAGE32 const> levels, AMD_TC_FORMAT format,
                              std::uint32_t pixel_format_flags, std::uint32_t four_cc,
                              AMD_TC_CompressOptions const& options, bool complete_chain, std::string& cause) {
    return write(fs::path(path.text()), views_of(levels), format, pixel_format_flags, four_cc, options, complete_chain,
                 cause);
}

bool write_dds_AMD_compressor(QE::UniString const& path, IMAGE32 const& image, AMD_TC_FORMAT format,
                              std::uint32_t pixel_format_flags, std::uint32_t four_cc,
                              AMD_TC_CompressOptions const& options, std::string& cause) {
    fs::path target;
    try {
        target = QE::native_path(path);
    } catch (std::bad_alloc const&) {
        throw;
    } catch (std::exception const&) {
        cause = "the file system's encoding cannot express the path";
        return false;
    }
    return write(target, views_of({&image, 1}), format, pixel_format_flags, four_cc, options, true, cause);
}

}  // namespace TOOLDATABUILDER
