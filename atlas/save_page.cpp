#include "atlas/save_page.hpp"

#include "platform/checked_size.hpp"
#include "platform/image_loader/convert.hpp"
#include "platform/qe/replace_file.hpp"

#include <array>
#include <string>
#include <utility>
#include <vector>

bool save_targa(std::filesystem::path const& path, PIXEL_BUFFER const& texels) {
    constexpr std::size_t header_size = 18;
    constexpr std::uint8_t true_colour = 2;
    constexpr std::uint8_t eight_bits_of_alpha_top_row_first = 0x28;
    std::string cause;
    IMAGE_LOADER::IMAGE_BYTES file(header_size + checked_size::memory_size(4u, texels.width(), texels.height()));
    std::span<std::uint8_t> const body = std::span(file).subspan(header_size);
    if (!IMAGE_LOADER::decode_surface(IMAGE_LOADER::texel_format_info(texel_format_of(texels.format())),
                                      texels.slice(0, 0), texels.row_pitch(0), texels.width(), texels.height(), body,
                                      cause))
        return false;
    for (std::size_t i = 0; i < body.size(); i += 4)
        std::swap(body[i], body[i + 2]);
    file[2] = true_colour;
    file[12] = static_cast<std::uint8_t>(texels.width() & 0xff);
    file[13] = static_cast<std::uint8_t>(texels.width() >> 8);
    file[14] = static_cast<std::uint8_t>(texels.height() & 0xff);
    file[15] = static_cast<std::uint8_t>(texels.height() >> 8);
    file[16] = 32;
    file[17] = eight_bits_of_alpha_top_row_first;
    return QE::replace_file(path, file, cause);
}

bool save_dds(std::filesystem::path const& path, PIXEL_BUFFER const& texels, DDS_SHAPE shape) {
    IMAGE_LOADER::TEXEL_FORMAT_INFO const& format = IMAGE_LOADER::texel_format_info(texel_format_of(texels.format()));
    dds_container::DDS_DESCRIPTION description;
    description.width = texels.width();
    description.height = texels.height();
    description.format = format.dxgi;
    description.masks = format.masks;
    // Only the texels' masks tell luminance from red.
    if (format.kind == IMAGE_LOADER::TEXEL_KIND::masks)
        description.format = dds_container::DXGI::unknown;
    std::vector<std::span<std::uint8_t const>> surfaces;
    if (shape == DDS_SHAPE::volume) {
        description.is_volume = true;
        description.depth = texels.slices();
        surfaces.emplace_back(texels.slice(0, 0).data(), texels.slice(0, 0).size() * texels.slices());
    } else {
        description.is_cube = true;
        description.face_count = texels.slices();
        for (std::uint32_t face = 0; face < texels.slices(); ++face)
            surfaces.push_back(texels.slice(0, face));
    }
    std::string cause;
    auto const file = dds_container::write_dds(description, surfaces, cause);
    return file && QE::replace_file(path, *file, cause);
}
