#include "atlas/load_source_texture.hpp"

#include "atlas/device_limits.hpp"
#include "atlas/resample.hpp"
#include "platform/image_loader/convert.hpp"
#include "platform/image_loader/load_image_file.hpp"
#include "platform/tool_data_builder/mip_chain.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <fstream>
#include <system_error>
#include <utility>

namespace {

using IMAGE_LOADER::IMAGE;

/// Whether the file is a DDS of more than one picture, and all of it is there.
bool holds_many_pictures(std::filesystem::path const& path) {
    std::array<char, dds_container::dx10_header_size> header = {};
    std::ifstream file(path, std::ios::binary);
    file.read(header.data(), header.size());
    std::error_code error;
    std::uint64_t const size = std::filesystem::file_size(path, error);
    std::string cause;
    auto const description = dds_container::read_dds_header(
        {reinterpret_cast<std::uint8_t const*>(header.data()), static_cast<std::size_t>(file.gcount())}, cause);
    return description && (description->is_cube || description->is_volume || description->array_size > 1) && !error &&
           dds_container::payload_size(*description) <= size - description->header_size();
}

PIXEL_BUFFER with_all_levels(PIXEL_BUFFER const& top) {
    auto const lower = TOOLDATABUILDER::make_lower_mips(
        {top.slice(0, 0).data(), top.width(), top.height(), top.row_pitch(0)}, TOOLDATABUILDER::MIP_FILTER::box);
    PIXEL_BUFFER texture(top.format(), top.width(), top.height(), static_cast<std::uint32_t>(lower.size()) + 1);
    std::ranges::copy(top.slice(0, 0), texture.slice(0, 0).begin());
    for (std::uint32_t level = 1; level < texture.levels(); ++level)
        std::ranges::copy(lower[level - 1].texels, texture.slice(level, 0).begin());
    return texture;
}

}  // namespace

std::variant<PIXEL_BUFFER, LOAD_FAILURE> load_source_texture(std::filesystem::path const& path, bool all_levels,
                                                             std::string& cause) {
    IMAGE image = IMAGE_LOADER::load_image_file(path, cause);
    if (!image.valid())
        return holds_many_pictures(path) ? LOAD_FAILURE::unsupported_format : LOAD_FAILURE::cannot_load;
    std::uint32_t const width = std::bit_ceil(image.width());
    std::uint32_t const height = std::bit_ceil(image.height());
    if (std::max(width, height) > static_cast<std::uint32_t>(max_texture_extent)) {
        cause = "an image of " + std::to_string(image.width()) + " x " + std::to_string(image.height()) +
                " texels is larger than a texture can be";
        return LOAD_FAILURE::cannot_load;
    }
    PIXEL_BUFFER texture(D3D_FORMAT::a8b8g8r8, image.width(), image.height(), 1);
    IMAGE rgba(texture.slice(0, 0), image.width(), image.height(), 1, IMAGE_LOADER::TTF_R8G8B8A8);
    if (!IMAGE_LOADER::convert(image, 0, rgba, 0, cause))
        return LOAD_FAILURE::cannot_load;
    image = IMAGE();
    if (width != texture.width() || height != texture.height())
        texture = enlarge(texture, width, height);
    if (all_levels)
        texture = with_all_levels(texture);
    return texture;
}
